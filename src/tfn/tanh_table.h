// Table of the hyperbolic tangent for the low single accuracy, made at compile time.
#pragma once

#include <array>

#include "tfn/exp_table.h"

namespace qor::tfn {

// Row k: tanh(k/64) and its derivative 1 - tanh^2(k/64). In the last row the tangent is the single 1.
struct alignas(8) TanhRow {
  float value, slope;
};
inline constexpr int tanh_rows = 580;
inline constexpr auto tanh_table = [] {
  std::array<TanhRow, tanh_rows> rows{};
  const Pair<double> ratio = exp_pair({1.0 / 32, 0}), one = {1, 0};
  Pair<double> e = one;
  for (TanhRow& row : rows) {
    const Pair<double> inverse = one / (e + one);
    const Pair<double> value = (e - one) * inverse, slope = Pair<double>{4, 0} * e * inverse * inverse;
    row = {float(value.hi), float(slope.hi)};
    e = e * ratio;
  }
  return rows;
}();
static_assert(tanh_table[0].value == 0 && tanh_table[0].slope == 1 && tanh_table[tanh_rows - 1].value == 1);

}  // namespace qor::tfn
