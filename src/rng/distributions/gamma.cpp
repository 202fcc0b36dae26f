#include "rng/distributions/gamma.h"

#include "rng/distributions/inverse.h"
#include "rng/distributions/kernels.h"
#include "rng/distributions/loops.h"
#include "rng/distributions/mode_guard.h"
#include "rng/distributions/pending.h"
#include "rng/distributions/scalar.h"
#include "rng/distributions/uniform.h"

namespace qor::rng {
namespace {

using simd::Vec;

constexpr int block = 512;  // candidates at a time

// G. Marsaglia and W. W. Tsang, A simple method for generating gamma variables, ACM TOMS 26 (2000): d v with v =
// (1 + c x)^3, x standard normal, is accepted with the probability that exp(x^2/2 + d (1 - v + ln v)) is.
template <class T>
class Marsaglia {
  using V = Vec<T>;
  static constexpr int lanes = simd::lanes<V>;

 public:
  explicit Marsaglia(T alpha) {
    const numeric::MxcsrGuard nearest;
    alpha = numeric::pinned(alpha);
    double root;
    scalar_root(9.0 * static_cast<double>(alpha) - 3.0, root);
    d_ = alpha - T(1.0 / 3);
    c_ = static_cast<T>(1 / root);
  }

  // `held` is the untested candidate that is left from before, and is left for later.
  int draw(Stream* stream, int n, T* r, Pending<T>& held) {
    int status = status::ok, have = 0;
    if (!held.empty()) take(held, have);
    while (n > 0) {
      const int tested = std::min(n, block), fresh = (tested - have + 1) & ~1;
      if (fresh > 0) {
        status = candidates(stream, fresh, have);
        if (status < 0) return status;
      }
      const int accepted = test(tested, r);
      r += accepted, n -= accepted;
      have = have + fresh - tested;
      if (have > 0) x_[0] = x_[tested], u_[0] = u_[tested];
    }
    held = {};
    if (have > 0) held.u[0] = u_[0], held.u[1] = x_[0];
    return status;
  }

 private:
  void take(const Pending<T>& held, int& have) {
    u_[0] = held.u[0], x_[0] = held.u[1];
    have = 1;
  }

  // `count` new ones from place `at` on, two uniform numbers each: the odd ones for acceptance, the even ones in pairs
  // for the normal number.
  int candidates(Stream* stream, int count, int at) {
    alignas(16) T u[2 * block], radius[block], angle[block / 2];
    const int status = uniform(0, stream, 2 * count, u, T(0), T(1)), pairs = count / 2;
    if (status < 0) return status;
    split_pairs(count, u, u, u_ + at, T(1));
    split_pairs(pairs, u, radius, angle, 2 * Kernels<T>::pi);
    T *const sine = u, *const cosine = u + block;
    Kernels<T>::sin_cos(pairs, angle, sine, cosine);
    Kernels<T>::ln(pairs, radius, radius);
    tfn::map<RootOf<-2>>(Kernels<T>::sqrt_name, pairs, radius, radius);
    const numeric::MxcsrGuard nearest;
    T* const x = x_ + at;
    int i = 0;
    for (; i <= pairs - lanes; i += lanes) {
      const V rho = simd::load<V>(radius + i), s = rho * simd::load<V>(sine + i), c = rho * simd::load<V>(cosine + i);
      simd::store(x + 2 * i, simd::zip_low(s, c));
      simd::store(x + 2 * i + lanes, simd::zip_high(s, c));
    }
    for (; i < pairs; ++i) x[2 * i] = radius[i] * sine[i], x[2 * i + 1] = radius[i] * cosine[i];
    return status;
  }

  // Tests the first `count` candidates: how many were accepted, in r. Nearly all are by the squeeze, whole vectors.
  int test(int count, T* r) const {
    const numeric::MxcsrGuard nearest;
    int accepted = 0;
    for (int i = 0; i < count; i += lanes) {
      const V x = simd::load<V>(x_ + i), u = simd::load<V>(u_ + i), x2 = x * x;
      const V w = x * c_ + T(1), v = w * w * w, s = T(1) - (x2 * x2) * T(0.0331), y = v * d_;
      const auto in = simd::lt(u, s) & simd::lt(V{}, v);
      if (simd::lanes_set(in) == simd::all_lanes<V> && i + lanes <= count) [[likely]] {
        simd::store(r + accepted, y);
        accepted += lanes;
        continue;
      }
      for (int l = 0; l < std::min(lanes, count - i); ++l) {
        if (!accepts(x[l], u[l], v[l], s[l])) continue;
        r[accepted++] = y[l];
      }
    }
    return accepted;
  }
  QOR_INLINE bool accepts(double x, double u, double v, double s) const {
    if (!(v > 0)) return false;
    if (u < s) return true;
    double ln_u, ln_v;
    scalar_ln(u, ln_u);
    scalar_ln(v, ln_v);
    return ln_u < 0.5 * x * x + static_cast<double>(d_) * (1 - v + ln_v);
  }

  T d_, c_;
  alignas(16) T x_[block + 2 * lanes] = {}, u_[block + 2 * lanes] = {};
};

template <class T>
int marsaglia(Stream* stream, int n, T* r, T alpha) {
  int status = status::ok;
  Pending<T>* const pending = pending_pair<T>(stream, sizeof(T) == 8 ? 7 : 8, status);
  if (pending == nullptr) return status;
  // The stream's candidate is given up only when the request succeeds.
  Pending<T> held = *pending;
  status = Marsaglia<T>(alpha).draw(stream, n, r, held);
  if (status >= 0) *pending = held;
  return status;
}

// Blocks of candidates of two uniform numbers each, until n are accepted; accepted(m, u, out) transforms and tests m.
template <class T, class F>
int by_rejection(Stream* stream, int n, T* r, F accepted) {
  alignas(16) T u[2 * block];
  int status = status::ok;
  while (n > 0) {
    const int m = std::min(n, block);
    status = uniform(0, stream, 2 * m, u, T(0), T(1));
    if (status < 0) return status;
    const int count = accepted(m, u, r);
    r += count, n -= count;
  }
  return status;
}

// exp(y power) from ln y, in place.
template <class T>
void raise(int n, T* ln, T power) {
  each(n, ln, [power](Vec<T> v) { return v * power; });
  Kernels<T>::exp(n, ln, ln);
}

// I. Vaduva, On computer generation of gamma random variables by rejection and composition procedures (1977): from the
// Weibull distribution of the same shape.
template <class T>
int vaduva(Stream* stream, int n, T* r, T alpha) {
  // The maximum of x^alpha - x.
  T c = alpha, power;
  Kernels<T>::high_ln(1, &c, &c);
  {
    const numeric::MxcsrGuard nearest;
    alpha = numeric::pinned(alpha);
    power = 1 / alpha;
    c = c * alpha / (1 - alpha);
    Kernels<T>::high_exp(1, &c, &c);
    c *= 1 - alpha;
  }
  return by_rejection(stream, n, r, [c, power](int m, T* u, T* out) {
    alignas(16) T first[block], second[block], x[block];
    Kernels<T>::ln(2 * m, u, u);
    split_pairs(m, u, first, second, T(1));
    {
      const numeric::MxcsrGuard nearest;
      for (int i = 0; i < m; ++i) {
        x[i] = -first[i];
        second[i] = -((first[i] + c) + second[i]);
      }
    }
    Kernels<T>::ln(m, x, x);
    raise(m, x, power);
    int count = 0;
    for (int i = 0; i < m; ++i) {
      out[count] = x[i];
      count += second[i] >= x[i];
    }
    return count;
  });
}

// J. H. Ahrens and U. Dieter, Computer methods for sampling from gamma, beta, Poisson and binomial distributions
// (1974), carried to the power: x = y^(1/alpha), y of the density exp(-y^(1/alpha)), which is below 1 on [0, 1 - alpha)
// and below exp(-(y - (1 - alpha))/alpha) beyond. The first uniform number u1 chooses and gives y in the first piece.
template <class T>
int epd_transform(Stream* stream, int n, T* r, T alpha) {
  T q, power;
  {
    const numeric::MxcsrGuard nearest;
    alpha = numeric::pinned(alpha);
    q = 1 - alpha, power = 1 / alpha;
  }
  return by_rejection(stream, n, r, [alpha, q, power](int m, T* u, T* out) {
    // The first piece's candidates, then the second's, each in order; `log` is ln((1 - u1)/alpha), zero in the first.
    alignas(16) T y[block + 1], log[block + 1], second[block];
    alignas(16) T* const first = u;
    split_pairs(m, u, first, second, T(1));
    const numeric::MxcsrGuard nearest;
    int inner = 0, outer = 0;
    for (int i = 0; i < m; ++i) {
      const bool in = first[i] < q;
      y[inner] = first[i];
      log[outer] = (1 - first[i]) / alpha;
      inner += in, outer += !in;
    }
    Kernels<T>::ln(outer, log, log);
    for (int i = 0; i < outer; ++i) y[inner + i] = q - alpha * log[i];
    Kernels<T>::ln(m, second, second);
    Kernels<T>::ln(m, y, y);
    raise(m, y, power);
    int count = 0, at[2] = {inner, 0};
    for (int i = 0; i < m; ++i) {
      const bool in = first[i] < q;
      const int k = at[in]++;
      const T tail = in ? T(0) : log[k - inner];
      out[count] = y[k];
      count += !((second[i] + y[k]) + tail > 0);
    }
    return count;
  });
}

}  // namespace

template <class T>
int gamma(Stream* stream, int n, T* r, T alpha, T a, T beta) {
  if (n < 1) return status::ok;
  {
    const numeric::MxcsrGuard nearest;
    // No candidate would ever be accepted.
    if (alpha <= 0 || alpha > std::numeric_limits<T>::max()) return status::bad_argument;
  }
  const ModeGuard guard(ln_callback<T>);
  int status;
  if (alpha > 1) {
    status = marsaglia(stream, n, r, alpha);
  } else if (!(alpha < 1)) {
    status = exponential(stream, n, r, T(0), T(1));
  } else {
    status = alpha >= T(0.6) ? vaduva(stream, n, r, alpha) : epd_transform(stream, n, r, alpha);
  }
  if (status >= 0) affine_above(n, r, beta, a);
  return status;
}

template int gamma<double>(Stream*, int, double*, double, double, double);
template int gamma<float>(Stream*, int, float*, float, float, float);

}  // namespace qor::rng
