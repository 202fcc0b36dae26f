#include "rng/distributions/gaussian.h"

#include <algorithm>

#include "rng/distributions/kernels.h"
#include "rng/distributions/loops.h"
#include "rng/distributions/mode_guard.h"
#include "rng/distributions/pending.h"
#include "rng/distributions/uniform.h"
#include "rng/streams/status.h"

namespace qor::rng {
namespace {

constexpr int block = 1024;  // uniform numbers are drawn for so many variates at a time

// What is made of a pair of uniform numbers: the sine half, the cosine half, or both next to each other.
enum class Halves { sine, cosine, both };

// The variates of n <= block pairs. Pass by pass, each short enough for the processor to overlap many elements: one
// loop with everything in it is a third slower.
template <class T, Halves H>
void transform(int n, const T* u, T* r, T a, T sigma) {
  using V = simd::Vec<T>;
  constexpr int lanes = simd::lanes<V>, per_pair = H == Halves::both ? 2 : 1;
  constexpr T two_pi = 2 * Kernels<T>::pi;
  constexpr int most = H == Halves::both ? block / 2 : block;
  alignas(16) T radius[most], trig[per_pair][most];
  split_pairs(n, u, radius, trig[0], two_pi);
  if constexpr (H == Halves::both) {
    Kernels<T>::sin_cos(n, trig[0], trig[0], trig[1]);
  } else if constexpr (H == Halves::cosine) {
    Kernels<T>::cos(n, trig[0], trig[0]);
  } else {
    Kernels<T>::sin(n, trig[0], trig[0]);
  }
  Kernels<T>::ln(n, radius, radius);
  tfn::map<RootOf<-2>>(Kernels<T>::sqrt_name, n, radius, radius);

  const numeric::MxcsrGuard nearest;
  int i = 0;
  for (; i <= n - lanes; i += lanes) {
    const V rho = simd::load<V>(radius + i);
    V part[per_pair];
    for (int k = 0; k < per_pair; ++k) part[k] = (rho * simd::load<V>(trig[k] + i)) * sigma + a;
    if constexpr (H == Halves::both) {
      simd::store(r + 2 * i, simd::zip_low(part[0], part[1]));
      simd::store(r + 2 * i + lanes, simd::zip_high(part[0], part[1]));
    } else {
      simd::store(r + i, part[0]);
    }
  }
  for (; i < n; ++i) {
    for (int k = 0; k < per_pair; ++k) r[per_pair * i + k] = (radius[i] * trig[k][i]) * sigma + a;
  }
}

template <class T>
constexpr std::uint32_t pending_key = sizeof(T) == 8 ? 2 : 1;

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
  Pending<T>* const pending = pending_pair<T>(stream, pending_key<T>, status);
  if (pending == nullptr) return status;

  // The pending pair is given up only when the request succeeds: an engine that fails half-way leaves it in place.
  int j = 0;
  if (!pending->empty()) transform<T, Halves::cosine>(1, pending->u, r + j++, a, sigma);

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
    transform<T, Halves::sine>(1, kept.u, r + j, a, sigma);
  }
  *pending = kept;
  return status;
}

template int box_muller<double>(Stream*, int, double*, double, double);
template int box_muller<float>(Stream*, int, float*, float, float);
template int box_muller2<double>(Stream*, int, double*, double, double);
template int box_muller2<float>(Stream*, int, float*, float, float);

}  // namespace qor::rng
