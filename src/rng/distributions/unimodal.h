// Variates of a discrete distribution with one mode: by a table of its probabilities while that is short, by rejection
// otherwise. Both are set up once a request.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

#include "numeric/mxcsr.h"
#include "rng/distributions/guide.h"
#include "rng/streams/stream.h"

namespace qor::rng {

// A count of a contingency table whose one free number is k: at + step k, step 1 or -1, and its expected value.
struct Count {
  double at, step, expected;
};

// A distribution told by counts: p(k) is a constant times the product of expected^x / x! over the counts x. Poisson has
// one, the binomial two, the hypergeometric four.
struct Counts {
  double mode, lowest, highest, variance;
  int number;
  Count count[4];

  // p(k + 1) / p(k)
  struct Ratio {
    double over, under;
  };
  Ratio operator()(double k) const {
    Ratio r = {1, 1};
    for (int c = 0; c < number; ++c) {
      const Count& of = count[c];
      const double x = of.at + of.step * k;
      r.over *= of.step > 0 ? of.expected : x;
      r.under *= of.step > 0 ? x + 1 : of.expected;
    }
    return r;
  }
};

// m uniform numbers of 21 more bits than the engine's, of two of these each; u has room for 2m + 2.
int fine_uniforms(Stream* stream, int m, double* u);
// n variates by a guide; `first` is what its outcome 0 stands for.
int draw_guided(Stream* stream, int n, std::int32_t* r, const Guide& guide, int first, bool fine);

// The probabilities of a distribution whose neighbours' ratio is ratio(k), from the mode to both sides while they are
// above 2^-60 of the largest.
class Table {
 public:
  // False when that makes too many.
  template <class F>
  bool fill(double mode, double lowest, double highest, F ratio) {
    const numeric::MxcsrGuard nearest;
    double* const at_mode = weight_ + Guide::most;
    double rest = 0, p = 1, k = mode;
    int below = 0, above = 0;
    at_mode[0] = 1;
    for (; k > lowest; k -= 1) {
      const auto q = ratio(k - 1);
      p *= q.under / q.over;
      if (!(p > 0x1p-60)) break;
      if (++below == Guide::most) return false;
      rest += at_mode[-below] = p;
    }
    for (p = 1, k = mode; k < highest; k += 1) {
      const auto q = ratio(k);
      p *= q.over / q.under;
      if (!(p > 0x1p-60)) break;
      if (below + ++above == Guide::most) return false;
      rest += at_mode[above] = p;
    }
    first_ = static_cast<int>(mode) - below;
    fine_ = rest < 0x1p-10;
    guide_.assign(at_mode - below, below + 1 + above);
    return true;
  }
  int draw(Stream* stream, int n, std::int32_t* r) const { return draw_guided(stream, n, r, guide_, first_, fine_); }

 private:
  Guide guide_;
  int first_ = 0;
  bool fine_ = false;  // all but 2^-10 of the probability is the mode's
  double weight_[2 * Guide::most];
};

// Beyond this variance a table is too long.
inline constexpr double table_variance = 3000;

int draw(Stream* stream, int n, std::int32_t* r, const Counts& of);

// n times the same.
inline int fill(int n, std::int32_t* r, std::int32_t k) {
  std::fill_n(r, n, k);
  return 0;
}

}  // namespace qor::rng
