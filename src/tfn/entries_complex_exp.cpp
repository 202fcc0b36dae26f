#include "tfn/complex_entry_macros.h"
#include "tfn/complex_exp.h"
#include "tfn/functions.def"
TFN_COMPLEX_EXP(TFN_COMPLEX_MEMBERS)
