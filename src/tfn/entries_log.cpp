#include "tfn/ln.h"

#include "tfn/entry_macros.h"

TFN_LOG(TFN_MEMBERS)
