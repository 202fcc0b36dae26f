// Tables of the exponential function, made at compile time.
#pragma once

#include <array>
#include <bit>
#include <cstdint>

#include "numeric/pair.h"
#include "tfn/ln_table.h"

namespace qor::tfn {

inline constexpr int exp_rows = 256;

// e^x for 0 <= x < 1 by its series, which stops below 2^-110.
constexpr Pair<double> exp_pair(Pair<double> x) {
  Pair<double> sum{1, 0};
  for (int k = 27; k >= 1; --k) sum = Pair<double>{1, 0} + sum * x / Pair<double>{double(k), 0};
  return sum;
}

// Row j: 2^(j/256) = value (1 + tail), value rounded to 53 bits.
struct ExpTables {
  // The bits of `value` less those of j/256 as a part of the exponent: the number k 256 + j, moved so that k falls on
  // the exponent field, is added to them and makes 2^k value.
  std::array<double, exp_rows> value;
  std::array<double, exp_rows> tail;
};
inline constexpr auto exp_tables = [] {
  const Pair<double> ln2 = ln_ratio(2, 1);
  ExpTables t{};
  for (int j = 0; j < exp_rows; ++j) {
    const Pair<double> v = exp_pair(ln2 * Pair<double>{j / double{exp_rows}, 0});
    t.value[j] = std::bit_cast<double>(std::bit_cast<std::uint64_t>(v.hi) - (std::uint64_t(j) << 44));
    t.tail[j] = v.lo / v.hi;
  }
  return t;
}();

// Callers compare results bit for bit across releases: the middle row, sqrt 2, pinned.
static_assert(std::bit_cast<std::uint64_t>(exp_tables.value[128]) + (std::uint64_t{128} << 44) == 0x3FF6A09E667F3BCD);
static_assert(exp_tables.value[0] == 1 && exp_tables.tail[0] == 0);

// A row's width, ln 2 / 256, in two parts. The first has 34 bits: its products with numbers of 19 bits are exact.
inline constexpr double exp_step_hi = [] {
  const double width = ln_ratio(2, 1).hi / exp_rows;
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(width) & 0xFFFFFFFFFFF80000);
}();
inline constexpr double exp_step_lo = (ln_ratio(2, 1).hi / exp_rows - exp_step_hi) + ln_ratio(2, 1).lo / exp_rows;
inline constexpr double exp_per_step = exp_rows / ln_ratio(2, 1).hi;

// The same for singles: bits moved by 15 places, ln 2 / 256 in three parts, of 9, 9 and 24 bits.
struct alignas(8) ExpSingleRow {
  float value, tail;
};
inline constexpr auto exp_single_table = [] {
  std::array<ExpSingleRow, exp_rows> rows{};
  for (int j = 0; j < exp_rows; ++j) {
    const double v =
        std::bit_cast<double>(std::bit_cast<std::uint64_t>(exp_tables.value[j]) + (std::uint64_t(j) << 44));
    const float value = float(v);
    rows[j] = {std::bit_cast<float>(std::bit_cast<std::uint32_t>(value) - (std::uint32_t(j) << 15)),
               float((v - value) / v)};
  }
  return rows;
}();
inline constexpr auto exp_single_step = [] {
  const double width = ln_ratio(2, 1).hi / exp_rows;
  const auto cut = [](double v) { return std::bit_cast<double>(std::bit_cast<std::uint64_t>(v) & ~0ull << 44); };
  const double first = cut(width), second = cut(width - first);
  return std::array<float, 3>{float(first), float(second), float(width - first - second)};
}();

}  // namespace qor::tfn
