// Square root. All members but double _50 are the processor's instruction, correctly rounded. Double _50 refines the
// processor's single-precision estimate of 1/sqrt by one polynomial step: about 1 ulp, no division and no square root.
#pragma once

#include <bit>
#include <cstdint>
#include <limits>

#include "qor/tfn.h"
#include "simd/vec.h"
#include "tfn/accuracy.h"

namespace qor::tfn {

// sqrt(x) in two factors for x = s^2 x', x' normal: the result is (reciprocal_root(x') x) s.
// The estimate works on [1, 4): the fraction's leading bits and the exponent's parity; the exponent's half is put back
// into the high word with integer arithmetic.
QOR_INLINE simd::VecD reciprocal_root(simd::VecD scaled) {
  using namespace simd;
  const VecU64 b = bits(scaled);
  const VecU32 reduced =
      as<VecU32>((((b >> 29) & splat<VecU64>(0xFFFFFF)) ^ splat<VecU64>(0x800000)) + splat<VecU64>(0x3F800000));
  const VecU32 estimate = as<VecU32>(rsqrt_estimate(as<VecF>(reduced)));
  // High words, in the low half of each 64-bit lane.
  const VecU64 high = b >> 32;
  const VecU64 half_exponent = ((high - splat<VecU64>(0x100000)) & splat<VecU64>(0xFFE00000)) >> 1;
  const VecU64 word = ((as<VecU64>(estimate) & splat<VecU64>(0xFFFFFFFF)) >> 3) + splat<VecU64>(0x57F00000) - half_exponent;
  const VecD y = as<VecD>(word << 32);
  const VecD e = scaled * (y * y) - 1.0;
  // (1 + e)^(-1/2) - 1: 35/128, -5/16, 3/8, -1/2.
  return y + y * (horner(e, 0.2734375, -0.3125, 0.375, -0.5) * e);
}

template <Accuracy A>
struct Sqrt {
  static constexpr int results = 1;
  static constexpr double filler = 1;

  QOR_INLINE static void fast(simd::VecD x, simd::VecD* y, simd::VecU64& rare) {
    using namespace simd;
    if constexpr (A == Accuracy::low) {
      using L = std::numeric_limits<double>;
      rare = ~(le(splat<VecD>(L::min()), x) & le(x, splat<VecD>(L::max())));
      y[0] = reciprocal_root(x) * x;
    } else {
      rare = lt(x, VecD{});
      y[0] = sqrt(x);
    }
  }
  QOR_INLINE static void fast(simd::VecF x, simd::VecF* y, simd::VecU32& rare) {
    rare = simd::lt(x, simd::VecF{});
    y[0] = simd::sqrt(x);
  }

  static int element(double x, double* y) {
    if (x < 0) {
      y[0] = std::bit_cast<double>(0xFFF8000000000000);
      return TFN_STATUS_ERRDOM;
    }
    if (x > 0 && x <= std::numeric_limits<double>::max()) {  // subnormal
      y[0] = reciprocal_root(simd::splat<simd::VecD>(x * 0x1p54))[0] * x * 0x1p27;
    } else {
      y[0] = x * 1.0;  // zeros and +infinity are their own roots, a NaN becomes quiet
    }
    return TFN_STATUS_OK;
  }
  static int element(float, float* y) {  // negative
    y[0] = std::bit_cast<float>(0xFFC00000);
    return TFN_STATUS_ERRDOM;
  }
};

}  // namespace qor::tfn
