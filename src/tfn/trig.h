// Sine and cosine. x = k/n of a turn + r, |r| at most half a row and a little; with S, C the sine and cosine of row k,
//   sin x = S + (C sin r + S (cos r - 1)),  cos x = C + (-S sin r + C (cos r - 1)).
// Every step is odd or even in x, so symmetries hold in every bit.
//
// The reduction uses two parts of a row's width. Its absolute error is below |x| 2^-79 (doubles); a result that is not
// larger than |x| 2^-20 is not counted as usual. This one comparison catches arguments too large for the reduction,
// results so close to a zero of the function that the error would show, infinities and NaNs. Such elements are reduced
// with as many bits of 1/(2 pi) as they need (M. Payne and R. Hanek, ACM SIGNUM 18, 1983).
// - double _HA: table values, and r, in two parts; the leading sum exact (P. T. P. Tang, 1991; S. Gal, 1991): 0.54 ulp.
// - double _50: the same without the second parts: 1.8 ulp.
// - single _HA: in double precision: 0.504 ulp.
// - single _21: multiples of pi and an odd polynomial: 2 ulp.
// - singles that are not usual: in double precision too, with two parts of the bits of 1/(2 pi) that count.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>

#include "numeric/float_parts.h"
#include "numeric/pair.h"
#include "qor/tfn.h"
#include "simd/vec.h"
#include "tfn/accuracy.h"
#include "tfn/trig_large.h"
#include "tfn/trig_table.h"

namespace qor::tfn {

// The low 16 bits of each lane, loaded from memory: the compiler would extract them from the register.
class RowNumbers : simd::InMemory<simd::VecU64> {
 public:
  using InMemory::InMemory;
  QOR_INLINE unsigned operator()(int lane) const {
    std::uint16_t number;
    std::memcpy(&number, *this + lane, sizeof number);
    return number;
  }
};

enum class Wanted { sine, cosine, both };

// Taylor coefficients.
inline constexpr double sin_3 = -1.0 / 6, sin_5 = 1.0 / 120, sin_7 = -1.0 / 5040;
inline constexpr double cos_2 = -1.0 / 2, cos_4 = 1.0 / 24, cos_6 = -1.0 / 720;

// Economised polynomials in t = r^2 <= T. In t^3 + b t^2 + a t the least largest value has the Chebyshev polynomial of
// degree 3 moved so that a zero falls on t = 0: with half length h = T/(1 + sqrt(3)/2),
//   t^3 = (3 sqrt(3)/2) h t^2 - (3/2) h^2 t + error, |error| <= h^3/4;  likewise t^2 = 2 (sqrt 2 - 1) T t + error.
struct TrigFit {
  double sin_5, sin_3, cos_4, cos_2;  // the terms in r^7 and r^6 put into those below
  double sin_3_alone, cos_2_alone;    // those in r^5 and r^4 put into a single one
};
constexpr TrigFit trig_fit(RowStep step) {
  const double largest = step.whole * step.whole / 4 * 1.000001, h = largest / 1.8660254037844386;
  const double by_2 = 2.598076211353316 * h, by_1 = -1.5 * h * h, alone = 0.8284271247461901 * largest;
  return {sin_5 + sin_7 * by_2, sin_3 + sin_7 * by_1,  cos_4 + cos_6 * by_2,
          cos_2 + cos_6 * by_1, sin_3 + sin_5 * alone, cos_2 + cos_4 * alone};
}
// Relative errors of the sine: 2^-55 and 2^-61 of two terms, 2^-34 of one. Absolute errors of the cosine: 2^-59 of two
// terms with the finer table, 2^-32 of one.
inline constexpr TrigFit trig_fit_low = trig_fit(trig_step), trig_fit_high = trig_fit(trig_exact_step);

template <Wanted W>
struct Trig {
  static constexpr int results = W == Wanted::both ? 2 : 1;
  static constexpr int sine_at = 0, cosine_at = results - 1;
  static constexpr bool has_sine = W != Wanted::cosine, has_cosine = W != Wanted::sine;

  template <Accuracy A>
  static constexpr RowStep step = A == Accuracy::low ? trig_step : trig_exact_step;
  // k + 1.5 * 2^52: the low bits hold k.
  static constexpr double shift = 0x1.8p52;

  // y from r = whole - tail at row k, modulo the rows of a turn. tail is below |whole| 2^-6, or the result is not
  // usual. The high accuracy takes x as it is: with the sine of row 0 being -0 and the small terms subtracted, the sine
  // of a zero keeps its sign, -0 + x - 0. The low accuracy takes |x|, and `sign` for the sine.
  template <Accuracy A>
  QOR_INLINE static void combine(simd::VecU64 k, simd::VecD whole, simd::VecD tail, simd::VecU64 sign, simd::VecD* y) {
    using namespace simd;
    if constexpr (A == Accuracy::low) {
      constexpr TrigFit fit = trig_fit_low;
      const RowNumbers row(k);
      const VecD r = whole - tail, r2 = r * r;
      const auto [s, c] =
          gather_rows<2>(&trig_table[0].sine, [&](int l) { return row(l) % trig_rows * sizeof(TrigRow); }).column;
      const VecD sin_r = whole + (r * r2 * horner(r2, fit.sin_5, fit.sin_3) - tail);
      const VecD cos_less_1 = horner(r2, cos_6, cos_4, cos_2) * r2;
      if constexpr (has_sine) y[sine_at] = flip_sign(s + (c * sin_r + s * cos_less_1), sign);
      if constexpr (has_cosine) y[cosine_at] = c + (c * cos_less_1 - s * sin_r);
    } else {
      Unrounded part[results];
      combine_unrounded(k, whole, tail, part);
      for (int i = 0; i < results; ++i) y[i] = part[i].hi - part[i].minus_lo;
    }
  }
  // The high accuracy before its last rounding; hi is within 2^-13 of the whole.
  struct Unrounded {
    simd::VecD hi, minus_lo;
  };
  QOR_INLINE static void combine_unrounded(simd::VecU64 k, simd::VecD whole, simd::VecD tail, Unrounded* y) {
    using namespace simd;
    constexpr TrigFit fit = trig_fit_high;
    const RowNumbers row(k);
    const VecD r = whole - tail, r2 = r * r;
    const VecD head = numeric::upper_half(whole);                                           // 26 bits
    const VecD rest = ((whole - head) - tail) + r * r2 * horner(r2, fit.sin_5, fit.sin_3);  // sin r - head
    const VecD cos_less_1 = horner(r2, fit.cos_4, fit.cos_2) * r2;
    const auto output = [&](unsigned rows_on) -> Unrounded {
      const auto offset = [&](int l) { return (row(l) + rows_on) % trig_exact_rows * sizeof(TrigExactRow); };
      const auto [s, minus_s_lo, c, c_lo] = gather_rows<4>(&trig_exact_table[0].sine, offset).column;
      const auto [sum, error] = numeric::quick_two_sum(s, c * head);
      return {sum, ((minus_s_lo - c_lo * head) - ((c + c_lo) * rest + s * cos_less_1)) - error};
    };
    if constexpr (has_sine) y[sine_at] = output(0);
    if constexpr (has_cosine) y[cosine_at] = output(trig_exact_rows / 4);
  }

  // The two stages of the double kernels: the reduction, and what is made of it.
  struct Reduced {
    simd::VecD x, shifted, whole, tail;
  };
  template <Accuracy A>
  QOR_INLINE static Reduced reduce(simd::VecD x) {
    using namespace simd;
    const VecD ax = A == Accuracy::low ? abs(x) : x;
    const VecD shifted = ax * step<A>.per_unit + shift;
    const VecD k = shifted - shift;
    return {x, shifted, ax - k * step<A>.head, k * step<A>.tail};  // the difference is exact
  }
  template <Accuracy A>
  QOR_INLINE static void finish(const Reduced& x, simd::VecD* y, simd::VecU64& usual) {
    combine<A>(simd::bits(x.shifted), x.whole, x.tail, simd::sign(x.x), y);
    usual = large_enough(simd::abs(x.x) * 0x1p-20, y);
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

  // Singles in double precision, two of them from r at row k. Row 0 has the sine -0, and so a zero keeps its sign:
  // -0 + x.
  QOR_INLINE static void single_at(simd::VecU64 k, simd::VecD r, simd::VecD* y) {
    using namespace simd;
    const RowNumbers row(k);
    const auto [s, c] =
        gather_rows<2>(&trig_table[0].sine, [&](int l) { return row(l) % trig_rows * sizeof(TrigRow); }).column;
    const VecD r2 = r * r;
    const VecD sin_r = r * (r2 * trig_fit_low.sin_3_alone + 1.0), cos_r = r2 * trig_fit_low.cos_2_alone + 1.0;
    if constexpr (has_sine) y[sine_at] = s * cos_r + c * sin_r;
    if constexpr (has_cosine) y[cosine_at] = c * cos_r - s * sin_r;
  }
  // |x| < 2^20 leaves r right to 2^-59, next to zeros of the function to some 2^-31 of itself.
  QOR_INLINE static void single_half(simd::VecD x, simd::VecD* y) {
    const simd::VecD shifted = x * trig_step.per_unit + shift;
    const simd::VecD k = shifted - shift;
    single_at(simd::bits(shifted), (x - k * trig_step.head) - k * trig_step.tail, y);
  }
  QOR_INLINE static void single_high(simd::VecF x, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    VecD low[results], high[results];
    single_half(widen_low(x), low);
    single_half(widen_high(x), high);
    for (int i = 0; i < results; ++i) y[i] = narrow(low[i], high[i]);
    usual = lt(abs(x), splat<VecF>(0x1p20f));
    const VecU32 good[] = {usual, usual};
    replace_others(x, y, good, usual);
  }

  // The outputs that are not good, in double precision with a reduction for any argument: 0.504 ulp. Only infinities,
  // NaNs and results below 2^-20 of arguments above 1 remain: there the error of r would show.
  struct Replaced {
    simd::VecF y[results];
    simd::VecU32 usual;
  };
  [[gnu::noinline]] static Replaced replace(simd::VecF x, simd::VecF first, simd::VecF last, simd::VecU32 good_first,
                                            simd::VecU32 good_last) {
    using namespace simd;
    const SinglesReduced reduced = reduce_singles(x);
    VecD low[results], high[results];
    single_at(reduced.low.k, reduced.low.r, low);
    single_at(reduced.high.k, reduced.high.r, high);
    const VecF least = min(abs(x), splat<VecF>(1)) * 0x1p-20f;
    const auto one = [&](int i, VecF had, VecU32 good, VecU32& usual) {
      const VecF y = narrow(low[i], high[i]);
      usual &= good | le(least, abs(y));
      return select(good, had, y);
    };
    Replaced all;
    all.usual = ~VecU32{};
    all.y[0] = one(0, first, good_first, all.usual);
    if constexpr (results == 2) all.y[1] = one(1, last, good_last, all.usual);
    return all;
  }
  // Vectors go and come by value, so that those of the loop stay in registers.
  QOR_INLINE static void replace_others(simd::VecF x, simd::VecF* y, const simd::VecU32* good, simd::VecU32& usual) {
    if (simd::lanes_set(usual) == simd::all_lanes<simd::VecF>) [[likely]]
      return;
    const Replaced all = replace(x, y[0], y[results - 1], good[0], good[results - 1]);
    for (int i = 0; i < results; ++i) y[i] = all.y[i];
    usual = all.usual;
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
    constexpr auto& fit = Sine ? sin_low_fit : cos_low_fit;
    const VecF y = r + r * r2 * horner(r2, fit[0], fit[1], fit[2], fit[3]);
    const VecU32 odd = bits(shifted) << 31;
    return flip_sign(y, Sine ? odd : ~odd & splat<VecU32>(sign_bit<VecF>));
  }
  // Usual: |r| > |x| 2^-14, the error of r below 2^-47 |x|. That leaves out arguments too large for exact products,
  // infinities and NaNs, and zeros, whose sign y would lose.
  QOR_INLINE static void single_low(simd::VecF x, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    const VecF least = x * 0x1p-14f, least2 = least * least;
    VecF r2;
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
    replace_others(x, y, good, usual);
  }

  // sin r = r + r^3 p(r^2) on [0, pi/2], leading coefficient first: minimax for the relative error, by
  // tools/fit/sin_low.sollya; that error is 9.7e-9. For the sine weighted where the rounding of r counts most: 1.5e-8,
  // there 3.7e-9.
  static constexpr float cos_low_fit[] = {0x1.5dbdfp-19f, -0x1.9f6ffep-13f, 0x1.110ed4p-7f, -0x1.55554cp-3f};
  static constexpr float sin_low_fit[] = {0x1.5dde6ap-19f, -0x1.9f7008p-13f, 0x1.110ebep-7f, -0x1.55554ap-3f};

  // Vectors of doubles with unusual lanes, once more with a reduction for large arguments. Only results below 2^-35 of
  // their zeros, infinities and NaNs remain.
  template <Accuracy A>
  static void retry(simd::VecD x, simd::VecD* y, simd::VecU64& usual) {
    using namespace simd;
    const VecD ax = abs(x);
    const auto reduced =
        reduce_large < A == Accuracy::low ? trig_rows : trig_exact_rows > (A == Accuracy::low ? ax : x);
    VecD large[results];
    combine<A>(reduced.k, reduced.whole, reduced.tail, simd::sign(x), large);
    const VecU64 range = le(splat<VecD>(1), ax) & le(ax, splat<VecD>(std::numeric_limits<double>::max()));
    usual = ~VecU64{};
    for (int i = 0; i < results; ++i) {
      const VecU64 had = le(ax * 0x1p-20, min(abs(y[i]), splat<VecD>(1)));
      const VecU64 good = range & le(splat<VecD>(0x1p-35), abs(large[i]));
      y[i] = select(had, y[i], large[i]);
      usual &= had | good;
    }
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
    reduce_exactly<A == Accuracy::low ? 8 : 9>(x, k, r, r_lo);
    VecD v[results];
    if (A == Accuracy::high && x < 0) {
      k = 0 - k;
      r = -r;
      r_lo = -r_lo;
    }
    combine<A>(splat<VecU64>(k), splat<VecD>(r), splat<VecD>(-r_lo), simd::sign(splat<VecD>(x)), v);
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
  static constexpr double bound = Core::has_cosine&& A == Accuracy::low && sizeof(T) == 4 ? 2.1 : default_bound<T>(A);

  QOR_INLINE static auto begin(simd::VecD x) requires(A == Accuracy::high) { return Core::template reduce<A>(x); }
  QOR_INLINE static void finish(const typename Core::Reduced& x, simd::VecD* y, simd::VecU64& usual) {
    Core::template finish<A>(x, y, usual);
  }
  QOR_INLINE static void fast(simd::VecD x, const double*, simd::VecD* y, simd::VecU64& usual) {
    finish(Core::template reduce<A>(x), y, usual);
  }
  QOR_INLINE static void fast(simd::VecF x, const float*, simd::VecF* y, simd::VecU32& usual) {
    if constexpr (A == Accuracy::low) {
      Core::single_low(x, y, usual);
    } else {
      Core::single_high(x, y, usual);
    }
  }
  QOR_COLD static void retry(const simd::VecD& x, simd::VecD* y, simd::VecU64& usual) {
    Core::template retry<A>(x, y, usual);
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
    if constexpr (sizeof(T) == 8) {
      if (simd::lanes_set(usual) == 0) Kernel::retry(simd::splat<V>(x), &v, usual);
    }
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
