// The roots that products modulo t^M + 1 need (negacyclic.h).
//
// With phi(b) = pi times the sum of b's bits i, each divided by 2^i, block b of level l works modulo t^n - exp(i f),
// f = phi(2^(l+1) + b) = phi(b) + pi/2 2^-l, and needs exp(i f/2), exp(i f/4) and exp(3 i f/4). Levels up to
// `static_levels` are tables; any others are those times constants: f there differs from the table's by an angle that
// is the same for all blocks with the same high bits.
#pragma once

#include <array>
#include <cstdint>

#include "fft/butterfly.h"
#include "numeric/x87.h"

namespace qor::fft {

inline constexpr int static_levels = 8;

// Elements before level l of a table: a group of `lanes` blocks holds the six parts of its roots, a vector each.
template <class V>
constexpr int roots_start(int level) {
  int n = 0;
  for (int l = 0; l < level; ++l) n += 6 * (1 << l < lanes<V> ? lanes<V> : 1 << l);
  return n;
}

// phi(b) / pi, exact.
constexpr double phi(std::uint32_t b) {
  double sum = 0;
  for (double place = 1; b != 0; b >>= 1, place /= 2) sum += b & 1 ? place : 0;
  return sum;
}
// f / pi.
constexpr double phi(int level, std::uint32_t block) { return phi((2u << level) + block); }

template <class V>
constexpr auto make_roots() {
  using T = lane_t<V>;
  constexpr int L = lanes<V>;
  std::array<T, static_cast<std::size_t>(roots_start<V>(static_levels + 1))> table{};
  for (int l = 0; l <= static_levels; ++l) {
    for (int b = 0; b < 1 << l; ++b) {
      const int n = 16 << l, eighth = 2 << l, k = static_cast<int>(phi(l, static_cast<std::uint32_t>(b)) * eighth);
      int at = roots_start<V>(l) + b / L * 6 * L + b % L;
      for (const int times : {2, 1, 3}) {
        const Angle a = angle(times * k, n);
        table[static_cast<std::size_t>(at)] = T(a.cos);
        table[static_cast<std::size_t>(at + L)] = T(a.sin);
        at += 2 * L;
      }
    }
  }
  return table;
}
template <class V>
alignas(64) inline constexpr auto roots_table = make_roots<V>();

// Levels 0 ... levels of the roots below a block whose f is `top` times pi.
template <class V>
[[gnu::noinline]] void fill_roots(lane_t<V>* out, int levels, double top) {
  using T = lane_t<V>;
  constexpr int L = lanes<V>;
  const numeric::X87Precision extended(numeric::x87_extended);
  for (int l = 0; l <= levels; ++l, top /= 2) {
    const int known = l < static_levels ? l : static_levels;
    const T* const from = roots_table<V>.data() + roots_start<V>(known);
    const int size = 1 << known < L ? L : 1 << known;
    for (std::uint32_t high = 0; high < 1u << (l - known); ++high, out += 6 * size) {
      // Between f/4 here and there, in units of pi.
      const double apart = (top + (phi(high) - 0.5) / (1 << known)) / 4;
      int at = 0;
      for (const int times : {2, 1, 3}) {
        const double turn = times * apart;  // few digits, so that the product with the first part of pi is exact
        double sine, cosine;
        numeric::x87_sincos(turn * 0x1.921fb54p1, turn * 0x1.10b4611a62633p-29, &sine, &cosine);
        const V c = simd::splat<V>(static_cast<T>(cosine)), s = simd::splat<V>(static_cast<T>(sine));
        for (int b = at; b < 6 * size; b += 6 * L) {
          const V re = simd::load<V>(from + b), im = simd::load<V>(from + b + L);
          simd::store<V>(out + b, re * c - im * s);
          simd::store<V>(out + b + L, re * s + im * c);
        }
        at += 2 * L;
      }
    }
  }
}

}  // namespace qor::fft
