// Accuracy of the real kernels: every member of functions.def beside an independent oracle, arguments that reach all of
// its domain, and the largest error over them. The short sweep of the tests and the accuracy program share this.
#pragma once

#include <quadmath.h>

#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "qor/tfn.h"
#include "tfn/cbrt.h"
#include "tfn/division.h"
#include "tfn/erf.h"
#include "tfn/erf_inv.h"
#include "tfn/exp.h"
#include "tfn/functions.def"
#include "tfn/hyperbolic.h"
#include "tfn/hypot.h"
#include "tfn/inverse_hyperbolic.h"
#include "tfn/inverse_trig.h"
#include "tfn/invsqrt.h"
#include "tfn/ln.h"
#include "tfn/log10.h"
#include "tfn/pow.h"
#include "tfn/sqrt.h"
#include "tfn/tan.h"
#include "tfn/trig.h"

namespace qor::test {

// Oracles: quadruple precision for doubles, double precision for singles. Each function of one argument, or of two, has
// a line.
namespace oracle {
#define QOR_ORACLE(Name, f)                                \
  inline __float128 Name(__float128 x) { return f##q(x); } \
  inline double Name(double x) { return std::f(x); }
#define QOR_ORACLE2(Name, f)                                                \
  inline __float128 Name(__float128 x, __float128 b) { return f##q(x, b); } \
  inline double Name(double x, double b) { return std::f(x, b); }
QOR_ORACLE(Ln, log)
QOR_ORACLE(Log10, log10)
QOR_ORACLE(Exp, exp)
QOR_ORACLE(Sinh, sinh)
QOR_ORACLE(Cosh, cosh)
QOR_ORACLE(Tanh, tanh)
QOR_ORACLE2(Pow, pow)
QOR_ORACLE2(Powx, pow)
QOR_ORACLE(Sqrt, sqrt)
QOR_ORACLE(Sin, sin)
QOR_ORACLE(Cos, cos)
QOR_ORACLE(Tan, tan)
QOR_ORACLE(Erf, erf)
QOR_ORACLE(Erfc, erfc)
// By Halley's method from S. Winitzki's approximation (2008), which is right to 0.2 %; 1 - |x| is exact.
template <class W>
W inverse_erf(W x) {
  constexpr W scale = W(0.886226925452758013649083741670572591Q);  // sqrt(pi)/2
  const W a = x < 0 ? -x : x, w = 1 - a;
  if (!(w > 0)) return w == 0 ? x * HUGE_VAL : x * NAN;
  const double log = std::log(static_cast<double>(w * (1 + a))), b = 4.33 + log / 2;
  W y = a < W(1e-4) ? a * scale : W(std::sqrt(std::sqrt(b * b - log / 0.147) - b));
  for (int i = 0; i < (sizeof(W) > 8 ? 4 : 3); ++i) {
    const W step = (a < W(0.5) ? a - Erf(y) : Erfc(y) - w) * scale * Exp(y * y);
    y += step / (1 - y * step);
  }
  return x < 0 ? -y : y;
}
inline __float128 ErfInv(__float128 x) { return inverse_erf(x); }
inline double ErfInv(double x) { return inverse_erf(x); }
QOR_ORACLE(Asin, asin)
QOR_ORACLE(Acos, acos)
QOR_ORACLE(Atan, atan)
QOR_ORACLE2(Atan2, atan2)
QOR_ORACLE(Asinh, asinh)
QOR_ORACLE(Acosh, acosh)
QOR_ORACLE(Atanh, atanh)
QOR_ORACLE(Cbrt, cbrt)
QOR_ORACLE2(Hypot, hypot)
template <class W>
W Inv(W x) {
  return 1 / x;
}
template <class W>
W InvSqrt(W x) {
  return 1 / Sqrt(x);
}
template <class W>
W InvCbrt(W x) {
  return 1 / Cbrt(x);
}
template <class W>
W Div(W x, W b) {
  return x / b;
}
#undef QOR_ORACLE
#undef QOR_ORACLE2
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
  using Wide = typename Wider<T>::type;
  std::string name;      // the entry's
  std::string output;    // "", or which of two
  std::string function;  // what the oracle computes
  int inputs;            // array arguments, 1 or 2; b is the second
  bool scalar;           // the second argument is a scalar: what b holds at every index
  double bound;
  std::function<void(int n, const T* a, const T* b, T* r)> run;
  Wide (*exact)(Wide x, Wide b);
};

template <class T>
using Map1 = void (*)(int n, const T* a, T* r);
template <class T>
using MapPair = void (*)(int n, const T* a, T* r1, T* r2);
template <class T>
using Map2 = void (*)(int n, const T* a, const T* b, T* r);
template <class T>
using MapScalar = void (*)(int n, const T* a, T b, T* r);

// The sine or the cosine that a two-result entry delivers.
template <class T>
auto one_output(MapPair<T> entry, bool first) {
  return [entry, first](int n, const T* a, const T*, T* r) {
    std::vector<T> other(static_cast<std::size_t>(n > 0 ? n : 0));
    entry(n, a, first ? r : other.data(), first ? other.data() : r);
  };
}
// A call for each run of equal scalars.
template <class T>
auto by_scalar(MapScalar<T> entry) {
  return [entry](int n, const T* a, const T* b, T* r) {
    if (n <= 0) entry(n, a, T(1), r);
    for (int i = 0, end; i < n; i = end) {
      for (end = i + 1; end < n && std::memcmp(b + end, b + i, sizeof(T)) == 0;) ++end;
      entry(end - i, a + i, b[i], r + i);
    }
  };
}

template <class T>
std::vector<Member<T>> members() {
  using W = typename Wider<T>::type;
  using tfn::Accuracy;
  std::vector<Member<T>> list;
#define QOR_KERNEL(Name, letter, suffix, level)                                                      \
  list.push_back({"_tfn" #letter #Name "_" #suffix, "", #Name, 1, false,                             \
                  tfn::Name<Accuracy::level>::template bound<T>,                                     \
                  [](int n, const T* a, const T*, T* r) { _tfn##letter##Name##_##suffix(n, a, r); }, \
                  [](W x, W) -> W { return oracle::Name(x); }});
#define QOR_PAIR(Name, letter, suffix, level)                                                                         \
  list.push_back({"_tfn" #letter #Name "_" #suffix, "sine", "Sin", 1, false,                                          \
                  tfn::Name<Accuracy::level>::template bound<T>, one_output<T>(_tfn##letter##Name##_##suffix, true),  \
                  [](W x, W) -> W { return oracle::Sin(x); }});                                                       \
  list.push_back({"_tfn" #letter #Name "_" #suffix, "cosine", "Cos", 1, false,                                        \
                  tfn::Name<Accuracy::level>::template bound<T>, one_output<T>(_tfn##letter##Name##_##suffix, false), \
                  [](W x, W) -> W { return oracle::Cos(x); }});
#define QOR_BINARY(Name, letter, suffix, level)                                                 \
  list.push_back({"_tfn" #letter #Name "_" #suffix, "", #Name, 2, false,                        \
                  tfn::Name<Accuracy::level>::template bound<T>, _tfn##letter##Name##_##suffix, \
                  [](W x, W b) -> W { return oracle::Name(x, b); }});
#define QOR_SCALAR(Name, letter, suffix, level)                                                                        \
  list.push_back({"_tfn" #letter #Name "_" #suffix, "", #Name, 2, true, tfn::Name<Accuracy::level>::template bound<T>, \
                  by_scalar<T>(_tfn##letter##Name##_##suffix), [](W x, W b) -> W { return oracle::Name(x, b); }});
#define QOR_DOUBLES(KIND, Name) KIND(Name, d, HA, high) KIND(Name, d, 50, low)
#define QOR_SINGLES(KIND, Name) KIND(Name, s, HA, high) KIND(Name, s, 21, low)
#define QOR_D(Name) QOR_DOUBLES(QOR_KERNEL, Name)
#define QOR_S(Name) QOR_SINGLES(QOR_KERNEL, Name)
#define QOR_D_PAIR(Name) QOR_DOUBLES(QOR_PAIR, Name)
#define QOR_S_PAIR(Name) QOR_SINGLES(QOR_PAIR, Name)
#define QOR_D2(Name) QOR_DOUBLES(QOR_BINARY, Name)
#define QOR_S2(Name) QOR_SINGLES(QOR_BINARY, Name)
#define QOR_DX(Name) QOR_DOUBLES(QOR_SCALAR, Name)
#define QOR_SX(Name) QOR_SINGLES(QOR_SCALAR, Name)
  if constexpr (sizeof(T) == 8) {
    TFN_ONE_RESULT(QOR_D) TFN_TWO_RESULTS(QOR_D_PAIR) TFN_TWO_ARGUMENTS(QOR_D2) TFN_SCALAR_ARGUMENT(QOR_DX)
  } else {
    TFN_ONE_RESULT(QOR_S) TFN_TWO_RESULTS(QOR_S_PAIR) TFN_TWO_ARGUMENTS(QOR_S2) TFN_SCALAR_ARGUMENT(QOR_SX)
  }
  return list;
}

// |got - exact| in units of the last place that the exact result has in T, subnormals included. Not a number for both
// is no error; for one, and for an infinity where the exact result isn't beyond the largest number, it is an endless
// one.
inline double ulps(double got, __float128 exact) {
  if (isnanq(exact) || std::isnan(got)) return isnanq(exact) && std::isnan(got) ? 0 : HUGE_VAL;
  if (isinfq(exact) || std::isinf(got)) return (got > 0 ? exact > DBL_MAX : exact < -DBL_MAX) ? 0 : HUGE_VAL;
  int e = DBL_MIN_EXP;
  if (exact != 0) frexpq(exact, &e);
  return static_cast<double>(ldexpq(fabsq(got - exact), DBL_MANT_DIG - (e < DBL_MIN_EXP ? DBL_MIN_EXP : e)));
}
inline double ulps(float got, double exact) {
  if (std::isnan(exact) || std::isnan(got)) return std::isnan(exact) && std::isnan(got) ? 0 : HUGE_VAL;
  if (std::isinf(exact) || std::isinf(got)) return (got > 0 ? exact > FLT_MAX : exact < -FLT_MAX) ? 0 : HUGE_VAL;
  int e = FLT_MIN_EXP;
  if (exact != 0) e = static_cast<int>(std::bit_cast<std::uint64_t>(exact) >> 52 & 0x7FF) - 1022;
  if (e < FLT_MIN_EXP) e = FLT_MIN_EXP;
  return std::fabs(static_cast<double>(got) - exact) *
         std::bit_cast<double>(static_cast<std::uint64_t>(FLT_MANT_DIG - e + 1023) << 52);
}

// Arguments of `per_stratum` each from: all bit patterns; next to 1; the table's interval ends; moderate size;
// neighbours of multiples of pi/2 and pi/256, where sines and cosines vanish and reductions change over; integers.
template <class T>
class Draw {
 public:
  using Word = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
  explicit Draw(std::uint64_t seed) : random_(seed) {}

  std::uint64_t word() { return random_(); }
  double unit() { return static_cast<double>(random_() >> 11) * 0x1p-53; }
  double between(double from, double to) { return from + (to - from) * unit(); }
  T pattern() { return std::bit_cast<T>(static_cast<Word>(random_())); }
  // One of the five numbers next to v.
  T near(__float128 v) {
    return std::bit_cast<T>(static_cast<Word>(std::bit_cast<Word>(static_cast<T>(v)) + random_() % 5 - 2));
  }
  // 2^k (1 + f), k even between from and to.
  T scaled(int from, int to) {
    const T m = T(1 + unit());
    return std::ldexp(word() % 2 != 0 ? m : -m,
                      from + static_cast<int>(random_() % static_cast<unsigned>(to - from + 1)));
  }

 private:
  std::mt19937_64 random_;
};

template <class T>
std::vector<T> arguments(int per_stratum, std::uint64_t seed) {
  Draw<T> draw(seed);
  std::vector<T> x;
  for (int i = 0; i < per_stratum; ++i) {
    x.push_back(draw.pattern());
    x.push_back(T(1 + (draw.unit() - 0.5) * std::ldexp(1.0, -static_cast<int>(draw.word() % 12))));
    x.push_back(draw.near(1 + static_cast<__float128>(draw.word() % 512) / 512));
    x.push_back(T((draw.unit() - 0.5) * 64));
    const auto k = static_cast<__float128>(draw.word() >> (draw.word() % 44 + 20));
    x.push_back(draw.near(k * M_PIq / 2));
    x.push_back(draw.near((k + 0.5Q) * M_PIq / 128));
    x.push_back(T(draw.word() >> (draw.word() % 64)));
  }
  return x;
}

// Arguments of a function: the strata above and, where it has ends, poles or hard cases elsewhere, some of its own
// (own_strata.h). b is empty for one argument.
template <class T>
struct Inputs {
  std::vector<T> a, b;
  std::size_t size() const { return a.size(); }
  const T* second() const { return b.empty() ? a.data() : b.data(); }
  void add(T x) { a.push_back(x); }
  void add(T x, T y) {
    a.push_back(x);
    b.push_back(y);
  }
};

template <class T>
void own_strata(const std::string& function, Draw<T>& draw, int per_stratum, Inputs<T>& in);

template <class T>
Inputs<T> inputs(const std::string& function, int count, int per_stratum, std::uint64_t seed) {
  Inputs<T> in;
  in.a = arguments<T>(per_stratum, seed);
  Draw<T> draw(seed + 1);
  if (count == 2) {
    in.b = in.a;
    for (std::size_t i = in.b.size() - 1; i > 0; --i)
      std::swap(in.b[i], in.b[static_cast<std::size_t>(draw.word() % (i + 1))]);
  }
  own_strata(function, draw, per_stratum, in);
  return in;
}

template <class T>
struct Worst {
  double ulp = 0;
  T at = 0, b = 0;
  void take(double u, T x, T y) {
    if (u > ulp) {
      ulp = u;
      at = x;
      b = y;
    }
  }
};

template <class T>
std::vector<typename Wider<T>::type> exact_results(const Member<T>& m, const Inputs<T>& in) {
  std::vector<typename Wider<T>::type> y(in.size());
  for (std::size_t i = 0; i < in.size(); ++i) y[i] = m.exact(in.a[i], in.second()[i]);
  return y;
}

template <class T>
Worst<T> worst(const Member<T>& m, const Inputs<T>& in, const std::vector<typename Wider<T>::type>& exact) {
  std::vector<T> y(in.size());
  m.run(static_cast<int>(in.size()), in.a.data(), in.second(), y.data());
  Worst<T> w;
  for (std::size_t i = 0; i < in.size(); ++i) {
    if constexpr (sizeof(T) == 4) {
      // Nothing new: the error is within the worst in places of a normal result. (Not so for what isn't a number.)
      const double power = std::bit_cast<double>(std::bit_cast<std::uint64_t>(exact[i]) & 0x7FF0000000000000);
      if (std::fabs(static_cast<double>(y[i]) - exact[i]) <= w.ulp * 0x1p-23 * power) continue;
    }
    w.take(ulps(y[i], exact[i]), in.a[i], in.second()[i]);
  }
  return w;
}

}  // namespace qor::test

#include "tfn/own_strata.h"
