// Eigen's triangular product on our normal numbers: a + T z for each column z, T full and row-major.
#include <Eigen/Core>

#include "harness.h"
#include "opponents/triangle.h"
#include "qor/rng.h"

namespace bench {
namespace {

using Matrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic>;
using RowMatrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

template <int d>
void product(int n, double* r) {
  static qor_stream* stream = nullptr;
  if (stream == nullptr) __wxrNewStreamEx(&stream, QOR_BRNG_MT19937, 0, nullptr);
  const Triangle& t = triangle(d);
  const int count = n / d;
  double* const normals = second_output<double>();
  _wxrdRngGaussian(1, stream, count * d, normals, 0, 1);
  const Eigen::Map<const RowMatrix> factor(t.full.data(), d, d);
  const Eigen::Map<const Eigen::VectorXd> mean(t.mean.data(), d);
  const Eigen::Map<const Matrix> z(normals, d, count);
  Eigen::Map<Matrix> x(r, d, count);
  x.noalias() = factor.template triangularView<Eigen::Lower>() * z;
  x.colwise() += mean;
}

constexpr const char* name = "our normals, eigen's product";
const Add here{DrawPeer<double>{"GaussianMV 10", name, false, product<10>},
               DrawPeer<double>{"GaussianMV 100", name, false, product<100>},
               DrawPeer<double>{"GaussianMV 1000", name, false, product<1000>}};

}  // namespace
}  // namespace bench
