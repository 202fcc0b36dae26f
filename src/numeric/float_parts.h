// The parts of floating-point numbers, as integers.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "simd/vec.h"

namespace qor::numeric {

// 2^e, a normal number.
constexpr double power_of_two(int e) { return std::bit_cast<double>(std::uint64_t(1023 + e) << 52); }

// The word with sign, exponent and leading fraction bits of a number in memory.
template <class T>
QOR_INLINE std::uint32_t high_word(const T* p) {
  std::uint32_t h;
  std::memcpy(&h, reinterpret_cast<const char*>(p) + sizeof(T) - 4, sizeof h);
  return h;
}

// The lanes that are positive, normal and finite, by their high words as signed integers: adding one exponent step
// turns infinities and NaNs negative, and what is subnormal or negative stays below two steps.
template <class V>
QOR_INLINE simd::Bits<V> normal_range(V x) {
  using namespace simd;
  using Words = Ints<VecF>;
  constexpr int step = sizeof(lane_t<V>) == 8 ? 0x00100000 : 0x00800000;
  return as<Bits<V>>(as<Words>(as<VecU32>(x) + splat<VecU32>(step)) > splat<Words>(2 * step - 1));
}

// v rounded towards zero to half its bits, 26 or 12: the product of two such is exact, as is that of one with what the
// other half leaves, 27 or 12 bits.
template <class V>
QOR_INLINE V upper_half(V v) {
  constexpr bool wide = sizeof(simd::lane_t<V>) == 8;
  using Word = simd::lane_t<simd::Bits<V>>;
  return simd::as<V>(simd::bits(v) & simd::splat<simd::Bits<V>>(wide ? Word(0xFFFFFFFFF8000000) : Word(0xFFFFF000)));
}

// The lanes whose words, as unsigned integers, are from `first` to less than `past`, at most 2^31 of them. Both this
// and the next compare with `greater than` and a positive number, which costs the compiler no further instruction.
QOR_INLINE simd::VecU32 words_between(simd::VecU32 w, std::uint32_t first, std::uint32_t past) {
  using namespace simd;
  using Words = Ints<VecF>;
  const VecU32 up = w + splat<VecU32>(0x80000000 - past);
  return as<VecU32>(as<Words>(up) > splat<Words>(static_cast<std::int32_t>(0x7FFFFFFF - (past - first))));
}

// The lanes of either sign that are normal and finite, without the least of them: twice the high word, as a signed
// integer, is near 0 for all others.
template <class V>
QOR_INLINE simd::Bits<V> normal_magnitude(V x) {
  using namespace simd;
  using Words = Ints<VecF>;
  constexpr int step = sizeof(lane_t<V>) == 8 ? 0x00200000 : 0x01000000;
  const VecU32 w = as<VecU32>(x);
  return as<Bits<V>>(as<Words>(abs_words(w + w)) > splat<Words>(step));
}

}  // namespace qor::numeric
