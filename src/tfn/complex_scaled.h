// Single numbers in two parts with a power of two beside them: what the element routines of complex kernels work with,
// where doubles would overflow, vanish or lose bits on the way to a result that they can hold.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "numeric/float_parts.h"
#include "numeric/pair.h"
#include "tfn/exp.h"
#include "tfn/trig.h"

namespace qor::tfn::complex {

using numeric::Pair;

// v 2^power, rounded once if v is about 1; power from -2000 to 2000.
QOR_INLINE double times_power(double v, int power) {
  const int half = power / 2;
  return v * numeric::power_of_two(half) * numeric::power_of_two(power - half);
}

// (hi + lo) 2^power, lo below 2^-50 of hi.
struct Scaled {
  double hi, lo;
  int power;
};
QOR_INLINE Scaled operator-(Scaled a) { return {-a.hi, -a.lo, a.power}; }
// |a| and |b| normal, between 2^-400 and 2^400 or zero.
QOR_INLINE Scaled operator*(Scaled a, Scaled b) {
  if (a.hi == 0 || b.hi == 0) return {a.hi * b.hi, 0, 0};
  const Pair<double> p = Pair<double>{a.hi, a.lo} * Pair<double>{b.hi, b.lo};
  return {p.hi, p.lo, a.power + b.power};
}
QOR_INLINE Scaled operator/(Scaled a, Scaled b) {
  if (a.hi == 0) return {a.hi / b.hi, 0, 0};
  const Pair<double> q = Pair<double>{a.hi, a.lo} / Pair<double>{b.hi, b.lo};
  return {q.hi, q.lo, a.power - b.power};
}
// Rounded once, subnormal results too, by a sum with a number whose last place is theirs; infinite where that is the
// result. A zero keeps its sign.
QOR_INLINE double value(Scaled a) {
  const double sum = a.hi == 0 ? a.hi : a.hi + a.lo;
  const int power = a.power < -2000 ? -2000 : a.power > 2000 ? 2000 : a.power;
  const double result = times_power(sum, power);
  if (power > 0 || std::fabs(result) >= std::numeric_limits<double>::min() || a.hi == 0) return result;
  if (power < -2000 + 22 || std::fabs(a.hi) < 0x1p-900) return result;
  const double least = std::copysign(numeric::power_of_two(-1022 - power), a.hi);
  const Pair<double> above = numeric::quick_two_sum(least, a.hi);
  const double rounded = (above.hi + (above.lo + a.lo)) - least;
  return rounded == 0 ? std::copysign(0.0, a.hi) : times_power(rounded, power);
}

// e^x, |x| < 1500: hi between 1 and 2.
QOR_INLINE Scaled scaled_exp(double x) {
  using simd::VecD;
  // 1024 ln 2 less, which is exact in the first part: the reduction holds for |x| < 2^10.
  const double far = x > 900 ? 1024 : x < -900 ? -1024 : 0;
  ExpReduced at = exp_reduce(simd::splat<VecD>(x - far * ln2_hi), simd::splat<VecD>(-far * ln2_lo));
  // Whole numbers of rows, a little less than half an octave off and rounded: whole octaves below.
  const double rows = at.shifted[0] - exp_shift;
  const double octaves = (rows / exp_rows - 255.0 / 512 + exp_shift) - exp_shift;
  at.shifted -= octaves * exp_rows;
  const ExpParts e = exp_parts<Accuracy::high>(at);
  const Pair<double> sum = numeric::quick_two_sum(e.value[0], e.value[0] * e.rest[0]);
  return {sum.hi, sum.lo, static_cast<int>(octaves + far)};
}

struct ScaledWave {
  Scaled sine, cosine;
};
// Sine and cosine of a finite x.
inline void scaled_sincos(double x, ScaledWave& y) {
  using namespace simd;
  if (std::fabs(x) < 0x1p-30) {  // x^2/6 is below 2^-62
    y = {{x * 0x1p600, 0, -600}, {1, 0, 0}};
    if (std::fabs(x) > 0x1p-300) y.sine = {x, 0, 0};
    return;
  }
  std::uint64_t k;
  double r, r_lo;
  reduce_exactly<9>(x, k, r, r_lo);
  if (x < 0) {
    k = 0 - k;
    r = -r;
    r_lo = -r_lo;
  }
  Trig<Wanted::both>::Unrounded v[2];
  Trig<Wanted::both>::combine_unrounded(splat<VecU64>(k), splat<VecD>(r), splat<VecD>(-r_lo), v);
  const auto part = [&](int i) -> Scaled {
    const Pair<double> p = numeric::quick_two_sum(v[i].hi[0], -v[i].minus_lo[0]);
    return {p.hi, p.lo, 0};
  };
  y = {part(0), part(1)};
}

// The parts of a result of finite arguments.
inline int store_result(double re, double im, double* y) {
  y[0] = re;
  y[1] = im;
  return std::isinf(re) || std::isinf(im) ? TFN_STATUS_OVERFLOW : TFN_STATUS_OK;
}
// Those of one that is what it is, and the report of an argument without a result.
inline int special(double re, double im, double* y) {
  y[0] = re;
  y[1] = im;
  return TFN_STATUS_OK;
}
inline int no_result(double re, double im, double* y) {
  y[0] = re;
  y[1] = im;
  return TFN_STATUS_ERRDOM;
}
inline constexpr double no_number = std::numeric_limits<double>::quiet_NaN(),
                        endless = std::numeric_limits<double>::infinity();

}  // namespace qor::tfn::complex
