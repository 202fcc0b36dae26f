// Hyperbolic functions of |x|; the sign comes last, so symmetries hold in every bit. With n, r and the table as in
// exp.h, V = 2^(n/256) and W = 2^(-n/256), c = cosh r - 1 and s = sinh r:
//   2 cosh x = (V + W) + ((V + W) c + (V - W) s),  2 sinh x = (V - W) + ((V - W) c + (V + W) s),
// the first sum with its error, the rest small beside it: 0.51 ulp, save for small sinh x, where V - W is no longer
// large beside s: a polynomial instead, chosen by a mask. The low accuracy leaves out the errors of V, W and of their
// sum.
//   tanh x = (E - 1)/(E + 1), E = e^(2 |x|) = T + T p,
// with a polynomial for small x, and the quotient corrected by the remainder of its first 26 bits. The low accuracy
// divides at once, which is good for small x as well, because E - 1 is T p there.
// - double _HA: sinh 0.52, cosh 0.502, tanh 0.51 ulp; _50: 1.93, 1.44 and 2.06 ulp, the last because E - 1, E + 1 and
//   the quotient are each rounded, where E + 1 is a little more than 2 for up to an ulp of the result.
// - single _HA: the low formulas in double precision: 0.501 ulp.
// - single _21: sinh and cosh in single precision without a table, 1.8 ulp; tanh from a table with its first
//   derivatives, 1.4 ulp and two thirds of the time of a quotient.
#pragma once

#include <bit>
#include <cmath>
#include <limits>

#include "numeric/float_parts.h"
#include "numeric/pair.h"
#include "qor/tfn.h"
#include "simd/vec.h"
#include "tfn/accuracy.h"
#include "tfn/exp.h"
#include "tfn/log_reduce.h"
#include "tfn/tanh_table.h"

namespace qor::tfn {

// sinh x = x + x^3 p(x^2) for x up to 1/8 and 1/2, tanh x = x + x^3 q(x^2) up to 1/8, leading coefficient first:
// minimax for the relative error, by tools/fit/hyperbolic.sollya; that error is 2^-62, 2^-55, 2^-62.
inline constexpr double sinh_fit[] = {0x1.71ff028f8b17ap-19, 0x1.a019ffe7759f8p-13, 0x1.111111111a2f2p-7,
                                      0x1.5555555555552p-3};
inline constexpr double sinh_low_fit[] = {0x1.b06d292c0bb49p-26, 0x1.71dd1d1d9f33p-19, 0x1.a01a022dc7c7cp-13,
                                          0x1.11111110f2616p-7, 0x1.55555555555dfp-3};
inline constexpr double tanh_fit[] = {0x1.cca925bd0f1aap-9,  -0x1.2260884789c04p-7, 0x1.664f365ee6294p-6,
                                      -0x1.ba1ba1adeeb49p-5, 0x1.111111110f2ffp-3,  -0x1.5555555555552p-2};

template <bool Sine, Accuracy A>
struct SinhCosh {
  static constexpr int results = 1;
  static constexpr double filler = 1;
  template <class T>
  static constexpr double bound = default_bound<T>(A);

  // n - 256 + 1.5 * 2^52, so that V and W come halved.
  struct Reduced {
    simd::VecD x, shifted, r;
  };
  QOR_INLINE static Reduced begin(simd::VecD x) {
    using namespace simd;
    const VecD ax = abs(x);
    const VecD shifted = ax * exp_per_step + (exp_shift - exp_rows), n = shifted - (exp_shift - exp_rows);
    return {x, shifted, (ax - n * exp_step_hi) - n * exp_step_lo};
  }
  // The sine counts as unusual where its argument is zero or subnormal.
  QOR_INLINE static void finish(const Reduced& a, simd::VecD* y, simd::VecU64& usual) {
    using namespace simd;
    const VecD ax = abs(a.x);
    usual = lt(ax, splat<VecD>(703));
    if constexpr (Sine) usual &= le(splat<VecD>(std::numeric_limits<double>::min()), ax);
    const VecD opposite = splat<VecD>(2 * (exp_shift - exp_rows)) - a.shifted;
    const LowHalves<VecU64> row(bits(a.shifted)), opposite_row(bits(opposite));
    const VecD v = exp_scale(row, a.shifted), w = exp_scale(opposite_row, opposite);
    const VecD sum = v + w, difference = v - w;
    const VecD r = a.r, r2 = r * r;
    const VecD s = r + r * r2 * horner(r2, 1.0 / 120, 1.0 / 6), c = r2 * (r2 * (1.0 / 24) + 0.5);
    const VecD rest = Sine ? difference * c + sum * s : sum * c + difference * s;
    if constexpr (A == Accuracy::low) {
      y[0] = (Sine ? difference : sum) + rest;
    } else {
      const VecD v_lo = v * exp_tail(row), w_lo = w * exp_tail(opposite_row);
      if constexpr (Sine) {
        y[0] = difference + (rest + ((v_lo - w_lo) + ((v - difference) - w)));
      } else {
        y[0] = sum + (rest + ((v_lo + w_lo) + (w - (sum - v))));
      }
    }
    if constexpr (Sine) {
      const VecD t = ax * ax;
      constexpr auto& f = sinh_fit;
      constexpr auto& g = sinh_low_fit;
      VecD p;
      if constexpr (A == Accuracy::low) {
        p = horner(t, g[0], g[1], g[2], g[3], g[4]);
      } else {
        p = horner(t, f[0], f[1], f[2], f[3]);
      }
      const VecU64 small = le(ax, splat<VecD>(A == Accuracy::low ? 0.5 : 0.125));
      y[0] = flip_sign(select(small, ax + (ax * t) * p, y[0]), sign(a.x));
    }
  }
  QOR_INLINE static void fast(simd::VecD x, const double*, simd::VecD* y, simd::VecU64& usual) {
    finish(begin(x), y, usual);
  }

  // Half of a vector of singles, in units of exp_unit.
  QOR_INLINE static simd::VecD wide(simd::VecD ax) {
    using namespace simd;
    const VecD t = ax * exp_per_step, shifted = t + (exp_shift - exp_rows);
    const VecD f = t - (shifted - (exp_shift - exp_rows)), f2 = f * f;
    const VecD opposite = splat<VecD>(2 * (exp_shift - exp_rows)) - shifted;
    const VecD v = exp_scale(LowHalves<VecU64>(bits(shifted)), shifted);
    const VecD w = exp_scale(LowHalves<VecU64>(bits(opposite)), opposite);
    const VecD sum = v + w, difference = v - w;
    constexpr double unit = 1 / exp_per_step;
    const VecD s = f * (f2 * (unit * unit * unit / 6) + unit), c = f2 * (unit * unit / 2);
    return Sine ? difference + (difference * c + sum * s) : sum + (sum * c + difference * s);
  }
  QOR_INLINE static void fast(simd::VecF x, const float*, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    const VecF ax = abs(x);
    usual = lt(ax, splat<VecF>(87));
    if constexpr (Sine) usual &= le(splat<VecF>(std::numeric_limits<float>::min()), ax);
    if constexpr (A == Accuracy::high) {
      y[0] = narrow(wide(widen_low(ax)), wide(widen_high(ax)));
    } else {
      // n whole octaves; V and W come halved. Polynomials for |r| <= ln 2 / 2 by tools/fit/hyperbolic.sollya, errors
      // 2^-32 (of three terms), 2^-28 and 2^-33.
      const VecF shifted = ax * 0x1.715476p0f + 0x1.8p23f, n = shifted - 0x1.8p23f;
      const VecF leading = ax - n * 0x1.62e4p-1f, tail = n * 0x1.7f7d1cp-20f;  // exact, and below 2^-12
      const VecF r = leading - tail, r2 = r * r;
      const VecU32 field = bits(shifted) << 23, half = splat<VecU32>(126u << 23);
      const VecF v = as<VecF>(half + field), w = as<VecF>(half - field);
      const VecF sum = v + w, difference = v - w;
      VecF s;
      if constexpr (Sine) {  // in the first octave s is larger than the result, and the rounding of r would show
        s = leading + (r * r2 * horner(r2, 0x1.a186ecp-13f, 0x1.1110a2p-7f, 0x1.555556p-3f) - tail);
      } else {
        s = r + r * r2 * horner(r2, 0x1.123b5p-7f, 0x1.55548ep-3f);
      }
      const VecF c = r2 * horner(r2, 0x1.6d4ee2p-10f, 0x1.5554e6p-5f, 0.5f);
      y[0] = Sine ? difference + (difference * c + sum * s) : sum + (sum * c + difference * s);
    }
    if constexpr (Sine) y[0] = flip_sign(y[0], sign(x));
  }

  static int element(double x, double* y) {
    using L = std::numeric_limits<double>;
    const double ax = std::fabs(x);
    if (ax >= 703 && ax < 746) {  // e^|x| / 2
      ExpReduced at = exp_reduce(simd::splat<simd::VecD>(ax));
      at.shifted -= double{exp_rows};
      const int status = exp_far<A>(at, y);
      if (Sine && x < 0) y[0] = -y[0];
      return status;
    }
    if (ax >= 746 && ax <= L::max()) {
      y[0] = Sine && x < 0 ? -L::infinity() : L::infinity();
      return TFN_STATUS_OVERFLOW;
    }
    y[0] = Sine ? x * 1.0 : ax * 1.0;  // zeros and subnormals, which the cosine doesn't meet, infinities, NaNs
    return Sine && ax > 0 && ax < L::min() ? TFN_STATUS_UNDERFLOW : TFN_STATUS_OK;
  }
  static int element(float x, float* y) {
    const double ax = std::fabs(static_cast<double>(x));
    double wide_result;
    int status = TFN_STATUS_OK;
    if (ax < 703) {
      wide_result = wide(simd::splat<simd::VecD>(ax))[0];
      if (Sine && std::signbit(x)) wide_result = -wide_result;
    } else {
      status = SinhCosh<Sine, Accuracy::high>::element(static_cast<double>(x), &wide_result);
    }
    return narrow_result(status, wide_result, y);
  }
};
template <Accuracy A>
using Sinh = SinhCosh<true, A>;
template <Accuracy A>
using Cosh = SinhCosh<false, A>;

template <Accuracy A>
struct Tanh {
  static constexpr int results = 1;
  static constexpr double filler = 1;
  template <class T>
  static constexpr double bound = A == Accuracy::low && sizeof(T) == 8 ? 2.5 : default_bound<T>(A);

  // From 20 on the double next to tanh x is 1. A NaN stays one: min gives its second operand then.
  struct Reduced {
    simd::VecD x;
    ExpReduced at;
  };
  QOR_INLINE static Reduced begin(simd::VecD x) {
    return {x, exp_reduce(simd::min(simd::splat<simd::VecD>(40), simd::abs(x) * 2.0))};
  }
  QOR_INLINE static void finish(const Reduced& a, simd::VecD* y, simd::VecU64& usual) {
    using namespace simd;
    usual = ~VecU64{};
    const LowHalves<VecU64> row(bits(a.at.shifted));
    const VecD v = exp_scale(row, a.at.shifted), r = a.at.r, r2 = r * r;
    const VecD p = r2 * horner(r, 1.0 / 120, 1.0 / 24, 1.0 / 6, 0.5);
    const VecD rest = v * ((exp_tail(row) + p) + r);
    const VecD below = v - 1.0, less_1 = below + rest;
    if constexpr (A == Accuracy::low) {
      y[0] = flip_sign(less_1 / (less_1 + 2.0), sign(a.x));
    } else {
      const VecD above = v + 1.0;
      const VecD inverse = 1.0 / (less_1 + 2.0);
      const VecD quotient = numeric::upper_half(less_1 * inverse);
      const VecD head = numeric::upper_half(above);
      // What is left of (below + its error) + rest - quotient ((above + its error) + rest).
      const VecD left = ((below - quotient * head) - quotient * (above - head)) +
                        ((((v - below) - 1.0) - quotient * (1.0 - (above - v))) + (rest - quotient * rest));
      const VecD ax = abs(a.x), t = ax * ax;
      constexpr auto& f = tanh_fit;
      const VecD short_form = ax + (ax * t) * horner(t, f[0], f[1], f[2], f[3], f[4], f[5]);
      y[0] = flip_sign(select(le(ax, splat<VecD>(0.125)), short_form, quotient + left * inverse), sign(a.x));
    }
  }
  QOR_INLINE static void fast(simd::VecD x, const double*, simd::VecD* y, simd::VecU64& usual) {
    finish(begin(x), y, usual);
  }

  // Half of a vector of singles.
  QOR_INLINE static simd::VecD wide(simd::VecD ax) {
    using namespace simd;
    constexpr double unit = 1 / exp_per_step;
    const VecD t = ax * (2 * exp_per_step), shifted = t + exp_shift, f = t - (shifted - exp_shift);
    const VecD v = exp_scale(LowHalves<VecU64>(bits(shifted)), shifted);
    const VecD rest = v * (f * (f * (f * (unit * unit * unit / 6) + unit * unit / 2) + unit));
    const VecD less_1 = (v - 1.0) + rest;
    return less_1 / (less_1 + 2.0);
  }
  QOR_INLINE static void fast(simd::VecF x, const float*, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    if constexpr (A == Accuracy::high) {
      usual = ~VecU32{};
      const VecF ax = min(splat<VecF>(20), abs(x));
      y[0] = flip_sign(narrow(wide(widen_low(ax)), wide(widen_high(ax))), sign(x));
    } else {
      // |x| = k/64 + d, |d| <= 2^-7; with T = tanh(k/64) and S = 1 - T^2,
      //   tanh |x| = T + S (d - T d^2 + (T^2 - 1/3) d^3), within 2^-28 of itself.
      // The last row stands for all that is beyond, and for a NaN: min gives its second operand then.
      usual = eq(x, x);
      const VecF ax = min(abs(x), splat<VecF>((tanh_rows - 1) / 64.0f));
      const VecF shifted = ax + 0x1.8p17f, d = ax - (shifted - 0x1.8p17f);
      const LowHalves<VecU32> row(bits(shifted));
      const auto [value, slope] =
          gather_pairs(&tanh_table[0].value, [&](int l) { return row(l) * sizeof(TanhRow); }).column;
      const VecF factor = 1.0f - d * (value - d * (value * value - float(1.0 / 3)));
      y[0] = flip_sign(value + slope * d * factor, sign(x));
    }
  }

  // NaNs of singles; all else is usual.
  template <class T>
  static int element(T x, T* y) {
    y[0] = x + x;
    return TFN_STATUS_OK;
  }
};

}  // namespace qor::tfn
