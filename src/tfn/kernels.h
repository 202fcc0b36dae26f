// The kernels as the rest of the library calls them: tfn::dLn_50(n, a, r) is what the entry _tfndLn_50 runs.
#pragma once

#include "tfn/functions.def"

namespace qor::tfn {

#define TFN_DECLARE(Name)                               \
  void d##Name##_HA(int n, const double* a, double* r); \
  void d##Name##_50(int n, const double* a, double* r); \
  void s##Name##_HA(int n, const float* a, float* r);   \
  void s##Name##_21(int n, const float* a, float* r);
TFN_ONE_RESULT(TFN_DECLARE)
#undef TFN_DECLARE
#define TFN_DECLARE(Name)                                            \
  void d##Name##_HA(int n, const double* a, double* r1, double* r2); \
  void d##Name##_50(int n, const double* a, double* r1, double* r2); \
  void s##Name##_HA(int n, const float* a, float* r1, float* r2);    \
  void s##Name##_21(int n, const float* a, float* r1, float* r2);
TFN_TWO_RESULTS(TFN_DECLARE)
#undef TFN_DECLARE
#define TFN_DECLARE(Name)                                                \
  void d##Name##_HA(int n, const double* a, const double* b, double* r); \
  void d##Name##_50(int n, const double* a, const double* b, double* r); \
  void s##Name##_HA(int n, const float* a, const float* b, float* r);    \
  void s##Name##_21(int n, const float* a, const float* b, float* r);
TFN_TWO_ARGUMENTS(TFN_DECLARE)
#undef TFN_DECLARE
#define TFN_DECLARE(Name)                                         \
  void d##Name##_HA(int n, const double* a, double b, double* r); \
  void d##Name##_50(int n, const double* a, double b, double* r); \
  void s##Name##_HA(int n, const float* a, float b, float* r);    \
  void s##Name##_21(int n, const float* a, float b, float* r);
TFN_SCALAR_ARGUMENT(TFN_DECLARE)
#undef TFN_DECLARE

}  // namespace qor::tfn
