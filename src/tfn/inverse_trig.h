// Arc sine, arc cosine, arc tangent, and the angle of a point. Tables reduce to the small difference from a row's
// angle, by addition theorems in which nothing cancels that isn't exact:
//   atan(y/x) - atan(v/u) = atan r,  r = (y u - x v)/(x u + y v)
//   asin x - asin S = asin d,        d = (x - S) (x + S)/(x C + S sqrt(1 - x^2)),  C = sqrt(1 - S^2)
//   acos x - acos S = asin(-d)
// A row lies within 1/128 (doubles) or 1/256 (singles) of the angle, and so the few roundings in r and d weigh little:
// no second parts are carried but the row's own. In row 0, the angle 0, r and d are exact to begin with; there the
// angle of a point takes the remainder of its quotient, and the arc cosine next to 1 that of its square root.
// - double _HA: tables: 0.53 ulp. A polynomial of 13 terms with a square root in two parts was estimated at twice the
//   work.
// - double _50: arc tangents by the same tables, the quotient without its remainder: 0.53 ulp, of points 1.01; arc sine
//   and cosine by the square root of (1 - |x|)/2 above 1/2 and one polynomial: 1.9 and 1.2 ulp. (Their tables: 0.51 ulp
//   in 1.2 times the time.)
// - single _HA: the tables in single precision with twice the rows: 0.509 ulp.
// - single _21: as double _50 without tables: 2.02 ulp; arc tangents by one row's angle and a division, 1.87 ulp, of
//   points by the quotient of the smaller and the larger.
#pragma once

#include <bit>
#include <cmath>
#include <limits>

#include "numeric/float_parts.h"
#include "numeric/pair.h"
#include "qor/tfn.h"
#include "simd/vec.h"
#include "tfn/accuracy.h"
#include "tfn/inverse_trig_table.h"

namespace qor::tfn {

// The row for the number z > 0 in each lane, clamped by the caller to 2^-6 less a part .. the table's end.
template <class T, std::size_t N, class V>
QOR_INLINE auto arc_rows(const std::array<ArcRow<T>, N>& table, V z) {
  constexpr int log2_row = ArcTraits<T>::wide ? 5 : 4, fraction_bits = ArcTraits<T>::wide ? 20 : 23;
  constexpr int shift = fraction_bits - ArcTraits<T>::log2_parts - log2_row;
  constexpr std::uint32_t bias = ArcTraits<T>::wide ? 1023 : 127, row_bytes = sizeof(ArcRow<T>);
  static_assert(row_bytes == 1 << log2_row);
  constexpr std::uint32_t row_0 = ((bias + arc_first_octave) << ArcTraits<T>::log2_parts) - 1;
  const simd::InMemory<V> copy(z);
  return simd::gather_rows<4>(&table[0].hi, [&](int lane) {
    return (numeric::high_word(copy + lane) >> shift & ~(row_bytes - 1)) - row_0 * row_bytes;
  });
}
template <class T>
inline constexpr T arc_lowest = T(0x1p-6) - T(0x1p-7) / ArcTraits<T>::parts;

// (asin d)/d - 1 and (atan r)/r - 1 over the square t <= 2^-12, by tools/fit/inverse_trig.sollya, relative errors 2^-60
// and 2^-58; in singles two terms of the series, 2^-39 and 2^-38.
template <class V>
QOR_INLINE V small_asin(V t) {
  if constexpr (sizeof(simd::lane_t<V>) == 8) {
    return t * simd::horner(t, 0x1.6dd4bf716190fp-5, 0x1.333332a88f222p-4, 0x1.55555555560c2p-3);
  } else {
    return t * simd::horner(t, 3.0f / 40, 1.0f / 6);
  }
}
template <class V>
QOR_INLINE V small_atan(V t) {
  if constexpr (sizeof(simd::lane_t<V>) == 8) {
    return t * simd::horner(t, -0x1.2476f8bbfb05ep-3, 0x1.9999989c44983p-3, -0x1.5555555554076p-2);
  } else {
    return t * simd::horner(t, 1.0f / 5, -1.0f / 3);
  }
}

template <class T>
constexpr T quiet_nan = std::numeric_limits<T>::quiet_NaN();

// asin |x| or acos |x|, in two stages.
template <class V>
struct ArcBegun {
  V x, root, z;
};
template <bool Cosine, class V>
QOR_INLINE ArcBegun<V> begin_arc(V x) {
  using namespace simd;
  using T = lane_t<V>;
  const V ax = abs(x), below = T(1) - ax, above = T(1) + ax, root = sqrt(below * above);
  return {x, root, max(Cosine ? below + root : above - root, splat<V>(arc_lowest<T>))};
}
// As hi + lo; S - |x| takes the place of |x| - S.
template <bool Cosine, class V>
QOR_INLINE numeric::Pair<V> finish_arc(const ArcBegun<V>& begun) {
  using namespace simd;
  using T = lane_t<V>;
  const V ax = abs(begun.x);
  const auto [hi, lo, s, c] = arc_rows(arc_table<T, Cosine>, begun.z).column;
  V divisor = ax * c + begun.root * s;
  if constexpr (!Cosine) divisor = max(divisor, splat<V>(std::numeric_limits<T>::denorm_min()));  // x = 0
  const V d = (Cosine ? s - ax : ax - s) * ((ax + s) / divisor);
  return {hi, d + (lo + d * small_asin(d * d))};
}
// Low accuracy: t = x^2, or (1 - |x|)/2 if that is less; asin r - r for r = sqrt t <= 1/2, by
// tools/fit/inverse_trig.sollya, relative errors 2^-55.8 and 2^-27.3.
template <class V>
QOR_INLINE V arc_low_square(V ax) {
  using T = simd::lane_t<V>;
  return simd::min(ax * ax, T(0.5) - T(0.5) * ax);
}
template <class V>
QOR_INLINE V arc_low(V r, V t) {
  if constexpr (sizeof(simd::lane_t<V>) == 8) {
    const V t2 = t * t;  // two short chains instead of a long one
    const V odd = simd::horner(t2, 0x1.056cbe7951fc9p-5, 0x1.3ff33c5bda34p-6, 0x1.8ec2b52fd4e0bp-7,
                               0x1.1c6be0fcccd48p-6, 0x1.f1c72c38610c8p-6, 0x1.333333336e7cbp-4);
    const V even = simd::horner(t2, -0x1.09d10e30d7af3p-6, 0x1.abd1991033d6bp-8, 0x1.c6fdcd89094a1p-7,
                                0x1.6e89f44cb6bc5p-6, 0x1.6db6db427c841p-5, 0x1.555555555539p-3);
    return r * (t * (odd * t + even));
  } else {
    return r * (t * simd::horner(t, 0x1.596d28p-5f, 0x1.8c283cp-6f, 0x1.747e4ap-5f, 0x1.3301e4p-4f, 0x1.5555c8p-3f));
  }
}
// pi/2 rounded, and what it lacks.
template <class T>
inline constexpr T right_angle = T(half_pi.hi);
template <class T>
inline constexpr T right_angle_rest = T((half_pi.hi - right_angle<T>)+half_pi.lo);
// c in the lanes of m, else 0.
template <class V>
QOR_INLINE V where(simd::Bits<V> m, simd::lane_t<V> c) {
  return simd::as<V>(simd::bits(simd::splat<V>(c)) & m);
}

// The angle, or pi less the angle.
template <class V>
QOR_INLINE V turn_over(numeric::Pair<V> angle, simd::Bits<V> negative) {
  using T = simd::lane_t<V>;
  const simd::Bits<V> turn = negative & simd::sign_bit<V>;
  return (where<V>(negative, pi_row<T>.hi) + simd::flip_sign(angle.hi, turn)) +
         (where<V>(negative, pi_row<T>.lo) + simd::flip_sign(angle.lo, turn));
}

template <Accuracy A>
struct Asin {
  static constexpr int results = 1;
  static constexpr double filler = 0.5;
  // Single _21 around 0.84: the rounding of pi/2 - 2 r, above 1, counts twice in a result below 1.
  template <class T>
  static constexpr double bound = sizeof(T) == 4 && A == Accuracy::low ? 2.1 : default_bound<T>(A);

  template <class V>
  QOR_INLINE static auto begin(V x) requires(A == Accuracy::high) {
    return begin_arc<false>(x);
  }
  template <class V>
  QOR_INLINE static void finish(const ArcBegun<V>& begun, V* y, simd::Bits<V>& usual) {
    using namespace simd;
    const auto [hi, rest] = finish_arc<false>(begun);
    usual = le(abs(begun.x), splat<V>(1));
    y[0] = flip_sign(hi + rest, sign(begun.x));
  }
  template <class V>
  QOR_INLINE static void fast(V x, const simd::lane_t<V>*, V* y, simd::Bits<V>& usual) {
    using namespace simd;
    using T = lane_t<V>;
    if constexpr (A == Accuracy::high) {
      finish(begin(x), y, usual);
    } else {
      const V ax = abs(x);
      usual = le(ax, splat<V>(1));
      // asin r, or pi/2 - 2 asin r.
      // The root of a square is the number, unless the square is too small.
      constexpr T least = sizeof(T) == 8 ? T(0x1p-960) : T(0x1p-100);
      const V t = arc_low_square(ax), root = min(ax, sqrt(max(t, splat<V>(least))));
      const Bits<V> upper = lt(splat<V>(T(0.5)), ax);
      const V r = root * as<V>(bits(splat<V>(1)) ^ (upper & (bits(splat<V>(1)) ^ bits(splat<V>(-2)))));
      const V angle = (where<V>(upper, right_angle<T>) + r) + (where<V>(upper, right_angle_rest<T>) + arc_low(r, t));
      y[0] = flip_sign(angle, sign(x));
    }
  }
  template <class T>
  static int element(T x, T* y) {
    y[0] = x != x ? x + x : quiet_nan<T>;
    return x != x ? TFN_STATUS_OK : TFN_STATUS_ERRDOM;
  }
};

template <Accuracy A>
struct Acos {
  static constexpr int results = 1;
  static constexpr double filler = 0.5;
  template <class T>
  static constexpr double bound = default_bound<T>(A);

  template <class V>
  QOR_INLINE static auto begin(V x) requires(A == Accuracy::high) {
    return begin_arc<true>(x);
  }
  // acos(-x) = pi - acos x. Above 1 - 2^-13 the result is about the square root, which has to be
  // more exact.
  template <class V>
  QOR_INLINE static void finish(const ArcBegun<V>& begun, V* y, simd::Bits<V>& usual) {
    using namespace simd;
    using T = lane_t<V>;
    usual = le(abs(begun.x), splat<V>(1)) & le(begun.x, splat<V>(end_of_table<T>));
    y[0] = turn_over(finish_arc<true>(begun), lt(begun.x, V{}));
  }
  template <class V>
  QOR_INLINE static void fast(V x, const simd::lane_t<V>*, V* y, simd::Bits<V>& usual) {
    using namespace simd;
    using T = lane_t<V>;
    if constexpr (A == Accuracy::high) {
      finish(begin(x), y, usual);
    } else {
      const V ax = abs(x);
      usual = le(ax, splat<V>(1));
      // pi/2 - asin x, or 2 asin r, or pi - 2 asin r.
      const Bits<V> negative = lt(x, V{}), upper = lt(splat<V>(T(0.5)), ax);
      const V t = arc_low_square(ax), r = sqrt(t), a = r + arc_low(r, t);
      const V base = select(upper, where<V>(negative, 2 * right_angle<T>), splat<V>(right_angle<T>));
      y[0] = base + flip_sign(a + as<V>(bits(a) & upper), ~(negative ^ upper) & sign_bit<V>);
    }
  }
  template <class T>
  static constexpr T end_of_table = T(1) - T(0x1p-13);

  // x = 1 - w, w <= 2^-13: acos x = sqrt(2 w) (1 + w/12 + 3/160 w^2 + 5/896 w^3 + 35/18432 w^4), the root with its
  // remainder; the next term is 2^-75.
  template <class V>
  QOR_COLD static void retry(const V& x, V* y, simd::Bits<V>& usual) requires(A == Accuracy::high) {
    using namespace simd;
    using T = lane_t<V>;
    const Bits<V> close = lt(splat<V>(end_of_table<T>), x) & le(x, splat<V>(1));
    const V w = T(1) - x, root = sqrt(w + w), upper = numeric::upper_half(root), lower = root - upper;
    const V remainder = ((w + w) - upper * upper) - lower * (root + upper);
    const V series = horner(w, T(35.0 / 18432), T(5.0 / 896), T(3.0 / 160), T(1.0 / 12)) * w;
    const V result = root + (remainder / max(root + root, splat<V>(T(0x1p-90))) + root * series);
    y[0] = select(close, result, y[0]);
    usual |= close;
  }
  template <class T>
  static int element(T x, T* y) {
    return Asin<A>::element(x, y);
  }
};

template <Accuracy A>
struct Atan {
  static constexpr int results = 1;
  static constexpr double filler = 1;
  template <class T>
  static constexpr double bound = default_bound<T>(A);

  // Every argument is usual: beyond 2^60 the arc tangent stands still.
  template <class V>
  QOR_INLINE static void fast(V x, const simd::lane_t<V>*, V* y, simd::Bits<V>& usual) {
    using namespace simd;
    using T = lane_t<V>;
    usual = ~Bits<V>{};
    if constexpr (sizeof(T) == 4 && A == Accuracy::low) {
      // atan t, or atan b + atan t with t = (|x| - b)/(1 + b |x|); by tools/fit/inverse_trig.sollya, relative error
      // 2^-23.9, half of an ulp where it is largest.
      const V ax = min(splat<V>(T(0x1p60)), abs(x));
      const Bits<V> steep = lt(splat<V>(steep_from), ax);
      const V b = where<V>(steep, middle), t = (ax - b) / (T(1) + b * ax), t2 = t * t;
      const V p = horner(t2, -0x1.399ebp-5f, 0x1.7aed02p-4f, -0x1.1dd02ep-3f, 0x1.990dfep-3f, -0x1.555378p-2f);
      y[0] = flip_sign(where<V>(steep, atan_middle) + (t + t * (t2 * p)), sign(x));
    } else {
      const V ax = min(splat<V>(T(0x1p60)), abs(x));
      const V z = min(max(ax, splat<V>(arc_lowest<T>)), splat<V>(64));
      const auto [hi, lo, u, v] = arc_rows(atan_table<T>, z).column;
      const V r = (ax * u - v) / (ax * v + u);
      y[0] = flip_sign(hi + (r + (lo + r * small_atan(r * r))), sign(x));
    }
  }
  // b, whose arc tangent is almost a single: it lacks 2^-36. Of such b one with which pi/4 and pi/2 come out rounded.
  // |t| is less than 0.63 everywhere, and 0.5 where |x| - b is negative, where the results are small and so the
  // errors of t count most; there |x| - b, less than 1, is exact.
  static constexpr float middle = 0x1.9c11dp+0f, atan_middle = 0x1.03d02ap+0f, steep_from = 0.62f;
  // atan t - t, 0 <= t <= 1, for Atan2; by tools/fit/inverse_trig.sollya, relative error 2^-25.7.
  template <class V>
  QOR_INLINE static V atan_low(V t) {
    const V t2 = t * t;
    // The small terms in two short chains, the large ones one after the other.
    const V t4 = t2 * t2;
    const V odd = simd::horner(t4, 0x1.7ed232p-9f, 0x1.61fddap-5f, 0x1.b4e12ap-4f);
    const V even = simd::horner(t4, -0x1.0c2c14p-6f, -0x1.3556b6p-4f, -0x1.230adcp-3f);
    const V p = ((odd * t2 + even) * t2 + 0x1.9978f4p-3f) * t2 - 0x1.5554dcp-2f;
    return t * (t2 * p);
  }
  template <class T>
  static int element(T x, T* y) {
    y[0] = x + x;
    return TFN_STATUS_OK;
  }
};

// What selects the row of an angle, y/x from 1/x.
template <class V>
QOR_INLINE V slope_row(V y, V inverse) {
  using T = simd::lane_t<V>;
  return simd::min(simd::max(y * inverse, simd::splat<V>(arc_lowest<T>)), simd::splat<V>(64));
}
// Products of the halves of larger numbers and of ordinary ones are exact.
template <class T>
inline constexpr T least_exact = sizeof(T) == 8 ? T(0x1p-900) : T(0x1p-70f);
// atan(y/x) as hi + lo, x and y positive or 0, inverse = 1/x and z from it. What y and x lack may follow: more(p, q) is
// that of p y - q x. In high accuracy row 0 takes the remainder of its quotient, y - r x, exactly, where y isn't so
// small that its products underflow.
template <Accuracy A, class V, class... More>
QOR_INLINE numeric::Pair<V> slope_angle(V y, V x, V inverse, V z, More... more) {
  using namespace simd;
  const auto [hi, lo, u, v] = arc_rows(atan_table<lane_t<V>>, z).column;
  const V x_upper = numeric::upper_half(x), x_lower = x - x_upper;
  const V r = (((y * u - x_upper * v) - x_lower * v) + ... + more(u, v)) / (x * u + y * v);
  V small = lo + r * small_atan(r * r);
  if constexpr (A == Accuracy::high) {
    const V upper = numeric::upper_half(r), lower = r - upper;
    const V rest = (((y - upper * x_upper) - upper * x_lower) - lower * x_upper) - lower * x_lower;
    const Bits<V> exact = eq(v, V{}) & lt(splat<V>(least_exact<lane_t<V>>), y);
    small += as<V>(bits((rest + ... + more(splat<V>(1), r)) * inverse) & exact);
  }
  return {hi, r + small};
}

// atan2(a, b), the angle of the point (b, a).
template <Accuracy A>
struct Atan2 {
  static constexpr int results = 1;
  static constexpr double filler = 1;
  template <class T>
  static constexpr double bound = default_bound<T>(A);

  // Beyond these the products could lose bits or overflow.
  template <class T>
  static constexpr T least = sizeof(T) == 8 ? T(0x1p-450) : T(0x1p-60f);

  template <class V>
  struct Begun {
    V y, x, inverse, z;
  };
  template <class V>
  QOR_INLINE static Begun<V> begin(V y, V x) requires(sizeof(simd::lane_t<V>) == 8 || A == Accuracy::high) {
    using namespace simd;
    using T = lane_t<V>;
    const V inverse = T(1) / abs(x);
    return {y, x, inverse, slope_row(abs(y), inverse)};
  }
  template <class V>
  QOR_INLINE static void finish(const Begun<V>& begun, V* result, simd::Bits<V>& usual) {
    using namespace simd;
    using T = lane_t<V>;
    const V ax = abs(begun.x), ay = abs(begun.y), larger = max(ax, ay);
    const V if_flat = as<V>(bits(ax) & eq(ay, V{}));
    usual = le(splat<V>(least<T>), max(ay, if_flat)) & le(larger, splat<V>(1 / least<T>));
    const V angle = turn_over(slope_angle<A>(ay, ax, begun.inverse, begun.z), lt(begun.x, V{}));
    result[0] = flip_sign(angle, sign(begun.y));
  }

  template <class V>
  QOR_INLINE static void fast(V y, V x, const simd::lane_t<V>*, V* result, simd::Bits<V>& usual) {
    using namespace simd;
    using T = lane_t<V>;
    if constexpr (sizeof(T) == 8 || A == Accuracy::high) {
      finish(begin(y, x), result, usual);
    } else {
      const V ax = abs(x), ay = abs(y), larger = max(ax, ay);
      const Bits<V> negative = lt(x, V{});
      const V smaller = min(ax, ay), t = smaller / larger;
      // A NaN, infinity or overflow in the sum; 0/0; quotients below the normal numbers.
      usual = lt(ax + ay, splat<V>(std::numeric_limits<T>::infinity())) &
              (le(splat<V>(std::numeric_limits<T>::min()), t) | (eq(smaller, V{}) & eq(t, V{})));
      const Bits<V> steep = lt(ax, ay);
      // t and what is left of its arc tangent, from 0, pi/2 or pi.
      const auto base = [steep, negative](T c) { return select(steep, splat<V>(c), where<V>(negative, 2 * c)); };
      const Bits<V> turn = (steep ^ negative) & sign_bit<V>;
      const V angle = (base(right_angle<T>) + flip_sign(t, turn)) +
                      (base(right_angle_rest<T>) + flip_sign(Atan<A>::atan_low(t), turn));
      result[0] = flip_sign(angle, sign(y));
    }
  }

  // Singles out of the range above are well within that of doubles; results below the normal numbers are left to
  // element.
  QOR_COLD static void retry(const simd::VecF& y, const simd::VecF& x, simd::VecF* result, simd::VecU32& usual) {
    using namespace simd;
    VecD low, high;
    VecU64 low_usual, high_usual;
    Atan2<Accuracy::high>::fast(widen_low(y), widen_low(x), nullptr, &low, low_usual);
    Atan2<Accuracy::high>::fast(widen_high(y), widen_high(x), nullptr, &high, high_usual);
    const VecF wide = narrow(low, high), size = abs(wide);
    const VecU32 good = as<VecU32>(evens(as<VecF>(low_usual), as<VecF>(high_usual))) &
                        (eq(y, VecF{}) | le(splat<VecF>(std::numeric_limits<float>::min()), size));
    result[0] = select(usual, result[0], wide);
    usual |= good;
  }

  static int element(double y, double x, double* result) {
    using L = std::numeric_limits<double>;
    using namespace simd;
    if (x != x || y != y) {
      result[0] = x + y;
      return TFN_STATUS_OK;
    }
    double ax = std::bit_cast<double>(std::bit_cast<std::uint64_t>(x) & ~sign_bit<VecD>);
    double ay = std::bit_cast<double>(std::bit_cast<std::uint64_t>(y) & ~sign_bit<VecD>);
    const bool flat = ay == 0 || (ax > L::max() && ay <= L::max());
    const bool left = std::bit_cast<std::int64_t>(x) < 0;
    if (flat) {
      // On the axis; the core's limits need not hold.
      ax = 1;
      ay = 0;
    } else if (ay > L::max()) {
      ax = ax > L::max() ? 1 : 0;
      ay = 1;
    } else {
      // Of quotients below 2^-100 the arc tangent is the quotient, and the angle with it not other than pi.
      if (ay * 0x1p100 < ax) {
        if (!left) {
          result[0] = y / x;
          return result[0] < L::min() && result[0] > -L::min() ? TFN_STATUS_UNDERFLOW : TFN_STATUS_OK;
        }
        ay = 0;
      } else if (ax * 0x1p100 < ay) {
        ax = 0;
      }
      for (; ax > 1 / least<double> || ay > 1 / least<double>; ax *= 0x1p-400, ay *= 0x1p-400) {
      }
      for (; ax < least<double> && ay < least<double>; ax *= 0x1p400, ay *= 0x1p400) {
      }
    }
    VecD angle;
    VecU64 usual;
    fast(splat<VecD>(ay), splat<VecD>(left ? -ax : ax), nullptr, &angle, usual);
    result[0] = std::bit_cast<std::int64_t>(y) < 0 ? -angle[0] : angle[0];
    return TFN_STATUS_OK;
  }
  static int element(float y, float x, float* result) {
    double wide;
    int status = Atan2<Accuracy::high>::element(double(y), double(x), &wide);
    result[0] = static_cast<float>(wide);
    if (wide != 0 && wide < std::numeric_limits<float>::min() && -wide < std::numeric_limits<float>::min())
      status = TFN_STATUS_UNDERFLOW;
    return status;
  }
};

}  // namespace qor::tfn
