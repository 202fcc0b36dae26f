// Modular powers, by squaring from the exponent's least significant bit: the arithmetic of leapfrog and skip-ahead. All
// of it is constexpr, so that jump tables are computed by the compiler. Exponents of 0 (and below) give the identity.
#pragma once

#include <array>
#include <cstdint>

namespace qor::numeric {

template <class T, class Multiply>
constexpr T power(T base, std::int32_t n, T one, Multiply multiply) {
  T result = one;
  for (; n > 0; n >>= 1) {
    if ((n & 1) != 0) result = multiply(base, result);
    if (n > 1) base = multiply(base, base);
  }
  return result;
}

constexpr std::uint32_t mul_mod(std::uint32_t a, std::uint32_t b, std::uint32_t m) {
  return static_cast<std::uint32_t>(std::uint64_t{a} * b % m);
}
constexpr std::uint32_t pow_mod(std::uint32_t a, std::int32_t n, std::uint32_t m) {
  return power(a, n, std::uint32_t{1}, [m](std::uint32_t x, std::uint32_t y) { return mul_mod(x, y, m); });
}

// Modulo 2^31 - 1, for factors below it: 2^31 is congruent to 1, so the product's two halves are added.
inline constexpr std::uint32_t m31 = 0x7FFFFFFF;
constexpr std::uint32_t mul_mod_m31(std::uint32_t a, std::uint32_t b) {
  const std::uint64_t p = std::uint64_t{a} * b;
  const std::uint32_t sum = static_cast<std::uint32_t>(p & m31) + static_cast<std::uint32_t>(p >> 31);
  return sum >= m31 ? sum - m31 : sum;
}
constexpr std::uint32_t pow_mod_m31(std::uint32_t a, std::int32_t n) {
  return power(a, n, std::uint32_t{1}, mul_mod_m31);
}

inline constexpr std::uint64_t mask59 = (std::uint64_t{1} << 59) - 1;
constexpr std::uint64_t mul_mod_2_59(std::uint64_t a, std::uint64_t b) { return a * b & mask59; }
constexpr std::uint64_t pow_mod_2_59(std::uint64_t a, std::int32_t n) {
  return power(a, n, std::uint64_t{1}, mul_mod_2_59);
}

using Vector3 = std::array<std::uint32_t, 3>;
using Matrix3 = std::array<std::uint32_t, 9>;  // by rows
inline constexpr Matrix3 identity3 = {1, 0, 0, 0, 1, 0, 0, 0, 1};

// The sum of three products of 64 bits each needs a reduction in between.
constexpr std::uint32_t dot_mod(const std::uint32_t* row, std::uint32_t x, std::uint32_t y, std::uint32_t z,
                                std::uint32_t m) {
  const std::uint64_t sum = std::uint64_t{mul_mod(row[0], x, m)} + mul_mod(row[1], y, m) + mul_mod(row[2], z, m);
  return static_cast<std::uint32_t>(sum % m);
}
constexpr Vector3 mul_mod(const Matrix3& a, const Vector3& v, std::uint32_t m) {
  Vector3 r{};
  for (std::size_t i = 0; i < 3; ++i) r[i] = dot_mod(&a[3 * i], v[0], v[1], v[2], m);
  return r;
}
constexpr Matrix3 mul_mod(const Matrix3& a, const Matrix3& b, std::uint32_t m) {
  Matrix3 r{};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) r[3 * i + j] = dot_mod(&a[3 * i], b[j], b[3 + j], b[6 + j], m);
  }
  return r;
}
constexpr Matrix3 pow_mod(const Matrix3& a, std::int32_t n, std::uint32_t m) {
  return power(a, n, identity3, [m](const Matrix3& x, const Matrix3& y) { return mul_mod(x, y, m); });
}
// One step of x[k+3] = row[2] x[k] + row[1] x[k+1] + row[0] x[k+2].
constexpr Matrix3 companion(const Vector3& row) { return {0, 1, 0, 0, 0, 1, row[2], row[1], row[0]}; }

}  // namespace qor::numeric
