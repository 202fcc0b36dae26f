#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <algorithm>
#include <set>

#include "support/guarded.h"
#include "tfn/reports.h"
#include "tfn/specials.h"
#include "tfn/sweep.h"

namespace qor::test {
namespace {

template <class T>
class RealKernels : public Kernels {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(RealKernels, Precisions);

TYPED_TEST(RealKernels, KeepTheirErrorBounds) {
  using T = TypeParam;
  const auto all = members<T>();
  std::string function;  // members of one function mostly follow each other and share the oracle's work
  Inputs<T> in;
  std::vector<typename Wider<T>::type> exact;
  for (const auto& m : all) {
    if (m.function != function) {
      function = m.function;
      in = inputs<T>(function, m.inputs, 1000, 20261121);
      exact = exact_results(m, in);
    }
    const auto w = worst(m, in, exact);
    EXPECT_LE(w.ulp, m.bound) << m.name << ' ' << m.output << " at " << std::hexfloat << w.at << ' ' << w.b;
  }
}

const Specials& specials_of(const std::string& function) {
  for (const Specials& s : specials()) {
    if (s.function == function) return s;
  }
  ADD_FAILURE() << "no special values of " << function;
  return specials()[0];
}

// In place, with every position in vectors and tails taken in turn; the neighbours keep their results. A scalar second
// argument is shared by all, so there the neighbours are of another kind.
TYPED_TEST(RealKernels, HandleSpecialValuesAtEveryPosition) {
  using T = TypeParam;
  constexpr int n = 11;
  for (const auto& m : members<T>()) {
    const Specials& table = specials_of(m.function);
    for (const Special& s : table.rows) {
      for (int at = 0; at < n; ++at) {
        T v[n], b[n], usual[n];
        std::fill_n(v, n, T(table.usual));
        std::fill_n(b, n, T(m.scalar ? s.b : table.usual_b));
        for (T& u : usual) m.run(1, v, b, &u);
        v[at] = static_cast<T>(s.x);
        b[at] = static_cast<T>(s.b);
        reported.clear();
        m.run(n, v, b, v);
        const std::string where =
            m.name + " of " + std::to_string(s.x) + ", " + std::to_string(s.b) + " at " + std::to_string(at);
        if (std::isnan(s.result)) {
          EXPECT_TRUE(std::isnan(v[at])) << where;
        } else {
          EXPECT_EQ(word(v[at]), word(static_cast<T>(s.result))) << where;
        }
        usual[at] = v[at];
        EXPECT_EQ(words(v, n), words(usual, n)) << where;
        if (m.scalar && reported.size() != (s.status == TFN_STATUS_OK ? 0 : 1)) continue;  // the neighbours fail too
        const auto expected =
            s.status == TFN_STATUS_OK ? std::vector<Reported>{} : std::vector<Reported>{{s.status, at, m.name}};
        EXPECT_EQ(reported, expected) << where;
      }
    }
  }
}

TYPED_TEST(RealKernels, ReportEachBadElementOnceInOrderAndStoreWhatTheCallbackWrites) {
  using T = TypeParam;
  for (const auto& m : members<T>()) {
    const Specials& table = specials_of(m.function);
    for (const Special& bad : table.rows) {
      if (bad.status == TFN_STATUS_OK) continue;
      std::vector<T> x(100, T(table.usual)), b(100, T(m.scalar ? bad.b : table.usual_b)), y(100);
      std::vector<Reported> expected;
      for (const int i : {0, 1, 2, 3, 50, 97, 99}) {
        x[static_cast<std::size_t>(i)] = T(bad.x);
        b[static_cast<std::size_t>(i)] = T(bad.b);
        expected.push_back({bad.status, i, m.name});
      }
      reported.clear();
      _tfnSetErrorCallBack(collect);
      _tfnClearErrStatus();
      m.run(100, x.data(), b.data(), y.data());
      if (m.scalar && reported.size() > expected.size()) continue;  // the neighbours fail too
      EXPECT_EQ(reported, expected) << m.name << ' ' << bad.x << ' ' << bad.b;
      EXPECT_EQ(_tfnGetErrStatus(), bad.status) << m.name;

      _tfnSetErrorCallBack(replace_by_42);
      m.run(100, x.data(), b.data(), y.data());
      for (const Reported& e : expected) {
        EXPECT_EQ(y[static_cast<std::size_t>(e.index)], m.output == "cosine" ? T(43) : T(42))
            << m.name << " at " << e.index;
      }
    }
  }
}

// The result at an index of a long array against that of the argument alone: any n, any alignment, in place (of either
// argument) or not, between pages that can't be touched.
TYPED_TEST(RealKernels, GiveTheSameBitsAnywhereAndTouchNothingElse) {
  using T = TypeParam;
  for (const auto& m : members<T>()) {
    _tfnSetErrorCallBack(nullptr);
    auto in = inputs<T>(m.function, m.inputs, 9, 5);
    if (m.scalar) in.b.assign(in.size(), T(2.5));
    const std::size_t size = std::min<std::size_t>(in.size(), 80);
    const T *x = in.a.data(), *b = in.second();
    std::vector<T> alone(size);
    for (std::size_t i = 0; i < size; ++i) m.run(1, x + i, b + i, &alone[i]);
    for (int n = 0; n <= static_cast<int>(size); n += n < 20 ? 1 : 7) {
      const auto count = static_cast<std::size_t>(n);
      Guarded<T> a(n, x), second(n, b), r(n);
      m.run(n, a.data(), second.data(), r.data());
      const auto expected = words(alone.data(), count);
      EXPECT_EQ(words(r.data(), count), expected) << m.name << ' ' << n;
      EXPECT_EQ(words(a.data(), count), words(x, count));
      EXPECT_EQ(words(second.data(), count), words(b, count));
      m.run(n, a.data(), second.data(), a.data());
      EXPECT_EQ(words(a.data(), count), expected) << m.name << ' ' << n << " in place";
      if (m.inputs == 1 || m.scalar) continue;
      Guarded<T> again(n, x);
      m.run(n, again.data(), second.data(), second.data());
      EXPECT_EQ(words(second.data(), count), expected) << m.name << ' ' << n << " in place of the second";
    }
    // At 4-byte addresses, canaries around.
    constexpr int n = 37;
    std::vector<char> room(sizeof(T) * (n + 2) + 4, 'c');
    T* const off = reinterpret_cast<T*>(room.data() + 4 + 8);
    std::memcpy(static_cast<void*>(off), x, n * sizeof(T));
    m.run(n, off, b, off);
    std::vector<T> back(n);
    std::memcpy(back.data(), static_cast<void*>(off), n * sizeof(T));
    EXPECT_EQ(words(back.data(), n), words(alone.data(), n)) << m.name;
    EXPECT_EQ(std::count(room.begin(), room.end() - static_cast<std::ptrdiff_t>(room.size()) + 12, 'c'), 12);
    EXPECT_TRUE(std::all_of(room.begin() + 12 + static_cast<std::ptrdiff_t>(n * sizeof(T)), room.end(),
                            [](char c) { return c == 'c'; }));
    m.run(-1, nullptr, nullptr, nullptr);
  }
}

// The quotient vanishes in the right half-plane alone; exact zeros and the other angles are quiet.
TYPED_TEST(RealKernels, ReportAnglesThatVanish) {
  using T = TypeParam;
  using L = std::numeric_limits<T>;
  constexpr T least = L::min(), tiny = L::denorm_min(), huge = L::max();
  const struct {
    T y, x;
    bool vanishes;
  } cases[] = {{tiny, 1, true},
               {-tiny, 3, true},
               {tiny, huge, true},
               {least, 2, true},
               {1, huge, true},
               {least, 1, false},
               {tiny, tiny, false},
               {tiny, T(0.5) * least, false},
               {T(0), huge, false},
               {tiny, -huge, false},
               {least, L::infinity(), false},
               {huge, tiny, false},
               {tiny, T(0), false},
               {T(2) * least, 2, false}};
  for (const auto& m : members<T>()) {
    if (m.function != "Atan2") continue;
    for (const auto& c : cases) {
      std::vector<T> y(7, T(0.25)), x(7, T(-1.5)), r(7);
      y[5] = c.y;
      x[5] = c.x;
      reported.clear();
      m.run(7, y.data(), x.data(), r.data());
      const auto expected =
          c.vanishes ? std::vector<Reported>{{TFN_STATUS_UNDERFLOW, 5, m.name}} : std::vector<Reported>{};
      EXPECT_EQ(reported, expected) << m.name << ' ' << std::hexfloat << c.y << ' ' << c.x;
      EXPECT_LE(ulps(r[5], m.exact(c.y, c.x)), m.bound) << m.name << ' ' << std::hexfloat << c.y << ' ' << c.x;
    }
  }
}

TYPED_TEST(RealKernels, AreOddOrEvenInEveryBit) {
  using T = TypeParam;
  const std::set<std::string> odd = {"Sin",   "Tan", "Asin", "Atan",    "Sinh",   "Tanh", "Asinh",
                                     "Atanh", "Erf", "Cbrt", "InvCbrt", "ErfInv", "Inv"},
                              even = {"Cos", "Cosh"};
  _tfnSetErrorCallBack(nullptr);
  for (const auto& m : members<T>()) {
    if (!odd.contains(m.function) && !even.contains(m.function)) continue;
    auto x = inputs<T>(m.function, 1, 300, 6).a;
    std::erase_if(x, [](T v) { return !std::isfinite(v); });
    auto negated = x;
    for (T& v : negated) v = -v;
    std::vector<T> y(x.size()), z(x.size());
    m.run(static_cast<int>(x.size()), x.data(), nullptr, y.data());
    m.run(static_cast<int>(x.size()), negated.data(), nullptr, z.data());
    for (std::size_t i = 0; i < x.size(); ++i) {
      if (std::isnan(y[i]) && std::isnan(z[i])) continue;
      EXPECT_EQ(word(y[i]), word(odd.contains(m.function) ? -z[i] : z[i])) << m.name << ' ' << std::hexfloat << x[i];
    }
  }
}

// Where a function rises or falls, neighbouring arguments have results that do so or are equal: across the seams of
// formulas and tables too.
TYPED_TEST(RealKernels, AreMonotonicBetweenNeighbours) {
  using T = TypeParam;
  const std::set<std::string> rising = {"Exp", "Sinh", "Tanh",  "Asin",  "Atan",  "Asinh",
                                        "Erf", "Cbrt", "Acosh", "Atanh", "ErfInv"},
                              falling = {"Acos", "Erfc"};
  _tfnSetErrorCallBack(nullptr);
  for (const auto& m : members<T>()) {
    if (m.name.substr(m.name.size() - 2) != "HA") continue;
    if (!rising.contains(m.function) && !falling.contains(m.function)) continue;
    auto x = inputs<T>(m.function, 1, 300, 7).a;
    std::erase_if(x, [](T v) { return std::isnan(v); });
    std::vector<T> next(x), y(x.size()), z(x.size());
    for (T& v : next) v = std::nextafter(v, std::numeric_limits<T>::infinity());
    m.run(static_cast<int>(x.size()), x.data(), nullptr, y.data());
    m.run(static_cast<int>(x.size()), next.data(), nullptr, z.data());
    for (std::size_t i = 0; i < x.size(); ++i) {
      if (std::isnan(y[i]) || std::isnan(z[i])) continue;
      EXPECT_TRUE(rising.contains(m.function) ? y[i] <= z[i] : y[i] >= z[i])
          << m.name << ' ' << std::hexfloat << x[i] << ": " << y[i] << ' ' << z[i];
    }
  }
}

// SinCos has the bits of Sin and Cos, Powx those of Pow.
TYPED_TEST(RealKernels, GiveCompoundMembersTheBitsOfTheSimpleOnes) {
  using T = TypeParam;
  const auto all = members<T>();
  for (const auto& compound : all) {
    if (compound.output.empty() && !compound.scalar) continue;
    const std::string name =
        "_tfn" + compound.name.substr(4, 1) +
        (compound.scalar ? compound.function.substr(0, compound.function.size() - 1) : compound.function) +
        compound.name.substr(compound.name.find('_', 4));
    const auto one = std::find_if(all.begin(), all.end(), [&](const auto& m) { return m.name == name; });
    ASSERT_NE(one, all.end()) << name;
    auto in = inputs<T>(compound.function, compound.inputs, 300, 7);
    for (T& v : in.a) {
      if (!std::isfinite(v)) v = 2;
    }
    std::vector<T> single(in.size()), y(in.size());
    one->run(static_cast<int>(in.size()), in.a.data(), in.second(), single.data());
    compound.run(static_cast<int>(in.size()), in.a.data(), in.second(), y.data());
    EXPECT_EQ(words(y.data(), y.size()), words(single.data(), y.size())) << compound.name << ' ' << compound.output;
  }
}

// The entries of one element: the bits of the array entry at that index, nothing else touched, their own name reported.
TYPED_TEST(RealKernels, ComputeOneElementAsTheArrayEntryDoes) {
  using T = TypeParam;
  constexpr int n = 7;
  const T x[n] = {T(0.25), T(-0.999), T(1), T(-0.0), T(3), T(1e-30), T(-1)};
  T expected[n];
  const auto entry = [](int i, const T* a, T* r) {
    if constexpr (sizeof(T) == 8) {
      _tfndErfInv_HA_SC_zx8(i, a, r, nullptr);
    } else {
      _tfnsErfInv_HA_SC_zx8(i, a, r, nullptr);
    }
  };
  const auto all = members<T>();
  std::find_if(all.begin(), all.end(), [](const auto& m) {
    return m.function == "ErfInv" && m.name.ends_with("_HA");
  })->run(n, x, nullptr, expected);
  std::vector<Reported> of_entry;
  for (const Reported& e : reported) of_entry.push_back({e.code, e.index, e.name + "_SC_zx8"});
  reported.clear();
  for (int i = 0; i < n; ++i) {
    T r[n] = {};
    entry(i, x, r);
    EXPECT_EQ(word(r[i]), word(expected[i])) << i;
    r[i] = 0;
    EXPECT_EQ(std::count(r, r + n, T(0)), n);
  }
  EXPECT_EQ(reported, of_entry);
}

// Rounding modes, flush-to-zero with denormals-are-zero, and unmasked exceptions of the caller change no result; its
// register comes back, without flags that a bystander's arithmetic raised.
TYPED_TEST(RealKernels, IgnoreAndKeepTheCallersControlRegister) {
  using T = TypeParam;
  constexpr unsigned standard = 0x1F80;
  const unsigned before = _mm_getcsr();
  for (const auto& m : members<T>()) {
    _tfnSetErrorCallBack(nullptr);
    const auto in = inputs<T>(m.function, m.inputs, 100, 8);
    std::vector<T> expected(in.size()), y(in.size());
    m.run(static_cast<int>(in.size()), in.a.data(), in.second(), expected.data());
    for (const unsigned csr :
         {standard | 0x2000u, standard | 0x4000u, standard | 0x6000u, standard | 0x8040u, 0x0000u}) {
      _mm_setcsr(csr);
      m.run(static_cast<int>(in.size()), in.a.data(), in.second(), y.data());
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
    EXPECT_LT(fabsq(logq(1 + j / 256.0Q) - a.hi - a.lo), 0x1p-92Q) << j;
    EXPECT_LT(fabsq(-logq(b.c) - b.hi - b.lo), 0x1p-92Q) << j;
    EXPECT_TRUE(multiple_of(a.hi, 0x1p-40) && multiple_of(b.hi, 0x1p-40)) << j;
    EXPECT_TRUE(multiple_of(b.c, 0x1p-10)) << j;
    EXPECT_EQ(a.c, 1 / (1 + j / 256.0)) << j;
  }
  for (std::uint32_t r = 0; r < 256; ++r) {
    const auto& row = tfn::ln_single_table.row[r];
    const auto& row_10 = tfn::log10_single_table.row[r];
    const double middle = std::bit_cast<float>(tfn::ln_single_first + 0x4000 + (r << 15));
    EXPECT_LT(fabsq(-logq(row.c) - row.hi - row.lo), 0x1p-41Q) << r;
    EXPECT_LT(fabsq(-log10q(row.c) - row_10.hi - row_10.lo), 0x1p-41Q) << r;
    EXPECT_TRUE(multiple_of(row.hi, 0x1p-17) && multiple_of(row_10.hi, 0x1p-17) && multiple_of(row.c, 0x1p-10)) << r;
    EXPECT_EQ(row.at_middle, row.c * middle - 1) << r;
    EXPECT_LT(std::fabs(row.at_middle) + row.c * 0x1p-9 * std::min(middle, 1.0), 0x1p-8) << r;
  }
  for (int j = 0; j <= 256; ++j) {
    const auto& a = tfn::log10_table[static_cast<std::size_t>(j)];
    const auto& b = tfn::pow_single_table[static_cast<std::size_t>(j)];
    EXPECT_LT(fabsq(-log10q(a.c) - a.hi - a.lo), 0x1p-92Q) << j;
    EXPECT_TRUE(multiple_of(a.hi, 0x1p-40) && multiple_of(a.c, 0x1p-10)) << j;
    EXPECT_LE(fabsq(256 * log2q(1 + j / 256.0Q) - b.log), 0x1p-46Q) << j;
  }
  EXPECT_TRUE(multiple_of(tfn::exp_step_hi, 0x1p-42));
  EXPECT_LT(fabsq(M_LN2q / 256 - tfn::exp_step_hi - tfn::exp_step_lo), 0x1p-95Q);
  for (int j = 0; j < tfn::exp_rows; ++j) {
    const auto row = static_cast<std::size_t>(j);
    const double value =
        std::bit_cast<double>(word(tfn::exp_tables.value[row]) + (static_cast<std::uint64_t>(j) << 44));
    const __float128 exact = exp2q(j / 256.0Q);
    EXPECT_LT(fabsq(value - exact), 0x1.01p-53Q) << j;
    EXPECT_LT(fabsq(value * (1 + static_cast<__float128>(tfn::exp_tables.tail[row])) - exact), 0x1p-104Q) << j;
  }
  for (int k = 0; k < tfn::tanh_rows; ++k) {
    const auto& row = tfn::tanh_table[static_cast<std::size_t>(k)];
    const double t = std::tanh(k / 64.0);
    EXPECT_LE(std::fabs(row.value - t), 0x1.01p-25 * (t < 0.5 ? 2 * t : 1)) << k;
    EXPECT_LE(std::fabs(row.slope - (1 - t * t)), 0x1.01p-24 * row.slope + 0x1p-50) << k;
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
