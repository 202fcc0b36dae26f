// Compiled for processors without vector instructions, see src/CMakeLists.txt.
#include "base/target.h"
#include "qor/version.h"
#include "simd/processor.h"

QOR_ENTRY const char* qor_version(void) { return QOR_VERSION; }
QOR_ENTRY int qor_cpu_supported(void) { return qor::simd::processor_has_what_is_needed(); }
