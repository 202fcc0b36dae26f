// Special values of the complex functions, after annex G of C99; where that leaves a choice (a sign), the library's.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "qor/tfn.h"

namespace qor::test {

struct ComplexSpecial {
  double x, y, re, im;
  int status = TFN_STATUS_OK;
  double b_x = 0, b_y = 0;
};
// f(-z) = f(z) or -f(z); rows then stand for those of -z too. That f of the conjugate is the conjugate of f holds for
// all of one argument.
enum class Parity { none, even, odd };
struct ComplexSpecials {
  std::string function;
  Parity parity;
  std::vector<ComplexSpecial> rows;
};

inline const std::vector<ComplexSpecials>& complex_specials() {
  constexpr double inf = HUGE_VAL, nan = __builtin_nan("");
  constexpr int domain = TFN_STATUS_ERRDOM, overflow = TFN_STATUS_OVERFLOW;
  static const std::vector<ComplexSpecials> table = {
      {"Exp",
       Parity::none,
       {{0, 0, 1, 0},
        {-0.0, 0, 1, 0},
        {-3, 0, 0.049787068367863944, 0},
        {1.5, inf, nan, nan, domain},
        {1.5, nan, nan, nan},
        {inf, 0, inf, 0},
        {-inf, 1, 0, 0},
        {-inf, 2, -0.0, 0},
        {-inf, 4, -0.0, -0.0},
        {inf, 1, inf, inf},
        {inf, 2, -inf, inf},
        {inf, 100, inf, -inf},
        {-inf, inf, 0, 0},
        {inf, inf, inf, nan, domain},
        {-inf, nan, 0, 0},
        {inf, nan, inf, nan},
        {nan, 0, nan, 0},
        {nan, 1, nan, nan},
        {nan, inf, nan, nan},
        {nan, nan, nan, nan},
        {1000, 1, inf, inf, overflow},
        {1000, 0, inf, 0, overflow},
        {1e30, 2, -inf, inf, overflow},
        {-1e30, 2, -0.0, 0},
        {-1000, -1, 0, -0.0}}},
      {"Sinh",
       Parity::odd,
       {{0, 0, 0, 0},
        {0, 1, 0, 0.8414709848078965},
        {1, 0, 1.1752011936438014, 0},
        {0x1p-149, 0x1p-140, 0x1p-149, 0x1p-140},
        {0, inf, 0, nan, domain},
        {0, nan, 0, nan},
        {1, inf, nan, nan, domain},
        {1, nan, nan, nan},
        {inf, 0, inf, 0},
        {inf, 1, inf, inf},
        {inf, 2, -inf, inf},
        {inf, inf, inf, nan, domain},
        {inf, nan, inf, nan},
        {nan, 0, nan, 0},
        {nan, 1, nan, nan},
        {nan, nan, nan, nan},
        {1000, 1, inf, inf, overflow},
        {1e30, 2, -inf, inf, overflow},
        {2000, 0, inf, 0, overflow}}},
      {"Cosh",
       Parity::even,
       {{0, 0, 1, 0},
        {0, 1, 0.5403023058681398, 0},
        {1, 0, 1.5430806348152437, 0},
        {0, inf, nan, 0, domain},
        {0, nan, nan, 0},
        {1, inf, nan, nan, domain},
        {1, nan, nan, nan},
        {inf, 0, inf, 0},
        {inf, 1, inf, inf},
        {inf, 2, -inf, inf},
        {inf, inf, inf, nan, domain},
        {inf, nan, inf, nan},
        {nan, 0, nan, 0},
        {nan, 1, nan, nan},
        {nan, nan, nan, nan},
        {1000, 1, inf, inf, overflow},
        {2000, 0, inf, 0, overflow}}},
      {"Tanh",
       Parity::odd,
       {{0, 0, 0, 0},
        {0, 1, 0, 1.5574077246549023},
        {1, 0, 0.7615941559557649, 0},
        {0x1p-149, 0x1p-140, 0x1p-149, 0x1p-140},
        {1, inf, nan, nan, domain},
        {0, inf, nan, nan, domain},
        {1, nan, nan, nan},
        {1000, 1, 1, 0},
        {1000, 2, 1, -0.0},
        {1e30, -0.0, 1, -0.0},
        {inf, 0, 1, 0},
        {inf, 1, 1, 0},
        {inf, 2, 1, -0.0},
        {inf, inf, 1, 0},
        {inf, nan, 1, 0},
        {nan, 0, nan, 0},
        {nan, 1, nan, nan},
        {nan, nan, nan, nan}}},
      {"Sin",
       Parity::odd,
       {{0, 0, 0, 0},
        {1, 0, 0.8414709848078965, 0},
        {0, 1, 0, 1.1752011936438014},
        {0x1p-149, 0x1p-140, 0x1p-149, 0x1p-140},
        {inf, 0, nan, 0, domain},
        {nan, 0, nan, 0},
        {inf, 1, nan, nan, domain},
        {nan, 1, nan, nan},
        {0, inf, 0, inf},
        {1, inf, inf, inf},
        {2, inf, inf, -inf},
        {inf, inf, nan, inf, domain},
        {nan, inf, nan, inf},
        {0, nan, 0, nan},
        {1, nan, nan, nan},
        {nan, nan, nan, nan},
        {1, 1000, inf, inf, overflow},
        {0, 2000, 0, inf, overflow}}},
      {"Cos",
       Parity::even,
       {{0, 0, 1, -0.0},
        {1, 0, 0.5403023058681398, -0.0},
        {0, 1, 1.5430806348152437, -0.0},
        {inf, 0, nan, -0.0, domain},
        {inf, 1, nan, nan, domain},
        {nan, 1, nan, nan},
        {0, inf, inf, -0.0},
        {1, inf, inf, -inf},
        {2, inf, -inf, -inf},
        {inf, inf, inf, nan, domain},
        {nan, inf, inf, nan},
        {1, nan, nan, nan},
        {nan, nan, nan, nan},
        {1, 1000, inf, -inf, overflow}}},
      {"Tan",
       Parity::odd,
       {{0, 0, 0, 0},
        {1, 0, 1.5574077246549023, 0},
        {0, 1, 0, 0.7615941559557649},
        {inf, 1, nan, nan, domain},
        {nan, 1, nan, nan},
        {1, 1000, 0, 1},
        {2, 1000, -0.0, 1},
        {0, inf, 0, 1},
        {2, inf, -0.0, 1},
        {inf, inf, 0, 1},
        {nan, inf, 0, 1},
        {0, nan, 0, nan},
        {1, nan, nan, nan},
        {nan, nan, nan, nan}}},
  };
  return table;
}

}  // namespace qor::test
