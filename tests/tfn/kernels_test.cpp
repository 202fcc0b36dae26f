#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <algorithm>

#include "support/guarded.h"
#include "tfn/sweep.h"

namespace qor::test {
namespace {

template <class T>
auto word(T x) {
  return std::bit_cast<std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>>(x);
}
template <class T>
std::vector<decltype(word(T()))> words(const T* x, std::size_t n) {
  std::vector<decltype(word(T()))> w(n);
  std::transform(x, x + n, w.begin(), word<T>);
  return w;
}

// What the callback saw, and what it writes instead of the result.
struct Reported {
  int code, index;
  std::string name;
  bool operator==(const Reported&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Reported& r) {
  return out << r.code << '@' << r.index << ' ' << r.name;
}
std::vector<Reported> reported;
int collect(TfnErrorContext* c) {
  reported.push_back({c->code, c->index, std::string(c->funcName, static_cast<std::size_t>(c->funcNameLen))});
  return 1;
}
int replace_by_42(TfnErrorContext* c) {
  c->res1 = 42;
  c->res2 = 43;
  return 0;
}

class Kernels : public ::testing::Test {
 protected:
  void SetUp() override {
    reported.clear();
    _tfnSetMode(TFN_ERR_CALLBACK);
    _tfnSetErrorCallBack(collect);
    _tfnClearErrStatus();
  }
  void TearDown() override {
    _tfnClearErrorCallBack();
    _tfnSetMode(TFN_MODE_DEFAULT);
  }
};

template <class T>
class RealKernels : public Kernels {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(RealKernels, Precisions);

TYPED_TEST(RealKernels, KeepTheirErrorBounds) {
  const auto x = arguments<TypeParam>(3000, 20261121);
  for (const auto& m : members<TypeParam>()) {
    const auto w = worst(m, x);
    EXPECT_LE(w.ulp, m.bound) << m.name << ' ' << m.output << " at " << std::hexfloat << w.at;
  }
}

struct Special {
  double x, result;
  int status;
};
constexpr double inf = HUGE_VAL, not_a_number = __builtin_nan("");
const std::pair<const char*, std::vector<Special>> specials[] = {
    {"Ln",
     {{0.0, -inf, TFN_STATUS_SING},
      {-0.0, -inf, TFN_STATUS_SING},
      {-1.0, not_a_number, TFN_STATUS_ERRDOM},
      {-0x1p-149, not_a_number, TFN_STATUS_ERRDOM},
      {-inf, not_a_number, TFN_STATUS_ERRDOM},
      {inf, inf, TFN_STATUS_OK},
      {not_a_number, not_a_number, TFN_STATUS_OK},
      {1.0, 0.0, TFN_STATUS_OK}}},
    {"Sqrt",
     {{0.0, 0.0, TFN_STATUS_OK},
      {-0.0, -0.0, TFN_STATUS_OK},
      {-1.0, not_a_number, TFN_STATUS_ERRDOM},
      {-0x1p-149, not_a_number, TFN_STATUS_ERRDOM},
      {-inf, not_a_number, TFN_STATUS_ERRDOM},
      {inf, inf, TFN_STATUS_OK},
      {not_a_number, not_a_number, TFN_STATUS_OK}}},
    {"Sin",
     {{0.0, 0.0, TFN_STATUS_OK},
      {-0.0, -0.0, TFN_STATUS_OK},
      {0x1p-149, 0x1p-149, TFN_STATUS_OK},
      {inf, not_a_number, TFN_STATUS_ERRDOM},
      {-inf, not_a_number, TFN_STATUS_ERRDOM},
      {not_a_number, not_a_number, TFN_STATUS_OK}}},
    {"Cos",
     {{0.0, 1.0, TFN_STATUS_OK},
      {-0.0, 1.0, TFN_STATUS_OK},
      {0x1p-149, 1.0, TFN_STATUS_OK},
      {inf, not_a_number, TFN_STATUS_ERRDOM},
      {-inf, not_a_number, TFN_STATUS_ERRDOM},
      {not_a_number, not_a_number, TFN_STATUS_OK}}},
};

// In place, with every position in vectors and tails taken in turn; the neighbours keep their results.
TYPED_TEST(RealKernels, HandleSpecialValuesAtEveryPosition) {
  using T = TypeParam;
  constexpr int n = 11;
  for (const auto& m : members<T>()) {
    T usual = T(1.5);
    m.run(1, &usual, &usual);
    for (const auto& [function, rows] : specials) {
      if (m.function != function) continue;
      for (const Special& s : rows) {
        for (int at = 0; at < n; ++at) {
          T v[n];
          std::fill_n(v, n, T(1.5));
          v[at] = static_cast<T>(s.x);
          reported.clear();
          m.run(n, v, v);
          const std::string where = m.name + " of " + std::to_string(s.x) + " at " + std::to_string(at);
          if (std::isnan(s.result)) {
            EXPECT_TRUE(std::isnan(v[at])) << where;
          } else {
            EXPECT_EQ(word(v[at]), word(static_cast<T>(s.result))) << where;
          }
          EXPECT_EQ(std::count(v, v + n, usual), n - 1) << where;
          const auto expected =
              s.status == TFN_STATUS_OK ? std::vector<Reported>{} : std::vector<Reported>{{s.status, at, m.name}};
          EXPECT_EQ(reported, expected) << where;
        }
      }
    }
  }
}

TYPED_TEST(RealKernels, ReportEachBadElementOnceInOrderAndStoreWhatTheCallbackWrites) {
  using T = TypeParam;
  for (const auto& m : members<T>()) {
    const T bad = m.function == "Ln" || m.function == "Sqrt" ? T(-1) : T(inf);
    std::vector<T> x(100, T(2)), y(100);
    std::vector<Reported> expected;
    for (const int i : {0, 1, 2, 3, 50, 97, 99}) {
      x[static_cast<std::size_t>(i)] = bad;
      expected.push_back({TFN_STATUS_ERRDOM, i, m.name});
    }
    reported.clear();
    _tfnSetErrorCallBack(collect);
    _tfnClearErrStatus();
    m.run(100, x.data(), y.data());
    EXPECT_EQ(reported, expected) << m.name;
    EXPECT_EQ(_tfnGetErrStatus(), TFN_STATUS_ERRDOM) << m.name;

    _tfnSetErrorCallBack(replace_by_42);
    m.run(100, x.data(), y.data());
    for (const Reported& e : expected) {
      EXPECT_EQ(y[static_cast<std::size_t>(e.index)], m.output == "cosine" ? T(43) : T(42))
          << m.name << " at " << e.index;
    }
  }
}

// The result at an index of a long array against that of the argument alone: any n, any alignment, in place or not,
// between pages that can't be touched.
TYPED_TEST(RealKernels, GiveTheSameBitsAnywhereAndTouchNothingElse) {
  using T = TypeParam;
  const auto x = arguments<T>(10, 5);
  for (const auto& m : members<T>()) {
    _tfnSetErrorCallBack(nullptr);
    std::vector<T> alone(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) m.run(1, &x[i], &alone[i]);
    for (int n = 0; n <= static_cast<int>(x.size()); n += n < 20 ? 1 : 7) {
      Guarded<T> a(n, x.data()), r(n);
      m.run(n, a.data(), r.data());
      const auto expected = words(alone.data(), static_cast<std::size_t>(n));
      EXPECT_EQ(words(r.data(), static_cast<std::size_t>(n)), expected) << m.name << ' ' << n;
      EXPECT_EQ(words(a.data(), static_cast<std::size_t>(n)), words(x.data(), static_cast<std::size_t>(n)));
      m.run(n, a.data(), a.data());
      EXPECT_EQ(words(a.data(), static_cast<std::size_t>(n)), expected) << m.name << ' ' << n << " in place";
    }
    // At 4-byte addresses, canaries around.
    constexpr int n = 37;
    std::vector<char> room(sizeof(T) * (n + 2) + 4, 'c');
    T* const off = reinterpret_cast<T*>(room.data() + 4 + 8);
    std::memcpy(static_cast<void*>(off), x.data(), n * sizeof(T));
    m.run(n, off, off);
    std::vector<T> back(n);
    std::memcpy(back.data(), static_cast<void*>(off), n * sizeof(T));
    EXPECT_EQ(words(back.data(), n), words(alone.data(), n)) << m.name;
    EXPECT_EQ(std::count(room.begin(), room.end() - static_cast<std::ptrdiff_t>(room.size()) + 12, 'c'), 12);
    EXPECT_TRUE(std::all_of(room.begin() + 12 + static_cast<std::ptrdiff_t>(n * sizeof(T)), room.end(),
                            [](char c) { return c == 'c'; }));
    m.run(-1, nullptr, nullptr);
  }
}

TYPED_TEST(RealKernels, AreOddOrEvenInEveryBit) {
  using T = TypeParam;
  auto x = arguments<T>(2000, 6);
  std::erase_if(x, [](T v) { return !std::isfinite(v); });
  auto negated = x;
  for (T& v : negated) v = -v;
  for (const auto& m : members<T>()) {
    if (m.function != "Sin" && m.function != "Cos") continue;
    std::vector<T> y(x.size()), z(x.size());
    m.run(static_cast<int>(x.size()), x.data(), y.data());
    m.run(static_cast<int>(x.size()), negated.data(), z.data());
    if (m.function == "Sin") {
      for (T& v : z) v = -v;
    }
    EXPECT_EQ(words(y.data(), y.size()), words(z.data(), z.size())) << m.name;
  }
}

TYPED_TEST(RealKernels, GiveSinCosTheBitsOfSinAndCos) {
  using T = TypeParam;
  auto x = arguments<T>(2000, 7);
  std::erase_if(x, [](T v) { return !std::isfinite(v); });
  std::vector<T> single(x.size()), y(x.size());
  const auto all = members<T>();
  for (const auto& both : all) {
    if (both.output.empty()) continue;
    const std::string name = both.name.substr(0, 5) + both.function + both.name.substr(11);
    const auto one = std::find_if(all.begin(), all.end(), [&](const auto& m) { return m.name == name; });
    ASSERT_NE(one, all.end()) << name;
    one->run(static_cast<int>(x.size()), x.data(), single.data());
    both.run(static_cast<int>(x.size()), x.data(), y.data());
    EXPECT_EQ(words(y.data(), y.size()), words(single.data(), y.size())) << both.name << ' ' << both.output;
  }
}

// Rounding modes, flush-to-zero with denormals-are-zero, and unmasked exceptions of the caller change no result; its
// register comes back, without flags that a bystander's arithmetic raised.
TYPED_TEST(RealKernels, IgnoreAndKeepTheCallersControlRegister) {
  using T = TypeParam;
  const auto x = arguments<T>(300, 8);
  std::vector<T> expected(x.size()), y(x.size());
  constexpr unsigned standard = 0x1F80;
  const unsigned before = _mm_getcsr();
  for (const auto& m : members<T>()) {
    _tfnSetErrorCallBack(nullptr);
    m.run(static_cast<int>(x.size()), x.data(), expected.data());
    for (const unsigned csr :
         {standard | 0x2000u, standard | 0x4000u, standard | 0x6000u, standard | 0x8040u, 0x0000u}) {
      _mm_setcsr(csr);
      m.run(static_cast<int>(x.size()), x.data(), y.data());
      const unsigned after = _mm_getcsr();
      _mm_setcsr(before);
      EXPECT_EQ(after & ~0x22u, csr) << m.name;
      EXPECT_EQ(words(y.data(), y.size()), words(expected.data(), y.size())) << m.name << " under " << std::hex << csr;
    }
  }
}

// The two algorithms whose arithmetic callers rely on, one element at a time as they are told.
double told_ln(double x) {
  const std::uint64_t b = word(x);
  const double k = double(int(b >> 52) - 1023), m = std::bit_cast<double>((b & 0xFFFFFFFFFFFFF) | 0x3FF0000000000000);
  const auto& row = tfn::ln_table[static_cast<std::size_t>(((b >> 43 & 0x1FF) + 1) >> 1)];
  const double m1 = (std::bit_cast<double>(word(m) | 0x3FF000003FF) + 17592186044416.0) - 17592186044416.0;
  const double u = (m - m1) * row.c;
  const double p =
      ((((0.20000077300509184 * u - 0.25000079467558006) * u + 0.33333333333238757) * u - 0.4999999999992423) * u) * u;
  return ((p + (k * -1.7239444525614835e-13 + row.lo)) + u) + (k * 0.6931471805601177 + row.hi);
}
double told_sqrt(double x) {
  const bool subnormal = x < DBL_MIN;
  const double scaled = subnormal ? x * 18014398509481984.0 : x, s = subnormal ? 134217728.0 : 1.0;
  const std::uint32_t hi = static_cast<std::uint32_t>(word(scaled) >> 32);
  const std::uint32_t top = static_cast<std::uint32_t>(word(scaled) >> 29) & 0xFFFFFF;
  const float estimate = _mm_cvtss_f32(_mm_rsqrt_ss(_mm_set_ss(std::bit_cast<float>((top ^ 0x800000) + 0x3F800000))));
  const std::uint32_t high = (word(estimate) >> 3) + 0x57F00000 - (((hi - 0x100000) & 0xFFE00000) >> 1);
  const double y = std::bit_cast<double>(std::uint64_t{high} << 32), e = scaled * (y * y) - 1.0;
  const double p = (((0.2734375 * e - 0.3125) * e + 0.375) * e - 0.5) * e;
  return ((y + y * p) * x) * s;
}
TEST_F(Kernels, FollowTheToldArithmeticBitForBit) {
  auto x = arguments<double>(5000, 9);
  std::erase_if(x, [](double v) { return !(v > 0 && v <= DBL_MAX); });
  for (int i = 0; i < 50; ++i) x.push_back(std::ldexp(1.37, -1023 - i));
  std::vector<double> ln(x.size()), root(x.size());
  _tfndLn_50(static_cast<int>(x.size()), x.data(), ln.data());
  _tfndSqrt_50(static_cast<int>(x.size()), x.data(), root.data());
  for (std::size_t i = 0; i < x.size(); ++i) {
    EXPECT_EQ(word(root[i]), word(told_sqrt(x[i]))) << std::hexfloat << x[i];
    if (x[i] >= DBL_MIN) {
      EXPECT_EQ(word(ln[i]), word(told_ln(x[i]))) << std::hexfloat << x[i];
    }
  }
}

// Every row against quadruple precision: the sums of the parts, the grids that make products exact, the short
// reciprocals.
TEST(Tables, HoldWhatTheirRulesSay) {
  const auto multiple_of = [](double v, double grid) { return v / grid == std::nearbyint(v / grid); };
  for (int j = 0; j <= 256; ++j) {
    const auto& a = tfn::ln_table[static_cast<std::size_t>(j)];
    const auto& b = tfn::ln_exact_table[static_cast<std::size_t>(j)];
    const auto& c = tfn::ln_single_table[static_cast<std::size_t>(j)];
    EXPECT_LT(fabsq(logq(1 + j / 256.0Q) - a.hi - a.lo), 0x1p-92Q) << j;
    EXPECT_LT(fabsq(-logq(b.c) - b.hi - b.lo), 0x1p-92Q) << j;
    EXPECT_LT(fabsq(-logq(c.c) - c.hi - c.lo), 0x1p-41Q) << j;
    EXPECT_TRUE(multiple_of(a.hi, 0x1p-40) && multiple_of(b.hi, 0x1p-40) && multiple_of(c.hi, 0x1p-17)) << j;
    EXPECT_TRUE(multiple_of(b.c, 0x1p-10) && b.c == c.c) << j;
    EXPECT_EQ(a.c, 1 / (1 + j / 256.0)) << j;
  }
  for (int j = 0; j < tfn::trig_exact_rows; ++j) {
    const auto& b = tfn::trig_exact_table[static_cast<std::size_t>(j)];
    const __float128 angle = 2 * M_PIq * j / tfn::trig_exact_rows, s = sinq(angle), c = cosq(angle);
    EXPECT_LT(fabsq(s - b.sine + b.minus_sine_lo) + fabsq(c - b.cosine - b.cosine_lo), 0x1p-78Q) << j;
    EXPECT_EQ(word(b.cosine) & 0x7FFFFFF, 0u) << j;
    if (j % 2 != 0) continue;
    const auto& a = tfn::trig_table[static_cast<std::size_t>(j / 2)];
    EXPECT_LT(fabsq(s - a.sine) + fabsq(c - a.cosine), 0x1.01p-53Q) << j;
  }
}

}  // namespace
}  // namespace qor::test
