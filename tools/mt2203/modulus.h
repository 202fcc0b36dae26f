// Arithmetic modulo a characteristic polynomial, several times as quick as the general one: the polynomial's second
// term lies more than a word below the first, so that a product is reduced word by word.
#pragma once

#include <NTL/GF2X.h>

#include <array>
#include <cstdint>

#include "member.h"

namespace mt2203 {

class Modulus {
 public:
  static constexpr int words = degree / 64 + 1;
  using Element = std::array<std::uint64_t, words>;

  // t^2203 plus terms of degree 2203 - 64 at most.
  explicit Modulus(const NTL::GF2X& f);

  Element square(const Element& x) const;
  Element multiply(const Element& x, const Element& y) const;

 private:
  using Product = std::array<std::uint64_t, 2 * words>;
  Element reduce(Product& p) const;
  static void add_product(std::uint64_t x, const Element& y, std::uint64_t* to);

  Element rest_{};  // (f - t^2203) * t^(64 * words - 2203)
};

Modulus::Element element(const NTL::GF2X& p);
NTL::GF2X polynomial(const Modulus::Element& x);

}  // namespace mt2203
