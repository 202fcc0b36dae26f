// What the error functions share: f(c + h) from a row of erf_table.h.
#pragma once

#include "numeric/float_parts.h"
#include "numeric/pair.h"
#include "simd/vec.h"
#include "tfn/accuracy.h"
#include "tfn/erf_table.h"

namespace qor::tfn {

// The leading 26 bits of a number.
QOR_INLINE simd::VecD leading_half(simd::VecD v) {
  return simd::as<simd::VecD>(simd::bits(v) & simd::splat<simd::VecU64>(0xFFFFFFFFF8000000));
}

// x = c + h, c the multiple of the table's step next to x >= 0. The low bits of `shifted` are the row.
template <class V>
struct UniformSplit {
  V shifted, h;
};
template <class Table, class V>
QOR_INLINE UniformSplit<V> split_uniform(V x) {
  constexpr simd::lane_t<V> shift = (sizeof(simd::lane_t<V>) == 8 ? 0x1.8p52 : 0x1.8p23) * Table::step;
  const V shifted = x + shift;
  return {shifted, x - (shifted - shift)};
}
template <class Table, class V>
QOR_INLINE auto uniform_offset(const simd::LowHalves<simd::Bits<V>>& low, int first) {
  return [&low, first](int lane) { return low(first + lane) * unsigned{sizeof(Table::row[0])}; };
}

// The node of a binary table next to w.
template <class Table, class V>
QOR_INLINE V binary_node_near(V w) {
  constexpr int kept = (sizeof(simd::lane_t<V>) == 8 ? 52 : 23) - Table::bits;
  using Word = simd::lane_t<simd::Bits<V>>;
  return simd::as<V>((simd::bits(w) + simd::splat<simd::Bits<V>>(Word{1} << (kept - 1))) &
                     simd::splat<simd::Bits<V>>(~Word{} << kept));
}
template <class Table, class V>
QOR_INLINE auto binary_offset(const simd::HighWords<V>& node, int first) {
  constexpr int fraction_bits = sizeof(simd::lane_t<V>) == 8 ? 20 : 23,
                bias = sizeof(simd::lane_t<V>) == 8 ? 1023 : 127;
  return [&node, first](int lane) {
    constexpr unsigned start = unsigned{bias + Table::first} << Table::bits;
    return ((node(first + lane) >> (fraction_bits - Table::bits)) - start) * unsigned{sizeof(Table::row[0])};
  };
}

// a[from] + a[from + 1] h + ... + a[to] h^(to - from), the columns of the table fetched in pairs, as the sum needs
// them.
template <int From, int To, class Offset>
QOR_INLINE simd::VecD row_polynomial(const double* table, Offset offset, simd::VecD h) {
  static_assert(From % 2 == 0 && To % 2 == 1);
  simd::VecD p;
  for (int c = To - 1; c >= From; c -= 2) {
    const auto [even, odd] = simd::gather_rows<2>(table + c, offset).column;
    p = c == To - 1 ? odd * h + even : (p * h + odd) * h + even;
  }
  return p;
}

// The value of a SplitRow, its leading part replaced by base(hi). The high accuracy adds the products of the leading
// parts exactly; what is left has rounding errors of a few hundredths of an ulp at most.
template <Accuracy A, class Row, class Offset, class Base>
QOR_INLINE simd::VecD split_row_value(const Row* table, Offset offset, simd::VecD h, Base base) {
  using namespace simd;
  const VecD higher = row_polynomial<4, Row::degree + 2>(&table->hi, offset, h) * h;
  const auto [slope_hi, slope_lo] = gather_rows<2>(&table->slope_hi, offset).column;
  const auto [hi, lo] = gather_rows<2>(&table->hi, offset).column;
  if constexpr (A == Accuracy::low) {
    return base(hi) + (lo + h * (slope_hi + (slope_lo + higher)));
  } else {
    const VecD head = leading_half(h);
    const auto [sum, error] = numeric::quick_two_sum(base(hi), slope_hi * head);
    return sum + (error + (lo + (slope_hi * (h - head) + h * (slope_lo + higher))));
  }
}

// The two halves of a vector of singles by the double rows of a table; offset(first) gives the offsets of the lanes
// from `first` on.
template <class Row, class Offset, class Base>
QOR_INLINE simd::VecF wide_row_value(const Row* table, Offset offset, simd::VecF h, Base base) {
  using namespace simd;
  const auto half = [&](int first, VecD wide_h) {
    const auto at = offset(first);
    VecD p = row_polynomial<2, Row::degree>(table->term, at, wide_h);
    const auto [value, slope] = gather_rows<2>(table->term, at).column;
    return base(value) + wide_h * (slope + wide_h * p);
  };
  const VecD low = half(0, widen_low(h));
  return narrow(low, half(2, widen_high(h)));
}
// The same in singles.
template <class Row, class Offset>
QOR_INLINE simd::VecF single_row_value(const Row* table, Offset offset, simd::VecF h) {
  static_assert(Row::degree == 3);
  const auto [a0, a1, a2, a3] = simd::gather_rows4(table->term, offset).column;
  return a0 + h * (a1 + h * (a2 + h * a3));
}

// (hi + lo) 2^-K, rounded once, also where that makes a subnormal number of it; hi is not negative, and less than 2^53
// times as small as lo.
template <int K>
QOR_INLINE simd::VecD scaled_down(simd::VecD hi, simd::VecD lo) {
  using namespace simd;
  // One unit in the last place of `one` is that of the smallest number.
  const VecD one = splat<VecD>(numeric::power_of_two(K - 1022));
  const VecD units = one + hi;
  const VecD rounded = (units + ((hi - (units - one)) + lo)) - one;
  return select(lt(hi, one), rounded, hi + lo) * numeric::power_of_two(-K);
}

}  // namespace qor::tfn
