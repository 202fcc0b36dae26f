// Exported trigonometric functions of one element: translation only.
#include "base/target.h"
#include "qor/tfn.h"
#include "tfn/trig_scalar.h"

using namespace qor;

#define SCALAR_ENTRY(letter, T, Name, suffix, element)                              \
  QOR_ENTRY void _tfn##letter##Name##_SC_##suffix(int i, const T* a, T* r, T* r2) { \
    tfn::element(i, a, r, r2, #letter #Name "_" #suffix);                           \
  }
#define SCALAR_FAMILY(letter, T, Name, element)                                              \
  QOR_ENTRY void _tfn##letter##Name##_SC(int i, const T* a, T* r, T* r2, const char* name) { \
    tfn::element(i, a, r, r2, name);                                                         \
  }                                                                                          \
  SCALAR_ENTRY(letter, T, Name, HA, element)                                                 \
  SCALAR_ENTRY(letter, T, Name, LA, element)                                                 \
  SCALAR_ENTRY(letter, T, Name, A11, element)

SCALAR_FAMILY(s, float, Sin, sin_element)
SCALAR_FAMILY(d, double, Sin, sin_element)
SCALAR_FAMILY(s, float, Cos, cos_element)
SCALAR_FAMILY(d, double, Cos, cos_element)
SCALAR_FAMILY(s, float, Tan, tan_element)
SCALAR_FAMILY(d, double, Tan, tan_element)
SCALAR_FAMILY(s, float, SinCos, sincos_element)
SCALAR_FAMILY(d, double, SinCos, sincos_element)
