#include "tfn/entry_macros.h"
#include "tfn/ln.h"
#include "tfn/log10.h"

TFN_LOG(TFN_MEMBERS)
