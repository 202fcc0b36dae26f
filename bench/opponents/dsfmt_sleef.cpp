// Box-Muller from two good parts: dSFMT's uniform numbers through SLEEF's functions of 3.5 ulp, in blocks that stay in
// the first-level cache.
#define DSFMT_MEXP 19937
#define HAVE_SSE2 1
#include <dSFMT.h>

#include "harness.h"
#include "opponents/sleef.h"

namespace bench {
namespace {

constexpr int block = 1000;  // uniform numbers; the generator makes 382 at least

inline __m128d log_v(__m128d x) { return Sleef_logd2_u35sse2(x); }
inline __m128 log_v(__m128 x) { return Sleef_logf4_u35sse2(x); }
inline __m128d sqrt_v(__m128d x) { return _mm_sqrt_pd(x); }
inline __m128 sqrt_v(__m128 x) { return _mm_sqrt_ps(x); }
inline auto sin_cos_pi(__m128d x) { return Sleef_sincospid2_u35sse2(x); }
inline auto sin_cos_pi(__m128 x) { return Sleef_sincospif4_u35sse2(x); }
inline __m128d sin_v(__m128d x) { return Sleef_sind2_u35sse2(x); }
inline __m128 sin_v(__m128 x) { return Sleef_sinf4_u35sse2(x); }
inline __m128d mul(__m128d a, double b) { return _mm_mul_pd(a, _mm_set1_pd(b)); }
inline __m128 mul(__m128 a, double b) { return _mm_mul_ps(a, _mm_set1_ps(static_cast<float>(b))); }
inline __m128d mul(__m128d a, __m128d b) { return _mm_mul_pd(a, b); }
inline __m128 mul(__m128 a, __m128 b) { return _mm_mul_ps(a, b); }
inline __m128d uniform_v(const double* u, double) { return _mm_load_pd(u); }
inline __m128 uniform_v(const double* u, float) {
  return _mm_movelh_ps(_mm_cvtpd_ps(_mm_load_pd(u)), _mm_cvtpd_ps(_mm_load_pd(u + 2)));
}

// block numbers of (0, 1].
const double* uniforms() {
  alignas(16) static double u[block];
  static dsfmt_t state;
  static const bool ready = (dsfmt_init_gen_rand(&state, 1), true);
  static_cast<void>(ready);
  dsfmt_fill_array_open_close(&state, u, block);
  return u;
}
template <class T>
inline auto radius(const double* u) {
  return sqrt_v(mul(log_v(uniform_v(u, T())), -2.0));
}

// Both halves of each pair.
template <class T>
void pairs(int n, T* r) {
  for (int i = 0; i < n; i += block) {
    const double* const u = uniforms();
    const int m = n - i < block ? n - i : block, half = m / 2;
    for (int j = 0; j < half; j += lanes<T>) {
      const auto d = radius<T>(u + j);
      const auto v = sin_cos_pi(mul(uniform_v(u + block / 2 + j, T()), 2.0));
      store(r + i + j, mul(d, v.x));
      store(r + i + half + j, mul(d, v.y));
    }
  }
}
// Two uniform numbers a variate.
template <class T>
void sines(int n, T* r) {
  for (int i = 0; i < n; i += block / 2) {
    const double* const u = uniforms();
    const int m = n - i < block / 2 ? n - i : block / 2;
    for (int j = 0; j < m; j += lanes<T>) {
      const auto v = sin_v(mul(uniform_v(u + block / 2 + j, T()), 6.283185307179586));
      store(r + i + j, mul(radius<T>(u + j), v));
    }
  }
}

const Add here{DrawPeer<double>{"Gaussian", "dSFMT + sleef u35", false, pairs<double>},
               DrawPeer<double>{"Gaussian 0", "dSFMT + sleef u35, sines only", false, sines<double>},
               DrawPeer<float>{"Gaussian", "dSFMT + sleef u35", false, pairs<float>},
               DrawPeer<float>{"Gaussian 0", "dSFMT + sleef u35, sines only", false, sines<float>}};

}  // namespace
}  // namespace bench
