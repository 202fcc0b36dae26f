// The entries of the transforms by precision, so that a test is written once.
#pragma once

#include <complex>

#include "qor/fft.h"

namespace families {

enum Set { fft, dft };
enum Packing { perm, pack, ccs };

template <class T, class Spec>
struct Common {
  int (*create)(Spec**, int, int, int);
  int (*buffer_size)(const Spec*, int*);
  int (*destroy)(Spec*);
  using Run = int (*)(const T*, T*, const Spec*, unsigned char*);
};
template <class T, class Spec>
struct Real : Common<T, Spec> {
  typename Common<T, Spec>::Run forward[3], inverse[3];
};
template <class T, class Spec>
struct Complex : Common<T, Spec> {
  typename Common<T, Spec>::Run forward, inverse;
};

template <class T, Set S>
struct Of;
#define FAMILY(Set_, T, Name, suffix)                                                                                \
  template <>                                                                                                        \
  struct Of<T, Set_> {                                                                                               \
    using RealSpec = qfps##Name##Spec_R_##suffix;                                                                    \
    using ComplexSpec = qfps##Name##Spec_C_##suffix##c;                                                              \
    static constexpr Real<T, RealSpec> real{                                                                         \
        {qfps##Name##InitAlloc_R_##suffix, qfps##Name##GetBufSize_R_##suffix, qfps##Name##Free_R_##suffix},          \
        {qfps##Name##Fwd_RToPerm_##suffix, qfps##Name##Fwd_RToPack_##suffix, qfps##Name##Fwd_RToCCS_##suffix},       \
        {qfps##Name##Inv_PermToR_##suffix, qfps##Name##Inv_PackToR_##suffix, qfps##Name##Inv_CCSToR_##suffix}};      \
    static constexpr Complex<T, ComplexSpec> complex{                                                                \
        {qfps##Name##InitAlloc_C_##suffix##c, qfps##Name##GetBufSize_C_##suffix##c, qfps##Name##Free_C_##suffix##c}, \
        qfps##Name##Fwd_CToC_##suffix##c,                                                                            \
        qfps##Name##Inv_CToC_##suffix##c};                                                                           \
  };
FAMILY(fft, float, FFT, 32f)
FAMILY(fft, double, FFT, 64f)
FAMILY(dft, float, DFT, 32f)
FAMILY(dft, double, DFT, 64f)
#undef FAMILY

template <class T>
struct Arrays;
#define ARRAYS(T, suffix)                                                                                 \
  template <>                                                                                             \
  struct Arrays<T> {                                                                                      \
    using Convert = int (*)(const T*, T*, int);                                                           \
    static constexpr Convert convert[3][3] = {{nullptr, qfpsPermToPack_##suffix, qfpsPermToCCS_##suffix}, \
                                              {qfpsPackToPerm_##suffix, nullptr, qfpsPackToCCS_##suffix}, \
                                              {qfpsCCSToPerm_##suffix, qfpsCCSToPack_##suffix, nullptr}}; \
    static constexpr Convert multiply = qfpsMulPerm_##suffix##_I, copy = qfpsCopy_##suffix;               \
    static constexpr auto zero = qfpsZero_##suffix;                                                       \
    static constexpr auto allocate = qfpsMalloc_##suffix;                                                 \
  };
ARRAYS(float, 32f)
ARRAYS(double, 64f)
#undef ARRAYS

}  // namespace families
