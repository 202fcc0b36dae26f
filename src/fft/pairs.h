// Elementwise work on arrays of complex values as callers hold them.
#pragma once

#include "fft/passes.h"

namespace qor::fft {

// A complex factor as the product with Packed takes it.
template <class V>
QOR_INLINE Complex<V> as_factor(V w) {
  return {simd::both_even(w), simd::flip_sign(simd::both_odd(w), simd::alternating_signs<V>(0))};
}

// b[i] *= a[i].
template <class T>
inline void multiply_pairs(const T* a, T* b, int n) {
  using V = simd::Vec<T>;
  const auto product = [](auto x, auto y, auto z, int i) { z.store(i, x.load(i) * as_factor(y.load(i).v)); };
  const Turns<V, false> x{b}, y{const_cast<T*>(a)};
  int i = 0;
  for (; i + Packed<V>::values <= n; i += Packed<V>::values) product(x, y, x, i);
  if (i < n) product(x.half(), y.half(), x.half(), i);
}

}  // namespace qor::fft
