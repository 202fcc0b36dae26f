// A Monte Carlo estimate on any number of machines: the integral of exp(-|x|^2) over the unit cube of five dimensions.
//
// Twice. With MRG32K3A the points are cut into blocks, and whoever computes block j skips ahead to its first number: the
// points, the sums of the blocks, and their sum in the blocks' order are the same bits for any number of ranks. With
// MT2203 each rank has a member of the family to itself: no jumps, but another number of ranks are other points.
//
//   mpiexec -n 5 integral [BLOCKS]     where MPI for 32 bits was found, otherwise
//   integral --ranks 5 [BLOCKS]
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <qor/qor.hpp>
#include <type_traits>
#include <vector>

#include "ranks.h"

namespace {

constexpr int dimension = 5, points = 4096;  // of a block
constexpr int numbers = dimension * points;

// The sum of the integrand over the next block of points, and that of its squares.
void add_block(qor::Stream& stream, std::vector<double>& sums) {
  static std::vector<double> x(numbers), values(points);
  stream.uniform(x);
  for (int i = 0; i < points; ++i) {
    double exponent = 0;
    for (int k = 0; k < dimension; ++k) {
      const double coordinate = x[static_cast<std::size_t>(i * dimension + k)];
      exponent -= coordinate * coordinate;
    }
    values[static_cast<std::size_t>(i)] = exponent;
  }
  qor::math::exp(values);
  sums.push_back(std::accumulate(values.begin(), values.end(), 0.0));
  sums.push_back(std::inner_product(values.begin(), values.end(), values.begin(), 0.0));
}

void show(const char* engine, double sum, double squares, double n) {
  const double mean = sum / n, error = std::sqrt((squares / n - mean * mean) / n);
  const double exact = std::pow(std::sqrt(std::acos(-1.0)) / 2 * std::erf(1.0), dimension);
  std::printf("%-9s %.12f = %a, standard error %.2g, off by %.2f of it\n", engine, mean, mean, error,
              (mean - exact) / error);
}

}  // namespace

int main(int argc, char** argv) {
  if (!qor_cpu_supported()) return std::fputs("this processor lacks SSE2 or SSSE3\n", stderr), 2;
  const Ranks ranks(argc, argv);
  const int blocks = argc > 1 ? std::atoi(argv[1]) : 200;
  if (blocks < 1 || blocks > 500000) {
    if (ranks.rank() == 0) std::fputs("usage: integral [BLOCKS], from 1 to 500000 of 4096 points each\n", stderr);
    return 2;
  }

  // [skip-ahead]
  qor::Stream stream(QOR_BRNG_MRG32K3A, 1871);
  stream.skip_ahead(static_cast<std::uint64_t>(numbers) * static_cast<std::uint64_t>(ranks.rank()));
  std::vector<double> mine;
  for (int block = ranks.rank(); block < blocks; block += ranks.count()) {
    add_block(stream, mine);
    stream.skip_ahead(static_cast<std::uint64_t>(numbers) * static_cast<std::uint64_t>(ranks.count() - 1));
  }
  // [skip-ahead]
  const std::vector<std::vector<double>> parts = ranks.gather(mine);
  if (ranks.rank() == 0) {
    double sum = 0, squares = 0;
    for (int block = 0; block < blocks; ++block) {
      const auto part = static_cast<std::size_t>(block % ranks.count());
      const auto at = static_cast<std::size_t>(block / ranks.count() * 2);
      sum += parts[part][at];
      squares += parts[part][at + 1];
    }
    std::printf("%d points on %d ranks\n", blocks * points, ranks.count());
    show("mrg32k3a", sum, squares, static_cast<double>(blocks) * points);
  }

  // [members]
  const auto member = static_cast<unsigned>(ranks.rank());
  qor::Stream own(QOR_BRNG_MT2203 + ranks.rank(), {2011, member});
  std::vector<double> sums;
  for (int block = ranks.rank(); block < blocks; block += ranks.count()) add_block(own, sums);
  // [members]
  double sum = 0, squares = 0;
  for (const std::vector<double>& part : ranks.gather(sums)) {
    for (std::size_t i = 0; i < part.size(); i += 2) {
      sum += part[i];
      squares += part[i + 1];
    }
  }
  if (ranks.rank() == 0) show("mt2203", sum, squares, static_cast<double>(blocks) * points);
}
