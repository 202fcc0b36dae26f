// Tables of the trigonometric functions, made at compile time: sines and cosines at the multiples of pi/128, and 1/(2
// pi) to as many bits as the largest argument needs.
#pragma once

#include <array>
#include <cstdint>

#include "numeric/pair.h"

namespace qor::tfn {

using numeric::Pair;

inline constexpr Pair<double> pi{3.141592653589793, 1.2246467991473532e-16};  // the nearest double, and of the rest

// The distance of two rows, pi/n for n rows a half turn, in two parts for the reduction x - k pi/n: `head` is a
// multiple of 2^-32, 27 bits for n = 128, so that k head is exact while |x| < 2^20; pi/n - head - tail is below 2^-86.
struct RowStep {
  double whole, head, tail, per_unit;
};
constexpr RowStep row_step(int n) {
  const double whole = pi.hi / n, head = 0x1p-32 * double(static_cast<long long>(whole * 0x1p32));
  return {whole, head, (whole - head) + pi.lo / n, n / pi.hi};
}
inline constexpr int trig_rows = 256, trig_exact_rows = 512;  // a full turn
inline constexpr RowStep trig_step = row_step(trig_rows / 2), trig_exact_step = row_step(trig_exact_rows / 2);

// Sine and cosine of an angle up to pi/4 from their series, the last term x^33/33! below 2^-134.
struct SineCosine {
  Pair<double> sine, cosine;
};
constexpr SineCosine sine_cosine(Pair<double> x) {
  const Pair<double> x2 = x * x;
  Pair<double> s{1, 0}, c{1, 0};
  for (int k = 16; k >= 1; --k) {
    s = Pair<double>{1, 0} - x2 * s / Pair<double>{double(2 * k) * (2 * k + 1), 0};
    c = Pair<double>{1, 0} - x2 * c / Pair<double>{double(2 * k - 1) * (2 * k), 0};
  }
  return {x * s, c};
}
// At j/rows of a full turn, by symmetry from the first octant, so that equal values are equal bits.
constexpr SineCosine sine_cosine_at(int j, int rows) {
  const int octant = j / (rows / 8), rest = j % (rows / 8);
  const int i = octant % 2 == 0 ? rest : rows / 8 - rest;
  const SineCosine a = sine_cosine(pi * Pair<double>{2.0 * i / rows, 0});
  const bool swapped = octant % 4 == 1 || octant % 4 == 2;
  const Pair<double> s = swapped ? a.cosine : a.sine, c = swapped ? a.sine : a.cosine;
  return {octant >= 4 ? -s : s, octant >= 2 && octant < 6 ? -c : c};
}

// Row j: sine and cosine at j/256 of a turn, rounded. The sine of row 0 is -0.
struct alignas(16) TrigRow {
  double sine, cosine;
};
inline constexpr auto trig_table = [] {
  std::array<TrigRow, trig_rows> rows{};
  for (int j = 0; j < trig_rows; ++j) {
    const SineCosine a = sine_cosine_at(j, trig_rows);
    rows[j] = {a.sine.hi, a.cosine.hi};
  }
  rows[0].sine = -0.0;
  return rows;
}();
// Row j: sine and cosine at j/512 of a turn in two parts each, the second of the sine negated. That of the cosine has
// 26 bits first, so that its product with another number of 26 bits is exact; the two carry some 79 bits. A quarter
// turn on stand the rows for the cosine.
struct alignas(32) TrigExactRow {
  double sine, minus_sine_lo, cosine, cosine_lo;
};
inline constexpr auto trig_exact_table = [] {
  std::array<TrigExactRow, trig_exact_rows> rows{};
  for (int j = 0; j < trig_exact_rows; ++j) {
    const SineCosine a = sine_cosine_at(j, trig_exact_rows);
    const double c = numeric::halves(a.cosine.hi).hi;
    rows[j] = {a.sine.hi, 0 - a.sine.lo, c, (a.cosine.hi - c) + a.cosine.lo};
  }
  rows[0].sine = -0.0;
  return rows;
}();

// 1/(2 pi) as a binary fraction, 32 bits a word, leading word first. A double of exponent e times this needs the words
// from bit e - 53 or so on for 190 more: 1024 + 192 bits and a spare word.
// pi = 16 atan(1/5) - 4 atan(1/239) (J. Machin, 1706) in fixed point, then a division; the last words are guard digits.
inline constexpr int inverse_words = 39;
inline constexpr auto inverse_two_pi = [] {
  constexpr int words = inverse_words + 3;
  using Fixed = std::array<std::uint32_t, words>;  // word 0 is the integer part
  const auto divide = [](Fixed a, std::uint32_t d) {
    std::uint64_t rest = 0;
    for (auto& w : a) {
      rest = rest << 32 | w;
      w = static_cast<std::uint32_t>(rest / d);
      rest %= d;
    }
    return a;
  };
  const auto add = [](Fixed a, const Fixed& b, bool minus) {
    std::uint64_t carry = minus;
    for (int i = words - 1; i >= 0; --i) {
      carry += std::uint64_t{a[i]} + (minus ? ~b[i] : b[i]);
      a[i] = static_cast<std::uint32_t>(carry);
      carry >>= 32;
    }
    return a;
  };
  const auto atan_of_inverse = [&](std::uint32_t m, std::uint32_t factor) {
    Fixed power{factor};
    power = divide(power, m);
    Fixed sum = power;
    for (std::uint32_t k = 3; power != Fixed{}; k += 2) {
      power = divide(power, m * m);
      sum = add(sum, divide(power, k), k % 4 == 3);
    }
    return sum;
  };
  const Fixed two_pi = add(atan_of_inverse(5, 32), atan_of_inverse(239, 8), true);
  // 1 / (2 pi), bit by bit.
  std::array<std::uint32_t, inverse_words> out{};
  Fixed rest{1};
  for (int bit = 0; bit < 32 * inverse_words; ++bit) {
    rest = add(rest, rest, false);
    if (!(rest < two_pi)) {
      rest = add(rest, two_pi, true);
      out[bit / 32] |= 0x80000000u >> (bit % 32);
    }
  }
  return out;
}();
static_assert(inverse_two_pi[0] == 0x28BE60DB && inverse_two_pi[1] == 0x9391054A);

}  // namespace qor::tfn
