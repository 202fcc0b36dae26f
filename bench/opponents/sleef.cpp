// SLEEF, its SSE2 functions of 1.0 ulp (u10; square root u05) and 3.5 ulp (u35).
#include "opponents/sleef.h"

#include "harness.h"

namespace bench {
namespace {

template <class T, auto f>
void map(int n, const T* a, T* r, T*) {
  for (int i = 0; i < n; i += lanes<T>) store(r + i, f(load(a + i)));
}
template <class T, auto f>
void map2(int n, const T* a, T* r, T* r2) {
  for (int i = 0; i < n; i += lanes<T>) {
    const auto v = f(load(a + i));
    store(r + i, v.x);
    store(r2 + i, v.y);
  }
}

using D = MathPeer<double>;
const Add doubles{D{"Ln", "sleef u10", 0.75, map<double, Sleef_logd2_u10sse2>},
                  D{"Ln", "sleef u35", 2.3, map<double, Sleef_logd2_u35sse2>},
                  D{"Sqrt", "sleef u05", 0.5, map<double, Sleef_sqrtd2_u05sse2>},
                  D{"Sqrt", "sleef u35", 0.5, map<double, Sleef_sqrtd2_u35sse2>},
                  D{"Sin", "sleef u10", 0.75, map<double, Sleef_sind2_u10sse2>},
                  D{"Sin", "sleef u35", 1.75, map<double, Sleef_sind2_u35sse2>},
                  D{"Cos", "sleef u10", 0.75, map<double, Sleef_cosd2_u10sse2>},
                  D{"Cos", "sleef u35", 1.8, map<double, Sleef_cosd2_u35sse2>},
                  D{"SinCos", "sleef u10", 0.9, map2<double, Sleef_sincosd2_u10sse2>},
                  D{"SinCos", "sleef u35", 1.45, map2<double, Sleef_sincosd2_u35sse2>},
                  D{"Sin large", "sleef u10", 0.85, map<double, Sleef_sind2_u10sse2>},
                  D{"Sin large", "sleef u35", 2.35, map<double, Sleef_sind2_u35sse2>}};
using S = MathPeer<float>;
const Add singles{S{"Ln", "sleef u10", 0.6, map<float, Sleef_logf4_u10sse2>},
                  S{"Ln", "sleef u35", 2.8, map<float, Sleef_logf4_u35sse2>},
                  S{"Sqrt", "sleef u05", 0.5, map<float, Sleef_sqrtf4_u05sse2>},
                  S{"Sqrt", "sleef u35", 0.5, map<float, Sleef_sqrtf4_u35sse2>},
                  S{"Sin", "sleef u10", 0.8, map<float, Sleef_sinf4_u10sse2>},
                  S{"Sin", "sleef u35", 2.1, map<float, Sleef_sinf4_u35sse2>},
                  S{"Cos", "sleef u10", 0.9, map<float, Sleef_cosf4_u10sse2>},
                  S{"Cos", "sleef u35", 2.35, map<float, Sleef_cosf4_u35sse2>},
                  S{"SinCos", "sleef u10", 0.85, map2<float, Sleef_sincosf4_u10sse2>},
                  S{"SinCos", "sleef u35", 2.4, map2<float, Sleef_sincosf4_u35sse2>},
                  S{"Sin large", "sleef u10", 0.85, map<float, Sleef_sinf4_u10sse2>},
                  S{"Sin large", "sleef u35", 1.8, map<float, Sleef_sinf4_u35sse2>}};

}  // namespace
}  // namespace bench
