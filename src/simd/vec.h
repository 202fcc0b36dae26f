// The one vector type: a thin layer over the compiler's vector extensions. Vec<T> fills one register of the processor;
// kernels take any such type V and ask lanes<V> for its width. Operators + - * / on V are the compiler's own, lane by
// lane.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "base/target.h"

namespace qor::simd {

#if defined(__AVX2__)
inline constexpr int register_bytes = 32;
#else
inline constexpr int register_bytes = 16;
#endif

template <class T, int Bytes>
struct vector_of {
  typedef T type __attribute__((vector_size(Bytes)));
};
template <class T>
using Vec = typename vector_of<T, register_bytes>::type;

template <class V>
using lane_t = std::remove_cvref_t<decltype(std::declval<V>()[0])>;
template <class V>
inline constexpr int lanes = sizeof(V) / sizeof(lane_t<V>);
// The same shape with unsigned, or signed, integer lanes. A mask is Bits<V>: a lane is all ones or all zeros.
template <class V>
using Bits =
    typename vector_of<std::conditional_t<sizeof(lane_t<V>) == 8, std::uint64_t, std::uint32_t>, sizeof(V)>::type;
template <class V>
using Ints =
    typename vector_of<std::conditional_t<sizeof(lane_t<V>) == 8, std::int64_t, std::int32_t>, sizeof(V)>::type;

using VecF = Vec<float>;
using VecD = Vec<double>;
using VecU32 = Vec<std::uint32_t>;
using VecU64 = Vec<std::uint64_t>;

// Every lane c. (Subtracting a zero vector keeps the sign of -0.0.)
template <class V>
QOR_INLINE V splat(lane_t<V> c) {
  return c - V{};
}
template <class V, class W>
QOR_INLINE V as(W w) {
  static_assert(sizeof(V) == sizeof(W));
  return reinterpret_cast<V>(w);
}
template <class V>
QOR_INLINE Bits<V> bits(V v) {
  return as<Bits<V>>(v);
}

// Arrays of the caller may start at any address.
template <class V>
QOR_INLINE V load(const lane_t<V>* p) {
  V v;
  std::memcpy(&v, p, sizeof v);
  return v;
}
template <class V>
QOR_INLINE void store(lane_t<V>* p, V v) {
  std::memcpy(p, &v, sizeof v);
}

// Comparisons give masks. Each is cast to unsigned lanes at once: combining uncast ones falls apart into scalar code.
template <class V>
QOR_INLINE Bits<V> lt(V a, V b) {
  return as<Bits<V>>(a < b);
}
template <class V>
QOR_INLINE Bits<V> le(V a, V b) {
  return as<Bits<V>>(a <= b);
}
template <class V>
QOR_INLINE Bits<V> eq(V a, V b) {
  return as<Bits<V>>(a == b);
}
template <class V>
QOR_INLINE V select(Bits<V> m, V a, V b) {
  return as<V>((bits(a) & m) | (bits(b) & ~m));
}

template <class V>
inline constexpr lane_t<Bits<V>> sign_bit = lane_t<Bits<V>>{1} << (8 * sizeof(lane_t<V>) - 1);
template <class V>
QOR_INLINE V abs(V v) {
  return as<V>(bits(v) & (sign_bit<V> - 1));
}
template <class V>
QOR_INLINE Bits<V> sign(V v) {
  return bits(v) & sign_bit<V>;
}
template <class V>
QOR_INLINE V flip_sign(V v, Bits<V> s) {
  return as<V>(bits(v) ^ s);
}

// Lanes 2k and 2k + 1 exchanged: the parts of complex numbers.
template <class V>
QOR_INLINE V swap_pairs(V v) {
  if constexpr (lanes<V> == 2) {
    return __builtin_shufflevector(v, v, 1, 0);
  } else if constexpr (lanes<V> == 4) {
    return __builtin_shufflevector(v, v, 1, 0, 3, 2);
  } else {
    static_assert(lanes<V> == 8);
    return __builtin_shufflevector(v, v, 1, 0, 3, 2, 5, 4, 7, 6);
  }
}

// a polynomial by Horner's rule, leading coefficient first.
template <class V, class... C>
QOR_INLINE V horner(V x, lane_t<V> leading, C... rest) {
  V p = splat<V>(leading);
  ((p = p * x + splat<V>(lane_t<V>(rest))), ...);
  return p;
}

}  // namespace qor::simd

#if defined(__x86_64__) || defined(__i386__)
#include "simd/x86_128.h"
#else
#error "no primitives for this processor: add a header beside simd/x86_128.h"
#endif
