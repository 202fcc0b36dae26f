// Natural logarithm. x = 2^k m, m in [1, 2); j/256 is m - 1 rounded to 8 bits, c about 1/(1 + j/256), u = m c - 1:
//   ln x = k ln 2 - ln c + ln(1 + u), |u| about 2^-9,
// after P. T. P. Tang, Table-driven implementation of the logarithm function, ACM TOMS 16 (1990). Rows 0 and 256 have
// c = 1 and 1/2 exactly, and so results close to ln 1 come from u alone.
// - double _50: c rounded; u from m - (1 + j/256), which is exact, times c: 0.55 ulp, but up to 3.5 within 1/128 of 1.
// - double _HA: c has 10 bits at most, so that u is exact; the sum is carried in two parts: 0.51 ulp.
// - single _HA: the same in single precision: 0.508 ulp.
// - single _21: a longer polynomial and no table: 1.3 ulp.
#pragma once

#include <bit>
#include <limits>

#include "numeric/float_parts.h"
#include "numeric/pair.h"
#include "numeric/x87.h"
#include "qor/tfn.h"
#include "simd/vec.h"
#include "tfn/accuracy.h"
#include "tfn/ln_table.h"

namespace qor::tfn {

template <Accuracy A>
struct Ln {
  static constexpr int results = 1;
  static constexpr double filler = 1;
  template <class T>
  static constexpr double bound = A == Accuracy::low && sizeof(T) == 8 ? 3.5 : default_bound<T>(A);

  QOR_INLINE static void fast(simd::VecD x, const double* at, simd::VecD* y, simd::VecU64& usual) {
    usual = numeric::normal_range(x);
    y[0] = core(x, at, simd::splat<simd::VecD>(0x1p52 + 1023));
  }

  // ln x for normal positive x; `at` holds x. The exponent field, read as an integer above 2^52, less `bias` is k. With
  // a small second part, ln(x + rest).
  template <class... Rest>
  QOR_INLINE static simd::VecD core(simd::VecD x, const double* at, simd::VecD bias, Rest... rest) {
    using namespace simd;
    const VecU64 b = bits(x);
    const VecD k = as<VecD>((b >> 52) | splat<VecU64>(0x4330000000000000)) - bias;
    const VecD m = as<VecD>((b & splat<VecU64>(0x000FFFFFFFFFFFFF)) | splat<VecU64>(0x3FF0000000000000));
    // The top nine fraction bits, rounded to eight, times the 32 bytes of a row.
    const auto row = [at](int lane) { return (((numeric::high_word(at + lane) >> 7) & 0x1FF0) + 16) & 0x3FE0; };
    if constexpr (A == Accuracy::low) {
      const auto [hi, lo, c] = gather_rows<3>(&ln_table[0].hi, row).column;
      const VecD u = ((m - to_row(m)) + ... + (rest * inverse_power(x))) * c;
      // ln(1 + u) - u, minimax on |u| <= 2^-9; its error, 2^-60.6, is 2.7 ulp of the smallest results that come with so
      // large a u.
      const VecD p =
          horner(u, 0.20000077300509184, -0.25000079467558006, 0.33333333333238757, -0.4999999999992423) * u * u;
      return ((p + (k * ln2_lo + lo)) + u) + (k * ln2_hi + hi);
    } else {
      const auto [hi, lo, c] = gather_rows<3>(&ln_exact_table[0].hi, row).column;
      // The halves of m have 26 and 27 bits and c has 10: both products, and their sum less one, are exact.
      const VecD head = numeric::upper_half(m);
      const VecD u = (head * c - 1.0) + (m - head) * c;
      VecD p = horner(u, -1.0 / 6, ln_fit_5, -1.0 / 4, ln_fit_3, -1.0 / 2) * u * u;
      if constexpr (sizeof...(rest) != 0) {
        // ln(1 + u + v) - ln(1 + u), v below an ulp of 1 (or of any size where u = 0, and below that then).
        const VecD v = (rest + ...) * inverse_power(x) * c;
        p += v - v * u;
      }
      const auto [s, e] = numeric::quick_two_sum(k * ln2_hi + hi, u);
      return s + (e + ((k * ln2_lo + lo) + p));
    }
  }

  // m rounded to 8 fraction bits; ties go up, as in the row's number.
  QOR_INLINE static simd::VecD to_row(simd::VecD m) {
    using namespace simd;
    return (as<VecD>(bits(m) | splat<VecU64>(0x000003FF000003FF)) + splat<VecD>(0x1p44)) - splat<VecD>(0x1p44);
  }

  // 2^-k for x = 2^k m, m in [1, 2).
  template <class V>
  QOR_INLINE static V inverse_power(V x) {
    using namespace simd;
    using Word = lane_t<Bits<V>>;
    constexpr Word exponent = sizeof(Word) == 8 ? Word(0x7FF0000000000000) : Word(0x7F800000);
    constexpr Word twice_bias = sizeof(Word) == 8 ? Word(0x7FE0000000000000) : Word(0x7F000000);
    return as<V>(splat<Bits<V>>(twice_bias) - (bits(x) & splat<Bits<V>>(exponent)));
  }

  // ln(h + l), h >= 1 normal, |l| below an ulp of h or h = 1: with all the accuracy of _HA, or in doubles for results
  // that become singles (2^-31), or in singles.
  QOR_INLINE static simd::VecD of_pair(Pair<simd::VecD> x) requires(A == Accuracy::high) {
    double copy[simd::lanes<simd::VecD>];
    simd::store(copy, x.hi);
    return core(x.hi, copy, simd::splat<simd::VecD>(0x1p52 + 1023), x.lo);
  }
  QOR_INLINE static simd::VecD of_pair_for_single(Pair<simd::VecD> x) requires(A == Accuracy::low) {
    using namespace simd;
    const VecU64 b = bits(x.hi);
    double copy[lanes<VecD>];
    store(copy, x.hi);
    const auto [hi, lo, c] = gather_rows<3>(&ln_table[0].hi, [&](int lane) {
                               return (((numeric::high_word(copy + lane) >> 7) & 0x1FF0) + 16) & 0x3FE0;
                             }).column;
    const VecD k = as<VecD>((b >> 52) | splat<VecU64>(0x4330000000000000)) - (0x1p52 + 1023);
    const VecD m = as<VecD>((b & splat<VecU64>(0x000FFFFFFFFFFFFF)) | splat<VecU64>(0x3FF0000000000000));
    const VecD m1 = to_row(m);
    const VecD u = ((m - m1) + x.lo * inverse_power(x.hi)) * c;
    return (k * (ln2_hi + ln2_lo) + hi) + (u + u * u * horner(u, -1.0 / 4, 1.0 / 3, -1.0 / 2));
  }
  QOR_INLINE static simd::VecF of_pair(Pair<simd::VecF> x) requires(A == Accuracy::low) {
    return low_single(x.hi, x.lo);
  }

  // ln(1 + u) - u for |u| <= U = 2^-9 and a little (in rows far from 1, where results are larger, up to 2^-8.4): the
  // series, with its first dropped term put into the others. With t = u^2 <= T = U^2 and h = T/(1 + sqrt(3)/2), the
  // Chebyshev polynomial of degree 3, moved so that a zero falls on t = 0, gives t^3 = (3 sqrt(3)/2) h t^2 - (3/2) h^2
  // t within h^3/4, so u^7/7 costs 2^-61 of u; that of degree 2 gives t^2 = 2 (sqrt 2 - 1) T t within 0.172 T^2, so
  // u^4/4 costs 2^-31 of u, for singles.
  static constexpr double fit_t = 0x1p-18 * 1.01, fit_h = fit_t / 1.8660254037844386;
  static constexpr double ln_fit_5 = 1.0 / 5 + 2.598076211353316 * fit_h / 7;
  static constexpr double ln_fit_3 = 1.0 / 3 - 1.5 * fit_h * fit_h / 7;
  static constexpr float ln_fit_2 = float(-1.0 / 2 - 0.8284271247461901 * fit_t / 4);

  QOR_INLINE static void fast(simd::VecF x, const float* at, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    usual = numeric::normal_range(x);
    if constexpr (A == Accuracy::high) {
      const auto [k, u, hi, lo] = reduce(x, at, ln_single_table);
      const VecF p = horner(u, float(1.0 / 3), ln_fit_2) * u * u;
      const auto [s, e] = numeric::quick_two_sum(k * ln_single_table.log_2_hi + hi, u);
      y[0] = s + (e + ((k * ln_single_table.log_2_lo + lo) + p));
    } else {
      y[0] = low_single(x);
    }
  }

  // ln x or, with a small second part, ln(x + rest), x >= 1.
  template <class... Rest>
  QOR_INLINE static simd::VecF low_single(simd::VecF x, Rest... rest) {
    using namespace simd;
    const auto [k, r, power] = reduce_low(x);
    const VecF r2 = r * r;
    // ln(1 + r + v) - ln(1 + r) with v = rest/2^k.
    [[maybe_unused]] const auto more = [scale = power, ratio = r](VecF part) {
      const VecF v = part * scale;
      return v - v * ratio;
    };
    const VecF p = horner(r, ln_low_fit[0], ln_low_fit[1], ln_low_fit[2], ln_low_fit[3], ln_low_fit[4], ln_low_fit[5],
                          ln_low_fit[6]);
    // k times the first part of ln 2 is exact: 8 + 15 bits.
    const VecF small = ((k * 0x1.7f7d1cp-20f + r2 * (r * p - 0.5f)) + ... + more(rest));
    return k * 0x1.62e4p-1f + (r + small);
  }

  // x = 2^k m, u = m c - 1; hi + lo is the row's logarithm of 1/c.
  struct Reduced {
    simd::VecF k, u, hi, lo;
  };
  QOR_INLINE static Reduced reduce(simd::VecF x, const float* at, const LnSingleTable& table) {
    using namespace simd;
    const VecU32 shifted = bits(x) - splat<VecU32>(ln_single_first);
    const auto offset = [at](int lane) { return (numeric::high_word(at + lane) - ln_single_first) >> 11 & 0xFF0; };
    const auto [hi, lo] = gather_pairs(&table.row[0].hi, offset).column;
    const auto [c, at_middle] = gather_pairs(&table.row[0].c, offset).column;
    const VecF m = as<VecF>((shifted & splat<VecU32>(0x007FFFFF)) + splat<VecU32>(ln_single_first));
    const VecF middle = as<VecF>((shifted & splat<VecU32>(0x007F8000)) + splat<VecU32>(ln_single_first + 0x4000));
    return {to_float(as<VecU32>(as<Ints<VecF>>(shifted) >> 23)), (m - middle) * c + at_middle, hi, lo};
  }
  // m in [sqrt(1/2), sqrt 2), r = m - 1: ln(1 + r) = r - r^2/2 + r^3 p(r). power = 2^-k.
  struct ReducedLow {
    simd::VecF k, r, power;
  };
  QOR_INLINE static ReducedLow reduce_low(simd::VecF x) {
    using namespace simd;
    const VecU32 shifted = bits(x) - splat<VecU32>(0x3F3504F3);
    const VecF m = as<VecF>((shifted & splat<VecU32>(0x007FFFFF)) + splat<VecU32>(0x3F3504F3));
    return {to_float(as<VecU32>(as<Ints<VecF>>(shifted) >> 23)), m - 1.0f,
            as<VecF>(splat<VecU32>(0x3F800000) - (shifted & splat<VecU32>(0xFF800000)))};
  }

  // p of the low single accuracy, leading coefficient first: minimax for the relative error of ln(1 + r) on
  // [sqrt(1/2) - 1, sqrt 2 - 1], by tools/fit/ln_low.sollya; that error is 3.5e-8.
  static constexpr float ln_low_fit[] = {0x1.645eb4p-4f, -0x1.2432bap-3f, 0x1.317456p-3f, -0x1.53824ap-3f,
                                         0x1.98d7f2p-3f, -0x1.000382p-2f, 0x1.5556d8p-2f};

  static int element(double x, double* y) {
    using L = std::numeric_limits<double>;
    if constexpr (A == Accuracy::low) {
      numeric::x87_ln(x, y);  // all that is not normal, in extended precision
    } else if (x > 0 && x <= L::max()) {
      y[0] = single_lane(x * 0x1p54, 54);  // subnormal
    } else {
      y[0] = x == 0 ? -L::infinity() : x < 0 ? std::bit_cast<double>(0xFFF8000000000000) : x + x;
    }
    return x == 0 ? TFN_STATUS_SING : x < 0 ? TFN_STATUS_ERRDOM : TFN_STATUS_OK;
  }
  static int element(float x, float* y) {
    double wide;
    int status = TFN_STATUS_OK;
    if (x > 0 && x <= std::numeric_limits<float>::max()) {
      wide = Ln<Accuracy::high>::single_lane(x, 0);  // a subnormal single is a normal double
    } else {
      status = Ln<Accuracy::high>::element(static_cast<double>(x), &wide);
    }
    y[0] = static_cast<float>(wide);
    return status;
  }
  // ln(x / 2^scaled), x normal.
  QOR_INLINE static double single_lane(double x, int scaled) {
    using namespace simd;
    double block[lanes<VecD>];
    store(block, splat<VecD>(x));
    return core(splat<VecD>(x), block, splat<VecD>(0x1p52 + 1023 + scaled))[0];
  }
};

}  // namespace qor::tfn
