#include "tfn/division.h"
#include "tfn/entry_macros.h"

TFN_DIVISION(TFN_MEMBERS)
TFN_QUOTIENT(TFN_BINARY_MEMBERS)
