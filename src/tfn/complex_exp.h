// Exponential function of complex numbers, e^(x + iy) = e^x cos y + i e^x sin y.
// - double _HA: both factors unrounded, in a head of 26 bits and a tail: 0.51 ulp in both parts.
// - double _50: factors rounded.
// - singles: in double precision.
// Near overflow and underflow e^x is taken apart from its power of two (T. E. Hull, T. F. Fairgrieve, P. T. P. Tang,
// Implementing complex elementary functions using exception handling, ACM TOMS 20, 1994).
#pragma once

#include "tfn/complex_map.h"
#include "tfn/complex_scaled.h"
#include "tfn/complex_trig.h"

namespace qor::tfn::complex {

template <class T, Accuracy A>
struct Exp : Bounds<T, A> {
  using Number = double;
  static constexpr int inputs = 1;
  static constexpr double filler = 1;
  static constexpr Grade G = grade<T, A>;

  static void run(const Numbers<double>& z, Numbers<double>& r, Usual<double>& usual, int n) {
    using namespace simd;
    Waves<G> wave;
    sincos<G>(z.im, wave, usual, n);
    for (int i = 0; i < n; i += lanes<VecD>) {
      const auto e = exponential<G>(z.re(i));
      const auto s = load(wave.sine, i), c = load(wave.cosine, i);
      const VecD re = product(e, c), im = with_sign(product(e, s), sign(head(s)));
      r.re.set(i, re);
      r.im.set(i, im);
      VecU64 good = lt(abs(z.re(i)), splat<VecD>(703));
      if constexpr (G == Grade::high) {
        // Parts from 2^-990 on have all their bits, products of tails included; an exact zero is one.
        const VecD least = splat<VecD>(0x1p-990);
        good &= le(least, abs(re)) & (le(least, abs(im)) | eq(z.im(i), VecD{}));
      }
      usual.keep(i, good);
    }
  }

  static int element(double x, double y, double* r) {
    if (!std::isfinite(x) || !std::isfinite(y)) return special_element(x, y, r);
    const Scaled e = scaled_exp(x > 1499 ? 1499 : x < -1499 ? -1499 : x);
    ScaledWave wave;
    scaled_sincos(y, wave);
    return store_result(value(e * wave.cosine), value(e * wave.sine), r);
  }
  static int special_element(double x, double y, double* r) {
    if (y == 0) return special(x < 0 ? 0 : x + x, y, r);
    if (x == -endless) {
      if (!std::isfinite(y)) return special(0, std::copysign(0, y), r);
      ScaledWave wave;
      scaled_sincos(y, wave);
      return special(std::copysign(0, wave.cosine.hi), std::copysign(0, wave.sine.hi), r);
    }
    if (x == endless) {
      if (std::isnan(y)) return special(endless, y, r);
      if (std::isinf(y)) return no_result(endless, no_number, r);
      ScaledWave wave;
      scaled_sincos(y, wave);
      return special(std::copysign(endless, wave.cosine.hi), std::copysign(endless, wave.sine.hi), r);
    }
    const double nan = std::isnan(x) ? x + x : std::isnan(y) ? y + y : no_number;
    return std::isnan(x) || std::isnan(y) ? special(nan, nan, r) : no_result(nan, nan, r);
  }
};

}  // namespace qor::tfn::complex
