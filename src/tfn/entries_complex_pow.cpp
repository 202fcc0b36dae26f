#include "tfn/complex_entry_macros.h"
#include "tfn/complex_pow.h"
#include "tfn/functions.def"
TFN_COMPLEX_POWER(TFN_COMPLEX_BINARY_MEMBERS)
TFN_COMPLEX_SCALAR_POWER(TFN_COMPLEX_SCALAR_MEMBERS)
