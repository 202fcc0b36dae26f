// qor/qor.hpp: the library for C++20. Owners instead of handles, ranges instead of pointers and counts, and errors that
// are thrown or returned, as the program chooses. Header only; every call is one call of the C interface, nothing is
// copied on the way, and the C headers say what it does.
//
//   Errors     Classes come in two forms. qor::Stream, qor::Task, qor::RealTransform ... throw qor::Error, which knows the
//              status; those of the same names in namespace qor::returning return qor::Status, which may not be ignored,
//              and never throw for what the library reports. An object of theirs whose making failed is empty: status()
//              tells why, and every call on it returns that.
//              A range whose length doesn't fit is a mistake of the program: std::length_error, in both forms.
//   Ranges     Whatever is contiguous will do: std::vector, std::array, std::span, built-in arrays. The element type,
//              float or double, picks the function.
//   Copies     None are made unless asked for: copy().
//   Threads    As the C headers say.
#ifndef QOR_QOR_HPP
#define QOR_QOR_HPP

#include <algorithm>
#include <array>
#include <climits>
#include <complex>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <ranges>
#include <span>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "qor/qor.h"

namespace qor {

// ---- errors ---------------------------------------------------------------------------------------------------------

// What a status means, in a few words.
inline const char* describe(int status) noexcept {
  switch (status) {
    case QOR_RNG_OK:
      return "success";
    case QOR_RNG_BAD_METHOD:
      return "no such method";
    case QOR_RNG_BAD_ARGUMENT:
      return "bad argument";
    case QOR_RNG_NO_MEMORY:
    case QFPS_NO_MEMORY:
    case QOR_CONV_NO_MEMORY:
      return "no memory";
    case QOR_RNG_NULL_SLOT:
      return "null pointer";
    case QOR_RNG_BAD_BRNG:
      return "unknown generator";
    case QOR_RNG_NO_LEAPFROG:
      return "the engine can't leapfrog";
    case QOR_RNG_NO_SKIP_AHEAD:
      return "the engine can't skip ahead";
    case QOR_RNG_INCOMPATIBLE:
      return "streams of different generators";
    case QOR_RNG_BAD_STATE_BYTES:
    case QOR_RNG_BAD_WORD_BYTES:
    case QOR_RNG_BAD_SEED_WORDS:
    case QOR_RNG_BAD_BITS:
      return "a field of the generator's record";
    case QOR_RNG_REGISTRY_FULL:
      return "too many generators";
    case QOR_RNG_BAD_UPDATE:
      return "the callback delivered a wrong number of elements";
    case QOR_RNG_CANNOT_CLOSE:
      return "closing the file failed";
    case QOR_RNG_CANNOT_OPEN:
      return "the file can't be opened";
    case QOR_RNG_CANNOT_WRITE:
      return "writing the file failed";
    case QOR_RNG_CANNOT_READ:
      return "the file can't be read or ends early";
    case QOR_RNG_BAD_FILE:
      return "not a stream file, or one of an unknown generator, or damaged";
    case QOR_RNG_BAD_VERSION:
      return "a stream file of another version";
    case QFPS_BAD_LENGTH:
      return "a length below 1";
    case QFPS_NULL_POINTER:
      return "null pointer";
    case QFPS_BAD_ORDER:
      return "order outside 0 .. 30";
    case QFPS_BAD_FLAG:
      return "unknown scaling";
    case QFPS_WRONG_RECORD:
      return "a record of another kind of transform";
    case QOR_CONV_NOT_IMPLEMENTED:
      return "double data can't be convolved in single precision";
    case QOR_CONV_UNKNOWN_PARAMETER:
      return "no such parameter of a task";
    case QOR_CONV_FIXED_PARAMETER:
      return "a parameter that is fixed";
    case QOR_CONV_NO_RELEASE:
      return "private data without a function that releases it";
    case QOR_CONV_COPY_FAILED:
      return "private data that can't be copied";
    case QOR_CONV_RELEASE_FAILED:
      return "private data that can't be released";
    case QOR_CONV_BAD_RANK:
      return "rank outside 1 .. 7";
    case QOR_CONV_BAD_START:
      return "start outside the full result";
    case QOR_CONV_BAD_DECIMATION:
      return "decimation below 1, or an output beyond the full result";
    case QOR_CONV_BAD_X_SHAPE:
    case QOR_CONV_BAD_Y_SHAPE:
    case QOR_CONV_BAD_Z_SHAPE:
      return "a shape below 1";
    case QOR_CONV_ZERO_Z_STRIDE:
      return "an output stride of 0";
    case QOR_CONV_NULL_X:
    case QOR_CONV_NULL_Y:
    case QOR_CONV_NULL_Z:
      return "null pointer";
    case QOR_CONV_TRANSFORM_FAILED:
      return "too large for a transform, or no memory for one";
    default:
      return status <= QOR_DFT_NO_MEMORY ? qor_dft_zx9_error_message_external(status) : "failure";
  }
}

class Error : public std::runtime_error {
 public:
  Error(int status, const char* what)
      : std::runtime_error(std::string(what) + ": " + describe(status) + " (" + std::to_string(status) + ")"),
        status_(status) {}
  int status() const noexcept { return status_; }

 private:
  int status_;
};

// 0, or what failed.
struct [[nodiscard]] Status {
  int code = 0;
  constexpr bool ok() const noexcept { return code >= 0; }
  const char* text() const noexcept { return describe(code); }
  friend constexpr bool operator==(Status, Status) = default;
};

// The two forms.
struct Throw {
  using Result = void;
  static void take(int status, const char* what) {
    if (status < 0) throw Error(status, what);
  }
};
struct Return {
  using Result = Status;
  static Status take(int status, const char*) noexcept { return {status}; }
};

// ---- ranges ---------------------------------------------------------------------------------------------------------

template <class R>
using Element = std::remove_cv_t<std::ranges::range_value_t<R>>;
template <class T>
concept Real = std::same_as<T, float> || std::same_as<T, double>;
template <class T>
concept Complex = std::same_as<T, std::complex<float>> || std::same_as<T, std::complex<double>>;
template <class R>
concept Input = std::ranges::contiguous_range<R> && std::ranges::sized_range<R>;
template <class R>
concept Output = Input<R> && !std::is_const_v<std::remove_reference_t<std::ranges::range_reference_t<R>>>;
template <class R>
concept RealInput = Input<R> && Real<Element<R>>;
template <class R>
concept RealOutput = Output<R> && Real<Element<R>>;
template <class R>
concept ComplexInput = Input<R> && Complex<Element<R>>;
template <class R>
concept ComplexOutput = Output<R> && Complex<Element<R>>;

namespace detail {

template <class R>
int count(R&& r) {
  const std::size_t n = std::ranges::size(r);
  if (n > INT_MAX) throw std::length_error("qor: a range of more than 2^31 - 1 elements");
  return static_cast<int>(n);
}
inline void require(bool fits, const char* what) {
  if (!fits) throw std::length_error(what);
}
// The function of double or that of single precision.
template <Real T, class D, class S>
constexpr auto pick(D of_doubles, S of_singles) noexcept {
  if constexpr (std::same_as<T, double>) {
    return of_doubles;
  } else {
    return of_singles;
  }
}
// Complex numbers as the C interface sees them: pairs of reals.
template <class R>
auto reals(R&& r) noexcept {
  using T = std::remove_reference_t<std::ranges::range_reference_t<R>>;
  if constexpr (Complex<std::remove_cv_t<T>>) {
    using Part = typename std::remove_cv_t<T>::value_type;
    return reinterpret_cast<std::conditional_t<std::is_const_v<T>, const Part*, Part*>>(std::ranges::data(r));
  } else {
    return std::ranges::data(r);
  }
}

// How objects of the C interface are deleted.
inline void release(qor_stream* stream) noexcept { __wxrDeleteStream(&stream); }
inline void release(qor_conv_task* task) noexcept { __wxrDeleteTask(&task); }
inline void release(qor_dft_descriptor* descriptor) noexcept { qor_dft_zx9_free_descriptor_external(&descriptor); }
inline void release(qfpsDFTSpec_R_64f* spec) noexcept { qfpsDFTFree_R_64f(spec); }
inline void release(qfpsDFTSpec_R_32f* spec) noexcept { qfpsDFTFree_R_32f(spec); }
inline void release(qfpsDFTSpec_C_64fc* spec) noexcept { qfpsDFTFree_C_64fc(spec); }
inline void release(qfpsDFTSpec_C_32fc* spec) noexcept { qfpsDFTFree_C_32fc(spec); }

// Owner of such an object, or of none: then with what its making returned.
template <class T, class Errors>
struct Handle {
  T* object = nullptr;
  int status = QOR_RNG_NULL_SLOT;

  Handle() = default;
  Handle(Handle&& other) noexcept
      : object(std::exchange(other.object, nullptr)), status(std::exchange(other.status, QOR_RNG_NULL_SLOT)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(object, other.object);
    std::swap(status, other.status);
    return *this;
  }
  ~Handle() { reset(); }
  void reset() noexcept {
    if (object != nullptr) release(std::exchange(object, nullptr));
  }
  // After the making. What was made but could not be initialised is of no use.
  void made(int result, const char* what) {
    status = result;
    if (result >= 0) return;
    reset();
    if constexpr (std::same_as<Errors, Throw>) Throw::take(result, what);
  }
  // Why there is no object; 0 when there is one.
  int failure() const noexcept { return object != nullptr ? 0 : status < 0 ? status : QOR_RNG_NULL_SLOT; }
  // Calls something on the object.
  template <class F>
  typename Errors::Result done(const char* what, F&& call) const {
    return Errors::take(object == nullptr ? failure() : call(), what);
  }
};

}  // namespace detail

// ---- random streams -------------------------------------------------------------------------------------------------

enum class Storage {
  full = QOR_RNG_STORAGE_FULL,
  packed = QOR_RNG_STORAGE_PACKED,
  diagonal = QOR_RNG_STORAGE_DIAGONAL
};

template <class Errors>
class BasicStream {
 public:
  using Result = typename Errors::Result;

  // An empty stream: nothing can be drawn from it.
  BasicStream() = default;
  // brng is one of QOR_BRNG_... (+ member), or what __wxrRegisterBrng gave.
  explicit BasicStream(int brng, std::span<const unsigned> seeds) {
    handle_.made(__wxrNewStreamEx(&handle_.object, brng, detail::count(seeds), seeds.data()), "making a stream");
  }
  BasicStream(int brng, std::initializer_list<unsigned> seeds)
      : BasicStream(brng, std::span(seeds.begin(), seeds.size())) {}
  explicit BasicStream(int brng, unsigned word = 1) : BasicStream(brng, std::span<const unsigned>(&word, 1)) {}
  // Takes over a stream of the C interface, or an abstract one.
  static BasicStream adopt(qor_stream* stream) noexcept {
    BasicStream s;
    s.handle_.object = stream;
    return s;
  }
  static BasicStream load(const std::string& file) {
    BasicStream s;
    s.handle_.made(__wxrLoadStreamF(&s.handle_.object, file.c_str()), "loading a stream");
    return s;
  }
  // A stream that continues the sequence from here on, on its own.
  BasicStream copy() const {
    BasicStream s;
    s.handle_.made(get() != nullptr ? __wxrCopyStream(&s.handle_.object, get()) : handle_.failure(),
                   "copying a stream");
    return s;
  }

  qor_stream* get() const noexcept { return handle_.object; }
  qor_stream* release() noexcept { return std::exchange(handle_.object, nullptr); }
  Status status() const noexcept { return {handle_.failure()}; }
  explicit operator bool() const noexcept { return get() != nullptr; }
  int brng() const noexcept { return get() != nullptr ? __wxrGetStreamStateBrng(get()) : 0; }

  Result save(const std::string& file) const {
    return handle_.done("saving a stream", [&] { return __wxrSaveStreamF(get(), file.c_str(), -1); });
  }
  // Stream k of n that share the sequence in turns.
  Result leapfrog(int k, int n) {
    return handle_.done("leapfrogging", [&] { return __wxrLeapfrogStream(get(), k, n); });
  }
  // Any distance, in steps of what one call takes.
  Result skip_ahead(std::uint64_t n) {
    return handle_.done("skipping ahead", [&] {
      int status = QOR_RNG_OK;
      do {
        const int step = static_cast<int>(std::min<std::uint64_t>(n, INT_MAX));
        status = __wxrSkipAheadStream(get(), step);
        n -= static_cast<std::uint64_t>(step);
      } while (n > 0 && status >= 0);
      return status;
    });
  }

  // The engine's words as they are, wordBytes each: r must have a whole number of them.
  template <Output R>
  requires std::same_as<Element<R>, std::uint32_t> Result words(R&& r) {
    return handle_.done("drawing words", [&] {
      BrngRecord record;
      if (const int status = __wxrGetBrngProperties(brng(), &record); status < 0) return status;
      const int each = record.wordBytes / 4, n = detail::count(r);
      detail::require(n % each == 0, "qor: words: not a whole number of the engine's words");
      return _wxriRngUniformBits(0, get(), n / each, std::ranges::data(r));
    });
  }

  // Variates, parameters in the order of qor/rng.h, which tells the densities.
  template <RealOutput R>
  Result uniform(R&& r, Element<R> a = 0, Element<R> b = 1, unsigned method = 0) {
    return draw(_wxrdRngUniform, _wxrsRngUniform, r, method, a, b);
  }
  template <RealOutput R>
  Result gaussian(R&& r, Element<R> mean = 0, Element<R> sigma = 1, int method = QOR_RNG_GAUSSIAN_BOXMULLER2) {
    return draw(_wxrdRngGaussian, _wxrsRngGaussian, r, method, mean, sigma);
  }
  template <RealOutput R>
  Result exponential(R&& r, Element<R> a = 0, Element<R> beta = 1) {
    return draw(_wxrdRngExponential, _wxrsRngExponential, r, 0, a, beta);
  }
  template <RealOutput R>
  Result laplace(R&& r, Element<R> a = 0, Element<R> beta = 1) {
    return draw(_wxrdRngLaplace, _wxrsRngLaplace, r, 0, a, beta);
  }
  template <RealOutput R>
  Result weibull(R&& r, Element<R> alpha, Element<R> a = 0, Element<R> beta = 1) {
    return draw(_wxrdRngWeibull, _wxrsRngWeibull, r, 0, alpha, a, beta);
  }
  template <RealOutput R>
  Result cauchy(R&& r, Element<R> a = 0, Element<R> beta = 1) {
    return draw(_wxrdRngCauchy, _wxrsRngCauchy, r, 0, a, beta);
  }
  template <RealOutput R>
  Result rayleigh(R&& r, Element<R> a = 0, Element<R> beta = 1) {
    return draw(_wxrdRngRayleigh, _wxrsRngRayleigh, r, 0, a, beta);
  }
  template <RealOutput R>
  Result lognormal(R&& r, Element<R> a = 0, Element<R> sigma = 1, Element<R> b = 0, Element<R> beta = 1) {
    return draw(_wxrdRngLognormal, _wxrsRngLognormal, r, 0, a, sigma, b, beta);
  }
  template <RealOutput R>
  Result gumbel(R&& r, Element<R> a = 0, Element<R> beta = 1) {
    return draw(_wxrdRngGumbel, _wxrsRngGumbel, r, 0, a, beta);
  }
  template <RealOutput R>
  Result gamma(R&& r, Element<R> alpha, Element<R> a = 0, Element<R> beta = 1) {
    return draw(_wxrdRngGamma, _wxrsRngGamma, r, 0, alpha, a, beta);
  }
  template <RealOutput R>
  Result beta(R&& r, Element<R> p, Element<R> q, Element<R> a = 0, Element<R> scale = 1) {
    return draw(_wxrdRngBeta, _wxrsRngBeta, r, 0, p, q, a, scale);
  }
  // Vectors of mean.size() coordinates, one after another; t as the storage wants it.
  template <RealOutput R, RealInput A, RealInput T>
  requires std::same_as<Element<R>, Element<A>> && std::same_as<Element<R>, Element<T>> Result
  gaussian_mv(R&& r, Storage storage, const A& mean, const T& t, int method = QOR_RNG_GAUSSIAN_BOXMULLER2) {
    const int d = detail::count(mean), n = detail::count(r), given = detail::count(t);
    const int wanted = storage == Storage::full ? d * d : storage == Storage::packed ? d * (d + 1) / 2 : d;
    detail::require(d > 0 && n % d == 0, "qor: gaussian_mv: not a whole number of vectors");
    detail::require(given == wanted, "qor: gaussian_mv: a factor of another size");
    return handle_.done("drawing variates", [&] {
      return detail::pick<Element<R>>(_wxrdRngGaussianMV, _wxrsRngGaussianMV)(
          method, get(), n / d, std::ranges::data(r), d, static_cast<int>(storage), std::ranges::data(mean),
          std::ranges::data(t));
    });
  }
  Result uniform(std::span<int> r, int a, int b) { return draw_integers(_wxriRngUniform, r, 0, a, b); }
  Result bernoulli(std::span<int> r, double p) { return draw_integers(_wxriRngBernoulli, r, 0, p); }
  Result geometric(std::span<int> r, double p) { return draw_integers(_wxriRngGeometric, r, 0, p); }
  Result binomial(std::span<int> r, int ntrial, double p) { return draw_integers(_wxriRngBinomial, r, 0, ntrial, p); }
  Result hypergeometric(std::span<int> r, int l, int s, int m) {
    return draw_integers(_wxriRngHypergeometric, r, 0, l, s, m);
  }
  Result poisson(std::span<int> r, double lambda, int method = 0) {
    return draw_integers(_wxriRngPoisson, r, method, lambda);
  }
  Result poisson(std::span<int> r, std::span<const double> lambdas) {
    detail::require(r.size() == lambdas.size(), "qor: poisson: a parameter for each variate");
    return draw_integers(_wxriRngPoissonV, r, 0, lambdas.data());
  }
  Result negbinomial(std::span<int> r, double a, double p) { return draw_integers(_wxriRngNegbinomial, r, 0, a, p); }

 private:
  template <class D, class S, class R, class Method, class... P>
  Result draw(D of_doubles, S of_singles, R& r, Method method, P... parameters) {
    return handle_.done("drawing variates", [&] {
      return detail::pick<Element<R>>(of_doubles, of_singles)(method, get(), detail::count(r), std::ranges::data(r),
                                                              parameters...);
    });
  }
  template <class F, class... P>
  Result draw_integers(F f, std::span<int> r, int method, P... parameters) {
    return handle_.done("drawing variates",
                        [&] { return f(method, get(), detail::count(r), r.data(), parameters...); });
  }

  detail::Handle<qor_stream, Errors> handle_;
};

using Stream = BasicStream<Throw>;

// A standard uniform random bit generator (std::shuffle, std::uniform_int_distribution) on a stream, which must outlive
// it. It draws 256 words ahead. Words are the engine's where all their 32 bits are random, otherwise the first 32 bits of
// its numbers.
class Bits {
 public:
  using result_type = std::uint32_t;
  explicit Bits(Stream& stream) : stream_(&stream) {
    const int family = stream.brng() >> 20 << 20;
    whole_ = family == QOR_BRNG_MT19937 || family == QOR_BRNG_MT2203 || family == QOR_BRNG_R250;
  }
  static constexpr result_type min() noexcept { return 0; }
  static constexpr result_type max() noexcept { return std::numeric_limits<result_type>::max(); }
  result_type operator()() {
    if (next_ == words_.size()) {
      draw(words_);
      next_ = 0;
    }
    return words_[next_++];
  }
  // The next words, those drawn ahead first.
  void fill(std::span<std::uint32_t> r) {
    std::size_t done = 0;
    while (done < r.size() && next_ < words_.size()) r[done++] = words_[next_++];
    draw(r.subspan(done));
  }

 private:
  void draw(std::span<std::uint32_t> r) {
    if (whole_) return stream_->words(r);
    std::array<double, 256> u;
    for (std::size_t done = 0; done < r.size();) {
      const std::span part(u.data(), std::min(u.size(), r.size() - done));
      stream_->uniform(part, 0, 0x1p32);
      for (const double x : part) r[done++] = static_cast<std::uint32_t>(std::min(x, 0x1p32 - 1));
    }
  }
  Stream* stream_;
  bool whole_;
  std::array<std::uint32_t, 256> words_;
  std::size_t next_ = 256;
};

// ---- vector mathematics ---------------------------------------------------------------------------------------------

enum class Accuracy { high, low };

// Functions of whole ranges, in the namespace math: sin(x, y) stores the sine of each x in y, sin(x) in its place;
// sin<Accuracy::low>(x, y) takes the faster member. The result's range is as long as the argument's.
namespace math {

#define QOR_HPP_MEMBER(Name, T)                                              \
  (A == Accuracy::high ? detail::pick<T>(_tfnd##Name##_HA, _tfns##Name##_HA) \
                       : detail::pick<T>(_tfnd##Name##_50, _tfns##Name##_21))
#define QOR_HPP_ONE(name, Name)                                                                      \
  template <Accuracy A = Accuracy::high, RealInput X, RealOutput R>                                  \
  requires std::same_as<Element<X>, Element<R>>                                                      \
  void name(const X& x, R&& r) {                                                                     \
    detail::require(std::ranges::size(x) == std::ranges::size(r), "qor: " #name ": lengths differ"); \
    QOR_HPP_MEMBER(Name, Element<X>)(detail::count(x), std::ranges::data(x), std::ranges::data(r));  \
  }                                                                                                  \
  template <Accuracy A = Accuracy::high, RealOutput R>                                               \
  void name(R&& r) {                                                                                 \
    name<A>(std::as_const(r), r);                                                                    \
  }
#define QOR_HPP_BINARY(name, Name)                                                                                \
  template <Accuracy A = Accuracy::high, RealInput X, RealInput Y, RealOutput R>                                  \
  requires std::same_as<Element<X>, Element<R>> && std::same_as<Element<Y>, Element<R>>                           \
  void name(const X& x, const Y& y, R&& r) {                                                                      \
    detail::require(std::ranges::size(x) == std::ranges::size(r) && std::ranges::size(y) == std::ranges::size(r), \
                    "qor: " #name ": lengths differ");                                                            \
    QOR_HPP_MEMBER(Name, Element<X>)                                                                              \
    (detail::count(x), std::ranges::data(x), std::ranges::data(y), std::ranges::data(r));                         \
  }
#define QOR_HPP_ROUNDING(name, Name)                                                                                  \
  template <RealInput X, RealOutput R>                                                                                \
  requires std::same_as<Element<X>, Element<R>>                                                                       \
  void name(const X& x, R&& r) {                                                                                      \
    detail::require(std::ranges::size(x) == std::ranges::size(r), "qor: " #name ": lengths differ");                  \
    detail::pick<Element<X>>(_tfnd##Name, _tfns##Name)(detail::count(x), std::ranges::data(x), std::ranges::data(r)); \
  }

// Of complex numbers.
#define QOR_HPP_COMPLEX(name, Name)                                                                                    \
  template <Accuracy A = Accuracy::high, ComplexInput X, ComplexOutput R>                                              \
  requires std::same_as<Element<X>, Element<R>>                                                                        \
  void name(const X& x, R&& r) {                                                                                       \
    detail::require(std::ranges::size(x) == std::ranges::size(r), "qor: " #name ": lengths differ");                   \
    using T = typename Element<X>::value_type;                                                                         \
    (A == Accuracy::high                                                                                               \
         ? detail::pick<T>(_tfnz##Name##_HA, _tfnc##Name##_HA)                                                         \
         : detail::pick<T>(_tfnz##Name##_50, _tfnc##Name##_21))(detail::count(x), detail::reals(x), detail::reals(r)); \
  }                                                                                                                    \
  template <Accuracy A = Accuracy::high, ComplexOutput R>                                                              \
  void name(R&& r) {                                                                                                   \
    name<A>(std::as_const(r), r);                                                                                      \
  }

QOR_HPP_ONE(inv, Inv)
QOR_HPP_ONE(sqrt, Sqrt)
QOR_HPP_ONE(inv_sqrt, InvSqrt)
QOR_HPP_ONE(cbrt, Cbrt)
QOR_HPP_ONE(inv_cbrt, InvCbrt)
QOR_HPP_ONE(exp, Exp)
QOR_HPP_ONE(ln, Ln)
QOR_HPP_ONE(log10, Log10)
QOR_HPP_ONE(sin, Sin)
QOR_HPP_ONE(cos, Cos)
QOR_HPP_ONE(tan, Tan)
QOR_HPP_ONE(asin, Asin)
QOR_HPP_ONE(acos, Acos)
QOR_HPP_ONE(atan, Atan)
QOR_HPP_ONE(sinh, Sinh)
QOR_HPP_ONE(cosh, Cosh)
QOR_HPP_ONE(tanh, Tanh)
QOR_HPP_ONE(asinh, Asinh)
QOR_HPP_ONE(acosh, Acosh)
QOR_HPP_ONE(atanh, Atanh)
QOR_HPP_ONE(erf, Erf)
QOR_HPP_ONE(erfc, Erfc)
QOR_HPP_ONE(erf_inv, ErfInv)
QOR_HPP_BINARY(div, Div)
QOR_HPP_BINARY(hypot, Hypot)
QOR_HPP_BINARY(atan2, Atan2)
QOR_HPP_BINARY(pow, Pow)
QOR_HPP_ROUNDING(floor, Floor)
QOR_HPP_ROUNDING(ceil, Ceil)
QOR_HPP_ROUNDING(trunc, Trunc)
QOR_HPP_ROUNDING(round, Round)
QOR_HPP_ROUNDING(rint, Rint)
QOR_HPP_ROUNDING(nearby_int, NearbyInt)
QOR_HPP_COMPLEX(exp, Exp)
QOR_HPP_COMPLEX(ln, Ln)
QOR_HPP_COMPLEX(log10, Log10)
QOR_HPP_COMPLEX(sqrt, Sqrt)
QOR_HPP_COMPLEX(sin, Sin)
QOR_HPP_COMPLEX(cos, Cos)
QOR_HPP_COMPLEX(tan, Tan)
QOR_HPP_COMPLEX(sinh, Sinh)
QOR_HPP_COMPLEX(cosh, Cosh)
QOR_HPP_COMPLEX(tanh, Tanh)
QOR_HPP_COMPLEX(asin, Asin)
QOR_HPP_COMPLEX(acos, Acos)
QOR_HPP_COMPLEX(atan, Atan)
QOR_HPP_COMPLEX(asinh, Asinh)
QOR_HPP_COMPLEX(acosh, Acosh)
QOR_HPP_COMPLEX(atanh, Atanh)

template <Accuracy A = Accuracy::high, RealInput X, RealOutput R>
requires std::same_as<Element<X>, Element<R>>
void pow(const X& x, Element<X> power, R&& r) {
  detail::require(std::ranges::size(x) == std::ranges::size(r), "qor: pow: lengths differ");
  QOR_HPP_MEMBER(Powx, Element<X>)(detail::count(x), std::ranges::data(x), power, std::ranges::data(r));
}
template <Accuracy A = Accuracy::high, ComplexInput X, ComplexInput Y, ComplexOutput R>
requires std::same_as<Element<X>, Element<Y>> && std::same_as<Element<X>, Element<R>>
void pow(const X& x, const Y& power, R&& r) {
  detail::require(std::ranges::size(x) == std::ranges::size(r) && std::ranges::size(x) == std::ranges::size(power),
                  "qor: pow: lengths differ");
  using T = typename Element<X>::value_type;
  (A == Accuracy::high ? detail::pick<T>(_tfnzPow_HA, _tfncPow_HA) : detail::pick<T>(_tfnzPow_50, _tfncPow_21))(
      detail::count(x), detail::reals(x), detail::reals(power), detail::reals(r));
}
template <Accuracy A = Accuracy::high, ComplexInput X, ComplexOutput R>
requires std::same_as<Element<X>, Element<R>>
void pow(const X& x, Element<X> power, R&& r) {
  detail::require(std::ranges::size(x) == std::ranges::size(r), "qor: pow: lengths differ");
  using T = typename Element<X>::value_type;
  (A == Accuracy::high ? detail::pick<T>(_tfnzPowx_HA, _tfncPowx_HA) : detail::pick<T>(_tfnzPowx_50, _tfncPowx_21))(
      detail::count(x), detail::reals(x), {power.real(), power.imag()}, detail::reals(r));
}
template <Accuracy A = Accuracy::high, RealInput X, RealOutput R, RealOutput S>
requires std::same_as<Element<X>, Element<R>> && std::same_as<Element<X>, Element<S>>
void sin_cos(const X& x, R&& sine, S&& cosine) {
  detail::require(std::ranges::size(x) == std::ranges::size(sine) && std::ranges::size(x) == std::ranges::size(cosine),
                  "qor: sin_cos: lengths differ");
  QOR_HPP_MEMBER(SinCos, Element<X>)
  (detail::count(x), std::ranges::data(x), std::ranges::data(sine), std::ranges::data(cosine));
}

#undef QOR_HPP_COMPLEX
#undef QOR_HPP_ROUNDING
#undef QOR_HPP_BINARY
#undef QOR_HPP_ONE
#undef QOR_HPP_MEMBER

}  // namespace math

// What the calling thread's functions do with bad elements while the object lives: fields of the mode word (TFN_ERR_...)
// and a callback. The status starts at 0; mode, callback and status of before come back at the end.
class ErrorMode {
 public:
  explicit ErrorMode(unsigned mode = TFN_ERR_IGNORE, TfnErrorCallBack callback = nullptr) noexcept
      : mode_(_tfnSetMode(mode)), callback_(_tfnSetErrorCallBack(callback)), status_(_tfnClearErrStatus()) {}
  ~ErrorMode() {
    _tfnSetMode(mode_);
    _tfnSetErrorCallBack(callback_);
    _tfnSetErrStatus(status_);
  }
  ErrorMode(const ErrorMode&) = delete;
  ErrorMode& operator=(const ErrorMode&) = delete;
  // TFN_STATUS_... of the last bad element, 0 while there was none.
  int status() const noexcept { return _tfnGetErrStatus(); }

 private:
  unsigned mode_;
  TfnErrorCallBack callback_;
  int status_;
};

// ---- transforms -----------------------------------------------------------------------------------------------------

enum class Scaling {
  forward = QFPS_DIV_FORWARD_BY_N,
  inverse = QFPS_DIV_INVERSE_BY_N,
  both = QFPS_DIV_BY_SQRT_N,
  none = QFPS_NO_SCALING
};
enum class Packing { perm, pack, ccs };

// Reals that the spectrum of n reals takes in a packing.
constexpr int packed_size(Packing packing, int n) noexcept { return packing != Packing::ccs ? n : n + 2 - n % 2; }

namespace detail {

// The functions of one kind of transform.
template <Real T>
struct RealFunctions {
  using Spec = std::conditional_t<std::same_as<T, double>, qfpsDFTSpec_R_64f, qfpsDFTSpec_R_32f>;
  static constexpr auto make = pick<T>(qfpsDFTInitAlloc_R_64f, qfpsDFTInitAlloc_R_32f);
  static constexpr auto buffer_size = pick<T>(qfpsDFTGetBufSize_R_64f, qfpsDFTGetBufSize_R_32f);
};
template <Real T>
struct ComplexFunctions {
  using Spec = std::conditional_t<std::same_as<T, double>, qfpsDFTSpec_C_64fc, qfpsDFTSpec_C_32fc>;
  static constexpr auto make = pick<T>(qfpsDFTInitAlloc_C_64fc, qfpsDFTInitAlloc_C_32fc);
  static constexpr auto buffer_size = pick<T>(qfpsDFTGetBufSize_C_64fc, qfpsDFTGetBufSize_C_32fc);
};

// Owner of a specification record.
template <class Functions, class Errors>
class Transform {
 public:
  using Result = typename Errors::Result;
  Transform(int length, Scaling scaling) : length_(length) {
    handle_.made(Functions::make(&handle_.object, length, static_cast<int>(scaling), 0), "making a transform");
  }
  int length() const noexcept { return length_; }
  Status status() const noexcept { return {handle_.failure()}; }
  const typename Functions::Spec* get() const noexcept { return handle_.object; }
  // Bytes of work space that spare a call its allocation.
  std::size_t buffer_size() const noexcept {
    int size = 0;
    if (get() != nullptr) Functions::buffer_size(get(), &size);
    return static_cast<std::size_t>(size);
  }

 protected:
  template <class F, class Source, class Destination>
  Result run(F f, const Source& source, Destination& destination, std::span<unsigned char> buffer, int from,
             int to) const {
    require(count(source) == from && count(destination) == to, "qor: transform: a range of another length");
    require(buffer.empty() || buffer.size() >= buffer_size(), "qor: transform: the buffer is too short");
    return handle_.done("transforming", [&] { return f(reals(source), reals(destination), get(), buffer.data()); });
  }

 private:
  Handle<typename Functions::Spec, Errors> handle_;
  int length_;
};

}  // namespace detail

// Transforms of n reals, of any length, to spectra in a packing (qor/fft.h shows them) and back. The record may be used by
// any number of threads at once, each with its own buffer; without a buffer a call allocates its own.
template <Real T, class Errors>
class BasicRealTransform : public detail::Transform<detail::RealFunctions<T>, Errors> {
  using Base = detail::Transform<detail::RealFunctions<T>, Errors>;

 public:
  explicit BasicRealTransform(int length, Scaling scaling = Scaling::inverse) : Base(length, scaling) {}
  template <RealInput X, RealOutput S>
  requires std::same_as<Element<X>, T> && std::same_as<Element<S>, T>
  typename Base::Result forward(const X& x, S&& spectrum, Packing packing = Packing::perm,
                                std::span<unsigned char> buffer = {}) const {
    static constexpr decltype(detail::pick<T>(qfpsDFTFwd_RToPerm_64f, qfpsDFTFwd_RToPerm_32f)) functions[] = {
        detail::pick<T>(qfpsDFTFwd_RToPerm_64f, qfpsDFTFwd_RToPerm_32f),
        detail::pick<T>(qfpsDFTFwd_RToPack_64f, qfpsDFTFwd_RToPack_32f),
        detail::pick<T>(qfpsDFTFwd_RToCCS_64f, qfpsDFTFwd_RToCCS_32f)};
    return Base::run(functions[static_cast<int>(packing)], x, spectrum, buffer, Base::length(),
                     packed_size(packing, Base::length()));
  }
  template <RealInput S, RealOutput X>
  requires std::same_as<Element<X>, T> && std::same_as<Element<S>, T>
  typename Base::Result inverse(const S& spectrum, X&& x, Packing packing = Packing::perm,
                                std::span<unsigned char> buffer = {}) const {
    static constexpr decltype(detail::pick<T>(qfpsDFTInv_PermToR_64f, qfpsDFTInv_PermToR_32f)) functions[] = {
        detail::pick<T>(qfpsDFTInv_PermToR_64f, qfpsDFTInv_PermToR_32f),
        detail::pick<T>(qfpsDFTInv_PackToR_64f, qfpsDFTInv_PackToR_32f),
        detail::pick<T>(qfpsDFTInv_CCSToR_64f, qfpsDFTInv_CCSToR_32f)};
    return Base::run(functions[static_cast<int>(packing)], spectrum, x, buffer, packed_size(packing, Base::length()),
                     Base::length());
  }
};

// Transforms of n complex numbers, of any length.
template <Real T, class Errors>
class BasicComplexTransform : public detail::Transform<detail::ComplexFunctions<T>, Errors> {
  using Base = detail::Transform<detail::ComplexFunctions<T>, Errors>;

 public:
  explicit BasicComplexTransform(int length, Scaling scaling = Scaling::inverse) : Base(length, scaling) {}
  template <Input X, Output S>
  requires std::same_as<Element<X>, std::complex<T>> && std::same_as<Element<S>, std::complex<T>>
  typename Base::Result forward(const X& x, S&& spectrum, std::span<unsigned char> buffer = {}) const {
    return Base::run(detail::pick<T>(qfpsDFTFwd_CToC_64fc, qfpsDFTFwd_CToC_32fc), x, spectrum, buffer, Base::length(),
                     Base::length());
  }
  template <Input S, Output X>
  requires std::same_as<Element<X>, std::complex<T>> && std::same_as<Element<S>, std::complex<T>>
  typename Base::Result inverse(const S& spectrum, X&& x, std::span<unsigned char> buffer = {}) const {
    return Base::run(detail::pick<T>(qfpsDFTInv_CToC_64fc, qfpsDFTInv_CToC_32fc), spectrum, x, buffer, Base::length(),
                     Base::length());
  }
};

template <Real T>
using RealTransform = BasicRealTransform<T, Throw>;
template <Real T>
using ComplexTransform = BasicComplexTransform<T, Throw>;

// A packed spectrum of n reals as what it stands for: n complex numbers, of which those above n/2 are the conjugates of
// those below. Looks at the array, copies nothing.
template <Real T>
class Spectrum {
 public:
  Spectrum(std::span<const T> packed, Packing packing, int n) : packed_(packed), packing_(packing), n_(n) {
    detail::require(n > 0 && detail::count(packed) == packed_size(packing, n),
                    "qor: Spectrum: an array of another length");
  }
  int size() const noexcept { return n_; }
  std::complex<T> operator[](int k) const noexcept {
    if (k > n_ / 2) return std::conj((*this)[n_ - k]);
    const auto at = [this](int i) { return packed_[static_cast<std::size_t>(i)]; };
    if (k == 0) return at(0);
    if (packing_ == Packing::ccs) return {at(2 * k), at(2 * k + 1)};
    const bool even = n_ % 2 == 0;
    if (even && 2 * k == n_) return at(packing_ == Packing::perm ? 1 : n_ - 1);
    const int i = packing_ == Packing::perm && even ? 2 * k : 2 * k - 1;
    return {at(i), at(i + 1)};
  }

 private:
  std::span<const T> packed_;
  Packing packing_;
  int n_;
};

// ---- convolution ------------------------------------------------------------------------------------------------------

enum class Kind { convolution = QOR_CONV_KIND_CONVOLUTION, correlation = QOR_CONV_KIND_CORRELATION };
enum class Mode { fourier = QOR_CONV_MODE_FFT, direct = QOR_CONV_MODE_DIRECT };

// A convolution or correlation of arrays of one to seven dimensions: described once, executed on any number of operands.
// Dimension 0 varies fastest. Operands are dense ranges of as many elements as their shapes say, or have strides: then
// the program answers for what they reach.
template <Real T, class Errors>
class BasicTask {
 public:
  using Result = typename Errors::Result;
  using Shape = std::span<const int>;
  BasicTask(Kind kind, Shape x, Shape y, Shape z, Mode mode = Mode::direct) {
    detail::require(x.size() == y.size() && x.size() == z.size() && x.size() >= 1 && x.size() <= 7,
                    "qor: Task: shapes of one rank, 1 to 7");
    rank_ = x.size();
    elements_ = {count(x), count(y), count(z)};
    const int precision = std::same_as<T, float> ? QOR_CONV_PRECISION_SINGLE : QOR_CONV_PRECISION_DOUBLE;
    handle_.made(__wxrNewTask(&handle_.object, static_cast<int>(kind), 0, static_cast<int>(mode), 0, precision,
                              static_cast<int>(rank_), x.data(), y.data(), z.data()),
                 "making a task");
  }
  // Of one dimension. The result of all nx + ny - 1 elements when nz isn't given.
  BasicTask(Kind kind, int nx, int ny, Mode mode = Mode::direct, int nz = 0)
      : BasicTask(kind, Shape(&nx, 1), Shape(&ny, 1), std::array{nz > 0 ? nz : nx + ny - 1}, mode) {}
  BasicTask copy() const {
    BasicTask t;
    t.rank_ = rank_;
    t.elements_ = elements_;
    t.handle_.made(get() != nullptr ? __wxrCopyTask(&t.handle_.object, get()) : handle_.failure(), "copying a task");
    return t;
  }

  qor_conv_task* get() const noexcept { return handle_.object; }
  // The status of the last edit or execution. After a failure a task refuses all work until it is reset.
  Status status() const noexcept { return {get() != nullptr ? __wxrccGetStatus(get()) : handle_.failure()}; }
  void reset() noexcept {
    if (get() != nullptr) __wxrccSetStatus(get(), 0);
  }

  Result set_mode(Mode mode) { return edit(QOR_CONV_EDIT_MODE, static_cast<int>(mode)); }
  // Sums of single data in double or, as is usual, single precision.
  Result set_double_sums(bool yes) {
    return edit(QOR_CONV_EDIT_INTERNAL_PRECISION, yes ? QOR_CONV_PRECISION_DOUBLE : QOR_CONV_PRECISION_SINGLE);
  }
  // The first element of the full result that is wanted, and the step between elements, by dimension.
  Result set_start(Shape start) { return edit_all(QOR_CONV_EDIT_START, start); }
  Result set_start(int start) { return set_start(Shape(&start, 1)); }
  Result set_decimation(Shape decimation) { return edit_all(QOR_CONV_EDIT_DECIMATION, decimation); }
  Result set_decimation(int decimation) { return set_decimation(Shape(&decimation, 1)); }

  template <RealInput X, RealInput Y, RealOutput Z>
  requires std::same_as<Element<X>, T> && std::same_as<Element<Y>, T> && std::same_as<Element<Z>, T> Result
  execute(const X& x, const Y& y, Z&& z) {
    detail::require(std::ranges::size(x) == elements_[0] && std::ranges::size(y) == elements_[1] &&
                        std::ranges::size(z) == elements_[2],
                    "qor: Task: operands of other lengths than their shapes");
    return execute(std::ranges::data(x), {}, std::ranges::data(y), {}, std::ranges::data(z), {});
  }
  Result execute(const T* x, Shape xstride, const T* y, Shape ystride, T* z, Shape zstride) {
    const auto given = [this](Shape s) {
      detail::require(s.empty() || s.size() == rank_, "qor: Task: a stride for each dimension");
      return s.empty() ? nullptr : s.data();
    };
    return handle_.done("convolving",
                        [&] { return __wxrExec(get(), x, given(xstride), y, given(ystride), z, given(zstride)); });
  }

 private:
  BasicTask() = default;
  static std::size_t count(Shape shape) {
    std::size_t n = 1;
    for (const int each : shape) n *= static_cast<std::size_t>(std::max(each, 0));
    return n;
  }
  Result edit(int parameter, int value) {
    return handle_.done("editing a task", [&] { return __wxrEditTask(get(), parameter, &value); });
  }
  Result edit_all(int parameter, Shape values) {
    detail::require(values.size() == rank_, "qor: Task: a value for each dimension");
    return handle_.done("editing a task", [&] { return __wxrEditTask(get(), parameter, values.data()); });
  }
  detail::Handle<qor_conv_task, Errors> handle_;
  std::size_t rank_ = 0;
  std::array<std::size_t, 3> elements_{};
};

template <Real T>
using Task = BasicTask<T, Throw>;

// ---- descriptors ------------------------------------------------------------------------------------------------------

enum class Domain { complex = QOR_DFT_COMPLEX, real = QOR_DFT_REAL };

// A transform of arrays of one to seven dimensions and any layout, as qor/dft.h tells; the slowest dimension comes first.
// Settings are those of QOR_DFT_...; layouts reach what they say, the program answers for the arrays.
template <Real T, class Errors>
class BasicDescriptor {
 public:
  using Result = typename Errors::Result;
  BasicDescriptor(Domain domain, std::span<const int> lengths) {
    const int precision = std::same_as<T, double> ? QOR_DFT_DOUBLE : QOR_DFT_SINGLE;
    handle_.made(qor_dft_zx9_create_descriptor_external(&handle_.object, precision, static_cast<int>(domain),
                                                        detail::count(lengths), lengths.data()),
                 "making a descriptor");
  }
  BasicDescriptor(Domain domain, std::initializer_list<int> lengths)
      : BasicDescriptor(domain, std::span(lengths.begin(), lengths.size())) {}
  BasicDescriptor copy() const {
    BasicDescriptor d;
    d.handle_.made(
        get() != nullptr ? qor_dft_zx9_copy_descriptor_external(get(), &d.handle_.object) : handle_.failure(),
        "copying a descriptor");
    return d;
  }

  qor_dft_descriptor* get() const noexcept { return handle_.object; }
  Status status() const noexcept { return {handle_.failure()}; }

  Result set(int parameter, int value) { return set_from(parameter, &value); }
  Result set(int parameter, std::span<const int> values) { return set_from(parameter, values.data()); }
  Result set_backward_scale(double scale) { return set_from(QOR_DFT_BACKWARD_SCALE, &scale); }
  Result set_forward_scale(double scale) { return set_from(QOR_DFT_FORWARD_SCALE, &scale); }
  Result commit() {
    return handle_.done("committing a descriptor", [&] { return qor_dft_zx9_commit_descriptor_external(get()); });
  }

  // Out of place, as set by QOR_DFT_PLACEMENT, or in place, as is usual.
  template <Input X, Output S>
  Result forward(const X& signal, S&& spectrum) const {
    return run(qor_dft_zx9_compute_forward_external, std::ranges::data(signal), std::ranges::data(spectrum));
  }
  template <Output X>
  Result forward(X&& both) const {
    return run(qor_dft_zx9_compute_forward_external, std::ranges::data(both), nullptr);
  }
  template <Input S, Output X>
  Result backward(const S& spectrum, X&& signal) const {
    return run(qor_dft_zx9_compute_backward_external, std::ranges::data(spectrum), std::ranges::data(signal));
  }
  template <Output S>
  Result backward(S&& both) const {
    return run(qor_dft_zx9_compute_backward_external, std::ranges::data(both), nullptr);
  }

 private:
  BasicDescriptor() = default;
  Result set_from(int parameter, const void* value) {
    return handle_.done("setting a descriptor",
                        [&] { return qor_dft_zx9_set_value_external(get(), parameter, value); });
  }
  template <class F>
  Result run(F f, const void* in, void* out) const {
    return handle_.done("transforming", [&] { return f(get(), const_cast<void*>(in), out); });
  }
  detail::Handle<qor_dft_descriptor, Errors> handle_;
};

template <Real T>
using Descriptor = BasicDescriptor<T, Throw>;

// The other form of the classes: statuses are returned.
namespace returning {
using Stream = BasicStream<Return>;
template <Real T>
using RealTransform = BasicRealTransform<T, Return>;
template <Real T>
using ComplexTransform = BasicComplexTransform<T, Return>;
template <Real T>
using Task = BasicTask<T, Return>;
template <Real T>
using Descriptor = BasicDescriptor<T, Return>;
}  // namespace returning

}  // namespace qor
#endif
