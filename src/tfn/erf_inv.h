// Inverse error function. With w = 1 - |x|, the node of three leading fraction bits next to w picks a row, and |x| = c
// + h, c = 1 - node: a polynomial in h. Rows become narrower towards w = 0 as w itself does, and no logarithm is
// needed; the rows next to x = 0 take that function's place at w = 1.
// - double: degree 11, results, h and slope in two parts. _HA 0.504 ulp, _50 1.12.
// - single _HA: in double precision, rows of six terms. 0.503 ulp.
// - single _21: nodes of four bits, rows of four terms, in single precision: 1.48 ulp.
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

  template <class V>
  struct Split {
    V node, h;
  };
  // h is exact: where 1 - |x| is not, |x| is below 1/2, and c = 0 or half of |x| at least and twice |x| at most.
  template <class Table, class V>
  QOR_INLINE static Split<V> split(V ax) {
    using namespace simd;
    const V w = max(1 - ax, splat<V>(std::numeric_limits<lane_t<V>>::epsilon() / 2));
    const V node = binary_node_near<Table>(w);
    return {node, ax - (1 - node)};
  }

  QOR_INLINE static void fast(simd::VecD x, const double*, simd::VecD* y, simd::VecU64& usual) {
    using namespace simd;
    const VecD ax = abs(x);
    usual = lt(ax, splat<VecD>(1));
    if constexpr (A == Accuracy::high) usual &= le(splat<VecD>(tiny_argument), ax);
    const auto [node, h] = split<ErfInvTable>(ax);
    const HighWords<VecD> high(node);
    y[0] = flip_sign(split_row_value<A>(erf_inv_table.row, binary_offset<ErfInvTable>(high), h, VecD{}), sign(x));
  }
  QOR_INLINE static void fast(simd::VecF x, const float*, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    const VecF ax = abs(x);
    usual = lt(ax, splat<VecF>(1));
    VecF v;
    if constexpr (A == Accuracy::high) {
      const auto [node, h] = split<ErfInvWideTable>(ax);
      const HighWords<VecF> high(node);
      const auto offset = [&](int first) { return binary_offset<ErfInvWideTable>(high, first); };
      const WideHalves wide = wide_row_value(erf_inv_wide_table.row, offset, h);
      v = narrow(wide.low, wide.high);
    } else {
      const auto [node, h] = split<ErfInvSingleTable>(ax);
      const HighWords<VecF> high(node);
      v = single_row_value(erf_inv_single_table.row, binary_offset<ErfInvSingleTable>(high), h);
    }
    y[0] = flip_sign(v, sign(x));
  }
  static void retry(simd::VecD x, simd::VecD* y, simd::VecU64& usual) requires(A == Accuracy::high) {
    retry_tiny(erf_inv_table.row[ErfInvTable::rows - 1], x, y, usual);
  }
  template <class T>
  static int element(T x, T* y) {
    using L = std::numeric_limits<T>;
    if (x == 1 || x == -1) {
      y[0] = x * L::infinity();
      return TFN_STATUS_SING;
    }
    if (x != x) {
      y[0] = x + x;
      return TFN_STATUS_OK;
    }
    y[0] = L::quiet_NaN();
    return TFN_STATUS_ERRDOM;
  }
};

}  // namespace qor::tfn
