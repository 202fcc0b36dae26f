// SLEEF, its SSE2 functions: u05 to u15 for the high accuracy, u35 for the low one.
#include "opponents/sleef.h"

#include "harness.h"

namespace bench {
namespace {

template <class T, auto f>
void map(int n, const T* a, const T*, T* r, T*) {
  for (int i = 0; i < n; i += lanes<T>) store(r + i, f(load(a + i)));
}
template <class T, auto f>
void map_inverse(int n, const T* a, const T*, T* r, T*) {
  for (int i = 0; i < n; i += lanes<T>) store(r + i, T(1) / f(load(a + i)));
}
template <class T, auto f>
void map_pair(int n, const T* a, const T*, T* r, T* r2) {
  for (int i = 0; i < n; i += lanes<T>) {
    const auto v = f(load(a + i));
    store(r + i, v.x);
    store(r2 + i, v.y);
  }
}
template <class T, auto f>
void map_two(int n, const T* a, const T* b, T* r, T*) {
  for (int i = 0; i < n; i += lanes<T>) store(r + i, f(load(a + i), load(b + i)));
}

#define QOR_SLEEF(map, Function, name, level)                                                    \
  Add(MathPeer<double>{#Function, "sleef " #level, map<double, Sleef_##name##d2_##level##sse2>}, \
      MathPeer<float>{#Function, "sleef " #level, map<float, Sleef_##name##f4_##level##sse2>})
#define QOR_SLEEF_EXACT(Function, name)                                         \
  Add(MathPeer<double>{#Function, "sleef", map<double, Sleef_##name##d2_sse2>}, \
      MathPeer<float>{#Function, "sleef", map<float, Sleef_##name##f4_sse2>})
const Add here[] = {
    QOR_SLEEF(map, Exp, exp, u10),
    QOR_SLEEF(map, Ln, log, u10),
    QOR_SLEEF(map, Ln, log, u35),
    QOR_SLEEF(map, Log10, log10, u10),
    QOR_SLEEF(map, Sqrt, sqrt, u05),
    QOR_SLEEF(map, Sqrt, sqrt, u35),
    QOR_SLEEF(map_inverse, InvSqrt, sqrt, u05),
    QOR_SLEEF(map_inverse, InvSqrt, sqrt, u35),
    QOR_SLEEF(map, Cbrt, cbrt, u10),
    QOR_SLEEF(map, Cbrt, cbrt, u35),
    QOR_SLEEF(map_inverse, InvCbrt, cbrt, u10),
    QOR_SLEEF(map_inverse, InvCbrt, cbrt, u35),
    QOR_SLEEF(map, Sin, sin, u10),
    QOR_SLEEF(map, Sin, sin, u35),
    QOR_SLEEF(map, Cos, cos, u10),
    QOR_SLEEF(map, Cos, cos, u35),
    QOR_SLEEF(map_pair, SinCos, sincos, u10),
    QOR_SLEEF(map_pair, SinCos, sincos, u35),
    QOR_SLEEF(map, Tan, tan, u10),
    QOR_SLEEF(map, Tan, tan, u35),
    QOR_SLEEF(map, Asin, asin, u10),
    QOR_SLEEF(map, Asin, asin, u35),
    QOR_SLEEF(map, Acos, acos, u10),
    QOR_SLEEF(map, Acos, acos, u35),
    QOR_SLEEF(map, Atan, atan, u10),
    QOR_SLEEF(map, Atan, atan, u35),
    QOR_SLEEF(map_two, Atan2, atan2, u10),
    QOR_SLEEF(map_two, Atan2, atan2, u35),
    QOR_SLEEF(map, Sinh, sinh, u10),
    QOR_SLEEF(map, Sinh, sinh, u35),
    QOR_SLEEF(map, Cosh, cosh, u10),
    QOR_SLEEF(map, Cosh, cosh, u35),
    QOR_SLEEF(map, Tanh, tanh, u10),
    QOR_SLEEF(map, Tanh, tanh, u35),
    QOR_SLEEF(map, Asinh, asinh, u10),
    QOR_SLEEF(map, Acosh, acosh, u10),
    QOR_SLEEF(map, Atanh, atanh, u10),
    QOR_SLEEF(map_two, Pow, pow, u10),
    QOR_SLEEF(map_two, Powx, pow, u10),
    QOR_SLEEF(map_two, Hypot, hypot, u05),
    QOR_SLEEF(map_two, Hypot, hypot, u35),
    QOR_SLEEF(map, Erf, erf, u10),
    QOR_SLEEF(map, Erfc, erfc, u15),
    QOR_SLEEF_EXACT(Floor, floor),
    QOR_SLEEF_EXACT(Ceil, ceil),
    QOR_SLEEF_EXACT(Trunc, trunc),
    QOR_SLEEF_EXACT(Round, round),
    QOR_SLEEF_EXACT(Rint, rint),
};

}  // namespace
}  // namespace bench
