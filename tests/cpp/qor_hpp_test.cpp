// The header for C++: the same numbers as the C interface, owners that own, errors thrown or returned.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <numbers>
#include <numeric>
#include <random>
#include <vector>

#include "qor/qor.hpp"
#include "support/scratch_file.h"

namespace {

static_assert(std::uniform_random_bit_generator<qor::Bits>);
static_assert(!std::is_copy_constructible_v<qor::Stream> && std::is_nothrow_move_constructible_v<qor::Stream>);
static_assert(!std::is_copy_constructible_v<qor::RealTransform<double>>);
static_assert(std::is_same_v<qor::returning::Stream::Result, qor::Status>);

constexpr unsigned seed = 77;
class CStream {
 public:
  explicit CStream(int brng) { EXPECT_EQ(__wxrNewStreamEx(&stream_, brng, 1, &seed), 0); }
  ~CStream() { __wxrDeleteStream(&stream_); }
  CStream(const CStream&) = delete;
  CStream& operator=(const CStream&) = delete;
  operator qor_stream*() const { return stream_; }

 private:
  qor_stream* stream_ = nullptr;
};

// Each method of a stream after the other, in a precision, beside the C functions.
template <class T>
void expect_the_same_variates() {
  qor::Stream s(QOR_BRNG_MT19937, seed);
  const CStream plain(QOR_BRNG_MT19937);
  qor_stream* const c = plain;
  std::array<T, 33> got;
  std::vector<T> expected(33);
  const auto same = [&](auto of_doubles, auto of_singles, auto... parameters) {
    ASSERT_EQ(qor::detail::pick<T>(of_doubles, of_singles)(parameters...), 0);
    EXPECT_TRUE(std::ranges::equal(got, expected));
  };
  T* const r = expected.data();
  const T a = T(0.5), b = T(2.5), e = T(1.5), f = T(3);
  s.uniform(got, a, b, QOR_RNG_METHOD_ACCURATE);
  same(_wxrdRngUniform, _wxrsRngUniform, QOR_RNG_METHOD_ACCURATE, c, 33, r, a, b);
  s.gaussian(got, a, b);
  same(_wxrdRngGaussian, _wxrsRngGaussian, 1, c, 33, r, a, b);
  s.gaussian(std::span(got), a, b, 0);
  same(_wxrdRngGaussian, _wxrsRngGaussian, 0, c, 33, r, a, b);
  s.exponential(got, a, b);
  same(_wxrdRngExponential, _wxrsRngExponential, 0, c, 33, r, a, b);
  s.laplace(got, a, b);
  same(_wxrdRngLaplace, _wxrsRngLaplace, 0, c, 33, r, a, b);
  s.weibull(got, e, a, b);
  same(_wxrdRngWeibull, _wxrsRngWeibull, 0, c, 33, r, e, a, b);
  s.cauchy(got, a, b);
  same(_wxrdRngCauchy, _wxrsRngCauchy, 0, c, 33, r, a, b);
  s.rayleigh(got, a, b);
  same(_wxrdRngRayleigh, _wxrsRngRayleigh, 0, c, 33, r, a, b);
  s.lognormal(got, a, b, e, f);
  same(_wxrdRngLognormal, _wxrsRngLognormal, 0, c, 33, r, a, b, e, f);
  s.gumbel(got, a, b);
  same(_wxrdRngGumbel, _wxrsRngGumbel, 0, c, 33, r, a, b);
  s.gamma(got, e, a, b);
  same(_wxrdRngGamma, _wxrsRngGamma, 0, c, 33, r, e, a, b);
  s.beta(got, e, f, a, b);
  same(_wxrdRngBeta, _wxrsRngBeta, 0, c, 33, r, e, f, a, b);
  const std::vector<T> mean = {1, 2, 3}, factor = {1, 2, 3, 4, 5, 6};
  s.gaussian_mv(got, qor::Storage::packed, mean, factor);
  same(_wxrdRngGaussianMV, _wxrsRngGaussianMV, 1, c, 11, r, 3, QOR_RNG_STORAGE_PACKED, mean.data(), factor.data());
}

TEST(Stream, DrawsWhatTheCInterfaceDraws) {
  expect_the_same_variates<double>();
  expect_the_same_variates<float>();

  qor::Stream s(QOR_BRNG_MCG59, seed);
  const CStream plain(QOR_BRNG_MCG59);
  qor_stream* const c = plain;
  std::array<int, 20> got, expected;
  const auto same = [&](auto f, auto... parameters) {
    ASSERT_EQ(f(0, c, 20, expected.data(), parameters...), 0);
    EXPECT_EQ(got, expected);
  };
  s.uniform(got, 3, 900), same(_wxriRngUniform, 3, 900);
  s.bernoulli(got, 0.3), same(_wxriRngBernoulli, 0.3);
  s.geometric(got, 0.3), same(_wxriRngGeometric, 0.3);
  s.binomial(got, 50, 0.3), same(_wxriRngBinomial, 50, 0.3);
  s.hypergeometric(got, 100, 30, 40), same(_wxriRngHypergeometric, 100, 30, 40);
  s.poisson(got, 12.5), same(_wxriRngPoisson, 12.5);
  std::vector<double> lambdas(20, 7.5);
  s.poisson(got, lambdas), same(_wxriRngPoissonV, lambdas.data());
  s.negbinomial(got, 4.5, 0.3), same(_wxriRngNegbinomial, 4.5, 0.3);
  std::array<std::uint32_t, 40> words, expected_words;
  s.words(words);
  ASSERT_EQ(_wxriRngUniformBits(0, c, 20, expected_words.data()), 0);
  EXPECT_EQ(words, expected_words);
  EXPECT_THROW(s.words(std::span(words).first(39)), std::length_error);
}

TEST(Stream, IsMovedCopiedOnDemandSkippedAndKept) {
  qor::Stream s(QOR_BRNG_MRG32K3A, {seed, 3});
  std::vector<double> first(5), second(5), third(5);
  qor::Stream copy = s.copy();
  s.uniform(first);
  copy.uniform(second);
  EXPECT_EQ(first, second);
  const qor::test::ScratchFile file;
  s.save(file.name());
  qor::Stream loaded = qor::Stream::load(file.name());
  EXPECT_EQ(loaded.brng(), QOR_BRNG_MRG32K3A);
  qor::Stream moved = std::move(s);
  EXPECT_FALSE(s);
  EXPECT_EQ(s.status().code, QOR_RNG_NULL_SLOT);
  moved.uniform(first), loaded.uniform(second);
  EXPECT_EQ(first, second);
  s = std::move(moved);
  EXPECT_TRUE(s);
  s.skip_ahead(3'000'000'007);  // farther than one call reaches
  loaded.skip_ahead(2'000'000'000), loaded.skip_ahead(1'000'000'007);
  s.uniform(first), loaded.uniform(third);
  EXPECT_EQ(first, third);
  qor_stream* handle = s.release();
  EXPECT_THROW(s.uniform(first), qor::Error);
  const qor::Stream adopted = qor::Stream::adopt(handle);
  EXPECT_EQ(adopted.get(), handle);
}

TEST(Errors, AreThrownOrReturned) {
  try {
    const qor::Stream s(12345, 1);
    FAIL();
  } catch (const qor::Error& error) {
    EXPECT_EQ(error.status(), QOR_RNG_BAD_BRNG);
    EXPECT_STREQ(error.what(), "making a stream: unknown generator (-1000)");
  }
  EXPECT_THROW(qor::Stream(QOR_BRNG_MT19937).leapfrog(0, 2), qor::Error);
  EXPECT_THROW(qor::Stream(QOR_BRNG_SOBOL, {2, 5}), qor::Error);  // a table that ends early; nothing leaks
  EXPECT_THROW(qor::Stream::load("/nonexistent"), qor::Error);
  EXPECT_THROW(qor::RealTransform<float>(0), qor::Error);
  std::vector<int> k(4);
  EXPECT_THROW(qor::Stream(QOR_BRNG_MT19937).bernoulli(k, 1.5), qor::Error);

  qor::returning::Stream bad(12345, 1);
  std::vector<double> r(4, 9.0);
  EXPECT_FALSE(bad);
  EXPECT_EQ(bad.status().code, QOR_RNG_BAD_BRNG);
  EXPECT_EQ(bad.gaussian(r).code, QOR_RNG_BAD_BRNG);
  EXPECT_EQ(bad.copy().status().code, QOR_RNG_BAD_BRNG);
  EXPECT_EQ(r[0], 9.0);
  qor::returning::Stream good(QOR_BRNG_MT19937, 1);
  EXPECT_TRUE(good.gaussian(r).ok());
  EXPECT_STREQ(good.skip_ahead(1).text(), "the engine can't skip ahead");
  EXPECT_EQ(qor::returning::ComplexTransform<double>(-1).status().code, QFPS_BAD_LENGTH);

  // Lengths that don't fit are found before the library sees them.
  std::vector<double> five(5), four(4);
  EXPECT_THROW(qor::math::sin(five, four), std::length_error);
  EXPECT_THROW(qor::math::pow(five, four, five), std::length_error);
  EXPECT_THROW(qor::RealTransform<double>(4).forward(four, five), std::length_error);
  EXPECT_THROW((void)good.gaussian_mv(five, qor::Storage::full, std::vector{1.0, 2.0}, four), std::length_error);
}

TEST(Bits, ServeTheStandardLibrary) {
  for (const int brng : {QOR_BRNG_MT19937, QOR_BRNG_MCG59, QOR_BRNG_MCG31M1, QOR_BRNG_WH + 3}) {
    qor::Stream s(brng, seed), t(brng, seed);
    qor::Bits bits(s), same(t);
    std::vector<std::uint32_t> one_by_one(1000), in_parts(1000);
    for (auto& word : one_by_one) word = bits();
    for (auto at = in_parts.begin(); at < in_parts.begin() + 37; ++at) *at = same();
    same.fill(std::span(in_parts).subspan(37));
    EXPECT_EQ(one_by_one, in_parts);
    double mean = 0;
    for (const std::uint32_t word : one_by_one) mean += word / 1000.0;
    EXPECT_NEAR(mean, 0x1p31, 5 * 0x1p32 / std::sqrt(12e3));
  }
  qor::Stream s(QOR_BRNG_MT19937, seed), t(QOR_BRNG_MT19937, seed);
  std::vector<std::uint32_t> words(300);
  t.words(words);
  qor::Bits bits(s);
  for (const std::uint32_t word : words) EXPECT_EQ(bits(), word);
  std::vector<int> order(100);
  std::iota(order.begin(), order.end(), 0);
  std::ranges::shuffle(order, bits);
  EXPECT_FALSE(std::ranges::is_sorted(order));
}

// Every function of the namespace math, both accuracies, both precisions, beside the C function of its name.
template <class T>
void expect_the_same_functions() {
  std::vector<T> x(17), y(17, T(1.75)), got(17), got2(17), expected(17), expected2(17);
  for (int i = 0; i < 17; ++i) x[std::size_t(i)] = T(i + 1) / 18;
  const int n = 17;
#define QOR_SAME(name, Name, from)                                                           \
  qor::math::name(from, got);                                                                \
  qor::detail::pick<T>(_tfnd##Name##_HA, _tfns##Name##_HA)(n, from.data(), expected.data()); \
  EXPECT_EQ(got, expected) << #name;                                                         \
  got = from, qor::math::name<qor::Accuracy::low>(got);                                      \
  qor::detail::pick<T>(_tfnd##Name##_50, _tfns##Name##_21)(n, from.data(), expected.data()); \
  EXPECT_EQ(got, expected) << #name;
#define QOR_SAME_BINARY(name, Name)                                                                 \
  qor::math::name<qor::Accuracy::low>(x, y, got);                                                   \
  qor::detail::pick<T>(_tfnd##Name##_50, _tfns##Name##_21)(n, x.data(), y.data(), expected.data()); \
  EXPECT_EQ(got, expected) << #name;
#define QOR_SAME_ROUNDING(name, Name)                                           \
  qor::math::name(y, got);                                                      \
  qor::detail::pick<T>(_tfnd##Name, _tfns##Name)(n, y.data(), expected.data()); \
  EXPECT_EQ(got, expected) << #name;
  QOR_SAME(inv, Inv, x)
  QOR_SAME(sqrt, Sqrt, x)
  QOR_SAME(inv_sqrt, InvSqrt, x)
  QOR_SAME(cbrt, Cbrt, x)
  QOR_SAME(inv_cbrt, InvCbrt, x)
  QOR_SAME(exp, Exp, x)
  QOR_SAME(ln, Ln, x)
  QOR_SAME(log10, Log10, x)
  QOR_SAME(sin, Sin, x)
  QOR_SAME(cos, Cos, x)
  QOR_SAME(tan, Tan, x)
  QOR_SAME(asin, Asin, x)
  QOR_SAME(acos, Acos, x)
  QOR_SAME(atan, Atan, x)
  QOR_SAME(sinh, Sinh, x)
  QOR_SAME(cosh, Cosh, x)
  QOR_SAME(tanh, Tanh, x)
  QOR_SAME(asinh, Asinh, x)
  QOR_SAME(acosh, Acosh, y)
  QOR_SAME(atanh, Atanh, x)
  QOR_SAME(erf, Erf, x)
  QOR_SAME(erfc, Erfc, x)
  QOR_SAME(erf_inv, ErfInv, x)
  QOR_SAME_BINARY(div, Div)
  QOR_SAME_BINARY(hypot, Hypot)
  QOR_SAME_BINARY(atan2, Atan2)
  QOR_SAME_BINARY(pow, Pow)
  QOR_SAME_ROUNDING(floor, Floor)
  QOR_SAME_ROUNDING(ceil, Ceil)
  QOR_SAME_ROUNDING(trunc, Trunc)
  QOR_SAME_ROUNDING(round, Round)
  QOR_SAME_ROUNDING(rint, Rint)
  QOR_SAME_ROUNDING(nearby_int, NearbyInt)
#undef QOR_SAME_ROUNDING
#undef QOR_SAME_BINARY
#undef QOR_SAME
  qor::math::pow(x, T(1.75), got2);
  qor::math::pow(x, y, got);
  EXPECT_EQ(got, got2);
  qor::math::sin_cos(x, got, got2);
  qor::detail::pick<T>(_tfndSinCos_HA, _tfnsSinCos_HA)(n, x.data(), expected.data(), expected2.data());
  EXPECT_EQ(got, expected);
  EXPECT_EQ(got2, expected2);
}
template <class T>
void expect_the_same_complex_functions() {
  std::vector<std::complex<T>> z(9), got(9), expected(9);
  for (int i = 0; i < 9; ++i) z[std::size_t(i)] = {T(i - 4) / 3, T(i + 1) / 5};
  const auto same = [&](auto of_doubles, auto of_singles, const char* name) {
    qor::detail::pick<T>(of_doubles, of_singles)(9, reinterpret_cast<const T*>(z.data()),
                                                 reinterpret_cast<T*>(expected.data()));
    EXPECT_EQ(got, expected) << name;
  };
#define QOR_SAME_COMPLEX(name, Name)                 \
  qor::math::name(z, got);                           \
  same(_tfnz##Name##_HA, _tfnc##Name##_HA, #name);   \
  got = z, qor::math::name<qor::Accuracy::low>(got); \
  same(_tfnz##Name##_50, _tfnc##Name##_21, #name);
  QOR_SAME_COMPLEX(exp, Exp)
  QOR_SAME_COMPLEX(sin, Sin)
  QOR_SAME_COMPLEX(cos, Cos)
  QOR_SAME_COMPLEX(tan, Tan)
  QOR_SAME_COMPLEX(sinh, Sinh)
  QOR_SAME_COMPLEX(cosh, Cosh)
  QOR_SAME_COMPLEX(tanh, Tanh)
  QOR_SAME_COMPLEX(asin, Asin)
  QOR_SAME_COMPLEX(acos, Acos)
  QOR_SAME_COMPLEX(atan, Atan)
  QOR_SAME_COMPLEX(asinh, Asinh)
  QOR_SAME_COMPLEX(ln, Ln)
  QOR_SAME_COMPLEX(log10, Log10)
  QOR_SAME_COMPLEX(sqrt, Sqrt)
  QOR_SAME_COMPLEX(acosh, Acosh)
  QOR_SAME_COMPLEX(atanh, Atanh)
#undef QOR_SAME_COMPLEX
  // One exponent for all, or one each.
  const std::complex<T> power(T(0.5), T(-2));
  std::vector<std::complex<T>> powers(9, power), by_array(9);
  qor::math::pow(z, power, got);
  qor::math::pow(z, powers, by_array);
  EXPECT_EQ(got, by_array);
  EXPECT_LT(std::abs(got[8] - std::pow(z[8], power)), 1e-5);
}
TEST(Math, CallsTheFunctionsOfTheirNames) {
  expect_the_same_complex_functions<double>();
  expect_the_same_complex_functions<float>();
  expect_the_same_functions<double>();
  expect_the_same_functions<float>();
}

TEST(ErrorMode, SetsAndRestores) {
  _tfnSetMode(TFN_MODE_DEFAULT);
  _tfnSetErrStatus(TFN_STATUS_OVERFLOW);
  {
    const qor::ErrorMode quiet;
    std::vector<double> x = {-1.0};
    qor::math::ln(x);
    EXPECT_EQ(quiet.status(), TFN_STATUS_ERRDOM);
    EXPECT_EQ(_tfnGetMode() & TFN_ERR_MASK, TFN_ERR_IGNORE);
  }
  EXPECT_EQ(_tfnGetMode(), unsigned(TFN_MODE_DEFAULT));
  EXPECT_EQ(_tfnClearErrStatus(), TFN_STATUS_OVERFLOW);
}

template <class T>
void expect_transforms_of(int n) {
  qor::Stream s(QOR_BRNG_MT19937, seed);
  const auto size = static_cast<std::size_t>(n);
  std::vector<T> x(size), back(size);
  s.gaussian(x);
  std::vector<std::complex<T>> z(x.begin(), x.end()), whole(size);
  const qor::ComplexTransform<T> complex(n);
  std::vector<unsigned char> buffer(complex.buffer_size());
  complex.forward(z, whole, buffer);
  const T near = 200 * std::numeric_limits<T>::epsilon() * T(n);
  const qor::RealTransform<T> real(n, qor::Scaling::inverse);
  std::vector<unsigned char> work(real.buffer_size());
  for (const qor::Packing packing : {qor::Packing::perm, qor::Packing::pack, qor::Packing::ccs}) {
    std::vector<T> packed(static_cast<std::size_t>(qor::packed_size(packing, n)));
    real.forward(x, packed, packing, work);
    const qor::Spectrum<T> spectrum(packed, packing, n);
    for (int k = 0; k < n; ++k) EXPECT_LE(std::abs(spectrum[k] - whole[std::size_t(k)]), near) << n << ", " << k;
    real.inverse(packed, back, packing);
    for (std::size_t i = 0; i < size; ++i) EXPECT_NEAR(back[i], x[i], near);
  }
  complex.inverse(whole, whole);
  for (std::size_t i = 0; i < size; ++i) EXPECT_LE(std::abs(whole[i] - x[i]), near);
}
TEST(Transforms, AgreeInEveryPacking) {
  for (const int n : {1, 2, 3, 4, 5, 8, 15, 16, 100, 101}) {
    expect_transforms_of<double>(n);
    expect_transforms_of<float>(n);
  }
  const qor::RealTransform<double> four(4);
  std::vector<double> x(4);
  std::vector<unsigned char> little(1);
  if (four.buffer_size() > 1) {
    EXPECT_THROW(four.forward(x, x, qor::Packing::perm, little), std::length_error);
  }
}

template <class T>
void expect_tasks_agree(T near) {
  qor::Stream s(QOR_BRNG_MT19937, seed);
  std::vector<T> x(30), y(8), z(37), by_transforms(37), plain(37), middle(10);
  s.gaussian(x), s.gaussian(y);
  for (std::size_t i = 0; i < x.size(); ++i) {
    for (std::size_t k = 0; k < y.size(); ++k) plain[i + k] += x[i] * y[k];
  }
  qor::Task<T> task(qor::Kind::convolution, 30, 8);
  task.execute(x, y, z);
  qor::Task<T> fourier = task.copy();
  fourier.set_mode(qor::Mode::fourier);
  fourier.execute(x, y, by_transforms);
  for (std::size_t i = 0; i < z.size(); ++i) {
    EXPECT_NEAR(z[i], plain[i], near);
    EXPECT_NEAR(by_transforms[i], plain[i], near);
  }
  qor::Task<T> part(qor::Kind::convolution, 30, 8, qor::Mode::direct, 10);
  part.set_start(3);
  part.set_decimation(2);
  part.execute(x, y, middle);
  for (std::size_t i = 0; i < 10; ++i) EXPECT_NEAR(middle[i], plain[3 + 2 * i], near);

  // Rank 2, backwards by strides: correlation turns the first operand round.
  const int nx[] = {6, 5}, ny[] = {4, 2}, nz[] = {9, 6}, zero[] = {0, 0}, backwards[] = {-1, -6};
  std::vector<T> forward(54), turned(54);
  qor::Task<T> two(qor::Kind::convolution, nx, ny, nz);
  two.execute(x.data(), {}, y.data(), {}, forward.data(), {});
  qor::Task<T> correlation(qor::Kind::correlation, nx, ny, nz, qor::Mode::fourier);
  correlation.execute(x.data(), backwards, y.data(), {}, turned.data(), {});
  for (std::size_t i = 0; i < 54; ++i) EXPECT_NEAR(turned[i], forward[i], near);
  two.set_start(zero);
  EXPECT_THROW(two.set_start(0), std::length_error);
  EXPECT_THROW(two.execute(x, y, z), std::length_error);
}
TEST(Tasks, AgreeInEveryMode) {
  expect_tasks_agree<double>(1e-12);
  expect_tasks_agree<float>(1e-4f);
  qor::returning::Task<double> task(qor::Kind::convolution, 30, 8);
  EXPECT_EQ(task.set_start(99).code, 0);
  std::vector<double> x(30), y(8), z(37);
  EXPECT_EQ(task.execute(x, y, z).code, -2302);
  EXPECT_EQ(task.execute(x, y, z).code, -2302) << "refuses until it is reset";
  task.reset();
  EXPECT_TRUE(task.set_start(0).ok());
  EXPECT_TRUE(task.execute(x, y, z).ok());
  EXPECT_STREQ(qor::describe(-2302), "start outside the full result");
  for (const int code : {-2,    -5,    -6,    -17,   -1000, -1010, -1111, -2000, -2001, -2211,
                         -2212, -2220, -2230, -2240, -2303, -2313, -2333, -2800, -3000, -3041}) {
    EXPECT_STRNE(qor::describe(code), "failure") << code;
  }
  EXPECT_STREQ(qor::describe(-1), "failure");
}

// A row of the spectrum of a real picture by the definition; there and back in every way of calling.
TEST(Descriptors, Transform) {
  constexpr int n1 = 6, n2 = 10;
  qor::Stream s(QOR_BRNG_MT19937, seed);
  std::vector<double> x(n1 * n2), back(n1 * n2);
  s.gaussian(x);
  qor::Descriptor<double> d(qor::Domain::real, {n1, n2});
  d.set(QOR_DFT_PLACEMENT, QOR_DFT_OUT_OF_PLACE);
  d.set_backward_scale(1.0 / (n1 * n2));
  d.commit();
  std::vector<std::complex<double>> spectrum(n1 * (n2 / 2 + 1));
  d.forward(x, spectrum);
  for (int k = 0; k <= n2 / 2; ++k) {
    std::complex<double> sum = 0;
    for (int i = 0; i < n1; ++i) {
      for (int j = 0; j < n2; ++j) {
        sum +=
            x[std::size_t(i * n2 + j)] * std::polar(1.0, -2 * std::numbers::pi * (2.0 * i / n1 + double(j) * k / n2));
      }
    }
    EXPECT_LE(std::abs(spectrum[std::size_t(2 * (n2 / 2 + 1) + k)] - sum), 1e-13);
  }
  const qor::Descriptor<double> copy = d.copy(), moved = std::move(d);
  copy.backward(spectrum, back);
  for (std::size_t i = 0; i < x.size(); ++i) EXPECT_NEAR(back[i], x[i], 1e-14);

  qor::returning::Descriptor<float> in_place(qor::Domain::complex, {16});
  std::vector<std::complex<float>> z(16, 1.0f);
  EXPECT_EQ(in_place.forward(z).code, QOR_DFT_NOT_COMMITTED);
  EXPECT_TRUE(in_place.set_forward_scale(0.5).ok());
  EXPECT_TRUE(in_place.commit().ok());
  EXPECT_TRUE(in_place.forward(z).ok());
  EXPECT_EQ(z[0], 8.0f);
  EXPECT_TRUE(in_place.backward(z).ok());
  EXPECT_EQ(z[3], 8.0f);
  EXPECT_THROW(qor::Descriptor<double>(qor::Domain::complex, {4, 0}), qor::Error);
  EXPECT_EQ(qor::returning::Descriptor<double>(qor::Domain::complex, {0}).commit().code, QOR_DFT_BAD_LENGTH);
}

}  // namespace
