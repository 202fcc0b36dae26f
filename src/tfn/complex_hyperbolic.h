// Hyperbolic and circular sine and cosine of complex numbers, from sinh a, cosh a, sin b and cos b:
//   sinh(a + ib) = sinh a cos b + i cosh a sin b,  cosh(a + ib) = cosh a cos b + i sinh a sin b,
//   sin(b + ia) = cosh a sin b + i sinh a cos b,   cos(b + ia) = cosh a cos b - i sinh a sin b,
// and the tangents,
//   tanh(a + ib) = (sinh a cosh a + i sin b cos b) / (sinh^2 a + cos^2 b),  tan(b + ia) with its parts exchanged,
// in which nothing cancels: not next to the poles either (after W. Kahan, Branch cuts for complex elementary functions,
// 1987).
// - double _HA: factors unrounded, in heads of 26 bits and tails; of the tangents the quotient of heads, and what that
//   leaves, which is exact.
// - double _50: factors rounded.
// - singles: in double precision.
// From |a| = 703 on sinh a and cosh a are e^|a|/2, taken apart from its power of two (T. E. Hull, T. F. Fairgrieve,
// P. T. P. Tang, ACM TOMS 20, 1994); the tangents stand at +-1 from 340 on, their small part at e^(-2|a|) 4 sin b cos b.
#pragma once

#include "tfn/complex_map.h"
#include "tfn/complex_scaled.h"
#include "tfn/complex_trig.h"
#include "tfn/hyperbolic.h"

namespace qor::tfn::complex {

// sinh |a| and cosh a, |a| < 703, as hi + lo (high), or rounded, in hi: once only where the table's second parts are
// taken along.
struct HyperbolicPair {
  VecD sinh, sinh_lo, cosh, cosh_lo;
};
template <Grade G, bool Tails>
QOR_INLINE HyperbolicPair hyperbolic_pair(VecD ax) {
  using namespace simd;
  constexpr double shift = exp_shift - exp_rows;
  HyperbolicPair y{};
  if constexpr (G == Grade::single) {
    // As SinhCosh::wide.
    constexpr double unit = 1 / exp_per_step;
    const VecD t = ax * exp_per_step, shifted = t + shift, f = t - (shifted - shift), f2 = f * f;
    const VecD opposite = splat<VecD>(2 * shift) - shifted;
    const VecD v = exp_scale(LowHalves<VecU64>(bits(shifted)), shifted);
    const VecD w = exp_scale(LowHalves<VecU64>(bits(opposite)), opposite);
    const VecD sum = v + w, difference = v - w;
    const VecD s = f * (f2 * (unit * unit * unit / 6) + unit), c = f2 * (unit * unit / 2);
    y.sinh = difference + (difference * c + sum * s);
    y.cosh = sum + (sum * c + difference * s);
  } else {
    constexpr bool high = G == Grade::high;
    const auto [x, shifted, r] = tfn::Sinh<Accuracy::high>::begin(ax);
    const VecD opposite = splat<VecD>(2 * shift) - shifted;
    const LowHalves<VecU64> row(bits(shifted)), opposite_row(bits(opposite));
    const VecD v = exp_scale(row, shifted), w = exp_scale(opposite_row, opposite);
    const VecD sum = v + w, difference = v - w, r2 = r * r;
    const VecD s = r + r * r2 * horner(r2, 1.0 / 120, 1.0 / 6), c = r2 * (r2 * (1.0 / 24) + 0.5);
    y.sinh_lo = difference * c + sum * s;
    y.cosh_lo = sum * c + difference * s;
    if constexpr (Tails) {
      const VecD v_lo = v * exp_tail(row), w_lo = w * exp_tail(opposite_row);
      y.sinh_lo += (v_lo - w_lo) + ((v - difference) - w);
      y.cosh_lo += (v_lo + w_lo) + (w - (sum - v));
    }
    const VecU64 small = le(ax, splat<VecD>(high ? 0.125 : 0.5));
    const VecD t = ax * ax;
    constexpr auto& f = sinh_fit;
    constexpr auto& g = sinh_low_fit;
    VecD p;
    if constexpr (high) {
      p = horner(t, f[0], f[1], f[2], f[3]);
    } else {
      p = horner(t, g[0], g[1], g[2], g[3], g[4]);
    }
    y.sinh = select(small, ax, difference);
    y.sinh_lo = select(small, ax * t * p, y.sinh_lo);
    y.cosh = sum;
    if constexpr (!high) {
      y.sinh += y.sinh_lo;
      y.cosh += y.cosh_lo;
    }
  }
  return y;
}

template <Grade G>
struct Hyperbolics {
  Parts<G> sinh, cosh;
};
template <Grade G, bool Tails = G == Grade::high>
[[gnu::noinline]] void hyperbolics(const Array<double>& a, Hyperbolics<G>& y, int n) {
  using namespace simd;
  for (int i = 0; i < n; i += lanes<VecD>) {
    const HyperbolicPair p = hyperbolic_pair<G, Tails>(abs(a(i)));
    const VecU64 s = sign(a(i));
    if constexpr (G == Grade::high) {
      const Split sinh = split(p.sinh, p.sinh_lo), cosh = split(p.cosh, p.cosh_lo);
      y.sinh.head.set(i, flip_sign(sinh.head, s));
      y.sinh.tail.set(i, flip_sign(sinh.tail, s));
      y.cosh.head.set(i, cosh.head);
      y.cosh.tail.set(i, cosh.tail);
    } else {
      y.sinh.head.set(i, flip_sign(p.sinh, s));
      y.cosh.head.set(i, p.cosh);
    }
  }
}

struct ScaledHyperbolic {
  Scaled sinh, cosh;
};
// Of a finite a.
inline void scaled_hyperbolic(double a, ScaledHyperbolic& y) {
  const double size = std::fabs(a);
  if (size < 0x1p-30) {  // a^2/6 and a^2/2 are below 2^-60
    y = {size > 0x1p-300 ? Scaled{a, 0, 0} : Scaled{a * 0x1p600, 0, -600}, {1, 0, 0}};
    return;
  }
  if (size < 40) {
    const HyperbolicPair p = hyperbolic_pair<Grade::high, true>(simd::splat<VecD>(size));
    const Pair<double> s = numeric::quick_two_sum(p.sinh[0], p.sinh_lo[0]);
    const Pair<double> c = numeric::quick_two_sum(p.cosh[0], p.cosh_lo[0]);
    y = {{s.hi, s.lo, 0}, {c.hi, c.lo, 0}};
  } else {  // e^-size is below 2^-115 of e^size
    const Scaled e = scaled_exp(size < 1499 ? size : 1499);
    y.sinh = y.cosh = {e.hi, e.lo, e.power - 1};
  }
  if (a < 0) y.sinh = -y.sinh;
}

// Sine or cosine; of hyperbolic ones a is the real part, of circular ones the imaginary part.
template <class T, Accuracy A, bool Sine, bool Circular>
struct Wave : Bounds<T, A> {
  using Number = double;
  static constexpr int inputs = 1;
  static constexpr double filler = 1;
  static constexpr Grade G = grade<T, A>;

  static void run(const Numbers<double>& z, Numbers<double>& r, Usual<double>& usual, int n) {
    using namespace simd;
    const Array<double>&a = Circular ? z.im : z.re, &b = Circular ? z.re : z.im;
    Waves<G> wave;
    Hyperbolics<G> hyperbolic;
    sincos<G>(b, wave, usual, n);
    hyperbolics<G>(a, hyperbolic, n);
    // The part with the hyperbolic sine, p, and the other.
    const Parts<G>&with_sinh = Sine ? wave.cosine : wave.sine, &with_cosh = Sine ? wave.sine : wave.cosine;
    constexpr bool sinh_first = Sine && !Circular;
    Array<double>&to_p = sinh_first ? r.re : r.im, &to_q = sinh_first ? r.im : r.re;
    for (int i = 0; i < n; i += lanes<VecD>) {
      const auto sinh = load(hyperbolic.sinh, i), cosh = load(hyperbolic.cosh, i);
      const auto f = load(with_sinh, i), g = load(with_cosh, i);
      VecU64 p_sign = sign(head(sinh)) ^ sign(head(f));
      if constexpr (Circular && !Sine) p_sign ^= splat<VecU64>(sign_bit<VecD>);
      const VecD p = with_sign(product(sinh, f), p_sign), q = with_sign(product(cosh, g), sign(head(g)));
      to_p.set(i, p);
      to_q.set(i, q);
      VecU64 good = lt(abs(a(i)), splat<VecD>(703));
      if constexpr (G == Grade::high) {
        // Parts from 2^-990 on have all their bits, products of tails included; an exact zero is one.
        const VecD least = splat<VecD>(0x1p-990);
        const VecU64 a_zero = eq(a(i), VecD{}), b_zero = eq(b(i), VecD{});
        good &= (le(least, abs(p)) | a_zero | (Sine ? VecU64{} : b_zero)) &
                (le(least, abs(q)) | (Sine ? b_zero : VecU64{}));
      }
      usual.keep(i, good);
    }
  }

  static int element(double x, double y, double* r) {
    const double a = Circular ? y : x, b = Circular ? x : y;
    double p, q;  // as above
    const int status = parts(a, b, p, q);
    if (Circular && !Sine) p = -p;
    r[0] = Sine && !Circular ? p : q;
    r[1] = Sine && !Circular ? q : p;
    return status;
  }

 private:
  static int parts(double a, double b, double& p, double& q) {
    if (std::isfinite(a) && std::isfinite(b)) {
      ScaledWave wave;
      ScaledHyperbolic h;
      scaled_sincos(b, wave);
      scaled_hyperbolic(a, h);
      p = value(h.sinh * (Sine ? wave.cosine : wave.sine));
      q = value(h.cosh * (Sine ? wave.sine : wave.cosine));
      return std::isinf(p) || std::isinf(q) ? TFN_STATUS_OVERFLOW : TFN_STATUS_OK;
    }
    const bool is_number = !std::isnan(a) && !std::isnan(b);
    const double nan = is_number ? no_number : a + b;
    const double b_sign = std::copysign(1.0, b);
    if (std::isinf(a) && std::isfinite(b)) {
      ScaledWave wave;
      scaled_sincos(b, wave);
      const double s = b == 0 ? b : std::copysign(endless, wave.sine.hi), c = std::copysign(endless, wave.cosine.hi);
      p = (Sine ? c : s) * std::copysign(1.0, a);
      q = Sine ? s : c;
      return TFN_STATUS_OK;
    }
    p = q = nan;
    if (std::isinf(a)) {  // b is infinite or a NaN
      (Sine ? p : q) = Sine ? a : endless;
    } else if (a == 0) {
      p = Sine ? a : a * b_sign;
    } else if (b == 0) {  // a is a NaN
      (Sine ? q : p) = Sine ? b : b * std::copysign(1.0, a);
    }
    return is_number ? TFN_STATUS_ERRDOM : TFN_STATUS_OK;
  }
};
template <class T, Accuracy A>
struct Sinh : Wave<T, A, true, false> {};
template <class T, Accuracy A>
struct Cosh : Wave<T, A, false, false> {};
template <class T, Accuracy A>
struct Sin : Wave<T, A, true, true> {};
template <class T, Accuracy A>
struct Cos : Wave<T, A, false, true> {};

template <class T, Accuracy A, bool Circular>
struct Tangent : Bounds<T, A> {
  using Number = double;
  static constexpr int inputs = 1;
  static constexpr double filler = 1;
  static constexpr Grade G = grade<T, A>;
  static constexpr double far = 340;  // squares don't overflow up to here

  static void run(const Numbers<double>& z, Numbers<double>& r, Usual<double>& usual, int n) {
    using namespace simd;
    const Array<double>&a = Circular ? z.im : z.re, &b = Circular ? z.re : z.im;
    Array<double>&to_p = Circular ? r.im : r.re, &to_q = Circular ? r.re : r.im;
    Waves<G> wave;
    Hyperbolics<G> hyperbolic;
    sincos<G>(b, wave, usual, n);
    hyperbolics<G, G != Grade::single>(a, hyperbolic, n);
    for (int i = 0; i < n; i += lanes<VecD>) {
      const auto sinh = load(hyperbolic.sinh, i), cosh = load(hyperbolic.cosh, i);
      const auto s = load(wave.sine, i), c = load(wave.cosine, i);
      const VecU64 p_sign = sign(a(i)), q_sign = sign(head(s)) ^ sign(head(c));
      VecD p, q;
      if constexpr (G == Grade::high) {
        const Split u = square(sinh), v = square(c);
        const auto sum = numeric::two_sum(u.head, v.head);
        const Split d = split(sum.hi, sum.lo + (u.tail + v.tail));
        const VecD inverse = 1.0 / (d.head + d.tail);
        p = quotient(sinh, cosh, d, inverse);
        q = quotient(s, c, d, inverse);
      } else if constexpr (G == Grade::low) {
        // Next to 1 as 1 and what that leaves, to which fewer roundings contribute: sinh cosh is sinh^2 + sinh e^-|a|.
        const VecD size = abs(sinh), square = c * c, d = size * size + square;
        const VecU64 large = le(splat<VecD>(1), size);
        const VecD rest = size * (cosh - as<VecD>(bits(size) & large));
        p = (rest - as<VecD>(bits(square) & large)) / d + as<VecD>(bits(splat<VecD>(1)) & large);
        q = s * c / d;
      } else {
        const VecD d = sinh * sinh + c * c;
        p = sinh * cosh / d;
        q = s * c / d;
      }
      p = with_sign(p, p_sign);
      q = with_sign(q, q_sign);
      to_p.set(i, p);
      to_q.set(i, q);
      VecU64 good = lt(abs(a(i)), splat<VecD>(far));
      if constexpr (G == Grade::high) {
        const VecD least = splat<VecD>(0x1p-980);
        good &= (le(least, abs(p)) | eq(a(i), VecD{})) & (le(least, abs(q)) | eq(b(i), VecD{}));
      }
      usual.keep(i, good);
    }
  }

  static int element(double x, double y, double* r) {
    const double a = Circular ? y : x, b = Circular ? x : y;
    double p, q;
    const int status = parts(a, b, p, q);
    r[0] = Circular ? q : p;
    r[1] = Circular ? p : q;
    return status;
  }

 private:
  // The square in two parts, the first exact.
  QOR_INLINE static Split square(Split v) { return {v.head * v.head, v.tail * (v.head + (v.head + v.tail))}; }
  // f g / d, what the product with the inverse leaves added.
  QOR_INLINE static VecD quotient(Split f, Split g, Split d, VecD inverse) {
    const Split n = split(f.head * g.head, f.head * g.tail + f.tail * (g.head + g.tail));
    const VecD first = numeric::upper_half((n.head + n.tail) * inverse);
    return first + ((n.head - first * d.head) + (n.tail - first * d.tail)) * inverse;
  }

  static int parts(double a, double b, double& p, double& q) {
    const double a_sign = std::copysign(1.0, a);
    if (std::isfinite(b) && std::fabs(a) >= 30) {  // e^(-2|a|) is below 2^-86
      ScaledWave wave;
      scaled_sincos(b, wave);
      p = a_sign;
      if (std::isinf(a) || b == 0) {
        q = std::copysign(0.0, b == 0 ? b : wave.sine.hi * wave.cosine.hi);
      } else {
        const Scaled e = scaled_exp(std::fabs(a) < 749 ? -2 * std::fabs(a) : -1498);
        Scaled small = wave.sine * wave.cosine * e;
        small.power += 2;
        q = value(small);
      }
      return TFN_STATUS_OK;
    }
    if (std::isfinite(a) && std::isfinite(b)) {
      ScaledWave wave;
      ScaledHyperbolic h;
      scaled_sincos(b, wave);
      scaled_hyperbolic(a, h);
      Scaled d = wave.cosine * wave.cosine;
      if (std::fabs(a) > 0x1p-200) {  // else its square is nothing beside that of a cosine
        const Scaled s = h.sinh * h.sinh;
        const Pair<double> sum = Pair<double>{d.hi, d.lo} + Pair<double>{s.hi, s.lo};
        d = {sum.hi, sum.lo, 0};
      }
      p = value(h.sinh * h.cosh / d);
      q = value(wave.sine * wave.cosine / d);
      return TFN_STATUS_OK;
    }
    if (std::isinf(a)) {
      p = a_sign;
      q = std::copysign(0.0, b);
      return TFN_STATUS_OK;
    }
    const bool is_number = !std::isnan(a) && !std::isnan(b);
    p = q = is_number ? no_number : a + b;
    if (b == 0) q = b;
    return is_number ? TFN_STATUS_ERRDOM : TFN_STATUS_OK;
  }
};
template <class T, Accuracy A>
struct Tanh : Tangent<T, A, false> {};
template <class T, Accuracy A>
struct Tan : Tangent<T, A, true> {};

}  // namespace qor::tfn::complex
