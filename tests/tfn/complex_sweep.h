// Accuracy of the complex kernels: every member beside an oracle in quadruple precision, arguments that reach all of its
// plane, and the largest errors over them.
#pragma once

#include <quadmath.h>

#include "tfn/complex_exp.h"
#include "tfn/complex_hyperbolic.h"
#include "tfn/complex_inverse.h"
#include "tfn/complex_log.h"
#include "tfn/complex_pow.h"
#include "tfn/complex_sqrt.h"
#include "tfn/sweep.h"

namespace qor::test {

using Quad = __float128;
using QuadComplex = __complex128;
inline QuadComplex quad(Quad re, Quad im) {
  QuadComplex z;
  __real__ z = re;
  __imag__ z = im;
  return z;
}

namespace complex_oracle {
#define QOR_ORACLE(Name, f) \
  inline QuadComplex Name(QuadComplex z, QuadComplex) { return f(z); }
QOR_ORACLE(Exp, cexpq)
QOR_ORACLE(Ln, clogq)
QOR_ORACLE(Log10, clog10q)
QOR_ORACLE(Sqrt, csqrtq)
QOR_ORACLE(Sinh, csinhq)
QOR_ORACLE(Cosh, ccoshq)
QOR_ORACLE(Tanh, ctanhq)
QOR_ORACLE(Sin, csinq)
QOR_ORACLE(Cos, ccosq)
QOR_ORACLE(Tan, ctanq)
QOR_ORACLE(Asin, casinq)
QOR_ORACLE(Acos, cacosq)
QOR_ORACLE(Atan, catanq)
QOR_ORACLE(Asinh, casinhq)
QOR_ORACLE(Acosh, cacoshq)
QOR_ORACLE(Atanh, catanhq)
#undef QOR_ORACLE
inline QuadComplex Pow(QuadComplex z, QuadComplex w) { return cpowq(z, w); }
inline QuadComplex Powx(QuadComplex z, QuadComplex w) { return cpowq(z, w); }
}  // namespace complex_oracle

template <class T>
struct ComplexMember {
  std::string name, function;
  int inputs;   // array arguments, 1 or 2
  bool scalar;  // the second argument is a scalar: what b holds at every index
  double size_bound, part_bound;
  std::function<void(int n, const T* a, const T* b, T* r)> run;
  QuadComplex (*exact)(QuadComplex z, QuadComplex w);
};

template <class T>
using ComplexScalar = std::conditional_t<sizeof(T) == 8, TfnDoubleComplex, TfnSingleComplex>;
// A call for each run of equal scalars.
template <class T>
auto by_complex_scalar(void (*entry)(int, const T*, ComplexScalar<T>, T*)) {
  return [entry](int n, const T* a, const T* b, T* r) {
    if (n <= 0) entry(n, a, {1, 0}, r);
    for (int i = 0, end; i < n; i = end) {
      for (end = i + 1; end < n && std::memcmp(b + 2 * end, b + 2 * i, 2 * sizeof(T)) == 0;) ++end;
      entry(end - i, a + 2 * i, {b[2 * i], b[2 * i + 1]}, r + 2 * i);
    }
  };
}

template <class T>
std::vector<ComplexMember<T>> complex_members() {
  using tfn::Accuracy;
  std::vector<ComplexMember<T>> list;
#define QOR_MEMBER(Name, letter, suffix, level, inputs, scalar, ...)       \
  list.push_back({"_tfn" #letter #Name "_" #suffix, #Name, inputs, scalar, \
                  tfn::complex::Name<T, Accuracy::level>::size_bound,      \
                  tfn::complex::Name<T, Accuracy::level>::part_bound, __VA_ARGS__, complex_oracle::Name});
#define QOR_ONE(Name, letter, suffix, level)        \
  QOR_MEMBER(Name, letter, suffix, level, 1, false, \
             [](int n, const T* a, const T*, T* r) { _tfn##letter##Name##_##suffix(n, a, r); })
#define QOR_TWO(Name, letter, suffix, level) \
  QOR_MEMBER(Name, letter, suffix, level, 2, false, _tfn##letter##Name##_##suffix)
#define QOR_WITH_SCALAR(Name, letter, suffix, level) \
  QOR_MEMBER(Name, letter, suffix, level, 2, true, by_complex_scalar<T>(_tfn##letter##Name##_##suffix))
#define QOR_Z(KIND, Name) KIND(Name, z, HA, high) KIND(Name, z, 50, low)
#define QOR_C(KIND, Name) KIND(Name, c, HA, high) KIND(Name, c, 21, low)
#define QOR_Z1(Name) QOR_Z(QOR_ONE, Name)
#define QOR_C1(Name) QOR_C(QOR_ONE, Name)
#define QOR_Z2(Name) QOR_Z(QOR_TWO, Name)
#define QOR_C2(Name) QOR_C(QOR_TWO, Name)
#define QOR_ZX(Name) QOR_Z(QOR_WITH_SCALAR, Name)
#define QOR_CX(Name) QOR_C(QOR_WITH_SCALAR, Name)
  if constexpr (sizeof(T) == 8) {
    TFN_COMPLEX_ONE_ARGUMENT(QOR_Z1) TFN_COMPLEX_TWO_ARGUMENTS(QOR_Z2) TFN_COMPLEX_SCALAR_ARGUMENT(QOR_ZX)
  } else {
    TFN_COMPLEX_ONE_ARGUMENT(QOR_C1) TFN_COMPLEX_TWO_ARGUMENTS(QOR_C2) TFN_COMPLEX_SCALAR_ARGUMENT(QOR_CX)
  }
#undef QOR_MEMBER
#undef QOR_ONE
#undef QOR_TWO
#undef QOR_WITH_SCALAR
  return list;
}

// Errors of one result, in units in the last place of the exact one's size, and of its parts, the worse of the two.
// Where a part of the exact result can't be represented, an infinity of its sign is no error, and the size has none.
struct ComplexError {
  double size = 0, part = 0;
};
template <class T>
ComplexError complex_error(const T* got, QuadComplex exact) {
  using L = std::numeric_limits<T>;
  const auto unit = [](Quad size) {
    int e = L::min_exponent;
    if (size != 0) frexpq(size, &e);
    return ldexpq(1, (e < L::min_exponent ? L::min_exponent : e) - L::digits);
  };
  const Quad part[2] = {crealq(exact), cimagq(exact)};
  Quad square = 0, size = 0;
  ComplexError e;
  int beyond = 0;
  for (int k = 0; k < 2; ++k) {
    const Quad most = static_cast<Quad>(L::max()) * (1 - static_cast<Quad>(L::epsilon()) * 4);
    if (isnanq(part[k]) || std::isnan(got[k])) return {HUGE_VAL, HUGE_VAL};
    if (fabsq(part[k]) > most && std::fabs(got[k]) > most) {
      const bool wrong = (part[k] < 0) != std::signbit(got[k]);
      if (wrong) e.part = HUGE_VAL;
      if (wrong && fabsq(part[k]) > fabsq(part[1 - k]) * 0x1p-20) e.size = HUGE_VAL;
      ++beyond;
    } else if (std::isinf(got[k]) || fabsq(part[k]) > L::max()) {
      e.part = HUGE_VAL;
    } else {
      const Quad off = fabsq(got[k] - part[k]);
      square += off / L::max() * (off / L::max());
      size = hypotq(size, part[k]);
      e.part = std::max(e.part, static_cast<double>(off / unit(part[k])));
    }
  }
  if (beyond == 0) e.size = e.part < HUGE_VAL ? static_cast<double>(sqrtq(square) * L::max() / unit(size)) : HUGE_VAL;
  return e;
}

// Arguments, finite ones: numbers as pairs of parts; b is empty for one argument.
template <class T>
struct ComplexInputs {
  std::vector<T> a, b;
  int size() const { return static_cast<int>(a.size() / 2); }
  const T* second() const { return b.empty() ? a.data() : b.data(); }
  void add(T re, T im) {
    if (std::isfinite(re) && std::isfinite(im)) a.insert(a.end(), {re, im});
  }
  void add(T re, T im, T b_re, T b_im) {
    if (!std::isfinite(re) || !std::isfinite(im) || !std::isfinite(b_re) || !std::isfinite(b_im)) return;
    add(re, im);
    b.insert(b.end(), {b_re, b_im});
  }
};

template <class T>
T finite_pattern(Draw<T>& draw) {
  T x;
  do x = draw.pattern();
  while (!std::isfinite(x));
  return x;
}
// Of either sign.
template <class T>
T any_sign(Draw<T>& draw, T x) {
  return draw.word() % 2 != 0 ? x : -x;
}

// `per_stratum` numbers each: all bit patterns; of moderate size; of like and unlike exponents; on and next to the axes;
// next to the unit circle and to the points 1 and i; parts next to multiples of pi/2; a part whose exponential is about
// to overflow or vanish; both parts tiny or huge; one next to the smallest numbers; integers.
template <class T>
void complex_strata(Draw<T>& draw, int per_stratum, ComplexInputs<T>& in) {
  using L = std::numeric_limits<T>;
  constexpr double overflow = L::max_exponent * M_LN2, least = (L::min_exponent - L::digits) * M_LN2;
  constexpr int lowest = L::min_exponent - L::digits, highest = L::max_exponent - 1;
  for (int i = 0; i < per_stratum; ++i) {
    const auto either = [&](T x, T y) { draw.word() % 2 != 0 ? in.add(x, y) : in.add(y, x); };
    const T moderate = T((draw.unit() - 0.5) * 20), small = draw.scaled(-L::digits - 8, 0);
    in.add(finite_pattern(draw), finite_pattern(draw));
    in.add(moderate, T((draw.unit() - 0.5) * 20));
    in.add(draw.scaled(-20, 6), draw.scaled(-20, 6));
    const T wild = draw.scaled(lowest, highest);
    in.add(wild, T(wild * draw.scaled(-60, 60)));
    either(any_sign(draw, T(0)), moderate);
    either(any_sign(draw, T(0)), draw.scaled(lowest, highest));
    either(draw.scaled(lowest, -1), moderate);
    const double angle = draw.between(-4, 4), radius = 1 + double(draw.scaled(1 - L::digits, -1));
    in.add(T(radius * std::cos(angle)), T(radius * std::sin(angle)));
    either(any_sign(draw, draw.near(1)), draw.scaled(lowest, -1));
    either(any_sign(draw, T(1 + small)), draw.scaled(-L::digits - 8, 0));
    const auto turns = static_cast<Quad>(draw.word() >> (draw.word() % 44 + 20));
    either(draw.near(any_sign(draw, T(1)) * turns * M_PI_2q), moderate);
    either(draw.near(static_cast<Quad>(draw.word() % 64) * M_PI_2q), small);
    either(any_sign(draw, T(draw.between(overflow - 3, overflow + 3))), moderate);
    either(any_sign(draw, T(draw.between(overflow, overflow - least))), draw.scaled(lowest, -1));
    either(T(draw.between(least - 3, overflow + 3)), T(draw.between(-200, 200)));
    in.add(draw.scaled(lowest, L::min_exponent + 10), draw.scaled(lowest, L::min_exponent + 10));
    either(any_sign(draw, draw.scaled(lowest, L::min_exponent + 10)), draw.scaled(lowest, highest));
    in.add(draw.scaled(highest - 2, highest), draw.scaled(highest - 2, highest));
    in.add(T(draw.word() % 41) - 20, T(draw.word() % 41) - 20);
  }
}

template <class T>
ComplexInputs<T> complex_inputs(const std::string& function, int count, int per_stratum, std::uint64_t seed);

template <class T>
std::vector<QuadComplex> complex_exact(const ComplexMember<T>& m, const ComplexInputs<T>& in) {
  std::vector<QuadComplex> y;
  const T *const a = in.a.data(), *const b = in.second();
  for (int i = 0; i < in.size(); ++i) {
    y.push_back(m.exact(quad(a[2 * i], a[2 * i + 1]), quad(b[2 * i], b[2 * i + 1])));
  }
  return y;
}

// The largest errors, and where.
template <class T>
struct ComplexArguments {
  T re, im, b_re, b_im;
};
template <class T>
struct ComplexWorst {
  ComplexError error;
  ComplexArguments<T> size_at{}, part_at{};
  void take(const ComplexWorst& w) {
    if (w.error.size > error.size) error.size = w.error.size, size_at = w.size_at;
    if (w.error.part > error.part) error.part = w.error.part, part_at = w.part_at;
  }
};
template <class T>
ComplexWorst<T> complex_worst(const ComplexMember<T>& m, const ComplexInputs<T>& in,
                              const std::vector<QuadComplex>& exact) {
  std::vector<T> y(in.a.size());
  m.run(in.size(), in.a.data(), in.second(), y.data());
  ComplexWorst<T> w;
  for (int i = 0; i < in.size(); ++i) {
    const T *const a = in.a.data() + 2 * i, *const b = in.second() + 2 * i;
    const ComplexArguments<T> at = {a[0], a[1], b[0], b[1]};
    w.take({complex_error(&y[static_cast<std::size_t>(2 * i)], exact[static_cast<std::size_t>(i)]), at, at});
  }
  return w;
}

}  // namespace qor::test

#include "tfn/complex_own_strata.h"
