// Reductions of large arguments of the trigonometric functions, after M. Payne and R. Hanek (Radian reduction for
// trigonometric functions, ACM SIGNUM 18, 1983): of 1/(2 pi) only those bits matter whose product with the argument is
// neither whole turns nor below the precision wanted.
#pragma once

#include <array>
#include <bit>
#include <cstdint>

#include "numeric/float_parts.h"
#include "numeric/pair.h"
#include "simd/vec.h"
#include "tfn/trig_table.h"

namespace qor::tfn {

// Row i: 2^(8 i - 52)/(2 pi) without its whole part, four parts of 26 bits and one of 53.
struct alignas(16) TurnRow {
  double part[5], zero;
};
// `count` bits of 1/(2 pi) after the first `from`, as a whole number; zeros in front of the first.
constexpr double bits_of_inverse(int from, int count) {
  double value = 0;
  for (int i = from; i < from + count; ++i) {
    value = 2 * value + (i < 0 ? 0 : inverse_two_pi[i / 32] >> (31 - i % 32) & 1);
  }
  return value;
}
inline constexpr auto turn_table = [] {
  std::array<TurnRow, 128> rows{};
  for (int i = 0; i < 128; ++i) {
    const int first = 8 * i - 52;
    double weight = 0x1p-26;
    for (int k = 0; k < 4; ++k, weight *= 0x1p-26) rows[i].part[k] = bits_of_inverse(first + 26 * k, 26) * weight;
    rows[i].part[4] = bits_of_inverse(first + 104, 53) * 0x1p-157;
  }
  return rows;
}();

// x = k/Rows of a turn + whole - tail, k in the low bits, for 1 <= |x| finite; the error is below 2^-94.
// x = m 2^(8 i - 52) with a whole number m below 2^60 of 53 significant bits, `upper` (a multiple of 2^27) and `lower`,
// 26 and 27 bits. Upper times the first part is whole; every other product but those with the last part is exact.
struct LargeReduced {
  simd::VecU64 k;
  simd::VecD whole, tail;
};
template <int Rows>
QOR_INLINE LargeReduced reduce_large(simd::VecD x) {
  using namespace simd;
  constexpr std::uint64_t one = 0x3FF0000000000000;
  double copy[lanes<VecD>];
  store(copy, x);
  const auto row = [&](int lane) {
    return (((numeric::high_word(copy + lane) & 0x7FFFFFFF) - 0x3FF00000) >> 23 & 127) * sizeof(TurnRow);
  };
  const auto [f1, f2, f3, f4, f5] = gather_rows<5>(turn_table[0].part, row).column;
  const VecU64 b = bits(x);
  const VecU64 exponent =
      ((b - splat<VecU64>(one)) & splat<VecU64>(0x0070000000000000)) + splat<VecU64>(one + (std::uint64_t{52} << 52));
  const VecD m = as<VecD>((b & splat<VecU64>(0x800FFFFFFFFFFFFF)) | exponent);
  const VecD upper = numeric::upper_half(m), lower = m - upper;

  constexpr double shift = 0x1.8p52;
  const auto fraction = [](VecD t) { return t - ((t + shift) - shift); };
  // Both sums are exact: multiples of 2^-26 below 1, and of 2^-52 below 2.
  const VecD turns =
      fraction(fraction(upper * f2) + fraction(lower * f1)) + (fraction(upper * f3) + fraction(lower * f2));
  const VecD shifted = turns * double(Rows) + shift, k = shifted - shift;
  const auto middle = numeric::two_sum(upper * f4, lower * f3);
  const auto left = numeric::two_sum(turns - k * (1.0 / Rows), middle.hi);
  const VecD rest = (left.lo + middle.lo) + ((upper * f5 + lower * f4) + lower * f5);

  // Turns to radians: 2 pi in 26 bits and the rest, so that `whole` is exact.
  constexpr double two_pi = 2 * pi.hi, two_pi_head = numeric::halves(two_pi).hi;
  constexpr double two_pi_tail = (two_pi - two_pi_head) + 2 * pi.lo;
  const VecD head = numeric::upper_half(left.hi);
  const VecD whole = head * two_pi_head;
  return {bits(shifted), whole, -(head * two_pi_tail + ((left.hi - head) + rest) * two_pi)};
}

// Row e, for singles of exponent field e: 1/(2 pi) in units of the rows of trig_table, without the bits that give whole
// turns, in a part of 29 bits and one of 53 or a little more.
struct alignas(16) SingleTurnRow {
  double head, rest;
};
inline constexpr auto single_turn_table = [] {
  std::array<SingleTurnRow, 256> rows{};
  for (int e = 0; e < 256; ++e) {
    const int first = e > 150 ? e - 150 : 0;
    const double weight = trig_rows * numeric::power_of_two(-first - 29);
    rows[e] = {bits_of_inverse(first, 29) * weight,
               (bits_of_inverse(first + 29, 53) * 0x1p-53 + bits_of_inverse(first + 82, 30) * 0x1p-83) * weight};
  }
  return rows;
}();

// x = k rows of trig_table + r for two singles, k in the low bits; words(lane) gives their bits. The error of r is
// below 2^-54, and for small x below 2^-50 |x|. Of infinities and NaNs r is NaN.
struct SingleReduced {
  simd::VecU64 k;
  simd::VecD r;
};
template <class Words>
QOR_INLINE SingleReduced reduce_single(simd::VecD x, Words words) {
  using namespace simd;
  const auto row = [&](int lane) { return (words(lane) >> 23) % 256 * sizeof(SingleTurnRow); };
  const auto [head, rest] = gather_rows<2>(&single_turn_table[0].head, row).column;
  // The first product is exact, a multiple of 2^-21 below 2^32; the second is below 8.
  const VecD most = x * head, little = x * rest;
  constexpr double shift = 0x1.8p52;
  const VecD shifted = (most + little) + shift;
  return {bits(shifted), ((most - (shifted - shift)) + little) * (2 * pi.hi / trig_rows)};
}
// The lower and the upper half of a vector.
struct SinglesReduced {
  SingleReduced low, high;
};
QOR_INLINE SinglesReduced reduce_singles(simd::VecF x) {
  using namespace simd;
  const HighWords<VecF> words(x);
  return {reduce_single(widen_low(x), words), reduce_single(widen_high(x), [&](int lane) { return words(lane + 2); })};
}

// |x| = k/2^Bits of a turn + r for any finite x: k mod 2^Bits from the fraction of |x|/(2 pi), r in two parts.
template <int Bits>
inline void reduce_exactly(double x, std::uint64_t& k, double& r, double& r_lo) {
  const std::uint64_t b = std::bit_cast<std::uint64_t>(x);
  const std::uint32_t e = static_cast<std::uint32_t>(b >> 52) & 0x7FF;
  // |x| = m 2^(e - 1075), m an integer of 53 bits (normal numbers only reach this point).
  const std::uint64_t m = (b & 0x000FFFFFFFFFFFFF) | 0x0010000000000000;
  // The window of 1/(2 pi) starts at the bit whose product with m's last bit has weight 1; earlier ones give
  // integers.
  const int first = int(e) - 1075;  // bits of 1/(2 pi) before the window; negative: zeros in front of it
  std::uint32_t window[6];
  for (int i = 0; i < 6; ++i) {
    const int bit = first + 32 * i, word = bit >> 5, within = bit & 31;
    const std::uint64_t two =
        (word >= 0 ? std::uint64_t{inverse_two_pi[word]} << 32 : 0) | (word + 1 >= 0 ? inverse_two_pi[word + 1] : 0);
    window[i] = static_cast<std::uint32_t>(two >> (32 - within));
  }
  // fraction = m * window mod 1: the low 6 words of the product of 2 and 6.
  const std::uint32_t m0 = static_cast<std::uint32_t>(m), m1 = static_cast<std::uint32_t>(m >> 32);
  std::uint32_t fraction[6];
  std::uint64_t carry = 0, above = 0;  // `above` is the previous word's product with m1, one place up
  for (int i = 5; i >= 0; --i) {
    const std::uint64_t p = std::uint64_t{window[i]} * m0 + carry, q = std::uint64_t{window[i]} * m1;
    const std::uint64_t sum = (p & 0xFFFFFFFF) + (above & 0xFFFFFFFF);
    fraction[i] = static_cast<std::uint32_t>(sum);
    carry = (p >> 32) + (sum >> 32) + (above >> 32);
    above = q;
  }
  // k is the nearest multiple of 2^-Bits; what is left, a signed fraction of it, in words below the binary point.
  k = fraction[0] >> (32 - Bits);
  std::uint32_t rest[4];
  for (int i = 0; i < 4; ++i) rest[i] = fraction[i] << Bits | fraction[i + 1] >> (32 - Bits);
  k += rest[0] >> 31;
  // As doubles: the first word signed, the others added exactly from the top; leading zeros cost nothing.
  double hi = static_cast<std::int32_t>(rest[0]) * 0x1p-32, lo = 0;
  double weight = 0x1p-64;
  for (int i = 1; i < 4; ++i, weight *= 0x1p-32) {
    const double word = (static_cast<double>(static_cast<std::int32_t>(rest[i] >> 1)) * 2 + (rest[i] & 1)) * weight;
    const Pair<double> sum = numeric::two_sum(hi, word);
    const Pair<double> all = numeric::quick_two_sum(sum.hi, sum.lo + lo);
    hi = all.hi;
    lo = all.lo;
  }
  constexpr double row = 2.0 / (1 << Bits);
  const Pair<double> product = Pair<double>{hi, lo} * Pair<double>{pi.hi * row, pi.lo * row};
  r = product.hi;
  r_lo = product.lo;
}

}  // namespace qor::tfn
