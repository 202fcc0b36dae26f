// Uniform generators, over the engines and over a generator whose numbers are written down.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "rng/engines.h"
#include "support/scripted_generator.h"

namespace {

class Uniform : public testing::Test {
 protected:
  TestStream stream{scripted_generator(), {}};
};

constexpr double inf = std::numeric_limits<double>::infinity();

TEST_F(Uniform, ClampsIntoTheClosedIntervalOnlyWhenAsked) {
  const std::vector<double> numbers = {0.5, -1.0, 2.0, 2.5, -1.5, -inf, inf, -0.0, 1.999, -1.0000001, 3.0};
  const auto clamped = [](double u, double a, double b) { return std::min(std::max(u, a), b); };
  for (int n = 0; n <= 23; ++n) {
    double d[25];
    float f[25];
    for (const unsigned method : {0u, QOR_RNG_METHOD_ACCURATE, 0xBFFFFFFFu, 0xFFFFFFFFu}) {
      const bool accurate = (method & QOR_RNG_METHOD_ACCURATE) != 0;
      std::fill_n(d, 25, 99.0);
      std::fill_n(f, 25, 99.0f);
      play(numbers);
      EXPECT_EQ(_wxrdRngUniform(method, stream, n, d + 1, -1, 2), 0);
      EXPECT_EQ(requests, (std::vector<Request>{{n, -1, 2}}));
      play(numbers);
      EXPECT_EQ(_wxrsRngUniform(method, stream, n, f + 1, -1, 2), 0);
      EXPECT_EQ(d[0], 99);
      EXPECT_EQ(f[0], 99);
      for (int i = 0; i < 24; ++i) {
        const double u = i < n ? numbers[std::size_t(i) % numbers.size()] : 99;
        EXPECT_EQ(d[i + 1], i < n && accurate ? clamped(u, -1, 2) : u) << i << " of " << n;
        EXPECT_EQ(f[i + 1], float(i < n && accurate ? clamped(u, -1, 2) : u)) << i << " of " << n;
      }
    }
  }
  double d[3] = {99, 99, 99};
  play(numbers, 0);
  EXPECT_EQ(_wxrdRngUniform(QOR_RNG_METHOD_ACCURATE, stream, 3, d, -1, 2), -77);
  EXPECT_EQ(d[0], 99) << "a failure leaves the numbers as they are";
}

TEST_F(Uniform, EveryEngineStaysInAnEmptyInterval) {
  for (const EngineRow& e : engine_rows()) {
    const TestStream s(e.brng, {1});
    double d[37];
    EXPECT_EQ(_wxrdRngUniform(QOR_RNG_METHOD_ACCURATE, s, 37, d, 0.1, 0.1), 0);
    for (const double u : d) EXPECT_EQ(u, 0.1) << e.name;
  }
}

// The told rule by itself: u - 1 is rounded, which moves some negative numbers above 2^30 in size down by one more.
int told_floor(double u) {
  if (double(int(u)) > u) {
    volatile double lower = u - 1;
    u = lower;
  }
  return int(u);
}

TEST_F(Uniform, IntegersAreFloorsInBlocksOfMethodZero) {
  const std::vector<double> numbers = {
      0.0,           -0.0,          0.5,           -0.5,      -3.0,       1.999999, -2.000001, 2147483647.0,
      2147483646.75, -2147483648.0, -2147483647.5, 0x1p-1074, -0x1p-1074, 1.0,      -1.0,      -1073741823.9999999,
      -1073741823.5};
  for (const int n : {1, 2, 3, 4, 5, 7, 8, 1023, 1024, 1025, 2500}) {
    play(numbers);
    std::vector<int> r(std::size_t(n) + 1, 4711);
    EXPECT_EQ(_wxriRngUniform(QOR_RNG_METHOD_ACCURATE, stream, n, r.data(), -3, 2), 0);
    for (int i = 0; i < n; ++i) {
      const double u = numbers[std::size_t(i) % numbers.size()];
      ASSERT_EQ(r[std::size_t(i)], told_floor(u)) << "floor of " << u << ", element " << i << " of " << n;
    }
    EXPECT_EQ(r[std::size_t(n)], 4711);
    std::vector<Request> expected;
    for (int left = n; left > 0; left -= 1024) expected.push_back({std::min(left, 1024), -3, 2});
    EXPECT_EQ(requests, expected);
  }
  play(numbers);
  EXPECT_EQ(_wxriRngUniform(0, stream, 0, nullptr, 0, 9), 0);
  EXPECT_EQ(_wxriRngUniform(0, stream, -5, nullptr, 0, 9), 0);
  EXPECT_TRUE(requests.empty());
}

TEST_F(Uniform, IntegersStopAtAFailureAndKeepWhatIsStored) {
  play({3.5}, 1);
  std::vector<int> r(2000, -1);
  EXPECT_EQ(_wxriRngUniform(0, stream, 2000, r.data(), 0, 9), -77);
  EXPECT_EQ(std::count(r.begin(), r.begin() + 1024, 3), 1024);
  EXPECT_EQ(std::count(r.begin() + 1024, r.end(), -1), 976);
}

TEST_F(Uniform, IntegersOfAnEngineFillTheirRange) {
  const TestStream s(QOR_BRNG_MT19937, {42});
  std::vector<int> r(50000), seen(5);
  ASSERT_EQ(_wxriRngUniform(0, s, 50000, r.data(), -3, 2), 0);
  for (const int v : r) {
    ASSERT_TRUE(v >= -3 && v <= 1) << v;
    ++seen[std::size_t(v + 3)];
  }
  // Chi-square with four degrees of freedom; this seed's value is fixed, 18.47 has probability 0.001.
  double chi2 = 0;
  for (const int count : seen) chi2 += (count - 10000.0) * (count - 10000.0) / 10000.0;
  EXPECT_LT(chi2, 18.47);
}

TEST_F(Uniform, BitsAreTheEnginesOwn) {
  EXPECT_EQ(_wxriRngUniformBits(0xFFFFFFFF, stream, 5, nullptr), 1005) << "its status";
  const TestStream s(QOR_BRNG_MCG59, {3}), t(QOR_BRNG_MCG59, {3});
  unsigned a[20], b[20];
  EXPECT_EQ(_wxriRngUniformBits(0, s, 10, a), 0);
  __wxriBRngMCG59(t, 10, b);
  EXPECT_TRUE(std::equal(a, a + 20, b));
}

}  // namespace
