// The first step of a logarithm with the exact table: x = 2^k m, m in [1, 2), u = m c - 1 without error (see ln.h).
#pragma once

#include <cstdint>

#include "numeric/float_parts.h"
#include "simd/vec.h"
#include "tfn/ln_table.h"

namespace qor::tfn {

// hi + lo is the logarithm of 1/c, u = m c - 1.
struct LogReduced {
  simd::VecD k, u, hi, lo, c;
};
// x normal and positive; the exponent field, read as an integer above 2^52, less `bias` is k. `table` has rows of
// LnRow's shape, fraction(lane) is the high word of x shifted right by 4: the leading 16 bits of its fraction lowest.
template <class Fraction>
QOR_INLINE LogReduced log_reduce(simd::VecD x, Fraction fraction, const double* table, simd::VecD bias) {
  using namespace simd;
  const VecU64 b = bits(x);
  const auto row = [&](int l) { return ((fraction(l) >> 3 & 0x1FF0) + 16) & 0x3FE0; };
  const auto [hi, lo, c] = gather_rows<3>(table, row).column;
  const VecD k = as<VecD>((b >> 52) | splat<VecU64>(0x4330000000000000)) - bias;
  const VecD m = as<VecD>((b & splat<VecU64>(0x000FFFFFFFFFFFFF)) | splat<VecU64>(0x3FF0000000000000));
  // The halves of m have 26 and 27 bits and c has 10: both products, and their sum less one, are exact.
  const VecD head = numeric::upper_half(m);
  return {k, (head * c - 1.0) + (m - head) * c, hi, lo, c};
}

}  // namespace qor::tfn
