// Exported packing and unpacking: translation only.
#include "base/target.h"
#include "qor/tfn.h"
#include "tfn/pack.h"

using namespace qor;

#define PACKING(letter, T)                                                                                          \
  QOR_ENTRY void _tfn##letter##PackI(int n, const T* a, int inca, T* y) { tfn::pack_strided(n, a, inca, y); }       \
  QOR_ENTRY void _tfn##letter##PackM(int n, const T* a, const int* mask, T* y) { tfn::pack_masked(n, a, mask, y); } \
  QOR_ENTRY void _tfn##letter##PackV(int n, const T* a, const int* ia, T* y) { tfn::pack_indexed(n, a, ia, y); }    \
  QOR_ENTRY void _tfn##letter##UnpackI(int n, const T* a, T* y, int incy) { tfn::unpack_strided(n, a, y, incy); }   \
  QOR_ENTRY void _tfn##letter##UnpackM(int n, const T* a, T* y, const int* mask) {                                  \
    tfn::unpack_masked(n, a, y, mask);                                                                              \
  }                                                                                                                 \
  QOR_ENTRY void _tfn##letter##UnpackV(int n, const T* a, T* y, const int* iy) { tfn::unpack_indexed(n, a, y, iy); }
PACKING(s, float)
PACKING(d, double)
