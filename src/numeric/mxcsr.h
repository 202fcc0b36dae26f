// The SSE control and status register around a kernel. A kernel computes to nearest with subnormals and without traps,
// whatever the caller has set. Raised inside, the flags invalid, division by zero, overflow and underflow are
// by-products of the vector code and don't reach the caller; those that an error handler raises on purpose do, because
// handlers and callbacks run under the caller's own register.
#pragma once

#include "base/target.h"
#include "simd/vec.h"

namespace qor::numeric {

inline constexpr unsigned mxcsr_control_bits = 0xFFC0;
inline constexpr unsigned standard_mxcsr = 0x1F80;  // all masked, to nearest, subnormals kept

QOR_INLINE unsigned read_mxcsr() {
  asm volatile("" ::: "memory");
  return simd::control_register();
}
QOR_INLINE void write_mxcsr(unsigned csr) {
  simd::set_control_register(csr);
  asm volatile("" ::: "memory");
}

class MxcsrGuard {
 public:
  QOR_INLINE MxcsrGuard() : caller_(read_mxcsr()) { enter(); }
  QOR_INLINE ~MxcsrGuard() { leave(); }
  MxcsrGuard(const MxcsrGuard&) = delete;
  MxcsrGuard& operator=(const MxcsrGuard&) = delete;

  // Runs f under the caller's register; what f leaves there is the caller's from then on.
  template <class F>
  void outside(F f) {
    leave();
    f();
    caller_ = read_mxcsr();
    enter();
  }

 private:
  static constexpr unsigned reported_flags = 0x1D;  // invalid, zero divide, overflow, underflow

  QOR_INLINE void enter() const {
    if ((caller_ & mxcsr_control_bits) != standard_mxcsr) [[unlikely]]
      write_mxcsr(standard_mxcsr | (caller_ & 0x3F));
  }
  QOR_INLINE void leave() const {
    const unsigned now = read_mxcsr();
    constexpr unsigned compared = mxcsr_control_bits | reported_flags;
    if ((now & compared) != (caller_ & compared)) [[unlikely]]
      write_mxcsr(caller_ | (now & 0x22));
  }

  unsigned caller_;
};

// The register during work that rounds on purpose. Afterwards it is as it was, flags included.
class RoundingGuard {
 public:
  enum Direction : unsigned { nearest = 0, down = 0x2000, up = 0x4000, to_zero = 0x6000 };

  // Everything but the direction as within a kernel.
  QOR_INLINE explicit RoundingGuard(Direction direction) : caller_(read_mxcsr()) { enter(standard_mxcsr | direction); }
  // The caller's direction and treatment of subnormals, without traps.
  QOR_INLINE RoundingGuard() : caller_(read_mxcsr()) { enter((caller_ & mxcsr_control_bits) | standard_mxcsr); }
  QOR_INLINE ~RoundingGuard() {
    if (read_mxcsr() != caller_) write_mxcsr(caller_);
  }
  RoundingGuard(const RoundingGuard&) = delete;
  RoundingGuard& operator=(const RoundingGuard&) = delete;

 private:
  QOR_INLINE void enter(unsigned control) const {
    if ((caller_ & mxcsr_control_bits) != control) write_mxcsr(control | (caller_ & ~mxcsr_control_bits));
  }

  unsigned caller_;
};

// The same settings for code without by-products: flags that it raises are the caller's. Costs nothing on leaving when
// the caller has the standard settings.
class ArithmeticGuard {
 public:
  QOR_INLINE ArithmeticGuard() : caller_(read_mxcsr()) {
    if (unusual()) [[unlikely]]
      write_mxcsr(standard_mxcsr | (caller_ & ~mxcsr_control_bits));
  }
  QOR_INLINE ~ArithmeticGuard() {
    if (unusual()) [[unlikely]]
      write_mxcsr(caller_ | (read_mxcsr() & ~mxcsr_control_bits));
  }
  ArithmeticGuard(const ArithmeticGuard&) = delete;
  ArithmeticGuard& operator=(const ArithmeticGuard&) = delete;

 private:
  QOR_INLINE bool unusual() const { return (caller_ & mxcsr_control_bits) != standard_mxcsr; }

  unsigned caller_;
};

// x, for computations that must come after the guard before it: the compiler knows nothing of the register, and moves
// arithmetic on values it has at hand.
template <class T>
QOR_INLINE T pinned(T x) {
  asm volatile("" : "+x"(x));
  return x;
}

}  // namespace qor::numeric
