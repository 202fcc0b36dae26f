// The x87 unit: its control word, and the few computations in extended precision that are part of a function's
// definition. No other file of the library touches it.
#pragma once

#include <cstdint>

#include "base/target.h"

namespace qor::numeric {

inline constexpr std::uint32_t x87_precision_and_rounding = 0xF00;  // bits 8-11
inline constexpr std::uint32_t x87_double = 0x200, x87_extended = 0x300;

QOR_INLINE std::uint32_t x87_control() {
  std::uint16_t cw;
  asm volatile("fnstcw %0" : "=m"(cw));
  return cw;
}
QOR_INLINE void set_x87_control(std::uint32_t word) {
  const std::uint16_t cw = static_cast<std::uint16_t>(word);
  asm volatile("fldcw %0" : : "m"(cw));
}

// ln 2 * log2(x) with a 64-bit significand, stored as a double: the caller's precision, rounding and exception masks are
// set aside and its control word and exception flags come back as they were.
QOR_INLINE double x87_ln(double x) {
  double r;
  char environment[28];
  asm volatile(
      "fnstenv %[env]\n\t"  // also masks all exceptions
      "fninit\n\t"          // 64 bits, to nearest, registers empty: the ABI has none in use at a call
      "fldln2\n\t"
      "fldl %[x]\n\t"
      "fyl2x\n\t"
      "fstpl %[r]\n\t"
      "fldenv %[env]"
      : [r] "=m"(r), [env] "=m"(environment)
      : [x] "m"(x)
      : "st", "st(1)");
  return r;
}

}  // namespace qor::numeric
