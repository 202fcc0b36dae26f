#include "tfn/entry_macros.h"
#include "tfn/erf.h"
#include "tfn/erf_inv.h"

using namespace qor;

TFN_ERROR(TFN_MEMBERS)

QOR_ENTRY void _tfndErfInv_HA_SC_zx8(int i, const double* a, double* r, double*) {
  tfn::map_one<tfn::ErfInv<tfn::Accuracy::high>>("_tfndErfInv_HA_SC_zx8", i, a, r);
}
QOR_ENTRY void _tfnsErfInv_HA_SC_zx8(int i, const float* a, float* r, float*) {
  tfn::map_one<tfn::ErfInv<tfn::Accuracy::high>>("_tfnsErfInv_HA_SC_zx8", i, a, r);
}
