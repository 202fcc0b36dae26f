// The characteristic polynomial of a member's recurrence, and whether it is irreducible.
#pragma once

#include <NTL/GF2X.h>

#include <cstdint>
#include <vector>

namespace mt2203 {

// With P = t^69 + t^34 and Q = t^68 + t^33 the polynomial is
//   P^27 Q^5 + sum of a_i P^27 Q^(4-i), i < 5, + sum of a_i P^(31-i), i >= 5,
// a_i the bits of matA: two different words have two different polynomials, the terms being of different degrees.
// (M. Matsumoto and T. Nishimura, ACM Trans. Model. Comput. Simul. 8, 1998.)
class Characteristic {
 public:
  Characteristic();
  NTL::GF2X of(std::uint32_t a) const;

 private:
  NTL::GF2X leading_, term_[32];
};

// Decides about many words quickly: small factors first.
class IrreducibilityTest {
 public:
  explicit IrreducibilityTest(const Characteristic& characteristic);
  bool operator()(std::uint32_t a) const;

 private:
  // Residues modulo an irreducible polynomial of small degree: they are linear in the word, a table for each byte.
  struct SmallFactor {
    std::uint16_t leading, byte[4][256];
  };
  const Characteristic& characteristic_;
  std::vector<SmallFactor> small_;
};

}  // namespace mt2203
