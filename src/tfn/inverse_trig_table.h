// Tables of the inverse trigonometric functions, made at compile time. A table has a row for each of N equal parts of
// every octave of the number that selects rows, from 2^-6 on; row 0 stands for all below, a last one for all above.
// Each belongs to the middle of its part, so that |angle - row's angle| is 1/(2 N) of the angle at most, and a little.
#pragma once

#include <array>

#include "numeric/pair.h"
#include "tfn/trig_table.h"

namespace qor::tfn {

// hi + lo is the row's angle, hi a multiple of `unit`, so short that its sums with multiples of pi/2 are exact.
template <class T>
struct alignas(4 * sizeof(T)) ArcRow {
  T hi, lo, first, second;
};
inline constexpr int arc_first_octave = -6;
template <class T>
struct ArcTraits {
  static constexpr bool wide = sizeof(T) == 8;
  static constexpr int log2_parts = wide ? 6 : 7, parts = 1 << log2_parts;
  static constexpr T unit = wide ? 0x1p-45 : 0x1p-21f;
};

template <class T>
constexpr ArcRow<T> arc_row(Pair<double> angle, T first, T second) {
  constexpr double unit = ArcTraits<T>::unit;
  const double hi = unit * double(static_cast<long long>(angle.hi / unit + 0.5));
  return {T(hi), T((angle.hi - hi) + angle.lo), first, second};
}
inline constexpr Pair<double> half_pi{pi.hi / 2, pi.lo / 2};
template <class T>
inline constexpr ArcRow<T> pi_row = arc_row<T>(pi, 0, 0);

// The middle of part j = 0, 1, ..
constexpr double arc_middle(int j, int parts) {
  double v = 1 + (2 * (j % parts) + 1) / (2.0 * parts);
  for (int e = arc_first_octave + j / parts; e < 0; ++e) v /= 2;
  for (int e = arc_first_octave + j / parts; e > 0; --e) v *= 2;
  return v;
}

// asin v or atan v for |v| <= 2^-5.5, the last term below 2^-110 of the first.
template <bool Sine>
constexpr Pair<double> small_arc(Pair<double> v) {
  constexpr int terms = 11;
  constexpr auto series = [] {
    std::array<Pair<double>, terms> c{};
    Pair<double> ratio{1, 0};
    for (int k = 0; k < terms; ++k) {
      c[k] = ratio / Pair<double>{2.0 * k + 1, 0};
      ratio = Sine ? ratio * (Pair<double>{2.0 * k + 1, 0} / Pair<double>{2.0 * k + 2, 0}) : -ratio;
    }
    return c;
  }();
  const Pair<double> v2 = v * v;
  Pair<double> sum{0, 0};
  for (int k = terms - 1; k >= 0; --k) sum = sum * v2 + series[k];
  return v * sum;
}

constexpr Pair<double> root(Pair<double> v) {
  if (v.hi <= 0) return {0, 0};
  double y = 1;
  for (int i = 0; i < 20; ++i) y = (y + v.hi / y) / 2;
  return Pair<double>{y, 0} + (v - numeric::two_product(y, y)) / Pair<double>{2 * y, 0};
}

// Arc tangent, octaves up to 2^6: {hi, lo, u, v}, tan angle = v/u; (u, v) is (1, middle), and (0, 1) in the last row.
template <class T>
inline constexpr auto atan_table = [] {
  constexpr int parts = ArcTraits<T>::parts, count = 12 * parts;
  std::array<ArcRow<T>, count + 2> rows{};
  Pair<double> angle{0, 0};
  double before = 0;
  rows[0] = {0, 0, 1, 0};
  for (int j = 0; j < count; ++j) {
    const double c = arc_middle(j, parts);
    const Pair<double> step = Pair<double>{c - before, 0} / (numeric::two_product(c, before) + Pair<double>{1, 0});
    angle = angle + small_arc<false>(step);
    rows[j + 1] = arc_row<T>(angle, 1, T(c));
    before = c;
  }
  rows[count + 1] = arc_row<T>(half_pi, 0, 1);
  return rows;
}();

// Arc sine and arc cosine, {hi, lo, S, C}: S is the argument that gives the row's angle exactly, C = sqrt(1 - S^2).
// Rows are selected by z = 1 + (sine of the angle) - (cosine of the angle), which is close to small angles and grows
// evenly enough up to 2 for a right angle. The last part takes the row of the right angle, from which the difference of
// small x is x, so that neighbours of 0 keep their order. What should be 0 is too small to be felt
// instead where it would be divided by.
template <class T, bool Cosine>
inline constexpr auto arc_table = [] {
  constexpr int parts = ArcTraits<T>::parts, count = 7 * parts;
  std::array<ArcRow<T>, count + 2> rows{};
  Pair<double> angle{0, 0}, sine_before{0, 0}, cosine_before{1, 0};
  rows[0] = {0, 0, Cosine ? T(1) : T(0), Cosine ? T(0x1p-70) : T(1)};
  for (int j = 0; j < count - 1; ++j) {
    const double p = arc_middle(j, parts) - 1, sum = root(Pair<double>{2 - p * p, 0}).hi;
    const T s = T((Cosine ? sum - p : sum + p) / 2);
    const Pair<double> given{double(s), 0}, other = root(Pair<double>{1, 0} - numeric::two_product(s, s));
    const Pair<double> sine = Cosine ? other : given, cosine = Cosine ? given : other;
    angle = angle + small_arc<true>(sine * cosine_before - cosine * sine_before);
    rows[j + 1] = arc_row<T>(angle, s, T(other.hi));
    sine_before = sine;
    cosine_before = cosine;
  }
  rows[count] = rows[count + 1] = arc_row<T>(half_pi, Cosine ? T(0x1p-70) : T(1), Cosine ? T(1) : T(0x1p-70));
  return rows;
}();

}  // namespace qor::tfn
