#include "tfn/complex_entry_macros.h"
#include "tfn/complex_log.h"
#include "tfn/functions.def"
TFN_COMPLEX_LOG(TFN_COMPLEX_MEMBERS)
