// One line of functions.def becomes the four entries of a complex function.
#pragma once

#include "base/target.h"
#include "qor/tfn.h"
#include "tfn/complex_map.h"

// A member of one argument; of two; of an argument and a scalar.
#define TFN_COMPLEX_MEMBER(letter, T, Scalar, Name, suffix, level)                              \
  QOR_ENTRY void _tfn##letter##Name##_##suffix(int n, const T* a, T* r) {                       \
    using namespace qor::tfn;                                                                   \
    complex::map<complex::Name<T, Accuracy::level>>("_tfn" #letter #Name "_" #suffix, n, a, r); \
  }
#define TFN_COMPLEX_BINARY_MEMBER(letter, T, Scalar, Name, suffix, level)                           \
  QOR_ENTRY void _tfn##letter##Name##_##suffix(int n, const T* a, const T* b, T* r) {               \
    using namespace qor::tfn;                                                                       \
    complex::map2<complex::Name<T, Accuracy::level>>("_tfn" #letter #Name "_" #suffix, n, a, b, r); \
  }
#define TFN_COMPLEX_SCALAR_MEMBER(letter, T, Scalar, Name, suffix, level)                                      \
  QOR_ENTRY void _tfn##letter##Name##_##suffix(int n, const T* a, Scalar b, T* r) {                            \
    using namespace qor::tfn;                                                                                  \
    complex::mapx<complex::Name<T, Accuracy::level>>("_tfn" #letter #Name "_" #suffix, n, a, {b.re, b.im}, r); \
  }

#define TFN_COMPLEX_MEMBERS_WITH(MEMBER, Name)        \
  MEMBER(z, double, TfnDoubleComplex, Name, HA, high) \
  MEMBER(z, double, TfnDoubleComplex, Name, 50, low)  \
  MEMBER(c, float, TfnSingleComplex, Name, HA, high)  \
  MEMBER(c, float, TfnSingleComplex, Name, 21, low)
#define TFN_COMPLEX_MEMBERS(Name) TFN_COMPLEX_MEMBERS_WITH(TFN_COMPLEX_MEMBER, Name)
#define TFN_COMPLEX_BINARY_MEMBERS(Name) TFN_COMPLEX_MEMBERS_WITH(TFN_COMPLEX_BINARY_MEMBER, Name)
#define TFN_COMPLEX_SCALAR_MEMBERS(Name) TFN_COMPLEX_MEMBERS_WITH(TFN_COMPLEX_SCALAR_MEMBER, Name)
