// The distributions one by one: against plain models of the same uniform numbers, rules reached by written-down ones,
// what is kept between calls, failures, statuses. Whether they are distributed rightly is fit_test.cpp's.
#include "support/distributions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <tuple>

#include "qor/tfn.h"
#include "rng/engines.h"
#include "support/allocations.h"
#include "support/scripted_generator.h"

namespace {

constexpr double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
constexpr double before_one = 1 - 0x1p-32;
const std::vector<unsigned> seed = {4711};

template <class T>
constexpr double ln_of_zero = sizeof(T) == 8 ? -744.4400719213812 : -103.27893;
template <class T>
double ln(double u) {
  return u == 0 ? ln_of_zero<T> : std::log(u);
}

// ---- one call of each
// -------------------------------------------------------------------------------------------------

struct Transformed {
  const char* name;
  int numbers;  // uniform numbers a variate
  double low, high;
  std::function<int(qor_stream*, int, double*)> draw;
  std::function<int(qor_stream*, int, float*)> draw_single;
  double (*model)(const double* u, double ln0);  // with a = 10, beta = 3 and the like
};
double ln_or(double u, double ln0) { return u == 0 ? ln0 : std::log(u); }

#define QOR_BOTH(Name, ...)                                                                \
  [](qor_stream* s, int n, double* r) { return _wxrdRng##Name(7, s, n, r, __VA_ARGS__); }, \
      [](qor_stream* s, int n, float* r) { return _wxrsRng##Name(7, s, n, r, __VA_ARGS__); }
const Transformed transforms[] = {
    {"Exponential", 1, 0, 1, QOR_BOTH(Exponential, 10, 3),
     [](const double* u, double ln0) { return 10 - 3 * ln_or(*u, ln0); }},
    {"Laplace", 2, 0, 1, QOR_BOTH(Laplace, 10, 3),
     [](const double* u, double ln0) { return 10 + (u[1] > 0.5 ? 3 : -3) * ln_or(*u, ln0); }},
    {"Weibull", 1, 0, 1, QOR_BOTH(Weibull, 2, 10, 3),
     [](const double* u, double ln0) { return 10 + 3 * std::pow(-ln_or(*u, ln0), 0.5); }},
    {"Cauchy", 1, -M_PI / 2, M_PI / 2, QOR_BOTH(Cauchy, 10, 3),
     [](const double* u, double) { return 10 + 3 * std::tan(*u); }},
    {"Rayleigh", 1, 0, 1, QOR_BOTH(Rayleigh, 10, 3),
     [](const double* u, double ln0) { return 10 + 3 * std::sqrt(-ln_or(*u, ln0)); }},
    {"Gumbel", 1, 0, 1, QOR_BOTH(Gumbel, 10, 3),
     [](const double* u, double ln0) { return 10 + 3 * ln_or(-ln_or(*u, ln0), ln0); }},
};

template <class T>
class Distributions : public ::testing::Test {
 protected:
  static constexpr bool wide = sizeof(T) == 8;
  static constexpr double tolerance = wide ? 4e-15 : 1e-6;  // relative
  static int draw(const Transformed& t, qor_stream* s, int n, T* r) {
    if constexpr (wide)
      return t.draw(s, n, r);
    else
      return t.draw_single(s, n, r);
  }
  static int uniform(qor_stream* s, int n, T* r, double a, double b) {
    if constexpr (wide)
      return _wxrdRngUniform(0, s, n, r, a, b);
    else
      return _wxrsRngUniform(0, s, n, r, T(a), T(b));
  }
  static int gamma(qor_stream* s, int n, T* r, T alpha, T a = 0, T beta = 1) {
    if constexpr (wide)
      return _wxrdRngGamma(0, s, n, r, alpha, a, beta);
    else
      return _wxrsRngGamma(0, s, n, r, alpha, a, beta);
  }
  static int lognormal(int method, qor_stream* s, int n, T* r) {
    if constexpr (wide)
      return _wxrdRngLognormal(method, s, n, r, 0.5, 2, -1, 3);
    else
      return _wxrsRngLognormal(method, s, n, r, 0.5, 2, -1, 3);
  }
  static int gaussian(int method, qor_stream* s, int n, T* r, T a, T sigma) {
    if constexpr (wide)
      return _wxrdRngGaussian(method, s, n, r, a, sigma);
    else
      return _wxrsRngGaussian(method, s, n, r, a, sigma);
  }
  static int vectors(int method, qor_stream* s, int n, T* r, int d, int storage, const T* a, const T* t) {
    if constexpr (wide)
      return _wxrdRngGaussianMV(method, s, n, r, d, storage, a, t);
    else
      return _wxrsRngGaussianMV(method, s, n, r, d, storage, a, t);
  }
};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(Distributions, Precisions);

TYPED_TEST(Distributions, FollowPlainModels) {
  using T = TypeParam;
  for (const Transformed& t : transforms) {
    for (const int n : {1, 2, 3, 5, 1023, 1024, 1025, 2049}) {
      const TestStream stream(QOR_BRNG_MT19937, seed), same(QOR_BRNG_MT19937, seed);
      std::vector<T> r(n), u(n * t.numbers);
      ASSERT_EQ(this->draw(t, stream, n, r.data()), 0);
      ASSERT_EQ(this->uniform(same, n * t.numbers, u.data(), t.low, t.high), 0);
      for (int i = 0; i < n; ++i) {
        const double pair[] = {double(u[i * t.numbers]), double(u[i * t.numbers + t.numbers - 1])};
        const double exact = t.model(pair, ln_of_zero<T>);
        // The logarithm of a logarithm near 1, and a tangent near its pole, magnify errors of the step before.
        const double magnified = std::fabs(exact - 10) + 20;
        ASSERT_NEAR(r[i], exact, this->tolerance * magnified) << t.name << ' ' << n << ' ' << i;
      }
      T next, expected;
      this->uniform(stream, 1, &next, 0, 1), this->uniform(same, 1, &expected, 0, 1);
      EXPECT_EQ(next, expected) << t.name << " drew another count of numbers";
    }
  }
}

TYPED_TEST(Distributions, StayFiniteAndAboveTheirEndForExtremeNumbers) {
  using T = TypeParam;
  // Zeros, one half, next to 1; NaN and numbers that no engine should deliver.
  const std::vector<double> numbers = {0, 0, 0.5, 0.5, before_one, 0.25, 0.25, 0.75, 1, 1, nan, 0.3, -0.5, 0.5, 0, 1};
  for (const Transformed& t : transforms) {
    if (t.low != 0) continue;
    const TestStream scripted(scripted_generator(), {});
    play(numbers);
    const int n = int(numbers.size()) / t.numbers;
    std::vector<T> r(n);
    ASSERT_EQ(this->draw(t, scripted, n, r.data()), 0);
    const bool clamped = std::string(t.name) != "Gumbel" && std::string(t.name) != "Laplace";
    for (int i = 0; i < n; ++i) {
      const double* const u = numbers.data() + i * t.numbers;
      EXPECT_TRUE(!clamped || r[i] >= T(10)) << t.name << ' ' << u[0];
      if (std::isnan(u[0]) || u[0] < 0) continue;
      const double delivered[] = {double(T(u[0])), double(T(u[t.numbers - 1]))};
      EXPECT_TRUE(std::isfinite(r[i])) << t.name << ' ' << u[0];
      EXPECT_NEAR(r[i], t.model(delivered, ln_of_zero<T>), 1e-5 * (std::fabs(r[i]) + 20)) << t.name << ' ' << u[0];
    }
  }
  const TestStream scripted(scripted_generator(), {});
  T r[2];
  play({-0.5});  // an error that isn't the singularity: the unconditional callback's generators take it alike
  this->draw(transforms[0], scripted, 1, r);
  EXPECT_NEAR(r[0], 10 - 3 * ln_of_zero<T>, 1e-3);
  play({nan});
  this->draw(transforms[0], scripted, 1, r);
  EXPECT_EQ(r[0], T(10));
}

int saw_errors;
int count_errors(TfnErrorContext*) { return ++saw_errors; }

// Every entry, as a call on n variates that fails at a request of the engine.
struct Call {
  std::string name;
  std::function<int(qor_stream*, int, void*)> draw;
  bool in_callers_mode = false;
};
std::vector<Call> every_call() {
  std::vector<Call> calls;
  for (const known::Continuous& k : known::continuous()) {
    calls.push_back({k.family + ' ' + k.parameters,
                     [k](qor_stream* s, int n, void* r) { return k.draw(s, n, static_cast<double*>(r)); }});
    calls.push_back({k.family + ' ' + k.parameters + " single",
                     [k](qor_stream* s, int n, void* r) { return k.draw_single(s, n, static_cast<float*>(r)); }});
  }
  for (const known::Discrete& k : known::discrete()) {
    calls.push_back({k.family + ' ' + k.parameters,
                     [k](qor_stream* s, int n, void* r) { return k.draw(s, n, static_cast<int*>(r)); }});
  }
  return calls;
}

TEST(EveryDistribution, DoesNothingForNoneAndReturnsTheEnginesFailure) {
  _tfnSetMode(TFN_ERR_CALLBACK | TFN_ERR_STDERR);
  const unsigned mode = _tfnGetMode();
  _tfnSetErrorCallBack(count_errors);
  saw_errors = 0;
  // Numbers that every rejection accepts sooner or later, with a zero for the logarithm.
  const std::vector<double> numbers = {0.5, 0.125, 0.75, 0.375, 0.0, 0.25, 0.625, 0.1, 0.9, 0.01, 0.99, 0.3};
  std::vector<double> r(20000);
  for (const Call& call : every_call()) {
    const TestStream scripted(scripted_generator(), {});
    play(numbers);
    for (const int n : {0, -3}) {
      if (call.name.find('V') != std::string::npos) continue;  // whose row makes an array of its own
      r[0] = 99;
      EXPECT_EQ(call.draw(scripted, n, r.data()), 0) << call.name;
      EXPECT_EQ(r[0], 99) << call.name;
    }
    EXPECT_EQ(_wxriRngPoissonV(0, scripted, 0, nullptr, nullptr), 0);
    EXPECT_EQ(_wxrdRngGaussianMV(0, scripted, -1, nullptr, 3, 0, nullptr, nullptr), 0);
    EXPECT_TRUE(requests.empty()) << call.name;
    for (const int failing : {0, 1, 2, 3}) {
      play(numbers, failing);
      const int status = call.draw(scripted, 5000, r.data());
      EXPECT_EQ(status, int(requests.size()) > failing ? -77 : 0) << call.name << ' ' << failing;
      EXPECT_LE(int(requests.size()), std::max(failing + 1, 1)) << call.name << " went on after a failure";
      for (const Request& request : requests) EXPECT_GT(request.n, 0) << call.name;
      ASSERT_EQ(_tfnGetMode(), mode) << call.name;
      ASSERT_EQ(_tfnGetErrorCallBack(), count_errors) << call.name;
    }
  }
  EXPECT_EQ(saw_errors, 0);
  _tfnClearErrorCallBack();
  _tfnSetMode(TFN_MODE_DEFAULT);
}

TYPED_TEST(Distributions, LaplaceDrawsByBlocksAndTakesOneHalfToTheRight) {
  using T = TypeParam;
  const TestStream scripted(scripted_generator(), {});
  std::vector<T> r(2048);
  play({0.5, 0.5});
  ASSERT_EQ(this->draw(transforms[1], scripted, 2048, r.data()), 0);
  EXPECT_EQ(requests, (std::vector<Request>{{2048, 0, 1}, {2048, 0, 1}}));  // no empty rest
  for (const T x : r) ASSERT_NEAR(x, 10 + 3 * std::log(2.0), 1e-5);
}

TYPED_TEST(Distributions, LognormalIsTheExponentialOfGaussianMethod1) {
  using T = TypeParam;
  const TestStream stream(QOR_BRNG_MT19937, seed), same(QOR_BRNG_MT19937, seed);
  for (const int n : {1, 4, 1025, 2}) {  // pending halves are shared with the Gaussian generator
    std::vector<T> r(n), g(n);
    ASSERT_EQ(this->lognormal(0, stream, n, r.data()), 0);
    ASSERT_EQ(this->gaussian(1, same, n, g.data(), T(0.5), T(2)), 0);
    for (int i = 0; i < n; ++i) EXPECT_NEAR((r[i] + 1) / 3, std::exp(double(g[i])), 1e-5 * (r[i] + 2)) << i;
  }
  const TestStream scripted(scripted_generator(), {});
  play({nan, 0.25});
  T r;
  ASSERT_EQ(this->lognormal(0, scripted, 1, &r), 0);
  EXPECT_EQ(r, T(-1));
}

// ---- Gamma
// -----------------------------------------------------------------------------------------------------------

// Plain models of the three methods, a candidate at a time, from the uniform numbers in their order. Each keeps what
// the next candidate is made of.
struct GammaModel {
  double alpha;
  std::vector<double> u;
  std::size_t at = 0;
  int accepted_whole = 0;
  double next() { return at < u.size() ? u[at++] : nan; }

  std::vector<double> marsaglia(int n) {
    const double d = alpha - 1.0 / 3, c = 1 / std::sqrt(9 * alpha - 3);
    std::vector<double> out;
    while (int(out.size()) < n) {
      const double u1 = next(), v1 = next(), u2 = next(), v2 = next(), radius = std::sqrt(-2 * std::log(u1));
      const double x[] = {radius * std::sin(2 * M_PI * u2), radius * std::cos(2 * M_PI * u2)}, test[] = {v1, v2};
      for (int k = 0; k < 2; ++k) {
        const double v = std::pow(1 + c * x[k], 3), s = 1 - 0.0331 * std::pow(x[k], 4);
        if (v > 0 && (test[k] < s || std::log(test[k]) < 0.5 * x[k] * x[k] + d * (1 - v + std::log(v)))) {
          out.push_back(d * v);
        }
      }
    }
    out.resize(n);
    return out;
  }
  // The other two test whole blocks of what is still needed, at most 512.
  template <class F>
  std::vector<double> by_blocks(int n, F candidate) {
    std::vector<double> out;
    while (int(out.size()) < n) {
      for (int m = std::min(n - int(out.size()), 512); m > 0; --m) {
        const double u1 = next(), u2 = next();
        double x;
        if (candidate(u1, u2, x)) out.push_back(x);
      }
    }
    return out;
  }
  std::vector<double> vaduva(int n) {
    const double c = (1 - alpha) * std::pow(alpha, alpha / (1 - alpha));
    return by_blocks(n, [&](double u1, double u2, double& x) {
      x = std::pow(-std::log(u1), 1 / alpha);
      return -std::log(u1) - std::log(u2) - c >= x;
    });
  }
  std::vector<double> epd(int n) {
    return by_blocks(n, [&](double u1, double u2, double& x) {
      if (u1 < 1 - alpha) {
        x = std::pow(u1, 1 / alpha);
        return std::log(u2) + x <= 0;
      }
      const double l = std::log((1 - u1) / alpha), y = (1 - alpha) - alpha * l;
      x = std::pow(y, 1 / alpha);
      return std::log(u2) + x + l <= 0;
    });
  }
};

TYPED_TEST(Distributions, GammaFollowsThePlainModelsOfItsMethods) {
  using T = TypeParam;
  const T below = std::nextafter(T(0.6), T(0));
  for (const T alpha : {T(0.1), T(0.4), below, T(0.6), T(0.9), T(1.0001), T(2.5), T(80)}) {
    for (const int n : {1, 2, 7, 511, 512, 513, 1500}) {
      const TestStream stream(QOR_BRNG_MCG59, {unsigned(n)}), same(QOR_BRNG_MCG59, {unsigned(n)});
      std::vector<T> r(n), u(40 * n + 40);
      ASSERT_EQ(this->gamma(stream, n, r.data(), alpha, 0, 1), 0);
      this->uniform(same, int(u.size()), u.data(), 0, 1);
      GammaModel model{alpha, {u.begin(), u.end()}};
      const auto expected = alpha > 1 ? model.marsaglia(n) : alpha < T(0.6) ? model.epd(n) : model.vaduva(n);
      for (int i = 0; i < n; ++i) {
        ASSERT_NEAR(r[i], expected[i], (this->wide ? 1e-11 : 1e-3) * (expected[i] + 1e-3))
            << alpha << ' ' << n << ' ' << i;
      }
    }
  }
}

TYPED_TEST(Distributions, GammaOfShapeOneIsTheExponential) {
  using T = TypeParam;
  const TestStream stream(QOR_BRNG_MT19937, seed), same(QOR_BRNG_MT19937, seed);
  std::vector<T> r(1000), e(1000);
  this->gamma(stream, 1000, r.data(), 1, 2, 3);
  if constexpr (sizeof(T) == 8)
    _wxrdRngExponential(0, same, 1000, e.data(), 0, 1);
  else
    _wxrsRngExponential(0, same, 1000, e.data(), 0, 1);
  for (int i = 0; i < 1000; ++i) EXPECT_EQ(r[i], std::max(e[i] * 3 + 2, T(2)));
}

TYPED_TEST(Distributions, GammaCarriesTheCandidateOverCallsAndKeepsItWhenTheEngineFails) {
  using T = TypeParam;
  constexpr unsigned key = sizeof(T) == 8 ? 7 : 8;
  const TestStream stream(QOR_BRNG_MT19937, seed), same(QOR_BRNG_MT19937, seed);
  std::vector<T> whole(6000), parts;
  this->gamma(same, 6000, whole.data(), T(1.7));
  for (const int n : {1, 1, 3, 0, 512, 511, 1, 1025, 2000, 1946}) {
    std::vector<T> r(n);
    this->gamma(stream, n, r.data(), T(1.7));
    parts.insert(parts.end(), r.begin(), r.end());
  }
  for (int i = 0; i < 6000; ++i) ASSERT_NEAR(parts[i], whole[i], (this->wide ? 1e-14 : 1e-5) * 20) << i;
  T next, expected;
  this->uniform(stream, 1, &next, 0, 1), this->uniform(same, 1, &expected, 0, 1);
  EXPECT_EQ(next, expected);

  const TestStream scripted(scripted_generator(), {});
  play({0.5, 0.125, 0.125, 0.375});
  T r[3000];
  this->gamma(scripted, 1, r, T(2));
  const T* const chunk = static_cast<const T*>(__wxrSearchChunk(scripted, key));
  ASSERT_NE(chunk, nullptr);
  const T u = chunk[0], x = chunk[1];
  EXPECT_EQ(u, T(0.375));
  EXPECT_NEAR(x, std::sqrt(2 * std::log(2.0)) * std::cos(M_PI / 4), 1e-6);
  this->gamma(scripted, 0, r, T(2));
  play({0.5, 0.125, 0.125, 0.375}, 1);
  EXPECT_EQ(this->gamma(scripted, 3000, r, T(2)), -77);
  EXPECT_EQ(chunk[0], u);
  EXPECT_EQ(chunk[1], x);
}

#ifdef COUNTS_ALLOCATIONS
TYPED_TEST(Distributions, SayWhenThereIsNoMemory) {
  using T = TypeParam;
  const TestStream stream(QOR_BRNG_MT19937, seed);
  std::vector<T> r(2048), t(1024 * 1025 / 2, T(1));
  this->gamma(stream, 1, r.data(), T(0.5));  // the thread's mode cells exist from here on
  until_failure = 0;
  const int gamma = this->gamma(stream, 4, r.data(), T(2)), lognormal = this->lognormal(0, stream, 4, r.data());
  const int vectors = this->vectors(0, stream, 1, r.data(), 1024, QOR_RNG_STORAGE_PACKED, t.data(), t.data());
  until_failure = -1;
  EXPECT_EQ(gamma, QOR_RNG_NO_MEMORY);
  EXPECT_EQ(lognormal, QOR_RNG_NO_MEMORY);
  EXPECT_EQ(vectors, 0);  // whatever the dimension
}
#endif

// ---- multivariate Gaussian
// ---------------------------------------------------------------------------------------------

TYPED_TEST(Distributions, VectorsAreTheFactorTimesGaussianNumbers) {
  using T = TypeParam;
  for (const int d : {1, 2, 3, 4, 5, 7, 8, 9, 43, 57, 64, 65, 100, 1023, 1024, 1029}) {
    const int n = d > 1000 ? 5 : 19;
    std::vector<T> full(d * d, std::numeric_limits<T>::quiet_NaN()), packed, diagonal, a(d);
    for (int i = 0; i < d; ++i) {
      a[i] = T(i % 5);
      for (int k = 0; k <= i; ++k) full[i * d + k] = T((i * 7 + k * 3) % 11 - 5) / T(4);
      diagonal.push_back(full[i * d + i]);
    }
    for (int k = 0; k < d; ++k) {
      for (int i = k; i < d; ++i) packed.push_back(full[i * d + k]);
    }
    const std::vector<T>* const factors[] = {&full, &packed, &diagonal, &diagonal};
    for (const int method : {0, 1}) {
      for (const int storage : {0, 1, 2, 3}) {
        const TestStream stream(QOR_BRNG_MT19937, seed), same(QOR_BRNG_MT19937, seed);
        std::vector<T> r(n * d + 1, T(99)), z(n * d);
        ASSERT_EQ(this->vectors(method, stream, n, r.data(), d, storage, a.data(), factors[storage]->data()), 0);
        this->gaussian(method, same, n * d, z.data(), 0, 1);
        EXPECT_EQ(r[n * d], T(99));
        for (int j = 0; j < n; ++j) {
          for (int i = 0; i < d; ++i) {
            double exact = storage == 3 && d > 1 ? 0 : a[i], size = 1;
            const T* const v = z.data() + j * d;
            for (int k = 0; k <= i && storage < 2; ++k) {
              exact += double(full[i * d + k]) * v[k];
              size += std::fabs(double(full[i * d + k]) * v[k]);
            }
            if (storage == 2 || d == 1) exact = a[i] + double(diagonal[i]) * v[i], size = 10 + std::fabs(exact);
            if (storage == 3 && d > 1) exact = v[i];
            ASSERT_NEAR(r[j * d + i], exact, std::numeric_limits<T>::epsilon() * 4 * size)
                << d << ' ' << storage << ' ' << j << ' ' << i;
          }
        }
      }
    }
  }
}

// ---- Beta and the discrete ones
// ----------------------------------------------------------------------------------------

TYPED_TEST(Distributions, BetaStaysInsideAndRefusesBadShapes) {
  using T = TypeParam;
  const auto draw = [](qor_stream* s, int n, T* r, T p, T q, T a, T beta, int method = 0) {
    if constexpr (sizeof(T) == 8)
      return _wxrdRngBeta(method, s, n, r, p, q, a, beta);
    else
      return _wxrsRngBeta(method, s, n, r, p, q, a, beta);
  };
  std::vector<T> r(3000);
  for (const T p : {T(1e-4), T(0.02), T(0.5), T(1), T(3), T(1e5)}) {
    for (const T q : {T(1e-4), T(0.3), T(1), T(2), T(1e5)}) {
      const TestStream stream(QOR_BRNG_MT19937, seed);
      ASSERT_EQ(draw(stream, 3000, r.data(), p, q, T(0.1), T(0.7)), 0);
      for (const T x : r) ASSERT_TRUE(x >= T(0.1) && x <= T(0.1) + T(0.7)) << p << ' ' << q << ' ' << x;
    }
  }
  const TestStream scripted(scripted_generator(), {});
  play({0.5});
  for (const auto& [p, q, beta] : {std::tuple{0.0, 1.0, 1.0},
                                   {1.0, 0.0, 1.0},
                                   {-1.0, 1.0, 1.0},
                                   {nan, 1.0, 1.0},
                                   {1.0, inf, 1.0},
                                   {1.0, 1.0, 0.0},
                                   {1.0, 1.0, nan}}) {
    EXPECT_EQ(draw(scripted, 1, r.data(), T(p), T(q), 0, T(beta)), QOR_RNG_BAD_ARGUMENT)
        << p << ' ' << q << ' ' << beta;
  }
  EXPECT_EQ(draw(scripted, 1, r.data(), 1, 1, 0, 1, 1), QOR_RNG_BAD_METHOD);
  EXPECT_TRUE(requests.empty());
}

struct Refused {
  const char* name;
  std::function<int(qor_stream*, int*)> draw;
  int status;
};

TEST(Discrete, RefuseBadArgumentsAndStoreConstantsWithoutDrawing) {
  constexpr int bad = QOR_RNG_BAD_ARGUMENT, method = QOR_RNG_BAD_METHOD;
  static const double lambdas[] = {1, -1}, huge[] = {1, 0x1p31};
  using S = qor_stream*;
  const Refused rows[] = {
      {"Bernoulli", [](S s, int* r) { return _wxriRngBernoulli(0, s, 2, r, -0.1); }, bad},
      {"Bernoulli", [](S s, int* r) { return _wxriRngBernoulli(0, s, 2, r, 1.1); }, bad},
      {"Bernoulli", [](S s, int* r) { return _wxriRngBernoulli(0, s, 2, r, nan); }, bad},
      {"Bernoulli", [](S s, int* r) { return _wxriRngBernoulli(1, s, 2, r, 0.5); }, method},
      {"Geometric", [](S s, int* r) { return _wxriRngGeometric(0, s, 2, r, 0); }, bad},
      {"Binomial", [](S s, int* r) { return _wxriRngBinomial(0, s, 2, r, -1, 0.5); }, bad},
      {"Binomial", [](S s, int* r) { return _wxriRngBinomial(0, s, 2, r, 5, 2); }, bad},
      {"Hypergeometric", [](S s, int* r) { return _wxriRngHypergeometric(0, s, 2, r, 10, 11, 3); }, bad},
      {"Hypergeometric", [](S s, int* r) { return _wxriRngHypergeometric(0, s, 2, r, 10, 3, 11); }, bad},
      {"Hypergeometric", [](S s, int* r) { return _wxriRngHypergeometric(0, s, 2, r, 10, -1, 3); }, bad},
      {"Poisson", [](S s, int* r) { return _wxriRngPoisson(0, s, 2, r, -1); }, bad},
      {"Poisson", [](S s, int* r) { return _wxriRngPoisson(0, s, 2, r, 0x1.00001p30); }, bad},
      {"Poisson", [](S s, int* r) { return _wxriRngPoisson(7, s, 2, r, 1); }, method},
      {"PoissonV", [](S s, int* r) { return _wxriRngPoissonV(0, s, 2, r, lambdas); }, bad},
      {"PoissonV", [](S s, int* r) { return _wxriRngPoissonV(0, s, 2, r, huge); }, bad},
      {"Negbinomial", [](S s, int* r) { return _wxriRngNegbinomial(0, s, 2, r, 0, 0.5); }, bad},
      {"Negbinomial", [](S s, int* r) { return _wxriRngNegbinomial(0, s, 2, r, inf, 0.5); }, bad},
      {"Negbinomial", [](S s, int* r) { return _wxriRngNegbinomial(0, s, 2, r, 1, 0); }, bad},
      // One outcome: the status is the outcome here.
      {"Bernoulli(0)", [](S s, int* r) { return _wxriRngBernoulli(0, s, 1, r, 0) + *r; }, 0},
      {"Bernoulli(1)", [](S s, int* r) { return _wxriRngBernoulli(0, s, 1, r, 1) + *r; }, 1},
      {"Geometric(1)", [](S s, int* r) { return _wxriRngGeometric(0, s, 1, r, 1) + *r; }, 0},
      {"Binomial(7, 0)", [](S s, int* r) { return _wxriRngBinomial(0, s, 1, r, 7, 0) + *r; }, 0},
      {"Binomial(7, 1)", [](S s, int* r) { return _wxriRngBinomial(0, s, 1, r, 7, 1) + *r; }, 7},
      {"Binomial(0, 1/2)", [](S s, int* r) { return _wxriRngBinomial(0, s, 1, r, 0, 0.5) + *r; }, 0},
      {"Hypergeometric(9, 9, 4)", [](S s, int* r) { return _wxriRngHypergeometric(0, s, 1, r, 9, 9, 4) + *r; }, 4},
      {"Hypergeometric(0, 0, 0)", [](S s, int* r) { return _wxriRngHypergeometric(0, s, 1, r, 0, 0, 0) + *r; }, 0},
      {"Hypergeometric(9, 4, 9)", [](S s, int* r) { return _wxriRngHypergeometric(0, s, 1, r, 9, 4, 9) + *r; }, 4},
      {"Poisson(0)", [](S s, int* r) { return _wxriRngPoisson(0, s, 1, r, 0) + *r; }, 0},
      {"Negbinomial(3, 1)", [](S s, int* r) { return _wxriRngNegbinomial(0, s, 1, r, 3, 1) + *r; }, 0},
  };
  const TestStream scripted(scripted_generator(), {});
  play({0.5});
  for (const Refused& row : rows) {
    int r[2] = {99, 99};
    EXPECT_EQ(row.draw(scripted, r), row.status) << row.name;
    EXPECT_TRUE(row.status >= 0 || r[0] == 99) << row.name;
  }
  EXPECT_TRUE(requests.empty());
}

// The tables, which ask for one number a variate, invert: the least k with u < P(X <= k), for any u at all.
TEST(Discrete, TablesInvertTheDistributionFunction) {
  std::vector<double> u;
  for (int i = 0; i < 4099; ++i) u.push_back(i / 4099.0);
  u.insert(u.end(), {0.0, 0.5, before_one, 1 - 0x1p-53, 0x1p-60});
  for (const known::Discrete& k : known::discrete()) {
    const TestStream scripted(scripted_generator(), {});
    play(u);
    std::vector<int> r(u.size());
    ASSERT_EQ(k.draw(scripted, int(u.size()), r.data()), 0);
    int asked = 0;
    for (const Request& request : requests) asked += request.n;
    const bool by_logarithm = k.family == "Geometric" && k.cdf(0) < 0x1p-5;
    if (asked != int(u.size()) || by_logarithm || k.family == "PoissonV" || k.family == "PoissonNormal" ||
        k.family == "Bernoulli")
      continue;
    for (std::size_t i = 0; i < u.size(); ++i) {
      EXPECT_LT(u[i], k.cdf(r[i]) + 1e-8) << k.family << ' ' << k.parameters;
      EXPECT_GE(u[i], k.cdf(r[i] - 1.0) - 1e-8) << k.family << ' ' << k.parameters;
    }
  }
}

// With an engine whose words are compared, too, the outcome is that of its number: on both sides of numbers that occur.
TEST(Discrete, BernoulliComparesTheEnginesNumber) {
  constexpr int n = 10007;
  for (const EngineRow& engine : engine_rows()) {
    const TestStream source(engine.brng, seed);
    std::vector<double> u(n);
    ASSERT_EQ(_wxrdRngUniform(0, source, n, u.data(), 0, 1), 0);
    std::vector<double> probabilities = {0.3, 0x1p-12, 1 - 0x1p-12, 0.5};
    for (int i = 1; i < n && probabilities.size() < 40; i += 101) {
      if (u[i] < 0x1p-11 || u[i] > 1 - 0x1p-11) continue;
      probabilities.insert(probabilities.end(), {u[i], std::nextafter(u[i], 0.0), std::nextafter(u[i], 1.0)});
    }
    for (const double p : probabilities) {
      const TestStream stream(engine.brng, seed);
      std::vector<int> r(n);
      ASSERT_EQ(_wxriRngBernoulli(0, stream, 2500, r.data(), p), 0);
      ASSERT_EQ(_wxriRngBernoulli(0, stream, n - 2500, r.data() + 2500, p), 0);
      for (int i = 0; i < n; ++i) ASSERT_EQ(r[i], u[i] < p) << engine.name << ' ' << p << ' ' << i;
    }
  }
}

// Probabilities far below the engine's resolution.
TEST(Discrete, TakeTwoNumbersWhereOneIsTooCoarse) {
  struct Row {
    const char* name;
    std::function<int(qor_stream*, int*)> draw;
    double head, tail;  // the engine's two numbers; u = (floor(head 2^21) + tail) 2^-21
    int result;
  };
  constexpr double top = 1 - 0x1p-21;
  using S = qor_stream*;
  const auto poisson = [](S s, int* r) { return _wxriRngPoisson(0, s, 1, r, 1e-10); };
  const auto bernoulli = [](S s, int* r) { return _wxriRngBernoulli(0, s, 1, r, 1e-10); };
  const auto binomial = [](S s, int* r) { return _wxriRngBinomial(0, s, 1, r, 1000, 1e-12); };
  const auto geometric = [](S s, int* r) { return _wxriRngGeometric(0, s, 1, r, 1e-9); };
  const Row rows[] = {
      {"Poisson", poisson, top, 1 - 1.9e-4, 1},                                                    // 1 - u = 0.9e-10
      {"Poisson", poisson, top, 1 - 2.3e-4, 0},                                                    // 1 - u = 1.1e-10
      {"Bernoulli", bernoulli, 0, 1.9e-4, 1},                                                      // u = 0.9e-10
      {"Bernoulli", bernoulli, 0, 2.3e-4, 0},       {"Binomial", binomial, top, 1 - 1.9e-3, 1},    // 1 - u = 0.9e-9
      {"Binomial", binomial, top, 1 - 2.3e-3, 0},   {"Geometric", geometric, top, 1 - 1.9e-3, 0},  // 1 - u = 0.9e-9
      {"Geometric", geometric, top, 1 - 2.3e-3, 1}, {"Geometric", geometric, 0, 0, 2147483647},
      {"Geometric", geometric, 0.5, 0, 693147180},
  };
  const TestStream scripted(scripted_generator(), {});
  for (const Row& row : rows) {
    play({row.head, row.tail});
    int r = -1;
    ASSERT_EQ(row.draw(scripted, &r), 0);
    EXPECT_EQ(r, row.result) << row.name << ' ' << row.tail;
  }
}

TEST(Discrete, SplitsGiveTheSameSequenceWhereTheySaySo) {
  for (const known::Discrete& k : known::discrete()) {
    const TestStream stream(QOR_BRNG_MT19937, seed), same(QOR_BRNG_MT19937, seed);
    std::vector<int> whole(5000), parts(5000);
    ASSERT_EQ(k.draw(same, 5000, whole.data()), 0);
    for (int at = 0, n = 1; at < 5000; at += n, n = std::min(2 * n + 1, 5000 - at))
      k.draw(stream, n, parts.data() + at);
    double next[2];
    _wxrdRngUniform(0, stream, 1, next, 0, 1), _wxrdRngUniform(0, same, 1, next + 1, 0, 1);
    static const std::string rejections[] = {"Binomial 1000000, 0.4",
                                             "Binomial 2147483647, 0.5",
                                             "Poisson 3001",
                                             "Poisson 100000",
                                             "Poisson 1073741824",
                                             "Negbinomial 0.3, 1e-06",
                                             "Negbinomial 10, 0.001",
                                             "Negbinomial 1000, 0.2",
                                             "Negbinomial 100000, 0.5",
                                             "Hypergeometric 1000000, 100000, 300000",
                                             "Binomial 20000, 0.7",
                                             "Hypergeometric 2147483647, 1073741824, 1073741000",
                                             "Hypergeometric 2147483647, 50000, 1000000000"};
    const bool rejection =
        k.family == "PoissonV" || std::ranges::find(rejections, k.family + ' ' + k.parameters) != std::end(rejections);
    if (rejection) continue;
    EXPECT_TRUE(parts == whole) << k.family << ' ' << k.parameters;
    EXPECT_EQ(next[0], next[1]) << k.family << ' ' << k.parameters;
  }
}

// Numbers outside [0, 1), as abstract streams may deliver them, stay within the tables.
TEST(Discrete, SurviveNumbersThatNoEngineShouldDeliver) {
  for (const known::Discrete& k : known::discrete()) {
    const TestStream scripted(scripted_generator(), {});
    play({0.3, 1.0, 0.6, -1.0, 0.2, 5e9, 0.7, nan, 0.4, inf, 0.55, -inf, 0.1, 0.5, 0.9, 0.35, 0.8, 0.05, 0.45});
    int r[100];
    ASSERT_EQ(k.draw(scripted, 100, r), 0);
    for (const int x : r) ASSERT_GE(x, 0) << k.family << ' ' << k.parameters;
  }
}

// Elements of one request with parameters of their own: each class of them is tested by itself.
TEST(Discrete, PoissonVKeepsItsParametersApart) {
  constexpr double lambdas[] = {0.2, 1e5, 9.9, 10.1, 0, 60, 3};
  constexpr int kinds = std::size(lambdas), n = 30000;
  const TestStream stream(QOR_BRNG_MT19937, seed);
  std::vector<double> lambda;
  for (int i = 0; i < kinds * n; ++i) lambda.push_back(lambdas[i % kinds]);
  std::vector<int> r(lambda.size());
  ASSERT_EQ(_wxriRngPoissonV(0, stream, kinds * n, r.data(), lambda.data()), 0);
  for (int k = 0; k < kinds; ++k) {
    std::vector<int> of;
    for (int i = 0; i < n; ++i) of.push_back(r[i * kinds + k]);
    if (lambdas[k] == 0) {
      EXPECT_EQ(*std::ranges::max_element(of), 0);
      continue;
    }
    EXPECT_GT(known::chi_square(of, known::poisson_cdf(lambdas[k])).p, 1e-9) << lambdas[k];
  }
}

}  // namespace
