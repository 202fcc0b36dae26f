// Single logarithms, square roots and whole parts for set-ups and rare decisions. Results go to a reference: a double
// returned by a function that isn't inlined would pass through the x87 unit.
#pragma once

#include "numeric/mxcsr.h"
#include "tfn/ln.h"
#include "tfn/sqrt.h"

namespace qor::rng {

inline void scalar_ln(double x, double& y) {
  using L = std::numeric_limits<double>;
  if (x >= L::min() && x <= L::max()) {
    y = tfn::Ln<tfn::Accuracy::high>::single_lane(x, 0);
  } else {
    tfn::Ln<tfn::Accuracy::high>::element(x, &y);
  }
}
// The whole part of 0 <= x < 2^51, and the floor of those below; in the vector unit.
QOR_INLINE double floor_of(double x) {
  const double near = (x + 0x1p52) - 0x1p52;
  return near - (near > x ? 1.0 : 0.0);
}
inline void scalar_root(double x, double& y) { y = simd::sqrt(simd::splat<simd::VecD>(x))[0]; }

// ln(1 + x), also for tiny x: the error of 1 + x shows in (1 + x) - 1, and cancels.
inline void scalar_ln_1p(double x, double& y) {
  const double w = 1 + x;
  scalar_ln(w, y);
  y = w == 1 ? x : y * (x / (w - 1));
}

}  // namespace qor::rng
