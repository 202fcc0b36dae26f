#include "rng/distributions/unimodal.h"

#include "rng/distributions/kernels.h"
#include "rng/distributions/mode_guard.h"
#include "rng/distributions/scalar.h"
#include "rng/distributions/stirling.h"
#include "rng/distributions/uniform.h"
#include "rng/streams/status.h"

namespace qor::rng {
namespace {

using namespace simd;

constexpr int block = 1024;

// Rejection under a staircase, after J. H. Ahrens, Sampling from general distributions by suboptimal division of
// domains (1993). The range is cut into steps of equal width, with the mode between two of them. Of a step's two ends
// the lower probability, times the width, is the weight of its body, whose places are all accepted, and the rest of the
// higher one that of its edge, where the probability itself decides. Which of all bodies and edges is told by one
// uniform number, the place by another; the edges, a twentieth of all, need a third.
class Staircase {
 public:
  explicit Staircase(const Counts& of) : of_(of) {
    const numeric::MxcsrGuard nearest;
    double deviation;
    scalar_root(of.variance, deviation);
    // Beyond 9.5 deviations all probabilities together are below 2^-60 of those inside: less than the table leaves out.
    width_ = static_cast<double>(static_cast<int>((9.5 * deviation + 2) / half)) + 1;
    first_ = of.mode - half * width_;
    double place[steps + 2];
    for (int i = 0; i <= steps + 1; ++i) place[i] = first_ + i * width_;
    height_[steps + 1] = 0;
    probabilities(steps + 2, place, height_);
    for (int i = 0; i < steps; ++i) {
      weight_[2 * i] = std::min(height_[i], height_[i + 1]);
      weight_[2 * i + 1] = std::max(height_[i], height_[i + 1]) - weight_[2 * i];
    }
    guide_.assign(weight_, 2 * steps);
  }

  int draw(Stream* stream, int n, std::int32_t* r) {
    int status = status::ok;
    while (n > 0) {
      const int m = std::min(n, block);
      alignas(16) double u[2 * block + 8];
      status = uniform(0, stream, 2 * m, u, 0.0, 1.0);
      if (status < 0) return status;
      std::fill_n(u + 2 * m, 8, 0.0);
      alignas(16) std::int32_t chosen[block];
      int edge[block + 1];
      const int whole = (m + 3) & ~3, edges = place(whole, m, u, u + m, chosen, edge);
      if (edges > 0) {
        status = decide(stream, edges, edge, chosen, u);
        if (status < 0) return status;
      }
      int count = 0;
      for (int i = 0; i < m; ++i) {
        r[count] = chosen[i];
        count += chosen[i] >= 0;
      }
      r += count, n -= count;
    }
    return status;
  }

 private:
  static constexpr int half = 128, steps = 2 * half;

  // Places of m candidates, and which are on edges: their number.
  int place(int whole, int m, const double* u1, const double* u2, std::int32_t* chosen, int* edge) {
    guide_.invert(whole, u1, 0, chosen);
    int edges = 0;
    for (int i = 0; i < m; ++i) {
      step_[i] = static_cast<std::uint8_t>(chosen[i] >> 1);
      edge[edges] = i;
      edges += chosen[i] & 1;
    }
    const numeric::MxcsrGuard nearest;
    std::uint32_t* const words = reinterpret_cast<std::uint32_t*>(chosen);
    const VecD first = splat<VecD>(first_), width = splat<VecD>(width_), last = width - 1.0;
    const auto inside = [&](const double* u) { return min(max(load<VecD>(u) * width, VecD{}), last); };
    for (int i = 0; i < whole; i += 4) {
      const VecU32 step = load<VecU32>(words + i) >> 1;
      const VecD low = to_double_low(step) * width + first, high = to_double_high(step) * width + first;
      store(words + i, truncate(low, high) + truncate(inside(u2 + i), inside(u2 + i + 2)));
    }
    return edges;
  }

  // The candidates on edges: -1 for those rejected.
  int decide(Stream* stream, int edges, const int* edge, std::int32_t* chosen, double* u) {
    const int status = uniform(0, stream, edges, u, 0.0, 1.0);
    if (status < 0) return status;
    alignas(16) double k[block], p[block];
    for (int i = 0; i < edges; ++i) k[i] = chosen[edge[i]];
    if (edges % 2 != 0) k[edges] = k[0];
    probabilities(edges, k, p);
    const numeric::MxcsrGuard nearest;
    for (int i = 0; i < edges; ++i) {
      const int step = step_[edge[i]];
      const double from = std::min(height_[step], height_[step + 1]), to = std::max(height_[step], height_[step + 1]);
      if (!(from + u[i] * (to - from) < p[i])) chosen[edge[i]] = -1;
    }
    return status;
  }

  // Those of the places k, but for a common factor; all arrays have room for an even number. With expected values beyond
  // table_variance the counts stay within a sixth of them.
  void probabilities(int n, const double* k, double* p) const {
    constexpr int lanes = simd::lanes<VecD>;
    alignas(16) double ratio[block];
    {
      const numeric::MxcsrGuard nearest;
      for (int i = 0; i < n; i += lanes) {
        VecD sum = {}, product = splat<VecD>(1);
        for (int c = 0; c < of_.number; ++c) {
          const Count& count = of_.count[c];
          const VecD x = count.at + count.step * load<VecD>(k + i), expected = splat<VecD>(count.expected);
          sum -= deviance_near(x, expected) + stirling_error(x);
          product *= x / expected;
        }
        store(p + i, sum);
        store(ratio + i, sqrt(product));
      }
    }
    Kernels<double>::exp(n, p, p);
    const numeric::MxcsrGuard nearest;
    for (int i = 0; i < n; i += lanes) store(p + i, load<VecD>(p + i) / load<VecD>(ratio + i));
  }

  const Counts& of_;
  double first_, width_;
  Guide guide_;
  double height_[steps + 2], weight_[2 * steps];
  std::uint8_t step_[block];
};

}  // namespace

int fine_uniforms(Stream* stream, int m, double* u) {
  const int status = uniform(0, stream, 2 * m, u, 0.0, 1.0);
  if (status < 0) return status;
  const numeric::MxcsrGuard nearest;
  u[2 * m] = u[2 * m + 1] = 0;
  for (int i = 0; i < m; i += 2) {
    const VecD u0 = load<VecD>(u + 2 * i), u1 = load<VecD>(u + 2 * i + 2), head = evens(u0, u1) * 0x1p21;
    store(u + i, (to_double_low(truncate(head, head)) + odds(u0, u1)) * 0x1p-21);
  }
  return status;
}

int draw_guided(Stream* stream, int n, std::int32_t* r, const Guide& guide, int first, bool fine) {
  alignas(16) double u[block + 4];
  int status = status::ok;
  for (int m; n > 0; n -= m, r += m) {
    m = std::min(n, fine ? block / 2 : block);
    status = fine ? fine_uniforms(stream, m, u) : uniform(0, stream, m, u, 0.0, 1.0);
    if (status < 0) return status;
    const int whole = m & ~3;
    guide.invert(whole, u, first, r);
    if (whole == m) continue;
    std::int32_t rest[4];
    std::fill(u + m, u + whole + 4, 0.0);
    guide.invert(4, u + whole, first, rest);
    std::copy(rest, rest + (m - whole), r + whole);
  }
  return status;
}

int draw(Stream* stream, int n, std::int32_t* r, const Counts& of) {
  const ModeGuard guard(ln_callback<double>);
  if (of.variance > table_variance) return Staircase(of).draw(stream, n, r);
  Table table;
  table.fill(of.mode, of.lowest, of.highest, of);
  return table.draw(stream, n, r);
}

}  // namespace qor::rng
