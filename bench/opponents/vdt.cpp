// VDT's functions in loops that the compiler vectorises.
#include <vdt/vdtMath.h>

#include "harness.h"

namespace bench {
namespace {

template <class T, auto f>
void map(int n, const T* a, T* r, T*) {
  for (int i = 0; i < n; ++i) r[i] = f(a[i]);
}
template <class T, auto f>
void map2(int n, const T* a, T* r, T* r2) {
  for (int i = 0; i < n; ++i) f(a[i], r[i], r2[i]);
}

const Add here{MathPeer<double>{"Ln", "vdt", 0.85, map<double, vdt::fast_log>},
               MathPeer<double>{"Sin", "vdt", 1.55, map<double, vdt::fast_sin>},
               MathPeer<double>{"Cos", "vdt", 1.55, map<double, vdt::fast_cos>},
               MathPeer<double>{"SinCos", "vdt", 1.55, map2<double, vdt::fast_sincos>},
               MathPeer<float>{"Ln", "vdt", 0.85, map<float, vdt::fast_logf>},
               MathPeer<float>{"Sin", "vdt", 13.8, map<float, vdt::fast_sinf>},
               MathPeer<float>{"Cos", "vdt", 13.8, map<float, vdt::fast_cosf>},
               MathPeer<float>{"SinCos", "vdt", 13.8, map2<float, vdt::fast_sincosf>}};

}  // namespace
}  // namespace bench
