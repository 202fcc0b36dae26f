#include "characteristic.h"

#include <NTL/GF2XFactoring.h>

#include "member.h"
#include "modulus.h"

namespace mt2203 {
namespace {

using NTL::GF2X;

constexpr int table_degree = 12, sieve_degree = 500;

GF2X two_terms(int high, int low) {
  GF2X p;
  SetCoeff(p, high);
  SetCoeff(p, low);
  return p;
}

std::uint16_t bits(const GF2X& p) {
  std::uint16_t v = 0;
  for (long i = 0; i <= deg(p); ++i) v = static_cast<std::uint16_t>(v | IsOne(coeff(p, i)) << i);
  return v;
}

}  // namespace

Characteristic::Characteristic() {
  const GF2X p = two_terms(length, middle), q = two_terms(length - 1, middle - 1), p27 = power(p, 32 - low_bits);
  leading_ = p27 * power(q, low_bits);
  for (int i = 0; i < 32; ++i) term_[i] = i < low_bits ? p27 * power(q, low_bits - 1 - i) : power(p, 31 - i);
}

GF2X Characteristic::of(std::uint32_t a) const {
  GF2X f = leading_;
  for (int i = 0; i < 32; ++i) {
    if (a >> i & 1) f += term_[i];
  }
  return f;
}

IrreducibilityTest::IrreducibilityTest(const Characteristic& characteristic) : characteristic_(characteristic) {
  for (long code = 7; code < 1L << (table_degree + 1); code += 2) {
    GF2X f;
    for (int i = 0; i <= table_degree; ++i) SetCoeff(f, i, code >> i & 1);
    if (!IterIrredTest(f)) continue;
    SmallFactor& s = small_.emplace_back();
    s.leading = bits(characteristic.of(0) % f);
    for (int byte = 0; byte < 4; ++byte) {
      for (std::uint32_t v = 0; v < 256; ++v) {
        s.byte[byte][v] = static_cast<std::uint16_t>(bits(characteristic.of(v << 8 * byte) % f) ^ s.leading);
      }
    }
  }
}

// The last step is t^(2^2203) = t: 2203 being prime, every factor then has degree 1 or 2203, none repeated; and a
// polynomial of this degree is no product of the two of degree 1.
bool IrreducibilityTest::operator()(std::uint32_t a) const {
  for (const SmallFactor& s : small_) {
    if ((s.leading ^ s.byte[0][a & 255] ^ s.byte[1][a >> 8 & 255] ^ s.byte[2][a >> 16 & 255] ^ s.byte[3][a >> 24]) ==
        0) {
      return false;
    }
  }
  const GF2X f = characteristic_.of(a);
  const Modulus modulus(f);
  const Modulus::Element t = element(GF2X(1, 1));
  Modulus::Element x = t, product = element(GF2X(0, 1));
  int next_gcd = 2 * table_degree;
  for (int d = 1; d <= degree; ++d) {
    x = modulus.square(x);
    if (d <= table_degree || d > sieve_degree) continue;
    Modulus::Element factor = x;
    factor[0] ^= t[0];
    product = modulus.multiply(product, factor);
    if (d == next_gcd || d == sieve_degree) {  // any factor whose degree divides one of those gone through
      if (!IsOne(GCD(polynomial(product), f))) return false;
      next_gcd = 3 * d / 2;
    }
  }
  return x == t;
}

}  // namespace mt2203
