// Equidistribution of a member with given masks, and the search for the best masks.
#pragma once

#include <NTL/GF2X.h>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

#include "dual_lattice.h"
#include "member.h"

namespace mt2203 {

// k[v], v = 1 .. 32: the largest number of successive outputs whose leading v bits together are uniform over the
// period. `defect` is the sum of floor(2203 / v) - k[v].
struct Profile {
  std::array<int, 33> k{};
  int defect = 0;
};

class Equidistribution {
 public:
  // A word matA and its irreducible characteristic polynomial.
  Equidistribution(std::uint32_t a, const NTL::GF2X& characteristic);

  Profile of(std::uint32_t b, std::uint32_t c) const;

  struct Masks {
    std::uint32_t b, c;
    int defect;
  };
  // From the leading output bit down, each step trying all values of the mask bits that it meets first and keeping the
  // best, `beam` of them down to bit 16. Nothing when the defect seems to end up above family_defect.
  std::optional<Masks> best_masks(int beam) const;

 private:
  // The bits of an untempered word as elements of GF(2)[t] / (characteristic), the leading output bit being 1.
  using Bits = std::array<LatticeVector, 32>;
  struct Node;

  NTL::GF2X leading_bit(const Tempering& tempering) const;
  std::shared_ptr<const Bits> bits_over(const NTL::GF2X& leading) const;
  static LatticeVector sum(const Bits& bits, std::uint32_t mask);

  NTL::GF2X characteristic_;
  std::array<NTL::GF2X, 32> bit_;  // numerators of the generating functions of the word's bits
};

}  // namespace mt2203
