// Sine and cosine. x = k pi/128 + r, |r| <= pi/256 and a little; with S, C the sine and cosine of k pi/128 from a
// table,
//   sin x = S + (C sin r + S (cos r - 1)),  cos x = C + (-S sin r + C (cos r - 1)).
// Everything works on |x|; the sine gets its sign at the end, so symmetries hold in every bit.
//
// The reduction uses two parts of pi/128. Its absolute error is below |x| 2^-79 (doubles); a result that is not larger
// than |x| 2^-20 is not counted as usual. This one comparison catches arguments too large for the reduction, results so
// close to a zero of the function that the error would show, infinities and NaNs. Such elements are reduced with as
// many bits of 1/(2 pi) as they need (M. Payne and R. Hanek, ACM SIGNUM 18, 1983).
//   double _HA: table values, and r, in two parts; the leading sum exact (P. T. P. Tang, 1991; S. Gal, 1991): 0.51 ulp.
//   double _50: the same without the second parts.
//   single _HA: in double precision.  single _21: multiples of pi and an odd polynomial; its unusual elements as _HA.
#pragma once

#include <bit>
#include <cstdint>
#include <limits>

#include "numeric/pair.h"
#include "qor/tfn.h"
#include "simd/vec.h"
#include "tfn/accuracy.h"
#include "tfn/trig_table.h"

namespace qor::tfn {

enum class Wanted { sine, cosine, both };

// Taylor coefficients.
inline constexpr double sin_3 = -1.0 / 6, sin_5 = 1.0 / 120, sin_7 = -1.0 / 5040;
inline constexpr double cos_2 = -1.0 / 2, cos_4 = 1.0 / 24, cos_6 = -1.0 / 720;

// Economised polynomials for |r| <= pi/256 and a little, t = r^2 <= T. In t^3 + b t^2 + a t the least largest value has
// the Chebyshev polynomial of degree 3 moved so that a zero falls on t = 0: with half length h = T/(1 + sqrt(3)/2),
//   t^3 = (3 sqrt(3)/2) h t^2 - (3/2) h^2 t + error, |error| <= h^3/4;  likewise t^2 = 2 (sqrt 2 - 1) T t + error.
inline constexpr double fit_t = step * step / 4 * 1.000001;
inline constexpr double fit_h3 = fit_t / 1.8660254037844386;
inline constexpr double sin_5_fit = sin_5 + sin_7 * 2.598076211353316 * fit_h3;
inline constexpr double sin_3_fit = sin_3 - sin_7 * 1.5 * fit_h3 * fit_h3;         // relative error 2^-55
inline constexpr double sin_3_short = sin_3 + sin_5 * 0.8284271247461901 * fit_t;  // relative error 2^-34
inline constexpr double cos_2_short = cos_2 + cos_4 * 0.8284271247461901 * fit_t;  // absolute error 2^-32

template <Wanted W>
struct Trig {
  static constexpr int results = W == Wanted::both ? 2 : 1;
  static constexpr int sine_at = 0, cosine_at = results - 1;
  static constexpr bool has_sine = W != Wanted::cosine, has_cosine = W != Wanted::sine;

  // k + 1.5 * 2^52: the low bits hold k.
  static constexpr double shift = 0x1.8p52;

  // y from r (and, in high accuracy, r_lo) at row k mod 256 of the tables.
  template <Accuracy A>
  QOR_INLINE static void combine(simd::VecU64 k, simd::VecD r, simd::VecD r_lo, simd::VecU64 sign, simd::VecD* y) {
    using namespace simd;
    const LowBytes<VecU64> row(k);
    const VecD r2 = r * r;
    const VecD cos_less_1 = horner(r2, cos_6, cos_4, cos_2) * r2;
    if constexpr (A == Accuracy::low) {
      const auto [s, c] = gather_rows<2>(&trig_table[0].sine, [&](int l) { return row(l) * sizeof(TrigRow); }).column;
      const VecD sin_r = r + r * r2 * horner(r2, sin_5_fit, sin_3_fit);
      if constexpr (has_sine) y[sine_at] = flip_sign(s + (c * sin_r + s * cos_less_1), sign);
      if constexpr (has_cosine) y[cosine_at] = c + (c * cos_less_1 - s * sin_r);
    } else {
      const auto [s, s_lo, c, c_lo] =
          gather_rows<4>(&trig_exact_table[0].sine_hi, [&](int l) { return row(l) * sizeof(TrigExactRow); }).column;
      const VecD sin_rest = r_lo + r * r2 * horner(r2, sin_7, sin_5, sin_3);    // sin r - r
      const VecD head = as<VecD>(bits(r) & splat<VecU64>(0xFFFFFFFFF8000000));  // 26 bits
      const VecD rest = sin_rest + (r - head);
      const VecD sine = s + s_lo, cosine = c + c_lo;
      if constexpr (has_sine) {
        const auto [sum, error] = numeric::quick_two_sum(s, c * head);
        const VecD low = (s_lo + c_lo * head) + (cosine * rest + sine * cos_less_1);
        y[sine_at] = flip_sign(sum + (error + low), sign);
      }
      if constexpr (has_cosine) {
        const auto [sum, error] = numeric::quick_two_sum(c, -(s * head));
        const VecD low = (c_lo - s_lo * head) + (cosine * cos_less_1 - sine * rest);
        y[cosine_at] = sum + (error + low);
      }
    }
  }

  template <Accuracy A>
  QOR_INLINE static void reduce_and_combine(simd::VecD x, simd::VecD* y, simd::VecU64& usual) {
    using namespace simd;
    const VecD ax = abs(x);
    const VecD shifted = ax * steps_per_unit + shift;
    const VecD k = shifted - shift;
    const VecD head = ax - k * step_1, tail = k * step_2;  // head is exact
    const VecD r = head - tail;
    combine<A>(bits(shifted), r, (head - r) - tail, simd::sign(x), y);
    usual = large_enough(ax * 0x1p-20, y);
  }

  // The lanes whose results are `least` or more. Beyond the range of the reduction results are anything at all: they
  // count as 1, and `least` is larger.
  template <class V>
  QOR_INLINE static simd::Bits<V> large_enough(V least, const V* y) {
    using namespace simd;
    const V one = splat<V>(1);
    Bits<V> usual = le(least, min(abs(y[0]), one));
    if constexpr (results == 2) usual &= le(least, min(abs(y[1]), one));
    return usual;
  }

  // Singles in double precision: |x| < 2^20 leaves r right to 2^-59 and results, which singles that small keep away
  // from zero by 2^-47 at least, to 2^-33 of themselves, the error of the polynomials. Row 0 has the sine -0, and so a
  // zero keeps its sign: -0 + x.
  QOR_INLINE static void single_half(simd::VecD x, simd::VecD* y) {
    using namespace simd;
    const VecD shifted = x * steps_per_unit + shift;
    const VecD k = shifted - shift;
    const VecD r = (x - k * step_1) - k * step_2;
    const LowBytes<VecU64> row(bits(shifted));
    const auto [s, c] = gather_rows<2>(&trig_table[0].sine, [&](int l) { return row(l) * sizeof(TrigRow); }).column;
    const VecD r2 = r * r, sin_r = r * (r2 * sin_3_short + 1.0), cos_r = r2 * cos_2_short + 1.0;
    if constexpr (has_sine) y[sine_at] = s * cos_r + c * sin_r;
    if constexpr (has_cosine) y[cosine_at] = c * cos_r - s * sin_r;
  }
  QOR_INLINE static void single_high(simd::VecF x, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    VecD low[results], high[results];
    single_half(widen_low(x), low);
    single_half(widen_high(x), high);
    for (int i = 0; i < results; ++i) y[i] = narrow(low[i], high[i]);
    usual = lt(abs(x), splat<VecF>(0x1p20f));
  }

  // Singles in single precision. With k whole for the sine, half-way between for the cosine, r = |x| - k pi in three
  // parts, of which the first two, 8 and 9 bits, give exact products while |x| < 2^14; sin x = +- sin r, cos x = -+ sin
  // r.
  template <bool Sine>
  QOR_INLINE static simd::VecF single_low_part(simd::VecF x, simd::VecF& r2) {
    using namespace simd;
    const VecF turns = x * float(1 / pi.hi);
    const VecF shifted = (Sine ? turns : turns - 0.5f) + 0x1.8p23f;
    const VecF whole = shifted - 0x1.8p23f, k = Sine ? whole : whole + 0.5f;
    const VecF r = ((x - k * 0x1.92p1f) - k * 0x1.fbp-11f) - k * 0x1.5110b4p-21f;
    r2 = r * r;
    const VecF y = r + r * r2 * horner(r2, sin_low_fit[0], sin_low_fit[1], sin_low_fit[2], sin_low_fit[3]);
    const VecU32 odd = bits(shifted) << 31;
    return flip_sign(y, Sine ? odd : ~odd & splat<VecU32>(sign_bit<VecF>));
  }
  // Usual: |r| > |x| 2^-14, the error of r below 2^-47 |x|. That leaves out arguments too large for exact products,
  // infinities and NaNs, and zeros, whose sign y would lose.
  QOR_INLINE static void single_low(simd::VecF x, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    const VecF least = x * 0x1p-14f, least2 = least * least;
    VecF r2;
    usual = ~VecU32{};
    VecU32 good[results];
    if constexpr (has_sine) {
      y[sine_at] = single_low_part<true>(x, r2);
      good[sine_at] = lt(least2, r2);
    }
    if constexpr (has_cosine) {
      y[cosine_at] = single_low_part<false>(abs(x), r2);
      good[cosine_at] = lt(least2, r2);
    }
    usual = good[0] & good[results - 1];
    if (lanes_set(usual) != all_lanes<VecF>) [[unlikely]]
      replace_by_high(x, y, good, usual);
  }
  // The outputs that are not good, by the high accuracy.
  QOR_COLD static void replace_by_high(const simd::VecF& x, simd::VecF* y, const simd::VecU32* good,
                                       simd::VecU32& usual) {
    simd::VecF better[results];
    simd::VecU32 better_usual;
    single_high(x, better, better_usual);
    for (int i = 0; i < results; ++i) y[i] = simd::select(good[i], y[i], better[i]);
    usual |= better_usual;
  }

  // sin r = r + r^3 p(r^2) on [0, pi/2], leading coefficient first: minimax for the relative error, by
  // tools/fit/sin_low.sollya; that error is 9.7e-9.
  static constexpr float sin_low_fit[] = {0x1.5dbdfp-19f, -0x1.9f6ffep-13f, 0x1.110ed4p-7f, -0x1.55554cp-3f};

  // x = k pi/2^7 + r for any finite x: k mod 256 from the fraction of |x|/(2 pi), r in two parts.
  static void reduce_exactly(double x, std::uint64_t& k, double& r, double& r_lo) {
    const std::uint64_t b = std::bit_cast<std::uint64_t>(x);
    const std::uint32_t e = static_cast<std::uint32_t>(b >> 52) & 0x7FF;
    // |x| = m 2^(e - 1075), m an integer of 53 bits (normal numbers only reach this point).
    const std::uint64_t m = (b & 0x000FFFFFFFFFFFFF) | 0x0010000000000000;
    // The window of 1/(2 pi) starts at the bit whose product with m's last bit has weight 1; earlier ones give
    // integers.
    const int first = int(e) - 1075;  // bits of 1/(2 pi) before the window; negative: zeros in front of it
    std::uint32_t window[6];
    for (int i = 0; i < 6; ++i) {
      const int bit = first + 32 * i, word = bit >> 5, within = bit & 31;
      const std::uint64_t two =
          (word >= 0 ? std::uint64_t{inverse_two_pi[word]} << 32 : 0) | (word + 1 >= 0 ? inverse_two_pi[word + 1] : 0);
      window[i] = static_cast<std::uint32_t>(two >> (32 - within));
    }
    // fraction = m * window mod 1: the low 6 words of the product of 2 and 6.
    const std::uint32_t m0 = static_cast<std::uint32_t>(m), m1 = static_cast<std::uint32_t>(m >> 32);
    std::uint32_t fraction[6];
    std::uint64_t carry = 0, above = 0;  // `above` is the previous word's product with m1, one place up
    for (int i = 5; i >= 0; --i) {
      const std::uint64_t p = std::uint64_t{window[i]} * m0 + carry, q = std::uint64_t{window[i]} * m1;
      const std::uint64_t sum = (p & 0xFFFFFFFF) + (above & 0xFFFFFFFF);
      fraction[i] = static_cast<std::uint32_t>(sum);
      carry = (p >> 32) + (sum >> 32) + (above >> 32);
      above = q;
    }
    // k is the nearest multiple of 1/256; what is left, a signed fraction of it, in words below the binary point.
    k = fraction[0] >> 24;
    std::uint32_t rest[4];
    for (int i = 0; i < 4; ++i) rest[i] = fraction[i] << 8 | fraction[i + 1] >> 24;
    k += rest[0] >> 31;
    // As doubles: the first word signed, the others added exactly from the top; leading zeros cost nothing.
    double hi = static_cast<std::int32_t>(rest[0]) * 0x1p-32, lo = 0;
    double weight = 0x1p-64;
    for (int i = 1; i < 4; ++i, weight *= 0x1p-32) {
      const double word = (static_cast<double>(static_cast<std::int32_t>(rest[i] >> 1)) * 2 + (rest[i] & 1)) * weight;
      const Pair<double> sum = numeric::two_sum(hi, word);
      const Pair<double> all = numeric::quick_two_sum(sum.hi, sum.lo + lo);
      hi = all.hi;
      lo = all.lo;
    }
    const Pair<double> product = Pair<double>{hi, lo} * Pair<double>{pi.hi / 128, pi.lo / 128};
    r = product.hi;
    r_lo = product.lo;
  }

  // Any argument, in double precision.
  template <Accuracy A>
  static int wide_element(double x, double* y) {
    using namespace simd;
    if (std::bit_cast<std::uint64_t>(x) << 1 >= 0xFFE0000000000000) {
      for (int i = 0; i < results; ++i) y[i] = x - x;  // NaN; of an infinity the processor's default one
      return x != x ? TFN_STATUS_OK : TFN_STATUS_ERRDOM;
    }
    std::uint64_t k;
    double r, r_lo;
    reduce_exactly(x, k, r, r_lo);
    VecD v[results];
    combine<A>(splat<VecU64>(k), splat<VecD>(r), splat<VecD>(r_lo), simd::sign(splat<VecD>(x)), v);
    for (int i = 0; i < results; ++i) y[i] = v[i][0];
    return TFN_STATUS_OK;
  }
  static int single_element(float x, float* y) {
    double wide[results];
    const int status = wide_element<Accuracy::low>(static_cast<double>(x), wide);
    for (int i = 0; i < results; ++i) y[i] = static_cast<float>(wide[i]);
    return status;
  }
};

template <Wanted W, Accuracy A>
struct TrigKernel {
  using Core = Trig<W>;
  static constexpr int results = Core::results;
  static constexpr double filler = 1;
  template <class T>
  static constexpr double bound = default_bound<T>(A);

  QOR_INLINE static void fast(simd::VecD x, const double*, simd::VecD* y, simd::VecU64& usual) {
    Core::template reduce_and_combine<A>(x, y, usual);
  }
  QOR_INLINE static void fast(simd::VecF x, const float*, simd::VecF* y, simd::VecU32& usual) {
    if constexpr (A == Accuracy::low) {
      Core::single_low(x, y, usual);
    } else {
      Core::single_high(x, y, usual);
    }
  }
  static int element(double x, double* y) { return Core::template wide_element<A>(x, y); }
  static int element(float x, float* y) { return Core::single_element(x, y); }
};

// Both outputs are those of the kernels above: an element that is unusual for the one may be usual for the other.
template <Accuracy A>
struct SinCos : TrigKernel<Wanted::both, A> {
  template <class T>
  static int element(T x, T* y) {
    const int status = one_output<TrigKernel<Wanted::sine, A>>(x, y);
    one_output<TrigKernel<Wanted::cosine, A>>(x, y + 1);
    return status;
  }

 private:
  template <class Kernel, class T>
  static int one_output(T x, T* y) {
    using V = simd::Vec<T>;
    V v;
    simd::Bits<V> usual;
    Kernel::fast(simd::splat<V>(x), nullptr, &v, usual);
    if (simd::lanes_set(usual) == 0) return Kernel::element(x, y);
    *y = v[0];
    return TFN_STATUS_OK;
  }
};

template <Accuracy A>
using Sin = TrigKernel<Wanted::sine, A>;
template <Accuracy A>
using Cos = TrigKernel<Wanted::cosine, A>;

}  // namespace qor::tfn
