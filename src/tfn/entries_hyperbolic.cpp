#include "tfn/entry_macros.h"
#include "tfn/hyperbolic.h"

TFN_HYPERBOLIC(TFN_MEMBERS)
