// Rounding to integral values by the processor's own rounding: with c = 2^52 (singles: 2^23) of x's sign, (x + c) - c
// is x rounded as the control register says. c = 0 for numbers that have no fraction, infinities and NaNs: they pass
// through x + 0 - 0, NaNs quieted. There is no branch and no second path, and the flag inexact is raised only by what
// is inexact. The sign is put in at the end: the difference of equal numbers is -0 when rounding down.
#pragma once

#include <limits>

#include "numeric/mxcsr.h"
#include "simd/vec.h"

namespace qor::tfn {

using numeric::RoundingGuard;

// The numbers from here on are integral: 2^52, 2^23.
template <class T>
inline constexpr T integral_from = 1 / std::numeric_limits<T>::epsilon();

template <class V>
QOR_INLINE simd::Bits<V> rounding_term(V magnitude) {
  using namespace simd;
  const V c = splat<V>(integral_from<lane_t<V>>);
  return bits(c) & lt(magnitude, c);
}
template <class V>
QOR_INLINE V round_as_set(V x) {
  using namespace simd;
  const Bits<V> s = sign(x);
  const V c = as<V>(rounding_term(as<V>(bits(x) ^ s)) | s);
  return as<V>(bits(abs((x + c) - c)) | s);
}

// A member rounds a vector, and says under which control register.
template <RoundingGuard::Direction D>
struct Directed : RoundingGuard {
  QOR_INLINE Directed() : RoundingGuard(D) {}
};
struct RoundAsSet {
  template <class V>
  QOR_INLINE static void apply(V x, V* y) {
    y[0] = round_as_set(x);
  }
};
struct Floor : RoundAsSet {
  using Guard = Directed<RoundingGuard::down>;
};
struct Ceil : RoundAsSet {
  using Guard = Directed<RoundingGuard::up>;
};
struct Trunc : RoundAsSet {
  using Guard = Directed<RoundingGuard::to_zero>;
};
// Both in the caller's direction. Rint raises inexact, and traps when the caller asks for it, where a result differs
// from its argument; NearbyInt raises nothing.
struct Rint : RoundAsSet {
  struct Guard {};
};
struct NearbyInt : RoundAsSet {
  using Guard = RoundingGuard;
};
// To even first; halves then away from zero.
struct Round {
  using Guard = Directed<RoundingGuard::nearest>;
  template <class V>
  QOR_INLINE static void apply(V x, V* y) {
    using namespace simd;
    const V magnitude = abs(x), c = as<V>(rounding_term(magnitude));
    const V r = (magnitude + c) - c;
    const V one = as<V>(eq(magnitude - r, splat<V>(0.5)) & bits(splat<V>(1)));
    y[0] = as<V>(bits(r + one) | sign(x));
  }
};
// The fraction is x minus the integral part: of an infinity a NaN, and a zero with the sign of x.
struct Modf {
  using Guard = Directed<RoundingGuard::to_zero>;
  template <class V>
  QOR_INLINE static void apply(V x, V* y) {
    y[0] = round_as_set(x);
    y[1] = simd::as<V>(simd::bits(x - y[0]) | simd::sign(x));
  }
};

// r[k][i] = F's results of a[i]. The last few elements go through a block of their own.
template <class F, class T, class... Out>
void round_elements(int n, const T* a, Out*... out) {
  using V = simd::Vec<T>;
  constexpr int width = simd::lanes<V>, results = sizeof...(out);
  [[maybe_unused]] const typename F::Guard guard;
  T* const r[] = {out...};
  V y[results];
  int i = 0;
  for (; i <= n - width; i += width) {
    F::apply(simd::load<V>(a + i), y);
    for (int k = 0; k < results; ++k) simd::store(r[k] + i, y[k]);
  }
  if (i >= n) return;
  T block[width] = {};
  for (int l = 0; l < n - i; ++l) block[l] = a[i + l];
  F::apply(simd::load<V>(block), y);
  for (int k = 0; k < results; ++k) {
    for (int l = 0; l < n - i; ++l) r[k][i + l] = y[k][l];
  }
}

}  // namespace qor::tfn
