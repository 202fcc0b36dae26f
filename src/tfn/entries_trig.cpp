#include "tfn/entry_macros.h"
#include "tfn/tan.h"
#include "tfn/trig.h"

TFN_TRIG(TFN_MEMBERS)
TFN_TWO_RESULTS(TFN_PAIR_MEMBERS)
