// Where a real spectrum of length n lies, in elements: the value at frequency 0 is first everywhere.
//   Perm  even n: the value at n/2, then the pairs (re, im) of the frequencies 1 ..; odd n: the pairs
//   Pack  the pairs, then for even n the value at n/2
//   CCS   a zero, the pairs, then for even n the value at n/2 and another zero
#pragma once

#include <cstring>

namespace qor::fft {

enum class Packing { perm, pack, ccs };

// Index of the first pair, and of the value at n/2 of an even n.
constexpr int first_pair(Packing p, int n) { return p == Packing::ccs || (p == Packing::perm && n % 2 == 0) ? 2 : 1; }
constexpr int middle_value(Packing p, int n) { return p == Packing::perm ? 1 : p == Packing::pack ? n - 1 : n; }

// dst may be src.
template <class T>
void repack(Packing from, const T* src, Packing to, T* dst, int n) {
  const T zero = src[0], middle = n % 2 == 0 ? src[middle_value(from, n)] : T(0);
  std::memmove(dst + first_pair(to, n), src + first_pair(from, n),
               static_cast<std::size_t>((n - 1) / 2) * 2 * sizeof(T));
  dst[0] = zero;
  if (to == Packing::ccs) dst[1] = 0;
  if (n % 2 == 0) {
    dst[middle_value(to, n)] = middle;
    if (to == Packing::ccs) dst[n + 1] = 0;
  }
}

}  // namespace qor::fft
