#include "rng/engines/sobol.h"

#include <algorithm>

#include "numeric/gf2.h"

namespace qor::rng {
namespace {

namespace gf2 = numeric::gf2;

// Dimensions, and for each a primitive polynomial with as many direction numbers as its degree: the form in which a
// caller's table comes, too.
constexpr std::uint32_t table[] = {
#include "rng/engines/sobol_table.inc"
};
static_assert(table[0] == Sobol::most);

// The 32 direction numbers of the coordinate at `entry`, from the recurrence of its polynomial
// x^s + a_1 x^(s-1) + ... + a_s. Returns the entry after it.
const std::uint32_t* expand(const std::uint32_t* entry, std::uint32_t (&v)[Sobol::digits]) {
  const std::uint32_t p = *entry++;
  const int s = gf2::degree(p);
  for (int k = 0; k < Sobol::digits; ++k) {
    if (k < s || s == 0) {
      v[k] = (s == 0 ? 1 : entry[k]) << (31 - k);
      continue;
    }
    v[k] = v[k - s] >> s;
    for (int i = 1; i <= s; ++i) {
      if ((p >> (s - i)) & 1) v[k] ^= v[k - i];
    }
  }
  return entry + s;
}

// Primitive polynomials that all differ (or 1, without numbers), the k-th direction number odd and below 2^k, and no
// word missing or left.
bool is_table(int n, const std::uint32_t* words) {
  if (words[0] < 1 || words[0] > Sobol::most) return false;
  const int dimensions = static_cast<int>(words[0]);
  std::uint32_t seen[Sobol::most];
  int at = 1;
  for (int j = 0; j < dimensions; ++j) {
    if (at >= n) return false;
    const std::uint32_t p = seen[j] = words[at++];
    if (std::find(seen, seen + j, p) != seen + j || (p != 1 && !gf2::is_primitive(p))) return false;
    const int s = gf2::degree(p);
    if (s > n - at) return false;
    for (int k = 1; k <= s; ++k, ++at) {
      if (words[at] % 2 == 0 || words[at] >> k != 0) return false;
    }
  }
  return at == n;
}

}  // namespace

int Sobol::seed(Stream& stream, int n, const std::uint32_t* params) {
  delete_chunks(&stream, QOR_RNG_CHUNK_SOBOL);
  const std::uint32_t* numbers = table;
  int s = status::ok;
  if (n > 1) {
    s = is_table(n, params) ? add_copy(&stream, QOR_RNG_CHUNK_SOBOL, params, n) : status::bad_argument;
    if (s == status::ok) numbers = params;
  }
  clear(numbers == params ? static_cast<int>(params[0]) : dimension_of(n, params));
  const std::uint32_t* entry = numbers + 1;
  for (int j = 0; j < dimension; ++j) {
    std::uint32_t v[digits];
    entry = expand(entry, v);
    set_column(j, v);
  }
  return s;
}

}  // namespace qor::rng
