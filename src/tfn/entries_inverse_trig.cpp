#include "tfn/entry_macros.h"
#include "tfn/inverse_trig.h"

TFN_INVERSE_TRIG(TFN_MEMBERS)
TFN_ANGLE(TFN_BINARY_MEMBERS)
