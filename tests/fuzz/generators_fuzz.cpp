// Variates drawn from an engine of the caller's that delivers any numbers and words at all, and fails when it likes,
// under any parameters; and abstract streams whose callback stores and returns what it likes. After its made-up numbers
// the engine is a sound one, so that every rejection comes to an end. Nothing beyond the results is written, a failure
// of the engine comes back as it was.
#include <algorithm>
#include <type_traits>
#include <vector>

#include "fuzz/reader.h"
#include "qor/rng.h"

namespace {

using qor::test::Reader;
using qor::test::require;

constexpr int most = 33;

Reader* numbers;
std::uint32_t state;
double interval[2];  // of abstract streams of numbers
int refusal;         // what the engine returned instead of 0

std::uint32_t sound_word() {
  state ^= state << 13;
  state ^= state >> 17;
  return state ^= state << 5;
}

template <class T>
int engine(qor_stream*, int n, T* r, T a, T b) {
  for (int i = 0; i < n; ++i)
    r[i] = numbers->empty() ? a + (b - a) * (T(sound_word() >> 8) * T(0x1p-24)) : numbers->take<T>();
  if (!numbers->empty() && numbers->take<std::uint8_t>() == 0x5A) return refusal = -1 - numbers->below(3000);
  return 0;
}
int engine_words(qor_stream*, int n, unsigned* r) {
  for (int i = 0; i < n; ++i) r[i] = numbers->empty() ? sound_word() : numbers->take<unsigned>();
  return 0;
}
int engine_init(int, qor_stream*, int, const unsigned*) { return 0; }

template <class T>
int refill(qor_stream*, int*, T* buffer, int* nmin, int* nmax, int* at) {
  const bool own = !numbers->empty();
  const int count = own ? numbers->within(40) : *nmin, stored = std::clamp(count, 0, *nmax);
  for (int i = 0; i < stored; ++i) {
    const double u = (sound_word() >> 8) * 0x1p-24;
    const T sound = std::is_integral_v<T> ? static_cast<T>(sound_word())
                                          : static_cast<T>(interval[0] + (interval[1] - interval[0]) * u);
    buffer[*at + i] = own ? numbers->take<T>() : sound;
  }
  if (own && count < *nmin) refusal = 1;
  return count;
}

double parameter(Reader& bytes) {
  const int kind = bytes.below(4);
  if (kind == 0) return bytes.take<double>();
  if (kind == 1) return bytes.take<std::int16_t>();
  return bytes.take<std::uint16_t>() * (kind == 2 ? 0x1p-16 : 0x1p-4);
}

// One generator by its number, with parameters p and counts c.
int draw(int which, int method, qor_stream* s, int n, void* out, const double* p, const int* c) {
  const auto d = static_cast<double*>(out);
  const auto f = static_cast<float*>(out);
  const auto i = static_cast<int*>(out);
  const auto q = [p](int k) { return static_cast<float>(p[k]); };
  switch (which) {
    case 0:
      return _wxrdRngUniform(static_cast<unsigned>(method), s, n, d, p[0], p[1]);
    case 1:
      return _wxrsRngUniform(static_cast<unsigned>(method), s, n, f, q(0), q(1));
    case 2:
      return _wxrdRngGaussian(method, s, n, d, p[0], p[1]);
    case 3:
      return _wxrsRngGaussian(method, s, n, f, q(0), q(1));
    case 4:
      return _wxrdRngExponential(method, s, n, d, p[0], p[1]);
    case 5:
      return _wxrsRngExponential(method, s, n, f, q(0), q(1));
    case 6:
      return _wxrdRngLaplace(method, s, n, d, p[0], p[1]);
    case 7:
      return _wxrsRngWeibull(method, s, n, f, q(0), q(1), q(2));
    case 8:
      return _wxrdRngCauchy(method, s, n, d, p[0], p[1]);
    case 9:
      return _wxrsRngRayleigh(method, s, n, f, q(0), q(1));
    case 10:
      return _wxrdRngLognormal(method, s, n, d, p[0], p[1], p[2], p[3]);
    case 11:
      return _wxrsRngGumbel(method, s, n, f, q(0), q(1));
    case 12:
      return _wxrdRngGamma(method, s, n, d, p[0], p[1], p[2]);
    case 13:
      return _wxrsRngGamma(method, s, n, f, q(0), q(1), q(2));
    case 14:
      return _wxrdRngBeta(method, s, n, d, p[0], p[1], p[2], p[3]);
    case 15:
      return _wxrsRngBeta(method, s, n, f, q(0), q(1), q(2), q(3));
    case 16:
      return _wxriRngUniform(static_cast<unsigned>(method), s, n, i, c[0], c[1]);
    case 17:
      return _wxriRngUniformBits(static_cast<unsigned>(method), s, n, static_cast<unsigned*>(out));
    case 18:
      return _wxriRngBernoulli(method, s, n, i, p[0]);
    case 19:
      return _wxriRngGeometric(method, s, n, i, p[0]);
    case 20:
      return _wxriRngBinomial(method, s, n, i, c[0], p[0]);
    case 21:
      return _wxriRngHypergeometric(method, s, n, i, c[0], c[1], c[2]);
    case 22:
      return _wxriRngPoisson(method, s, n, i, p[0]);
    case 23:
      return _wxriRngPoissonV(method, s, n < 4 ? n : 4, i, p);
    default:
      return _wxriRngNegbinomial(method, s, n, i, p[0], p[1]);
  }
}
constexpr int generators = 25;

int new_stream(int kind, qor_stream** s, int room, void* buffer, const double* p) {
  switch (kind) {
    case 0:
      return __wxriNewAbstractStream(s, room, static_cast<unsigned*>(buffer), refill<unsigned>);
    case 1:
      return __wxrdNewAbstractStream(s, room, static_cast<double*>(buffer), p[0], p[1], refill<double>);
    case 2:
      return __wxrsNewAbstractStream(s, room, static_cast<float*>(buffer), static_cast<float>(p[0]),
                                     static_cast<float>(p[1]), refill<float>);
    default: {
      static const BrngRecord record = {16, 1, 0, 4, 32, engine_init, engine<float>, engine<double>, engine_words};
      static const int brng = __wxrRegisterBrng(&record);
      const unsigned seed = 1;
      return __wxrNewStreamEx(s, brng, 1, &seed);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
  Reader reader(bytes, length);
  numbers = &reader;
  state = 0x12345678;
  const int kind = reader.below(6), room = 1 + reader.below(30);
  // On most intervals there are too few numbers for rejections to come to an end.
  const bool odd = reader.below(4) == 0;
  constexpr double intervals[][2] = {{0, 1}, {-1.5, 3}, {1e-3, 1e5}};
  std::copy_n(intervals[reader.below(3)], 2, interval);
  if (odd) std::generate_n(interval, 2, [&] { return parameter(reader); });
  std::vector<double> buffer(static_cast<std::size_t>(room));
  qor_stream* s = nullptr;
  if (new_stream(kind, &s, room, buffer.data(), interval) != 0) return 0;
  for (int round = 0; round < 3; ++round) {
    const int which = reader.below(odd && kind < 3 ? 2 : generators), method = reader.below(2),
              n = reader.below(most + 1);
    double p[4];
    for (double& each : p) each = parameter(reader);
    int c[3];
    for (int& each : c) each = reader.below(2) != 0 ? reader.take<int>() : reader.take<std::int16_t>();
    // Exactly n elements of the largest kind, or fewer: what is beyond is the sanitizer's.
    const std::size_t size = which < 16 && which % 2 == 0 ? sizeof(double) : which == 17 ? 16 : sizeof(float);
    std::vector<char> out(static_cast<std::size_t>(n) * size + 1);
    refusal = 0;
    const int status = draw(which, method, s, n, out.data(), p, c);
    require(status <= 0, "statuses aren't positive");
    if (kind >= 3 && refusal != 0) require(status == refusal, "the engine's status comes back");
    if (kind < 3 && refusal != 0) require(status == -1020, "a failed refill ends the request");
  }
  __wxrDeleteStream(&s);
  return 0;
}
