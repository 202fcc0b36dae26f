#include "rng/distributions/gaussian.h"

#include <algorithm>

#include "base/owned.h"
#include "numeric/mxcsr.h"
#include "rng/distributions/mode_guard.h"
#include "rng/distributions/uniform.h"
#include "rng/streams/status.h"
#include "simd/vec.h"
#include "tfn/kernels.h"
#include "tfn/map.h"
#include "tfn/sqrt.h"

namespace qor::rng {
namespace {

// The kernels of each precision: the low accuracy, but for the double sine and cosine that stand alone.
template <class T>
struct Kernels;
template <>
struct Kernels<double> {
  static constexpr auto ln = tfn::dLn_50, sin = tfn::dSin_HA, cos = tfn::dCos_HA;
  static constexpr auto sin_cos = tfn::dSinCos_50;
  static constexpr const char* sqrt_name = "_tfndSqrt_50";
  static constexpr double two_pi = 6.283185307179586;
  static constexpr std::uint32_t pending_key = 2;
};
template <>
struct Kernels<float> {
  static constexpr auto ln = tfn::sLn_21, sin = tfn::sSin_21, cos = tfn::sCos_21;
  static constexpr auto sin_cos = tfn::sSinCos_21;
  static constexpr const char* sqrt_name = "_tfnsSqrt_21";
  static constexpr float two_pi = 6.2831855f;
  static constexpr std::uint32_t pending_key = 1;
};

// sqrt(0 - (x + x)) in one pass, the low square root.
struct RootOfMinusTwice : tfn::Sqrt<tfn::Accuracy::low> {
  using Root = tfn::Sqrt<tfn::Accuracy::low>;
  static constexpr double filler = -1;
  template <class T>
  QOR_INLINE static T minus_twice(T x) {
    return 0 - (x + x);
  }
  QOR_INLINE static auto begin(simd::VecD x) { return Root::begin(minus_twice(x)); }
  template <class V, class B>
  QOR_INLINE static void fast(V x, const simd::lane_t<V>* at, V* y, B& usual) {
    Root::fast(minus_twice(x), at, y, usual);
  }
  template <class T>
  static int element(T x, T* y) {
    return Root::element(minus_twice(x), y);
  }
};

constexpr int block = 1024;  // uniform numbers are drawn for so many variates at a time

// What is made of a pair of uniform numbers: the sine half, the cosine half, or both next to each other.
enum class Halves { sine, cosine, both };

// The variates of n <= block pairs. Pass by pass, each short enough for the processor to overlap many elements: one
// loop with everything in it is a third slower.
template <class T, Halves H>
void transform(int n, const T* u, T* r, T a, T sigma) {
  using V = simd::Vec<T>;
  constexpr int lanes = simd::lanes<V>, per_pair = H == Halves::both ? 2 : 1;
  constexpr T two_pi = Kernels<T>::two_pi;
  constexpr int most = H == Halves::both ? block / 2 : block;
  alignas(16) T radius[most], trig[per_pair][most];
  const numeric::MxcsrGuard nearest;

  int i = 0;
  for (; i <= n - lanes; i += lanes) {
    const V u0 = simd::load<V>(u + 2 * i), u1 = simd::load<V>(u + 2 * i + lanes);
    simd::store(radius + i, simd::evens(u0, u1));
    simd::store(trig[0] + i, simd::odds(u0, u1) * two_pi);
  }
  for (; i < n; ++i) {
    radius[i] = u[2 * i];
    trig[0][i] = u[2 * i + 1] * two_pi;
  }
  if constexpr (H == Halves::both) {
    Kernels<T>::sin_cos(n, trig[0], trig[0], trig[1]);
  } else if constexpr (H == Halves::cosine) {
    Kernels<T>::cos(n, trig[0], trig[0]);
  } else {
    Kernels<T>::sin(n, trig[0], trig[0]);
  }
  Kernels<T>::ln(n, radius, radius);
  tfn::map<RootOfMinusTwice>(Kernels<T>::sqrt_name, n, radius, radius);

  for (i = 0; i <= n - lanes; i += lanes) {
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

// A pair kept for the next call, (u1, u2) as the engine gave them; none: u1 is -1.
template <class T>
struct Pending {
  T u[2] = {T(-1), T(-1)};
  bool empty() const { return u[0] == T(-1); }
};

// The stream's pending pair (a chunk of its key and another size, as a file may bring along, is none), made on the
// first call; null without memory for it, `status` says which.
template <class T>
Pending<T>* pending_pair(Stream* stream, int& status) {
  constexpr std::uint32_t key = Kernels<T>::pending_key;
  if (void* found = search_chunk(stream, key, sizeof(Pending<T>))) return static_cast<Pending<T>*>(found);
  auto fresh = Owned<Pending<T>>::allocate(sizeof(Pending<T>));
  if (!fresh) {
    status = status::no_memory;
    return nullptr;
  }
  *fresh.get() = {};
  status = add_chunk(stream, key, fresh.get(), sizeof(Pending<T>));
  return status < 0 ? nullptr : fresh.release();
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
