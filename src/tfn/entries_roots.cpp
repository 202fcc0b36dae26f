#include "tfn/cbrt.h"
#include "tfn/entry_macros.h"
#include "tfn/invsqrt.h"
#include "tfn/sqrt.h"

TFN_ROOTS(TFN_MEMBERS)
