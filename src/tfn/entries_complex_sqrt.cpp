#include "tfn/complex_entry_macros.h"
#include "tfn/complex_sqrt.h"
#include "tfn/functions.def"
TFN_COMPLEX_ROOTS(TFN_COMPLEX_MEMBERS)
