// What an entry point and the rare paths of the library look like to the compiler.
#pragma once

// An exported C function. The caller's stack may be aligned to 4 bytes only, so every entry realigns it.
#define QOR_ENTRY extern "C" __attribute__((visibility("default"), force_align_arg_pointer))
// Exported data; its linkage is what the public header declares.
#define QOR_DATA __attribute__((visibility("default")))

#define QOR_INLINE [[gnu::always_inline]] inline
#define QOR_COLD [[gnu::noinline, gnu::cold]]
