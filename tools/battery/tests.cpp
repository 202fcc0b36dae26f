#include "tests.h"

#include <NTL/GF2X.h>
#include <NTL/mat_GF2.h>

#include <algorithm>
#include <cmath>

#include "tails.h"

namespace battery {
namespace {

std::uint64_t cell(Words& words, int dimension, int bits) {
  std::uint64_t c = 0;
  for (int k = 0; k < dimension; ++k) c = c << bits | words() >> (32 - bits);
  return c;
}

std::vector<std::uint64_t> sorted_cells(Words& words, int n, int dimension, int bits) {
  std::vector<std::uint64_t> points(static_cast<std::size_t>(n));
  for (std::uint64_t& p : points) p = cell(words, dimension, bits);
  std::sort(points.begin(), points.end());
  return points;
}

long long repeated(const std::vector<std::uint64_t>& sorted) {
  long long count = 0;
  for (std::size_t i = 1; i < sorted.size(); ++i) count += sorted[i] == sorted[i - 1];
  return count;
}

Outcome poisson(double mean, long long count) {
  char figure[80];
  std::snprintf(figure, sizeof figure, "%lld, expected %.4g", count, mean);
  return {log_poisson(mean, count), figure};
}
Outcome chi_square(double freedom, double x) {
  char figure[80];
  std::snprintf(figure, sizeof figure, "chi-square %.0f, %.0f degrees of freedom", x, freedom);
  return {log_chi_square(freedom, x), figure};
}

}  // namespace

Outcome linear_complexity(Words& words, int n, int bit) {
  NTL::vec_GF2 bits;
  bits.SetLength(n);
  for (long i = 0; i < n; ++i) bits.put(i, words() >> bit & 1);
  NTL::GF2X minimal;
  NTL::MinPolySeq(minimal, bits, n / 2);
  const int complexity = static_cast<int>(NTL::deg(minimal));
  return {log_complexity(n, complexity), "complexity " + std::to_string(complexity)};
}

Outcome matrix_rank(Words& words, int order, int matrices) {
  NTL::mat_GF2 matrix;
  matrix.SetDims(order, order);
  double seen[3] = {};
  for (int m = 0; m < matrices; ++m) {
    for (long i = 0; i < order; ++i) {
      for (long j = 0; j < order; ++j) matrix[i].put(j, words() >> 31);
    }
    const int rank = static_cast<int>(NTL::gauss(matrix));
    if (matrices == 1) return {log_rank(order, rank), "rank " + std::to_string(rank)};
    ++seen[std::min(order - rank, 2)];
  }
  const double at_most_1 = std::pow(10, log_rank(order, order - 1)),
               at_most_2 = std::pow(10, log_rank(order, order - 2));
  const double share[3] = {1 - at_most_1, at_most_1 - at_most_2, at_most_2};
  double x = 0;
  for (int k = 0; k < 3; ++k) {
    const double expected = share[k] * matrices;
    x += (seen[k] - expected) * (seen[k] - expected) / expected;
  }
  return chi_square(2, x);
}

Outcome birthday_spacings(Words& words, int n, int dimension, int bits, int repetitions) {
  long long count = 0;
  for (int k = 0; k < repetitions; ++k) {
    std::vector<std::uint64_t> points = sorted_cells(words, n, dimension, bits);
    for (std::size_t i = points.size() - 1; i > 0; --i) points[i] -= points[i - 1];
    points.erase(points.begin());
    std::sort(points.begin(), points.end());
    count += repeated(points);
  }
  return poisson(std::pow(n, 3) / std::exp2(dimension * bits + 2) * repetitions, count);
}

Outcome collisions(Words& words, int n, int dimension, int bits) {
  const double cells = std::exp2(dimension * bits);
  const double mean = n + cells * std::expm1(n * std::log1p(-1 / cells));  // n less the cells that are hit
  return poisson(mean, repeated(sorted_cells(words, n, dimension, bits)));
}

Outcome gaps(Words& words, int n, int level) {
  const double p = std::exp2(-level);
  std::size_t lengths = 0;
  while (n * p * std::pow(1 - p, lengths) >= 10) ++lengths;
  std::vector<double> seen(lengths + 1);
  while (words() >> (32 - level) != 0) continue;
  for (int k = 0; k < n; ++k) {
    std::size_t length = 0;
    while (words() >> (32 - level) != 0) ++length;
    ++seen[std::min(length, lengths)];
  }
  double x = 0;
  for (std::size_t length = 0; length <= lengths; ++length) {
    const double expected = n * std::pow(1 - p, length) * (length < lengths ? p : 1);
    x += (seen[length] - expected) * (seen[length] - expected) / expected;
  }
  return chi_square(static_cast<double>(lengths), x);
}

}  // namespace battery
