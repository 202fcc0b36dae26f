// Accuracy of the real kernels: every member of functions.def beside an independent oracle, arguments that reach all of
// its domain, and the largest error over them. The short sweep of the tests and the accuracy program share this.
#pragma once

#include <quadmath.h>

#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "qor/tfn.h"
#include "tfn/functions.def"
#include "tfn/ln.h"
#include "tfn/sqrt.h"
#include "tfn/trig.h"

namespace qor::test {

// Oracles: quadruple precision for doubles, double precision for singles.
namespace oracle {
inline __float128 Ln(__float128 x) { return logq(x); }
inline __float128 Sqrt(__float128 x) { return sqrtq(x); }
inline __float128 Sin(__float128 x) { return sinq(x); }
inline __float128 Cos(__float128 x) { return cosq(x); }
inline double Ln(double x) { return std::log(x); }
inline double Sqrt(double x) { return std::sqrt(x); }
inline double Sin(double x) { return std::sin(x); }
inline double Cos(double x) { return std::cos(x); }
}  // namespace oracle

template <class T>
struct Wider;
template <>
struct Wider<double> {
  using type = __float128;
};
template <>
struct Wider<float> {
  using type = double;
};

// One output of one member.
template <class T>
struct Member {
  std::string name;      // the entry's
  std::string output;    // "", or which of two
  std::string function;  // what the oracle computes
  double bound;
  void (*run)(int n, const T* a, T* r);
  typename Wider<T>::type (*exact)(typename Wider<T>::type);
};

// The sine or the cosine that a two-result entry delivers.
template <class T, void (*entry)(int, const T*, T*, T*), bool First>
void one_output(int n, const T* a, T* r) {
  std::vector<T> other(static_cast<std::size_t>(n > 0 ? n : 0));
  entry(n, a, First ? r : other.data(), First ? other.data() : r);
}

template <class T>
std::vector<Member<T>> members();
#define QOR_MEMBER(letter, T, Name, suffix, level)                                                                 \
  list.push_back({"_tfn" #letter #Name "_" #suffix, "", #Name, tfn::Name<tfn::Accuracy::level>::template bound<T>, \
                  _tfn##letter##Name##_##suffix, oracle::Name});
#define QOR_MEMBER2(letter, T, Name, suffix, level)                                                                    \
  list.push_back({"_tfn" #letter #Name "_" #suffix, "sine", "Sin", tfn::Name<tfn::Accuracy::level>::template bound<T>, \
                  one_output<T, _tfn##letter##Name##_##suffix, true>, oracle::Sin});                                   \
  list.push_back({"_tfn" #letter #Name "_" #suffix, "cosine", "Cos",                                                   \
                  tfn::Name<tfn::Accuracy::level>::template bound<T>,                                                  \
                  one_output<T, _tfn##letter##Name##_##suffix, false>, oracle::Cos});
#define QOR_DOUBLE(Name) QOR_MEMBER(d, double, Name, HA, high) QOR_MEMBER(d, double, Name, 50, low)
#define QOR_SINGLE(Name) QOR_MEMBER(s, float, Name, HA, high) QOR_MEMBER(s, float, Name, 21, low)
#define QOR_DOUBLE2(Name) QOR_MEMBER2(d, double, Name, HA, high) QOR_MEMBER2(d, double, Name, 50, low)
#define QOR_SINGLE2(Name) QOR_MEMBER2(s, float, Name, HA, high) QOR_MEMBER2(s, float, Name, 21, low)
template <>
inline std::vector<Member<double>> members<double>() {
  std::vector<Member<double>> list;
  TFN_ONE_RESULT(QOR_DOUBLE)
  TFN_TWO_RESULTS(QOR_DOUBLE2)
  return list;
}
template <>
inline std::vector<Member<float>> members<float>() {
  std::vector<Member<float>> list;
  TFN_ONE_RESULT(QOR_SINGLE)
  TFN_TWO_RESULTS(QOR_SINGLE2)
  return list;
}

// |got - exact| in units of the last place that the exact result has in T, subnormals included. Not a number for both
// is no error; for one, and for unequal infinities, it is an endless one.
inline double ulps(double got, __float128 exact) {
  if (isnanq(exact) || std::isnan(got)) return isnanq(exact) && std::isnan(got) ? 0 : HUGE_VAL;
  if (isinfq(exact) || std::isinf(got)) return exact == got ? 0 : HUGE_VAL;
  int e = DBL_MIN_EXP;
  if (exact != 0) frexpq(exact, &e);
  return static_cast<double>(ldexpq(fabsq(got - exact), DBL_MANT_DIG - (e < DBL_MIN_EXP ? DBL_MIN_EXP : e)));
}
inline double ulps(float got, double exact) {
  if (std::isnan(exact) || std::isnan(got)) return std::isnan(exact) && std::isnan(got) ? 0 : HUGE_VAL;
  if (std::isinf(exact) || std::isinf(got)) return exact == static_cast<double>(got) ? 0 : HUGE_VAL;
  int e = FLT_MIN_EXP;
  if (exact != 0) e = static_cast<int>(std::bit_cast<std::uint64_t>(exact) >> 52 & 0x7FF) - 1022;
  if (e < FLT_MIN_EXP) e = FLT_MIN_EXP;
  return std::fabs(static_cast<double>(got) - exact) *
         std::bit_cast<double>(static_cast<std::uint64_t>(FLT_MANT_DIG - e + 1023) << 52);
}

template <class T>
struct Worst {
  double ulp = 0;
  T at = 0;
  void take(double u, T x) {
    if (u > ulp) {
      ulp = u;
      at = x;
    }
  }
};

template <class T>
Worst<T> worst(const Member<T>& m, const std::vector<T>& x) {
  std::vector<T> y(x.size());
  m.run(static_cast<int>(x.size()), x.data(), y.data());
  Worst<T> w;
  for (std::size_t i = 0; i < x.size(); ++i) w.take(ulps(y[i], m.exact(x[i])), x[i]);
  return w;
}

// Arguments of `per_stratum` each from: all bit patterns; next to 1; the table's interval ends; moderate size;
// neighbours of multiples of pi/2 and pi/256, where sines and cosines vanish and reductions change over; integers.
template <class T>
std::vector<T> arguments(int per_stratum, std::uint64_t seed) {
  using Word = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
  std::mt19937_64 random(seed);
  const auto unit = [&] { return static_cast<double>(random() >> 11) * 0x1p-53; };
  const auto near = [&](__float128 v) {
    return std::bit_cast<T>(static_cast<Word>(std::bit_cast<Word>(static_cast<T>(v)) + random() % 5 - 2));
  };
  std::vector<T> x;
  for (int i = 0; i < per_stratum; ++i) {
    x.push_back(std::bit_cast<T>(static_cast<Word>(random())));
    x.push_back(T(1 + (unit() - 0.5) * std::ldexp(1.0, -static_cast<int>(random() % 12))));
    x.push_back(near(1 + static_cast<__float128>(random() % 512) / 512));
    x.push_back(T((unit() - 0.5) * 64));
    const auto k = static_cast<__float128>(random() >> (random() % 44 + 20));
    x.push_back(near(k * M_PIq / 2));
    x.push_back(near((k + 0.5Q) * M_PIq / 128));
    x.push_back(T(random() >> (random() % 64)));
  }
  return x;
}

}  // namespace qor::test
