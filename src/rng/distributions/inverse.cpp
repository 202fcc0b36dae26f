#include "rng/distributions/inverse.h"

#include "rng/distributions/gaussian.h"
#include "rng/distributions/kernels.h"
#include "rng/distributions/loops.h"
#include "rng/distributions/mode_guard.h"
#include "rng/distributions/uniform.h"
#include "rng/streams/status.h"

namespace qor::rng {
namespace {

using simd::splat;
using simd::Vec;

// n uniform numbers' logarithms in r.
template <class T>
int logarithms(Stream* stream, int n, T* r) {
  const int status = uniform(0, stream, n, r, T(0), T(1));
  if (status >= 0) Kernels<T>::ln(n, r, r);
  return status;
}

}  // namespace

template <class T>
int exponential(Stream* stream, int n, T* r, T a, T beta) {
  if (n < 1) return status::ok;
  const ModeGuard guard(ln_callback_always<T>);
  const int status = logarithms(stream, n, r);
  if (status < 0) return status;
  using V = Vec<T>;
  each(n, r, [a = splat<V>(a), beta = splat<V>(beta)](V ln) { return simd::max(a - beta * ln, a); });
  return status;
}

template <class T>
int gumbel(Stream* stream, int n, T* r, T a, T beta) {
  if (n < 1) return status::ok;
  const ModeGuard guard(ln_callback_always<T>);
  const int status = exponential(stream, n, r, T(0), T(1));
  if (status < 0) return status;
  Kernels<T>::ln(n, r, r);
  affine(n, r, beta, a);
  return status;
}

template <class T>
int rayleigh(Stream* stream, int n, T* r, T a, T beta) {
  if (n < 1) return status::ok;
  const ModeGuard guard(ln_callback<T>);
  const int status = logarithms(stream, n, r);
  if (status < 0) return status;
  tfn::map<RootOf<-1>>(Kernels<T>::sqrt_name, n, r, r);
  affine_above(n, r, beta, a);
  return status;
}

template <class T>
int weibull(Stream* stream, int n, T* r, T alpha, T a, T beta) {
  if (n < 1) return status::ok;
  const ModeGuard guard(ln_callback<T>);
  const int status = logarithms(stream, n, r);
  if (status < 0) return status;
  each(n, r, [](Vec<T> ln) { return -ln; });
  T power;
  {
    const numeric::MxcsrGuard nearest;
    power = 1 / numeric::pinned(alpha);
  }
  Kernels<T>::powx(n, r, power, r);
  affine_above(n, r, beta, a);
  return status;
}

// Runs under the caller's mode: a tangent has no pole among the floating-point numbers.
template <class T>
int cauchy(Stream* stream, int n, T* r, T a, T beta) {
  if (n < 1) return status::ok;
  constexpr T quarter = Kernels<T>::pi / 2;
  const int status = uniform(0, stream, n, r, -quarter, quarter);
  if (status < 0) return status;
  Kernels<T>::tan(n, r, r);
  affine(n, r, beta, a);
  return status;
}

// The exponential function runs under the caller's mode, whom an overflow concerns.
template <class T>
int lognormal(Stream* stream, int n, T* r, T a, T sigma, T b, T beta) {
  if (n < 1) return status::ok;
  const int status = box_muller2(stream, n, r, a, sigma);
  if (status < 0) return status;
  Kernels<T>::exp(n, r, r);
  affine_above(n, r, beta, b);
  return status;
}

template <class T>
int laplace(Stream* stream, int n, T* r, T a, T beta) {
  constexpr int block = 1024;
  if (n < 1) return status::ok;
  const ModeGuard guard(ln_callback_always<T>);
  alignas(16) T u[2 * block];
  int status = status::ok;
  for (int m; n > 0; n -= m, r += m) {
    m = std::min(n, block);
    status = uniform(0, stream, 2 * m, u, T(0), T(1));
    if (status < 0) return status;
    T* const side = u;
    split_pairs(m, u, r, side, T(1));
    Kernels<T>::ln(m, r, r);
    using V = Vec<T>;
    constexpr int lanes = simd::lanes<V>;
    // a + beta ln u above one half, else a - beta ln u.
    const auto sided = [va = splat<V>(a), vb = splat<V>(beta)](V ln, V s) {
      return va + simd::flip_sign(vb * ln, simd::le(s, splat<V>(T(0.5))) & simd::sign(splat<V>(T(-0.0))));
    };
    const numeric::MxcsrGuard nearest;
    int i = 0;
    for (; i <= m - lanes; i += lanes) simd::store(r + i, sided(simd::load<V>(r + i), simd::load<V>(side + i)));
    for (; i < m; ++i) r[i] = sided(splat<V>(r[i]), splat<V>(side[i]))[0];
  }
  return status;
}

#define INSTANTIATE(T)                                     \
  template int exponential<T>(Stream*, int, T*, T, T);     \
  template int gumbel<T>(Stream*, int, T*, T, T);          \
  template int rayleigh<T>(Stream*, int, T*, T, T);        \
  template int weibull<T>(Stream*, int, T*, T, T, T);      \
  template int cauchy<T>(Stream*, int, T*, T, T);          \
  template int lognormal<T>(Stream*, int, T*, T, T, T, T); \
  template int laplace<T>(Stream*, int, T*, T, T);
INSTANTIATE(double)
INSTANTIATE(float)
#undef INSTANTIATE

}  // namespace qor::rng
