// Length: sqrt(x^2 + b^2).
// - double _HA: r from the squares, then what is left of x^2 + b^2 - r^2, over 2 r. Squares of 26 leading bits are
// exact
//   and cancel exactly in the order larger - r^2 + smaller; the rest is small: 0.51 ulp. So Pythagorean triples and
//   (x, 0) give exact results.
// - single _HA: in double precision, where the squares are exact: 0.5 ulp and a little.
// - _50, _21: the plain formula: 1.2 ulp.
// Squares that would overflow or lose bits are not usual: those elements are scaled by powers of two, or in singles
// take the double formula.
#pragma once

#include <limits>

#include "numeric/float_parts.h"
#include "numeric/pair.h"
#include "qor/tfn.h"
#include "simd/vec.h"
#include "tfn/accuracy.h"

namespace qor::tfn {

template <Accuracy A>
struct Hypot {
  static constexpr int results = 1;
  static constexpr double filler = 1;
  template <class T>
  static constexpr double bound = default_bound<T>(A);

  // The result in two parts, for sums of squares s from 2^-900 to 2^1020.
  QOR_INLINE static numeric::Pair<simd::VecD> core(simd::VecD x, simd::VecD b, simd::VecD& s) {
    using namespace simd;
    if constexpr (A == Accuracy::low) {
      s = x * x + b * b;
      return {sqrt(s), VecD{}};
    } else {
      const VecD xh = numeric::upper_half(x), bh = numeric::upper_half(b), xx = xh * xh, bb = bh * bh;
      const VecD rest = (x + xh) * (x - xh) + (b + bh) * (b - bh);
      s = (xx + bb) + rest;
      const VecD r = sqrt(s), rh = numeric::upper_half(r);
      const VecD left = ((max(xx, bb) - rh * rh) + min(xx, bb)) + (rest - (r + rh) * (r - rh));
      return {r, left / (r + r)};
    }
  }
  QOR_INLINE static void fast(simd::VecD x, simd::VecD b, const double*, simd::VecD* y, simd::VecU64& usual) {
    using namespace simd;
    VecD s;
    const auto [r, correction] = core(x, b, s);
    y[0] = A == Accuracy::low ? r : r + correction;
    usual = le(splat<VecD>(0x1p-900), s) & le(s, splat<VecD>(0x1p1020));
  }
  // The same scaled by 2^-700 or 2^700, which is exact but for parts of the smaller one that are too small to count.
  struct Scaled {
    numeric::Pair<simd::VecD> length;
    simd::VecD back;
  };
  QOR_INLINE static Scaled scaled(simd::VecD x, simd::VecD b) {
    using namespace simd;
    const VecU64 large = le(splat<VecD>(1), max(abs(x), abs(b)));
    const VecD there = select(large, splat<VecD>(0x1p-700), splat<VecD>(0x1p700));
    VecD s;
    const auto length = core(x * there, b * there, s);
    return {length, select(large, splat<VecD>(0x1p700), splat<VecD>(0x1p-700))};
  }
  QOR_COLD static void retry(const simd::VecD& x, const simd::VecD& b, simd::VecD* y, simd::VecU64& usual) {
    using namespace simd;
    const Scaled z = scaled(x, b);
    y[0] = select(usual, y[0], (z.length.hi + z.length.lo) * z.back);
    usual |= numeric::normal_magnitude(y[0]);
  }
  // Results below the normal range too: rounded once, to multiples of 2^-1074 in the scaled ones.
  QOR_INLINE static void any_finite(double x, double b, double* y) {
    using namespace simd;
    const Scaled z = scaled(splat<VecD>(x), splat<VecD>(b));
    const double hi = z.length.hi[0], lo = z.length.lo[0], back = z.back[0];
    y[0] = (hi + lo) * back;
    if (y[0] >= std::numeric_limits<double>::min()) return;
    const double grid = 0x1p-322, sum = grid + hi;
    y[0] = ((sum + ((hi - (sum - grid)) + lo)) - grid) * back;
  }

  QOR_INLINE static simd::VecF by_doubles(simd::VecF x, simd::VecF b) {
    using namespace simd;
    const VecD xl = widen_low(x), xh = widen_high(x), bl = widen_low(b), bh = widen_high(b);
    return narrow(sqrt(xl * xl + bl * bl), sqrt(xh * xh + bh * bh));
  }
  QOR_INLINE static void fast(simd::VecF x, simd::VecF b, const float*, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    if constexpr (A == Accuracy::low) {
      const VecF s = x * x + b * b;
      y[0] = sqrt(s);
      usual = numeric::words_between(bits(s), 31u << 23, 253u << 23);  // 2^-96 to 2^126
    } else {
      y[0] = by_doubles(x, b);
      usual = numeric::normal_magnitude(y[0]);
    }
  }
  QOR_COLD static void retry(const simd::VecF& x, const simd::VecF& b, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    y[0] = select(usual, y[0], by_doubles(x, b));
    usual |= numeric::normal_magnitude(y[0]);
  }

  // Zeros, infinities, NaNs and results out of the normal range.
  template <class T>
  static int element(T x, T b, T* y) {
    using L = std::numeric_limits<T>;
    using V = simd::Vec<T>;
    const T largest = L::max(), xs = static_cast<T>(__builtin_fabs(x)), bs = static_cast<T>(__builtin_fabs(b));
    if (xs > largest || bs > largest) {
      y[0] = L::infinity();
      return TFN_STATUS_OK;
    }
    if (x != x || b != b || (x == 0 && b == 0)) {
      y[0] = xs + bs;
      return TFN_STATUS_OK;
    }
    if constexpr (sizeof(T) == 8) {
      any_finite(x, b, y);
    } else {
      y[0] = by_doubles(simd::splat<V>(x), simd::splat<V>(b))[0];
    }
    return y[0] > largest ? TFN_STATUS_OVERFLOW : y[0] < L::min() ? TFN_STATUS_UNDERFLOW : TFN_STATUS_OK;
  }
};

}  // namespace qor::tfn
