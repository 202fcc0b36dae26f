#include "tfn/entry_macros.h"
#include "tfn/exp.h"

TFN_EXP(TFN_MEMBERS)
