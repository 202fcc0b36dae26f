#include "tfn/sqrt.h"

#include "tfn/entry_macros.h"

TFN_ROOTS(TFN_MEMBERS)
