// Error function, and its complement: |x| = c + h, c a multiple of 1/32, and the polynomial in h of row c.
// - erf, double: a polynomial of degree 7 up to 6, beyond which the result is 1. The function rises from 0, and so
// results
//   below 1/32 come from the product of h and the slope alone: both in two parts. _HA 0.512 ulp, _50 1.36.
// - erfc, double: degree 9, relative to erfc, up to 4.5; for negative x up to -6, from where on the result is 2. Beyond
//   4.5 e^(-x^2) times a table of e^(x^2) erfc(x). _HA 0.527 ulp, _50 0.84.
// - singles: in double precision, rows of four and eight terms. 0.505 and 0.5001 ulp. Rows of four singles take erf two
//   thirds of the time, with 1.3 ulp; but where erf is flat their rounded values make it fall from row to row.
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

  QOR_INLINE static void fast(simd::VecD x, const double*, simd::VecD* y, simd::VecU64& usual) {
    using namespace simd;
    const VecD ax = abs(x);
    usual = A == Accuracy::high ? le(splat<VecD>(tiny_argument), ax) : eq(x, x);
    const auto [shifted, h] = split_uniform<ErfTable>(min(ax, splat<VecD>(ErfTable::last)));
    const LowHalves<VecU64> low(bits(shifted));
    y[0] = flip_sign(split_row_value<A>(erf_table.row, uniform_offset<ErfTable>(low), h, VecD{}), sign(x));
  }
  QOR_INLINE static void fast(simd::VecF x, const float*, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    usual = eq(x, x);
    const auto [shifted, h] = split_uniform<ErfWideTable>(min(abs(x), splat<VecF>(float(ErfWideTable::last))));
    const LowHalves<VecU32> low(bits(shifted));
    const auto offset = [&](int first) { return uniform_offset<ErfWideTable>(low, first); };
    const WideHalves wide = wide_row_value(erf_wide_table.row, offset, h);
    y[0] = flip_sign(narrow(wide.low, wide.high), sign(x));
  }
  static void retry(simd::VecD x, simd::VecD* y, simd::VecU64& usual) requires(A == Accuracy::high) {
    retry_tiny(erf_table.row[0], x, y, usual);
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

  static constexpr double rows_end = 4.5;
  // Before results become subnormal.
  static constexpr double normal_end = 26.5;
  static constexpr float single_normal_end = 9.19f;

  // erfc(-|x|) = -(erfc |x| - 2); the hi of erfc_table are multiples of 2^-52, so that hi - 2 is exact.
  QOR_INLINE static void fast(simd::VecD x, const double*, simd::VecD* y, simd::VecU64& usual) {
    using namespace simd;
    usual = lt(x, splat<VecD>(rows_end));
    const VecU64 negative = lt(x, VecD{});
    const VecD two = as<VecD>(negative & bits(splat<VecD>(2)));
    const auto [shifted, h] = split_uniform<ErfcTable>(min(abs(x), splat<VecD>(ErfcTable::last)));
    const LowHalves<VecU64> low(bits(shifted));
    y[0] = flip_sign(split_row_value<A>(erfc_table.row, uniform_offset<ErfcTable>(low), h, two),
                     negative & splat<VecU64>(sign_bit<VecD>));
  }
  QOR_INLINE static void fast(simd::VecF x, const float*, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    usual = lt(x, splat<VecF>(single_normal_end));
    const VecU32 negative = lt(x, VecF{});
    const VecF two = as<VecF>(negative & bits(splat<VecF>(2)));
    const auto [shifted, h] = split_uniform<ErfcWideTable>(min(abs(x), splat<VecF>(float(ErfcWideTable::last))));
    const LowHalves<VecU32> low(bits(shifted));
    const auto offset = [&](int first) { return uniform_offset<ErfcWideTable>(low, first); };
    const WideHalves wide = wide_row_value(erfc_wide_table.row, offset, h);
    y[0] = flip_sign(narrow(wide.low - widen_low(two), wide.high - widen_high(two)),
                     negative & splat<VecU32>(sign_bit<VecF>));
  }

  // erfc(x) 2^scale = hi + lo for x from rows_end to 27.5: e^(-x^2) times a row of erfcx_table. The product of the
  // leading halves is exact, all else is below 2^-6 of it.
  static constexpr int scale = 128;
  QOR_INLINE static numeric::Pair<simd::VecD> beyond_rows(simd::VecD x) {
    using namespace simd;
    const VecD node = binary_node_near<ErfcxTable>(x), h = x - node;
    const HighWords<VecD> high(node);
    const auto offset = binary_offset<ErfcxTable>(high);
    const ErfcxRow* const table = erfcx_table.row;
    const VecD higher = row_polynomial<2, ErfcxRow::degree + 1>(&table->leading, offset, h);
    const auto [leading, first] = gather_rows<2>(&table->leading, offset).column;
    const VecD g = first + higher * h;
    // x^2 in two parts, of which the first is exact.
    const VecD head = numeric::upper_half(x);
    ExpReduced e = exp_reduce(-(head * head));
    e.r = e.r - (x - head) * (x + head);
    e.shifted = e.shifted + double{exp_rows * scale};
    const auto [value, rest] = exp_parts<Accuracy::high>(e);
    const VecD value_head = numeric::upper_half(value);
    return {value_head * leading, (value - value_head) * leading + (value * leading) * (rest + (g + rest * g))};
  }
  static void retry(simd::VecD x, simd::VecD* y, simd::VecU64& usual) {
    using namespace simd;
    const VecD start = splat<VecD>(rows_end), end = splat<VecD>(normal_end);
    const VecU64 beyond = le(start, x) & lt(x, end);
    const auto [hi, lo] = beyond_rows(min(max(x, start), end));
    y[0] = select(beyond, (hi + lo) * numeric::power_of_two(-scale), y[0]);
    usual |= beyond;
  }
  static int element(double x, double* y) {
    using L = std::numeric_limits<double>;
    if (!(x <= L::max())) {
      y[0] = x > 0 ? 0 : x + x;  // of infinity, of a NaN
      return TFN_STATUS_OK;
    }
    const auto [hi, lo] = beyond_rows(simd::splat<simd::VecD>(x < 27.5 ? x : 27.5));
    y[0] = scaled_down<scale>(hi, lo)[0];
    return y[0] < L::min() ? TFN_STATUS_UNDERFLOW : TFN_STATUS_OK;
  }
  static int element(float x, float* y) {
    using L = std::numeric_limits<float>;
    double wide;
    element(static_cast<double>(x), &wide);
    y[0] = static_cast<float>(wide);
    return x <= L::max() && y[0] < L::min() ? TFN_STATUS_UNDERFLOW : TFN_STATUS_OK;
  }
};

}  // namespace qor::tfn
