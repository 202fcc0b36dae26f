// Chooses the moduli and multipliers of the 273 Wichmann-Hill members and prints src/rng/engines/wh_table.inc.
//
//   g++ -std=c++17 -O2 -ffp-contract=off tools/gen_wh_table.cpp -o gen_wh_table
//   ./gen_wh_table > src/rng/engines/wh_table.inc
//   ./gen_wh_table --verify     proves every rule of the table that it was compiled with, prints the worst figures
//
// Moduli. The 1092 largest primes m below 2^24 for which q = (m - 1)/2 is a prime too, in descending order, four to a
// member. A primitive root's cycle has m - 1 = 2 q steps, so the cycles of any two components of all members share the
// factor 2 and nothing else: every member's period is 2 q0 q1 q2 q3, the longest that four odd primes allow.
//
// Multipliers. For each modulus the first a = floor(z m / 2^32), z' = 69069 z + 1 mod 2^32 from z = m, that is a
// primitive root (a^q = -1, a not -1) and passes the spectral test in dimensions d = 2 .. 8: the points of d
// successive values lie on hyperplanes 1/v apart, v the length of the shortest vector of the dual lattice
// {k : k0 + k1 a + ... + k[d-1] a^(d-1) = 0 mod m}, and v is at least `merit` times the bound that no lattice exceeds,
// sqrt(g) m^(1/d), g being Hermite's constant of dimension d. (J. H. Conway and N. J. A. Sloane, Sphere packings,
// lattices and groups, 1988; the figure of merit is that of G. S. Fishman and L. R. Moore, SIAM J. Sci. Stat. Comput.
// 7, 1986, with the exact bound.)
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

using Word = std::uint32_t;
using Long = std::int64_t;

constexpr int members = 273, components = 4, dimensions = 8;
constexpr double merit = 0.70;

struct Row {
  Word modulus[components], multiplier[components];
};
#if __has_include("../src/rng/engines/wh_table.inc")
const std::vector<Row> shipped = {
#include "../src/rng/engines/wh_table.inc"
};
#else
const std::vector<Row> shipped;
#endif

bool is_prime(Word n) {
  if (n < 2) return false;
  for (Word f = 2; f <= n / f; ++f) {
    if (n % f == 0) return false;
  }
  return true;
}
Word mul_mod(Word a, Word b, Word m) { return static_cast<Word>(std::uint64_t{a} * b % m); }
Word pow_mod(Word a, Word n, Word m) {
  Word r = 1;
  for (; n != 0; n >>= 1, a = mul_mod(a, a, m)) {
    if ((n & 1) != 0) r = mul_mod(r, a, m);
  }
  return r;
}
// For m = 2 q + 1, q prime: the orders possible are 1, 2, q and 2 q.
bool is_primitive_root(Word a, Word m) { return a > 1 && a < m - 1 && pow_mod(a, (m - 1) / 2, m) == m - 1; }

// ---- the spectral test ----

using Vector = std::array<Long, dimensions>;

Long dot(const Vector& a, const Vector& b) {
  Long s = 0;
  for (int i = 0; i < dimensions; ++i) s += a[i] * b[i];
  return s;
}

// A basis of the dual lattice, one dimension larger with each grow(), reduced as A. K. Lenstra, H. W. Lenstra and
// L. Lovasz do (Math. Ann. 261, 1982). What rounding does to the coefficients can make the basis worse, not wrong.
class DualLattice {
 public:
  DualLattice(Word m, Word a) : m_(m), a_(a) {
    basis_[0][0] = m;
    d_ = 1;
  }
  // Squared length of the shortest vector in one more dimension.
  Long grow() {
    power_ = mul_mod(power_, a_, m_);
    Vector v{};
    v[0] = -Long{power_};
    v[d_] = 1;
    basis_[d_++] = v;
    reduce();
    best_ = dot(basis_[0], basis_[0]);
    for (int i = 1; i < d_; ++i) best_ = std::min(best_, dot(basis_[i], basis_[i]));
    x_.fill(0);
    enumerate(d_ - 1, 0.0);
    return best_;
  }

 private:
  void orthogonalise(int from) {
    for (int i = from; i < d_; ++i) {
      std::array<double, dimensions> r{};
      for (int j = 0; j <= i; ++j) {
        r[j] = static_cast<double>(dot(basis_[i], basis_[j]));
        for (int k = 0; k < j; ++k) r[j] -= mu_[j][k] * r[k];
        if (j < i) mu_[i][j] = r[j] / norm_[j];
      }
      norm_[i] = r[i];
    }
  }
  void reduce() {
    orthogonalise(0);
    for (int k = 1; k < d_;) {
      for (int j = k - 1; j >= 0; --j) {
        const Long q = std::llround(mu_[k][j]);
        if (q == 0) continue;
        for (int i = 0; i < d_; ++i) basis_[k][i] -= q * basis_[j][i];
        orthogonalise(k);
      }
      if (norm_[k] >= (0.99 - mu_[k][k - 1] * mu_[k][k - 1]) * norm_[k - 1]) {
        ++k;
      } else {
        std::swap(basis_[k], basis_[k - 1]);
        orthogonalise(k - 1);
        k = std::max(k - 1, 1);
      }
    }
    orthogonalise(0);
  }
  // All combinations whose part orthogonal to the first `level` basis vectors is not longer than the best so far
  // (U. Fincke and M. Pohst, Math. Comp. 44, 1985); their lengths are computed in integers.
  void enumerate(int level, double length) {
    if (level < 0) {
      Vector v{};
      for (int i = 0; i < d_; ++i) {
        for (int c = 0; c < d_; ++c) v[c] += x_[i] * basis_[i][c];
      }
      const Long exact = dot(v, v);
      if (exact > 0) best_ = std::min(best_, exact);
      return;
    }
    double centre = 0;
    for (int i = level + 1; i < d_; ++i) centre -= static_cast<double>(x_[i]) * mu_[i][level];
    const double room = (static_cast<double>(best_) * (1 + 1e-9) - length) / norm_[level];
    if (room < 0) return;
    const double reach = std::sqrt(room);
    for (Long x = std::llround(std::ceil(centre - reach)); static_cast<double>(x) <= centre + reach; ++x) {
      const double off = static_cast<double>(x) - centre;
      x_[level] = x;
      enumerate(level - 1, length + off * off * norm_[level]);
    }
    x_[level] = 0;
  }

  Word m_, a_, power_ = 1;
  int d_;
  std::array<Vector, dimensions> basis_{};
  std::array<std::array<double, dimensions>, dimensions> mu_{};
  std::array<double, dimensions> norm_{};
  Vector x_{};
  Long best_ = 0;
};

// The least of the normalised lengths, or the first that is below the limit.
double figure(Word m, Word a, double limit) {
  // Hermite's constants to the power of the dimension: 1, 4/3, 2, 4, 8, 64/3, 64, 256.
  static const double hermite[] = {1, 1, 4.0 / 3, 2, 4, 8, 64.0 / 3, 64, 256};
  DualLattice lattice(m, a);
  double worst = 1;
  for (int d = 2; d <= dimensions; ++d) {
    const double bound = std::pow(hermite[d] * m * static_cast<double>(m), 1.0 / d);
    worst = std::min(worst, std::sqrt(static_cast<double>(lattice.grow()) / bound));
    if (worst < limit) break;
  }
  return worst;
}

// ---- the table ----

Word choose_multiplier(Word m) {
  for (Word z = m;;) {
    z = 69069 * z + 1;
    const Word a = static_cast<Word>(std::uint64_t{z} * m >> 32);
    if (is_primitive_root(a, m) && figure(m, a, merit) >= merit) return a;
  }
}

// 64-bit FNV-1a of the words, low byte first, in the order of the file.
std::uint64_t digest(const std::vector<Row>& rows) {
  std::uint64_t h = 0xCBF29CE484222325;
  const auto add = [&h](Word w) {
    for (int i = 0; i < 4; ++i, w >>= 8) h = (h ^ (w & 0xFF)) * 0x100000001B3;
  };
  for (const Row& row : rows) {
    for (const Word m : row.modulus) add(m);
    for (const Word a : row.multiplier) add(a);
  }
  return h;
}

int generate() {
  std::vector<Row> rows(members);
  Word m = (1 << 24) + 1;
  for (int i = 0; i < members; ++i) {
    for (int c = 0; c < components; ++c) {
      do m -= 2;
      while (!is_prime((m - 1) / 2) || !is_prime(m));
      rows[i].modulus[c] = m;
      rows[i].multiplier[c] = choose_multiplier(m);
    }
    if (i % 16 == 0) std::fprintf(stderr, "\r%d of %d members", i, members);
  }
  std::fprintf(stderr, "\r%d members, the least modulus %u\n", members, m);
  std::printf(
      "// Made by tools/gen_wh_table.cpp, which tells the rules; not to be edited. A row a member, 273 of them: the "
      "four\n"
      "// moduli, then the four multipliers. Digest (64-bit FNV-1a of the words, low byte first): %016llx\n",
      static_cast<unsigned long long>(digest(rows)));
  for (const Row& row : rows) {
    const Word *p = row.modulus, *a = row.multiplier;
    std::printf("{{%u, %u, %u, %u}, {%u, %u, %u, %u}},\n", p[0], p[1], p[2], p[3], a[0], a[1], a[2], a[3]);
  }
  return 0;
}

int verify() {
  int faults = 0;
  const auto check = [&faults](bool holds, const char* rule, int member, Word m) {
    if (holds) return;
    std::printf("member %d, modulus %u: %s\n", member, m, rule);
    ++faults;
  };
  check(shipped.size() == members, "not 273 rows", 0, 0);
  Word last = 1 << 24;
  double worst = 1, shortest = 1e9;
  int worst_member = 0;
  Word worst_modulus = 0;
  for (int i = 0; i < static_cast<int>(shipped.size()); ++i) {
    double period = 1;
    for (int c = 0; c < components; ++c) {
      const Word m = shipped[i].modulus[c], a = shipped[i].multiplier[c];
      check(m < last, "the moduli don't descend", i, m);
      for (Word between = last - 1; between > m; --between) {
        check(!(is_prime(between) && is_prime((between - 1) / 2)), "a larger modulus was left out", i, between);
      }
      last = m;
      check(is_prime(m) && is_prime((m - 1) / 2), "not a prime, or (m - 1)/2 is none", i, m);
      check(is_primitive_root(a, m), "the multiplier is no primitive root", i, m);
      check(a == choose_multiplier(m), "the multiplier is not the first that passes", i, m);
      const double f = figure(m, a, 0);
      if (f < worst) worst = f, worst_member = i, worst_modulus = m;
      period += std::log2((m - 1) / 2);
    }
    shortest = std::min(shortest, period);
  }
  std::printf("%zu rows, digest %016llx, least modulus %u\n", shipped.size(),
              static_cast<unsigned long long>(digest(shipped)), last);
  std::printf("worst spectral figure of dimensions 2 to %d: %.4f, member %d, modulus %u\n", dimensions, worst,
              worst_member, worst_modulus);
  std::printf("shortest period 2^%.2f\n%d faults\n", shortest, faults);
  return faults != 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 1) return generate();
  if (argc == 2 && std::strcmp(argv[1], "--verify") == 0) return verify();
  std::fprintf(stderr, "usage: gen_wh_table [--verify]\n");
  return 2;
}
