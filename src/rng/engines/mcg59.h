// MCG59: x' = mult x mod 2^59, mult = 13^13 at first.
#pragma once

#include "numeric/modular.h"
#include "rng/engines/chains.h"
#include "rng/streams/status.h"

namespace qor::rng {

struct Mcg59 {
  using Word = std::uint64_t;
  static constexpr double unit = 0x1p-59;
  static constexpr int least = 1;  // on purpose: a request for no element delivers one
  static constexpr std::uint64_t multiplier = 302875106592253;
  static_assert(multiplier == numeric::pow_mod_2_59(13, 13) && multiplier == 0x9B23C5FD + (std::uint64_t{70518} << 32));

  std::uint64_t x;  // the next value to be delivered, below 2^59
  std::uint64_t mult;

  int seed(int n, const std::uint32_t* words) {
    x = n > 0 ? words[0] : 0;
    if (n > 1) x = (x | std::uint64_t{words[1]} << 32) & numeric::mask59;
    if (x == 0) x = 1;
    mult = multiplier;
    return status::ok;
  }
  int leapfrog(std::int32_t k, int nstreams) {
    x = numeric::mul_mod_2_59(x, numeric::pow_mod_2_59(mult, k));
    mult = numeric::pow_mod_2_59(mult, nstreams);
    return status::ok;
  }
  int skip_ahead(int n) {
    x = numeric::mul_mod_2_59(x, numeric::pow_mod_2_59(mult, n));
    return status::ok;
  }
  // 13^13 is 1 modulo 4, as are its powers; being 5 modulo 8 it generates all such residues.
  bool valid() const { return x != 0 && (x | mult) <= numeric::mask59 && mult % 4 == 1; }

  template <class Sink>
  void draw(int n, Sink sink) {
    constexpr int lanes = simd::lanes<VecU64>;
    x &= numeric::mask59;  // copied from another generator's state it may be anything
    if (n < chains * lanes) {
      for (int i = 0; i < n; ++i, x = numeric::mul_mod_2_59(x, mult)) sink.put(i, splat<VecU64>(x), 1);
      return;
    }
    // The vectors hold 32 x modulo 2^64, which needs no reduction.
    VecU64 v[chains];
    std::uint64_t power = 1;
    for (int lane = 0; lane < lanes; ++lane, power *= mult) v[0][lane] = x * power << spare;
    for (int c = 1; c < chains; ++c) v[c] = times(v[c - 1], Factor(power));
    const Factor round(numeric::pow_mod_2_59(power, chains));
    x = draw_chains(
        v, n, [](VecU64 w) { return w >> spare; }, [&](VecU64 w) { return times(w, round); }, sink);
  }

 private:
  static constexpr int chains = 3;  // the fastest count by measurement

  static constexpr int spare = 64 - 59;

  struct Factor {
    VecU32 low, high;
    explicit Factor(std::uint64_t f)
        : low(splat<VecU32>(static_cast<std::uint32_t>(f))), high(splat<VecU32>(static_cast<std::uint32_t>(f >> 32))) {}
  };
  // The products of the high halves lie above 2^64.
  QOR_INLINE static VecU64 times(VecU64 v, const Factor& f) {
    const VecU32 low = as<VecU32>(v), high = simd::spread_odds(low);
    const VecU64 cross = simd::mul_even(low, f.high) + simd::mul_even(high, f.low);
    return simd::mul_even(low, f.low) + (cross << 32);
  }
};

}  // namespace qor::rng
