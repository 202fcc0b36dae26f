// Poisson variates of a parameter each.
#include <algorithm>
#include <cstdint>

#include "rng/distributions/discrete.h"
#include "rng/distributions/kernels.h"
#include "rng/distributions/mode_guard.h"
#include "rng/distributions/scalar.h"
#include "rng/distributions/stirling.h"
#include "rng/distributions/uniform.h"
#include "rng/distributions/unimodal.h"
#include "rng/streams/status.h"

namespace qor::rng {
namespace {

constexpr int block = 512;
constexpr double rejection_from = 10;  // the constants of the rejection hold from there on

// Elements of a block that a pass deals with: where they are in it, and their parameters.
struct Chosen {
  int count = 0;
  int at[block + 1];
  alignas(16) double lambda[block + 1];
  void add(int i, double of, bool wanted) {
    at[count] = i;
    lambda[count] = of;
    count += wanted;
  }
};

// By inversion, adding up probabilities from 0 on. Fine uniform numbers, for the sake of tiny parameters.
int invert(Stream* stream, const Chosen& of, std::int32_t* r) {
  static constexpr int limit = 100;  // P(k > 100) < 2^-200 for lambda < 10; only rounding leads there
  static constexpr auto reciprocal = [] {
    struct {
      double of[limit + 1];
    } table{};
    for (int k = 1; k <= limit; ++k) table.of[k] = 1.0 / k;
    return table;
  }();
  alignas(16) double u[2 * block + 2], p[block];
  const int status = fine_uniforms(stream, of.count, u);
  if (status < 0) return status;
  for (int i = 0; i < of.count; ++i) p[i] = -of.lambda[i];
  Kernels<double>::exp(of.count, p, p);
  const numeric::MxcsrGuard nearest;
  for (int i = 0; i < of.count; ++i) {
    const double lambda = of.lambda[i];
    double term = p[i], left = u[i];
    int k = 0;
    while (left >= term && k < limit) {
      left -= term;
      ++k;
      term *= lambda * reciprocal.of[k];
    }
    r[of.at[i]] = k;
  }
  return status;
}

// W. Hoermann, The transformed rejection method for generating Poisson random variables, Insurance: Mathematics and
// Economics 12 (1993), algorithm PTRS. A round tries each element once; those rejected stay in `of`.
int reject(Stream* stream, Chosen& of, std::int32_t* r) {
  alignas(16) double u[2 * block], k[block], hat[block], ratio[block], p[block];
  Chosen open;
  bool accepted[block];
  const int count = of.count;
  const int status = uniform(0, stream, 2 * count, u, 0.0, 1.0);
  if (status < 0) return status;
  {
    const numeric::MxcsrGuard nearest;
    const double* const v = u + count;
    // us is the distance of u from the nearer end of the unit interval; the variate is k.
    for (int i = 0; i < count; ++i) {
      const double lambda = of.lambda[i], centred = u[i] - 0.5, us = 0.5 - (centred < 0 ? -centred : centred);
      const double b = 0.931 + 2.53 * __builtin_sqrt(lambda), a = -0.059 + 0.02483 * b;
      const double x = (2 * a / us + b) * centred + lambda + 0.43;
      k[i] = floor_of(x);
      hat[i] = v[i] * (1.1239 + 1.1328 / (b - 3.4)) / (a / (us * us) + b);
      // Above zero: accepted without more ado; below zero: never.
      const double quick = 0.9277 - 3.6224 / (b - 2) - v[i];
      ratio[i] = x < 0 || (us < 0.013 && v[i] > us) ? -1.0 : us >= 0.07 && quick >= 0 ? 1.0 : 0.0;
    }
    for (int i = 0; i < count; ++i) {
      accepted[i] = ratio[i] > 0;
      open.add(i, of.lambda[i], ratio[i] == 0);
    }
    // 1/k! = (k + 1) ... (k + 8) / (k + 8)!, to which Stirling's series applies.
    for (int i = 0; i < open.count; ++i) {
      ratio[i] = (k[open.at[i]] + 8) / open.lambda[i];
    }
  }
  Kernels<double>::ln(open.count, ratio, ratio);
  {
    const numeric::MxcsrGuard nearest;
    for (int i = 0; i < open.count; ++i) {
      const double e = open.lambda[i], x = k[open.at[i]] + 8, t = x - e;
      const double deviance = (t < 0 ? -t : t) <= 0.1 * (x + e) ? deviance_near(x, e) : x * ratio[i] - t;
      p[i] = -deviance - stirling_error(x);
    }
  }
  Kernels<double>::exp(open.count, p, p);
  const numeric::MxcsrGuard nearest;
  for (int i = 0; i < open.count; ++i) {
    constexpr double two_pi = 6.283185307179586;
    const int at = open.at[i];
    const double x = k[at], y = 1 / open.lambda[i];
    double product = 1;
    for (int j = 1; j <= 8; ++j) product *= (x + j) * y;
    accepted[at] = hat[at] <= p[i] * product / __builtin_sqrt(two_pi * (x + 8));
  }
  of.count = 0;
  for (int i = 0; i < count; ++i) {
    const double capped = std::min(k[i], 2147483647.0);
    if (accepted[i]) r[of.at[i]] = static_cast<std::int32_t>(capped);
    of.add(of.at[i], of.lambda[i], !accepted[i]);
  }
  return status;
}

}  // namespace

int poisson_each(Stream* stream, int n, std::int32_t* r, const double* lambda) {
  const ModeGuard guard(ln_callback<double>);
  int status = status::ok;
  for (int m; n > 0; n -= m, r += m, lambda += m) {
    m = std::min(n, block);
    Chosen small, large;
    for (int i = 0; i < m; ++i) {
      // Beyond 2^40 the result is 2^31 - 1 whatever the parameter.
      const double of = std::min(lambda[i], 0x1p40);
      small.add(i, of, of < rejection_from);
      large.add(i, of, !(of < rejection_from));
    }
    if (small.count > 0) status = invert(stream, small, r);
    while (status >= 0 && large.count > 0) status = reject(stream, large, r);
    if (status < 0) return status;
  }
  return status;
}

}  // namespace qor::rng
