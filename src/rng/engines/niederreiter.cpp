#include "rng/engines/niederreiter.h"

#include <algorithm>
#include <array>

#include "numeric/gf2.h"

namespace qor::rng {
namespace {

namespace gf2 = numeric::gf2;

// The irreducible polynomials by degree and value: x, x + 1, x^2 + x + 1 ...
constexpr std::array<std::uint16_t, Niederreiter::most> irreducible = [] {
  std::array<std::uint16_t, Niederreiter::most> list{};
  std::uint16_t p = 2;
  for (std::uint16_t& entry : list) {
    while (!gf2::is_irreducible(p)) ++p;
    entry = p++;
  }
  return list;
}();
static_assert(irreducible[2] == 7 && gf2::degree(irreducible[Niederreiter::most - 1]) == 11);

// Bit j of word r and bit r of word j change places: halves of ever smaller blocks do.
void transpose(std::uint32_t (&a)[32]) {
  std::uint32_t low = 0xFFFF;
  for (unsigned width = 16; width > 0; width /= 2, low ^= low << width) {
    for (unsigned k = 0; k < 32; ++k) {
      if ((k & width) != 0) continue;
      const std::uint32_t change = ((a[k] >> width) ^ a[k + width]) & low;
      a[k] ^= change << width;
      a[k + width] ^= change;
    }
  }
}

// The direction numbers of a polynomial p of degree e. Digit j = q e + u of a coordinate (0 <= u < e, from the top) is
// the product of the index's digits r with the coefficients of x^(-r-1) in x^u / p^(q+1). They are those of the long
// division of 1 by p^(q+1), taken u places on.
void expand(std::uint32_t p, std::uint32_t (&v)[Niederreiter::digits]) {
  constexpr int digits = Niederreiter::digits;
  const int e = gf2::degree(p);
  std::uint64_t power = 1;
  for (int j = 0; j < digits;) {
    std::uint64_t next = 0;
    for (int k = 0; k <= e; ++k) {
      if ((p >> k) & 1) next ^= power << k;
    }
    power = next;
    const int d = gf2::degree(power);
    std::uint64_t remainder = 1, quotient = 0;
    for (int r = 0; r < digits + e - 1; ++r) {
      remainder <<= 1;
      if (((remainder >> d) & 1) == 0) continue;
      remainder ^= power;
      quotient |= std::uint64_t{1} << r;
    }
    for (int u = 0; u < e && j < digits; ++u, ++j) v[digits - 1 - j] = static_cast<std::uint32_t>(quotient >> u);
  }
  transpose(v);
}

// Irreducible polynomials that all differ, as many as the first word says.
bool is_table(int n, const std::uint32_t* words) {
  if (words[0] < 1 || words[0] > Niederreiter::most || words[0] != static_cast<std::uint32_t>(n) - 1) return false;
  for (int j = 1; j < n; ++j) {
    if (!gf2::is_irreducible(words[j]) || std::find(words + 1, words + j, words[j]) != words + j) return false;
  }
  return true;
}

}  // namespace

int Niederreiter::seed(Stream& stream, int n, const std::uint32_t* params) {
  delete_chunks(&stream, QOR_RNG_CHUNK_NIEDERR);
  const std::uint32_t* polynomials = nullptr;
  int s = status::ok;
  if (n > 1) {
    s = is_table(n, params) ? add_copy(&stream, QOR_RNG_CHUNK_NIEDERR, params, n) : status::bad_argument;
    if (s == status::ok) polynomials = params + 1;
  }
  clear(polynomials != nullptr ? n - 1 : dimension_of(n, params));
  for (int j = 0; j < dimension; ++j) {
    std::uint32_t v[digits];
    expand(polynomials != nullptr ? polynomials[j] : irreducible[static_cast<std::size_t>(j)], v);
    set_column(j, v);
  }
  return s;
}

}  // namespace qor::rng
