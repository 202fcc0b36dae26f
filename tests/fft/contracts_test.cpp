// Statuses, records, packings and aligned blocks.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <vector>

#include "fft/families.h"
#include "support/allocations.h"

namespace {

using families::dft, families::fft, families::Of;

template <class Family>
struct SpecOf;
template <class T, class Spec>
struct SpecOf<families::Real<T, Spec>> {
  using type = Spec;
};
template <class T, class Spec>
struct SpecOf<families::Complex<T, Spec>> {
  using type = Spec;
};

// Calls f(T{}, set, family, transforms) for every set of entries.
template <class F>
void for_all(F f) {
  const auto both = [&]<class T, families::Set S>() {
    const auto& real = Of<T, S>::real;
    const auto& complex = Of<T, S>::complex;
    f(T{}, S, real,
      std::vector{real.forward[0], real.forward[1], real.forward[2], real.inverse[0], real.inverse[1],
                  real.inverse[2]});
    f(T{}, S, complex, std::vector{complex.forward, complex.inverse});
  };
  both.template operator()<float, fft>();
  both.template operator()<double, fft>();
  both.template operator()<float, dft>();
  both.template operator()<double, dft>();
}

TEST(Records, ReportBadArguments) {
  for_all([](auto, families::Set set, const auto& family, const auto&) {
    typename SpecOf<std::remove_cvref_t<decltype(family)>>::type* spec = nullptr;
    const int bad_size = set == fft ? -15 : -6;
    struct Row {
      int size, flag, status;
    };
    std::vector<Row> rows = {{-1, 1, bad_size}, {-1, 3, bad_size}, {4, 3, -16}, {4, 0, -16}, {4, 16, -16}, {1, 5, -16}};
    if (set == fft) rows.push_back({31, 8, -15});
    if (set == dft) rows.push_back({0, 8, -6});
    for (const Row& row : rows) {
      EXPECT_EQ(family.create(&spec, row.size, row.flag, 0), row.status) << row.size << " " << row.flag;
      EXPECT_EQ(spec, nullptr);
      EXPECT_EQ(family.create(nullptr, row.size, row.flag, 0), -8);
    }
    for (const int flag : {1, 2, 4, 8}) {
      ASSERT_EQ(family.create(&spec, set == fft ? 0 : 1, flag, 7), 0);
      int bytes = -1;
      EXPECT_EQ(family.buffer_size(spec, nullptr), -8);
      EXPECT_EQ(family.buffer_size(nullptr, &bytes), -8);
      EXPECT_EQ(family.buffer_size(spec, &bytes), 0);
      EXPECT_EQ(bytes, 0);
      EXPECT_EQ(family.destroy(spec), 0);
    }
    EXPECT_EQ(family.destroy(nullptr), -8);
  });
}

TEST(Transforms, ReportBadArguments) {
  for_all([](auto zero, families::Set set, const auto& family, const auto& transforms) {
    typename SpecOf<std::remove_cvref_t<decltype(family)>>::type* spec = nullptr;
    ASSERT_EQ(family.create(&spec, set == fft ? 1 : 2, 1, 0), 0);
    std::vector<decltype(zero)> x(8), y(8);
    for (const auto& run : transforms) {
      EXPECT_EQ(run(x.data(), y.data(), nullptr, nullptr), -8);
      EXPECT_EQ(run(nullptr, y.data(), spec, nullptr), -8);
      EXPECT_EQ(run(x.data(), nullptr, spec, nullptr), -8);
      EXPECT_EQ(run(x.data(), y.data(), spec, nullptr), 0);
    }
    EXPECT_EQ(family.destroy(spec), 0);
  });
}

// Every kind of record is refused by the operations of the others.
TEST(Records, OfAnotherKindAreRefused) {
  std::vector<void*> specs;
  std::vector<std::function<std::vector<int>(void*)>> users;
  const auto add = [&](const auto& family, const auto& run) {
    using Spec = typename SpecOf<std::remove_cvref_t<decltype(family)>>::type;
    Spec* spec = nullptr;
    ASSERT_EQ(family.create(&spec, 3, 1, 0), 0);
    specs.push_back(spec);
    users.push_back([&family, run](void* p) {
      double x[16] = {};
      int bytes;
      Spec* const other = static_cast<Spec*>(p);
      return std::vector<int>{run(x, x, other, nullptr), run(nullptr, x, other, nullptr),
                              family.buffer_size(other, &bytes)};
    });
  };
  add(Of<double, fft>::real, Of<double, fft>::real.inverse[0]);
  add(Of<double, fft>::complex, Of<double, fft>::complex.forward);
  add(Of<double, dft>::real, Of<double, dft>::real.forward[1]);
  add(Of<double, dft>::complex, Of<double, dft>::complex.inverse);
  for (std::size_t i = 0; i < specs.size(); ++i) {
    for (std::size_t j = 0; j < specs.size(); ++j) {
      EXPECT_EQ(users[i](specs[j]), i == j ? (std::vector<int>{0, -8, 0}) : (std::vector<int>{-17, -17, -17}))
          << i << j;
    }
  }
  EXPECT_EQ(qfpsFFTFree_R_64f(static_cast<qfpsFFTSpec_R_64f*>(specs[1])), -17);
  EXPECT_EQ(qfpsFFTFree_R_64f(static_cast<qfpsFFTSpec_R_64f*>(specs[0])), 0);
  EXPECT_EQ(qfpsFFTFree_C_64fc(static_cast<qfpsFFTSpec_C_64fc*>(specs[1])), 0);
  EXPECT_EQ(qfpsDFTFree_R_64f(static_cast<qfpsDFTSpec_R_64f*>(specs[2])), 0);
  EXPECT_EQ(qfpsDFTFree_C_64fc(static_cast<qfpsDFTSpec_C_64fc*>(specs[3])), 0);
}

TEST(Records, BeginWithTheirFields) {
  qfpsFFTSpec_R_64f* spec = nullptr;
  ASSERT_EQ(qfpsFFTInitAlloc_R_64f(&spec, 10, 4, 77), 0);
  std::int32_t head[4], tail[2];
  double scale;
  std::memcpy(head, spec, sizeof head);
  std::memcpy(&scale, reinterpret_cast<char*>(spec) + 16, sizeof scale);
  std::memcpy(tail, reinterpret_cast<char*>(spec) + 24, sizeof tail);
  EXPECT_EQ(head[0], 9);
  EXPECT_EQ(head[1], 10);
  EXPECT_EQ(head[2], 1);
  EXPECT_EQ(head[3], 1);
  EXPECT_EQ(scale, 1 / 32.0);
  EXPECT_EQ(tail[0], 77);
  int bytes = -1;
  EXPECT_EQ(qfpsFFTGetBufSize_R_64f(spec, &bytes), 0);
  EXPECT_EQ(bytes, tail[1] == 0 ? 0 : tail[1] + 16);
  EXPECT_EQ(qfpsFFTFree_R_64f(spec), 0);
}

#ifdef COUNTS_ALLOCATIONS
// Each allocation fails once; nothing is lost and nothing else is touched.
TEST(Records, ReportMissingMemoryAndLoseNone) {
  const int before = live_blocks;
  for_all([](auto zero, families::Set set, const auto& family, const auto& transforms) {
    using Spec = typename SpecOf<std::remove_cvref_t<decltype(family)>>::type;
    for (const int size : set == fft ? std::vector{12, 16} : std::vector{4095, 2 * 499, 4 * 47}) {
      Spec* spec = nullptr;
      int succeeding = 0, status = -9;
      for (; status == -9; ++succeeding) {
        until_failure = succeeding;
        status = family.create(&spec, size, 1, 0);
        until_failure = -1;
        if (status == -9) {
          EXPECT_EQ(spec, nullptr);
        }
      }
      EXPECT_EQ(status, 0);
      EXPECT_GE(succeeding, 4) << "the record, the roots and a table at least";
      std::vector<decltype(zero)> x(2u << 16);
      until_failure = 0;
      const int without_buffer = transforms[0](x.data(), x.data(), spec, nullptr);
      until_failure = -1;
      int bytes = 0;
      EXPECT_EQ(family.buffer_size(spec, &bytes), 0);
      EXPECT_EQ(without_buffer, bytes > 0 ? -9 : 0);
      EXPECT_EQ(transforms[0](x.data(), x.data(), spec, nullptr), 0);
      EXPECT_EQ(family.destroy(spec), 0);
    }
  });
  EXPECT_EQ(live_blocks, before);
}
#endif

template <class T>
void check_packings() {
  using A = families::Arrays<T>;
  const std::vector<T> even[3] = {{1, 2, 3, 4, 5, 6}, {1, 3, 4, 5, 6, 2}, {1, 0, 3, 4, 5, 6, 2, 0}};
  const std::vector<T> odd[3] = {{1, 2, 3, 4, 5}, {1, 2, 3, 4, 5}, {1, 0, 2, 3, 4, 5}};
  const std::vector<T> one[3] = {{1}, {1}, {1, 0}}, two[3] = {{1, 2}, {1, 2}, {1, 0, 2, 0}};
  for (int from = 0; from < 3; ++from) {
    for (int to = 0; to < 3; ++to) {
      if (from == to) continue;
      const auto convert = A::convert[from][to];
      for (const auto* form : {even, odd, one, two}) {
        const int n = static_cast<int>(form[0].size());
        std::vector<T> out(form[to].size()), in_place = form[from];
        EXPECT_EQ(convert(form[from].data(), out.data(), n), 0);
        EXPECT_EQ(out, form[to]) << from << " to " << to << ", n = " << n;
        in_place.resize(10);
        EXPECT_EQ(convert(in_place.data(), in_place.data(), n), 0);
        in_place.resize(out.size());
        EXPECT_EQ(in_place, form[to]) << "in place, " << from << " to " << to << ", n = " << n;
      }
      T x[8] = {};
      EXPECT_EQ(convert(nullptr, x, 4), -8);
      EXPECT_EQ(convert(x, nullptr, 0), -8);
      EXPECT_EQ(convert(x, x, 0), -6);
    }
  }
}
TEST(Packings, TurnIntoEachOther) {
  check_packings<double>();
  check_packings<float>();
}

template <class T>
void check_arrays() {
  using A = families::Arrays<T>;
  for (int n = 1; n <= 21; ++n) {
    std::vector<T> a(static_cast<std::size_t>(n) + 1, 7), b = a, want = a;
    for (std::size_t i = 0; i < static_cast<std::size_t>(n); ++i) {
      a[i] = static_cast<T>(i + 2);
      b[i] = static_cast<T>(3 * i) - 5;
    }
    const std::size_t first = n % 2 == 0 ? 2 : 1;
    for (std::size_t i = 0; i < first; ++i) want[i] = a[i] * b[i];
    for (std::size_t i = first; i < static_cast<std::size_t>(n); i += 2) {
      want[i] = a[i] * b[i] - a[i + 1] * b[i + 1];
      want[i + 1] = a[i] * b[i + 1] + a[i + 1] * b[i];
    }
    EXPECT_EQ(A::multiply(a.data(), b.data(), n), 0);
    EXPECT_EQ(b, want) << n;
    std::vector<T> copy(a.size(), 7);
    EXPECT_EQ(A::copy(a.data(), copy.data(), n), 0);
    EXPECT_EQ(copy, a);
    EXPECT_EQ(A::zero(copy.data(), n), 0);
    want.assign(a.size(), 0);
    want.back() = 7;
    EXPECT_EQ(copy, want);
  }
  T x[2] = {};
  for (const auto f : {A::multiply, A::copy}) {
    EXPECT_EQ(f(nullptr, x, 1), -8);
    EXPECT_EQ(f(x, nullptr, 0), -8);
    EXPECT_EQ(f(x, x, 0), -6);
  }
  EXPECT_EQ(A::zero(nullptr, 0), -8);
  EXPECT_EQ(A::zero(x, 0), -6);
  EXPECT_EQ(A::allocate(0), nullptr);
  EXPECT_EQ(A::allocate(-1), nullptr);
  EXPECT_EQ(A::allocate(INT32_MAX), nullptr);
}
TEST(Arrays, AreMultipliedCopiedAndCleared) {
  check_arrays<double>();
  check_arrays<float>();
}

TEST(Arrays, AreAllocatedAtMultiplesOf32) {
  std::vector<void*> blocks;
  for (int n = 1; n < 200; ++n) {
    void* const block[] = {qfpsMalloc_8u(n), qfpsMalloc_32f(n), qfpsMalloc_64f(n)};
    for (int i = 0; i < 3; ++i) {
      ASSERT_NE(block[i], nullptr);
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block[i]) % 32, 0u);
      std::memset(block[i], 0xFF, static_cast<std::size_t>(n) << (i == 0 ? 0 : i + 1));
      blocks.push_back(block[i]);
    }
  }
  EXPECT_EQ(qfpsMalloc_8u(0), nullptr);
  for (void* block : blocks) qfpsFree(block);
  qfpsFree(nullptr);
}

}  // namespace
