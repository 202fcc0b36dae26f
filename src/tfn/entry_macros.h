// One line of functions.def becomes four functions and the four entries that call them.
#pragma once

#include "base/target.h"
#include "qor/tfn.h"
#include "tfn/accuracy.h"
#include "tfn/kernels.h"
#include "tfn/map.h"

// A member of one result; of two; of two arguments; of an argument and a scalar.
#define TFN_MEMBER(letter, T, Name, suffix, level)                         \
  void qor::tfn::letter##Name##_##suffix(int n, const T* a, T* r) {        \
    map<Name<Accuracy::level>>("_tfn" #letter #Name "_" #suffix, n, a, r); \
  }                                                                        \
  QOR_ENTRY void _tfn##letter##Name##_##suffix(int n, const T* a, T* r) { qor::tfn::letter##Name##_##suffix(n, a, r); }
#define TFN_PAIR_MEMBER(letter, T, Name, suffix, level)                           \
  void qor::tfn::letter##Name##_##suffix(int n, const T* a, T* r1, T* r2) {       \
    map<Name<Accuracy::level>>("_tfn" #letter #Name "_" #suffix, n, a, r1, r2);   \
  }                                                                               \
  QOR_ENTRY void _tfn##letter##Name##_##suffix(int n, const T* a, T* r1, T* r2) { \
    qor::tfn::letter##Name##_##suffix(n, a, r1, r2);                              \
  }

#define TFN_BINARY_MEMBER(letter, T, Name, suffix, level)                             \
  void qor::tfn::letter##Name##_##suffix(int n, const T* a, const T* b, T* r) {       \
    map2<Name<Accuracy::level>>("_tfn" #letter #Name "_" #suffix, n, a, b, r);        \
  }                                                                                   \
  QOR_ENTRY void _tfn##letter##Name##_##suffix(int n, const T* a, const T* b, T* r) { \
    qor::tfn::letter##Name##_##suffix(n, a, b, r);                                    \
  }
#define TFN_SCALAR_MEMBER(letter, T, Name, suffix, level)                      \
  void qor::tfn::letter##Name##_##suffix(int n, const T* a, T b, T* r) {       \
    mapx<Name<Accuracy::level>>("_tfn" #letter #Name "_" #suffix, n, a, b, r); \
  }                                                                            \
  QOR_ENTRY void _tfn##letter##Name##_##suffix(int n, const T* a, T b, T* r) { \
    qor::tfn::letter##Name##_##suffix(n, a, b, r);                             \
  }

#define TFN_MEMBERS_WITH(MEMBER, Name) \
  MEMBER(d, double, Name, HA, high)    \
  MEMBER(d, double, Name, 50, low)     \
  MEMBER(s, float, Name, HA, high)     \
  MEMBER(s, float, Name, 21, low)
#define TFN_MEMBERS(Name) TFN_MEMBERS_WITH(TFN_MEMBER, Name)
#define TFN_PAIR_MEMBERS(Name) TFN_MEMBERS_WITH(TFN_PAIR_MEMBER, Name)
#define TFN_BINARY_MEMBERS(Name) TFN_MEMBERS_WITH(TFN_BINARY_MEMBER, Name)
#define TFN_SCALAR_MEMBERS(Name) TFN_MEMBERS_WITH(TFN_SCALAR_MEMBER, Name)
