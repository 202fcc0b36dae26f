// Square root of complex numbers: with t = sqrt((|z| + |x|)/2), in which nothing cancels, the larger part is t and the
// smaller one |y| / (2 t); the real part is the larger one for x >= 0 (W. Kahan, Branch cuts for complex elementary
// functions, 1987).
// - double _HA: |z|, t and the quotient in two parts: 0.51 ulp each part.
// - double _50: each rounded.
// - single _HA: in double precision.
// - single _21: as double _50, in single precision.
// Numbers whose squares would overflow or lose bits are scaled by powers of four (T. E. Hull, T. F. Fairgrieve, P. T. P.
// Tang, ACM TOMS 20, 1994).
#pragma once

#include "tfn/complex_map.h"
#include "tfn/complex_scaled.h"
#include "tfn/complex_trig.h"
#include "tfn/hypot.h"

namespace qor::tfn::complex {

// The larger and the smaller part, and the square of |z|.
template <class V>
struct ComplexRoot {
  V larger, smaller, square;
};
template <Grade G, class V>
QOR_INLINE ComplexRoot<V> complex_root(V x, V y) {
  using namespace simd;
  using T = lane_t<V>;
  const V ax = abs(x), ay = abs(y);
  V square;
  if constexpr (G == Grade::high) {
    const auto size = Hypot<Accuracy::high>::core(x, y, square);
    // 2 t^2 = |z| + |x|, then t, and what is left of it.
    const auto sum = numeric::two_sum(size.hi, ax);
    const VecD half = sum.hi * 0.5, half_lo = (sum.lo + size.lo) * 0.5;
    const VecD t = sqrt(half), head = numeric::upper_half(t), rest = t - head, inverse = 0.5 / t;
    const VecD tail = (((half - head * head) - rest * (t + head)) + half_lo) * inverse;
    // |y| / (2 (t + tail)), the first 26 bits and what they leave.
    const VecD first = numeric::upper_half(ay * inverse), twice = first + first;
    const VecD left = ((ay - twice * head) - twice * rest) - twice * tail;
    return {t + tail, first + left * inverse, square};
  } else {
    square = x * x + y * y;
    const V t = sqrt((sqrt(square) + ax) * T(0.5));
    return {t, ay / (t + t), square};
  }
}

template <class T, Accuracy A>
struct Sqrt : Bounds<T, A> {
  static constexpr bool native = sizeof(T) == 4 && A == Accuracy::low;  // in single precision
  using Number = std::conditional_t<native, float, double>;
  static constexpr int inputs = 1;
  static constexpr double filler = 1;
  static constexpr Grade G = grade<T, A>;

  static void run(const Numbers<Number>& z, Numbers<Number>& r, Usual<Number>& usual, int n) {
    using namespace simd;
    using V = Vec<Number>;
    constexpr Number least = native ? Number(0x1p-90) : Number(0x1p-900),
                     most = native ? Number(0x1p120) : Number(0x1p1000);
    for (int i = 0; i < n; i += lanes<V>) {
      const V x = z.re(i), y = z.im(i);
      const ComplexRoot<V> v = complex_root<G>(x, y);
      const Bits<V> right = ~lt(x, V{});
      r.re.set(i, select(right, v.larger, v.smaller));
      r.im.set(i, with_sign(select(right, v.smaller, v.larger), sign(y)));
      Bits<V> good = le(splat<V>(least), v.square) & le(v.square, splat<V>(most));
      // Nothing of the quotient's steps may vanish.
      if constexpr (G == Grade::high) {
        const V tiny = splat<V>(0x1p-960);
        good &= (le(tiny, v.smaller) & le(tiny, abs(y))) | eq(y, V{});
      }
      usual.set(i, good);
    }
    if constexpr (native) rest_in_doubles<Sqrt<T, Accuracy::high>>(z, r, usual, n);
  }

  static int element(double x, double y, double* r) {
    if (std::isinf(y)) return special(endless, y, r);
    if (std::isinf(x)) {
      const double other = std::isnan(y) ? y : std::copysign(0.0, y);
      return x > 0 ? special(x, other, r) : special(std::fabs(other), std::copysign(endless, y), r);
    }
    if (std::isnan(x) || std::isnan(y)) return special(x + y, x + y, r);
    const double larger = std::fabs(x) > std::fabs(y) ? std::fabs(x) : std::fabs(y);
    if (larger == 0) return special(0, y, r);
    // The larger part comes to between 1 and 4 times 4^k, the scale's even power.
    int power = static_cast<int>(std::bit_cast<std::uint64_t>(larger) >> 52) - 1023;
    if (power == -1023) power -= 52;
    power -= power & 1;
    const double ay = std::fabs(y);
    const ComplexRoot<VecD> v = complex_root<Grade::high>(simd::splat<VecD>(times_power(x, -power)),
                                                          simd::splat<VecD>(times_power(ay, -power)));
    const double t = v.larger[0];
    double smaller = times_power(v.smaller[0], power / 2);
    // A small y may have vanished from the scaled number, or the quotient lost bits.
    if (!(times_power(ay, -power) > 0x1p-900)) smaller = times_power(ay * 0x1p600 / (t + t), -600 - power / 2);
    const double big = times_power(t, power / 2);
    r[0] = x < 0 ? smaller : big;
    r[1] = std::copysign(x < 0 ? big : smaller, y);
    return TFN_STATUS_OK;
  }
};

}  // namespace qor::tfn::complex
