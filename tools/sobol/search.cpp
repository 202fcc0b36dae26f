// Makes src/rng/engines/sobol_table.inc: initial direction numbers of the Sobol engine, by search. Deterministic; takes
// about a minute.
//
//   g++ -std=c++17 -O2 -Isrc tools/sobol/search.cpp -o search && ./search > src/rng/engines/sobol_table.inc
//
// The polynomials are the primitive ones by degree and value; the first dimension is the van der Corput sequence. The
// dimensions are chosen one after another. A candidate is a set of initial direction numbers m_k, k = 1 .. s, odd and
// below 2^k. It must keep property A (I. M. Sobol, 1976): of every aligned 2^D vectors of the first D dimensions, one
// falls into each of the 2^D halves of the axes' product, which is that the first digits' D x D matrix is regular.
// Among those the best two-dimensional projections win: the least sum of 2^t - 1 over the earlier dimensions and m = 1
// .. 20, t being the quality parameter of the first 2^m points as a (t, m, 2)-net. All candidates are tried where there
// are few; otherwise a fixed number of random ones, and then changes of single bits of the best for as long as they
// help.
#include <cstdint>
#include <cstdio>
#include <vector>

#include "numeric/gf2.h"

namespace {

namespace gf2 = qor::numeric::gf2;

constexpr int dimensions = 40, digits = 20, columns = 40;
constexpr std::uint64_t most_tried = 20000;
constexpr std::uint64_t none = ~std::uint64_t{0};

struct Dimension {
  std::uint32_t polynomial;
  std::vector<std::uint32_t> m;
};

// SplitMix64. (G. L. Steele, D. Lea, C. H. Flood, OOPSLA 2014.)
std::uint64_t random_bits() {
  static std::uint64_t state = 20240229;
  std::uint64_t z = state += 0x9E3779B97F4A7C15;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
  return z ^ (z >> 31);
}

// V_k as fractions of 64 bits, from the recurrence of the polynomial x^s + a_1 x^(s-1) + ... + 1.
std::vector<std::uint64_t> directions(const Dimension& dimension) {
  const std::uint32_t p = dimension.polynomial;
  const int s = gf2::degree(p);
  std::vector<std::uint64_t> v(columns);
  for (int k = 0; k < columns; ++k) {
    const std::size_t at = std::size_t(k);
    if (k < s || s == 0) {
      v[at] = std::uint64_t{s == 0 ? 1 : dimension.m[at]} << (63 - k);
      continue;
    }
    v[at] = v[at - std::size_t(s)] >> s;
    for (int i = 1; i <= s; ++i) {
      if ((p >> (s - i)) & 1) v[at] ^= v[at - std::size_t(i)];
    }
  }
  return v;
}

// The first digits of V_1 ... V_40: bit k is V_(k+1)'s.
std::uint64_t first_digits(const std::vector<std::uint64_t>& v) {
  std::uint64_t row = 0;
  for (std::size_t k = 0; k < columns; ++k) row |= (v[k] >> 63) << k;
  return row;
}

// Generator matrix, unit upper triangular: row l, bit r is digit l + 1 of V_(r+1).
struct Matrix {
  std::uint32_t row[digits];
};
Matrix matrix(const std::vector<std::uint64_t>& v) {
  Matrix c{};
  for (int l = 0; l < digits; ++l) {
    for (int r = 0; r < digits; ++r) c.row[l] |= std::uint32_t((v[std::size_t(r)] >> (63 - l)) & 1) << r;
  }
  return c;
}
Matrix inverse(const Matrix& c) {
  Matrix inv{};
  for (int l = digits - 1; l >= 0; --l) {
    inv.row[l] = 1u << l;
    for (int r = l + 1; r < digits; ++r) {
      if ((c.row[l] >> r) & 1) inv.row[l] ^= inv.row[r];
    }
  }
  return inv;
}
Matrix product(const Matrix& a, const Matrix& b) {
  Matrix c{};
  for (int l = 0; l < digits; ++l) {
    for (int r = l; r < digits; ++r) {
      if ((a.row[l] >> r) & 1) c.row[l] ^= b.row[r];
    }
  }
  return c;
}

// t of the (t, m, 2)-net, where the one matrix is the identity and the other c. k1 rows of the identity and k2 of c are
// independent when the latter are so beyond the column k1. Eliminated from the last column on, they are when no pivot
// lies before k1; hence m - t, the most rows that are independent however they are shared out, is the least k2 + pivot.
int quality(const Matrix& c, int m) {
  std::uint32_t by_pivot[digits] = {};
  const std::uint32_t mask = m == 32 ? ~0u : (1u << m) - 1;
  int least_pivot = m, rows = m;
  for (int k2 = 1; k2 <= m; ++k2) {
    std::uint32_t row = c.row[k2 - 1] & mask;
    int pivot = gf2::degree(row);
    while (by_pivot[pivot] != 0) {
      row ^= by_pivot[pivot];
      pivot = 31 - __builtin_clz(row);
    }
    by_pivot[pivot] = row;
    if (pivot < least_pivot) least_pivot = pivot;
    if (k2 + least_pivot < rows) rows = k2 + least_pivot;
  }
  return m - rows;
}

class Search {
 public:
  // The sum to be minimised; `none` without property A or when it is known to reach `limit`.
  std::uint64_t cost(const Dimension& candidate, std::uint64_t limit) const {
    const std::vector<std::uint64_t> v = directions(candidate);
    if (reduced(first_digits(v)) == 0) return none;
    const Matrix c = matrix(v);
    std::uint64_t sum = 0;
    for (const Matrix& other : inverses_) {
      const Matrix relative = product(c, other);
      for (int m = 1; m <= digits; ++m) sum += (std::uint64_t{1} << quality(relative, m)) - 1;
      if (sum >= limit) return none;
    }
    return sum;
  }

  Dimension best(std::uint32_t polynomial) const {
    const int s = gf2::degree(polynomial), bits = s * (s - 1) / 2;
    Dimension best{polynomial, {}};
    std::uint64_t best_choice = 0, least = none;
    const auto consider = [&](std::uint64_t choice) {
      const Dimension candidate{polynomial, numbers(s, choice)};
      const std::uint64_t sum = cost(candidate, least);
      if (sum >= least) return false;
      least = sum;
      best = candidate;
      best_choice = choice;
      return true;
    };
    if (bits < 15) {
      for (std::uint64_t choice = 0; choice >> bits == 0; ++choice) consider(choice);
    } else {
      for (std::uint64_t i = 0; i < most_tried; ++i) consider(random_bits() >> (64 - bits));
      for (bool better = true; better;) {
        better = false;
        const std::uint64_t from = best_choice;
        for (int one = 0; one < bits; ++one) {
          for (int two = one; two < bits; ++two) {
            better |= consider(from ^ (std::uint64_t{1} << one) ^ (two > one ? std::uint64_t{1} << two : 0));
          }
        }
      }
    }
    return best;
  }

  void add(const Dimension& dimension) {
    const std::vector<std::uint64_t> v = directions(dimension);
    reduced_.push_back(reduced(first_digits(v)));
    const Matrix c = matrix(v);
    for (const Matrix& other : inverses_) {
      const Matrix relative = product(c, other);
      for (int m = 1; m <= digits; ++m) {
        const int t = quality(relative, m);
        if (t > worst_[m]) worst_[m] = t;
        sum_[m] += t;
      }
    }
    inverses_.push_back(inverse(c));
  }
  int worst(int m) const { return worst_[m]; }
  double mean(int m) const { return double(sum_[m]) / (dimensions * (dimensions - 1) / 2); }

 private:
  // The row of first digits without its parts in the columns of earlier dimensions; 0 when its own column comes out 0.
  std::uint64_t reduced(std::uint64_t row) const {
    for (std::size_t i = 0; i < reduced_.size(); ++i) {
      if ((row >> i) & 1) row ^= reduced_[i];
    }
    return (row >> reduced_.size()) & 1 ? row : 0;
  }
  // m_k is odd; its k - 1 bits above the lowest come from `choice`.
  static std::vector<std::uint32_t> numbers(int s, std::uint64_t choice) {
    std::vector<std::uint32_t> m;
    for (int k = 1; k <= s; choice >>= k - 1, ++k) m.push_back(std::uint32_t(choice << 1 | 1) & ((1u << k) - 1));
    return m;
  }

  std::vector<std::uint64_t> reduced_;
  std::vector<Matrix> inverses_;
  int worst_[digits + 1] = {};
  std::int64_t sum_[digits + 1] = {};
};

// FNV-1a of the words' bytes, the low one first. (G. Fowler, L. C. Noll, K.-P. Vo, 1991.)
std::uint64_t digest(const std::vector<std::uint32_t>& words) {
  std::uint64_t h = 0xCBF29CE484222325;
  for (const std::uint32_t word : words) {
    for (int shift = 0; shift < 32; shift += 8) h = (h ^ ((word >> shift) & 0xFF)) * 0x100000001B3;
  }
  return h;
}

}  // namespace

int main() {
  Search search;
  std::vector<Dimension> table = {{1, {}}};
  search.add(table[0]);
  for (std::uint32_t p = 3; table.size() < dimensions; p += 2) {
    if (!gf2::is_primitive(p)) continue;
    table.push_back(search.best(p));
    search.add(table.back());
    std::fprintf(stderr, "\rdimension %d of %d", int(table.size()), dimensions);
  }
  std::fprintf(stderr, "\n");

  std::vector<std::uint32_t> words = {dimensions};
  for (const Dimension& dimension : table) {
    words.push_back(dimension.polynomial);
    words.insert(words.end(), dimension.m.begin(), dimension.m.end());
  }
  std::printf("// Made by tools/sobol/search.cpp, not to be edited.\n");
  std::printf(
      "// The number of dimensions, then a line for each: a primitive polynomial (bit i is the coefficient of x^i)\n");
  std::printf(
      "// and as many initial direction numbers as its degree. The polynomial 1 is the van der Corput sequence.\n");
  std::printf("// Digest of the words (FNV-1a, 64 bits): 0x%016llx.\n", static_cast<unsigned long long>(digest(words)));
  std::printf(
      "// Property A holds in the first D dimensions for every D. The quality parameter t of the first 2^m points\n");
  std::printf("// in the two-dimensional projections, worst and mean of all %d:", dimensions * (dimensions - 1) / 2);
  const int shown[] = {6, 8, 10, 12, 14, 16, 18, 20};
  for (const int m : shown) {
    std::printf("%s m = %d: %d, %.3f%s", m == 6 || m == 14 ? "\n//  " : "", m, search.worst(m), search.mean(m),
                m == 20 ? ".\n" : ";");
  }
  std::printf("%d,\n", dimensions);
  for (const Dimension& dimension : table) {
    std::printf("%u,", dimension.polynomial);
    for (const std::uint32_t m : dimension.m) std::printf(" %u,", m);
    std::printf("\n");
  }
}
