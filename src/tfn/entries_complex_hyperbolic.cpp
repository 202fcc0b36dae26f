#include "tfn/complex_entry_macros.h"
#include "tfn/complex_hyperbolic.h"
#include "tfn/functions.def"
TFN_COMPLEX_HYPERBOLIC(TFN_COMPLEX_MEMBERS)
TFN_COMPLEX_TRIG(TFN_COMPLEX_MEMBERS)
