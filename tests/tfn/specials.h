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
  static const std::vector<Special> powers = {{nan, 0.0, 1.0, ok},
                                              {inf, -0.0, 1.0, ok},
                                              {0.0, 0.0, 1.0, ok},
                                              {1.0, nan, 1.0, ok},
                                              {1.0, -inf, 1.0, ok},
                                              {nan, 1.0, nan, ok},
                                              {2.0, nan, nan, ok},
                                              {-nan, 3.0, nan, ok},
                                              {0.0, 3.0, 0.0, ok},
                                              {-0.0, 3.0, -0.0, ok},
                                              {-0.0, 2.0, 0.0, ok},
                                              {-0.0, 2.5, 0.0, ok},
                                              {0.0, -3.0, inf, pole},
                                              {-0.0, -3.0, -inf, pole},
                                              {-0.0, -2.0, inf, pole},
                                              {-0.0, -0.5, inf, pole},
                                              {0.0, -inf, inf, ok},
                                              {-0.0, inf, 0.0, ok},
                                              {-1.0, inf, 1.0, ok},
                                              {-1.0, -inf, 1.0, ok},
                                              {0.5, inf, 0.0, ok},
                                              {-0.5, -inf, inf, ok},
                                              {-2.0, inf, inf, ok},
                                              {2.0, -inf, 0.0, ok},
                                              {inf, 0.5, inf, ok},
                                              {inf, -0.5, 0.0, ok},
                                              {-inf, 3.0, -inf, ok},
                                              {-inf, 0.5, inf, ok},
                                              {-inf, -3.0, -0.0, ok},
                                              {-inf, -0.5, 0.0, ok},
                                              {-2.0, 0.5, nan, domain},
                                              {-0x1p-149, -1.5, nan, domain},
                                              {-2.0, 3.0, -8.0, ok},
                                              {-2.0, 4.0, 16.0, ok},
                                              {-2.0, -1.0, -0.5, ok},
                                              {-1.0, 0x1.fffffep23, -1.0, ok},  // the largest odd single
                                              {-1.0, 0x1p24, 1.0, ok},
                                              {3.0, 15.0, 14348907.0, ok},
                                              {1.5, 1.0, 1.5, ok},
                                              {2.0, 1025.0, inf, overflow},
                                              {-2.0, 1025.0, -inf, overflow},
                                              {-0x1p100, 0x1.8p100, inf, overflow},
                                              {2.0, -1080.0, 0.0, underflow},
                                              {-2.0, -1081.0, -0.0, underflow},
                                              {0.5, 0x1p100, 0.0, underflow},
                                              {-0x1p-149, 1001.0, -0.0, underflow}};
  static const std::vector<Specials> table = {
      {"Pow", 1.5, 2.5, powers},
      {"Powx", 1.5, 2.5, powers},
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
      {"Erf",
       1.5,
       0,
       {{0.0, 0.0, ok},
        {-0.0, -0.0, ok},
        {inf, 1.0, ok},
        {-inf, -1.0, ok},
        {10.0, 1.0, ok},
        {-1e30, -1.0, ok},
        {nan, nan, ok}}},
      {"Erfc",
       1.5,
       0,
       {{0.0, 1.0, ok},
        {-0.0, 1.0, ok},
        {0x1p-149, 1.0, ok},
        {inf, 0.0, ok},
        {-inf, 2.0, ok},
        {-10.0, 2.0, ok},
        {28.0, 0.0, underflow},
        {1e30, 0.0, underflow},
        {nan, nan, ok}}},
      {"ErfInv",
       0.5,
       0,
       {{0.0, 0.0, ok},
        {-0.0, -0.0, ok},
        {1.0, inf, pole},
        {-1.0, -inf, pole},
        {1 + 0x1p-23, nan, domain},
        {-2.0, nan, domain},
        {inf, nan, domain},
        {-inf, nan, domain},
        {nan, nan, ok}}},
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
