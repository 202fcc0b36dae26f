// Arguments that a function needs beside the strata that all share: ends of its domain, results about to overflow or
// vanish, change-overs between its formulas. Included by sweep.h.
#pragma once

namespace qor::test {

template <class T>
void own_strata(const std::string& function, Draw<T>& draw, int per_stratum, Inputs<T>& in) {
  using L = std::numeric_limits<T>;
  constexpr double overflow = L::max_exponent * M_LN2, least = (L::min_exponent - L::digits) * M_LN2;
  for (int i = 0; i < per_stratum; ++i) {
    if (function == "Exp") {
      in.add(T(draw.between(least, overflow)));
      in.add(T(draw.between(least - 1, (L::min_exponent + 10) * M_LN2)));
      in.add(T(draw.between(overflow - 4, overflow)));
      const double row =
          std::floor(draw.between(least, overflow) * std::ldexp(1.0, -static_cast<int>(draw.word() % 8)));
      in.add(draw.near((row + 0.5Q) * M_LN2q / 256));  // a change of table rows
      in.add(draw.scaled(-L::digits - 4, -1));
    }
    if (function == "Log10") {
      in.add(std::fabs(draw.scaled(L::min_exponent - 20, L::min_exponent)));
      in.add(draw.near(powq(10, static_cast<int>(draw.word() % 60) - 30)));
    }
    if (function == "Sinh" || function == "Cosh" || function == "Tanh") {
      in.add(draw.scaled(-L::digits - 4, -1));
      in.add(draw.scaled(-5, 4));  // the change-overs to polynomials
      in.add(T(draw.between(overflow - 8, overflow + 1)));
      in.add(draw.near((static_cast<__float128>(draw.word() % 4096) + 0.5Q) * M_LN2q / 512));  // changes of table rows
    }
    if (function == "Pow" || function == "Powx") {
      // x^b of every size, of x anywhere and of x next to 1, of negative x and whole b, and whole powers of whole
      // numbers.
      const T wild = std::fabs(draw.pattern()), next_to_1 = T(1 + draw.scaled(1 - L::digits, -2));
      for (const T x : {wild, next_to_1}) {
        const double log = std::log(static_cast<double>(x));
        in.add(x, T(draw.between(least, overflow) / log));
        in.add(x, T(draw.between(least - 1, (L::min_exponent + 10) * M_LN2) / log));
        in.add(x, T(draw.between(overflow - 4, overflow) / log));
        in.add(-x, std::nearbyint(T(draw.between(least, overflow) / log)));
      }
      in.add(T(draw.word() % 2000) - 1000, T(draw.word() % 100) - 50);
      in.add(draw.near(-1), T(draw.word() % 4) + std::ldexp(T(1), L::digits - 2));
    }
    if (function == "Erf" || function == "Erfc") {
      in.add(T(draw.between(-6, 28)));
      in.add(draw.scaled(-16, 4));
      in.add(draw.near((static_cast<__float128>(draw.word() % 896) + 0.5Q) / 32));  // changes of table rows
      in.add(draw.near((static_cast<__float128>(draw.word() % 600) + 0.5Q) / 64));
      in.add(draw.scaled(L::min_exponent - L::digits, L::min_exponent + 100));
    }
    if (function == "Erfc") {
      constexpr double vanishing = sizeof(T) == 8 ? 26.5 : 9.1;
      in.add(T(draw.between(vanishing, 1.05 * vanishing)));
      in.add(draw.near(16 * (1 + static_cast<__float128>(draw.word() % 128) / 64) /
                       static_cast<int>(1 + draw.word() % 4)));
    }
    if (function == "ErfInv") {
      in.add(T(draw.between(-1, 1)));
      const double w = std::ldexp(1 + draw.unit(), -static_cast<int>(draw.word() % L::digits) - 1);
      in.add(draw.word() % 2 != 0 ? T(1 - w) : T(w - 1));
      in.add(draw.near(1 - std::ldexp(1 + (static_cast<double>(draw.word() % 32)) / 32,
                                      -static_cast<int>(draw.word() % L::digits) - 1)));  // changes of table rows
      in.add(draw.scaled(-L::digits - 4, -1));
      in.add(draw.scaled(L::min_exponent - L::digits, L::min_exponent + 100));
    }
    if (function == "Asin" || function == "Acos" || function == "Atanh") {
      // The whole domain evenly, its ends, and results close to 0.
      in.add(T(draw.between(-1, 1)));
      const T end = 1 - std::fabs(draw.scaled(-L::digits - 1, -1));
      in.add(draw.word() % 2 != 0 ? end : -end);
      in.add(draw.scaled(L::min_exponent - L::digits, -1));
      // Change-overs: of rows and, of arc cosines next to 1, of formulas.
      in.add(draw.near(static_cast<__float128>(draw.word() % 257) / 256));
      in.add(draw.near(1 - 0x1p-13Q));
    }
    if (function == "Atan" || function == "Asinh" || function == "Acosh") {
      in.add(draw.scaled(-L::digits, L::digits));
      in.add(draw.scaled(L::min_exponent - L::digits, L::max_exponent - 1));
      in.add(std::fabs(draw.scaled(0, 10)));
      in.add(T(1 + std::fabs(draw.scaled(1 - L::digits, 0))));
      in.add(draw.near(
          std::ldexp(1 + static_cast<double>(draw.word() % 128) / 128, static_cast<int>(draw.word() % 16) - 8)));
    }
    if (function == "Atan2") {
      // Of like size, of quotients of every size, next to the diagonals and to the axes, and next to changes of rows.
      const T y = draw.scaled(-20, 20), wild = draw.scaled(L::min_exponent - L::digits, L::max_exponent - 1);
      in.add(y, draw.scaled(-20, 20));
      in.add(wild, draw.scaled(L::min_exponent - L::digits, L::max_exponent - 1));
      in.add(wild, wild * draw.scaled(-8, 8));
      in.add(y, draw.near(draw.word() % 2 != 0 ? y : -y));
      in.add(y, draw.near(y / (1 + static_cast<__float128>(draw.word() % 128) / 128)));
      in.add(y, draw.word() % 2 != 0 ? T(0) : -T(0));
      in.add(draw.word() % 2 != 0 ? T(0) : -T(0), y);
    }
    const T small = draw.scaled(L::min_exponent - L::digits + 1, L::min_exponent);
    if (function == "Sqrt" || function == "InvSqrt") in.add(std::fabs(small));
    if (function == "InvSqrt") in.add(std::fabs(draw.scaled(-128, 128)));  // the range of singles ends within
    if (function == "Cbrt" || function == "InvCbrt") {
      in.add(small);
      in.add(draw.near(ldexpq(1 + (draw.word() % 128) / 128.0Q, static_cast<int>(draw.word() % 7) - 3)));
      const T root = T(draw.word() >> (64 - L::digits / 3));
      in.add(root * root * root);
    }
    if (function == "Inv") in.add(draw.scaled(L::max_exponent - 4, L::max_exponent - 1));
    if (function == "Div") {
      const T b = draw.scaled(-2, 2);
      in.add(small, b);
      in.add(draw.scaled(L::max_exponent - 3, L::max_exponent - 1), b);
      in.add(draw.near(3 * b), b);
    }
    if (function == "Hypot") {
      const int size = static_cast<int>(draw.word() % (L::max_exponent - L::min_exponent)) + L::min_exponent;
      in.add(draw.scaled(size, size + 2), draw.scaled(size, size + 2));
      in.add(draw.scaled(size, size), std::ldexp(draw.scaled(size, size), -static_cast<int>(draw.word() % L::digits)));
      in.add(small, draw.scaled(L::min_exponent - L::digits + 1, L::min_exponent));
      in.add(draw.scaled(L::max_exponent - 2, L::max_exponent - 1),
             draw.scaled(L::max_exponent - 2, L::max_exponent - 1));
      const auto m = T(draw.word() % 1000 + 1), k = T(draw.word() % 1000 + 1);
      in.add(m * m - k * k, 2 * m * k);
    }
  }
}

}  // namespace qor::test
