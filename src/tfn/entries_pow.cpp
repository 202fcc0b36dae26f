#include "tfn/entry_macros.h"
#include "tfn/pow.h"

TFN_POWER(TFN_BINARY_MEMBERS)
TFN_SCALAR_ARGUMENT(TFN_SCALAR_MEMBERS)
