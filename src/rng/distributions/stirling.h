// Probabilities of counts, after C. Loader, Fast and accurate computation of binomial probabilities (2000): the two
// parts of e^x / x! that are hard to get by way of the factorial.
//   e^x exp(-e) / x! = exp(-deviance(x, e) - stirling_error(x)) / sqrt(2 pi x)
#pragma once

#include "base/target.h"

namespace qor::rng {

// ln x! - (x + 1/2) ln x + x - ln(2 pi)/2 for x >= 8: asymptotic, the first dropped term is 1/(1188 x^9).
// Both for doubles and for vectors of them.
template <class V>
QOR_INLINE V stirling_error(V x) {
  const V y = 1 / x, y2 = y * y;
  return y * (1.0 / 12 - y2 * (1.0 / 360 - y2 * (1.0 / 1260 - y2 * (1.0 / 1680))));
}

// x ln(x/e) + e - x for |x - e| <= (x + e)/10. With v = (x - e)/(x + e) it is
// (x - e) v + 2 x v (v^2/3 + v^4/5 + ...); the first dropped term is 2 x v^15/15, below 2^-43 of it.
template <class V>
QOR_INLINE V deviance_near(V x, V e) {
  const V t = x - e, v = t / (x + e), w = v * v;
  const V tail = w * (1.0 / 3 + w * (1.0 / 5 + w * (1.0 / 7 + w * (1.0 / 9 + w * (1.0 / 11 + w * (1.0 / 13))))));
  return v * (t + 2 * x * tail);
}

}  // namespace qor::rng
