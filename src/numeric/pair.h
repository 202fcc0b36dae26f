// Unevaluated sums hi + lo of two numbers: twice the precision from plain arithmetic (T. J. Dekker, Numer. Math. 18,
// 1971; D. E. Knuth, The Art of Computer Programming 2, 4.2.2). T is double, for tables made at compile time, or a
// vector of doubles or singles, inside kernels.
#pragma once

#include "base/target.h"

namespace qor::numeric {

template <class T>
struct Pair {
  T hi, lo;
};

// hi + lo = a + b exactly; for quick_two_sum |a| >= |b| or a = 0.
template <class T>
QOR_INLINE constexpr Pair<T> two_sum(T a, T b) {
  const T s = a + b, bb = s - a;
  return {s, (a - (s - bb)) + (b - bb)};
}
template <class T>
QOR_INLINE constexpr Pair<T> quick_two_sum(T a, T b) {
  const T s = a + b;
  return {s, b - (s - a)};
}

// a as the sum of two halves of 26 bits each.
constexpr Pair<double> halves(double a) {
  const double c = 134217729.0 * a, hi = c - (c - a);  // 2^27 + 1
  return {hi, a - hi};
}
constexpr Pair<double> two_product(double a, double b) {
  const double p = a * b;
  const Pair<double> x = halves(a), y = halves(b);
  return {p, ((x.hi * y.hi - p) + x.hi * y.lo + x.lo * y.hi) + x.lo * y.lo};
}

constexpr Pair<double> operator-(Pair<double> a) { return {-a.hi, -a.lo}; }
constexpr Pair<double> operator+(Pair<double> a, Pair<double> b) {
  const Pair<double> s = two_sum(a.hi, b.hi), t = two_sum(a.lo, b.lo), u = quick_two_sum(s.hi, s.lo + t.hi);
  return quick_two_sum(u.hi, u.lo + t.lo);
}
constexpr Pair<double> operator-(Pair<double> a, Pair<double> b) { return a + -b; }
constexpr Pair<double> operator*(Pair<double> a, Pair<double> b) {
  const Pair<double> p = two_product(a.hi, b.hi);
  return quick_two_sum(p.hi, p.lo + (a.hi * b.lo + a.lo * b.hi));
}
constexpr Pair<double> operator/(Pair<double> a, Pair<double> b) {
  const double q1 = a.hi / b.hi;
  const Pair<double> r = a - b * Pair<double>{q1, 0};
  const double q2 = r.hi / b.hi;
  const Pair<double> s = r - b * Pair<double>{q2, 0};
  return quick_two_sum(q1, q2) + Pair<double>{s.hi / b.hi, 0};
}

}  // namespace qor::numeric
