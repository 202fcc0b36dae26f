// Abstract streams: numbers of the caller's own, behind callbacks that keep to the contract and ones that don't.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <xmmintrin.h>

#include <climits>
#include <cmath>
#include <limits>

#include "rng/engines.h"
#include "support/guarded.h"

namespace {

// The interval of the streams of numbers here.
constexpr double a0 = -0.5, b0 = 3.5;

// A device that delivers elements 0, 1, 2 ... of a sequence, and remembers what it has been asked.
template <class T>
struct Device {
  static constexpr unsigned key = 77;  // of the chunk that leads the callback here

  explicit Device(int room) : capacity(room), buffer(room) {}

  // As many as wanted at most, at least, or something between.
  std::function<int(int nmin, int nmax)> policy = [](int, int nmax) { return nmax; };
  int capacity;
  qor::test::Guarded<T> buffer;
  int delivered = 0, calls = 0, last_nmin = 0;
  unsigned mxcsr = 0;

  static T element(int i) {
    const unsigned w = 2654435761u * unsigned(i) ^ unsigned(i) << 7 ^ 0x1234567;
    if constexpr (std::is_integral_v<T>) return w;
    if constexpr (std::is_same_v<T, double>) return a0 + (b0 - a0) * ((w + 0.25 * (i % 4)) * 0x1p-32);
    return T(a0 + (b0 - a0) * (double(w >> 8) * 0x1p-24));
  }
  static int update(qor_stream* stream, int* n, T* room, int* nmin, int* nmax, int* idx) {
    Device* d;
    std::memcpy(&d, __wxrSearchChunk(stream, key), sizeof d);
    ++d->calls;
    d->mxcsr = _mm_getcsr();
    d->last_nmin = *nmin;
    EXPECT_EQ(*n, d->capacity);
    EXPECT_EQ(room, d->buffer.data());
    EXPECT_TRUE(1 <= *nmin && *nmin <= *nmax && 0 <= *idx && *idx + *nmax <= d->capacity);
    const int count = d->policy(*nmin, *nmax), stored = std::clamp(count, 0, *nmax);
    for (int i = 0; i < stored; ++i) d->buffer[*idx + i] = element(d->delivered + i);
    d->delivered += stored;
    *n = *nmin = *nmax = *idx = -12345;  // of no effect
    return count;
  }
};

int create(qor_stream** s, Device<unsigned>& d) {
  return __wxriNewAbstractStream(s, d.capacity, d.buffer.data(), d.update);
}
int create(qor_stream** s, Device<double>& d) {
  return __wxrdNewAbstractStream(s, d.capacity, d.buffer.data(), a0, b0, d.update);
}
int create(qor_stream** s, Device<float>& d) {
  return __wxrsNewAbstractStream(s, d.capacity, d.buffer.data(), a0, b0, d.update);
}
template <class T>
qor_stream* open(Device<T>& d) {
  qor_stream* s = nullptr;
  EXPECT_EQ(create(&s, d), 0);
  void* const here = std::malloc(sizeof(void*));
  const void* const self = &d;
  std::memcpy(here, &self, sizeof self);
  EXPECT_EQ(__wxrAddChunk(s, d.key, here, sizeof self), 0);
  return s;
}

int draw(qor_stream* s, int n, unsigned* r, double, double) { return _wxriRngUniformBits(0, s, n, r); }
int draw(qor_stream* s, int n, double* r, double a, double b) { return _wxrdRngUniform(0, s, n, r, a, b); }
int draw(qor_stream* s, int n, float* r, double a, double b) { return _wxrsRngUniform(0, s, n, r, float(a), float(b)); }

// What element i of a request is, as the header tells it; a word may take two of the device's elements.
template <class T, class R>
R expected(int i, double a, double b) {
  constexpr bool from_words = std::is_integral_v<T>;
  if constexpr (std::is_integral_v<R> && from_words) return Device<T>::element(i);
  if constexpr (std::is_integral_v<R>) {
    const auto bits = [](int k, double unit) {
      return unsigned(std::floor((double(Device<T>::element(k)) - a0) / (b0 - a0) * unit));
    };
    if (sizeof(T) == 4) return R(bits(2 * i, 65536) * 65536 + bits(2 * i + 1, 65536));
    return R(bits(i, 0x1p32));
  }
  const double v = Device<T>::element(i);
  if (from_words) return R(v * ((b - a) * 0x1p-32) + a);
  return R(a == a0 && b == b0 ? v : (v - a0) * ((b - a) / (b0 - a0)) + a);
}
template <class T, class R>
constexpr int taken_for_one = std::is_same_v<T, float>&& std::is_integral_v<R> ? 2 : 1;

template <class T, class R>
void deliver_for_every_split() {
  const double intervals[][2] = {{0, 1}, {a0, b0}, {-2, 1e6}};
  for (const int capacity : {1, 2, 3, 7, 16, 100}) {
    for (int way = 0; way < 3; ++way) {
      Device<T> device(capacity);
      unsigned dice = unsigned(capacity);
      if (way == 1) device.policy = [](int nmin, int) { return nmin; };
      if (way == 2) {
        device.policy = [&dice](int nmin, int nmax) {
          dice = dice * 69069 + 1;
          return nmin + int((dice >> 16) % unsigned(nmax - nmin + 1));
        };
      }
      const TestStream s(open(device));
      int at = 0;
      for (int n = 0; n < 70; n = n < 20 ? n + 1 : n + 7) {
        const auto& [a, b] = intervals[n % 3];
        qor::test::Guarded<R> r(n);
        ASSERT_EQ(draw(s, n, r.data(), a, b), 0);
        for (int i = 0; i < n; ++i, ++at) {
          const R e = expected<T, R>(at, a, b);
          ASSERT_EQ(std::memcmp(&r[i], &e, sizeof e), 0) << "element " << i << " of " << n << ": " << r[i] << ", " << e;
        }
      }
      if (way != 1) continue;
      EXPECT_EQ(device.delivered, at * (taken_for_one<T, R>)) << "no more than needed";
    }
  }
}
TEST(AbstractStreams, DeliverTheBuffersNumbersInOrderForEverySplitAndRefill) {
  deliver_for_every_split<unsigned, unsigned>();
  deliver_for_every_split<unsigned, double>();
  deliver_for_every_split<unsigned, float>();
  deliver_for_every_split<double, unsigned>();
  deliver_for_every_split<double, double>();
  deliver_for_every_split<double, float>();
  deliver_for_every_split<float, unsigned>();
  deliver_for_every_split<float, double>();
  deliver_for_every_split<float, float>();
}

TEST(AbstractStreams, CallBackOnlyWhenTheBufferIsUsedUp) {
  Device<unsigned> device(10);
  device.buffer[0] = 42;  // never delivered: the stream starts with an empty buffer
  const TestStream s(open(device));
  unsigned r[64];
  EXPECT_EQ(draw(s, 0, r, 0, 1), 0);
  EXPECT_EQ(draw(s, -5, r, 0, 1), 0);
  EXPECT_EQ(device.calls, 0);
  for (const auto& [n, calls, nmin] : {std::tuple{4, 1, 4}, {6, 1, 4}, {1, 2, 1}, {9, 2, 1}, {23, 5, 3}, {8, 6, 1}}) {
    EXPECT_EQ(draw(s, n, r, 0, 1), 0);
    EXPECT_EQ(device.calls, calls);
    EXPECT_EQ(device.last_nmin, nmin);
  }
}

template <class T>
void end_on_a_bad_count() {
  struct Case {
    std::function<int(int, int)> count;
    bool keeps;  // what was delivered for the next request
  };
  for (const Case& c : {Case{[](int nmin, int) { return nmin - 1; }, true},
                        {[](int, int) { return 0; }, true},
                        {[](int, int) { return -1; }, false},
                        {[](int, int) { return INT_MIN; }, false},
                        {[](int, int nmax) { return nmax + 1; }, false},
                        {[](int, int) { return INT_MAX; }, false}}) {
    Device<T> device(8);
    const auto good = device.policy;
    device.policy = [&](int nmin, int nmax) { return device.calls == 2 ? c.count(nmin, nmax) : good(nmin, nmax); };
    const TestStream s(open(device));
    T r[20];
    std::memset(r, 0x5A, sizeof r);
    T untouched;
    std::memset(&untouched, 0x5A, sizeof untouched);
    ASSERT_EQ(draw(s, 13, r, a0, b0), QOR_RNG_BAD_UPDATE);
    EXPECT_EQ(device.calls, 2) << "a failure ends the request";
    for (int i = 0; i < 20; ++i) {
      const T e = i < 8 ? expected<T, T>(i, a0, b0) : i >= 13 ? untouched : r[i];
      EXPECT_EQ(std::memcmp(r + i, &e, sizeof e), 0) << i;
    }
    // 8 of the first call, then those of the short call or none of them, then the next call's.
    const int short_count = device.delivered - 8, first = c.keeps ? 8 : device.delivered;
    ASSERT_EQ(draw(s, 12, r, a0, b0), 0);
    EXPECT_EQ(device.calls, c.keeps && short_count == 4 ? 3 : 4);
    for (int i = 0; i < 12; ++i) EXPECT_EQ(r[i], (expected<T, T>(first + i, a0, b0))) << i;
  }
}
TEST(AbstractStreams, EndARequestWhenTheCallbackKeepsNotToItsCounts) {
  end_on_a_bad_count<unsigned>();
  end_on_a_bad_count<double>();
  // Integers and variates pass the status on.
  Device<double> device(8);
  device.policy = [&](int, int nmax) { return device.calls > 200 ? -1 : nmax; };
  const TestStream s(open(device));
  std::vector<int> integers(3000);
  EXPECT_EQ(_wxriRngUniform(0, s, 3000, integers.data(), 0, 10), QOR_RNG_BAD_UPDATE);
  double variates[4];
  EXPECT_EQ(_wxrdRngGaussian(QOR_RNG_GAUSSIAN_BOXMULLER2, s, 4, variates, 0, 1), QOR_RNG_BAD_UPDATE);
}

TEST(AbstractStreams, GiveTheNearestWordForNumbersBeyondTheirInterval) {
  constexpr double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
  static const double values[] = {a0, b0, std::nextafter(b0, 0.0), -1e300, 1e300, -inf, inf, nan, -0.5 - 1e-9, 1.5};
  double doubles[10];
  float singles[20];
  qor_stream *d = nullptr, *s = nullptr;
  ASSERT_EQ(__wxrdNewAbstractStream(&d, 10, doubles, a0, b0,
                                    [](qor_stream*, int*, double* r, int*, int* nmax, int*) {
                                      std::copy_n(values, 10, r);
                                      return *nmax;
                                    }),
            0);
  ASSERT_EQ(__wxrsNewAbstractStream(&s, 20, singles, a0, b0,
                                    [](qor_stream*, int*, float* r, int*, int* nmax, int*) {
                                      for (int i = 0; i < 20; ++i) r[i] = float(values[i / 2]);
                                      return *nmax;
                                    }),
            0);
  const TestStream of_doubles(d), of_singles(s);
  const unsigned top = 0xFFFFFFFF, from_doubles[] = {0, top, top, 0, top, 0, top, 0, 0, 0x80000000},
                 from_singles[] = {0, top, top, 0, top, 0, top, 0, 0, 0x80008000};
  unsigned r[10];
  ASSERT_EQ(draw(of_doubles, 10, r, 0, 1), 0);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(r[i], from_doubles[i]) << values[i];
  ASSERT_EQ(draw(of_singles, 10, r, 0, 1), 0);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(r[i], from_singles[i]) << values[i];
}

TEST(AbstractStreams, CallBackUnderTheCallersControlWordsAndComputeUnderTheirOwn) {
  const unsigned caller = _mm_getcsr(), unusual = 0x1F80 | 0xC040;  // rounding to zero, subnormals lost
  Device<unsigned> device(5);
  const TestStream s(open(device));
  float r[13];
  _mm_setcsr(unusual);
  draw(s, 13, r, 0.1, 0.7);
  const unsigned after = _mm_getcsr();
  _mm_setcsr(caller);
  EXPECT_EQ(after & 0xFFC0, unusual & 0xFFC0);
  EXPECT_EQ(device.mxcsr & 0xFFC0, unusual & 0xFFC0);
  for (int i = 0; i < 13; ++i) EXPECT_EQ(r[i], (expected<unsigned, float>(i, double(0.1f), double(0.7f))));
}

TEST(AbstractStreams, AreNotMadeFromBadArguments) {
  unsigned words[4];
  qor_stream* const untouched = reinterpret_cast<qor_stream*>(words);
  double doubles[4];
  float singles[4];
  const auto i_update = Device<unsigned>::update;
  const auto d_update = Device<double>::update;
  const auto s_update = Device<float>::update;
  qor_stream* s = untouched;
  EXPECT_EQ(__wxriNewAbstractStream(nullptr, 4, words, i_update), QOR_RNG_BAD_ARGUMENT);
  EXPECT_EQ(__wxriNewAbstractStream(&s, 4, nullptr, i_update), QOR_RNG_BAD_ARGUMENT);
  EXPECT_EQ(__wxriNewAbstractStream(&s, 4, words, nullptr), QOR_RNG_BAD_ARGUMENT);
  for (const int n : {0, -1, INT_MIN}) {
    EXPECT_EQ(__wxriNewAbstractStream(&s, n, words, i_update), QOR_RNG_BAD_ARGUMENT) << n;
    EXPECT_EQ(__wxrdNewAbstractStream(&s, n, doubles, 0, 1, d_update), QOR_RNG_BAD_ARGUMENT) << n;
  }
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  for (const auto& [a, b] : {std::pair{1.0, 1.0}, {1.0, 0.0}, {nan, 1.0}, {0.0, nan}, {0.0, inf}, {-inf, 0.0}}) {
    EXPECT_EQ(__wxrdNewAbstractStream(&s, 4, doubles, a, b, d_update), QOR_RNG_BAD_ARGUMENT) << a << ", " << b;
    EXPECT_EQ(__wxrsNewAbstractStream(&s, 4, singles, float(a), float(b), s_update), QOR_RNG_BAD_ARGUMENT)
        << a << ", " << b;
  }
  EXPECT_EQ(__wxrdNewAbstractStream(&s, 4, doubles, -1e308, 1e308, d_update), QOR_RNG_BAD_ARGUMENT);
  EXPECT_EQ(__wxrsNewAbstractStream(&s, 4, singles, -3e38f, 3e38f, s_update), QOR_RNG_BAD_ARGUMENT);
  EXPECT_EQ(s, untouched);
  EXPECT_EQ(__wxrdNewAbstractStream(&s, 4, doubles, -1e307, 1e307, d_update), 0);
  __wxrDeleteStream(&s);
}

TEST(AbstractStreams, NeitherJumpNorTakeAStateAndShareTheirBufferWithCopies) {
  Device<double> device(6);
  const TestStream s(open(device)), twister(QOR_BRNG_MT19937, {1});
  EXPECT_EQ(__wxrGetStreamStateBrng(s), QOR_BRNG_DABSTRACT);
  const auto before = s.state(), twisters = twister.state();
  EXPECT_EQ(__wxrLeapfrogStream(s, 0, 2), QOR_RNG_NO_LEAPFROG);
  EXPECT_EQ(__wxrSkipAheadStream(s, 2), QOR_RNG_NO_SKIP_AHEAD);
  EXPECT_EQ(__RegBrngsNew[10].initStream(3, s, 0, nullptr), QOR_RNG_BAD_METHOD);
  const unsigned block[10] = {};
  for (const int n : {0, 6, 9, 10, 11})
    EXPECT_EQ(__RegBrngsNew[10].initStream(0, s, n, block), QOR_RNG_BAD_ARGUMENT) << n << " words, all null";
  EXPECT_EQ(__RegBrngsNew[10].initStream(0, s, 10, nullptr), QOR_RNG_BAD_ARGUMENT);
  EXPECT_EQ(__wxrCopyStreamState(s, twister), QOR_RNG_INCOMPATIBLE) << "random pointers would be followed";
  EXPECT_EQ(__wxrCopyStreamState(twister, s), QOR_RNG_INCOMPATIBLE);
  EXPECT_EQ(s.state(), before);
  EXPECT_EQ(twister.state(), twisters);

  double r[4];
  draw(s, 4, r, a0, b0);
  qor_stream* raw;
  ASSERT_EQ(__wxrCopyStream(&raw, s), 0);
  const TestStream copy(raw);
  ASSERT_EQ(draw(copy, 4, r, a0, b0), 0);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(r[i], Device<double>::element(4 + i)) << "goes on where the source stands";
  EXPECT_EQ(device.calls, 2);
}

TEST(AbstractStreams, ServeARealDevice) {
  static const int urandom = ::open("/dev/urandom", O_RDONLY);
  ASSERT_GE(urandom, 0);
  static std::vector<unsigned> seen;
  std::vector<unsigned> buffer(1000);
  qor_stream* raw = nullptr;
  const qor_i_update update = [](qor_stream*, int*, unsigned* r, int*, int* nmax, int* idx) {
    const auto got = read(urandom, r + *idx, sizeof(unsigned) * std::size_t(*nmax));
    const int whole = got < 0 ? -1 : int(std::size_t(got) / sizeof(unsigned));
    for (int i = 0; i < whole; ++i) seen.push_back(r[*idx + i]);
    return whole;
  };
  ASSERT_EQ(__wxriNewAbstractStream(&raw, int(buffer.size()), buffer.data(), update), 0);
  const TestStream s(raw);
  std::vector<double> u(40000), g(40000);
  ASSERT_EQ(_wxrdRngUniform(0, s, 40000, u.data(), 0, 1), 0);
  ASSERT_GE(seen.size(), 40000u);
  for (std::size_t i = 0; i < u.size(); ++i) ASSERT_EQ(u[i], seen[i] * 0x1p-32);
  ASSERT_EQ(_wxrdRngGaussian(QOR_RNG_GAUSSIAN_BOXMULLER2, s, 40000, g.data(), 0, 1), 0);
  double mean = 0, square = 0;
  for (const double v : g) mean += v / 40000, square += v * v / 40000;
  EXPECT_LT(std::abs(mean), 8 / std::sqrt(40000.0)) << "eight standard deviations";
  EXPECT_LT(std::abs(square - 1), 8 * std::sqrt(2 / 40000.0)) << "eight standard deviations";
  close(urandom);
}

}  // namespace
