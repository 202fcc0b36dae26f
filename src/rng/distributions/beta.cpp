#include "rng/distributions/beta.h"

#include <algorithm>
#include <limits>

#include "rng/distributions/kernels.h"
#include "rng/distributions/loops.h"
#include "rng/distributions/mode_guard.h"
#include "rng/distributions/scalar.h"
#include "rng/distributions/uniform.h"
#include "rng/streams/status.h"

namespace qor::rng {
namespace {

constexpr int block = 512;  // candidates at a time

// A block of candidates of two uniform numbers each; work space.
struct Block {
  alignas(16) double u[2 * block], u1[block], u2[block], v[block], w[block], y[block];
};
constexpr auto ln = Kernels<double>::ln, exponential = Kernels<double>::exp;

// Each of the methods below tests the m candidates of a block and leaves those accepted, in order, in v: their number.

// M. D. Joehnk, Erzeugung von betaverteilten und gammaverteilten Zufallszahlen, Metrika 8 (1964), for p, q <= 1:
// x/(x + y) where x = u1^(1/p), y = u2^(1/q) and x + y <= 1; in logarithms, which don't underflow.
struct Joehnk {
  double to_p, to_q;
  Joehnk(double p, double q) : to_p(1 / p), to_q(1 / q) {}
  int test(int m, Block& b) const {
    ln(m, b.u1, b.u1);
    ln(m, b.u2, b.u2);
    {
      const numeric::MxcsrGuard nearest;
      for (int i = 0; i < m; ++i) {
        b.v[i] = b.u1[i] *= to_p;
        b.w[i] = b.u2[i] *= to_q;
      }
    }
    exponential(m, b.v, b.v);
    exponential(m, b.w, b.w);
    const numeric::MxcsrGuard nearest;
    int count = 0;
    for (int i = 0; i < m; ++i) {
      b.y[count] = b.u2[i] - b.u1[i];
      count += b.v[i] + b.w[i] <= 1;
    }
    exponential(count, b.y, b.y);
    for (int i = 0; i < count; ++i) b.v[i] = 1 / (1 + b.y[i]);
    return count;
  }
};

// R. C. H. Cheng, Generating beta variates with nonintegral shape parameters, Communications of the ACM 21 (1978):
// algorithm BB when both shapes exceed 1, otherwise BC. x/(1 - x) is distributed about like w = a exp(v), v a multiple
// of ln(u1/(1 - u1)); candidates that the bounds on either side don't decide are few.
struct Cheng {
  double a, b, sum, slope, gamma = 0, k1 = 0, k2 = 0;
  bool both, swapped;
  Cheng(double p, double q) : both(std::min(p, q) > 1) {
    const double low = std::min(p, q), high = std::max(p, q);
    a = both ? low : high;
    b = both ? high : low;
    swapped = a != p;
    sum = p + q;
    if (both) {
      double root;  // of (sum - 2) / (2 p q - sum), above and below over the larger shape: nothing overflows
      scalar_root((1 + (low - 2) / high) / (2 * low - (1 + low / high)), root);
      slope = root;
      gamma = a + 1 / slope;
    } else {
      slope = 1 / b;
      const double delta = 1 + a - b;
      k1 = delta * (0.0138889 + 0.0416667 * b) / (a * slope - 0.777778);
      k2 = 0.25 + (0.5 + 0.25 / delta) * b;
    }
  }

  int test(int m, Block& c) const {
    {
      const numeric::MxcsrGuard nearest;
      for (int i = 0; i < m; ++i) c.v[i] = c.u1[i] / (1 - c.u1[i]);
    }
    ln(m, c.v, c.v);
    {
      const numeric::MxcsrGuard nearest;
      for (int i = 0; i < m; ++i) c.v[i] *= slope;
    }
    exponential(m, c.v, c.w);
    {
      const numeric::MxcsrGuard nearest;
      for (int i = 0; i < m; ++i) {
        const double z = c.u1[i] * c.u1[i] * c.u2[i];
        c.w[i] *= a;
        c.y[i] = both ? squeeze_both(c.v[i], c.w[i], z) : squeeze_one(c.u1[i], c.u2[i], z);
      }
    }
    decide(m, c);
    const numeric::MxcsrGuard nearest;
    int count = 0;
    for (int i = 0; i < m; ++i) {
      c.u[count] = c.w[i];
      count += c.y[i] > 0;
    }
    // x = w/(b + w), or its complement.
    for (int i = 0; i < count; ++i) c.v[i] = swapped ? b / (b + c.u[i]) : 1 / (1 + b / c.u[i]);
    return count;
  }

  // Above zero: accepted; below: rejected; zero: to be decided.
  QOR_INLINE double squeeze_both(double v, double w, double z) const {
    const double s = a + (gamma * v - 1.3862943611198906) - w;  // ln 4
    return s + 2.6094379124341003 >= 5 * z ? 1.0 : 0.0;         // 1 + ln 5
  }
  QOR_INLINE double squeeze_one(double u1, double u2, double z) const {
    const double y = u1 * u2;
    if (u1 < 0.5) return 0.25 * u2 + u1 * y - y >= k1 ? -1.0 : 0.0;
    return z <= 0.25 ? 1.0 : z >= k2 ? -1.0 : 0.0;
  }
  // Those that the bounds leave: r + sum ln(sum/(b + w)) - ln 4 >= ln z, r being gamma v, or sum v.
  void decide(int m, Block& c) const {
    int at[block + 1], open = 0;
    double *const z = c.u, *const ratio = c.u + block;
    {
      const numeric::MxcsrGuard nearest;
      for (int i = 0; i < m; ++i) {
        at[open] = i;
        open += c.y[i] == 0;
      }
      for (int i = 0; i < open; ++i) {
        const int k = at[i];
        z[i] = c.u1[k] * c.u1[k] * c.u2[k];
        ratio[i] = sum / (b + c.w[k]);
        c.u2[k] = 0;
        // Where w overflows, sum/(b + w) has been close to (sum/a) exp(-v) for long.
        if (!(c.w[k] <= std::numeric_limits<double>::max())) [[unlikely]] {
          ratio[i] = sum / a;
          c.u2[k] = c.v[k];
        }
      }
    }
    ln(open, z, z);
    ln(open, ratio, ratio);
    const numeric::MxcsrGuard nearest;
    const double slope_of_test = both ? gamma : sum;
    for (int i = 0; i < open; ++i) {
      const int k = at[i];
      const double r = slope_of_test * c.v[k];
      c.y[k] = r + sum * (ratio[i] - c.u2[k]) - 1.3862943611198906 >= z[i] ? 1.0 : -1.0;
    }
  }
};

template <class Method, class T>
int generate(Stream* stream, int n, T* r, T p, T q, T a, T scale) {
  const auto method = [p, q] {
    const numeric::MxcsrGuard nearest;
    return Method(numeric::pinned(double(p)), numeric::pinned(double(q)));
  }();
  Block b;
  int status = status::ok;
  while (n > 0) {
    const int m = std::min(n, block);
    status = uniform(0, stream, 2 * m, b.u, 0.0, 1.0);
    if (status < 0) return status;
    split_pairs(m, b.u, b.u1, b.u2, 1.0);
    const int count = method.test(m, b);
    const numeric::MxcsrGuard nearest;
    const T end = a + scale;
    for (int i = 0; i < count; ++i) {
      const T x = a + scale * static_cast<T>(b.v[i]);
      r[i] = x > a ? (x < end ? x : end) : a;
    }
    r += count, n -= count;
  }
  return status;
}

}  // namespace

template <class T>
int beta(int method, Stream* stream, int n, T* r, T p, T q, T a, T scale) {
  if (n < 1) return status::ok;
  if (method != 0) return status::bad_method;
  constexpr T most = std::numeric_limits<T>::max();
  if (!(p > 0 && p <= most && q > 0 && q <= most && scale > 0 && scale <= most && a >= -most && a <= most)) {
    return status::bad_argument;
  }
  const ModeGuard guard(ln_callback<double>);
  if (p <= 1 && q <= 1) return generate<Joehnk>(stream, n, r, p, q, a, scale);
  return generate<Cheng>(stream, n, r, p, q, a, scale);
}

template int beta<double>(int, Stream*, int, double*, double, double, double, double);
template int beta<float>(int, Stream*, int, float*, float, float, float, float);

}  // namespace qor::rng
