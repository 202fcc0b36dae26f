#include "tfn/entry_macros.h"
#include "tfn/hypot.h"

TFN_LENGTH(TFN_BINARY_MEMBERS)
