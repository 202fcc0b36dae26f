// Special values of every function, for both precisions: argument (or two), result, status.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "qor/tfn.h"

namespace qor::test {

struct Special {
  Special(double first, double gives, int reports) : x(first), b(0), result(gives), status(reports) {}
  Special(double first, double second, double gives, int reports)
      : x(first), b(second), result(gives), status(reports) {}
  double x, b, result;
  int status;
};
struct Specials {
  std::string function;
  double usual, usual_b;  // arguments of ordinary neighbours
  std::vector<Special> rows;
};

inline const std::vector<Specials>& specials() {
  constexpr double inf = HUGE_VAL, nan = __builtin_nan("");
  constexpr int ok = TFN_STATUS_OK, domain = TFN_STATUS_ERRDOM, pole = TFN_STATUS_SING;
  constexpr int overflow = TFN_STATUS_OVERFLOW, underflow = TFN_STATUS_UNDERFLOW;
  static const std::vector<Specials> table = {
      {"Ln",
       1.5,
       0,
       {{0.0, -inf, pole},
        {-0.0, -inf, pole},
        {-1.0, nan, domain},
        {-0x1p-149, nan, domain},
        {-inf, nan, domain},
        {inf, inf, ok},
        {nan, nan, ok},
        {1.0, 0.0, ok}}},
      {"Exp",
       1.5,
       0,
       {{0.0, 1.0, ok},
        {-0.0, 1.0, ok},
        {0x1p-149, 1.0, ok},
        {inf, inf, ok},
        {-inf, 0.0, ok},
        {nan, nan, ok},
        {710.0, inf, overflow},
        {0x1p100, inf, overflow},
        {-746.0, 0.0, underflow},
        {-0x1p100, 0.0, underflow}}},
      {"Sqrt",
       1.5,
       0,
       {{0.0, 0.0, ok},
        {-0.0, -0.0, ok},
        {-1.0, nan, domain},
        {-0x1p-149, nan, domain},
        {-inf, nan, domain},
        {inf, inf, ok},
        {nan, nan, ok}}},
      {"Sin",
       1.5,
       0,
       {{0.0, 0.0, ok},
        {-0.0, -0.0, ok},
        {0x1p-149, 0x1p-149, ok},
        {inf, nan, domain},
        {-inf, nan, domain},
        {nan, nan, ok}}},
      {"Cos",
       1.5,
       0,
       {{0.0, 1.0, ok}, {-0.0, 1.0, ok}, {0x1p-149, 1.0, ok}, {inf, nan, domain}, {-inf, nan, domain}, {nan, nan, ok}}},
      {"Tan",
       1.5,
       0,
       {{0.0, 0.0, ok},
        {-0.0, -0.0, ok},
        {0x1p-149, 0x1p-149, ok},
        {inf, nan, domain},
        {-inf, nan, domain},
        {nan, nan, ok}}},
  };
  return table;
}

}  // namespace qor::test
