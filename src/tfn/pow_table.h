// Table of the power function in single precision, made at compile time.
#pragma once

#include <array>

#include "tfn/ln_table.h"

namespace qor::tfn {

// Row j: c = 1/(1 + j/256) rounded, and -256 log2 c = 256 log2(1 + j/256). The rows 0 and 256 are exact.
struct alignas(16) PowSingleRow {
  double c, log;
};
inline constexpr auto pow_single_table = [] {
  std::array<PowSingleRow, 257> rows{};
  for (int j = 0; j <= 256; ++j) {
    const Pair<double> log2 = ln_ratio(256 + j, 256) / ln_ratio(2, 1);
    rows[j] = {256.0 / (256 + j), 256 * log2.hi};
  }
  return rows;
}();
static_assert(pow_single_table[0].log == 0 && pow_single_table[256].log == 256 && pow_single_table[256].c == 0.5);

}  // namespace qor::tfn
