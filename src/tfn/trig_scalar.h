// The trigonometric functions of one element on the x87 unit, for callers that go through an array one by one. The unit
// itself reduces with 66 bits of pi; so arguments come to it reduced, at most a quarter of pi in two parts.
#pragma once

#include <bit>
#include <cstdint>
#include <limits>

#include "numeric/mxcsr.h"
#include "numeric/x87.h"
#include "qor/tfn.h"
#include "tfn/report.h"
#include "tfn/trig_large.h"

namespace qor::tfn {

// |x| = quarter turns, modulo 4, + r + r_lo for any finite x.
struct QuarterTurns {
  unsigned k;
  double r, r_lo;
};
inline void reduce_to_quarters(double x, QuarterTurns& q) {
  if (__builtin_fabs(x) < 0.75) {
    q = {0, __builtin_fabs(x), 0};
    return;
  }
  std::uint64_t k;
  reduce_exactly<2>(x, k, q.r, q.r_lo);
  q.k = static_cast<unsigned>(k) % 4;
}

// For any x that is no infinity; a NaN gives itself, quiet.
inline void _dSinCos(double x, double* sine, double* cosine) {
  if (x != x) {
    *sine = *cosine = x + x;
    return;
  }
  QuarterTurns q;
  reduce_to_quarters(x, q);
  double s, c;
  numeric::x87_sincos(q.r, q.r_lo, &s, &c);
  const bool negative = std::bit_cast<std::uint64_t>(x) >> 63 != 0;
  const double odd = q.k % 2 == 0 ? s : c, even = q.k % 2 == 0 ? c : s;
  *sine = (q.k >= 2) != negative ? -odd : odd;
  *cosine = q.k == 1 || q.k == 2 ? -even : even;
}
inline void _dSin(double x, double* y) {
  double other;
  _dSinCos(x, y, &other);
}
inline void _dCos(double x, double* y) {
  double other;
  _dSinCos(x, &other, y);
}
inline void _dTan(double x, double* y) {
  if (x != x) {
    *y = x + x;
    return;
  }
  QuarterTurns q;
  reduce_to_quarters(x, q);
  double t;
  numeric::x87_tan(q.r, q.r_lo, q.k % 2 != 0, &t);
  const bool negative = std::bit_cast<std::uint64_t>(x) >> 63 != 0;
  *y = (q.k % 2 != 0) != negative ? -t : t;
}

// Element i of a by `helper`, into r[i] and, for two results, r2[i]. Doubles are computed with 64 bits, singles
// with 53. Reports: ERRDOM for an infinity (the quiet NaN with the sign set), under `name`.
template <class T, class Helper>
QOR_INLINE void one_element(int i, const T* a, T* r, T* r2, const char* name, Helper helper) {
  numeric::MxcsrGuard guard;
  const T x = a[i];
  if (x - x != 0 && x == x) {
    r[i] = r2[i] = -std::numeric_limits<T>::quiet_NaN();
    guard.outside([&] { report(TFN_STATUS_ERRDOM, i, a, a, r, r2, name); });
    return;
  }
  double y, z;
  {
    const numeric::X87Precision precision(sizeof(T) == 8 ? numeric::x87_extended : numeric::x87_double);
    helper(static_cast<double>(x), &y, &z);
  }
  r2[i] = static_cast<T>(z);
  r[i] = static_cast<T>(y);
}
// Of one result, r2 isn't used.
template <class T>
[[gnu::noinline]] void sin_element(int i, const T* a, T* r, T*, const char* name) {
  one_element(i, a, r, r, name, [](double x, double* y, double* z) { _dSin(x, y), *z = *y; });
}
template <class T>
[[gnu::noinline]] void cos_element(int i, const T* a, T* r, T*, const char* name) {
  one_element(i, a, r, r, name, [](double x, double* y, double* z) { _dCos(x, y), *z = *y; });
}
template <class T>
[[gnu::noinline]] void tan_element(int i, const T* a, T* r, T*, const char* name) {
  one_element(i, a, r, r, name, [](double x, double* y, double* z) { _dTan(x, y), *z = *y; });
}
template <class T>
[[gnu::noinline]] void sincos_element(int i, const T* a, T* r, T* r2, const char* name) {
  one_element(i, a, r, r2, name, _dSinCos);
}

}  // namespace qor::tfn
