// The Wichmann-Hill table by the rules it was chosen by, proved another way than it was found.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <numeric>
#include <set>
#include <vector>

namespace {

using Word = std::uint64_t;
struct Row {
  Word m[4], a[4];
};
constexpr Row table[] = {
#include "rng/engines/wh_table.inc"
};

// Odd primes below 2^24 by the sieve of Eratosthenes.
const std::vector<bool>& primes() {
  static const std::vector<bool> sieve = [] {
    std::vector<bool> is(1 << 24, true);
    is[0] = is[1] = false;
    for (std::size_t f = 2; f < 4096; ++f) {
      for (std::size_t k = f * f; is[f] && k < is.size(); k += f) is[k] = false;
    }
    return is;
  }();
  return sieve;
}

TEST(WichmannHillTable, HoldsTheLargestSafePrimesInOrder) {
  ASSERT_EQ(std::size(table), 273u);
  std::size_t above = 1 << 24;
  for (const Row& row : table) {
    for (const Word m : row.m) {
      do --above;
      while (!primes()[above] || !primes()[above / 2]);
      ASSERT_EQ(m, above);
    }
  }
}

TEST(WichmannHillTable, HoldsPrimitiveRoots) {
  for (const Row& row : table) {
    for (int i = 0; i < 4; ++i) {
      // The order of a divides m - 1: for each of its prime factors f, a^((m-1)/f) is not 1.
      const Word m = row.m[i], order = m - 1;
      const auto power = [&](Word n) {
        Word result = 1;
        for (Word base = row.a[i]; n > 0; n /= 2, base = base * base % m)
          result = n % 2 == 1 ? result * base % m : result;
        return result;
      };
      ASSERT_EQ(power(order), 1u);
      Word rest = order;
      for (Word f = 2; rest > 1; ++f) {
        if (f * f > rest) f = rest;
        if (rest % f != 0) continue;
        ASSERT_NE(power(order / f), 1u) << row.a[i] << " modulo " << m;
        while (rest % f == 0) rest /= f;
      }
    }
  }
}

TEST(WichmannHillTable, GivesLongPeriodsToDisjointMembers) {
  std::set<Word> moduli;
  for (const Row& row : table) {
    // The least common multiple of the cycles m - 1, as a product of what each adds.
    double bits = 0;
    std::vector<Word> parts;
    for (const Word m : row.m) {
      EXPECT_TRUE(moduli.insert(m).second) << m << " twice";
      Word part = m - 1;
      for (const Word before : parts) {
        for (Word g; (g = std::gcd(part, before)) > 1;) part /= g;
      }
      parts.push_back(part);
      bits += std::log2(double(part));
    }
    EXPECT_GE(bits, 92);
  }
}

// No dual vector is shorter than 0.7 of the longest that is possible: all that are shorter are tried.
TEST(WichmannHillTable, PassesTheSpectralTest) {
  const double hermite[] = {0, 1, std::sqrt(4.0 / 3), std::cbrt(2.0), std::sqrt(2.0)};
  int number = 0;
  for (const Row& row : table) {
    for (int i = 0; i < 4; ++i, ++number) {
      const auto m = std::int64_t(row.m[i]), a = std::int64_t(row.a[i]), a2 = a * a % m, a3 = a * a2 % m;
      for (int d = 2; d <= 4; ++d) {
        if (d > 2 && number % (d == 3 ? 8 : 64) != 0) continue;
        const double squared = 0.49 * hermite[d] * std::pow(double(m), 2.0 / d);
        const auto reach = std::int64_t(std::sqrt(squared)), far = d < 4 ? 0 : reach, middle = d < 3 ? 0 : reach;
        double shortest = squared;
        for (std::int64_t k3 = 0; k3 <= far; ++k3) {
          for (std::int64_t k2 = -middle; k2 <= middle; ++k2) {
            std::int64_t k0 = (((k3 * a3 + k2 * a2 - reach * a) % m) + m) % m;
            for (std::int64_t k1 = -reach; k1 <= reach; ++k1, k0 = k0 + a >= m ? k0 + a - m : k0 + a) {
              const std::int64_t near = k0 > m / 2 ? k0 - m : k0, rest = k1 * k1 + k2 * k2 + k3 * k3;
              if (rest != 0) shortest = std::min(shortest, double(near * near + rest));
            }
          }
        }
        ASSERT_EQ(shortest, squared) << a << " modulo " << m << " in " << d << " dimensions";
      }
    }
  }
}

}  // namespace
