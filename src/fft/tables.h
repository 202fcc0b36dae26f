// Tables of complex factors in the layouts of the passes.
#pragma once

#include "fft/passes.h"
#include "fft/roots.h"

namespace qor::fft {

inline constexpr int no_memory = -9;

// Sizes of parts of the work space, so that each part is aligned.
constexpr std::size_t padded(std::size_t elements) { return (elements + 15) / 16 * 16; }

// The i-th complex factor of a sequence, as products with values of kind C take it.
template <class C, class T>
QOR_INLINE void put_factor(T* out, int i, T re, T im) {
  constexpr int L = simd::lanes<typename C::Vector>;
  out += i / C::values * 2 * L;
  i %= C::values;
  if constexpr (C::values == L) {
    out[i] = re;
    out[L + i] = im;
  } else {
    out[2 * i] = out[2 * i + 1] = re;
    out[L + 2 * i] = -im;
    out[L + 2 * i + 1] = im;
  }
}

// The twiddle factors of a pass on values of kind C: for each register the factors of the rows 1 to radix - 1 or, when
// the butterfly is done in two steps, of every columns-th row from row 0 on, from row 1 on and so forth, without row 0's.
// False without memory.
template <class C, class T>
bool fill_twiddles(T* out, int radix, int m, int columns = 1) {
  const Roots roots(static_cast<std::uint32_t>(radix) * static_cast<std::uint32_t>(m));
  if (!roots) return false;
  for (int k = 0; k < m; k += C::values) {
    for (int i = 1; i < radix; ++i, out += 2 * simd::lanes<typename C::Vector>) {
      const int r = i % (radix / columns) * columns + i / (radix / columns);
      for (int l = 0; l < C::values; ++l) {
        T re, im;
        roots.get(static_cast<std::uint32_t>(r * (k + l)), re, im);
        put_factor<C>(out, l, re, im);
      }
    }
  }
  return true;
}

}  // namespace qor::fft
