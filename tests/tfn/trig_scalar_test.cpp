// The trigonometric entries of one element: accuracy for every kind of argument, the names they report, the control
// words they leave.
#include <gtest/gtest.h>

#include <cstdint>

#include "tfn/sweep.h"

namespace qor::test {
namespace {

template <class T>
struct Entry {
  std::string name, reported;
  void (*run)(int, const T*, T*, T*);
  void (*worker)(int, const T*, T*, T*, const char*);
  typename Wider<T>::type (*exact)(typename Wider<T>::type);
  typename Wider<T>::type (*second)(typename Wider<T>::type);
};
template <class T>
std::vector<Entry<T>> entries();
#define QOR_SC_FUNCTION(l, Name, exact, second)                                                             \
  {"_tfn" #l #Name "_SC_HA", #l #Name "_HA", _tfn##l##Name##_SC_HA, _tfn##l##Name##_SC, exact, second},     \
      {"_tfn" #l #Name "_SC_LA", #l #Name "_LA", _tfn##l##Name##_SC_LA, _tfn##l##Name##_SC, exact, second}, \
      {"_tfn" #l #Name "_SC_A11", #l #Name "_A11", _tfn##l##Name##_SC_A11, _tfn##l##Name##_SC, exact, second},
#define QOR_SC_ALL(l)                                                                                 \
  return {QOR_SC_FUNCTION(l, Sin, oracle::Sin, nullptr) QOR_SC_FUNCTION(l, Cos, oracle::Cos, nullptr) \
              QOR_SC_FUNCTION(l, Tan, oracle::Tan, nullptr) QOR_SC_FUNCTION(l, SinCos, oracle::Sin, oracle::Cos)};
template <>
std::vector<Entry<double>> entries() {
  QOR_SC_ALL(d)
}
template <>
std::vector<Entry<float>> entries(){QOR_SC_ALL(s)}

std::string reported;
int reports;
int collect(TfnErrorContext* c) {
  ++reports;
  reported = std::to_string(c->code) + ' ' + std::to_string(c->index) + ' ' +
             std::string(c->funcName, static_cast<std::size_t>(c->funcNameLen));
  return 1;
}
unsigned x87_control() {
  std::uint16_t word;
  asm volatile("fnstcw %0" : "=m"(word));
  return word;
}
void set_x87_control(unsigned value) {
  const auto word = static_cast<std::uint16_t>(value);
  asm volatile("fldcw %0" : : "m"(word));
}

template <class T>
class TrigElements : public ::testing::Test {
 protected:
  void SetUp() override {
    _tfnSetMode(TFN_ERR_CALLBACK);
    _tfnSetErrorCallBack(collect);
  }
  void TearDown() override {
    _tfnClearErrorCallBack();
    _tfnSetMode(TFN_MODE_DEFAULT);
  }
};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(TrigElements, Precisions);

TYPED_TEST(TrigElements, AreAccurateEverywhereWhateverTheControlWordAndKeepIt) {
  using T = TypeParam;
  std::vector<T> x = arguments<T>(400, 11);
  for (T& v : x) {
    if (std::isinf(v)) v = std::numeric_limits<T>::max();
  }
  x[0] = T(0);
  x[1] = T(-0.0);
  x[2] = std::numeric_limits<T>::denorm_min();
  const unsigned before = x87_control();
  reports = 0;
  for (const auto& e : entries<T>()) {
    std::vector<T> y(x.size(), T(7)), z(x.size(), T(7));
    for (std::size_t i = 0; i < x.size(); ++i) {
      const unsigned control = (before & ~0xF00u) | (i % 4) << 10 | (i % 8 < 4 ? 0x200u : 0x300u);
      set_x87_control(control);
      e.run(static_cast<int>(i), x.data(), y.data(), z.data());
      const unsigned after = x87_control();
      set_x87_control(before);
      ASSERT_EQ(after, control) << e.name;
      const auto exact = static_cast<typename Wider<T>::type>(x[i]);
      ASSERT_LE(ulps(y[i], e.exact(exact)), 0.51) << e.name << std::hexfloat << ' ' << x[i];
      if (x[i] == 0 && e.exact == entries<T>()[0].exact) {
        EXPECT_EQ(std::signbit(y[i]), std::signbit(x[i]));
      }
      if (e.second != nullptr) {
        ASSERT_LE(ulps(z[i], e.second(exact)), 0.51) << e.name << std::hexfloat << ' ' << x[i];
      } else {
        ASSERT_EQ(z[i], T(7)) << e.name << " writes a second result";
      }
    }
  }
  EXPECT_EQ(reports, 0);
}

TYPED_TEST(TrigElements, ReportAnInfinityUnderTheirNames) {
  using T = TypeParam;
  using Word = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
  constexpr Word invalid = sizeof(T) == 8 ? Word(0xFFF8000000000000) : Word(0xFFC00000);
  for (const auto& e : entries<T>()) {
    for (const T bad : {T(HUGE_VAL), -T(HUGE_VAL)}) {
      const T a[] = {1, 2, bad};
      T y[3] = {}, z[3] = {};
      const auto check = [&](const std::string& name) {
        EXPECT_EQ(reported, "1 2 " + name);
        EXPECT_EQ(std::bit_cast<Word>(y[2]), invalid) << e.name;
        EXPECT_EQ(std::bit_cast<Word>(z[2]), e.second != nullptr ? invalid : Word(0)) << e.name;
        y[2] = z[2] = 0;
      };
      e.run(2, a, y, z);
      check(e.reported);
      e.worker(2, a, y, z, "mine");
      check("mine");
    }
  }
}

}  // namespace
}  // namespace qor::test
