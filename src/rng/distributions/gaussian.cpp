#include "rng/distributions/gaussian.h"

#include <algorithm>

#include "base/owned.h"
#include "numeric/mxcsr.h"
#include "rng/distributions/mode_guard.h"
#include "rng/distributions/uniform.h"
#include "rng/streams/status.h"
#include "simd/vec.h"
#include "tfn/kernels.h"

namespace qor::rng {
namespace {

// The kernels of each precision: the low accuracy, but for the double sine and cosine that stand alone.
template <class T>
struct Kernels;
template <>
struct Kernels<double> {
  static constexpr auto sin = tfn::dSin_HA, cos = tfn::dCos_HA;
  static constexpr auto sin_cos = tfn::dSinCos_50;
  static constexpr auto ln = tfn::dLn_50, sqrt = tfn::dSqrt_50;
  static constexpr double two_pi = 6.283185307179586;
  static constexpr std::uint32_t pending_key = 2;
};
template <>
struct Kernels<float> {
  static constexpr auto sin = tfn::sSin_21, cos = tfn::sCos_21;
  static constexpr auto sin_cos = tfn::sSinCos_21;
  static constexpr auto ln = tfn::sLn_21, sqrt = tfn::sSqrt_21;
  static constexpr float two_pi = 6.2831855f;
  static constexpr std::uint32_t pending_key = 1;
};

constexpr int block = 1024;

// Whole vectors of n elements, then single ones: `vectors` handles the elements from i on, `singles` element i.
template <int Lanes, class Vectors, class Singles>
QOR_INLINE void each(int n, Vectors vectors, Singles singles) {
  int i = 0;
  for (; i <= n - Lanes; i += Lanes) vectors(i);
  for (; i < n; ++i) singles(i);
}

// Pairs of uniform numbers: the first ones make radii, the second ones angles.
template <class T>
void split_pairs(int pairs, const T* u, T* radius, T* angle) {
  using V = simd::Vec<T>;
  constexpr T two_pi = Kernels<T>::two_pi;
  const numeric::MxcsrGuard guard;
  each<simd::lanes<V>>(
      pairs,
      [&](int i) {
        const V u0 = simd::load<V>(u + 2 * i), u1 = simd::load<V>(u + 2 * i + simd::lanes<V>);
        simd::store(radius + i, simd::evens(u0, u1));
        simd::store(angle + i, simd::odds(u0, u1) * two_pi);
      },
      [&](int i) {
        radius[i] = u[2 * i];
        angle[i] = u[2 * i + 1] * two_pi;
      });
}

// radius = sqrt(-2 ln u) in place.
template <class T>
void radii(int n, T* u) {
  using V = simd::Vec<T>;
  Kernels<T>::ln(n, u, u);
  {
    const numeric::MxcsrGuard guard;
    const auto minus_twice = [](auto x) { return 0 - (x + x); };
    each<simd::lanes<V>>(
        n, [&](int i) { simd::store(u + i, minus_twice(simd::load<V>(u + i))); },
        [&](int i) { u[i] = minus_twice(u[i]); });
  }
  Kernels<T>::sqrt(n, u, u);
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

// sqrt(-2 ln u1) trig(2 pi u2) of a single pair, scaled. Stored, not returned: the guard orders memory alone.
template <class T, class Kernel>
QOR_INLINE void half_of_pair(const Pending<T>& pair, Kernel trig, T a, T sigma, T* out) {
  T radius, angle;
  split_pairs(1, pair.u, &radius, &angle);
  trig(1, &angle, &angle);
  radii(1, &radius);
  const numeric::MxcsrGuard nearest;
  *out = (radius * angle) * sigma + a;
}

}  // namespace

template <class T>
int box_muller(Stream* stream, int n, T* r, T a, T sigma) {
  using V = simd::Vec<T>;
  const ModeGuard guard(ln_callback<T>);
  alignas(16) T u[2 * block], radius[block], angle[block];
  int status = status::ok;
  for (int m; n > 0; n -= m, r += m) {
    m = std::min(n, block);
    status = uniform(0, stream, 2 * m, u, T(0), T(1));
    if (status < 0) return status;
    split_pairs(m, u, radius, angle);
    Kernels<T>::sin(m, angle, angle);
    radii(m, radius);
    const numeric::MxcsrGuard nearest;
    each<simd::lanes<V>>(
        m, [&](int i) { simd::store(r + i, (simd::load<V>(radius + i) * simd::load<V>(angle + i)) * sigma + a); },
        [&](int i) { r[i] = (radius[i] * angle[i]) * sigma + a; });
  }
  return status;
}

template <class T>
int box_muller2(Stream* stream, int n, T* r, T a, T sigma) {
  using V = simd::Vec<T>;
  if (n < 1) return status::ok;
  const ModeGuard guard(ln_callback<T>);
  int status = status::ok;
  Pending<T>* const pending = pending_pair<T>(stream, status);
  if (pending == nullptr) return status;

  // The pending pair is given up only when the request succeeds: an engine that fails half-way leaves it in place.
  int j = 0;
  if (!pending->empty()) half_of_pair(*pending, Kernels<T>::cos, a, sigma, r + j++);

  alignas(16) T u[block], radius[block / 2], sine[block / 2], cosine[block / 2];
  for (int pairs; (pairs = std::min(n - j, block) / 2) > 0; j += 2 * pairs) {
    status = uniform(0, stream, 2 * pairs, u, T(0), T(1));
    if (status < 0) return status;
    split_pairs(pairs, u, radius, sine);
    Kernels<T>::sin_cos(pairs, sine, sine, cosine);
    radii(pairs, radius);
    const numeric::MxcsrGuard nearest;
    T* const out = r + j;
    each<simd::lanes<V>>(
        pairs,
        [&](int i) {
          const V rho = simd::load<V>(radius + i);
          const V s = (rho * simd::load<V>(sine + i)) * sigma + a, c = (rho * simd::load<V>(cosine + i)) * sigma + a;
          simd::store(out + 2 * i, simd::zip_low(s, c));
          simd::store(out + 2 * i + simd::lanes<V>, simd::zip_high(s, c));
        },
        [&](int i) {
          out[2 * i] = (radius[i] * sine[i]) * sigma + a;
          out[2 * i + 1] = (radius[i] * cosine[i]) * sigma + a;
        });
  }
  Pending<T> kept;
  if (j < n) {
    status = uniform(0, stream, 2, kept.u, T(0), T(1));
    if (status < 0) return status;
    half_of_pair(kept, Kernels<T>::sin, a, sigma, r + j);
  }
  *pending = kept;
  return status;
}

template int box_muller<double>(Stream*, int, double*, double, double);
template int box_muller<float>(Stream*, int, float*, float, float);
template int box_muller2<double>(Stream*, int, double*, double, double);
template int box_muller2<float>(Stream*, int, float*, float, float);

}  // namespace qor::rng
