// Inverse functions of complex numbers. By symmetry z = x + i y with x, y >= 0; the signs are put back at the end.
//
// sin(u + i v) = z has x = sin u cosh v and y = cos u sinh v. With d = x^2 + y^2 - 1 and m = |z^2 - 1| = sqrt(d^2 + 4
// y^2), sinh^2 v = (m + d)/2 and cos^2 u = (m - d)/2. The larger of the two is free of cancellation, and the smaller
// one's root is y over the larger one's; cosh^2 v = 1 + sinh^2 v. So
//   v = ln(sinh v + cosh v),  u = atan(x/(cos u cosh v)),  pi/2 - u = atan(cos u cosh v/x):
// nothing is lost anywhere, on the cuts, next to +-1 or elsewhere. d is the only difference; its error relative to m
// has to be small, and is, as (x - 1)(x + 1) + y^2. These are the quantities of W. Kahan, Branch cuts for complex
// elementary functions (1987), and T. E. Hull, T. F. Fairgrieve, P. T. P. Tang, Implementing the complex arcsine and
// arccosine functions using exception handling, ACM TOMS 23 (1997), who take a = cosh v and b = sin u from the distances
// of z to +-1 and need a formula a region. Then
//   asin z = u + i v, acos z = pi/2 - u - i v, acosh z = v + i (pi/2 - u), asinh z = v + i u of y + i x.
//   atanh z = 1/4 ln(1 + 4 x/((1 - x)^2 + y^2)) + i/2 atan2(2 y, -d)  (Kahan), atan z the same of y + i x.
// - double _HA: squares and quotients with their remainders; a Newton step on B^2 - (y/B)^2 = |d| finds what the larger
//   root B lacks.
// - double _50: plain arithmetic; the logarithm of _HA of a pair, arc tangents of _50.
// - single _HA: the same in double precision with a shorter logarithm.
// - single _21: the same in single precision.
#pragma once

#include <limits>

#include "numeric/float_parts.h"
#include "numeric/pair.h"
#include "qor/tfn.h"
#include "simd/vec.h"
#include "tfn/accuracy.h"
#include "tfn/hypot.h"
#include "tfn/inverse_hyperbolic.h"
#include "tfn/inverse_trig.h"
#include "tfn/ln.h"

namespace qor::tfn {

// v^2 = square + rest, the square exact.
template <class V>
struct SquareParts {
  V upper, square, rest;
};
template <class V>
QOR_INLINE SquareParts<V> square_parts(V v) {
  const V upper = numeric::upper_half(v);
  return {upper, upper * upper, (v + upper) * (v - upper)};
}
// What is left of y - q x.
template <class V>
QOR_INLINE V left_over(V y, V q, V q_upper, V x, V x_upper) {
  const V q_lower = q - q_upper, x_lower = x - x_upper;
  return (((y - q_upper * x_upper) - q_upper * x_lower) - q_lower * x_upper) - q_lower * x_lower;
}

// x^2 + y^2 - 1, relative to |z^2 - 1| to more than twice the precision.
template <class V>
QOR_INLINE numeric::Pair<V> circle(V x, SquareParts<V> yy) {
  const auto xx = square(x), s = numeric::two_sum(xx.hi, simd::splat<V>(-1)), t = numeric::two_sum(s.hi, yy.square);
  return numeric::two_sum(t.hi, t.lo + ((s.lo + xx.lo) + yy.rest));
}

// sinh v, cosh v, cos u cosh v, and m.
template <class V>
struct InverseSine {
  numeric::Pair<V> sinh, cosh, leg;
  V m;
};
template <class V>
QOR_INLINE InverseSine<V> inverse_sine_exact(V x, V y) {
  using namespace simd;
  const SquareParts<V> yy = square_parts(y);
  const auto [d, d_low] = circle(x, yy);
  const V size = abs(d), size_low = flip_sign(d_low, sign(d));
  const V m = sqrt(d * d + 4.0 * (y * y));
  const V big = sqrt(0.5 * (m + size)), inverse = 1.0 / big, small = y * inverse;
  const SquareParts<V> bb = square_parts(big), ss = square_parts(small);
  const auto if_exact = [keep = lt(splat<V>(least_exact<lane_t<V>>), y)](V v) { return as<V>(bits(v) & keep); };
  const V small_more = if_exact(left_over(y, small, ss.upper, big, bb.upper) * inverse);
  const V excess = ((bb.square - max(size, ss.square)) - min(size, ss.square)) +
                   ((bb.rest - ss.rest) - (size_low + (small + small) * small_more));
  const V step = excess / (-2.0 * m);
  const V big_low = big * step, small_low = small_more - small * step;

  const Bits<V> outside = lt(V{}, d);
  const numeric::Pair<V> sinh = {select(outside, big, small), select(outside, big_low, small_low)};
  const V square = select(outside, bb.square, ss.square), rest = select(outside, bb.rest, ss.rest);
  const auto q = numeric::two_sum(square, splat<V>(1));
  const V q_low = q.lo + (rest + (sinh.hi + sinh.hi) * sinh.lo), cosh = sqrt(q.hi + q_low);
  const SquareParts<V> cc = square_parts(cosh);
  const V cosh_low = ((q.hi - cc.square) + (q_low - cc.rest)) / (cosh + cosh);

  const V cosine = select(outside, small, big), cosine_upper = select(outside, ss.upper, bb.upper);
  const V leg = cosine * cosh;
  const V leg_low = select(outside, small_low, big_low) * cosh + cosine * cosh_low -
                    if_exact(left_over(leg, cosine, cosine_upper, cosh, cc.upper));
  return {sinh, {cosh, cosh_low}, {leg, leg_low}, m};
}
template <class V>
QOR_INLINE InverseSine<V> inverse_sine_plain(V x, V y) {
  using namespace simd;
  using T = lane_t<V>;
  const V d = (x - T(1)) * (x + T(1)) + y * y, m = sqrt(d * d + T(4) * (y * y));
  const V big = sqrt(T(0.5) * (m + abs(d))), small = y / big;
  const Bits<V> outside = lt(V{}, d);
  const V sinh = select(outside, big, small), cosine = select(outside, small, big), cosh = sqrt(T(1) + sinh * sinh);
  return {{sinh, V{}}, {cosh, V{}}, {cosine * cosh, V{}}, m};
}

enum class ComplexArc { asin, acos, atan, asinh, acosh, atanh };
// How a vector is computed: double _HA, double _50 and single _21, doubles that become singles.
enum class Effort { exact, plain, wide };

template <ComplexArc F, Accuracy A>
struct ComplexInverse {
  static constexpr double filler = 0.5;
  static constexpr bool tangent = F == ComplexArc::atan || F == ComplexArc::atanh;
  static constexpr bool exchanged = F == ComplexArc::atan || F == ComplexArc::asinh;
  static constexpr bool cosine = F == ComplexArc::acos || F == ComplexArc::acosh;

  template <class V>
  struct Parts {
    V angle, length;  // u and v, or pi/2 - u and v
  };

  template <Effort E, class V>
  QOR_INLINE static V log(numeric::Pair<V> h) {
    if constexpr (sizeof(simd::lane_t<V>) == 4) {
      return Ln<Accuracy::low>::of_pair(h);
    } else if constexpr (E == Effort::wide) {
      return Ln<Accuracy::low>::of_pair_for_single(h);
    } else {
      return Ln<Accuracy::high>::of_pair(h);
    }
  }
  // atan2(y, x), y >= 0; more as in slope_angle, for x >= 0.
  template <Effort E, class V, class... More>
  QOR_INLINE static V angle(V y, V x, More... more) {
    using namespace simd;
    if constexpr (sizeof(lane_t<V>) == 4) {
      V a;
      Bits<V> ignored;
      Atan2<Accuracy::low>::fast(y, x, nullptr, &a, ignored);
      return a;
    } else {
      const V ax = abs(x), inverse = 1.0 / ax;
      constexpr Accuracy level = E == Effort::exact ? Accuracy::high : Accuracy::low;
      return turn_over(slope_angle<level>(y, ax, inverse, slope_row(y, inverse), more...), lt(x, V{}));
    }
  }

  // Of x + i y, y >= 0 and for all but the arc cosines x >= 0.
  template <Effort E, class V>
  QOR_INLINE static Parts<V> parts(V x, V y, simd::Bits<V>& usual) {
    using namespace simd;
    using T = lane_t<V>;
    // What isn't too large or too small for squares to the fourth power; beside the poles nothing is too small.
    constexpr bool single = sizeof(T) == 4, any = E == Effort::wide;
    constexpr T least = any ? T(0x1p-320) : single ? T(0x1p-50) : T(0x1p-400);
    constexpr T most = any ? T(0x1p400) : single ? T(0x1p60) : T(0x1p500);
    if constexpr (tangent) {
      const V one = splat<V>(T(1));
      if constexpr (E == Effort::exact) {
        const SquareParts<V> yy = square_parts(y);
        const auto w = numeric::two_sum(one, -x);
        const SquareParts<V> ww = square_parts(w.hi);
        const auto sum = numeric::two_sum(ww.square, yy.square);
        const auto p =
            numeric::quick_two_sum(sum.hi, sum.lo + ((ww.rest + yy.rest) + (w.hi + w.hi) * w.lo));
        usual = le(splat<V>(least), p.hi) & le(p.hi, splat<V>(most));
        const V inverse = one / p.hi, x4 = x * T(4), q = x4 * inverse;
        const V rest = left_over(x4, q, numeric::upper_half(q), p.hi, numeric::upper_half(p.hi)) - q * p.lo;
        const V q_low = as<V>(bits(rest * inverse) & lt(splat<V>(least_exact<T>), x));
        const auto h = one_plus(q);
        const V length = select(lt(q, splat<V>(0x1p-28)), q + (q_low - q * q * 0.5), log<E, V>({h.hi, h.lo + q_low}));
        const auto d = circle(x, yy);
        const V low = flip_sign(d.lo, sign(d.hi));
        return {angle<E>(y + y, -d.hi, [low](V, V q) { return -(low * q); }) * 0.5, length * 0.25};
      } else {
        const V w = one - x, p = w * w + y * y, q = x * T(4) / p;
        usual = le(splat<V>(least), p) & le(p, splat<V>(most));
        return {angle<E>(y + y, w * (one + x) - y * y) * T(0.5), log<E>(one_plus(q)) * T(0.25)};
      }
    } else {
      const V ax = abs(x);
      const auto s = E == Effort::exact ? inverse_sine_exact(ax, y) : inverse_sine_plain(ax, y);
      usual = le(splat<V>(least), s.m) & le(s.m, splat<V>(most));
      if constexpr (E == Effort::exact) {
        const auto h = numeric::quick_two_sum(s.cosh.hi, s.sinh.hi);
        const V ln = log<E, V>({h.hi, h.lo + (s.sinh.lo + s.cosh.lo)});
        const V length = select(lt(s.sinh.hi, splat<V>(0x1p-28)), s.sinh.hi + s.sinh.lo, ln);
        const V low = s.leg.lo;
        if constexpr (cosine) {
          return {angle<E>(s.leg.hi, x, [low](V p, V) { return low * p; }), length};
        } else {
          return {angle<E>(ax, s.leg.hi, [low](V, V q) { return -(low * q); }), length};
        }
      } else {
        const V length = log<E>(AsinhForm::plain(s.sinh.hi, s.sinh.hi * s.sinh.hi, s.cosh.hi));
        return {cosine ? angle<E>(s.leg.hi, x) : angle<E>(x, s.leg.hi), length};
      }
    }
  }

  template <Effort E, class V>
  QOR_INLINE static void whole(V re, V im, V* r, simd::Bits<V>& usual) {
    using namespace simd;
    const V ay = abs(im), ax = cosine ? re : abs(re);
    const Parts<V> p = exchanged ? parts<E>(ay, ax, usual) : parts<E>(ax, ay, usual);
    constexpr bool angle_first = F == ComplexArc::asin || F == ComplexArc::acos || F == ComplexArc::atan;
    r[0] = angle_first ? p.angle : p.length;
    r[1] = angle_first ? p.length : p.angle;
    if constexpr (!cosine) r[0] = flip_sign(r[0], sign(re));
    r[1] = flip_sign(r[1], F == ComplexArc::acos ? sign(im) ^ sign_bit<V> : sign(im));
  }

  QOR_INLINE static void fast(simd::VecD re, simd::VecD im, simd::VecD* r, simd::VecU64& usual) {
    whole < A == Accuracy::high ? Effort::exact : Effort::plain > (re, im, r, usual);
  }
  QOR_INLINE static void by_doubles(simd::VecF re, simd::VecF im, simd::VecF* r, simd::VecU32& usual) {
    using namespace simd;
    VecD low[2], high[2];
    VecU64 low_usual, high_usual;
    whole<Effort::wide>(widen_low(re), widen_low(im), low, low_usual);
    whole<Effort::wide>(widen_high(re), widen_high(im), high, high_usual);
    for (int k = 0; k < 2; ++k) r[k] = narrow(low[k], high[k]);
    usual = as<VecU32>(evens(as<VecF>(low_usual), as<VecF>(high_usual)));
  }
  QOR_INLINE static void fast(simd::VecF re, simd::VecF im, simd::VecF* r, simd::VecU32& usual) {
    if constexpr (A == Accuracy::high) {
      by_doubles(re, im, r, usual);
    } else {
      whole<Effort::plain>(re, im, r, usual);
    }
  }
};

}  // namespace qor::tfn
