#include <gtest/gtest.h>
#include <xmmintrin.h>

#include "support/guarded.h"
#include "tfn/complex_specials.h"
#include "tfn/complex_sweep.h"
#include "tfn/reports.h"

namespace qor::test {
namespace {

template <class T>
class ComplexKernels : public Kernels {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(ComplexKernels, Precisions);

TYPED_TEST(ComplexKernels, KeepTheirErrorBounds) {
  using T = TypeParam;
  std::string function;
  ComplexInputs<T> in;
  std::vector<QuadComplex> exact;
  for (const auto& m : complex_members<T>()) {
    if (m.function != function) {
      function = m.function;
      in = complex_inputs<T>(function, m.inputs, 200, 20261121);
      exact = complex_exact(m, in);
    }
    const auto w = complex_worst(m, in, exact);
    const auto where = [&](const ComplexArguments<T>& z) {
      std::ostringstream text;
      text << m.name << " at " << std::hexfloat << z.re << ' ' << z.im;
      if (m.inputs == 2) text << ", " << z.b_re << ' ' << z.b_im;
      return text.str();
    };
    EXPECT_LE(w.error.size, m.size_bound) << where(w.size_at);
    EXPECT_LE(w.error.part, m.part_bound) << where(w.part_at);
  }
}

const ComplexSpecials& specials_of(const std::string& function) {
  for (const ComplexSpecials& s : complex_specials()) {
    if (s.function == function) return s;
  }
  ADD_FAILURE() << "no special values of " << function;
  return complex_specials()[0];
}
// The row and those that symmetries make of it.
std::vector<ComplexSpecial> mirrored(const ComplexSpecials& table, const ComplexSpecial& s, int inputs) {
  std::vector<ComplexSpecial> all = {s};
  if (inputs == 2) return all;
  all.push_back(s);
  all[1].y = -s.y;
  all[1].im = -s.im;
  if (table.parity == Parity::none) return all;
  for (int i = 0; i < 2; ++i) {
    ComplexSpecial m = all[static_cast<std::size_t>(i)];
    m.x = -m.x;
    m.y = -m.y;
    if (table.parity == Parity::odd) m.re = -m.re, m.im = -m.im;
    all.push_back(m);
  }
  return all;
}
template <class T>
void expect_part(T got, double expected, const std::string& where) {
  if (std::isnan(expected)) {
    EXPECT_TRUE(std::isnan(got)) << where << ' ' << got;
  } else if (expected == 0 || std::isinf(expected)) {
    EXPECT_EQ(word(got), word(static_cast<T>(expected))) << where << ' ' << got;
  } else {
    EXPECT_NEAR(got / expected, 1, 2 * double(std::numeric_limits<T>::epsilon())) << where;
  }
}

// In place, at every position of vectors and tails in turn; the neighbours keep their results.
TYPED_TEST(ComplexKernels, HandleSpecialValuesAtEveryPosition) {
  using T = TypeParam;
  constexpr int n = 7;
  for (const auto& m : complex_members<T>()) {
    const ComplexSpecials& table = specials_of(m.function);
    for (const ComplexSpecial& row : table.rows) {
      for (const ComplexSpecial& s : mirrored(table, row, m.inputs)) {
        const T usual_z[2] = {T(0.75), T(0.5)}, usual_w[2] = {T(1.5), T(-0.5)};
        for (int at = 0; at < n; ++at) {
          T v[2 * n], b[2 * n], usual[2 * n];
          for (int i = 0; i < n; ++i) {
            std::copy_n(usual_z, 2, v + 2 * i);
            std::copy_n(usual_w, 2, b + 2 * i);
            if (i == at || m.scalar) b[2 * i] = T(s.b_x), b[2 * i + 1] = T(s.b_y);
            m.run(1, usual_z, b + 2 * i, usual + 2 * i);
          }
          v[2 * at] = T(s.x);
          v[2 * at + 1] = T(s.y);
          reported.clear();
          m.run(n, v, b, v);
          const std::string where = m.name + " of " + std::to_string(s.x) + ", " + std::to_string(s.y) + "; " +
                                    std::to_string(s.b_x) + ", " + std::to_string(s.b_y) + " at " + std::to_string(at);
          expect_part(v[2 * at], s.re, where + " re");
          expect_part(v[2 * at + 1], s.im, where + " im");
          std::copy_n(v + 2 * at, 2, usual + 2 * at);
          EXPECT_EQ(words(v, 2 * n), words(usual, 2 * n)) << where;
          if (m.scalar && reported.size() != (s.status == TFN_STATUS_OK ? 0 : 1)) continue;  // the neighbours fail too
          const auto expected =
              s.status == TFN_STATUS_OK ? std::vector<Reported>{} : std::vector<Reported>{{s.status, at, m.name}};
          EXPECT_EQ(reported, expected) << where;
        }
      }
    }
  }
}

// The record of a bad number names its parts; what a callback writes into it is stored in both parts of the result.
TfnErrorContext last_record;
int take_and_replace(TfnErrorContext* c) {
  last_record = *c;
  c->res1 = 42;
  c->res2 = 43;
  return 0;
}
TYPED_TEST(ComplexKernels, ReportPartsAndStoreWhatTheCallbackWrites) {
  using T = TypeParam;
  constexpr int n = 150;
  for (const auto& m : complex_members<T>()) {
    for (const ComplexSpecial& bad : specials_of(m.function).rows) {
      if (bad.status == TFN_STATUS_OK || m.scalar) continue;
      for (const int at : {0, 1, 63, 64, 149}) {
        std::vector<T> a(2 * n, T(0.75)), b(2 * n, T(0.5)), r(2 * n);
        const auto k = static_cast<std::size_t>(2 * at);
        a[k] = T(bad.x), a[k + 1] = T(bad.y), b[k] = T(bad.b_x), b[k + 1] = T(bad.b_y);
        _tfnSetErrorCallBack(take_and_replace);
        _tfnClearErrStatus();
        last_record = {};
        _tfnSetInterfInputVectorPointer(a.data() - 20);
        m.run(n, a.data(), b.data(), r.data());
        _tfnSetInterfInputVectorPointer(nullptr);
        EXPECT_EQ(last_record.index, at + 10) << m.name;
        EXPECT_EQ(last_record.code, bad.status);
        EXPECT_EQ(_tfnGetErrStatus(), bad.status);
        EXPECT_EQ(word(last_record.arg1), word(double(a[k]))) << m.name;
        EXPECT_EQ(word(last_record.arg2), word(double(a[k + 1]))) << m.name;
        expect_part(static_cast<T>(last_record.res1), bad.re, m.name);
        expect_part(static_cast<T>(last_record.res2), bad.im, m.name);
        EXPECT_EQ(r[k], T(42)) << m.name;
        EXPECT_EQ(r[k + 1], T(43)) << m.name;
      }
    }
  }
}

// The result at an index of a long array against that of the argument alone: any n, any alignment, in place (of either
// argument) or not, between pages that can't be touched, under any control register, which comes back.
TYPED_TEST(ComplexKernels, GiveTheSameBitsAnywhereAndTouchNothingElse) {
  using T = TypeParam;
  _tfnSetErrorCallBack(nullptr);
  for (const auto& m : complex_members<T>()) {
    auto in = complex_inputs<T>(m.function, m.inputs, 9, 5);
    if (m.scalar) {
      for (std::size_t i = 0; i < in.b.size(); i += 2) in.b[i] = T(2.5), in.b[i + 1] = T(-0.5);
    }
    const int size = std::min(in.size(), 140);
    // Powers on the negative axis, whose sines nearly vanish; neighbours that take another path.
    for (std::size_t i = 6; i < in.a.size(); i += 10) in.a[i] = in.a[i] < 0 ? -HUGE_VAL : HUGE_VAL;
    for (std::size_t i = 4; i < in.b.size() && !m.scalar; i += 14) {
      in.a[i] = -2, in.a[i + 1] = T(1e-30);
      in.b[i] = -3, in.b[i + 1] = 0;
    }
    const T *x = in.a.data(), *b = in.second();
    std::vector<T> alone(static_cast<std::size_t>(2 * size));
    for (int i = 0; i < size; ++i) m.run(1, x + 2 * i, b + 2 * i, &alone[static_cast<std::size_t>(2 * i)]);
    for (int n = 0; n <= size; n += n < 10 ? 1 : 13) {
      const auto count = static_cast<std::size_t>(2 * n);
      Guarded<T> a(2 * n, x), second(2 * n, b), r(2 * n);
      const auto expected = words(alone.data(), count);
      m.run(n, a.data(), second.data(), r.data());
      EXPECT_EQ(words(r.data(), count), expected) << m.name << ' ' << n;
      EXPECT_EQ(words(a.data(), count), words(x, count));
      m.run(n, a.data(), second.data(), a.data());
      EXPECT_EQ(words(a.data(), count), expected) << m.name << ' ' << n << " in place";
      if (m.inputs == 1 || m.scalar) continue;
      Guarded<T> again(2 * n, x);
      m.run(n, again.data(), second.data(), second.data());
      EXPECT_EQ(words(second.data(), count), expected) << m.name << ' ' << n << " in place of the second";
    }
    constexpr int n = 37;
    std::vector<char> room(sizeof(T) * 2 * n + 24, 'c');
    T* const off = reinterpret_cast<T*>(room.data() + 4 + 8);
    for (const unsigned csr : {0x1F80u, 0x1F80u | 0x2000u, 0x1F80u | 0x8040u, 0x0000u}) {
      std::memcpy(static_cast<void*>(off), x, 2 * n * sizeof(T));
      const unsigned before = _mm_getcsr();
      _mm_setcsr(csr);
      m.run(n, off, b, off);
      const unsigned after = _mm_getcsr();
      _mm_setcsr(before);
      EXPECT_EQ(after & ~0x22u, csr) << m.name;
      std::vector<T> back(2 * n);
      std::memcpy(back.data(), static_cast<void*>(off), 2 * n * sizeof(T));
      EXPECT_EQ(words(back.data(), 2 * n), words(alone.data(), 2 * n)) << m.name << " under " << std::hex << csr;
    }
    EXPECT_EQ(std::count(room.begin(), room.begin() + 12, 'c') + std::count(room.end() - 12, room.end(), 'c'), 24);
    m.run(-1, nullptr, nullptr, nullptr);
  }
}

// f(conj z) = conj f(z), and f(-z) = f(z) or -f(z), in every bit.
TYPED_TEST(ComplexKernels, KeepTheirSymmetriesInEveryBit) {
  using T = TypeParam;
  _tfnSetErrorCallBack(nullptr);
  for (const auto& m : complex_members<T>()) {
    if (m.inputs == 2) continue;
    const Parity parity = specials_of(m.function).parity;
    const auto in = complex_inputs<T>(m.function, 1, 50, 6);
    const auto mirror = [&](T re, T im) {
      auto z = in.a;
      for (std::size_t i = 0; i < z.size(); i += 2) z[i] *= re, z[i + 1] *= im;
      m.run(in.size(), z.data(), nullptr, z.data());
      return z;
    };
    const auto expect = [&](const std::vector<T>& y, const std::vector<T>& z, T re, T im) {
      for (std::size_t i = 0; i < y.size(); ++i) {
        if (std::isnan(y[i]) && std::isnan(z[i])) continue;
        ASSERT_EQ(word(y[i]), word(z[i] * (i % 2 == 0 ? re : im)))
            << m.name << ' ' << std::hexfloat << in.a[i / 2 * 2] << ' ' << in.a[i / 2 * 2 + 1] << ' ' << y[i];
      }
    };
    const auto y = mirror(1, 1);
    expect(y, mirror(1, -1), 1, -1);
    if (parity == Parity::none) continue;
    const T sign = parity == Parity::odd ? T(-1) : T(1);
    expect(y, mirror(-1, -1), sign, sign);
  }
}

// Finite numbers have results, infinite ones where they are too large, or are reported: powers with exponents beyond all
// accuracy too.
TYPED_TEST(ComplexKernels, GiveNumbersForNumbersOrReport) {
  using T = TypeParam;
  for (const auto& m : complex_members<T>()) {
    Draw<T> draw(9);
    constexpr int n = 3000;
    std::vector<T> a, b, y(2 * n);
    for (int i = 0; i < 2 * n; ++i) {
      a.push_back(finite_pattern(draw));
      b.push_back(m.scalar ? T(-2.5) : finite_pattern(draw));
    }
    reported.clear();
    m.run(n, a.data(), b.data(), y.data());
    std::size_t next = 0;
    for (int i = 0; i < n; ++i) {
      const bool bad = next < reported.size() && reported[next].index == i;
      if (bad) ++next;
      for (const auto k : {static_cast<std::size_t>(2 * i), static_cast<std::size_t>(2 * i + 1)}) {
        EXPECT_TRUE(!std::isnan(y[k]) && (bad || std::isfinite(y[k])))
            << m.name << std::hexfloat << ' ' << a[k / 2 * 2] << ' ' << a[k / 2 * 2 + 1] << ", " << b[k / 2 * 2] << ' '
            << b[k / 2 * 2 + 1] << ": " << y[k];
      }
    }
    EXPECT_EQ(next, reported.size());
  }
}

// Powx has the bits of Pow.
TYPED_TEST(ComplexKernels, GivePowxTheBitsOfPow) {
  using T = TypeParam;
  _tfnSetErrorCallBack(nullptr);
  const auto all = complex_members<T>();
  for (const auto& powx : all) {
    if (!powx.scalar) continue;
    const std::string name = powx.name.substr(0, 8) + powx.name.substr(9);
    const auto pow = std::find_if(all.begin(), all.end(), [&](const auto& m) { return m.name == name; });
    ASSERT_NE(pow, all.end()) << name;
    auto in = complex_inputs<T>(powx.function, 2, 50, 7);
    std::vector<T> y(in.a.size()), z(in.a.size());
    pow->run(in.size(), in.a.data(), in.second(), y.data());
    powx.run(in.size(), in.a.data(), in.second(), z.data());
    EXPECT_EQ(words(z.data(), z.size()), words(y.data(), y.size())) << powx.name;
  }
}

}  // namespace
}  // namespace qor::test
