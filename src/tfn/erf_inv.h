// Inverse error function.
#pragma once

#include <limits>

#include "qor/tfn.h"
#include "simd/vec.h"
#include "tfn/erf_rows.h"

namespace qor::tfn {

template <Accuracy A>
struct ErfInv {
  static constexpr int results = 1;
  static constexpr double filler = 0.5;
  template <class T>
  static constexpr double bound = default_bound<T>(A);
  static constexpr double tiny = 0x1p-900;

  template <class V>
  struct Split {
    V node, h;
  };
  // w = 1 - |x| picks the row; h = |x| - (1 - node) is exact, also where w isn't.
  template <class Table, class V>
  QOR_INLINE static Split<V> split(V ax) {
    using namespace simd;
    constexpr lane_t<V> least = std::numeric_limits<lane_t<V>>::epsilon() / 2;
    const V w = max(1 - ax, splat<V>(least));
    const V node = binary_node_near<Table>(w);
    return {node, ax - (1 - node)};
  }

  QOR_INLINE static void fast(simd::VecD x, const double*, simd::VecD* y, simd::VecU64& usual) {
    using namespace simd;
    const VecD ax = abs(x);
    usual = lt(ax, splat<VecD>(1));
    if constexpr (A == Accuracy::high) usual &= le(splat<VecD>(tiny), ax);
    const auto [node, h] = split<ErfInvTable>(ax);
    const HighWords<VecD> high(node);
    const VecD v =
        split_row_value<A>(erf_inv_table.row, binary_offset<ErfInvTable, VecD>(high, 0), h, [](VecD hi) { return hi; });
    y[0] = flip_sign(v, sign(x));
  }
  QOR_INLINE static void fast(simd::VecF x, const float*, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    const VecF ax = abs(x);
    usual = lt(ax, splat<VecF>(1));
    VecF v;
    if constexpr (A == Accuracy::high) {
      const auto [node, h] = split<ErfInvWideTable>(ax);
      const HighWords<VecF> high(node);
      v = wide_row_value(
          erf_inv_wide_table.row, [&](int first) { return binary_offset<ErfInvWideTable, VecF>(high, first); }, h,
          [](VecD value) { return value; });
    } else {
      const auto [node, h] = split<ErfInvSingleTable>(ax);
      const HighWords<VecF> high(node);
      v = single_row_value(erf_inv_single_table.row, binary_offset<ErfInvSingleTable, VecF>(high, 0), h);
    }
    y[0] = flip_sign(v, sign(x));
  }

  static void retry(simd::VecD x, simd::VecD* y, simd::VecU64& usual) requires(A == Accuracy::high) {
    using namespace simd;
    const VecD ax = abs(x);
    const VecU64 small = lt(ax, splat<VecD>(tiny));
    const auto& row = erf_inv_table.row[ErfInvTable::rows - 1];
    const VecD scaled = ax * 0x1p200, head = leading_half(scaled);
    const VecD v = scaled_down<200>(head * row.slope_hi, (scaled - head) * row.slope_hi + scaled * row.slope_lo);
    y[0] = select(small, flip_sign(v, sign(x)), y[0]);
    usual |= small;
  }
  template <class T>
  static int element(T x, T* y) {
    const T ax = x < 0 ? -x : x;
    if (ax == 1) {
      y[0] = x * std::numeric_limits<T>::infinity();
      return TFN_STATUS_SING;
    }
    y[0] = x == x ? std::numeric_limits<T>::quiet_NaN() : x + x;
    return x == x ? TFN_STATUS_ERRDOM : TFN_STATUS_OK;
  }
};

}  // namespace qor::tfn
