// Exponential function. x = (k + j/256) ln 2 + r, |r| at most half a row, ln 2 / 512:
//   e^x = 2^k 2^(j/256) e^r,
// after P. T. P. Tang, Table-driven implementation of the exponential function, ACM TOMS 15 (1989).
// - double _HA: table values in two parts, so that the last sum makes the only error that counts: 0.503 ulp.
// - double _50: without the second parts: 1.4 ulp.
// - single _HA: the same in single precision: 0.505 ulp. In double precision it would take 1.3 times as long.
// - single _21: a longer polynomial and no table: 1.0 ulp.
#pragma once

#include <bit>
#include <cmath>
#include <limits>

#include "numeric/pair.h"
#include "qor/tfn.h"
#include "simd/vec.h"
#include "tfn/accuracy.h"
#include "tfn/exp_table.h"

namespace qor::tfn {

// k 256 + j + 1.5 * 2^52: the low bits hold k and j.
inline constexpr double exp_shift = 0x1.8p52;

// x = n ln 2 / 256 + r for |x| < 2^10, n = shifted - exp_shift. The error of r, 2^-62 of which its rounding makes most,
// is a relative one of the result.
struct ExpReduced {
  simd::VecD shifted, r;
};
QOR_INLINE ExpReduced exp_reduce(simd::VecD x) {
  using namespace simd;
  const VecD shifted = x * exp_per_step + exp_shift, n = shifted - exp_shift;
  return {shifted, (x - n * exp_step_hi) - n * exp_step_lo};
}
// The same for hi + lo.
QOR_INLINE ExpReduced exp_reduce(simd::VecD hi, simd::VecD lo) {
  using namespace simd;
  const VecD shifted = (hi + lo) * exp_per_step + exp_shift, n = shifted - exp_shift;
  return {shifted, (hi - n * exp_step_hi) + (lo - n * exp_step_lo)};
}

// 2^k 2^(j/256), k above -1023, and the row's tail.
QOR_INLINE simd::VecD exp_scale(const simd::LowHalves<simd::VecU64>& row, simd::VecD shifted) {
  using namespace simd;
  const VecD t = gather_rows<1>(exp_tables.value.data(), [&](int l) { return row(l) % exp_rows * 8; }).column[0];
  return as<VecD>(bits(t) + (bits(shifted) << 44));
}
QOR_INLINE simd::VecD exp_tail(const simd::LowHalves<simd::VecU64>& row) {
  return simd::gather_rows<1>(exp_tables.tail.data(), [&](int l) { return row(l) % exp_rows * 8; }).column[0];
}

// e^x = value + value rest.
struct ExpParts {
  simd::VecD value, rest;
};
template <Accuracy A>
QOR_INLINE ExpParts exp_parts(ExpReduced x) {
  using namespace simd;
  const LowHalves<VecU64> row(bits(x.shifted));
  const VecD scale = exp_scale(row, x.shifted);
  const VecD r = x.r, r2 = r * r;
  if constexpr (A == Accuracy::high) {
    // e^r - 1 by its series; the first term left out is 2^-66.
    const VecD p = r2 * horner(r, 1.0 / 120, 1.0 / 24, 1.0 / 6, 0.5);
    return {scale, (exp_tail(row) + p) + r};
  } else {
    return {scale, r + r2 * horner(r, 1.0 / 24, 1.0 / 6, 0.5)};  // 2^-54.5
  }
}

// Lane 0 of x with a power of two that the exponent field may not hold: the rest of the work is done 1000 binary places
// away. A subnormal result is rounded once, by a sum with a number whose last place is that of the subnormals.
template <Accuracy A>
QOR_INLINE int exp_far(ExpReduced x, double* y) {
  constexpr double least = std::numeric_limits<double>::min() * 0x1p1000;
  const bool small = x.shifted[0] < exp_shift;
  x.shifted += small ? 1000.0 * exp_rows : -1000.0 * exp_rows;
  const ExpParts parts = exp_parts<A>(x);
  const auto [hi, lo] = numeric::quick_two_sum(parts.value[0], parts.value[0] * parts.rest[0]);
  if (!small) {
    y[0] = hi * 0x1p1000;
    return y[0] <= std::numeric_limits<double>::max() ? TFN_STATUS_OK : TFN_STATUS_OVERFLOW;
  }
  const auto [sum, error] = numeric::quick_two_sum(least, hi);
  const double rounded = hi < least ? (sum + (error + lo)) - least : hi;
  y[0] = rounded * 0x1p-1000;
  return rounded < least ? TFN_STATUS_UNDERFLOW : TFN_STATUS_OK;
}

// A single from the double that was made of single arguments, and what to report.
inline int narrow_result(int status, double wide, float* y) {
  using L = std::numeric_limits<float>;
  y[0] = static_cast<float>(wide);
  if (status != TFN_STATUS_OK || wide == 0 || !(std::fabs(wide) <= std::numeric_limits<double>::max())) return status;
  return std::fabs(y[0]) > L::max()   ? TFN_STATUS_OVERFLOW
         : std::fabs(y[0]) < L::min() ? TFN_STATUS_UNDERFLOW
                                      : TFN_STATUS_OK;
}

template <Accuracy A>
struct Exp {
  static constexpr int results = 1;
  static constexpr double filler = 1;
  template <class T>
  static constexpr double bound = default_bound<T>(A);

  // First stage: the reduction. The longer kernels gain 3 to 5 % by having two stages, single _21 would lose as much.
  struct Reduced {
    simd::VecD x;
    ExpReduced at;
  };
  QOR_INLINE static Reduced begin(simd::VecD x) { return {x, exp_reduce(x)}; }
  QOR_INLINE static void finish(const Reduced& s, simd::VecD* y, simd::VecU64& usual) {
    usual = simd::lt(simd::abs(s.x), simd::splat<simd::VecD>(703));  // below, value * rest would lose bits
    const auto [value, rest] = exp_parts<A>(s.at);
    y[0] = value + value * rest;
  }
  QOR_INLINE static void fast(simd::VecD x, const double*, simd::VecD* y, simd::VecU64& usual) {
    finish(begin(x), y, usual);
  }

  // In three parts of a row's width, of which two give exact products, the error of r is 2^-34 of the result.
  struct ReducedSingle {
    simd::VecF shifted, r;
  };
  QOR_INLINE static ReducedSingle begin(simd::VecF x) requires(A == Accuracy::high) {
    using namespace simd;
    const VecF shifted = x * float(exp_per_step) + 0x1.8p23f, n = shifted - 0x1.8p23f;
    return {shifted, ((x - n * exp_single_step[0]) - n * exp_single_step[1]) - n * exp_single_step[2]};
  }
  // On |r| <= h, r^3/6 is h^2 r/8 within h^3/24: together with r it is (1 + 2^-22) r, within 2^-33 of the result.
  QOR_INLINE static void finish(const ReducedSingle& s, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    // n from -118 * 256, below which scale * (...) would lose bits, to 128 * 256 - 2, as integers that end at the
    // largest.
    constexpr std::uint32_t zero = 0x4B400000, most = zero + 128 * exp_rows - 2, least = zero - 118 * exp_rows;
    using Words = Ints<VecF>;
    usual =
        as<VecU32>(as<Words>(bits(s.shifted) + (0x7FFFFFFF - most)) > splat<Words>(0x7FFFFFFF - (most - least) - 1));
    const LowHalves<VecU32> row(bits(s.shifted));
    const auto offset = [&](int l) { return row(l) % exp_rows * sizeof(ExpSingleRow); };
    const auto [value, tail] = gather_pairs(&exp_single_table[0].value, offset).column;
    const VecF scale = as<VecF>(bits(value) + (bits(s.shifted) << 15));
    y[0] = scale + scale * (tail + (s.r * 0.5f + 0x1.000004p0f) * s.r);
  }
  QOR_INLINE static void fast(simd::VecF x, const float*, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    if constexpr (A == Accuracy::high) {
      finish(begin(x), y, usual);
    } else {
      // x = k ln 2 + r; k times the first part of ln 2 is exact. e^r = 1 + r + r^2 p(r).
      usual = lt(abs(x), splat<VecF>(87));
      const VecF shifted = x * 0x1.715476p0f + 0x1.8p23f, k = shifted - 0x1.8p23f;
      const VecF r = (x - k * 0x1.62e4p-1f) - k * 0x1.7f7d1cp-20f, r2 = r * r;
      const VecF p = (r * low_fit[2] + low_fit[3]) + (r * low_fit[0] + low_fit[1]) * r2;
      const VecF m = ((p * r + low_fit[4]) * r2 + r) + 1.0f;
      y[0] = as<VecF>(bits(m) + (bits(shifted) << 23));
    }
  }
  // p: minimax for the relative error on |r| <= ln 2 / 2, by tools/fit/exp_low.sollya; that error is 3.8e-9.
  static constexpr float low_fit[] = {0x1.6a243p-10f, 0x1.1239e2p-7f, 0x1.5558f2p-5f, 0x1.555492p-3f, 0x1.fffffcp-2f};

  static int element(double x, double* y) {
    if (std::fabs(x) < 746) return exp_far<A>(exp_reduce(simd::splat<simd::VecD>(x)), y);
    const bool finite = std::fabs(x) <= std::numeric_limits<double>::max();
    y[0] = x < 0 ? 0 : finite ? std::numeric_limits<double>::infinity() : x + x;
    return !finite ? TFN_STATUS_OK : x < 0 ? TFN_STATUS_UNDERFLOW : TFN_STATUS_OVERFLOW;
  }
  static int element(float x, float* y) {
    double wide;
    const int status = Exp<Accuracy::high>::element(static_cast<double>(x), &wide);
    return narrow_result(status, wide, y);
  }
};

}  // namespace qor::tfn
