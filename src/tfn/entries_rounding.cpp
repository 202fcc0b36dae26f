// Exported rounding: translation only.
#include "base/target.h"
#include "qor/tfn.h"
#include "tfn/rounding.h"

using namespace qor;

#define ROUNDING(Name)                                                                                     \
  QOR_ENTRY void _tfns##Name(int n, const float* a, float* y) { tfn::round_elements<tfn::Name>(n, a, y); } \
  QOR_ENTRY void _tfnd##Name(int n, const double* a, double* y) { tfn::round_elements<tfn::Name>(n, a, y); }
ROUNDING(Floor)
ROUNDING(Ceil)
ROUNDING(Trunc)
ROUNDING(Round)
ROUNDING(Rint)
ROUNDING(NearbyInt)

QOR_ENTRY void _tfnsModf(int n, const float* a, float* y, float* z) { tfn::round_elements<tfn::Modf>(n, a, y, z); }
QOR_ENTRY void _tfndModf(int n, const double* a, double* y, double* z) { tfn::round_elements<tfn::Modf>(n, a, y, z); }
