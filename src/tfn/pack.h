// Copies between a dense array and a strided, masked or indexed one, in order of the elements. Elements move as bit
// patterns, but for the masked forms of doubles: those pass through an x87 register, and a signalling NaN comes out
// quiet.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "base/target.h"
#include "numeric/x87.h"

namespace qor::tfn {

template <class T>
QOR_INLINE void copy_bits(const T* from, T* to) {
  std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t> word;
  std::memcpy(&word, from, sizeof word);
  std::memcpy(to, &word, sizeof word);
}
QOR_INLINE void copy_value(const float* from, float* to) { copy_bits(from, to); }
QOR_INLINE void copy_value(const double* from, double* to) { numeric::x87_copy(from, to); }

// each(i) for i from 0 to n - 1, eight at a time.
template <class Each>
QOR_INLINE void eight_at_a_time(int n, Each each) {
  int i = 0;
  for (; i < n - 7; i += 8) {
    for (int k = 0; k < 8; ++k) each(i + k);
  }
  for (; i < n; ++i) each(i);
}

// i times the increment, in 32 bits.
QOR_INLINE int strided(int i, int increment) {
  return static_cast<int>(static_cast<std::uint32_t>(i) * static_cast<std::uint32_t>(increment));
}

template <class T>
void pack_strided(int n, const T* a, int inca, T* y) {
  eight_at_a_time(n, [=](int i) { copy_bits(a + strided(i, inca), y + i); });
}
template <class T>
void unpack_strided(int n, const T* a, T* y, int incy) {
  eight_at_a_time(n, [=](int i) { copy_bits(a + i, y + strided(i, incy)); });
}

template <class T>
void pack_indexed(int n, const T* a, const int* ia, T* y) {
  eight_at_a_time(n, [=](int i) { copy_bits(a + ia[i], y + i); });
}
template <class T>
void unpack_indexed(int n, const T* a, T* y, const int* iy) {
  eight_at_a_time(n, [=](int i) { copy_bits(a + i, y + iy[i]); });
}

// Without a branch on the mask, which no processor predicts: what is not selected is a copy between two places of no
// use, so that nothing outside the selected elements is touched.
template <class T>
void pack_masked(int n, const T* a, const int* mask, T* y) {
  const T nothing = 0;
  T nowhere;
  eight_at_a_time(n, [&](int i) {
    const bool selected = mask[i] != 0;
    copy_value(selected ? a + i : &nothing, selected ? y : &nowhere);
    y += selected;
  });
}
template <class T>
void unpack_masked(int n, const T* a, T* y, const int* mask) {
  const T nothing = 0;
  T nowhere;
  eight_at_a_time(n, [&](int i) {
    const bool selected = mask[i] != 0;
    copy_value(selected ? a : &nothing, selected ? y + i : &nowhere);
    a += selected;
  });
}

}  // namespace qor::tfn
