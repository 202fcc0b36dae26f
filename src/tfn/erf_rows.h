// What the error functions share: f(c + h) from a row of erf_table.h.
#pragma once

#include <limits>

#include "numeric/float_parts.h"
#include "numeric/pair.h"
#include "simd/vec.h"
#include "tfn/accuracy.h"
#include "tfn/erf_table.h"

namespace qor::tfn {

// x = c + h, c the multiple of the table's step next to x >= 0; the low bits of `shifted` number its row.
template <class V>
struct UniformSplit {
  V shifted, h;
};
template <class Table, class V>
QOR_INLINE UniformSplit<V> split_uniform(V x) {
  constexpr auto shift = simd::lane_t<V>((sizeof(simd::lane_t<V>) == 8 ? 0x1.8p52 : 0x1.8p23) * Table::step);
  const V shifted = x + shift;
  return {shifted, x - (shifted - shift)};
}
// The offsets of the rows of lane `first` and those after it.
template <class Table, class Mask>
QOR_INLINE auto uniform_offset(const simd::LowHalves<Mask>& low, int first = 0) {
  return [&low, first](int lane) { return low(first + lane) * unsigned{sizeof(Table::row[0])}; };
}

// The node of a binary table next to w, and the offsets of such nodes' rows.
template <class Table, class V>
QOR_INLINE V binary_node_near(V w) {
  using namespace simd;
  using Word = lane_t<Bits<V>>;
  constexpr int dropped = std::numeric_limits<lane_t<V>>::digits - 1 - Table::bits;
  return as<V>((bits(w) + splat<Bits<V>>(Word{1} << (dropped - 1))) & splat<Bits<V>>(~Word{} << dropped));
}
template <class Table, class V>
QOR_INLINE auto binary_offset(const simd::HighWords<V>& node, int first = 0) {
  using L = std::numeric_limits<simd::lane_t<V>>;
  constexpr int fraction_bits = (L::digits - 1) % 32;  // of the high word
  constexpr unsigned start = unsigned(L::max_exponent - 1 + Table::first) << Table::bits;
  return [&node, first](int lane) {
    return ((node(first + lane) >> (fraction_bits - Table::bits)) - start) * unsigned{sizeof(Table::row[0])};
  };
}

// a[From] + a[From + 1] h + ... + a[To] h^(To - From), the columns of the table fetched in pairs, as the sum needs
// them.
template <int From, int To, class Offset>
QOR_INLINE simd::VecD row_polynomial(const double* table, Offset offset, simd::VecD h) {
  static_assert(From % 2 == 0 && To % 2 == 1);
  simd::VecD p;
  for (int c = To - 1; c >= From; c -= 2) {
    const auto [even, odd] = simd::gather_rows<2>(table + c, offset).column;
    p = (c == To - 1 ? odd : p * h + odd) * h + even;
  }
  return p;
}

// The value of a SplitRow, less `less`, which leaves hi exact. The high accuracy adds the product of the leading parts
// of h and slope exactly. The terms that are left are some 2^-6 of the result at most, hence also their rounding errors
// of one half ulp each; and between neighbouring arguments they change by much more than their errors, so that the sum
// is monotonic.
template <Accuracy A, int D, class Offset>
QOR_INLINE simd::VecD split_row_value(const SplitRow<D>* table, Offset offset, simd::VecD h, simd::VecD less) {
  using namespace simd;
  const VecD higher = row_polynomial<4, D + 2>(&table->hi, offset, h) * h;
  const auto [slope_hi, slope_lo] = gather_rows<2>(&table->slope_hi, offset).column;
  const auto [hi, lo] = gather_rows<2>(&table->hi, offset).column;
  if constexpr (A == Accuracy::low) {
    return (hi - less) + (lo + h * (slope_hi + (slope_lo + higher)));
  } else {
    const VecD head = numeric::upper_half(h);
    const auto [sum, error] = numeric::quick_two_sum(hi - less, slope_hi * head);
    return sum + (error + (lo + (slope_hi * (h - head) + h * (slope_lo + higher))));
  }
}

// The rows of four singles in double precision: the halves of the vector. offset(first) gives the offsets of the lanes
// from `first` on.
struct WideHalves {
  simd::VecD low, high;
};
template <int D, class Offset>
QOR_INLINE WideHalves wide_row_value(const PlainRow<D>* table, Offset offset, simd::VecF h) {
  return {row_polynomial<0, D>(table->term, offset(0), simd::widen_low(h)),
          row_polynomial<0, D>(table->term, offset(2), simd::widen_high(h))};
}
// The same in single precision.
template <class Offset>
QOR_INLINE simd::VecF single_row_value(const SingleRow* table, Offset offset, simd::VecF h) {
  const auto [value, slope_less_1, square, cube] = simd::gather_rows4(&table->value, offset).column;
  return value + (h + h * (slope_less_1 + h * (square + h * cube)));
}

// (hi + lo) 2^-K, rounded once, also where that is a subnormal number: hi >= 0, lo small beside it.
template <int K>
QOR_INLINE simd::VecD scaled_down(simd::VecD hi, simd::VecD lo) {
  using namespace simd;
  const VecD least = splat<VecD>(numeric::power_of_two(K - 1022));  // of which the last place is that of subnormals
  const VecD sum = least + hi;
  const VecD rounded = (sum + ((hi - (sum - least)) + lo)) - least;
  return select(lt(hi, least), rounded, hi + lo) * numeric::power_of_two(-K);
}

// In the row of zero the products of leading parts underflow below this. Such arguments, and zeros, once more: slope
// times |x|.
inline constexpr double tiny_argument = 0x1p-900;
template <int D>
QOR_INLINE void retry_tiny(const SplitRow<D>& row, simd::VecD x, simd::VecD* y, simd::VecU64& usual) {
  using namespace simd;
  const VecD ax = abs(x), scaled = ax * 0x1p200, head = numeric::upper_half(scaled);
  const VecU64 tiny = lt(ax, splat<VecD>(tiny_argument));
  const VecD v = scaled_down<200>(head * row.slope_hi, (scaled - head) * row.slope_hi + scaled * row.slope_lo);
  y[0] = select(tiny, flip_sign(v, sign(x)), y[0]);
  usual |= tiny;
}

}  // namespace qor::tfn
