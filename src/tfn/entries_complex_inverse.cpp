#include "tfn/complex_entry_macros.h"
#include "tfn/complex_inverse.h"
#include "tfn/functions.def"
TFN_COMPLEX_INVERSE(TFN_COMPLEX_MEMBERS)
