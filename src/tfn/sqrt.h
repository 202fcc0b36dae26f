// Square root. All members but double _50 are the processor's instruction, correctly rounded. Double _50 refines the
// processor's single-precision estimate of 1/sqrt by one polynomial step: about 1 ulp, no division and no square root.
#pragma once

#include <bit>
#include <cstdint>
#include <limits>

#include "numeric/float_parts.h"
#include "qor/tfn.h"
#include "simd/vec.h"
#include "tfn/accuracy.h"

namespace qor::tfn {

using numeric::normal_range;

// sqrt(x) in two factors for x = s^2 x', x' normal: the result is (reciprocal_root(x') x) s.
// The estimate works on [1, 4): the fraction's leading bits and the exponent's parity, in the low words; the exponent's
// half is put back with integer arithmetic in the high words.
QOR_INLINE simd::VecD reciprocal_root_estimate(simd::VecD scaled) {
  using namespace simd;
  const auto low = [](std::uint32_t w) { return as<VecU32>(splat<VecU64>(w)); };
  const auto high = [](std::uint32_t w) { return as<VecU32>(splat<VecU64>(std::uint64_t{w} << 32)); };
  const VecU64 b = bits(scaled);
  const VecU32 reduced = ((as<VecU32>(b >> 29) & low(0xFFFFFF)) ^ low(0x800000)) + low(0x3F800000);
  const VecU32 estimate = as<VecU32>(rsqrt_estimate(as<VecF>(reduced))) >> 3;
  const VecU32 half_exponent = ((as<VecU32>(b) - high(0x100000)) & high(0xFFE00000)) >> 1;
  return as<VecD>(as<VecU32>(as<VecU64>(estimate) << 32) + high(0x57F00000) - half_exponent);
}
QOR_INLINE simd::VecD refine_reciprocal_root(simd::VecD scaled, simd::VecD y) {
  using namespace simd;
  const VecD e = scaled * (y * y) - 1.0;
  // (1 + e)^(-1/2) - 1: 35/128, -5/16, 3/8, -1/2.
  return y + y * (horner(e, 0.2734375, -0.3125, 0.375, -0.5) * e);
}

QOR_INLINE simd::VecD reciprocal_root(simd::VecD scaled) {
  return refine_reciprocal_root(scaled, reciprocal_root_estimate(scaled));
}

template <Accuracy A>
struct Sqrt {
  static constexpr int results = 1;
  static constexpr double filler = 1;
  template <class T>
  static constexpr double bound = A == Accuracy::low && sizeof(T) == 8 ? 2.0 : 0.5;

  struct Estimated {
    simd::VecD x, y;
  };
  QOR_INLINE static Estimated begin(simd::VecD x) requires(A == Accuracy::low) {
    return {x, reciprocal_root_estimate(x)};
  }
  QOR_INLINE static void finish(const Estimated& s, simd::VecD* y, simd::VecU64& usual) {
    usual = normal_range(s.x);
    y[0] = refine_reciprocal_root(s.x, s.y) * s.x;
  }

  QOR_INLINE static void fast(simd::VecD x, const double*, simd::VecD* y, simd::VecU64& usual) {
    using namespace simd;
    if constexpr (A == Accuracy::low) {
      finish(begin(x), y, usual);
    } else {
      usual = ~lt(x, VecD{});
      y[0] = sqrt(x);
    }
  }
  QOR_INLINE static void fast(simd::VecF x, const float*, simd::VecF* y, simd::VecU32& usual) {
    usual = ~simd::lt(x, simd::VecF{});
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
