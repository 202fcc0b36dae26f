// The MT2203 family's table, by arithmetic of its own, and its members as streams.
#include <gtest/gtest.h>

#include <bit>
#include <bitset>
#include <set>

#include "rng/engines.h"

namespace {

constexpr int members = 1024, period_degree = 2203;

// ---- polynomials over GF(2), bit j the coefficient of t^j ----------------------------------------------------------

using Polynomial = std::bitset<2 * period_degree + 64>;

int degree(const Polynomial& p) {
  for (int j = int(p.size()) - 1; j >= 0; --j)
    if (p[std::size_t(j)]) return j;
  return -1;
}
Polynomial square(const Polynomial& p) {
  Polynomial r;
  for (std::size_t j = 0; 2 * j < r.size(); ++j) r[2 * j] = p[j];
  return r;
}

// The least recurrence of a sequence of bits. (E. R. Berlekamp and J. L. Massey, IEEE Trans. Inf. Theory 15, 1969.) The
// polynomial is the reciprocal one, which is irreducible when the other is.
Polynomial least_recurrence(const std::vector<bool>& s, int& length) {
  Polynomial c, b, window;  // bit j of the window: s[n - j]
  c[0] = b[0] = true;
  length = 0;
  int shift = 1;
  for (int n = 0; n < int(s.size()); ++n, ++shift) {
    window = window << 1;
    window[0] = s[std::size_t(n)];
    if ((c & window).count() % 2 == 0) continue;
    const Polynomial before = c;
    c ^= b << std::size_t(shift);
    if (2 * length <= n) {
      length = n + 1 - length;
      b = before;
      shift = 0;
    }
  }
  return c;
}

// t^(2^2203) = t: 2203 is prime, so all factors are of degree 2203 or 1, and none is repeated; only t and t + 1 are of
// degree 1, which a polynomial of degree 2203 cannot be made of.
bool irreducible(const Polynomial& f) {
  const int d = degree(f);
  Polynomial x;
  x[1] = true;
  const Polynomial t = x;
  for (int i = 0; i < d; ++i) {
    x = square(x);
    for (int j = 2 * d - 2; j >= d; --j)
      if (x[std::size_t(j)]) x ^= f << std::size_t(j - d);
  }
  return d == period_degree && x == t;
}

TEST(Mt2203Table, KeepsItsFixedRowsAndItsRules) {
  const unsigned fixed[][4] = {{0, 0xAF81055F, 0xDD7EEF80, 0xEFD78000},
                               {1, 0x832604E1, 0x66AD7F80, 0xEBD58000},
                               {2, 0x92F70739, 0x656D7780, 0xEFC50000},
                               {1023, 0xE1B6093F, 0x9D326E80, 0xEFD58000}};
  for (const auto& [m, a, b, c] : fixed) {
    EXPECT_EQ(_wxr_mt2203_table[m][0], a) << m;
    EXPECT_EQ(_wxr_mt2203_table[m][1], b) << m;
    EXPECT_EQ(_wxr_mt2203_table[m][2], c) << m;
  }
  // The characteristic polynomial is linear in the bits of matA with coefficients of 32 different degrees: so different
  // words have different polynomials, and members with different words no sequence in common.
  std::set<unsigned> words;
  for (int m = 0; m < members; ++m) {
    const auto& [a, b, c] = _wxr_mt2203_table[m];
    EXPECT_TRUE(words.insert(a).second) << m;
    EXPECT_EQ(a & 0x8000F001, 0x80000001) << m;
    EXPECT_EQ(b % 128, 0u) << m;
    EXPECT_EQ(c % 32768, 0u) << m;
  }
}

// From what the library delivers: the least recurrence of the leading bit has degree 2203 and is irreducible, so that
// the period is the Mersenne prime 2^2203 - 1, and no two of the members share it.
TEST(Mt2203Table, GivesMembersTheFullPeriod) {
  std::set<std::string> polynomials;
  for (const int m : {0, 3, 511, 777, 1022}) {
    const TestStream s(QOR_BRNG_MT2203 + m, {unsigned(m)});
    std::vector<unsigned> words(2 * period_degree);
    ASSERT_EQ(__wxriBRngMT2203(s, int(words.size()), words.data()), 0);
    std::vector<bool> bits;
    for (const unsigned w : words) bits.push_back(w >> 31 != 0);
    int length = 0;
    const Polynomial f = least_recurrence(bits, length);
    EXPECT_EQ(length, period_degree) << m;
    EXPECT_TRUE(irreducible(f)) << "member " << m;
    EXPECT_TRUE(polynomials.insert(f.to_string()).second) << m;
  }
  EXPECT_FALSE(irreducible(Polynomial(7) << (period_degree - 2) ^ Polynomial(1))) << "the test tells them apart";
}

TEST(Mt2203, MembersDeliverThePlainSequenceOfTheirRow) {
  std::set<plain::Seeds> sequences;
  for (int m = 0; m < members; ++m) {
    const TestStream s(QOR_BRNG_MT2203 + m, {1234});
    ASSERT_EQ(s.status(), 0) << m;
    plain::MT2203 sequence({1234}, m);
    plain::Seeds got(150), expected(150);
    ASSERT_EQ(__wxriBRngMT2203(s, 150, got.data()), 0);
    for (unsigned& w : expected) w = unsigned(sequence.next());
    ASSERT_EQ(got, expected) << m;
    ASSERT_EQ(s.state(), sequence.state()) << m;
    EXPECT_TRUE(sequences.insert(got).second) << m;
  }
}

// A copy is of the same member; the seedable state alone is the block of words, and may be moved between members.
TEST(Mt2203, ParametersBelongToTheStream) {
  const TestStream one(QOR_BRNG_MT2203 + 5, {1}), other(QOR_BRNG_MT2203 + 6, {2});
  unsigned w[100];
  __wxriBRngMT2203(one, 100, w);
  qor_stream* raw = nullptr;
  ASSERT_EQ(__wxrCopyStream(&raw, one), 0);
  const TestStream copy(raw);
  EXPECT_EQ(copy.state(), one.state());
  ASSERT_EQ(__wxrCopyStreamState(other, one), 0);
  const plain::Seeds from = one.state(), to = other.state();
  EXPECT_TRUE(std::equal(from.begin(), from.begin() + 70, to.begin()));
  EXPECT_TRUE(std::equal(to.begin() + 70, to.end(), _wxr_mt2203_table[6]));
}

// Identifiers decide, not the entry that a stream was allocated by.
TEST(Mt2203, RefusesMembersBeyondTheTable) {
  qor_stream* s = nullptr;
  EXPECT_EQ(__wxrNewStreamEx(&s, QOR_BRNG_MT2203 + members, 0, nullptr), QOR_RNG_BAD_BRNG);
  EXPECT_EQ(s, nullptr);
  ASSERT_EQ(__wxrAllocateStream(&s, __RegBrngsNew, 0x9FFFFF, 8, 0), 0);
  const TestStream beyond(s);
  EXPECT_EQ(__wxrBRngMT2203InitStream(0, s, 0, nullptr), QOR_RNG_BAD_BRNG);

  // The other family looks its member up on every call.
  qor_stream* other = nullptr;
  ASSERT_EQ(__wxrAllocateStream(&other, __RegBrngsNew, 0x5FFFFF, 4, 0), 0);
  const TestStream owner(other);
  const unsigned k = 1;
  for (const int method : {0, 1, 2}) EXPECT_EQ(__wxrBRngWHInitStream(method, other, 1, &k), QOR_RNG_BAD_BRNG) << method;
  unsigned words[40];
  double doubles[10];
  EXPECT_EQ(__wxriBRngWH(other, 10, words), QOR_RNG_BAD_BRNG);
  EXPECT_EQ(__wxrdBRngWH(other, 10, doubles, 0, 1), QOR_RNG_BAD_BRNG);
}

}  // namespace
