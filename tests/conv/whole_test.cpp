// The convolution of whole arrays: at the bounds between its ways, its codes, its memory, and its accuracy.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "conv/problems.h"
#include "qor/conv.h"
#include "support/allocations.h"

namespace {

using namespace qor::test;

template <class T>
struct Calls;
template <>
struct Calls<double> {
  static constexpr double unit = 0x1p-53;
  static constexpr auto whole = qfpsConv_64f;
  static constexpr auto add = ownConv_64f;
};
template <>
struct Calls<float> {
  static constexpr double unit = 0x1p-24;
  static constexpr auto whole = qfpsConv_32f;
  static constexpr auto add = ownConv_32f;
};

template <class T>
class WholeArrays : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(WholeArrays, Precisions, );

template <class T>
std::vector<T> values(Draw& draw, int n) {
  return draw.values<T>({n}, {1});
}
template <class T>
Wide size_of_values(const std::vector<T>& v) {
  Wide sum = 0;
  for (const T x : v) sum += Wide(x) * x;
  return std::sqrt(sum);
}
// Some outputs of the convolution of a and b, both ends and around the bounds of blocks among them, against plain sums.
template <class T>
void expect_convolution(const std::vector<T>& a, const std::vector<T>& b, const T* z, const T* before, Wide units) {
  const int na = int(a.size()), nb = int(b.size()), n = na + nb - 1;
  const Wide bound = units * Calls<T>::unit * size_of_values(a) * size_of_values(b);
  for (int k = 0; k < n; k += n < 3000 || k < 600 || k > n - 600 || k % 1024 > 1000 ? 1 : 17) {
    Wide sum = before == nullptr ? 0 : before[k];
    for (int i = std::max(0, k - nb + 1); i < std::min(na, k + 1); ++i)
      sum += Wide(a[std::size_t(i)]) * b[std::size_t(k - i)];
    ASSERT_LE(std::fabs(z[k] - sum), bound + Calls<T>::unit * std::fabs(sum))
        << "output " << k << " of " << na << " * " << nb;
  }
}

// Lengths on both sides of every bound, blocks that come out even and such that leave one element, and long ones whose
// transforms are done in parts.
constexpr std::pair<int, int> lengths[] = {
    {1, 1},       {5, 3},       {100, 63},    {448, 64},        {449, 64},     {449, 63},    {256, 256},
    {257, 255},   {256, 257},   {300, 300},   {191, 64},        {192, 64},     {1000, 64},   {1024, 128},
    {383, 129},   {386, 129},   {387, 129},   {388, 129},       {4095, 63},    {4096, 63},   {4097, 63},
    {9000, 20},   {4096, 512},  {65 * 9, 64}, {65 * 9 + 1, 64}, {700, 500},    {2000, 1000}, {3000, 1001},
    {9000, 1024}, {9000, 1025}, {5000, 4000}, {12000, 4097},    {40000, 5000}, {21000, 9000}};

TYPED_TEST(WholeArrays, AgreeWithPlainSumsOnBothSidesOfEveryBound) {
  Draw draw(3);
  for (const auto& [na, nb] : lengths) {
    SCOPED_TRACE(std::to_string(na) + " * " + std::to_string(nb));
    const std::vector<TypeParam> a = values<TypeParam>(draw, na), b = values<TypeParam>(draw, nb);
    const int n = na + nb - 1;
    for (const bool at_head : {false, true}) {
      Guarded<TypeParam> x(na, a.data()), y(nb, b.data()), z(n), w(n);
      TypeParam* const head = at_head ? z.head() : z.data();
      if (at_head) std::memcpy(x.head(), a.data(), a.size() * sizeof(TypeParam));
      for (int i = 0; i < n; ++i) head[i] = std::numeric_limits<TypeParam>::quiet_NaN();
      ASSERT_EQ(Calls<TypeParam>::whole(at_head ? x.head() : x.data(), na, y.data(), nb, head), 0);
      if (!at_head) expect_convolution<TypeParam>(a, b, head, nullptr, 40);
      ASSERT_EQ(Calls<TypeParam>::whole(y.data(), nb, at_head ? x.head() : x.data(), na, w.data()), 0);
      EXPECT_EQ(std::memcmp(head, w.data(), std::size_t(n) * sizeof(TypeParam)), 0) << "exchanged operands differ";
    }
  }
}

TYPED_TEST(WholeArrays, AreRightOfAnArrayWithItself) {
  Draw draw(4);
  const std::vector<TypeParam> a = values<TypeParam>(draw, 777);
  std::vector<TypeParam> z(2 * 777 - 1);
  ASSERT_EQ(Calls<TypeParam>::whole(a.data(), 777, a.data(), 777, z.data()), 0);
  expect_convolution<TypeParam>(a, a, z.data(), nullptr, 40);
}

// Sums of small integers are exact in every order; products of polynomials come to within half of one.
TYPED_TEST(WholeArrays, GiveIntegersThatRoundToTheExactOnes) {
  for (const int n : {64, 100, 1000}) {
    const std::size_t size = std::size_t(n);
    std::vector<TypeParam> a(3 * size), b(size), z(4 * size - 1);
    for (std::size_t i = 0; i < a.size(); ++i) a[i] = TypeParam(int(i * i % 7) - 3);
    for (std::size_t i = 0; i < b.size(); ++i) b[i] = TypeParam(int(i * i % 5) - 2);
    ASSERT_EQ(Calls<TypeParam>::whole(b.data(), n, a.data(), 3 * n, z.data()), 0);
    for (int k = 0; k < 4 * n - 1; ++k) {
      int sum = 0;
      for (int i = std::max(0, k - 3 * n + 1); i < std::min(n, k + 1); ++i) {
        sum += int(b[std::size_t(i)]) * int(a[std::size_t(k - i)]);
      }
      ASSERT_EQ(llround(z[std::size_t(k)]), sum) << k;
    }
  }
}

TYPED_TEST(WholeArrays, AddTheDirectSumToWhatIsThere) {
  Draw draw(5);
  for (const auto& [na, nb] : {std::pair{1, 1}, {7, 3}, {3, 7}, {100, 63}, {2000, 700}, {700, 2000}, {5000, 5}}) {
    const std::vector<TypeParam> a = values<TypeParam>(draw, na), b = values<TypeParam>(draw, nb);
    const std::vector<TypeParam> before = values<TypeParam>(draw, na + nb - 1);
    Guarded<TypeParam> x(na, a.data()), y(nb, b.data()), z(na + nb - 1, before.data());
    Calls<TypeParam>::add(x.data(), na, y.data(), nb, z.data());
    expect_convolution<TypeParam>(a, b, z.data(), before.data(), 10);
  }
}

TYPED_TEST(WholeArrays, SpreadNoInfinityInDirectSums) {
  std::vector<TypeParam> a(100, 1), b(20, 1), z(119);
  b[3] = std::numeric_limits<TypeParam>::infinity();
  ASSERT_EQ(Calls<TypeParam>::whole(a.data(), 100, b.data(), 20, z.data()), 0);
  for (int k = 0; k < 119; ++k) {
    EXPECT_EQ(std::isfinite(z[std::size_t(k)]), k < 3 || k > 102) << k;
  }
}

TYPED_TEST(WholeArrays, ReturnTheFirstCodeThatApplies) {
  constexpr auto whole = Calls<TypeParam>::whole;
  TypeParam x[4] = {1, 2, 3, 4}, z[8] = {9};
  EXPECT_EQ(whole(nullptr, 0, x, 0, z), -8);
  EXPECT_EQ(whole(x, 0, nullptr, 1, z), -8);
  EXPECT_EQ(whole(x, 1, x, -1, nullptr), -8);
  EXPECT_EQ(whole(x, 0, x, 1, z), -6);
  EXPECT_EQ(whole(x, 1, x, -5, z), -6);
  EXPECT_EQ(whole(x, 1 << 30, x, 1 << 30, z), -15);
  EXPECT_EQ(whole(x, std::numeric_limits<int>::max(), x, (1 << 29) + 1, z), -15);
  EXPECT_EQ(whole(x, 1 << 29, x, 1 << 29, z), -9);
  EXPECT_EQ(whole(x, std::numeric_limits<int>::max(), x, 1 << 28, z), -9);
  EXPECT_EQ(z[0], 9);
}

#if defined(COUNTS_ALLOCATIONS)
TYPED_TEST(WholeArrays, NeedOneBlockAndKeepNone) {
  struct {
    int na, nb, blocks;
  } const rows[] = {{9000, 63, 0}, {300, 300, 1}, {9000, 1000, 1}, {12000, 5000, 1}};
  Draw draw(6);
  for (const auto& r : rows) {
    const std::vector<TypeParam> a = values<TypeParam>(draw, r.na), b = values<TypeParam>(draw, r.nb);
    std::vector<TypeParam> z(a.size() + b.size(), TypeParam(7));
    const int alive = live_blocks;
    errno = 4711;
    until_failure = r.blocks;
    const int enough = Calls<TypeParam>::whole(a.data(), r.na, b.data(), r.nb, z.data());
    EXPECT_EQ(until_failure, 0) << r.na << " * " << r.nb;
    z.assign(z.size(), TypeParam(7));
    until_failure = 0;
    const int none = Calls<TypeParam>::whole(a.data(), r.na, b.data(), r.nb, z.data());
    until_failure = -1;
    EXPECT_EQ(enough, 0);
    EXPECT_EQ(none, r.blocks == 0 ? 0 : -9);
    if (none != 0) {
      EXPECT_EQ(z, std::vector<TypeParam>(z.size(), TypeParam(7)));
    }
    EXPECT_EQ(live_blocks, alive);
    EXPECT_EQ(errno, 4711);
  }
}
#endif

}  // namespace
