// MCG31M1: x' = mult x mod 2^31 - 1. (P. L'Ecuyer, Tables of linear congruential generators, Math. Comp. 68, 1999.)
#pragma once

#include "numeric/modular.h"
#include "rng/engines/chains.h"
#include "rng/streams/status.h"

namespace qor::rng {

struct Mcg31m1 {
  using Word = std::uint32_t;
  static constexpr double unit = 4.656612875245797e-10;
  static_assert(unit == 1.0 / numeric::m31);
  static constexpr int least = 1;  // on purpose: a request for no element delivers one
  static constexpr std::uint32_t multiplier = 1132489760;

  std::uint32_t x;  // the next value to be delivered, 1 .. 2^31 - 2
  std::uint32_t mult;

  int seed(int n, const std::uint32_t* words) {
    x = n > 0 ? words[0] % numeric::m31 : 0;
    if (x == 0) x = 1;
    mult = multiplier;
    return status::ok;
  }
  int leapfrog(std::int32_t k, int nstreams) {
    x = numeric::mul_mod_m31(x, numeric::pow_mod_m31(mult, k));
    mult = numeric::pow_mod_m31(mult, nstreams);
    return status::ok;
  }
  int skip_ahead(int n) {
    x = numeric::mul_mod_m31(x, numeric::pow_mod_m31(mult, n));
    return status::ok;
  }
  bool valid() const { return x - 1 < numeric::m31 - 1 && mult - 1 < numeric::m31 - 1; }  // 1 .. m31 - 1

  template <class Sink>
  void draw(int n, Sink sink) {
    constexpr int lanes = simd::lanes<VecU32>;
    x %= numeric::m31;  // copied from another generator's state it may be anything
    if (n < chains * lanes) {
      for (int i = 0; i < n; ++i, x = numeric::mul_mod_m31(x, mult)) sink.put(i, splat<VecU32>(x), 1);
      return;
    }
    VecU32 v[chains];
    std::uint32_t power = 1;
    for (int lane = 0; lane < lanes; ++lane, power = numeric::mul_mod_m31(power, mult)) {
      v[0][lane] = numeric::mul_mod_m31(x, power);
    }
    for (int c = 1; c < chains; ++c) {
      v[c] = times(v[c - 1], doubled(power));
    }
    const VecU32 round = doubled(numeric::pow_mod_m31(power, chains));
    x = draw_chains(
        v, n, [](VecU32 w) { return w; }, [&](VecU32 w) { return times(w, round); }, sink);
  }

 private:
  static constexpr int chains = 6;  // the fastest count by measurement

  static VecU32 doubled(std::uint32_t factor) { return splat<VecU32>(2 * factor); }

  // x factor mod m31. Twice the product has its low 31 bits and the other 31 in one half each. Their sum is not 0
  // modulo m31, since neither factor is, and below 2 m31: folding bit 31 once more leaves it reduced.
  QOR_INLINE static VecU32 times(VecU32 v, VecU32 twice_factor) {
    const VecU32 p01 = as<VecU32>(simd::mul_even(simd::zip_low(v, v), twice_factor));
    const VecU32 p23 = as<VecU32>(simd::mul_even(simd::zip_high(v, v), twice_factor));
    const VecU32 sum = (simd::evens(p01, p23) >> 1) + simd::odds(p01, p23);
    return (sum & splat<VecU32>(numeric::m31)) + (sum >> 31);
  }
};

}  // namespace qor::rng
