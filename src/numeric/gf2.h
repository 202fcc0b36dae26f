// Polynomials over the field of two elements: a word holds the coefficient of x^i in bit i.
#pragma once

#include <cstdint>

namespace qor::numeric::gf2 {

// -1 for the polynomial 0.
constexpr int degree(std::uint64_t p) {
  int d = -1;
  for (; p != 0; p >>= 1) ++d;
  return d;
}

constexpr std::uint32_t remainder(std::uint32_t a, std::uint32_t p) {
  const int d = degree(p);
  for (int k = degree(a) - d; k >= 0; --k) {
    if ((a >> (k + d)) & 1) a ^= p << k;
  }
  return a;
}
constexpr std::uint32_t gcd(std::uint32_t a, std::uint32_t b) {
  while (b != 0) {
    const std::uint32_t rest = remainder(a, b);
    a = b;
    b = rest;
  }
  return a;
}

// a b mod p, for a and b of lower degree than p, which is of degree d.
constexpr std::uint32_t mul_mod(std::uint32_t a, std::uint32_t b, std::uint32_t p, int d) {
  std::uint32_t product = 0;
  for (; b != 0; b >>= 1) {
    if (b & 1) product ^= a;
    a <<= 1;
    if ((a >> d) & 1) a ^= p;
  }
  return product;
}
constexpr std::uint32_t pow_mod(std::uint32_t a, std::uint32_t n, std::uint32_t p, int d) {
  std::uint32_t power = remainder(1, p);
  for (; n != 0; n >>= 1) {
    if (n & 1) power = mul_mod(power, a, p, d);
    a = mul_mod(a, a, p, d);
  }
  return power;
}

// x^(2^i) - x is the product of the irreducible polynomials whose degree divides i: an irreducible p has no factor in
// common with any of them up to half its degree. (M. Ben-Or, FOCS 1981.)
constexpr bool is_irreducible(std::uint32_t p) {
  const int d = degree(p);
  if (d < 1) return false;
  const std::uint32_t x = remainder(2, p);
  std::uint32_t power = x;
  for (int i = 1; i <= d / 2; ++i) {
    power = mul_mod(power, power, p, d);
    if (gcd(p, power ^ x) != 1) return false;
  }
  return true;
}

// Irreducible, with x of the full order 2^d - 1: x to the order's part without a prime is never 1.
constexpr bool is_primitive(std::uint32_t p) {
  if (p == 2 || !is_irreducible(p)) return false;
  const int d = degree(p);
  const std::uint32_t x = remainder(2, p), order = (std::uint32_t{1} << d) - 1;
  std::uint32_t rest = order;
  for (std::uint32_t q = 3; rest > 1; q += 2) {
    if (q * q > rest || q > 0xFFFF) q = rest;  // what is left is a prime
    if (rest % q != 0) continue;
    while (rest % q == 0) rest /= q;
    if (pow_mod(x, order / q, p, d) == 1) return false;
  }
  return true;
}

}  // namespace qor::numeric::gf2
