#include "tfn/entry_macros.h"
#include "tfn/inverse_hyperbolic.h"

TFN_INVERSE_HYPERBOLIC(TFN_MEMBERS)
