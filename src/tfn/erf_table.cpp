// The rows of erf_table.h. Function values and slopes are pairs of doubles, good to some 2^-95; a row's polynomial is the
// Taylor series at its node, its highest terms economised: each is replaced by lower ones with the help of the Chebyshev
// polynomial of its degree.
#include "tfn/erf_table.h"

#include <array>
#include <bit>
#include <cstdint>

#include "numeric/pair.h"

namespace qor::tfn {
namespace {

using Wide = numeric::Pair<double>;
constexpr Wide wide(double v) { return {v, 0}; }

// 2/sqrt(pi), verified by erfc(0) below.
constexpr Wide two_over_root_pi{0x1.20dd750429b6dp0, 0x1.1ae3a914fed8p-56};

// 1/n
constexpr int most_terms = 26;
constexpr auto reciprocal = [] {
  std::array<Wide, most_terms + 1> r{};
  for (int n = 1; n <= most_terms; ++n) r[n] = wide(1) / wide(n);
  return r;
}();

template <int N>
using Series = std::array<Wide, N + 1>;

template <std::size_t Size>
constexpr Wide sum(const std::array<Wide, Size>& a, Wide h) {
  Wide s = a[Size - 1];
  for (std::size_t n = Size - 1; n-- > 0;) s = s * h + a[n];
  return s;
}

// The series a on |h| <= range with the terms above degree D put into the others: h^k less the Chebyshev polynomial of
// leading coefficient 1 on that interval, whose coefficients t follow from one another.
template <int D, std::size_t Size>
constexpr auto economised(std::array<Wide, Size> a, double range) {
  for (int k = int(Size) - 1; k > D; --k) {
    double t = 1;
    for (int m = 0; 2 * m + 2 <= k; ++m) {
      t *= -range * range * (k - 2 * m) * (k - 2 * m - 1) / (4.0 * (m + 1) * (k - m - 1));
      const int at = k - 2 * m - 2;
      a[at] = a[at] - wide(a[k].hi * t);
    }
    a[k] = wide(0);
  }
  return a;
}

constexpr double leading_26_bits(double v) {
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(v) & 0xFFFFFFFFF8000000);
}
// hi as a multiple of grid, when there is one.
template <class Row, std::size_t Size>
constexpr Row split_row(const std::array<Wide, Size>& a, double grid) {
  Row r{};
  r.hi = grid == 0 ? a[0].hi : (a[0].hi + grid * 0x1.8p52) - grid * 0x1.8p52;
  r.lo = (a[0].hi - r.hi) + a[0].lo;
  r.slope_hi = leading_26_bits(a[1].hi);
  r.slope_lo = (a[1].hi - r.slope_hi) + a[1].lo;
  for (int n = 2; n <= Row::degree; ++n) r.higher[n - 2] = a[n].hi;
  return r;
}
template <class Row, std::size_t Size>
constexpr Row plain_row(const std::array<Wide, Size>& a) {
  Row r{};
  for (int n = 0; n <= Row::degree; ++n) r.term[n] = static_cast<decltype(r.term[0] + 0)>(a[n].hi);
  return r;
}

// sqrt(pi) e^(x^2) erfc(x) by its continued fraction 1/(x + (1/2)/(x + 1/(x + (3/2)/(x + ...)))), `terms` of it.
constexpr Wide scaled_fraction(Wide x, int terms) {
  Wide f = x;
  for (int n = terms; n >= 1; --n) f = x + wide(n / 2.0) / f;
  return wide(1) / f;
}

// The series of erfc around c, from its value there and its slope, -2/sqrt(pi) e^(-c^2): f'' = -2 x f'.
template <int N>
constexpr Series<N> erfc_series(Wide c, Wide value, Wide slope) {
  Series<N> a{};
  a[0] = value;
  Wide before = wide(0);
  for (int n = 1; n <= N; ++n) {
    a[n] = slope * reciprocal[n];
    const Wide next = -((c * slope + before) * reciprocal[n]);
    before = slope;
    slope = next + next;
  }
  return a;
}

// erfc and its slope at c = j/32. The slope by e^(-(2j + 1)/32^2), the quotient of neighbours; the value from the far
// end, where it is small, towards zero, by the series, so that relative errors die out.
constexpr int master_steps = 32, master_last = 296;
struct ErfcAt {
  Wide value, slope;
};
constexpr auto master = [] {
  std::array<ErfcAt, master_last + 1> m{};
  constexpr double square = -1.0 / (master_steps * master_steps);
  Wide quotient = wide(1);
  for (int n = 10; n >= 1; --n) quotient = wide(1) + quotient * wide(square) * reciprocal[n];
  const Wide step = quotient * quotient;
  m[0].slope = -two_over_root_pi;
  for (int j = 0; j < master_last; ++j) {
    m[j + 1].slope = m[j].slope * quotient;
    quotient = quotient * step;
  }
  const double end = double(master_last) / master_steps;
  m[master_last].value = scaled_fraction(wide(end), 40) * m[master_last].slope * wide(-0.5);
  for (int j = master_last; j > 0; --j) {
    m[j - 1].value = sum(erfc_series<22>(wide(double(j) / master_steps), m[j].value, m[j].slope), wide(-1.0 / master_steps));
  }
  return m;
}();
static_assert((master[0].value - wide(1)).hi < 0x1p-95 && (master[0].value - wide(1)).hi > -0x1p-95);

// At any y, 0 <= y < 9.
constexpr ErfcAt erfc_at(Wide y) {
  const int j = int(y.hi * master_steps + 0.5);
  if (j == 0 && y.hi == 0) return {wide(1), master[0].slope};
  const double c = double(j) / master_steps;
  constexpr int terms = 16;
  const auto a = erfc_series<terms>(wide(c), master[j].value, master[j].slope);
  const Wide h = y - wide(c);
  Wide slope = a[terms] * wide(terms);
  for (int n = terms - 1; n >= 1; --n) slope = slope * h + a[n] * wide(n);
  return {sum(a, h), slope};
}

// The series of erfc, or of erf, at c.
template <int N>
constexpr Series<N> series_at(double c, bool complement) {
  const ErfcAt f = erfc_at(wide(c));
  Series<N> a = erfc_series<N>(wide(c), f.value, f.slope);
  if (complement) return a;
  for (Wide& t : a) t = -t;
  a[0] = wide(1) + a[0];
  return a;
}
template <class Table, bool Complement, class Make>
constexpr Table uniform_table(Make make) {
  Table t{};
  using Row = std::remove_cvref_t<decltype(t.row[0])>;
  constexpr int terms = Row::degree + 6;
  for (int j = 0; j < Table::rows; ++j) {
    const double c = j * Table::step;
    t.row[j] = make.template operator()<Row>(economised<Row::degree>(series_at<terms>(c, Complement), Table::step / 2));
  }
  return t;
}
constexpr auto split_on_grid = []<class Row>(const auto& a) { return split_row<Row>(a, 0x1p-52); };
constexpr auto split = []<class Row>(const auto& a) { return split_row<Row>(a, 0); };
constexpr auto plain = []<class Row>(const auto& a) { return plain_row<Row>(a); };

// Node j of a table by bits.
template <class Table>
constexpr double binary_node(int j) {
  const double fraction = 1 + double(j % (1 << Table::bits)) / (1 << Table::bits);
  int e = Table::first + (j >> Table::bits);
  double scale = 1;
  for (; e < 0; ++e) scale /= 2;
  for (; e > 0; --e) scale *= 2;
  return scale * fraction;
}
// Half the distance to the next node.
template <class Table>
constexpr double binary_range(int j) {
  return binary_node<Table>((j >> Table::bits) << Table::bits) / (2 << Table::bits);
}

// g(x) = e^(x^2) erfc(x), g' = 2 x g - 2/sqrt(pi).
constexpr ErfcxTable make_erfcx_table() {
  ErfcxTable t{};
  for (int j = 0; j < ErfcxTable::rows; ++j) {
    const double c = binary_node<ErfcxTable>(j);
    constexpr int terms = ErfcxRow::degree + 5;
    Series<terms> a{};
    a[0] = scaled_fraction(wide(c), 60) * two_over_root_pi * wide(0.5);
    a[1] = wide(2 * c) * a[0] - two_over_root_pi;
    for (int n = 2; n <= terms; ++n) a[n] = (wide(2 * c) * a[n - 1] + wide(2) * a[n - 2]) * reciprocal[n];
    a = economised<ErfcxRow::degree>(a, binary_range<ErfcxTable>(j));
    ErfcxRow& r = t.row[j];
    r.leading = leading_26_bits(a[0].hi);
    for (int n = 0; n <= ErfcxRow::degree; ++n) {
      r.higher[n] = ((n == 0 ? a[0] - wide(r.leading) : a[n]) / wide(r.leading)).hi;
    }
  }
  return t;
}

// The series of the inverse of erf at x where it has the value y and the slope d: y' = (sqrt(pi)/2) e^(y^2), hence y'' =
// 2 y y'^2. Terms above the second need no more than double precision.
template <int N>
constexpr Series<N> inverse_series(Wide y, Wide d) {
  std::array<double, N + 1> value{}, slope{}, product{};
  value[0] = y.hi;
  slope[0] = d.hi;
  for (int n = 0; n < N; ++n) {
    value[n + 1] = slope[n] / (n + 1);
    for (int i = 0; i <= n; ++i) product[n] += value[i] * slope[n - i];
    double next = 0;
    for (int i = 0; i <= n; ++i) next += product[i] * slope[n - i];
    slope[n + 1 > N ? N : n + 1] = 2 * next / (n + 1);
  }
  Series<N> a{};
  a[0] = y;
  a[1] = d;
  for (int n = 2; n <= N; ++n) a[n] = wide(value[n]);
  return a;
}

// From w = 1, where y = 0, downwards. The series of the row before gives y within 2^-40, a step of Newton's method the
// rest; the slope, 1 over that of erfc with its sign changed, follows y: d -> d e^(2 y dy + dy^2).
constexpr ErfInvTable make_erf_inv_table() {
  ErfInvTable t{};
  using Row = std::remove_cvref_t<decltype(t.row[0])>;
  constexpr int terms = Row::degree + 5, last = ErfInvTable::rows - 1;
  Series<terms> a{};
  for (int j = last; j >= 0; --j) {
    const double w = binary_node<ErfInvTable>(j);
    const Wide y = j == last ? wide(0) : wide(sum(a, wide(binary_node<ErfInvTable>(j + 1) - w)).hi);
    const ErfcAt f = erfc_at(y);
    const Wide d = wide(-1) / f.slope, dy = (f.value - wide(w)) * d, grown = dy * (y + y + dy);
    a = inverse_series<terms>(y + dy, d + d * grown);
    t.row[j] = split_row<Row>(economised<Row::degree>(a, binary_range<ErfInvTable>(j == last ? j - 1 : j)), 0);
  }
  return t;
}
// Those for singles, from the table above.
template <class Table>
constexpr Table single_inverse_table(const ErfInvTable& fine) {
  Table t{};
  using Row = std::remove_cvref_t<decltype(t.row[0])>;
  for (int j = 0; j < Table::rows; ++j) {
    const double w = binary_node<Table>(j);
    const int at = (j << ErfInvTable::bits >> Table::bits) + ErfInvTable::rows - 1 - ((Table::rows - 1) << ErfInvTable::bits >> Table::bits);
    const auto& f = fine.row[at];
    const double h = binary_node<ErfInvTable>(at) - w;
    double y = 0, d = 0;
    for (int n = f.degree; n >= 2; --n) {
      y = (y + f.higher[n - 2]) * h;
      d = (d + n * f.higher[n - 2]) * h;
    }
    y = f.hi + (f.slope_hi + y) * h;
    d = f.slope_hi + (f.slope_lo + d);
    const auto a = inverse_series<Row::degree + 4>(wide(y), wide(d));
    t.row[j] = plain_row<Row>(economised<Row::degree>(a, binary_range<Table>(j == Table::rows - 1 ? j - 1 : j)));
  }
  return t;
}

}  // namespace

constexpr ErfTable erf_table = uniform_table<ErfTable, false>(split);
constexpr ErfcTable erfc_table = uniform_table<ErfcTable, true>(split_on_grid);
constexpr ErfWideTable erf_wide_table = uniform_table<ErfWideTable, false>(plain);
constexpr ErfcWideTable erfc_wide_table = uniform_table<ErfcWideTable, true>(plain);
constexpr ErfSingleTable erf_single_table = uniform_table<ErfSingleTable, false>(plain);
constexpr ErfcxTable erfcx_table = make_erfcx_table();
constexpr ErfInvTable erf_inv_table = make_erf_inv_table();
constexpr ErfInvWideTable erf_inv_wide_table = single_inverse_table<ErfInvWideTable>(erf_inv_table);
constexpr ErfInvSingleTable erf_inv_single_table = single_inverse_table<ErfInvSingleTable>(erf_inv_table);

}  // namespace qor::tfn
