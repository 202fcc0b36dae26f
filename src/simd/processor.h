// Asks the processor for what member zx9 needs. Included where no vector instruction may be used.
#pragma once

#include <cpuid.h>

namespace qor::simd {

// Leaf 1 tells; __get_cpuid answers for processors that have no such instruction. The operating system's part, saving
// the registers, is that of FXSR.
inline bool processor_has_what_is_needed() {
  unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
  constexpr unsigned cmov = 1u << 15, fxsr = 1u << 24, sse = 1u << 25, sse2 = 1u << 26,
                     in_edx = cmov | fxsr | sse | sse2;
  constexpr unsigned sse3 = 1u << 0, ssse3 = 1u << 9, in_ecx = sse3 | ssse3;
  return __get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0 && (edx & in_edx) == in_edx && (ecx & in_ecx) == in_ecx;
}

}  // namespace qor::simd
