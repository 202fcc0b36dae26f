// The digital sequences of the quasi-random engines by definition: a generator matrix for each coordinate, multiplied
// with the digits of the index.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace plain {

using Words = std::vector<unsigned>;
// From a text of hexadecimal words.
inline Words words(const std::string& text) {
  std::istringstream in(text);
  in >> std::hex;
  return {std::istream_iterator<unsigned>(in), {}};
}
// Row l, bit r: the factor of the index's digit r in digit l (from the top) of the coordinate.
using Matrix = std::vector<unsigned>;

inline unsigned coordinate(const Matrix& c, unsigned index) {
  unsigned word = 0;
  for (const unsigned row : c) word = word << 1 | unsigned(std::popcount(row & index) % 2);
  return word;
}
inline unsigned gray_code(unsigned i) { return i ^ (i >> 1); }

// The words of the library's table, as a caller would give them.
inline const Words& sobol_table() {
  static const Words table = {
#include "rng/engines/sobol_table.inc"
  };
  return table;
}

// By the recurrence of the integers: m_k = 2 a_1 m_(k-1) + 4 a_2 m_(k-2) + ... + 2^s m_(k-s) + m_(k-s), sums modulo 2.
inline std::vector<Matrix> sobol_matrices(const Words& table) {
  std::vector<Matrix> matrices;
  for (std::size_t at = 1; at < table.size();) {
    const unsigned p = table[at++];
    const unsigned s = unsigned(std::bit_width(p)) - 1;
    std::vector<std::uint64_t> m(33, 1);
    for (unsigned k = 1; k <= s; ++k) m[k] = table[at++];
    for (unsigned k = s + 1; s > 0 && k <= 32; ++k) {
      m[k] = m[k - s];
      for (unsigned i = 1; i <= s; ++i) m[k] ^= (p >> (s - i) & 1) != 0 ? m[k - i] << i : 0;
    }
    Matrix c(32);
    for (unsigned k = 1; k <= 32; ++k) {
      for (unsigned l = 0; l < k; ++l) c[l] |= unsigned(m[k] >> (k - 1 - l) & 1) << (k - 1);
    }
    matrices.push_back(c);
  }
  return matrices;
}

// Polynomials over two elements as lists of coefficients, the constant first.
using Polynomial = std::vector<int>;
inline Polynomial polynomial(unsigned bits) {
  Polynomial p;
  for (; bits != 0; bits >>= 1) p.push_back(int(bits & 1));
  return p;
}
inline Polynomial product(const Polynomial& a, const Polynomial& b) {
  Polynomial c(a.size() + b.size() - 1);
  for (std::size_t i = 0; i < a.size(); ++i) {
    for (std::size_t j = 0; j < b.size(); ++j) c[i + j] ^= a[i] & b[j];
  }
  return c;
}
// x^u / b = sum of s[r] x^(-r-1): compares the coefficients of b s with those of x^u.
inline std::vector<int> laurent_series(std::size_t u, const Polynomial& b, std::size_t terms) {
  const std::size_t m = b.size() - 1;
  std::vector<int> s(terms);
  for (std::size_t r = 0; r < terms; ++r) {
    s[r] = m == r + 1 + u ? 1 : 0;
    for (std::size_t i = 1; i <= std::min(r, m); ++i) s[r] ^= b[m - i] & s[r - i];
  }
  return s;
}

// The first irreducible polynomials, by striking out all products.
inline Words irreducible_polynomials(std::size_t count) {
  constexpr unsigned end = 1 << 12;
  std::vector<bool> composite(end);
  Words list;
  for (unsigned p = 2; list.size() < count; ++p) {
    if (composite[p]) continue;
    list.push_back(p);
    for (unsigned q = p; std::bit_width(q) + std::bit_width(p) <= 13; ++q) {
      unsigned multiple = 0;
      for (unsigned k = 0; k < 12; ++k) multiple ^= (q >> k & 1) * (p << k);
      composite[multiple] = true;
    }
  }
  return list;
}

inline std::vector<Matrix> niederreiter_matrices(const Words& polynomials) {
  std::vector<Matrix> matrices;
  for (const unsigned word : polynomials) {
    const Polynomial p = polynomial(word);
    const std::size_t e = p.size() - 1;
    Matrix c(32);
    Polynomial power = {1};
    for (std::size_t j = 0; j < 32; ++j) {
      if (j % e == 0) power = product(power, p);
      const std::vector<int> s = laurent_series(j % e, power, 32);
      for (unsigned r = 0; r < 32; ++r) c[j] |= unsigned(s[r]) << r;
    }
    matrices.push_back(c);
  }
  return matrices;
}

}  // namespace plain
