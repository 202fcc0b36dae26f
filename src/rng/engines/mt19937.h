// MT19937, the Mersenne Twister of period 2^19937 - 1.
#pragma once

#include "rng/engines/twister.h"

namespace qor::rng {

struct Mt19937 : Twister<Mt19937, 624, 397, 0x80000000> {
  struct Rule {
    static constexpr std::uint32_t matrix = 0x9908B0DF;
    QOR_INLINE static VecU32 temper(VecU32 y) {
      y ^= y >> 11;
      y ^= (y << 7) & splat<VecU32>(0x9D2C5680);
      y ^= (y << 15) & splat<VecU32>(0xEFC60000);
      return y ^ (y >> 18);
    }
  };
  static Rule rule() { return {}; }
};

}  // namespace qor::rng
