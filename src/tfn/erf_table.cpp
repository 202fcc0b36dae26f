// The rows of erf_table.h. Function values and slopes are pairs of doubles, good to some 2^-95; a row's polynomial is
// the Taylor series at its node, its highest terms economised: each is replaced by lower ones with the help of the
// Chebyshev polynomial of its degree (C. Lanczos, J. Math. Phys. 17, 1938).
#include "tfn/erf_table.h"

#include <bit>
#include <cstdint>

#include "numeric/float_parts.h"
#include "numeric/pair.h"

namespace qor::tfn {
namespace {

using numeric::power_of_two;
using Wide = numeric::Pair<double>;
constexpr Wide wide(double v) { return {v, 0}; }

// 2/sqrt(pi), verified by erfc(0) below.
constexpr Wide two_over_root_pi{0x1.20dd750429b6dp0, 0x1.1ae3a914fed8p-56};

// 1/n.
struct Reciprocals {
  Wide of[27];
};
constexpr Reciprocals reciprocal = [] {
  Reciprocals r{};
  for (int n = 1; n < 27; ++n) r.of[n] = wide(1) / wide(n);
  return r;
}();

// A polynomial of degree N. (A plain array: the compiler works through a std::array several times as long.)
template <int N>
struct Series {
  static constexpr int degree = N;
  Wide a[N + 1];
  constexpr Wide at(Wide h) const {
    Wide s = a[N];
    for (int n = N - 1; n >= 0; --n) s = s * h + a[n];
    return s;
  }
  constexpr Wide slope(Wide h) const {
    Wide s = a[N] * wide(N);
    for (int n = N - 1; n >= 1; --n) s = s * h + a[n] * wide(n);
    return s;
  }
};

// s for |h| <= range, the terms above degree D put into the others: h^k less the Chebyshev polynomial of leading
// coefficient 1 on that interval, whose coefficients t follow from one another.
template <int D, int N>
constexpr Series<D> economised(Series<N> s, double range) {
  for (int k = N; k > D; --k) {
    double t = s.a[k].hi;
    for (int m = 0; 2 * m + 2 <= k; ++m) {
      t *= -range * range * (k - 2 * m) * (k - 2 * m - 1) / (4.0 * (m + 1) * (k - m - 1));
      Wide& lower = s.a[k - 2 * m - 2];
      lower = lower - wide(t);
    }
  }
  Series<D> out{};
  for (int n = 0; n <= D; ++n) out.a[n] = s.a[n];
  return out;
}

constexpr double leading_26_bits(double v) {
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(v) & 0xFFFFFFFFF8000000);
}
// hi is a multiple of the grid unless that is 0.
template <int D>
constexpr void set(SplitRow<D>& row, const Series<D>& s, double grid) {
  row.hi = grid == 0 ? s.a[0].hi : (s.a[0].hi + grid * 0x1.8p52) - grid * 0x1.8p52;
  row.lo = (s.a[0].hi - row.hi) + s.a[0].lo;
  row.slope_hi = leading_26_bits(s.a[1].hi);
  row.slope_lo = (s.a[1].hi - row.slope_hi) + s.a[1].lo;
  for (int n = 2; n <= D; ++n) row.higher[n - 2] = s.a[n].hi;
}
template <int D>
constexpr void set(PlainRow<D>& row, const Series<D>& s, double) {
  for (int n = 0; n <= D; ++n) row.term[n] = s.a[n].hi;
}
constexpr void set(SingleRow& row, const Series<3>& s, double) {
  row = {float(s.a[0].hi), float(s.a[1].hi - 1), float(s.a[2].hi), float(s.a[3].hi)};
}

// sqrt(pi) e^(x^2) erfc(x) = 1/(x + (1/2)/(x + 1/(x + (3/2)/(x + ...)))), `terms` of it.
constexpr Wide scaled_fraction(Wide x, int terms) {
  Wide f = x;
  for (int n = terms; n >= 1; --n) f = x + wide(n / 2.0) / f;
  return wide(1) / f;
}

// The series of erfc around c, from its value there and its slope, -2/sqrt(pi) e^(-c^2): f'' = -2 x f'.
template <int N>
constexpr Series<N> erfc_series(double c, Wide value, Wide slope) {
  Series<N> s{};
  s.a[0] = value;
  Wide before = wide(0);
  for (int n = 1; n <= N; ++n) {
    s.a[n] = slope * reciprocal.of[n];
    const Wide half = (wide(c) * slope + before) * reciprocal.of[n];
    before = slope;
    slope = -(half + half);
  }
  return s;
}

// erfc and its slope at c = j/32. The slope by e^(-(2j + 1)/32^2), the quotient of neighbours; the value from the far
// end, where it is small, towards zero, by the series, so that relative errors die out.
struct ErfcAt {
  Wide value, slope;
};
constexpr int node_steps = 32, last_node = 296;
struct Nodes {
  ErfcAt at[last_node + 1];
};
constexpr Nodes nodes = [] {
  Nodes n{};
  Wide quotient = wide(1);
  for (int k = 9; k >= 1; --k) {
    quotient = wide(1) - quotient * wide(1.0 / (node_steps * node_steps)) * reciprocal.of[k];
  }
  const Wide step = quotient * quotient;
  n.at[0].slope = -two_over_root_pi;
  for (int j = 0; j < last_node; ++j) {
    n.at[j + 1].slope = n.at[j].slope * quotient;
    quotient = quotient * step;
  }
  const double end = double(last_node) / node_steps;
  n.at[last_node].value = scaled_fraction(wide(end), 40) * n.at[last_node].slope * wide(-0.5);
  for (int j = last_node; j > 0; --j) {
    const auto s = erfc_series<22>(double(j) / node_steps, n.at[j].value, n.at[j].slope);
    n.at[j - 1].value = s.at(wide(-1.0 / node_steps));
  }
  return n;
}();
constexpr Wide off = nodes.at[0].value - wide(1);
static_assert(off.hi < 0x1p-98 && off.hi > -0x1p-98);

// Anywhere from 0 to the last node.
constexpr ErfcAt erfc_at(Wide y) {
  if (y.hi == 0) return {wide(1), nodes.at[0].slope};
  const int j = int(y.hi * node_steps + 0.5);
  const double c = double(j) / node_steps;
  const auto s = erfc_series<16>(c, nodes.at[j].value, nodes.at[j].slope);
  const Wide h = y - wide(c);
  return {s.at(h), s.slope(h)};
}

// Tables of erfc, or of erf.
template <class Table>
constexpr Table uniform_table(bool complement, double grid) {
  Table t{};
  constexpr int degree = Table::degree, terms = degree + 5;
  for (int j = 0; j < Table::rows; ++j) {
    const double c = j * Table::step;
    const ErfcAt f = erfc_at(wide(c));
    Series<terms> s = erfc_series<terms>(c, f.value, f.slope);
    if (!complement) {
      for (Wide& a : s.a) a = -a;
      s.a[0] = wide(1) + s.a[0];
    }
    set(t.row[j], economised<degree>(s, Table::step / 2), grid);
  }
  return t;
}

// Node j of a binary table; its row serves arguments half-way to the next node, below and above.
template <class Table>
constexpr double binary_node(int j) {
  const int whole = j >> Table::bits, part = j & ((1 << Table::bits) - 1);
  return (1 + double(part) / (1 << Table::bits)) * power_of_two(Table::first + whole);
}
template <class Table>
constexpr double binary_range(int j) {
  return power_of_two(Table::first + (j >> Table::bits) - Table::bits - 1);
}

// g(x) = e^(x^2) erfc(x), g' = 2 x g - 2/sqrt(pi).
constexpr ErfcxTable make_erfcx_table() {
  ErfcxTable t{};
  constexpr int degree = ErfcxTable::degree, terms = degree + 4;
  for (int j = ErfcxTable::first_used; j < ErfcxTable::rows; ++j) {
    const double c = binary_node<ErfcxTable>(j);
    Series<terms> s{};
    s.a[0] = scaled_fraction(wide(c), 40) * two_over_root_pi * wide(0.5);
    s.a[1] = wide(2 * c) * s.a[0] - two_over_root_pi;
    for (int n = 2; n <= terms; ++n) s.a[n] = (wide(2 * c) * s.a[n - 1] + wide(2) * s.a[n - 2]) * reciprocal.of[n];
    const auto e = economised<degree>(s, binary_range<ErfcxTable>(j));
    ErfcxRow& row = t.row[j];
    row.leading = leading_26_bits(e.a[0].hi);
    for (int n = 0; n <= degree; ++n) {
      row.higher[n] = ((n == 0 ? e.a[0] - wide(row.leading) : e.a[n]) / wide(row.leading)).hi;
    }
  }
  return t;
}

// The series of the inverse of erf where it has the value y and the slope d: y' = (sqrt(pi)/2) e^(y^2), hence
// y'' = 2 y y'^2. Terms above the second need no more than double precision.
template <int N>
constexpr Series<N> inverse_series(Wide y, Wide d) {
  double value[N + 1] = {y.hi}, slope[N + 1] = {d.hi}, product[N + 1] = {};
  for (int n = 0; n < N; ++n) {
    value[n + 1] = slope[n] / (n + 1);
    double next = 0;
    for (int i = 0; i <= n; ++i) product[n] += value[i] * slope[n - i];
    for (int i = 0; i <= n; ++i) next += product[i] * slope[n - i];
    slope[n + 1] = 2 * next / (n + 1);
  }
  Series<N> s{};
  for (int n = 2; n <= N; ++n) s.a[n] = wide(value[n]);
  s.a[0] = y;
  s.a[1] = d;
  return s;
}
template <class Table>
constexpr void set_inverse_row(Table& t, int j, Wide y, Wide d) {
  const auto s = inverse_series<Table::degree + 5>(y, d);
  const int last = Table::rows - 1;  // of 1, whose row serves arguments below it alone
  set(t.row[j], economised<Table::degree>(s, binary_range<Table>(j == last ? j - 1 : j)), 0);
}

// From w = 1, where y = 0, downwards. The series of the row before gives y within 2^-40, a step of Newton's method the
// rest; the slope, 1 over that of erfc with its sign changed, follows y: d -> d e^(2 y dy + dy^2).
constexpr ErfInvTable make_erf_inv_table() {
  ErfInvTable t{};
  constexpr int last = ErfInvTable::rows - 1;
  Wide y = wide(0), d = wide(0);
  for (int j = last; j >= 0; --j) {
    const double w = binary_node<ErfInvTable>(j);
    if (j < last) y = wide(inverse_series<16>(y, d).at(wide(binary_node<ErfInvTable>(j + 1) - w)).hi);
    const ErfcAt f = erfc_at(y);
    d = wide(-1) / f.slope;
    const Wide dy = (f.value - wide(w)) * d;
    d = d + d * (dy * (y + y + dy));
    y = y + dy;
    set_inverse_row(t, j, y, d);
  }
  return t;
}
// Those for singles, from the polynomials of that one.
template <class Table>
constexpr Table single_inverse_table(const ErfInvTable& fine) {
  Table t{};
  constexpr int degree = ErfInvTable::degree;
  for (int j = 0; j < Table::rows; ++j) {
    const int k = (((j - Table::rows + 1) << fine.bits) >> Table::bits) + fine.rows - 1;
    const auto& row = fine.row[k];
    Series<degree> s{};
    s.a[0] = wide(row.hi);
    s.a[1] = wide(row.slope_hi) + wide(row.slope_lo);
    for (int n = 2; n <= degree; ++n) s.a[n] = wide(row.higher[n - 2]);
    const Wide h = wide(binary_node<ErfInvTable>(k) - binary_node<Table>(j));
    set_inverse_row(t, j, s.at(h), s.slope(h));
  }
  return t;
}

}  // namespace

constexpr ErfTable erf_table = uniform_table<ErfTable>(false, 0);
constexpr ErfcTable erfc_table = uniform_table<ErfcTable>(true, 0x1p-52);
constexpr ErfWideTable erf_wide_table = uniform_table<ErfWideTable>(false, 0);
constexpr ErfcWideTable erfc_wide_table = uniform_table<ErfcWideTable>(true, 0);
constexpr ErfcxTable erfcx_table = make_erfcx_table();
constexpr ErfInvTable erf_inv_table = make_erf_inv_table();
constexpr ErfInvWideTable erf_inv_wide_table = single_inverse_table<ErfInvWideTable>(erf_inv_table);
constexpr ErfInvSingleTable erf_inv_single_table = single_inverse_table<ErfInvSingleTable>(erf_inv_table);

// Callers compare results bit for bit across releases: erf(1), erfc(1), the inverse of 1/2, pinned.
static_assert(erf_table.row[32].hi == 0x1.af767a741088bp-1);
static_assert(erfc_table.row[32].hi == 0x1.4226162fbddd8p-3);
static_assert(erf_inv_table.row[52 * 8].hi == 0x1.e861fbb24c00ap-2);

}  // namespace qor::tfn
