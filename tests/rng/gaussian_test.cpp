// Gaussian variates: against a plain model of both methods, the pair that is carried over, failures, and the
// distribution.
#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "qor/tfn.h"
#include "rng/engines.h"
#include "support/allocations.h"
#include "support/scripted_generator.h"

namespace {

constexpr int box_muller = QOR_RNG_GAUSSIAN_BOXMULLER, box_muller2 = QOR_RNG_GAUSSIAN_BOXMULLER2;

int draw(int method, qor_stream* s, int n, double* r, double a = 0, double sigma = 1) {
  return _wxrdRngGaussian(method, s, n, r, a, sigma);
}
int draw(int method, qor_stream* s, int n, float* r, float a = 0, float sigma = 1) {
  return _wxrsRngGaussian(method, s, n, r, a, sigma);
}
template <class T>
std::vector<T> drawn(int method, qor_stream* s, int n, T a = 0, T sigma = 1) {
  std::vector<T> r(static_cast<std::size_t>(n));
  EXPECT_EQ(draw(method, s, n, r.data(), a, sigma), 0);
  return r;
}
std::vector<double> uniforms(qor_stream* s, int n, double) {
  std::vector<double> u(static_cast<std::size_t>(n));
  _wxrdRngUniform(0, s, n, u.data(), 0, 1);
  return u;
}
std::vector<float> uniforms(qor_stream* s, int n, float) {
  std::vector<float> u(static_cast<std::size_t>(n));
  _wxrsRngUniform(0, s, n, u.data(), 0, 1);
  return u;
}

template <class T>
class Gaussian : public ::testing::Test {
 protected:
  // A few last places of the largest part, the radius; angles carry the rounding of 2 pi u.
  static constexpr double tolerance = sizeof(T) == 8 ? 1e-14 : 6e-6;
  static constexpr unsigned carried = sizeof(T) == 8 ? 2 : 1;
  TestStream stream{QOR_BRNG_MT19937, {777}}, same{QOR_BRNG_MT19937, {777}};

  static double radius(double u) { return std::sqrt(-2 * std::log(u)); }
};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(Gaussian, Precisions);

TYPED_TEST(Gaussian, FollowsThePlainModelOfBothMethods) {
  using T = TypeParam;
  for (const int n : {1, 2, 3, 7, 512, 1023, 1024, 1025, 2600}) {
    const auto g0 = drawn<T>(box_muller, this->stream, n, T(10), T(3));
    auto u = uniforms(this->same, 2 * n, T());
    for (int i = 0; i < n; ++i) {
      const double exact = 10 + 3 * this->radius(u[2 * i]) * std::sin(2 * M_PI * double(u[2 * i + 1]));
      EXPECT_NEAR(g0[i], exact, 30 * this->tolerance) << n << ' ' << i;
    }
    const int even = n + n % 2;
    const auto g1 = drawn<T>(box_muller2, this->stream, even, T(10), T(3));
    u = uniforms(this->same, even, T());
    for (int i = 0; i < even; ++i) {
      const double angle = 2 * M_PI * double(u[i | 1]);
      const double exact = 10 + 3 * this->radius(u[i & ~1]) * (i % 2 == 0 ? std::sin(angle) : std::cos(angle));
      EXPECT_NEAR(g1[i], exact, 30 * this->tolerance) << n << ' ' << i;
    }
  }
}

TYPED_TEST(Gaussian, CarriesTheOtherHalfOfAPairAcrossCallsAndCopies) {
  using T = TypeParam;
  const auto whole = drawn<T>(box_muller2, this->same, 4000);
  std::vector<T> parts;
  for (const int n : {1, 1, 1, 0, 1022, 1, 1024, 3, 0, 5, 1942}) {
    const auto p = drawn<T>(box_muller2, this->stream, n);
    parts.insert(parts.end(), p.begin(), p.end());
    if (n == 3) {
      // Method 0 leaves the pending half alone; the sequence goes on behind its numbers.
      qor_stream* copy;
      ASSERT_EQ(__wxrCopyStream(&copy, this->stream), 0);
      const auto other = drawn<T>(box_muller2, copy, 5);
      for (int i = 0; i < 5; ++i) EXPECT_NEAR(other[i], whole[parts.size() + i], this->tolerance);
      __wxrDeleteStream(&copy);
    }
  }
  ASSERT_EQ(parts.size(), 4000u);
  for (std::size_t i = 0; i < parts.size(); ++i) EXPECT_NEAR(parts[i], whole[i], this->tolerance) << i;
  EXPECT_EQ(__wxrGetNumChunks(this->stream), 1);
  const T* chunk = static_cast<const T*>(__wxrSearchChunk(this->stream, this->carried));
  ASSERT_NE(chunk, nullptr);
  EXPECT_EQ(chunk[0], T(-1));
}

TYPED_TEST(Gaussian, StoresThePendingPairAsTheEngineGaveIt) {
  using T = TypeParam;
  drawn<T>(box_muller2, this->stream, 3);
  const auto u = uniforms(this->same, 4, T());
  const T* chunk = static_cast<const T*>(__wxrSearchChunk(this->stream, this->carried));
  ASSERT_NE(chunk, nullptr);
  EXPECT_EQ(chunk[0], u[2]);
  EXPECT_EQ(chunk[1], u[3]);
  drawn<T>(box_muller, this->stream, 2);
  EXPECT_EQ(chunk[0], u[2]);
  T r = 99;
  for (const int n : {0, -5}) {
    for (const int method : {box_muller, box_muller2}) EXPECT_EQ(draw(method, this->stream, n, &r), 0);
  }
  EXPECT_EQ(r, T(99));
  EXPECT_EQ(chunk[0], u[2]);
}

TYPED_TEST(Gaussian, TakesTheLogarithmOfZeroForThatOfTheSmallestNumber) {
  using T = TypeParam;
  const double least = sizeof(T) == 8 ? 744.4400719213812 : 103.27893;
  for (const int method : {box_muller, box_muller2}) {
    for (const int n : {1, 2, 5, 300}) {
      TestStream scripted(scripted_generator(), {});
      play({0.0, 0.25});
      const auto r = drawn<T>(method, scripted, n);
      EXPECT_NEAR(r[0], std::sqrt(2 * least), 1e-5);  // sin(pi/2) = 1
      EXPECT_TRUE(std::all_of(r.begin(), r.end(), [](T v) { return std::isfinite(v); }));
    }
  }
}

int saw_errors;
int count_errors(TfnErrorContext*) { return ++saw_errors; }

TYPED_TEST(Gaussian, RestoresModeAndCallbackAndKeepsThePendingPairWhenTheEngineFails) {
  using T = TypeParam;
  TestStream scripted(scripted_generator(), {});
  _tfnSetMode(TFN_ERR_CALLBACK | TFN_ERR_STDERR);
  const unsigned mode = _tfnGetMode();
  _tfnSetErrorCallBack(count_errors);
  saw_errors = 0;
  std::vector<T> r(5000, T(99));

  play({0.5, 0.125, 0.75, 0.375}, 1);  // the second block fails
  EXPECT_EQ(draw(box_muller, scripted, 5000, r.data()), -77);
  EXPECT_NE(r[1023], T(99));
  EXPECT_EQ(r[1024], T(99));

  play({0.5, 0.125, 0.0, 0.375});
  drawn<T>(box_muller2, scripted, 3);  // keeps (0, 0.375), whose logarithm is replaced inside
  const T* chunk = static_cast<const T*>(__wxrSearchChunk(scripted, this->carried));
  ASSERT_NE(chunk, nullptr);
  for (const int failing : {0, 1, 4}) {
    play({0.5, 0.125, 0.75, 0.375}, failing);
    EXPECT_EQ(draw(box_muller2, scripted, 4100, r.data()), -77) << failing;
    EXPECT_EQ(chunk[0], T(0)) << failing;
    EXPECT_EQ(chunk[1], T(0.375)) << failing;
  }
  EXPECT_EQ(_tfnGetMode(), mode);
  EXPECT_EQ(_tfnGetErrorCallBack(), count_errors);
  EXPECT_EQ(saw_errors, 0);
  _tfnClearErrorCallBack();
  _tfnSetMode(TFN_MODE_DEFAULT);
}

#ifdef COUNTS_ALLOCATIONS
TYPED_TEST(Gaussian, SaysWhenThereIsNoMemoryForThePendingPair) {
  using T = TypeParam;
  T r[4];
  drawn<T>(box_muller, this->same, 1);  // the thread's mode cells exist from here on
  for (const int succeeding : {0, 1}) {
    const int before = live_blocks;
    until_failure = succeeding;
    const int status = draw(box_muller2, this->stream, 4, r);
    until_failure = -1;
    EXPECT_EQ(status, QOR_RNG_NO_MEMORY) << succeeding;
    EXPECT_EQ(live_blocks, before);
    EXPECT_EQ(__wxrGetNumChunks(this->stream), 0);
  }
  EXPECT_EQ(drawn<T>(box_muller2, this->stream, 4), drawn<T>(box_muller2, TestStream(QOR_BRNG_MT19937, {777}), 4));
}
#endif

// Kolmogorov-Smirnov with fixed seeds; 3.3 sqrt(n) D is exceeded once in a billion. Moments within six deviations.
TYPED_TEST(Gaussian, HasTheGaussianDistribution) {
  using T = TypeParam;
  constexpr int n = 200000;
  for (const int brng : {QOR_BRNG_MT19937, QOR_BRNG_MRG32K3A, QOR_BRNG_MCG59}) {
    for (const int method : {box_muller, box_muller2}) {
      TestStream s(brng, {2026u});
      auto g = drawn<T>(method, s, n, T(-2), T(0.5));
      double lag = 0;
      for (int i = 0; i + 1 < n; ++i) lag += (double(g[i]) + 2) * (double(g[i + 1]) + 2) / 0.25;
      EXPECT_LT(std::fabs(lag), 6 * std::sqrt(double(n)));
      std::sort(g.begin(), g.end());
      double d = 0, m2 = 0, m4 = 0;
      for (int i = 0; i < n; ++i) {
        const double z = (double(g[i]) + 2) / 0.5, p = 0.5 * std::erfc(-z / M_SQRT2);
        d = std::max({d, (i + 1.0) / n - p, p - double(i) / n});
        m2 += z * z;
        m4 += z * z * z * z;
      }
      EXPECT_LT(d, 3.3 / std::sqrt(double(n))) << brng << ' ' << method;
      EXPECT_NEAR(m2 / n, 1, 6 * std::sqrt(2.0 / n)) << brng << ' ' << method;
      EXPECT_NEAR(m4 / n, 3, 6 * std::sqrt(96.0 / n)) << brng << ' ' << method;
    }
  }
}

}  // namespace
