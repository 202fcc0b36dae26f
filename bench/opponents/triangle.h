// The multivariate Gaussian distribution of the benchmarks: mean and factor.
#pragma once

#include <cstddef>
#include <vector>

namespace bench {

struct Triangle {
  std::vector<double> mean, full, packed;
};
// Correlations fall off geometrically; the factor is that of a chain x[i] = 0.8 x[i-1] + 0.6 z[i].
inline const Triangle& triangle(int d) {
  static std::vector<Triangle> made(2000);
  Triangle& t = made[static_cast<std::size_t>(d)];
  if (t.mean.empty()) {
    const auto size = static_cast<std::size_t>(d);
    t.mean.resize(size);
    t.full.resize(size * size);
    for (std::size_t i = 0; i < size; ++i) {
      t.mean[i] = static_cast<double>(i);
      double power = i == 0 ? 1 : 0.6;
      for (std::size_t k = i + 1; k-- > 0; power *= 0.8) t.full[i * size + k] = k == 0 && i > 0 ? power / 0.6 : power;
    }
    for (std::size_t k = 0; k < size; ++k) {
      for (std::size_t i = k; i < size; ++i) t.packed.push_back(t.full[i * size + k]);
    }
  }
  return t;
}

}  // namespace bench
