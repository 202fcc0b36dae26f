// SLEEF's SSE2 functions, with the vectors' loads and stores.
#pragma once

#include <emmintrin.h>
#include <sleef.h>

namespace bench {

inline __m128d load(const double* a) { return _mm_load_pd(a); }
inline __m128 load(const float* a) { return _mm_load_ps(a); }
inline void store(double* r, __m128d v) { _mm_store_pd(r, v); }
inline void store(float* r, __m128 v) { _mm_store_ps(r, v); }
template <class T>
inline constexpr int lanes = 16 / sizeof(T);

}  // namespace bench
