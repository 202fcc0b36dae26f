// Tables of the error functions: rows of polynomials in h around nodes c. The compiler computes them in erf_table.cpp.
#pragma once

namespace qor::tfn {

// f(c + h) = hi + lo + (slope_hi + slope_lo) h + higher[0] h^2 + ... + higher[D - 2] h^D. slope_hi has 26 bits: its
// product with the leading 26 bits of h is exact.
template <int D>
struct alignas(16) SplitRow {
  static constexpr int degree = D;
  double hi, lo, slope_hi, slope_lo, higher[D - 1];
};
// f(c + h) = term[0] + term[1] h + ... + term[D] h^D.
template <int D>
struct alignas(16) PlainRow {
  static constexpr int degree = D;
  double term[D + 1];
};
// f(c + h) = value + h + slope_less_1 h + square h^2 + cube h^3. Next to zero, where c and value are 0, h makes most of
// the result, without an error.
struct alignas(16) SingleRow {
  static constexpr int degree = 3;
  float value, slope_less_1, square, cube;
};

// Rows at the multiples of a step.
template <class Row, int Rows, int StepsPerUnit>
struct UniformTable {
  static constexpr int rows = Rows, degree = Row::degree;
  static constexpr double step = 1.0 / StepsPerUnit, last = (Rows - 1) * step;
  Row row[Rows];
};
// Rows at the numbers of Bits fraction bits, from 2^First on.
template <class Row, int Rows, int Bits, int First>
struct BinaryTable {
  static constexpr int rows = Rows, degree = Row::degree, bits = Bits, first = First;
  Row row[Rows];
};

// erf and erfc of doubles up to 6, where erf is 1; relative errors of 2^-60 at most (of erfc up to 4.5). The hi of erfc
// are multiples of 2^-52.
using ErfTable = UniformTable<SplitRow<7>, 193, 32>;
using ErfcTable = UniformTable<SplitRow<9>, 193, 32>;
extern const ErfTable erf_table;
extern const ErfcTable erfc_table;
// Of singles up to 4, where erf is 1, and 9.25, where erfc is subnormal: 2^-32.
using ErfWideTable = UniformTable<PlainRow<3>, 257, 64>;
using ErfcWideTable = UniformTable<PlainRow<7>, 297, 32>;
extern const ErfWideTable erf_wide_table;
extern const ErfcWideTable erfc_wide_table;

// e^(x^2) erfc(x) = leading (1 + higher[0] + higher[1] h + ... + higher[8] h^8) for x from 4.5 to 27.5, within 2^-64;
// `leading` has 26 bits.
struct alignas(16) ErfcxRow {
  static constexpr int degree = 8;
  double leading, higher[degree + 1];
};
struct ErfcxTable : BinaryTable<ErfcxRow, 2 * 64 + 47, 6, 2> {
  static constexpr int first_used = 8;
};
extern const ErfcxTable erfcx_table;

// The inverse of erf, rows by w = 1 - |x|, and h = |x| - (1 - node). Every halving of w takes its own rows, because the
// function has a singularity at w = 0; but of arguments spread evenly over (-1, 1) all but one in 256 use the last
// eight halvings' rows alone: 7 KiB of 46.
using ErfInvTable = BinaryTable<SplitRow<11>, 53 * 8 + 1, 3, -53>;
using ErfInvWideTable = BinaryTable<PlainRow<5>, 24 * 8 + 1, 3, -24>;
using ErfInvSingleTable = BinaryTable<SingleRow, 24 * 16 + 1, 4, -24>;
extern const ErfInvTable erf_inv_table;
extern const ErfInvWideTable erf_inv_wide_table;
extern const ErfInvSingleTable erf_inv_single_table;

}  // namespace qor::tfn
