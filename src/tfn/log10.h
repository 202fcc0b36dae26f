// Decimal logarithm: as the natural one (ln.h), with tables of decimal logarithms and
//   log10(1 + u) = u log10 e + u^2 q(u).
// - double _HA: the product with log10 e in two parts, the first exact: 0.53 ulp.
// - double _50: in one part, which costs an ulp next to 1 and nothing elsewhere: powers of ten stay exact. 1.5 ulp.
// - single _HA: as double _HA: 0.51 ulp.
// - single _21: the polynomial of Ln and no table: 1.5 ulp.
#pragma once

#include <bit>
#include <limits>

#include "numeric/float_parts.h"
#include "numeric/pair.h"
#include "qor/tfn.h"
#include "simd/vec.h"
#include "tfn/accuracy.h"
#include "tfn/ln.h"
#include "tfn/log10_table.h"
#include "tfn/log_reduce.h"

namespace qor::tfn {

template <Accuracy A>
struct Log10 {
  static constexpr int results = 1;
  static constexpr double filler = 1;
  template <class T>
  static constexpr double bound = default_bound<T>(A);
  static constexpr double bias = 0x1p52 + 1023;

  QOR_INLINE static void fast(simd::VecD x, const double* at, simd::VecD* y, simd::VecU64& usual) {
    usual = numeric::normal_range(x);
    y[0] = core(x, at, simd::splat<simd::VecD>(bias));
  }
  // q, leading coefficient first: minimax for the relative error of the logarithm on |u| <= 2^-8.4, by
  // tools/fit/log10.sollya; that error is 2^-57.9.
  static constexpr double fit[] = {-0x1.287b45590c6d2p-4, 0x1.63c6f2acac4f1p-4, -0x1.bcb7b1523a935p-4,
                                   0x1.287a7636e2278p-3, -0x1.bcb7b1526e50ep-3};
  // With a small second part, log10(x + more), as in Ln.
  template <class... More>
  QOR_INLINE static simd::VecD core(simd::VecD x, const double* at, simd::VecD less, More... more) {
    using namespace simd;
    const auto [k, u, hi, lo, c] = log_reduce(
        x, [at](int l) { return numeric::high_word(at + l) >> 4; }, &log10_table[0].hi, less);
    const VecD whole = k * log10_2_hi + hi, small = k * log10_2_lo + lo;  // the first is exact
    const VecD q = horner(u, fit[0], fit[1], fit[2], fit[3], fit[4]);
    [[maybe_unused]] const auto part = [x, inverse = c, ratio = u](VecD extra) {
      const VecD v = extra * Ln<A>::inverse_power(x) * inverse;
      return v - v * ratio;
    };
    if constexpr (A == Accuracy::low) {
      return whole + (((u * (u * q + log10_e.hi)) + ... + (part(more) * log10_e.hi)) + small);
    } else {
      const VecD head = numeric::upper_half(u);
      const VecD rest = (((u - head) * log10_e_hi + u * (u * q + log10_e_lo)) + ... + (part(more) * log10_e.hi));
      const auto [s, e] = numeric::quick_two_sum(whole, head * log10_e_hi);
      return s + (e + (small + rest));
    }
  }

  QOR_INLINE static void fast(simd::VecF x, const float* at, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    usual = numeric::normal_range(x);
    if constexpr (A == Accuracy::high) {
      const auto [k, u, hi, lo] = Ln<A>::reduce(x, at, log10_single_table);
      const VecF head = numeric::upper_half(u);
      const VecF q = u * float(log10_e.hi / 3) + float(log10_e.hi * Ln<A>::ln_fit_2);
      const VecF rest = (u - head) * log10_e_single_hi + u * (u * q + log10_e_single_lo);
      const auto [s, e] = numeric::quick_two_sum(k * log10_single_table.log_2_hi + hi, head * log10_e_single_hi);
      y[0] = s + (e + ((k * log10_single_table.log_2_lo + lo) + rest));
    } else {
      const auto [k, r, power] = Ln<A>::reduce_low(x);
      const auto p = [](int i) { return float(log10_e.hi * double(Ln<A>::ln_low_fit[i])); };
      // Half of r is exact; the terms after it are so small that their errors hardly count.
      const VecF q =
          horner(r, p(0), p(1), p(2), p(3), p(4), p(5), p(6), float(-log10_e.hi / 2), float(log10_e.hi - 0.5));
      // k times the first part of log10 2 is exact: 8 + 15 bits.
      y[0] = k * 0x1.3440p-2f + (r * 0.5f + (k * float(0.3010299956639812 - 0x1.3440p-2) + r * q));
    }
  }

  static int element(double x, double* y) {
    using L = std::numeric_limits<double>;
    if (x > 0 && x <= L::max()) {
      y[0] = single_lane(x * 0x1p54, 54);  // subnormal
    } else {
      y[0] = x == 0 ? -L::infinity() : x < 0 ? std::bit_cast<double>(0xFFF8000000000000) : x + x;
    }
    return x == 0 ? TFN_STATUS_SING : x < 0 ? TFN_STATUS_ERRDOM : TFN_STATUS_OK;
  }
  static int element(float x, float* y) {
    double wide;
    int status = TFN_STATUS_OK;
    if (x > 0 && x <= std::numeric_limits<float>::max()) {  // a subnormal single is a normal double
      wide = Log10<Accuracy::high>::single_lane(static_cast<double>(x), 0);
    } else {
      status = Log10<Accuracy::high>::element(static_cast<double>(x), &wide);
    }
    y[0] = static_cast<float>(wide);
    return status;
  }
  // log10(x / 2^scaled), x normal.
  QOR_INLINE static double single_lane(double x, int scaled) {
    using namespace simd;
    double block[lanes<VecD>];
    store(block, splat<VecD>(x));
    return core(splat<VecD>(x), block, splat<VecD>(bias + scaled))[0];
  }
};

}  // namespace qor::tfn
