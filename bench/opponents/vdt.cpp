// VDT's functions in loops that the compiler vectorises.
#include <vdt/vdtMath.h>

#include "harness.h"

namespace bench {
namespace {

template <class T, auto f>
void map(int n, const T* a, const T*, T* r, T*) {
  for (int i = 0; i < n; ++i) r[i] = f(a[i]);
}
template <class T, auto f>
void map_two(int n, const T* a, const T* b, T* r, T*) {
  for (int i = 0; i < n; ++i) r[i] = f(a[i], b[i]);
}
template <class T, auto f>
void map_pair(int n, const T* a, const T*, T* r, T* r2) {
  for (int i = 0; i < n; ++i) f(a[i], r[i], r2[i]);
}

#define QOR_VDT(map, Function, name)                                     \
  Add(MathPeer<double>{#Function, "vdt", map<double, vdt::fast_##name>}, \
      MathPeer<float>{#Function, "vdt", map<float, vdt::fast_##name##f>})
const Add here[] = {QOR_VDT(map, Exp, exp),
                    QOR_VDT(map, Ln, log),
                    QOR_VDT(map, InvSqrt, isqrt),
                    QOR_VDT(map, Inv, inv),
                    QOR_VDT(map, Sin, sin),
                    QOR_VDT(map, Cos, cos),
                    QOR_VDT(map_pair, SinCos, sincos),
                    QOR_VDT(map, Tan, tan),
                    QOR_VDT(map, Asin, asin),
                    QOR_VDT(map, Acos, acos),
                    QOR_VDT(map, Atan, atan),
                    QOR_VDT(map_two, Atan2, atan2)};

}  // namespace
}  // namespace bench
