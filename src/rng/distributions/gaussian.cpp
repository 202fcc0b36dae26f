#include "rng/distributions/gaussian.h"

#include <algorithm>

#include "base/owned.h"
#include "numeric/mxcsr.h"
#include "rng/distributions/mode_guard.h"
#include "rng/distributions/uniform.h"
#include "rng/streams/status.h"
#include "simd/vec.h"
#include "tfn/kernels.h"
#include "tfn/ln.h"
#include "tfn/sqrt.h"
#include "tfn/trig.h"

namespace qor::rng {
namespace {

using tfn::Accuracy;

// The kernels of each precision: the low accuracy, but for the double sine and cosine that stand alone.
template <class T>
struct Kernels;
template <>
struct Kernels<double> {
  static constexpr auto ln = tfn::dLn_50, sqrt = tfn::dSqrt_50, sin = tfn::dSin_HA, cos = tfn::dCos_HA;
  static constexpr auto sin_cos = tfn::dSinCos_50;
  using Sine = tfn::Sin<Accuracy::high>;
  static constexpr double two_pi = 6.283185307179586;
  static constexpr std::uint32_t pending_key = 2;
};
template <>
struct Kernels<float> {
  static constexpr auto ln = tfn::sLn_21, sqrt = tfn::sSqrt_21, sin = tfn::sSin_21, cos = tfn::sCos_21;
  static constexpr auto sin_cos = tfn::sSinCos_21;
  using Sine = tfn::Sin<Accuracy::low>;
  static constexpr float two_pi = 6.2831855f;
  static constexpr std::uint32_t pending_key = 1;
};
using Both = tfn::SinCos<Accuracy::low>;

// What is made of a pair of uniform numbers: the sine half, or the sine and the cosine half next to each other.
enum class Halves { sine, both };
template <Halves H>
inline constexpr int per_pair = H == Halves::both ? 2 : 1;

constexpr int block = 1024;  // uniform numbers are drawn for so many variates at a time

template <class T>
QOR_INLINE T minus_twice(T x) {
  return 0 - (x + x);
}

// sqrt(-2 ln u) in place.
template <class T>
void radii(int n, T* u) {
  Kernels<T>::ln(n, u, u);
  const numeric::MxcsrGuard nearest;
  for (int i = 0; i < n; ++i) u[i] = minus_twice(u[i]);
  Kernels<T>::sqrt(n, u, u);
}

// A few pairs through the kernels' entries, zeros and all; at most a vector of them.
template <class T, Halves H>
[[gnu::noinline]] void by_kernels(int pairs, const T* u, T* r, T a, T sigma) {
  constexpr int most = simd::lanes<simd::Vec<T>>;
  const numeric::MxcsrGuard nearest;
  T radius[most], trig[2][most];
  for (int i = 0; i < pairs; ++i) {
    radius[i] = u[2 * i];
    trig[0][i] = u[2 * i + 1] * Kernels<T>::two_pi;
  }
  if constexpr (H == Halves::both) {
    Kernels<T>::sin_cos(pairs, trig[0], trig[0], trig[1]);
  } else {
    Kernels<T>::sin(pairs, trig[0], trig[0]);
  }
  radii(pairs, radius);
  for (int i = 0; i < pairs; ++i) {
    for (int k = 0; k < per_pair<H>; ++k) r[per_pair<H> * i + k] = (radius[i] * trig[k][i]) * sigma + a;
  }
}

// The same for any number of pairs, with the kernels' cores joined in registers. A vector that holds an element for their
// rare paths (a uniform zero, say) goes through the kernels instead; the bits are the same either way.
template <class T, Halves H>
void transform(int pairs, const T* u, T* r, T a, T sigma) {
  using V = simd::Vec<T>;
  using Trig = std::conditional_t<H == Halves::both, Both, typename Kernels<T>::Sine>;
  constexpr int lanes = simd::lanes<V>, step = lanes * per_pair<H>;
  const numeric::MxcsrGuard nearest;
  for (; pairs >= lanes; pairs -= lanes, u += 2 * lanes, r += step) {
    const V u0 = simd::load<V>(u), u1 = simd::load<V>(u + lanes);
    alignas(V) T first[lanes];
    const V uniform = simd::evens(u0, u1);
    simd::store(first, uniform);
    V ln, rho, trig[2];
    simd::Bits<V> usual_ln, usual_sqrt, usual_trig;
    tfn::Ln<Accuracy::low>::fast(uniform, first, &ln, usual_ln);
    tfn::Sqrt<Accuracy::low>::fast(minus_twice(ln), nullptr, &rho, usual_sqrt);
    Trig::fast(simd::odds(u0, u1) * Kernels<T>::two_pi, nullptr, trig, usual_trig);
    if (simd::lanes_set(usual_ln & usual_sqrt & usual_trig) != simd::all_lanes<V>) [[unlikely]] {
      by_kernels<T, H>(lanes, u, r, a, sigma);
      continue;
    }
    const V sine = (rho * trig[0]) * sigma + a;
    if constexpr (H == Halves::both) {
      const V cosine = (rho * trig[1]) * sigma + a;
      simd::store(r, simd::zip_low(sine, cosine));
      simd::store(r + lanes, simd::zip_high(sine, cosine));
    } else {
      simd::store(r, sine);
    }
  }
  if (pairs > 0) by_kernels<T, H>(pairs, u, r, a, sigma);
}

// A pair kept for the next call, (u1, u2) as the engine gave them; none: u1 is -1.
template <class T>
struct Pending {
  T u[2] = {T(-1), T(-1)};
  bool empty() const { return u[0] == T(-1); }
};

// The stream's pending pair, made on the first call; null without memory for it, `status` says which.
template <class T>
Pending<T>* pending_pair(Stream* stream, int& status) {
  constexpr std::uint32_t key = Kernels<T>::pending_key;
  if (void* found = search_chunk(stream, key)) return static_cast<Pending<T>*>(found);
  auto fresh = Owned<Pending<T>>::allocate(sizeof(Pending<T>));
  if (!fresh) {
    status = status::no_memory;
    return nullptr;
  }
  *fresh.get() = {};
  status = add_chunk(stream, key, fresh.get(), sizeof(Pending<T>));
  return status < 0 ? nullptr : fresh.release();
}

// sqrt(-2 ln u1) cos(2 pi u2) of a single pair, scaled. Stored, not returned: the guard orders memory alone.
template <class T>
void cosine_half(const Pending<T>& pair, T a, T sigma, T* out) {
  const numeric::MxcsrGuard nearest;
  T radius = pair.u[0], angle = pair.u[1] * Kernels<T>::two_pi;
  Kernels<T>::cos(1, &angle, &angle);
  radii(1, &radius);
  *out = (radius * angle) * sigma + a;
}

}  // namespace

template <class T>
int box_muller(Stream* stream, int n, T* r, T a, T sigma) {
  const ModeGuard guard(ln_callback<T>);
  alignas(16) T u[2 * block];
  int status = status::ok;
  for (int m; n > 0; n -= m, r += m) {
    m = std::min(n, block);
    status = uniform(0, stream, 2 * m, u, T(0), T(1));
    if (status < 0) return status;
    transform<T, Halves::sine>(m, u, r, a, sigma);
  }
  return status;
}

template <class T>
int box_muller2(Stream* stream, int n, T* r, T a, T sigma) {
  if (n < 1) return status::ok;
  const ModeGuard guard(ln_callback<T>);
  int status = status::ok;
  Pending<T>* const pending = pending_pair<T>(stream, status);
  if (pending == nullptr) return status;

  // The pending pair is given up only when the request succeeds: an engine that fails half-way leaves it in place.
  int j = 0;
  if (!pending->empty()) cosine_half(*pending, a, sigma, r + j++);

  alignas(16) T u[block];
  for (int pairs; (pairs = std::min(n - j, block) / 2) > 0; j += 2 * pairs) {
    status = uniform(0, stream, 2 * pairs, u, T(0), T(1));
    if (status < 0) return status;
    transform<T, Halves::both>(pairs, u, r + j, a, sigma);
  }
  Pending<T> kept;
  if (j < n) {
    status = uniform(0, stream, 2, kept.u, T(0), T(1));
    if (status < 0) return status;
    by_kernels<T, Halves::sine>(1, kept.u, r + j, a, sigma);
  }
  *pending = kept;
  return status;
}

template int box_muller<double>(Stream*, int, double*, double, double);
template int box_muller<float>(Stream*, int, float*, float, float);
template int box_muller2<double>(Stream*, int, double*, double, double);
template int box_muller2<float>(Stream*, int, float*, float, float);

}  // namespace qor::rng
