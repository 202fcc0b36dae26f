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
// Errors in units in the last place of the result's size, and of a part's own:
// - double _HA: squares and quotients with their remainders; a Newton step on B^2 - (y/B)^2 = |d| finds what the larger
//   root B lacks: 0.71, and 0.6 (3.0 where a part is below 2^-900 and products of halves vanish).
// - double _50: plain arithmetic; the logarithm of _HA of a pair, arc tangents of _50: 3.3 and 3.7.
// - single _HA: the same in double precision with a shorter logarithm: 0.71 and 0.502.
// - single _21: the same in single precision: 3.2 and 3.8.
#pragma once

#include <cmath>

#include "numeric/float_parts.h"
#include "numeric/pair.h"
#include "qor/tfn.h"
#include "simd/vec.h"
#include "tfn/accuracy.h"
#include "tfn/complex_map.h"
#include "tfn/complex_scaled.h"
#include "tfn/hypot.h"
#include "tfn/inverse_hyperbolic.h"
#include "tfn/inverse_trig.h"
#include "tfn/ln.h"

namespace qor::tfn::complex {

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
  return numeric::quick_two_sum(t.hi, t.lo + ((s.lo + xx.lo) + yy.rest));
}

// The larger root B and cosh v as they come, d = |d| + rest, and m.
template <class V>
struct Roots {
  V big, cosh, m, size, rest;
  simd::Bits<V> outside;  // d > 0: B is sinh v, else cos u
};
template <class V>
QOR_INLINE Roots<V> roots(numeric::Pair<V> d, V y) {
  using namespace simd;
  using T = lane_t<V>;
  Roots<V> s;
  s.size = abs(d.hi);
  s.rest = flip_sign(d.lo, sign(d.hi));
  s.outside = lt(V{}, d.hi);
  s.m = sqrt(d.hi * d.hi + T(4) * (y * y));
  s.big = sqrt(T(0.5) * (s.m + s.size));
  s.cosh = sqrt(T(0.5) * (s.m + d.hi) + T(1));
  return s;
}

// {a, b} in the lanes of m, {b, a} in others.
template <class V>
QOR_INLINE numeric::Pair<V> exchange_unless(simd::Bits<V> m, V a, V b) {
  using namespace simd;
  const Bits<V> difference = (bits(a) ^ bits(b)) & m;
  return {as<V>(bits(b) ^ difference), as<V>(bits(a) ^ difference)};
}

// sinh v, cosh v, cos u cosh v.
template <class V>
struct InverseSine {
  numeric::Pair<V> sinh, cosh, leg;
};
template <class V>
QOR_INLINE InverseSine<V> inverse_sine_exact(const Roots<V>& s, V y) {
  using namespace simd;
  const V inverse = 1.0 / s.big, small = y * inverse;
  const SquareParts<V> bb = square_parts(s.big), ss = square_parts(small);
  const auto if_exact = [keep = lt(splat<V>(least_exact<lane_t<V>>), y)](V v) { return as<V>(bits(v) & keep); };
  const V small_more = if_exact(left_over(y, small, ss.upper, s.big, bb.upper) * inverse);
  const V excess = ((bb.square - max(s.size, ss.square)) - min(s.size, ss.square)) +
                   ((bb.rest - ss.rest) - (s.rest + (small + small) * small_more));
  const V step = excess / (-2.0 * s.m);
  const V big_low = s.big * step, small_low = small_more - small * step;

  const auto [sinh, cosine] = exchange_unless(s.outside, s.big, small);
  const auto [sinh_low, cosine_low] = exchange_unless(s.outside, big_low, small_low);
  const auto [sinh_upper, cosine_upper] = exchange_unless(s.outside, bb.upper, ss.upper);
  const SquareParts<V> cc = square_parts(s.cosh);
  const V square = sinh_upper * sinh_upper, one = splat<V>(1);
  const V rest = (sinh + sinh_upper) * (sinh - sinh_upper) + (sinh + sinh) * sinh_low;
  const V cosh_low = (((max(square, one) - cc.square) + min(square, one)) + (rest - cc.rest)) / (s.cosh + s.cosh);

  const V leg = cosine * s.cosh;
  const V leg_low =
      (cosine_low * s.cosh + cosine * cosh_low) - if_exact(left_over(leg, cosine, cosine_upper, s.cosh, cc.upper));
  return {{sinh, sinh_low}, {s.cosh, cosh_low}, {leg, leg_low}};
}
template <class V>
QOR_INLINE InverseSine<V> inverse_sine_plain(const Roots<V>& s, V y) {
  const auto [sinh, cosine] = exchange_unless(s.outside, s.big, y / s.big);
  return {{sinh, V{}}, {s.cosh, V{}}, {cosine * s.cosh, V{}}};
}

enum class Inverse { asin, acos, atan, asinh, acosh, atanh };
// How a block is computed: double _HA; double _50 and single _21; doubles that become singles.
enum class Effort { exact, plain, wide };

template <Inverse F, Effort E, class V>
struct InverseSteps {
  using T = simd::lane_t<V>;
  static constexpr bool tangent = F == Inverse::atan || F == Inverse::atanh;
  static constexpr bool exchanged = F == Inverse::atan || F == Inverse::asinh;
  static constexpr bool cosine = F == Inverse::acos || F == Inverse::acosh;
  static constexpr bool angle_first = F == Inverse::asin || F == Inverse::acos || F == Inverse::atan;
  static constexpr bool exact = E == Effort::exact;

  // What both parts come from: the slope y : x, and what x, of arc cosines y, lacks; the pair whose logarithm is the
  // length; what the length is where `small`, of about its size, is below 2^-28.
  struct Begun {
    V y, x, low;
    numeric::Pair<V> h;
    V small, small_length;
  };
  QOR_INLINE static Roots<V> roots(V re, V im) {
    const V x = simd::abs(exchanged ? im : re), y = simd::abs(exchanged ? re : im);
    if constexpr (exact) {
      return complex::roots(circle(x, square_parts(y)), y);
    } else {
      return complex::roots<V>({(x - T(1)) * (x + T(1)) + y * y, V{}}, y);
    }
  }
  QOR_INLINE static Begun begin(V re, V im, [[maybe_unused]] const Roots<V>& begun, simd::Bits<V>& usual) {
    using namespace simd;
    const V x = abs(exchanged ? im : re), y = abs(exchanged ? re : im);
    // Squares of squares neither overflow nor vanish; with singles in doubles they never do, but at the poles.
    constexpr bool single = sizeof(T) == 4, any = E == Effort::wide;
    constexpr T least = any ? T(0x1p-320) : single ? T(0x1p-50) : T(0x1p-400);
    constexpr T most = any ? T(0x1p400) : single ? T(0x1p60) : T(0x1p500);
    Begun s;
    V size;
    if constexpr (tangent && exact) {
      const SquareParts<V> yy = square_parts(y);
      const auto w = numeric::two_sum(splat<V>(1), -x);
      const SquareParts<V> ww = square_parts(w.hi);
      const auto sum = numeric::two_sum(ww.square, yy.square);
      const auto p = numeric::quick_two_sum(sum.hi, sum.lo + ((ww.rest + yy.rest) + (w.hi + w.hi) * w.lo));
      size = p.hi;
      const V inverse = T(1) / p.hi, x4 = x * T(4), q = x4 * inverse;
      const V rest = left_over(x4, q, numeric::upper_half(q), p.hi, numeric::upper_half(p.hi)) - q * p.lo;
      const V q_low = as<V>(bits(rest * inverse) & lt(splat<V>(least_exact<T>), x));
      s.h = one_plus(q);
      s.h.lo += q_low;
      s.small = q;
      s.small_length = q + (q_low - q * q * T(0.5));
      // 1 - x^2 - y^2 = 2 w - |1 - z|^2, whose error next to |1 - z^2| is as small.
      const auto e = numeric::two_sum(w.hi + w.hi, -p.hi);
      s.y = y + y;
      s.x = e.hi;
      s.low = flip_sign(e.lo + ((w.lo + w.lo) - p.lo), sign(e.hi));
    } else if constexpr (tangent) {
      const V w = T(1) - x;
      size = w * w + y * y;
      s.h = one_plus(x * T(4) / size);
      s.y = y + y;
      s.x = (w + w) - size;
    } else {
      const auto t = exact ? inverse_sine_exact(begun, y) : inverse_sine_plain(begun, y);
      size = begun.m;
      s.y = cosine ? t.leg.hi : x;
      s.x = cosine ? re : t.leg.hi;
      if constexpr (exact) {
        s.low = t.leg.lo;
        s.h = numeric::quick_two_sum(t.cosh.hi, t.sinh.hi);
        s.h.lo += t.sinh.lo + t.cosh.lo;
        s.small = t.sinh.hi;
        s.small_length = t.sinh.hi + t.sinh.lo;
      } else {
        s.h = AsinhForm::plain(t.sinh.hi, t.sinh.hi * t.sinh.hi, t.cosh.hi);
      }
    }
    usual = le(splat<V>(least), size) & le(size, splat<V>(most));
    return s;
  }
  QOR_INLINE static V length(const Begun& s) {
    V l;
    if constexpr (sizeof(T) == 4) {
      l = tfn::Ln<Accuracy::low>::of_pair(s.h);
    } else if constexpr (E == Effort::wide) {
      l = tfn::Ln<Accuracy::low>::of_pair_for_single(s.h);
    } else {
      l = tfn::Ln<Accuracy::high>::of_pair(s.h);
    }
    if constexpr (exact) l = simd::select(simd::lt(s.small, simd::splat<V>(0x1p-28)), s.small_length, l);
    return tangent ? l * T(0.25) : l;
  }
  QOR_INLINE static V angle(const Begun& s) {
    using namespace simd;
    V a;
    if constexpr (sizeof(T) == 4) {
      Bits<V> ignored;
      tfn::Atan2<Accuracy::low>::fast(s.y, s.x, nullptr, &a, ignored);
    } else {
      const V ax = abs(s.x), inverse = T(1) / ax, z = slope_row(s.y, inverse);
      const auto low = [&](V p, V q) { return cosine ? s.low * p : -(s.low * q); };
      if constexpr (exact) {
        a = turn_over(slope_angle<Accuracy::high>(s.y, ax, inverse, z, low), lt(s.x, V{}));
      } else {
        a = turn_over(slope_angle<Accuracy::low>(s.y, ax, inverse, z), lt(s.x, V{}));
      }
    }
    return tangent ? a * T(0.5) : a;
  }
  // The signs of the parts.
  QOR_INLINE static V real_part(V size, V re) { return cosine ? size : simd::flip_sign(size, simd::sign(re)); }
  QOR_INLINE static V imaginary_part(V size, V im) {
    return simd::flip_sign(size, F == Inverse::acos ? simd::sign(im) ^ simd::sign_bit<V> : simd::sign(im));
  }

  // Which part is the angle, with its sign.
  QOR_INLINE static V angle_part(V a, V re, V im) { return angle_first ? real_part(a, re) : imaginary_part(a, im); }
  QOR_INLINE static V length_part(V l, V re, V im) { return angle_first ? imaginary_part(l, im) : real_part(l, re); }

  // In short passes: each alone is a long chain of square roots and quotients, of which the processor then holds several
  // vectors at a time.
  QOR_INLINE static void run(const Numbers<T>& z, Numbers<T>& r, Usual<T>& usual, int n) {
    constexpr int width = simd::lanes<V>;
    Begun begun[block / width];
    Roots<V> root[block / width];
    if constexpr (!tangent) {
      for (int i = 0; i < n; i += width) root[i / width] = roots(z.re(i), z.im(i));
    }
    for (int i = 0; i < n; i += width) {
      simd::Bits<V> good;
      begun[i / width] = begin(z.re(i), z.im(i), root[i / width], good);
      usual.set(i, good);
    }
    auto &angles = angle_first ? r.re : r.im, &lengths = angle_first ? r.im : r.re;
    for (int i = 0; i < n; i += width) lengths.set(i, length_part(length(begun[i / width]), z.re(i), z.im(i)));
    for (int i = 0; i < n; i += width) angles.set(i, angle_part(angle(begun[i / width]), z.re(i), z.im(i)));
  }
};

// Any single number.
template <Inverse F>
struct InverseElement {
  using Steps = InverseSteps<F, Effort::exact, simd::VecD>;
  QOR_COLD static int element(double re, double im, double* r) {
    using namespace simd;
    const double x = std::fabs(Steps::exchanged ? im : re), y = std::fabs(Steps::exchanged ? re : im);
    const VecD u = splat<VecD>(re), v = splat<VecD>(im);
    int status = TFN_STATUS_OK;
    double angle, length;
    if (std::isnan(x) || std::isnan(y)) {
      without_number(x, y, angle, length);
    } else if (x >= 0x1p254 || y >= 0x1p254) {
      far_away(re, x, y, angle, length);
    } else if (x == 1 && y < 0x1p-200) {
      status = beside_one(re, y, angle, length);
    } else {
      VecU64 usual;
      const auto begun = Steps::begin(u, v, Steps::roots(u, v), usual);
      angle = Steps::angle(begun)[0];
      length = Steps::length(begun)[0];
    }
    r[Steps::angle_first ? 0 : 1] = Steps::angle_part(splat<VecD>(angle), u, v)[0];
    r[Steps::angle_first ? 1 : 0] = Steps::length_part(splat<VecD>(length), u, v)[0];
    return status;
  }

 private:
  static constexpr double right = right_angle<double>;

  static void without_number(double x, double y, double& angle, double& length) {
    angle = length = x + y;
    if constexpr (Steps::tangent) {
      if (std::isinf(y)) angle = right;
      if (std::isinf(x) || std::isinf(y) || x == 0) length = 0;
    } else {
      if (x == 0) angle = Steps::cosine ? right : 0;
      if (std::isinf(x) || std::isinf(y)) length = endless;
    }
  }
  // ln 2|z| and the angle of z; x/|z|^2 and a right angle.
  static void far_away(double re, double x, double y, double& angle, double& length) {
    using namespace simd;
    const bool infinite = std::isinf(x) || std::isinf(y);
    const auto half = tfn::Hypot<Accuracy::high>::scaled(splat<VecD>(x * 0.5), splat<VecD>(y * 0.5));
    const auto [hi, lo] = half.length;
    if constexpr (Steps::tangent) {
      const double half_size = (hi[0] + lo[0]) * half.back[0];
      length = infinite ? 0 : x * 0.5 / half_size / half_size * 0.5;
      angle = right;
    } else {
      tfn::Atan2<Accuracy::high>::element(Steps::cosine ? y : x, Steps::cosine ? re : y, &angle);
      double at[lanes<VecD>];
      store(at, hi);
      // Half the length was scaled by 2^-700.
      const VecD log = tfn::Ln<Accuracy::high>::core(hi, at, splat<VecD>(0x1p52 + 1023 - 702), lo);
      length = infinite ? endless : log[0];
    }
  }
  // z = 1 + i y: everything is the square root of y; or ln(4/y^2)/4 and an eighth of a turn.
  static int beside_one(double re, double y, double& angle, double& length) {
    if constexpr (Steps::tangent) {
      angle = y == 0 ? 0 : right / 2;
      length = y == 0 ? endless : -0.5 * tfn::Ln<Accuracy::high>::single_lane(y * 0x1p600, 601);
      return y == 0 ? TFN_STATUS_SING : TFN_STATUS_OK;
    } else {
      length = std::sqrt(y);
      angle = !Steps::cosine ? right : re < 0 ? 2 * right : length;
      return TFN_STATUS_OK;
    }
  }
};

template <Inverse F, class T, Accuracy A>
struct InverseFunction : Bounds<T, A>, InverseElement<F> {
  using Number = std::conditional_t<sizeof(T) == 4 && A == Accuracy::low, float, double>;
  // Low accuracy keeps the parts too: 3.7 found.
  static constexpr double part_bound = A == Accuracy::high ? 4 : 5;
  static constexpr int inputs = 1;
  static constexpr double filler = 0.5;
  static constexpr Effort effort = A == Accuracy::low ? Effort::plain : sizeof(T) == 4 ? Effort::wide : Effort::exact;
  QOR_INLINE static void run(const Numbers<Number>& z, Numbers<Number>& r, Usual<Number>& usual, int n) {
    InverseSteps<F, effort, simd::Vec<Number>>::run(z, r, usual, n);
  }
};

template <class T, Accuracy A>
using Asin = InverseFunction<Inverse::asin, T, A>;
template <class T, Accuracy A>
using Acos = InverseFunction<Inverse::acos, T, A>;
template <class T, Accuracy A>
using Atan = InverseFunction<Inverse::atan, T, A>;
template <class T, Accuracy A>
using Asinh = InverseFunction<Inverse::asinh, T, A>;
template <class T, Accuracy A>
using Acosh = InverseFunction<Inverse::acosh, T, A>;
template <class T, Accuracy A>
using Atanh = InverseFunction<Inverse::atanh, T, A>;

}  // namespace qor::tfn::complex
