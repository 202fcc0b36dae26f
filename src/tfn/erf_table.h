// Tables of the error functions: rows of polynomials in h around a node c, computed by the compiler in erf_table.cpp.
#pragma once

namespace qor::tfn {

// f(c + h) = hi + lo + (slope_hi + slope_lo) h + higher[0] h^2 + ... + higher[D - 2] h^D. slope_hi has 26 bits, so that
// its product with the leading 26 bits of h is exact.
template <int D>
struct alignas(16) SplitRow {
  static constexpr int degree = D;
  double hi, lo, slope_hi, slope_lo, higher[D - 1];
};
// f(c + h) = term[0] + ... + term[D] h^D.
template <class T, int D>
struct alignas(16) PlainRow {
  static constexpr int degree = D;
  T term[D + 1];
};

// Rows at c = j * node_step, j = 0 .. rows - 1, for |h| at most half a step.
template <class Row, int Rows, int StepsPerUnit>
struct UniformTable {
  static constexpr int rows = Rows;
  static constexpr double step = 1.0 / StepsPerUnit, last = (Rows - 1) * step;
  Row row[Rows];
};
// Rows at c = 2^e (1 + m 2^-Bits), from the exponent First on: argument bits above the Bits leading ones of the fraction,
// rounded, count the rows.
template <class Row, int Rows, int Bits, int First>
struct BinaryTable {
  static constexpr int rows = Rows, bits = Bits, first = First;
  Row row[Rows];
};

// erf and erfc for doubles. The relative error of a row's polynomial is below 2^-60.
using ErfTable = UniformTable<SplitRow<7>, 193, 32>;
using ErfcTable = UniformTable<SplitRow<9>, 193, 32>;
extern const ErfTable erf_table;
extern const ErfcTable erfc_table;
// For singles, in doubles (2^-31) and in singles.
using ErfWideTable = UniformTable<PlainRow<double, 3>, 257, 64>;
using ErfcWideTable = UniformTable<PlainRow<double, 9>, 149, 16>;
using ErfSingleTable = UniformTable<PlainRow<float, 3>, 257, 64>;
extern const ErfWideTable erf_wide_table;
extern const ErfcWideTable erfc_wide_table;
extern const ErfSingleTable erf_single_table;

// e^(x^2) erfc(x) = leading (1 + higher[0] + higher[1] h + ... + higher[8] h^8) for x of 4.5 to 28; `leading` has 26
// bits.
struct alignas(16) ErfcxRow {
  static constexpr int degree = 8;
  double leading, higher[degree + 1];
};
using ErfcxTable = BinaryTable<ErfcxRow, 88, 5, 2>;
extern const ErfcxTable erfcx_table;

// The inverse of erf at x = c + h as rows by w = 1 - |x|, 1 - c being the node. Half of all arguments in (-1, 1) use
// the last row counts[0] rows
using ErfInvTable = BinaryTable<SplitRow<11>, 53 * 8 + 1, 3, -53>;
using ErfInvWideTable = BinaryTable<PlainRow<double, 5>, 24 * 8 + 1, 3, -24>;
using ErfInvSingleTable = BinaryTable<PlainRow<float, 3>, 24 * 16 + 1, 4, -24>;
extern const ErfInvTable erf_inv_table;
extern const ErfInvWideTable erf_inv_wide_table;
extern const ErfInvSingleTable erf_inv_single_table;

}  // namespace qor::tfn
