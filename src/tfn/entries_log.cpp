#include "tfn/entry_macros.h"
#include "tfn/ln.h"

TFN_LOG(TFN_MEMBERS)
