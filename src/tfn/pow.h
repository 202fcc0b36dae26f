// Powers, x^b = e^(b ln x). The logarithm in two parts, its error 2^-66 of itself, by the exact table of ln.h; the
// product of their leading parts is exact; the exponential as in exp.h, with the rest of the product added to the
// reduced argument.
// - double _HA: 0.52 ulp.
// - double _50: the exponential with fewer terms: 1.3 ulp. A logarithm in one part won't do: its error is multiplied
//   by up to 709.
// - singles: logarithm and exponential in double precision, in units of 1/256 of an octave: 0.502 ulp.
// Bases that are negative count as unusual and go through the same code once more with the sign set aside.
#pragma once

#include <bit>
#include <cmath>
#include <limits>

#include "numeric/float_parts.h"
#include "qor/tfn.h"
#include "simd/vec.h"
#include "tfn/accuracy.h"
#include "tfn/exp.h"
#include "tfn/log_reduce.h"
#include "tfn/pow_table.h"

namespace qor::tfn {

// ln x = hi + lo for normal positive x; hi has 26 bits. 2^52 + 1023 and what x has been scaled by is `bias`.
struct LnParts {
  simd::VecD hi, lo;
};
// p of ln(1 + u) = u - u^2/2 + u^3 p(u), leading coefficient first: minimax for the relative error on |u| <= 2^-8.4, by
// tools/fit/pow_log.sollya; that error is 2^-67.
inline constexpr double pow_log_fit[] = {0x1.24932c8ac18dcp-3, -0x1.5556303972d3p-3, 0x1.9999999959b9p-3,
                                         -0x1.ffffffffd4859p-3, 0x1.5555555555555p-2};
// 256 log2(1 + u) / u on |u| <= 2^-9 by the same program, error 2^-41.
inline constexpr double pow_single_fit[] = {-0x1.7154c1ac8e137p6, 0x1.ec70e91d7405p6, -0x1.71547652b5fc3p7,
                                            0x1.71547652b7962p8};

// From the first step of the logarithm; with `more`, v = 2^-53 at most of u or of 1, ln(1 + u + v) in place of ln(1 + u).
template <class... More>
QOR_INLINE LnParts ln_parts(simd::VecD k, simd::VecD u, simd::VecD hi, simd::VecD lo, More... more) {
  using namespace simd;
  const VecD head = numeric::upper_half(u), tail = u - head;
  const VecD half_square = head * (head * 0.5);
  // -(u^2 - head^2)/2 + u^3 p
  const VecD p = horner(u, pow_log_fit[0], pow_log_fit[1], pow_log_fit[2], pow_log_fit[3], pow_log_fit[4]);
  const VecD small = (((u * u) * (u * p) - (u + head) * (tail * 0.5)) + ... + (more - more * u));
  const VecD whole = k * ln2_hi + hi;  // exact
  const VecD leading_part = numeric::upper_half((whole + u) - half_square);
  // What it leaves is exact up to the small terms.
  const VecD left = ((whole - leading_part) + u) - half_square;
  return {leading_part, left + (small + (k * ln2_lo + lo))};
}
QOR_INLINE LnParts ln_parts(simd::VecD x, double bias) {
  using namespace simd;
  const auto [k, u, hi, lo, c] =
      log_reduce(x, LowHalves<VecU64>(bits(x) >> 36), &ln_exact_table[0].hi, splat<VecD>(bias));
  return ln_parts(k, u, hi, lo);
}

template <Accuracy A>
struct Pow {
  static constexpr int results = 1;
  static constexpr double filler = 1;
  template <class T>
  static constexpr double bound = default_bound<T>(A);

  // b ln x = hi + lo; hi is an exact product.
  struct Logarithm {
    simd::VecU64 usual;
    simd::VecD hi, lo;
  };
  QOR_INLINE static Logarithm logarithm(simd::VecD x, simd::VecD b, double exponent_bias) {
    using namespace simd;
    const LnParts ln = ln_parts(x, exponent_bias);
    const VecD head = numeric::upper_half(b);
    return {numeric::normal_range(x), head * ln.hi, (b - head) * ln.hi + b * ln.lo};
  }
  static constexpr double bias = 0x1p52 + 1023;

  QOR_INLINE static auto begin(simd::VecD x, simd::VecD b) { return logarithm(x, b, bias); }
  QOR_INLINE static void finish(const Logarithm& z, simd::VecD* y, simd::VecU64& usual) {
    usual = z.usual & simd::lt(simd::abs(z.hi), simd::splat<simd::VecD>(703));
    const auto [value, rest] = exp_parts<A>(exp_reduce(z.hi, z.lo));
    y[0] = value + value * rest;
  }
  QOR_INLINE static void fast(simd::VecD x, simd::VecD b, const double*, simd::VecD* y, simd::VecU64& usual) {
    finish(begin(x, b), y, usual);
  }
  QOR_INLINE static simd::VecD wide(simd::VecD t) {
    using namespace simd;
    const VecD shifted = t + exp_shift, f = t - (shifted - exp_shift);
    const VecD scale = exp_scale(LowHalves<VecU64>(bits(shifted)), shifted);
    return scale + scale * (f * (f * (exp_unit * exp_unit / 2) + exp_unit_1));
  }
  // e^r = 1 + r + r^2/2 + r^3/6, r = f ln 2 / 256; on |r| <= h, r^3/6 is h^2 r/8 within h^3/24, 2^-33 of the result.
  static constexpr double exp_unit = 1 / exp_per_step, exp_unit_1 = exp_unit * (1 + exp_unit * exp_unit / 4 / 8);

  // b log2 x in units of exp_unit.
  QOR_INLINE static void fast(simd::VecF x, simd::VecF b, const float* at, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    const VecU32 w = bits(x);
    const VecF m = as<VecF>((w & splat<VecU32>(0x007FFFFF)) | splat<VecU32>(0x3F800000));
    const VecU32 k = ((w & splat<VecU32>(0x7F800000)) >> 15) - splat<VecU32>(127 << 8);
    const auto half = [&](VecD fraction, VecD exponent, VecD power, int first) {
      const auto row = [&](int l) {
        return (((numeric::high_word(at + first + l) >> 10 & 0x1FF0) + 16) & 0x3FE0) >> 1;
      };
      const auto [c, log] = gather_rows<2>(&pow_single_table[0].c, row).column;
      const VecD u = fraction * c - 1.0;
      const VecD p = horner(u, pow_single_fit[0], pow_single_fit[1], pow_single_fit[2], pow_single_fit[3]);
      return ((exponent + log) + u * p) * power;
    };
    const VecD low = half(widen_low(m), to_double_low(k), widen_low(b), 0);
    const VecD high = half(widen_high(m), to_double_high(k), widen_high(b), 2);
    y[0] = narrow(wide(low), wide(high));
    // The powers that are normal singles: |b log2 x| < 126 * 256 = 0x1.f8p14, by the high words.
    using Words = Ints<VecF>;
    const VecU32 size = odds(as<VecU32>(low), as<VecU32>(high)) & splat<VecU32>(0x7FFFFFFF);
    usual = numeric::normal_range(x) & as<VecU32>(as<Words>(size) < splat<Words>(0x40DF8000));
  }

  // Which lanes are whole numbers.
  template <class V>
  QOR_INLINE static simd::Bits<V> whole(V b) {
    using namespace simd;
    const V size = abs(b), large = splat<V>(1 / std::numeric_limits<lane_t<V>>::epsilon());  // and so is all above
    return le(large, size) | eq((size + large) - large, size);
  }
  // Negative bases: x^b = +-|x|^b for whole b.
  template <class V>
  QOR_COLD static void retry(V x, V b, V* y, simd::Bits<V>& usual) {
    using namespace simd;
    lane_t<V> block[lanes<V>];
    store(block, abs(x));
    V again;
    Bits<V> good;
    fast(abs(x), b, block, &again, good);
    const Bits<V> is_whole = whole(b), odd = is_whole & ~whole(b * lane_t<V>(0.5));
    y[0] = select(usual, y[0], flip_sign(again, odd & sign(x)));
    usual |= good & is_whole;
  }

  static int element(double x, double b, double* y) {
    using L = std::numeric_limits<double>;
    using simd::VecD;
    const double size = std::fabs(x);
    if (b == 0 || x == 1) {
      y[0] = 1;
      return TFN_STATUS_OK;
    }
    if (x != x || b != b) {
      y[0] = x + b;
      return TFN_STATUS_OK;
    }
    const bool is_whole = whole(simd::splat<VecD>(b))[0] != 0,
               odd = is_whole && whole(simd::splat<VecD>(b * 0.5))[0] == 0;
    const double sign = odd && std::signbit(x) ? -1 : 1;
    if (size == 0 || size > L::max() || std::fabs(b) > L::max()) {
      const bool one = size == 1, large = (size > 1) == (b > 0);
      y[0] = one ? 1 : large ? sign * L::infinity() : sign * 0;
      return size == 0 && b < 0 && b >= -L::max() ? TFN_STATUS_SING : TFN_STATUS_OK;
    }
    if (x < 0 && !is_whole) {
      y[0] = std::bit_cast<double>(0xFFF8000000000000);
      return TFN_STATUS_ERRDOM;
    }
    const bool normal = size >= L::min();
    const Logarithm z =
        logarithm(simd::splat<VecD>(normal ? size : size * 0x1p54), simd::splat<VecD>(b), bias + (normal ? 0 : 54));
    int status;
    if (std::fabs(z.hi[0]) < 746) {
      status = exp_far<A>(exp_reduce(z.hi, z.lo), y);
    } else {
      y[0] = z.hi[0] < 0 ? 0 : L::infinity();
      status = z.hi[0] < 0 ? TFN_STATUS_UNDERFLOW : TFN_STATUS_OVERFLOW;
    }
    y[0] *= sign;
    return status;
  }
  static int element(float x, float b, float* y) {
    double wide;
    const int status = Pow<Accuracy::high>::element(static_cast<double>(x), static_cast<double>(b), &wide);
    return narrow_result(status, wide, y);
  }
};

// The second argument a scalar.
template <Accuracy A>
struct Powx : Pow<A> {};

}  // namespace qor::tfn
