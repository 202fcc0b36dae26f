#include "modulus.h"

#include <immintrin.h>

#include <cstdlib>

namespace mt2203 {
namespace {

__m128i carryless(std::uint64_t x, std::uint64_t y) {
  return _mm_clmulepi64_si128(_mm_cvtsi64_si128(static_cast<long long>(x)),
                              _mm_cvtsi64_si128(static_cast<long long>(y)), 0);
}

constexpr int spare = 64 * Modulus::words - degree;

}  // namespace

Modulus::Element element(const NTL::GF2X& p) {
  Modulus::Element x{};
  for (long j = 0; j <= deg(p); ++j) {
    if (IsOne(coeff(p, j))) x[static_cast<std::size_t>(j / 64)] |= std::uint64_t{1} << j % 64;
  }
  return x;
}

NTL::GF2X polynomial(const Modulus::Element& x) {
  NTL::GF2X p;
  for (long j = 0; j < 64 * Modulus::words; ++j) SetCoeff(p, j, x[static_cast<std::size_t>(j / 64)] >> j % 64 & 1);
  return p;
}

Modulus::Modulus(const NTL::GF2X& f) {
  NTL::GF2X rest = f;
  SetCoeff(rest, degree, 0);
  if (deg(f) != degree || deg(rest) > degree - 64) std::abort();
  rest_ = element(LeftShift(rest, spare));
}

void Modulus::add_product(std::uint64_t x, const Element& y, std::uint64_t* to) {
  __m128i carry = _mm_setzero_si128();  // each product's high word goes into the next
  for (std::size_t i = 0; i < words; ++i) {
    carry = _mm_xor_si128(_mm_srli_si128(carry, 8), carryless(x, y[i]));
    to[i] ^= static_cast<std::uint64_t>(_mm_cvtsi128_si64(carry));
  }
  to[words] ^= static_cast<std::uint64_t>(_mm_extract_epi64(carry, 1));
}

// p is kept times t^spare, so that the words above the first 35 are the multiples of t^2203.
Modulus::Element Modulus::reduce(Product& p) const {
  for (std::size_t i = 2 * words - 1; i > 0; --i) p[i] = p[i] << spare | p[i - 1] >> (64 - spare);
  p[0] <<= spare;
  for (std::size_t i = 2 * words - 1; i >= words; --i) {
    const std::uint64_t high = p[i];
    p[i] = 0;
    add_product(high, rest_, p.data() + i - words);
  }
  Element r;
  for (std::size_t i = 0; i + 1 < words; ++i) r[i] = p[i] >> spare | p[i + 1] << (64 - spare);
  r[words - 1] = p[words - 1] >> spare;
  return r;
}

Modulus::Element Modulus::square(const Element& x) const {
  Product p;
  for (std::size_t i = 0; i < words; ++i) {
    _mm_storeu_si128(reinterpret_cast<__m128i_u*>(p.data() + 2 * i), carryless(x[i], x[i]));
  }
  return reduce(p);
}

Modulus::Element Modulus::multiply(const Element& x, const Element& y) const {
  Product p{};
  for (std::size_t i = 0; i < words; ++i) add_product(x[i], y, p.data() + i);
  return reduce(p);
}

}  // namespace mt2203
