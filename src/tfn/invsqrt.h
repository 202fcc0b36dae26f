// Reciprocal square root. y is the processor's estimate, of 12 bits, cut so short that y^2 times the leading bits of x
// is exact; with e = x y^2 - 1, which has then all its bits,
//   1/sqrt x = y + y ((1 + e)^(-1/2) - 1).
// (A root and a division are the other way: they keep the divider busy for longer than all of this takes, and round
// twice.) Estimates differ between makes of processor, and so may last bits; the bounds hold for any estimate within
// 1.5 * 2^-12, which all promise.
// - double _HA: y of 16 bits: 0.55 ulp with the worst of estimates; double _50: x y^2 rounded: 1 ulp.
// - single _HA: y of 9 bits: 0.51 ulp.
// - single _21: one step of Newton's method, 2.7 ulp with this estimate. (Another term of the series makes it 1.4 ulp
//   for a third more time, which is more than a library takes that does this step alone.)
// Doubles outside the range of singles are not usual and get their estimate by way of the exponent (sqrt.h).
#pragma once

#include <bit>
#include <limits>

#include "tfn/sqrt.h"

namespace qor::tfn {

template <Accuracy A>
struct InvSqrt {
  static constexpr int results = 1;
  static constexpr double filler = 1;
  template <class T>
  static constexpr double bound = A == Accuracy::low && sizeof(T) == 4 ? 3.0 : default_bound<T>(A);

  // (1 + e)^(-1/2) - 1 over e for |e| <= E: -1/2 + 3/8 e - 5/16 e^2 + 35/128 e^3 - 63/256 e^4, the last term
  // economised: e^5 = 5/4 E^2 e^3 - 5/16 E^4 e +- E^5/16.
  static constexpr double reach = 0x1.aap-11, reach2 = reach * reach;
  QOR_INLINE static simd::VecD refine(simd::VecD x, simd::VecD y) {
    using namespace simd;
    const VecD yy = y * y;
    VecD e;
    if constexpr (A == Accuracy::low) {
      e = x * yy - 1.0;
    } else {
      const VecD head = as<VecD>(bits(x) & splat<VecU64>(0xFFFFFFFF00000000));  // 21 bits; y^2 has 32
      e = (head * yy - 1.0) + (x - head) * yy;
    }
    const VecD p = horner(e, 35.0 / 128, -5.0 / 16 - 63.0 / 256 * reach2 * 5 / 4, 3.0 / 8,
                          -1.0 / 2 + 63.0 / 256 * reach2 * reach2 * 5 / 16);
    return y + (y * e) * p;
  }
  // y of 16 bits.
  QOR_INLINE static simd::VecD cut(simd::VecD y) {
    return simd::as<simd::VecD>(simd::bits(y) & simd::splat<simd::VecU64>(0xFFFFFFE000000000));
  }

  QOR_INLINE static void fast(simd::VecD x, const double*, simd::VecD* y, simd::VecU64& usual) {
    using namespace simd;
    const VecD estimate = widen_low(rsqrt_estimate(narrow_low(x)));
    y[0] = refine(x, A == Accuracy::low ? estimate : cut(estimate));
    usual = as<VecU64>(numeric::words_between(as<VecU32>(x), 0x38100000, 0x47E00000));  // 2^-126 to 2^127
  }
  QOR_INLINE static simd::VecD any_normal(simd::VecD x) { return refine(x, cut(reciprocal_root_estimate(x))); }
  // The others that are normal; those done come out as they were.
  QOR_COLD static void retry(const simd::VecD& x, simd::VecD* y, simd::VecU64& usual) {
    using namespace simd;
    const VecD better = any_normal(x);
    const VecU64 had = le(splat<VecD>(0x1p-126), x) & lt(x, splat<VecD>(0x1p127));
    y[0] = select(had, y[0], better);
    usual = normal_range(x);
  }
  static int element(double x, double* y) {
    using L = std::numeric_limits<double>;
    if (x > 0 && x <= L::max()) {  // subnormal
      y[0] = any_normal(simd::splat<simd::VecD>(x * 0x1p54))[0] * 0x1p27;
      return TFN_STATUS_OK;
    }
    return special(x, y);
  }

  QOR_INLINE static void fast(simd::VecF x, const float*, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    const VecF estimate = rsqrt_estimate(x);
    if constexpr (A == Accuracy::low) {
      // One step of Newton's method, which gives 1 - 3/8 e^2; so its result is moved up by a bit.
      y[0] = estimate * (1.5f - x * estimate * (estimate * (0.5f - 0x1p-25f)));
    } else {
      // y of 9 bits, the head of x of 6 bits.
      const VecF cut_y = as<VecF>(bits(estimate) & splat<VecU32>(0xFFFF8000)), yy = cut_y * cut_y;
      const VecF head = as<VecF>(bits(x) & splat<VecU32>(0xFFFC0000));
      const VecF e = (head * yy - 1.0f) + (x - head) * yy;
      y[0] = cut_y + (cut_y * e) * horner(e, single_fit[0], single_fit[1], single_fit[2]);
    }
    // The estimate of what isn't normal and positive is an infinity, zero or a NaN; what comes of it is a NaN or
    // -infinity.
    usual = lt(VecF{}, y[0]);
  }
  // -1/2 + 3/8 e - 5/16 e^2 + 35/128 e^3, the last term economised on [-L, 0]: e^3 = -3/2 L e^2 - 9/16 L^2 e +- L^3/32.
  static constexpr double single_reach = 0x1.18p-7;
  static constexpr float single_fit[] = {float(-5.0 / 16 - 35.0 / 128 * 1.5 * single_reach),
                                         float(3.0 / 8 - 35.0 / 128 * 9 / 16 * single_reach * single_reach), -0.5f};
  static int element(float x, float* y) {
    if (x > 0 && x <= std::numeric_limits<float>::max()) {  // subnormal
      double wide;
      InvSqrt<Accuracy::high>::single_lane(x, &wide);
      y[0] = static_cast<float>(wide);
      return TFN_STATUS_OK;
    }
    return special(x, y);
  }
  QOR_INLINE static void single_lane(double x, double* y) { y[0] = any_normal(simd::splat<simd::VecD>(x))[0]; }

  template <class T>
  static int special(T x, T* y) {
    if (x < 0) {
      y[0] = -std::numeric_limits<T>::quiet_NaN();
      return TFN_STATUS_ERRDOM;
    }
    y[0] = T(1) / x;
    return x == 0 ? TFN_STATUS_SING : TFN_STATUS_OK;
  }
};

}  // namespace qor::tfn
