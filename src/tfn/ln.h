// Natural logarithm. x = 2^k m, m in [1, 2); j/256 is m - 1 rounded to 8 bits, c about 1/(1 + j/256), u = m c - 1:
//   ln x = k ln 2 - ln c + ln(1 + u), |u| about 2^-9,
// after P. T. P. Tang, Table-driven implementation of the logarithm function, ACM TOMS 16 (1990). Rows 0 and 256 have
// c = 1 and 1/2 exactly, and so results close to ln 1 come from u alone.
//   double _50: c rounded; u from m - (1 + j/256), which is exact, times c. 1.1 ulp at the worst, next to 1.
//   double _HA: c has 9 bits, so that u is exact; the sum is carried in two parts: 0.5 ulp and a rounding of 2^-9 of one.
//   single _HA: in double precision.  single _21: no table (eight rows by name cost more than five more terms).
#pragma once

#include <limits>

#include "numeric/pair.h"

#include "numeric/x87.h"
#include "qor/tfn.h"
#include "simd/vec.h"
#include "tfn/accuracy.h"
#include "tfn/ln_table.h"

namespace qor::tfn {

template <Accuracy A>
struct Ln {
  static constexpr int results = 1;
  static constexpr double filler = 1;

  // Positive, normal and finite; a NaN fails both comparisons.
  template <class V>
  QOR_INLINE static simd::Bits<V> outside_normal_range(V x) {
    using L = std::numeric_limits<simd::lane_t<V>>;
    return ~(simd::le(simd::splat<V>(L::min()), x) & simd::le(x, simd::splat<V>(L::max())));
  }

  QOR_INLINE static void fast(simd::VecD x, simd::VecD* y, simd::VecU64& rare) {
    using namespace simd;
    rare = outside_normal_range(x);
    y[0] = core(x, splat<VecD>(0x1p52 + 1023));
  }

  // ln x for normal positive x. The exponent field, read as an integer above 2^52, less `bias` is k.
  QOR_INLINE static simd::VecD core(simd::VecD x, simd::VecD bias) {
    using namespace simd;
    const VecU64 b = bits(x);
    const VecD k = as<VecD>((b >> 52) | splat<VecU64>(0x4330000000000000)) - bias;
    const VecD m = as<VecD>((b & splat<VecU64>(0x000FFFFFFFFFFFFF)) | splat<VecU64>(0x3FF0000000000000));
    // The top nine fraction bits, rounded to eight, times the 32 bytes of a row.
    const VecU64 row = ((((b >> 43) & splat<VecU64>(0x1FF)) + splat<VecU64>(1)) << 4) & splat<VecU64>(0x3FE0);
    if constexpr (A == Accuracy::low) {
      const auto [hi, lo, c] = gather_rows<3>(&ln_table[0].hi, row).column;
      // m rounded to 8 fraction bits; ties go up, as in the row's number.
      const VecD m1 = (as<VecD>(bits(m) | splat<VecU64>(0x000003FF000003FF)) + splat<VecD>(0x1p44)) - splat<VecD>(0x1p44);
      const VecD u = (m - m1) * c;
      // ln(1 + u) - u, minimax on |u| <= 2^-9, error below 2^-56.
      const VecD p =
          horner(u, 0.20000077300509184, -0.25000079467558006, 0.33333333333238757, -0.4999999999992423) * u * u;
      return ((p + (k * ln2_lo + lo)) + u) + (k * ln2_hi + hi);
    } else {
      const auto [hi, lo, c] = gather_rows<3>(&ln_exact_table[0].hi, row).column;
      // The halves of m have 26 and 27 bits and c has 9: both products, and their sum less one, are exact.
      const VecD head = as<VecD>(bits(m) & splat<VecU64>(0xFFFFFFFFF8000000));
      const VecD u = (head * c - 1.0) + (m - head) * c;
      // Taylor: the first dropped term, u^8/8 at |u| <= 2^-8, is below 2^-66.
      const VecD p = horner(u, 1.0 / 7, -1.0 / 6, 1.0 / 5, -1.0 / 4, 1.0 / 3, -1.0 / 2) * u * u;
      const auto [s, e] = numeric::quick_two_sum(k * ln2_hi + hi, u);
      return s + (e + ((k * ln2_lo + lo) + p));
    }
  }

  QOR_INLINE static void fast(simd::VecF x, simd::VecF* y, simd::VecU32& rare) {
    using namespace simd;
    rare = outside_normal_range(x);
    if constexpr (A == Accuracy::high) {
      const VecU32 b = bits(x);
      const VecU32 k = (b >> 23) - splat<VecU32>(127);
      const VecF m = as<VecF>((b & splat<VecU32>(0x007FFFFF)) | splat<VecU32>(0x3F800000));
      // The top eight fraction bits, rounded, times the 16 bytes of a row.
      const VecU32 row = (((b & splat<VecU32>(0x007FFFFF)) + splat<VecU32>(0x4000)) >> 11) & splat<VecU32>(0x1FF0);
      const auto half = [](VecD w, VecD e, DoubleColumns<2> t) {
        const VecD u = w * t.column[0] - 1.0;
        // ln(1 + u) - u, Taylor: the first dropped term, u^5/5 at |u| <= 2^-9, is 2^-38 of u.
        const VecD p = horner(u, -1.0 / 4, 1.0 / 3, -1.0 / 2) * u * u;
        return (e * ln2 + t.column[1]) + (u + p);
      };
      y[0] = narrow(half(widen_low(m), to_double_low(k), gather_rows_low<2>(&ln_short_table[0].c, row)),
                    half(widen_high(m), to_double_high(k), gather_rows_high<2>(&ln_short_table[0].c, row)));
    } else {
      // m in [sqrt(1/2), sqrt 2), r = m - 1: ln(1 + r) = r - r^2/2 + r^3 p(r).
      const VecU32 shifted = bits(x) - splat<VecU32>(0x3F3504F3);
      const VecF k = to_float(as<VecU32>(as<Ints<VecF>>(shifted) >> 23));
      const VecF m = as<VecF>((shifted & splat<VecU32>(0x007FFFFF)) + splat<VecU32>(0x3F3504F3));
      const VecF r = m - 1.0f, r2 = r * r;
      const VecF p = horner(r, ln_low_fit[0], ln_low_fit[1], ln_low_fit[2], ln_low_fit[3], ln_low_fit[4], ln_low_fit[5],
                            ln_low_fit[6]);
      // k times the first part of ln 2 is exact: 8 + 15 bits.
      y[0] = k * 0x1.62e4p-1f + (r + (k * 0x1.7f7d1cp-20f + r2 * (r * p - 0.5f)));
    }
  }

  // p of the low single accuracy, leading coefficient first: minimax for the relative error of ln(1 + r) on
  // [sqrt(1/2) - 1, sqrt 2 - 1], by tools/fit/ln_low.sollya; that error is 3.5e-8.
  static constexpr float ln_low_fit[] = {0x1.645eb4p-4f, -0x1.2432bap-3f, 0x1.317456p-3f, -0x1.53824ap-3f,
                                         0x1.98d7f2p-3f, -0x1.000382p-2f, 0x1.5556d8p-2f};

  static int element(double x, double* y) {
    using L = std::numeric_limits<double>;
    if (x > 0 && x < L::min() && A == Accuracy::high) {
      y[0] = core(simd::splat<simd::VecD>(x * 0x1p54), simd::splat<simd::VecD>(0x1p52 + 1023 + 54))[0];
      return TFN_STATUS_OK;
    }
    // Zeros, negatives, infinities and NaNs, and the subnormals of the low accuracy, through the extended precision.
    y[0] = numeric::x87_ln(x);
    return x == 0 ? TFN_STATUS_SING : x < 0 ? TFN_STATUS_ERRDOM : TFN_STATUS_OK;
  }
  static int element(float x, float* y) {
    double wide;
    const int status = Ln<Accuracy::high>::wide_element(x, wide);
    y[0] = static_cast<float>(wide);
    return status;
  }
  // Singles that are subnormal are normal doubles.
  static int wide_element(double x, double& y) {
    if (x > 0 && x <= std::numeric_limits<double>::max()) {
      y = core(simd::splat<simd::VecD>(x), simd::splat<simd::VecD>(0x1p52 + 1023))[0];
      return TFN_STATUS_OK;
    }
    return element(x, &y);
  }
};

}  // namespace qor::tfn
