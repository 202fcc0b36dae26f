#include "tfn/trig.h"

#include "tfn/entry_macros.h"

TFN_TRIG(TFN_MEMBERS)
TFN_TWO_RESULTS(TFN_MEMBERS2)
