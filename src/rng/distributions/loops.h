// Loops that generators share: affine steps over the output, and the two halves of pairs of uniform numbers.
#pragma once

#include <algorithm>

#include "numeric/mxcsr.h"
#include "simd/vec.h"
#include "tfn/map.h"
#include "tfn/sqrt.h"

namespace qor::rng {

// r[i] = f(r[i]), f being one of vectors; the last elements go through a padded buffer.
template <class T, class F>
QOR_INLINE void each(int n, T* r, F f) {
  using V = simd::Vec<T>;
  constexpr int lanes = simd::lanes<V>;
  const numeric::MxcsrGuard nearest;
  int i = 0;
  for (; i <= n - lanes; i += lanes) simd::store(r + i, f(simd::load<V>(r + i)));
  if (i >= n) return;
  T rest[lanes] = {};
  std::copy(r + i, r + n, rest);
  simd::store(rest, f(simd::load<V>(rest)));
  std::copy(rest, rest + (n - i), r + i);
}

// r[i] = r[i] scale + shift; with a clamp, what isn't above `shift` (nor is a number) becomes `shift`.
template <class T>
void affine(int n, T* r, T scale, T shift) {
  using V = simd::Vec<T>;
  each(n, r, [s = simd::splat<V>(scale), t = simd::splat<V>(shift)](V v) { return v * s + t; });
}
template <class T>
void affine_above(int n, T* r, T scale, T shift) {
  using V = simd::Vec<T>;
  each(n, r, [s = simd::splat<V>(scale), t = simd::splat<V>(shift)](V v) { return simd::max(v * s + t, t); });
}

// even[i] = u[2i], odd[i] = u[2i + 1] scale. One of the results may be u itself.
template <class T>
void split_pairs(int n, const T* u, T* even, T* odd, T scale) {
  using V = simd::Vec<T>;
  constexpr int lanes = simd::lanes<V>;
  const numeric::MxcsrGuard nearest;
  int i = 0;
  for (; i <= n - lanes; i += lanes) {
    const V u0 = simd::load<V>(u + 2 * i), u1 = simd::load<V>(u + 2 * i + lanes);
    simd::store(even + i, simd::evens(u0, u1));
    simd::store(odd + i, simd::odds(u0, u1) * scale);
  }
  for (; i < n; ++i) {
    const T first = u[2 * i], second = u[2 * i + 1];
    even[i] = first;
    odd[i] = second * scale;
  }
}

// sqrt(F x) in one pass, the low square root; F is -1 or -2, and -2 x is 0 - (x + x).
template <int F>
struct RootOf : tfn::Sqrt<tfn::Accuracy::low> {
  using Root = tfn::Sqrt<tfn::Accuracy::low>;
  static constexpr double filler = -1;
  template <class T>
  QOR_INLINE static T times(T x) {
    if constexpr (F == -1) {
      return -x;
    } else {
      return 0 - (x + x);
    }
  }
  QOR_INLINE static auto begin(simd::VecD x) { return Root::begin(times(x)); }
  template <class V, class B>
  QOR_INLINE static void fast(V x, const simd::lane_t<V>* at, V* y, B& usual) {
    Root::fast(times(x), at, y, usual);
  }
  template <class T>
  static int element(T x, T* y) {
    return Root::element(times(x), y);
  }
};

}  // namespace qor::rng
