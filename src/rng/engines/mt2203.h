// The MT2203 family: 1024 Mersenne Twisters of period 2^2203 - 1, each with parameters of its own. (M. Matsumoto and
// T. Nishimura, Dynamic Creation of Pseudorandom Number Generators, Monte Carlo and Quasi-Monte Carlo Methods 1998.)
#pragma once

#include "qor/rng.h"
#include "rng/engines/slots.h"
#include "rng/engines/twister.h"

namespace qor::rng {

struct Mt2203 : Twister<Mt2203, 69, 34, 0xFFFFFFE0> {
  std::uint32_t matA, maskB, maskC;  // the member's row of the table

  // The member is the stream's identifier's. Seeded alike, two members have the same block, and different sequences.
  int seed(const Stream& stream, int n, const std::uint32_t* words) {
    const auto* const row = row_of(_wxr_mt2203_table, stream);
    if (row == nullptr) return status::bad_brng;
    matA = (*row)[0];
    maskB = (*row)[1];
    maskC = (*row)[2];
    return Twister::seed(n, words);
  }
  bool valid(const Stream& stream) const {
    const auto* const row = row_of(_wxr_mt2203_table, stream);
    return row != nullptr && matA == (*row)[0] && maskB == (*row)[1] && maskC == (*row)[2] && Twister::valid();
  }

  struct Rule {
    std::uint32_t matrix;
    VecU32 b, c;
    QOR_INLINE VecU32 temper(VecU32 y) const {
      y ^= y >> 12;
      y ^= (y << 7) & b;
      y ^= (y << 15) & c;
      return y ^ (y >> 18);
    }
  };
  QOR_INLINE Rule rule() const { return {matA, splat<VecU32>(maskB), splat<VecU32>(maskC)}; }
};

}  // namespace qor::rng
