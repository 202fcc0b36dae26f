// Tables of the logarithm, made at compile time.
#pragma once

#include <array>
#include <cstdint>

#include "numeric/pair.h"

namespace qor::tfn {

using numeric::Pair;

// ln(p/q) = 2 atanh(z), z = (p - q)/(p + q) <= 1/3 for 1 <= p/q <= 2. The series stops before z^73/73 < 2^-121, well
// below the 2^-104 or so that a Pair carries.
constexpr Pair<double> ln_ratio(double p, double q) {
  const Pair<double> z = Pair<double>{p - q, 0} / Pair<double>{p + q, 0}, z2 = z * z;
  Pair<double> sum{0, 0};
  for (int k = 71; k >= 1; k -= 2) sum = sum * z2 + Pair<double>{1, 0} / Pair<double>{double(k), 0};
  return Pair<double>{2, 0} * z * sum;
}

// A row is {hi, lo, c, 0}: hi + lo = the logarithm of 1/c, or of what c approximates the reciprocal of. hi is a
// multiple of 2^-40 so that hi plus any exponent times the hi of ln 2 is exact: 11 + 40 bits fit in 53.
struct alignas(32) LnRow {
  double hi, lo, c, zero;
};
constexpr LnRow ln_row(Pair<double> l, double c) {
  const double hi = 0x1p-40 * double(static_cast<long long>(l.hi * 0x1p40 + 0.5));
  return {hi, (l.hi - hi) + l.lo, c, 0};
}

// Row j: ln(1 + j/256) and c = 1/(1 + j/256) rounded.
inline constexpr auto ln_table = [] {
  std::array<LnRow, 257> rows{};
  for (int j = 0; j <= 256; ++j) rows[j] = ln_row(ln_ratio(256 + j, 256), 256.0 / (256 + j));
  return rows;
}();
inline constexpr double ln2_hi = ln_table[256].hi, ln2_lo = ln_table[256].lo;

// Callers compare results bit for bit across releases: first and last row, pinned.
static_assert(ln_table[0].hi == 0 && ln_table[0].lo == 0 && ln_table[0].c == 1);
static_assert(ln_table[1].hi == 0.003898640416082344 && ln_table[1].lo == -4.250210039855352e-13);
static_assert(ln_table[128].c == 0.6666666666666666);
static_assert(ln2_hi == 0.6931471805601177 && ln2_lo == -1.7239444525614835e-13);

// Row j for the high accuracy: c is 1/(1 + j/256) rounded so short that u = m c - 1 is exact in 53 bits (24 for
// singles): to 10 bits where |u| stays below 2^-9 in the whole interval of the row, as it does towards both ends of the
// table, else to 9 bits, where |u| stays below 2^-8. hi + lo = -ln c.
constexpr double short_reciprocal(int j) {
  const double least = (511 + 2 * j) / 512.0, most = (513 + 2 * j) / 512.0;
  const double c = int(1024.0 * 256 / (256 + j) + 0.5) / 1024.0;
  if (most * c - 1 < 0x1p-9 && 1 - least * c < 0x1p-9) return c;
  return int(512.0 * 256 / (256 + j) + 0.5) / 512.0;
}
inline constexpr auto ln_exact_table = [] {
  std::array<LnRow, 257> rows{};
  for (int j = 0; j <= 256; ++j) rows[j] = ln_row(ln_ratio(1, short_reciprocal(j)), short_reciprocal(j));
  return rows;
}();

// The same for singles, with rows that begin below sqrt(1/2) and not at 1: row r is for the 2^15 numbers m from the
// bits ln_single_first + 2^15 r on, and ln_single_one for those around 1. With the middle of the row m0, m - m0 has 14
// bits, and c (m - m0) + (c m0 - 1) is the u of above, each operation without error. hi is a multiple of 2^-17, exact
// with 7 bits of exponent in 24.
inline constexpr int ln_single_one = 150;
inline constexpr std::uint32_t ln_single_first = 0x3F800000 - (ln_single_one << 15) - 0x4000;
struct LnSingleTable {
  struct alignas(16) Row {
    float hi, lo, c, at_middle;  // at_middle: c m0 - 1
  };
  Row row[256];
  float log_2_hi, log_2_lo;
};
// Of a table of 257 rows like ln_exact_table.
template <class Rows>
constexpr LnSingleTable ln_single_rows(const Rows& rows) {
  LnSingleTable table{};
  const auto first = [](const LnRow& l) { return 0x1p-17 * double(static_cast<long long>(l.hi * 0x1p17 + 0.5)); };
  const double log_2 = first(rows[256]);
  for (int r = 0; r < 256; ++r) {
    const bool below = r < ln_single_one;
    const int j = below ? 256 + r - ln_single_one : r - ln_single_one;
    const LnRow& l = rows[static_cast<std::size_t>(j)];
    const double hi = first(l), lo = (l.hi - hi) + l.lo;
    const double lo_2 = (rows[256].hi - log_2) + rows[256].lo;
    table.row[r] = {float(below ? hi - log_2 : hi), float(below ? lo - lo_2 : lo), float(below ? 2 * l.c : l.c),
                    float(l.c * (1 + j / 256.0) - 1)};
  }
  table.log_2_hi = float(log_2);
  table.log_2_lo = float((rows[256].hi - log_2) + rows[256].lo);
  return table;
}
inline constexpr LnSingleTable ln_single_table = ln_single_rows(ln_exact_table);

}  // namespace qor::tfn
