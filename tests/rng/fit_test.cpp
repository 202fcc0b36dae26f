// Goodness of fit of every distribution over a grid of parameters, with fixed seeds: Kolmogorov-Smirnov for the
// continuous ones, chi-square for the discrete ones. A threshold that good variates miss once in a billion.
#include <gtest/gtest.h>

#include "rng/engines.h"
#include "support/distributions.h"

namespace {

constexpr double threshold = 1e-9;
constexpr int n = 100000;

template <class T>
void expect_fit(const known::Continuous& of, const std::function<int(qor_stream*, int, T*)>& draw) {
  const TestStream stream(QOR_BRNG_MT19937, {20260});
  std::vector<T> x(n);
  // Requests of many sizes, so that blocks end anywhere.
  for (int at = 0, m = 1; at < n; at += m, m = std::min(3 * m, n - at)) ASSERT_EQ(draw(stream, m, x.data() + at), 0);
  const known::Fit fit = known::kolmogorov_smirnov(x, of.cdf);
  EXPECT_GT(fit.p, threshold) << of.family << '(' << of.parameters << "), D = " << fit.statistic;
}

TEST(Fit, OfTheContinuousDistributions) {
  for (const known::Continuous& of : known::continuous()) {
    expect_fit<double>(of, of.draw);
    expect_fit<float>(of, of.draw_single);
  }
}

TEST(Fit, OfTheDiscreteDistributions) {
  for (const known::Discrete& of : known::discrete()) {
    for (const int brng : {QOR_BRNG_MT19937, QOR_BRNG_MCG59}) {
      const TestStream stream(brng, {20261});
      std::vector<int> k(n);
      for (int at = 0, m = 1; at < n; at += m, m = std::min(3 * m, n - at)) {
        ASSERT_EQ(of.draw(stream, m, k.data() + at), 0);
      }
      const known::Fit fit = known::chi_square(k, of.cdf);
      EXPECT_GT(fit.p, threshold) << of.family << '(' << of.parameters << "), chi-square = " << fit.statistic << " of "
                                  << fit.freedom << " degrees";
    }
  }
}

}  // namespace
