// Error function and its complement.
#pragma once

#include <limits>

#include "qor/tfn.h"
#include "simd/vec.h"
#include "tfn/erf_rows.h"
#include "tfn/exp.h"

namespace qor::tfn {

template <Accuracy A>
struct Erf {
  static constexpr int results = 1;
  static constexpr double filler = 1;
  template <class T>
  static constexpr double bound = default_bound<T>(A);

  // Below this the products of the leading parts underflow.
  static constexpr double tiny = 0x1p-900;

  QOR_INLINE static void fast(simd::VecD x, const double*, simd::VecD* y, simd::VecU64& usual) {
    using namespace simd;
    const VecD ax = abs(x);
    usual = A == Accuracy::low ? eq(x, x) : le(splat<VecD>(tiny), ax);
    const auto [shifted, h] = split_uniform<ErfTable>(min(ax, splat<VecD>(ErfTable::last)));
    const LowHalves<VecU64> low(bits(shifted));
    const VecD v =
        split_row_value<A>(erf_table.row, uniform_offset<ErfTable, VecD>(low, 0), h, [](VecD hi) { return hi; });
    y[0] = flip_sign(v, sign(x));
  }
  QOR_INLINE static void fast(simd::VecF x, const float*, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    const VecF ax = abs(x);
    usual = eq(x, x);
    const auto [shifted, h] = split_uniform<ErfWideTable>(min(ax, splat<VecF>(float(ErfWideTable::last))));
    const LowHalves<VecU32> low(bits(shifted));
    VecF v;
    if constexpr (A == Accuracy::high) {
      const auto offset = [&](int first) {
        return [&low, first](int lane) { return low(first + lane) * sizeof(ErfWideTable::row[0]); };
      };
      v = wide_row_value(erf_wide_table.row, offset, h, [](VecD value) { return value; });
    } else {
      v = single_row_value(
          erf_single_table.row, [&](int lane) { return low(lane) * sizeof(ErfSingleTable::row[0]); }, h);
    }
    y[0] = flip_sign(v, sign(x));
  }

  // Tiny arguments and zeros.
  static void retry(simd::VecD x, simd::VecD* y, simd::VecU64& usual) requires(A == Accuracy::high) {
    using namespace simd;
    const VecD ax = abs(x);
    const VecU64 small = lt(ax, splat<VecD>(tiny));
    const auto& row = erf_table.row[0];
    const VecD scaled = ax * 0x1p200, head = leading_half(scaled);
    const VecD v = scaled_down<200>(head * row.slope_hi, (scaled - head) * row.slope_hi + scaled * row.slope_lo);
    y[0] = select(small, flip_sign(v, sign(x)), y[0]);
    usual |= small;
  }
  template <class T>
  static int element(T x, T* y) {
    y[0] = x + x;  // a NaN
    return TFN_STATUS_OK;
  }
};

template <Accuracy A>
struct Erfc {
  static constexpr int results = 1;
  static constexpr double filler = 1;
  template <class T>
  static constexpr double bound = default_bound<T>(A);

  // From here on singles are subnormal; from here on doubles are.
  static constexpr float single_end = 9.19f;
  static constexpr double rows_end = 4.5, normal_end = 26.5;

  // erfc(-|x|) = 2 - erfc |x| = -((erfc |x| - 2)): the subtraction is exact, erfc_table[].hi being multiples of 2^-52.
  QOR_INLINE static void fast(simd::VecD x, const double*, simd::VecD* y, simd::VecU64& usual) {
    using namespace simd;
    usual = lt(x, splat<VecD>(rows_end));
    const VecD two = as<VecD>(lt(x, VecD{}) & bits(splat<VecD>(2)));
    const auto [shifted, h] = split_uniform<ErfcTable>(min(abs(x), splat<VecD>(ErfcTable::last)));
    const LowHalves<VecU64> low(bits(shifted));
    const VecD v = split_row_value<A>(erfc_table.row, uniform_offset<ErfcTable, VecD>(low, 0), h,
                                      [&](VecD hi) { return hi - two; });
    y[0] = flip_sign(v, sign(x));
  }
  QOR_INLINE static void fast(simd::VecF x, const float*, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    usual = lt(x, splat<VecF>(single_end));
    const auto [shifted, h] = split_uniform<ErfcWideTable>(min(abs(x), splat<VecF>(float(ErfcWideTable::last))));
    const LowHalves<VecU32> low(bits(shifted));
    const VecF two = as<VecF>(lt(x, VecF{}) & bits(splat<VecF>(2)));
    const auto offset = [&](int first) {
      return [&low, first](int lane) { return low(first + lane) * sizeof(ErfcWideTable::row[0]); };
    };
    int part = 0;
    const VecF v = wide_row_value(erfc_wide_table.row, offset, h,
                                  [&](VecD value) { return value - (part++ == 0 ? widen_low(two) : widen_high(two)); });
    y[0] = flip_sign(v, sign(x));
  }

  // e^(-x^2) times a row of erfcx_table, 2^scale times as large, for x from rows_end to 27.3.
  static constexpr int scale = 128;
  QOR_INLINE static numeric::Pair<simd::VecD> large(simd::VecD x) {
    using namespace simd;
    const VecD node = binary_node_near<ErfcxTable>(x), h = x - node;
    const HighWords<VecD> high(node);
    const auto offset = binary_offset<ErfcxTable, VecD>(high, 0);
    const VecD more = row_polynomial<2, ErfcxRow::degree + 1>(&erfcx_table.row[0].leading, offset, h) * h;
    const auto [leading, first] = gather_rows<2>(&erfcx_table.row[0].leading, offset).column;
    const VecD g = first + more;
    // x^2 in two parts: the square of the leading half is exact.
    const VecD head = leading_half(x);
    ExpReduced e = exp_reduce(-(head * head));
    e.r = e.r - (x - head) * (x + head);
    e.shifted = e.shifted + double{exp_rows * scale};
    const auto [value, rest] = exp_parts<Accuracy::high>(e);
    const VecD value_head = leading_half(value);
    return {value_head * leading, (value - value_head) * leading + (value * leading) * (rest + (g + rest * g))};
  }
  static void retry(simd::VecD x, simd::VecD* y, simd::VecU64& usual) {
    using namespace simd;
    const VecU64 beyond = le(splat<VecD>(rows_end), x) & lt(x, splat<VecD>(normal_end));
    const auto [hi, lo] = large(min(max(x, splat<VecD>(rows_end)), splat<VecD>(normal_end)));
    y[0] = select(beyond, (hi + lo) * numeric::power_of_two(-scale), y[0]);
    usual |= beyond;
  }
  static int element(double x, double* y) {
    using namespace simd;
    if (!(x <= std::numeric_limits<double>::max())) {
      y[0] = x != x ? x + x : 0;
      return TFN_STATUS_OK;
    }
    const auto [hi, lo] = large(splat<VecD>(x < 27.5 ? x : 27.5));
    y[0] = scaled_down<scale>(hi, lo)[0];
    return y[0] < std::numeric_limits<double>::min() ? TFN_STATUS_UNDERFLOW : TFN_STATUS_OK;
  }
  static int element(float x, float* y) {
    double wide;
    element(static_cast<double>(x), &wide);
    y[0] = static_cast<float>(wide);
    return x <= std::numeric_limits<float>::max() && y[0] < std::numeric_limits<float>::min() ? TFN_STATUS_UNDERFLOW
                                                                                              : TFN_STATUS_OK;
  }
};

}  // namespace qor::tfn
