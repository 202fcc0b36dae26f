// Tables of the decimal logarithm, made at compile time.
#pragma once

#include <array>

#include "tfn/ln_table.h"

namespace qor::tfn {

inline constexpr Pair<double> ln_10 = ln_ratio(2, 1) + ln_ratio(2, 1) + ln_ratio(2, 1) + ln_ratio(10, 8);
inline constexpr Pair<double> log10_e = Pair<double>{1, 0} / ln_10;

// Rows as those of ln_exact_table and ln_single_table, of decimal logarithms.
inline constexpr auto log10_table = [] {
  std::array<LnRow, 257> rows{};
  for (int j = 0; j <= 256; ++j) {
    const double c = ln_exact_table[j].c;
    rows[j] = ln_row(ln_ratio(1, c) / ln_10, c);
  }
  return rows;
}();
inline constexpr double log10_2_hi = log10_table[256].hi, log10_2_lo = log10_table[256].lo;

inline constexpr LnSingleTable log10_single_table = ln_single_rows(log10_table);

// log10 e in two parts, the first so short that its product with half of a significand is exact.
inline constexpr double log10_e_hi = numeric::halves(log10_e.hi).hi,
                        log10_e_lo = (log10_e.hi - log10_e_hi) + log10_e.lo;
inline constexpr float log10_e_single_hi = 0x1.bccp-2f, log10_e_single_lo = float(log10_e.hi - 0x1.bccp-2);

}  // namespace qor::tfn
