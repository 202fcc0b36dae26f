// Two good parts: dSFMT's uniform numbers through SLEEF's functions of 3.5 ulp (1 ulp where there are no others), in
// blocks that stay in the first-level cache; and G. Marsaglia's and W. W. Tsang's Gamma loop over Boost's ziggurat.
#define DSFMT_MEXP 19937
#define HAVE_SSE2 1
#include <dSFMT.h>

#include <boost/random/normal_distribution.hpp>
#include <cmath>

#include "harness.h"
#include "opponents/sleef.h"
#include "opponents/variates.h"

namespace bench {
namespace {

constexpr int block = 1000;  // uniform numbers; the generator makes 382 at least

dsfmt_t& state() {
  static dsfmt_t s;
  static const bool ready = (dsfmt_init_gen_rand(&s, 1), true);
  static_cast<void>(ready);
  return s;
}
// block numbers of (0, 1].
const double* uniforms() {
  alignas(16) static double u[block];
  dsfmt_fill_array_open_close(&state(), u, block);
  return u;
}

template <class F>
void map_uniforms(int n, double* r, F f) {
  for (int i = 0; i < n; i += block) {
    const double* const u = uniforms();
    const int m = n - i < block ? n - i : block;
    for (int j = 0; j < m; j += 2) store(r + i + j, f(load(u + j)));
  }
}
inline __m128d minus_log(__m128d u) { return _mm_sub_pd(_mm_setzero_pd(), Sleef_logd2_u35sse2(u)); }
void exponential(int n, double* r) { map_uniforms(n, r, minus_log); }
void rayleigh(int n, double* r) {
  map_uniforms(n, r, [](__m128d u) { return _mm_sqrt_pd(minus_log(u)); });
}
void gumbel(int n, double* r) {
  map_uniforms(n, r, [](__m128d u) { return Sleef_logd2_u35sse2(minus_log(u)); });
}
void weibull(int n, double* r) {
  map_uniforms(n, r, [](__m128d u) { return Sleef_powd2_u10sse2(minus_log(u), _mm_set1_pd(1 / 1.5)); });
}
void cauchy(int n, double* r) {
  map_uniforms(n, r, [](__m128d u) {
    const __m128d angle = _mm_mul_pd(_mm_sub_pd(u, _mm_set1_pd(0.5)), _mm_set1_pd(3.141592653589793));
    return Sleef_tand2_u35sse2(angle);
  });
}
void lognormal(int n, double* r) {
  for (int i = 0; i < n; i += block) {
    const double* const u = uniforms();
    const int m = n - i < block ? n - i : block, half = m / 2;
    for (int j = 0; j < half; j += 2) {
      const __m128d d = _mm_sqrt_pd(_mm_mul_pd(minus_log(load(u + j)), _mm_set1_pd(2)));
      const auto v = Sleef_sincospid2_u35sse2(_mm_mul_pd(load(u + block / 2 + j), _mm_set1_pd(2)));
      store(r + i + j, Sleef_expd2_u10sse2(_mm_mul_pd(d, v.x)));
      store(r + i + half + j, Sleef_expd2_u10sse2(_mm_mul_pd(d, v.y)));
    }
  }
}

// dSFMT as a generator for Boost's distributions: 32 bits a call, which its ziggurat asks for twice, and uniform
// numbers.
struct Engine {
  using result_type = std::uint32_t;
  static constexpr result_type min() { return 0; }
  static constexpr result_type max() { return 0xFFFFFFFF; }
  result_type operator()() { return dsfmt_genrand_uint32(&state()); }
};
template <int shape>
void gamma(int n, double* r) {
  static boost::random::normal_distribution<double> normal;
  Engine engine;
  constexpr double alpha = shape / thousandth, raised = alpha < 1 ? alpha + 1 : alpha, d = raised - 1.0 / 3;
  const double c = 1 / std::sqrt(9 * d);
  for (int i = 0; i < n; ++i) {
    for (;;) {
      const double x = normal(engine), w = 1 + c * x;
      if (w <= 0) continue;
      const double v = w * w * w, u = dsfmt_genrand_open_close(&state());
      if (u < 1 - 0.0331 * (x * x) * (x * x) || std::log(u) < 0.5 * x * x + d * (1 - v + std::log(v))) {
        r[i] = d * v;
        break;
      }
    }
    if constexpr (alpha < 1) r[i] *= std::pow(dsfmt_genrand_open_close(&state()), 1 / alpha);
  }
}

constexpr const char* name = "dSFMT + sleef u35";
const Add here{DrawPeer<double>{"Exponential", name, false, exponential},
               DrawPeer<double>{"Rayleigh", name, false, rayleigh},
               DrawPeer<double>{"Gumbel", name, false, gumbel},
               DrawPeer<double>{"Weibull", "dSFMT + sleef u10", false, weibull},
               DrawPeer<double>{"Cauchy", name, false, cauchy},
               DrawPeer<double>{"Lognormal", name, false, lognormal},
               DrawPeer<double>{"Gamma(2.5)", "ziggurat + Marsaglia-Tsang", false, gamma<2500>},
               DrawPeer<double>{"Gamma(0.4)", "ziggurat + Marsaglia-Tsang", false, gamma<400>}};

}  // namespace
}  // namespace bench
