// Tangent. x = a row's angle + r, |r| at most half a row and a little; with S, C the sine and cosine of the row and
// t = tan r = r + r^3/3 + 2 r^5/15 + 17 r^7/315 ...,
//   tan x = (S + C t) / (C - S t).
// The reductions, and what counts as usual, are those of trig.h; here both the numerator and the denominator must be
// large enough, since they are the sine and cosine of x over cos r. Every step is odd or even in x. The angles repeat
// after half a turn.
// - double _HA: numerator and denominator in two parts each, a quotient of 26 bits and what it leaves, which is exact:
//   0.51 ulp. (The tangents of the rows themselves, T + t/(C (C - S t)), would need the second term in two parts too.)
// - double _50: numerator and denominator rounded: 1.5 ulp.
// - single _HA: in double precision: 0.501 ulp.
// - single _21: a polynomial on [-pi/4, pi/4], turned over for odd multiples of pi/2: 2 ulp.
// - singles that are not usual: as in trig.h.
#pragma once

#include "tfn/trig.h"

namespace qor::tfn {

// Row j: sine and cosine at j/512 of a turn in two parts each, the first of 26 bits. The sine of row 0 is -0.
inline constexpr int tan_rows = trig_exact_rows / 2;
struct alignas(32) TanRow {
  double sine, sine_lo, cosine, cosine_lo;
};
inline constexpr auto tan_table = [] {
  std::array<TanRow, tan_rows> rows{};
  for (int j = 0; j < tan_rows; ++j) {
    const SineCosine a = sine_cosine_at(j, trig_exact_rows);
    const double s = numeric::halves(a.sine.hi).hi, c = numeric::halves(a.cosine.hi).hi;
    rows[j] = {s, (a.sine.hi - s) + a.sine.lo, c, (a.cosine.hi - c) + a.cosine.lo};
  }
  rows[0].sine = rows[0].sine_lo = -0.0;
  return rows;
}();

template <Accuracy A>
struct Tan {
  static constexpr int results = 1;
  static constexpr double filler = 1;
  template <class T>
  static constexpr double bound = A == Accuracy::low && sizeof(T) == 4 ? 2.1 : default_bound<T>(A);

  static constexpr double shift = Trig<Wanted::both>::shift;
  static constexpr RowStep step = trig_exact_step;

  // tan x from r = whole - tail at row k, and the smaller of |sin x| and |cos x| nearly.
  QOR_INLINE static simd::VecD combine(simd::VecU64 k, simd::VecD whole, simd::VecD tail, simd::VecD& smaller) {
    using namespace simd;
    const LowHalves<VecU64> row(k);
    const auto [s, s_lo, c, c_lo] =
        gather_rows<4>(&tan_table[0].sine, [&](int l) { return row(l) % tan_rows * sizeof(TanRow); }).column;
    const VecD r = whole - tail, r2 = r * r;
    // The next term, 62/2835 r^9, is below 2^-64 of r.
    const VecD cubic = r * r2 * horner(r2, 17.0 / 315, 2.0 / 15, 1.0 / 3);
    const VecD t = numeric::upper_half(whole), t_lo = ((whole - t) - tail) + cubic;
    // Of a zero the first part has its sign, and the small one, subtracted, is +0.
    const VecD ct = c * t, n = s + ct;
    const VecD minus_n_lo = (((n - s) - ct) - (s_lo + c_lo * t)) - (c + c_lo) * t_lo;
    const VecD st = s * t, d = c - st;
    const VecD d_lo = ((c - d) - st) + ((c_lo - s_lo * t) - (s + s_lo) * t_lo);
    const VecD numerator = n - minus_n_lo;  // n alone is 0 for the smallest x
    smaller = min(abs(numerator), abs(d));
    if constexpr (A == Accuracy::low) {
      return numerator / (d + d_lo);
    } else {
      const VecD inverse = 1.0 / (d + d_lo);
      const VecD q = numeric::upper_half(numerator * inverse), d_head = numeric::upper_half(d);
      const VecD excess = ((q * d_head - n) + q * (d - d_head)) + (q * d_lo + minus_n_lo);
      return q - excess * inverse;
    }
  }

  using Reduced = Trig<Wanted::both>::Reduced;
  QOR_INLINE static Reduced begin(simd::VecD x) { return Trig<Wanted::both>::reduce<Accuracy::high>(x); }
  QOR_INLINE static void finish(const Reduced& x, simd::VecD* y, simd::VecU64& usual) {
    using namespace simd;
    VecD smaller;
    y[0] = combine(bits(x.shifted), x.whole, x.tail, smaller);
    usual = le(abs(x.x) * 0x1p-20, min(smaller, splat<VecD>(1)));
  }
  QOR_INLINE static void fast(simd::VecD x, const double*, simd::VecD* y, simd::VecU64& usual) {
    finish(begin(x), y, usual);
  }

  QOR_INLINE static simd::VecD single_at(simd::VecU64 k, simd::VecD r) {
    using namespace simd;
    const LowHalves<VecU64> row(k);
    const auto [s, c] =
        gather_rows<2>(&trig_table[0].sine, [&](int l) { return row(l) % (trig_rows / 2) * sizeof(TrigRow); }).column;
    const VecD r2 = r * r, t = r + r * r2 * horner(r2, 2.0 / 15, 1.0 / 3);
    return (s + c * t) / (c - s * t);
  }
  QOR_INLINE static simd::VecD single_half(simd::VecD x) {
    const simd::VecD shifted = x * trig_step.per_unit + shift;
    const simd::VecD k = shifted - shift;
    return single_at(simd::bits(shifted), (x - k * trig_step.head) - k * trig_step.tail);
  }
  QOR_INLINE static void single_high(simd::VecF x, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    y[0] = narrow(single_half(widen_low(x)), single_half(widen_high(x)));
    usual = lt(abs(x), splat<VecF>(0x1p20f));
    replace_others(x, y, usual);
  }
  // As for the sine in trig.h; poles are as far off as zeros.
  struct Replaced {
    simd::VecF y;
    simd::VecU32 usual;
  };
  [[gnu::noinline]] static Replaced replace(simd::VecF x, simd::VecF y, simd::VecU32 good) {
    using namespace simd;
    const auto [low, high] = reduce_singles(x);
    const VecF better = narrow(single_at(low.k, low.r), single_at(high.k, high.r)), size = abs(better);
    const VecF least = min(abs(x), splat<VecF>(1)) * 0x1p-20f;
    return {select(good, y, better), good | (le(least, size) & le(size, splat<VecF>(0x1p20f)))};
  }
  QOR_INLINE static void replace_others(simd::VecF x, simd::VecF* y, simd::VecU32& usual) {
    if (simd::lanes_set(usual) == simd::all_lanes<simd::VecF>) [[likely]]
      return;
    const Replaced all = replace(x, y[0], usual);
    y[0] = all.y;
    usual = all.usual;
  }

  // tan r = r + r^3 p(r^2) on [-pi/4, pi/4], leading coefficient first, relative error 2.3e-8, by
  // tools/fit/tan_low.sollya. (A quotient r (1 + a t) / (1 + b t + c t^2) is shorter; it has 2.9 ulp.)
  static constexpr float low_fit[] = {0x1.33b6c2p-7f, 0x1.97c8acp-9f, 0x1.9059f8p-6f,
                                      0x1.b5887ap-5f, 0x1.112ddp-3f,  0x1.5554dep-2f};
  // r = x - k pi/2 in three parts, the first two products exact while |x| < 2^13; in the leading term the last
  // difference is not rounded. Usual as for the sine in trig.h.
  QOR_INLINE static void single_low(simd::VecF x, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    const VecF shifted = x * float(2 / pi.hi) + 0x1.8p23f, k = shifted - 0x1.8p23f;
    const VecF most = (x - k * 0x1.92p0f) - k * 0x1.fbp-12f, last = k * 0x1.5110b4p-22f;
    const VecF r = most - last, r2 = r * r, r4 = r2 * r2;
    // In pairs, for a short chain.
    const auto pair = [&](int i) { return horner(r2, low_fit[i], low_fit[i + 1]); };
    const VecF p = (pair(0) * r4 + pair(2)) * r4 + pair(4);
    const VecF t = most + (r * r2 * p - last);
    const VecU32 odd = sign_mask(bits(shifted) << 31);
    y[0] = select(odd, -1.0f / t, t);
    const VecF least = x * 0x1p-14f;
    usual = lt(least * least, r2);
    replace_others(x, y, usual);
  }
  QOR_INLINE static void fast(simd::VecF x, const float*, simd::VecF* y, simd::VecU32& usual) {
    if constexpr (A == Accuracy::low) {
      single_low(x, y, usual);
    } else {
      single_high(x, y, usual);
    }
  }

  // Vectors of doubles with unusual lanes, once more with a reduction for large arguments. Only results below 2^-35 or
  // above 2^35, infinities and NaNs remain.
  QOR_COLD static void retry(const simd::VecD& x, simd::VecD* y, simd::VecU64& usual) {
    using namespace simd;
    const VecD ax = abs(x);
    const auto reduced = reduce_large<trig_exact_rows>(x);
    VecD smaller;
    const VecD better = combine(reduced.k, reduced.whole, reduced.tail, smaller);
    y[0] = select(usual, y[0], better);
    usual |= le(splat<VecD>(1), ax) & le(ax, splat<VecD>(std::numeric_limits<double>::max())) &
             le(splat<VecD>(0x1p-35), smaller);
  }

  static int element(double x, double* y) {
    using namespace simd;
    if (std::bit_cast<std::uint64_t>(x) << 1 >= 0xFFE0000000000000) {
      y[0] = x - x;  // NaN; of an infinity the processor's default one
      return x != x ? TFN_STATUS_OK : TFN_STATUS_ERRDOM;
    }
    std::uint64_t k;
    double r, r_lo;
    reduce_exactly<9>(x, k, r, r_lo);
    VecD smaller;
    const VecD v = combine(splat<VecU64>(k), splat<VecD>(r), splat<VecD>(-r_lo), smaller);
    y[0] = x < 0 ? -v[0] : v[0];
    return TFN_STATUS_OK;
  }
  static int element(float x, float* y) {
    double wide;
    const int status = Tan<Accuracy::low>::element(static_cast<double>(x), &wide);
    y[0] = static_cast<float>(wide);
    return status;
  }
};

}  // namespace qor::tfn
