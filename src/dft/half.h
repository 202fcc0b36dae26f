// One transform's half-spectrum, dense, from and to the form in which the caller's array has it.
#pragma once

#include <cstddef>

#include "dft/settings.h"

namespace qor::dft {

// Calls f(part of the half-spectrum, part of the caller's array, sign) for each real that both have, with the strides
// given in reals, and clear(place) for those that only a packed form has. The sign is that of a conjugate element, for
// which only the half-spectrum has a place.
template <class T, class F, class Clear>
void over_half(const Settings& s, const Layout& layout, T* dense, T* packed, F f, Clear clear) {
  const int rank = s.rank, n = s.length[rank - 1], h = n / 2 + 1;
  if (!s.packed()) {
    int rows = 1;
    for (int d = 0; d + 1 < rank; ++d) rows *= s.length[d];
    for (int row = 0; row < rows; ++row) {
      T* p = packed;
      for (int d = rank - 2, rest = row; d >= 0; rest /= s.length[d--]) {
        p += std::ptrdiff_t{2} * (rest % s.length[d]) * layout.stride[d + 1];
      }
      for (int k = 0; k < h; ++k, dense += 2) {
        T* const z = p + std::ptrdiff_t{2} * k * layout.stride[rank];
        f(dense[0], z[0], 1);
        f(dense[1], z[1], 1);
      }
    }
    return;
  }
  const fft::Packing packing = s.packing();
  const int m = rank == 2 ? s.length[0] : 1, rows = rank == 2 ? static_cast<int>(s.spectrum_length(0)) : 1;
  const auto at = [&](int i, int j) -> T& {
    const std::ptrdiff_t down = rank == 2 ? std::ptrdiff_t{layout.stride[1]} * i : 0;
    return packed[down + std::ptrdiff_t{layout.stride[rank]} * j];
  };
  const auto part = [&](int length, int k, int imaginary) {  // where in a packed row
    if (k == 0) return 0;
    return 2 * k == length ? fft::middle_value(packing, length)
                           : fft::first_pair(packing, length) + 2 * (k - 1) + imaginary;
  };
  for (int i = 0; i < rows; ++i) {
    for (int j = 0; j < s.spectrum_length(rank - 1); ++j) clear(at(i, j));
  }
  for (int k = 0; k < h; ++k) {
    const int re = part(n, k, 0), im = part(n, k, 1);
    for (int u = 0; u < m; ++u) {
      T* const z = dense + 2 * (std::ptrdiff_t{u} * h + k);
      if (k != 0 && 2 * k != n) {
        f(z[0], at(u, re), 1);
        f(z[1], at(u, im), 1);
        continue;
      }
      const int v = 2 * u > m ? m - u : u;
      f(z[0], at(part(m, v, 0), re), 2 * u > m ? 0 : 1);
      if (v != 0 && 2 * v != m) f(z[1], at(part(m, v, 1), re), 2 * u > m ? -1 : 1);
    }
  }
}

}  // namespace qor::dft
