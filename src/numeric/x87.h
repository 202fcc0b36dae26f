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
  asm volatile("fldcw %0" : : "m"(cw) : "memory");
}

// The unit's precision and rounding, bits 8-11 of the control word, for the time of a computation.
class X87Precision {
 public:
  explicit X87Precision(std::uint32_t wanted) : caller_(x87_control()) {
    changed_ = (caller_ & x87_precision_and_rounding) != wanted;
    if (changed_) set_x87_control((caller_ & ~x87_precision_and_rounding) | wanted);
  }
  ~X87Precision() {
    if (changed_) set_x87_control(caller_);
  }
  X87Precision(const X87Precision&) = delete;
  X87Precision& operator=(const X87Precision&) = delete;

 private:
  std::uint32_t caller_;
  bool changed_;
};

// Sine and cosine, tangent or (turned over) cotangent of r + r_lo, at most a quarter of pi.
QOR_INLINE void x87_sincos(double r, double r_lo, double* sine, double* cosine) {
  asm volatile("fldl %2\n\tfaddl %3\n\tfsincos\n\tfstpl %1\n\tfstpl %0"
               : "=m"(*sine), "=m"(*cosine)
               : "m"(r), "m"(r_lo));
}
QOR_INLINE void x87_tan(double r, double r_lo, bool turned_over, double* tangent) {
  if (turned_over) {
    asm volatile("fldl %1\n\tfaddl %2\n\tfptan\n\tfdiv %%st(1), %%st\n\tfstpl %0\n\tfstp %%st(0)"
                 : "=m"(*tangent)
                 : "m"(r), "m"(r_lo));
  } else {
    asm volatile("fldl %1\n\tfaddl %2\n\tfptan\n\tfstp %%st(0)\n\tfstpl %0" : "=m"(*tangent) : "m"(r), "m"(r_lo));
  }
}

// A copy through the unit's stack: every bit pattern but a signalling NaN, which becomes quiet, arrives as it was.
QOR_INLINE void x87_copy(const double* from, double* to) {
  asm volatile("fldl %1\n\tfstpl %0" : "=m"(*to) : "m"(*from));
}

// ln 2 * log2(x) with a 64-bit significand, stored as a double. The unit's whole state is set aside meanwhile, values
// on its stack included; only the flags invalid and division by zero, where masked, are left raised for the caller to
// see.
[[gnu::noinline]] inline void x87_ln(double x, double* result) {
  double r;
  struct {
    std::uint32_t control, status, tag, pointers[4];
    std::uint8_t registers[80];
  } saved;
  std::uint16_t raised;
  asm volatile(
      "fnsave %[saved]\n\t"  // and initialises: 64 bits, to nearest, all masked, registers empty
      "fldln2\n\t"
      "fldl %[x]\n\t"
      "fyl2x\n\t"
      "fstpl %[r]\n\t"
      "fnstsw %[raised]"
      : [r] "=m"(r), [saved] "=m"(saved), [raised] "=m"(raised)
      : [x] "m"(x));
  constexpr std::uint32_t invalid_and_zero_divide = 5;
  saved.status |= raised & saved.control & invalid_and_zero_divide;
  asm volatile("frstor %0" : : "m"(saved));
  *result = r;
}

}  // namespace qor::numeric
