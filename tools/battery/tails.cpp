#include "tails.h"

#include <algorithm>
#include <cmath>

namespace battery {
namespace {

const double ln10 = std::log(10.0), log2_10 = std::log2(10.0);

double two_sided(double ln_tail) { return std::min(0.0, (ln_tail + std::log(2.0)) / ln10); }

}  // namespace

double log_poisson(double mean, long long count) {
  // The tail from the count away from the mean, relative to the count's own probability.
  const double k = static_cast<double>(count);
  double sum = 0, term = 1;
  if (k <= mean) {
    for (double i = k; i >= 0 && term > 1e-18 * sum; --i) {
      sum += term;
      term *= i / mean;
    }
  } else {
    for (double i = k + 1; term > 1e-18 * sum; ++i) {
      sum += term;
      term *= mean / i;
    }
  }
  return two_sided(k * std::log(mean) - mean - std::lgamma(k + 1) + std::log(sum));
}

// The incomplete gamma function: by its series below the mean, by its continued fraction (Lentz) above.
double log_chi_square(double freedom, double x) {
  const double a = freedom / 2, y = x / 2;
  if (y <= 0) return two_sided(-1e300);
  const double front = a * std::log(y) - y - std::lgamma(a);
  if (y < a) {
    double sum = 0, term = 1 / a;
    for (double n = a + 1; term > 1e-17 * sum; ++n) {
      sum += term;
      term *= y / n;
    }
    return two_sided(front + std::log(sum));
  }
  double b = y + 1 - a, c = 1e300, d = 1 / b, h = d;
  for (double i = 1; i < 100000; ++i) {
    const double an = -i * (i - a);
    b += 2;
    d = 1 / (an * d + b);
    c = b + an / c;
    h *= c * d;
    if (std::abs(c * d - 1) < 1e-15) break;
  }
  return two_sided(front + std::log(h));
}

double log_rank(int order, int rank) {
  // P(r) = 2^-(n-r)^2 times the product over i < r of (1 - 2^(i-n))^2 / (1 - 2^(i-r)).
  double sum = 0, scale = 0;
  for (int r = rank; r >= 0 && r > rank - 40; --r) {
    double log2_p = -static_cast<double>(order - r) * (order - r);
    for (int i = std::max(0, r - 80); i < r; ++i) {
      log2_p += (2 * std::log1p(-std::exp2(i - order)) - std::log1p(-std::exp2(i - r))) / std::log(2.0);
    }
    if (r == rank) scale = log2_p;
    sum += std::exp2(log2_p - scale);
  }
  return std::min(0.0, (scale + std::log2(sum)) / log2_10);
}

double log_complexity(int n, int complexity) {
  // 2^(2l-1) sequences have the complexity l from 1 to n / 2, one has 0: (2^(2l+1) + 1) / 3 of 2^n.
  if (2 * complexity >= n) return 0;
  return (2 * complexity + 1 - std::log2(3.0) - n + std::log2(1 + std::exp2(-2 * complexity - 1))) / log2_10;
}

}  // namespace battery
