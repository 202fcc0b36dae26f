#include "rng/distributions/uniform.h"

#include <algorithm>

#include "rng/distributions/loops.h"
#include "rng/streams/status.h"

namespace qor::rng {
namespace {

using simd::splat;
using simd::Vec;
using simd::VecD;
using simd::VecU32;

template <class T>
void clamp(int n, T* r, T a, T b) {
  using V = Vec<T>;
  each(n, r, [low = splat<V>(a), high = splat<V>(b)](V v) { return simd::min(simd::max(v, low), high); });
}

template <class T>
int accurately(int status, std::uint32_t method, int n, T* r, T a, T b) {
  if (status >= 0 && (method & QOR_RNG_METHOD_ACCURATE) != 0 && n >= 1) clamp(n, r, a, b);
  return status;
}

constexpr int block = 1024;

// Floor as it has always been here: where truncation gives more than u, u - 1 is truncated instead.
VecU32 floor_words(const double* u) {
  const VecD low = simd::load<VecD>(u), high = simd::load<VecD>(u + simd::lanes<VecD>);
  const VecU32 t = simd::truncate(low, high);
  const VecD one = splat<VecD>(1);
  const auto lowered = [&](VecD v, VecD whole) { return v - simd::as<VecD>(simd::lt(v, whole) & simd::bits(one)); };
  return simd::truncate(lowered(low, simd::to_double_low(t)), lowered(high, simd::to_double_high(t)));
}

}  // namespace

int uniform(std::uint32_t method, Stream* stream, int n, double* r, double a, double b) {
  return accurately(record_of(stream).dOut(stream, n, r, a, b), method, n, r, a, b);
}
int uniform(std::uint32_t method, Stream* stream, int n, float* r, float a, float b) {
  return accurately(record_of(stream).sOut(stream, n, r, a, b), method, n, r, a, b);
}

int uniform_integers(Stream* stream, int n, std::int32_t* r, std::int32_t a, std::int32_t b) {
  constexpr int lanes = simd::lanes<VecU32>;
  alignas(16) double u[block];
  int last = status::ok;
  for (int count; n > 0; n -= count, r += count) {
    count = std::min(n, block);
    last = uniform(0, stream, count, u, a, b);
    if (last < 0) return last;
    const numeric::MxcsrGuard guard;
    const int whole = count / lanes * lanes;
    for (int i = 0; i < whole; i += lanes) {
      simd::store(reinterpret_cast<std::uint32_t*>(r + i), floor_words(u + i));
    }
    if (whole == count) continue;
    std::fill(u + count, u + whole + lanes, 0.0);
    std::uint32_t rest[lanes];
    simd::store(rest, floor_words(u + whole));
    std::copy(rest, rest + (count - whole), r + whole);
  }
  return last;
}

int uniform_bits(Stream* stream, int n, std::uint32_t* r) { return record_of(stream).iOut(stream, n, r); }

}  // namespace qor::rng
