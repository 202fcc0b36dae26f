// Packing, unpacking and rounding: what moves where, and every rule of rounding against the C library's.
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <bit>
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "qor/tfn.h"
#include "support/guarded.h"

namespace qor::test {
namespace {

template <class T>
using Word = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
template <class T>
std::vector<Word<T>> words(const T* p, int n) {
  std::vector<Word<T>> w(static_cast<std::size_t>(n));
  if (n > 0) std::memcpy(w.data(), p, w.size() * sizeof(T));
  return w;
}

// The entries of one precision.
template <class T>
struct Entries;
#define QOR_ENTRIES(T, l)                                                                                             \
  template <>                                                                                                         \
  struct Entries<T> {                                                                                                 \
    static constexpr auto pack_i = _tfn##l##PackI;                                                                    \
    static constexpr auto pack_m = _tfn##l##PackM;                                                                    \
    static constexpr auto pack_v = _tfn##l##PackV;                                                                    \
    static constexpr auto unpack_i = _tfn##l##UnpackI;                                                                \
    static constexpr auto unpack_m = _tfn##l##UnpackM;                                                                \
    static constexpr auto unpack_v = _tfn##l##UnpackV;                                                                \
    static constexpr auto modf = _tfn##l##Modf;                                                                       \
    struct Rounding {                                                                                                 \
      const char* name;                                                                                               \
      void (*run)(int, const T*, T*);                                                                                 \
      T (*exact)(T);                                                                                                  \
    };                                                                                                                \
    static constexpr Rounding fixed[] = {{"Floor", _tfn##l##Floor, [](T x) { return std::floor(x); }},                \
                                         {"Ceil", _tfn##l##Ceil, [](T x) { return std::ceil(x); }},                   \
                                         {"Trunc", _tfn##l##Trunc, [](T x) { return std::trunc(x); }},                \
                                         {"Round", _tfn##l##Round, [](T x) { return std::round(x); }},                \
                                         {"Modf",                                                                     \
                                          [](int n, const T* a, T* y) {                                               \
                                            std::vector<T> z(static_cast<std::size_t>(n > 0 ? n : 0));                \
                                            _tfn##l##Modf(n, a, y, z.data());                                         \
                                          },                                                                          \
                                          [](T x) { return std::trunc(x); }}};                                        \
    static constexpr Rounding current[] = {{"Rint", _tfn##l##Rint, [](T x) { return std::nearbyint(x); }},            \
                                           {"NearbyInt", _tfn##l##NearbyInt, [](T x) { return std::nearbyint(x); }}}; \
  };
QOR_ENTRIES(double, d)
QOR_ENTRIES(float, s)

template <class T>
class PackAndRound : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(PackAndRound, Precisions);

// Every form against its one-line definition, arrays ending at pages that can't be touched. Source words are signalling
// NaNs among others: they must arrive as they are, but for the masked forms of doubles.
TYPED_TEST(PackAndRound, MovesTheElementsItNamesAndNoOthers) {
  using T = TypeParam;
  using W = Word<T>;
  using E = Entries<T>;
  constexpr W canary = W(0xC5C5C5C5C5C5C5C5), quiet = W{1} << (sizeof(T) == 8 ? 51 : 22);
  constexpr W signalling = W(~(~W{0} << (sizeof(T) == 8 ? 11 : 8))) << (sizeof(T) == 8 ? 52 : 23) | 5;
  const auto source = [&](int i) { return i % 3 == 1 ? signalling : W(0x3F800000 + i); };
  const auto through_masks = [&](W w) { return sizeof(T) == 8 && w == signalling ? w | quiet : w; };
  std::mt19937 random(3);
  for (int n = -1; n <= 41; ++n) {
    const int count = n > 0 ? n : 0;
    for (const int step : {1, 3, -2, 0}) {
      std::vector<int> index(static_cast<std::size_t>(count)), mask(index);
      int selected = 0;
      for (int i = 0; i < count; ++i) {
        index[static_cast<std::size_t>(i)] = (7 * i + 3) % count;
        mask[static_cast<std::size_t>(i)] = step == 0    ? 0
                                            : step == -2 ? -5
                                                         : static_cast<int>(random() % 2 * (random() | 1));
        selected += mask[static_cast<std::size_t>(i)] != 0;
      }
      const int span = count == 0 ? 0 : (count - 1) * std::abs(step) + 1;
      // The array with the gaps, and where its element 0 is.
      const int length = std::max(span, count), origin = step < 0 ? span - std::min(1, span) : 0;
      std::vector<W> words_in(static_cast<std::size_t>(length));
      for (int i = 0; i < length; ++i) words_in[static_cast<std::size_t>(i)] = source(i);
      Guarded<T> wide(length);
      const auto fill_wide = [&](bool with_source) {
        for (int i = 0; i < length; ++i) {
          const W w = with_source ? words_in[static_cast<std::size_t>(i)] : canary;
          std::memcpy(wide.data() + i, &w, sizeof w);
        }
      };
      const auto check_dense = [&](const char* what, int size, auto run, auto expected) {
        Guarded<T> y(size);
        run(y.data());
        std::vector<W> want;
        for (int i = 0; i < size; ++i) want.push_back(expected(i));
        EXPECT_EQ(words(y.data(), size), want) << what << ' ' << n << ' ' << step;
      };
      std::vector<int> chosen;
      for (int i = 0; i < count; ++i) {
        if (mask[static_cast<std::size_t>(i)] != 0) chosen.push_back(i);
      }
      const auto in = [&](int i) { return words_in[static_cast<std::size_t>(i)]; };
      fill_wide(true);
      check_dense(
          "PackI", count, [&](T* y) { E::pack_i(n, wide.data() + origin, step, y); },
          [&](int i) { return in(origin + i * step); });
      Guarded<T> dense(count, wide.data());
      check_dense(
          "PackV", count, [&](T* y) { E::pack_v(n, dense.data(), index.data(), y); },
          [&](int i) { return in(index[static_cast<std::size_t>(i)]); });
      check_dense(
          "PackM", selected, [&](T* y) { E::pack_m(n, dense.data(), mask.data(), y); },
          [&](int j) { return through_masks(in(chosen[static_cast<std::size_t>(j)])); });

      // Unpacking into canaries.
      const auto check_wide = [&](const char* what, auto run, auto place, int moved, auto filter) {
        fill_wide(false);
        run();
        std::vector<W> want(static_cast<std::size_t>(length), canary);
        for (int j = 0; j < moved; ++j) want[static_cast<std::size_t>(place(j))] = filter(in(j));
        EXPECT_EQ(words(wide.data(), length), want) << what << ' ' << n << ' ' << step;
      };
      const auto same = [](W w) { return w; };
      check_wide(
          "UnpackI", [&] { E::unpack_i(n, dense.data(), wide.data() + origin, step); },
          [&](int i) { return origin + i * step; }, count, same);
      check_wide(
          "UnpackV", [&] { E::unpack_v(n, dense.data(), wide.data(), index.data()); },
          [&](int i) { return index[static_cast<std::size_t>(i)]; }, count, same);
      Guarded<T> few(selected, dense.data());
      check_wide(
          "UnpackM", [&] { E::unpack_m(n, few.data(), wide.data(), mask.data()); },
          [&](int j) { return chosen[static_cast<std::size_t>(j)]; }, selected, through_masks);
    }
  }
}

template <class T>
std::vector<T> rounding_arguments() {
  std::vector<T> x = {T(HUGE_VAL), -T(HUGE_VAL)};
  const T whole = 1 / std::numeric_limits<T>::epsilon();
  for (const T base : {T(0), T(0.5), T(1), T(1.5), T(2), T(2.5), T(1000.5), whole / 4, whole / 2, whole, 2 * whole,
                       std::numeric_limits<T>::max(), std::numeric_limits<T>::min(), T(1e9)}) {
    for (const T v : {base, std::nextafter(base, T(0)), std::nextafter(base, T(HUGE_VAL))}) {
      x.push_back(v);
      x.push_back(-v);
    }
  }
  std::mt19937 random(1);
  for (int i = 0; i < 400; ++i) {
    const T v = static_cast<T>(std::ldexp(random(), static_cast<int>(random() % 60) - 50));
    x.push_back(i % 2 == 0 ? v : -v);
  }
  return x;
}

constexpr unsigned standard_csr = 0x1F80, directions[] = {0, 0x2000, 0x4000, 0x6000};

// Rules of their own whatever the caller's control register holds, which comes back bit for bit.
TYPED_TEST(PackAndRound, RoundsEveryArgumentByItsRule) {
  using T = TypeParam;
  const auto x = rounding_arguments<T>();
  const int n = static_cast<int>(x.size());
  std::vector<T> y(x.size()), expected(x.size());
  const auto check = [&](const auto& f, unsigned csr, unsigned compared) {
    _mm_setcsr(csr);
    f.run(n, x.data(), y.data());
    const unsigned after = _mm_getcsr();
    _mm_setcsr(standard_csr);
    EXPECT_EQ(after & compared, csr & compared) << f.name;
    EXPECT_EQ(words(y.data(), n), words(expected.data(), n)) << f.name << std::hex << ' ' << csr;
  };
  for (const auto& f : Entries<T>::fixed) {
    for (std::size_t i = 0; i < x.size(); ++i) expected[i] = f.exact(x[i]);
    for (const unsigned direction : directions) check(f, standard_csr | direction, ~0u);
    check(f, 0x9F80 | 0x40, ~0u);  // subnormals flushed and taken as zero
    check(f, 0x0012, ~0u);         // every trap on
  }
  constexpr int modes[] = {FE_TONEAREST, FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO};
  for (const auto& f : Entries<T>::current) {
    for (int k = 0; k < 4; ++k) {
      std::fesetround(modes[k]);
      for (std::size_t i = 0; i < x.size(); ++i) expected[i] = f.exact(x[i]);
      std::fesetround(FE_TONEAREST);
      const bool rint = f.run == Entries<T>::current[0].run;
      check(f, standard_csr | directions[k], rint ? ~0x22u : ~0u);
    }
  }
}

TYPED_TEST(PackAndRound, RaisesInexactInRintAloneAndWhereAResultDiffers) {
  using T = TypeParam;
  const T whole = 1 / std::numeric_limits<T>::epsilon();
  const auto flags_of = [](auto run, T value) {
    T y;
    _mm_setcsr(standard_csr);
    run(1, &value, &y);
    const unsigned flags = _mm_getcsr() & 0x3F;
    _mm_setcsr(standard_csr);
    return flags;
  };
  for (const T v : {T(2), T(-0.0), whole, 2 * whole - 1, whole * 3 + 4, std::numeric_limits<T>::max()}) {
    EXPECT_EQ(flags_of(Entries<T>::current[0].run, v), 0u) << v;
  }
  EXPECT_EQ(flags_of(Entries<T>::current[0].run, T(2.5)), 0x20u);
  EXPECT_EQ(flags_of(Entries<T>::current[1].run, T(2.5)), 0u);
}

TYPED_TEST(PackAndRound, SplitsInPlaceIntoIntegralPartAndFraction) {
  using T = TypeParam;
  auto x = rounding_arguments<T>();
  const int n = static_cast<int>(x.size());
  for (const bool first : {true, false}) {
    std::vector<T> a = x, other(x.size());
    Entries<T>::modf(n, a.data(), first ? a.data() : other.data(), first ? other.data() : a.data());
    const std::vector<T>&whole = first ? a : other, &fraction = first ? other : a;
    for (std::size_t i = 0; i < x.size(); ++i) {
      EXPECT_EQ(whole[i], std::trunc(x[i]));
      if (std::isinf(x[i])) {
        EXPECT_TRUE(std::isnan(fraction[i]));
      } else {
        EXPECT_EQ(words(&fraction[i], 1)[0],
                  words<T>(std::vector<T>{std::copysign(x[i] - std::trunc(x[i]), x[i])}.data(), 1)[0]);
      }
    }
  }
}

TYPED_TEST(PackAndRound, QuietsNaNsAtEveryPositionAndKeepsToItsElements) {
  using T = TypeParam;
  using W = Word<T>;
  const W signalling = std::bit_cast<W>(T(HUGE_VAL)) + 5, quieted = signalling | W{1} << (sizeof(T) == 8 ? 51 : 22);
  const auto run_all = [&](const auto& list) {
    for (const auto& f : list) {
      f.run(-1, nullptr, nullptr);
      for (int n = 0; n < 12; ++n) {
        for (int at = 0; at < n; ++at) {
          Guarded<T> v(n);
          for (int i = 0; i < n; ++i) v[i] = T(-3);
          std::memcpy(v.data() + at, &signalling, sizeof signalling);
          f.run(n, v.data(), v.data());
          for (int i = 0; i < n; ++i) {
            EXPECT_EQ(words(v.data() + i, 1)[0], i == at ? quieted : std::bit_cast<W>(T(-3))) << f.name << ' ' << n;
          }
        }
      }
    }
  };
  run_all(Entries<T>::fixed);
  run_all(Entries<T>::current);
}

}  // namespace
}  // namespace qor::test
