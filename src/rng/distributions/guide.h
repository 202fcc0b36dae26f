// Inversion of a discrete distribution by one uniform number in constant time, after H.-C. Chen and Y. Asau, On
// generating random variates from an empirical distribution, AIIE Transactions 6 (1974): the unit interval is cut into
// many equal cells, and a cell that lies within one outcome names it; only in the others is the place looked up.
#pragma once

#include <cstdint>
#include <limits>

#include "numeric/mxcsr.h"
#include "simd/vec.h"

namespace qor::rng {

class Guide {
 public:
  static constexpr int most = 1536;  // outcomes

  // Outcomes 0 .. count - 1 with these weights, which become the cumulated probabilities; they must stay.
  void assign(double* weights, int count) {
    upto_ = weights;
    double total = 0;
    for (int k = 0; k < count; ++k) weights[k] = total += weights[k];
    cells_ = 1024;
    while (cells_ < 16 * count && cells_ < capacity) cells_ *= 2;
    int j = 0;
    for (int k = 0; k < count - 1; ++k) {
      upto_[k] /= total;
      const double end = upto_[k] * cells_;
      const int whole = static_cast<int>(end);  // at most cells_
      while (j < whole) cell_[j++] = static_cast<std::uint16_t>(2 * k);
      if (j == whole && j < cells_ && whole < end) cell_[j++] = static_cast<std::uint16_t>(2 * k + 1);
    }
    while (j < cells_) cell_[j++] = static_cast<std::uint16_t>(2 * (count - 1));
    upto_[count - 1] = std::numeric_limits<double>::quiet_NaN();
  }

  // r[i] = first + the outcome of u[i]; m is a multiple of four, and so long are both arrays. Whatever u holds, the
  // results are outcomes.
  void invert(int m, const double* u, std::int32_t first, std::int32_t* r) const {
    using namespace simd;
    const numeric::MxcsrGuard nearest;
    std::uint32_t* const cell = reinterpret_cast<std::uint32_t*>(r);
    const VecD cells = splat<VecD>(cells_), last = splat<VecD>(cells_ - 1);
    const auto scaled = [&](const double* p) { return min(max(load<VecD>(p) * cells, VecD{}), last); };
    for (int i = 0; i < m; i += 4) store(cell + i, truncate(scaled(u + i), scaled(u + i + 2)));
    for (int i = 0; i < m; ++i) {
      const unsigned found = cell_[cell[i]];
      int k = static_cast<int>(found >> 1);
      if ((found & 1) != 0) [[unlikely]] {
        while (u[i] >= upto_[k]) ++k;
      }
      r[i] = first + k;
    }
  }

 private:
  static constexpr int capacity = 8192;
  double* upto_ = nullptr;  // P(outcome <= k); the last, not a number, stops every search, infinite u's too
  int cells_ = 0;
  std::uint16_t cell_[capacity];  // twice the lowest outcome, odd when there is another
};

}  // namespace qor::rng
