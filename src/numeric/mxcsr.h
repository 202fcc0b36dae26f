// The SSE control and status register around a kernel. A kernel computes to nearest with subnormals and without traps,
// whatever the caller has set. Raised inside, the flags invalid, division by zero, overflow and underflow are
// by-products of the vector code and don't reach the caller; those that an error handler raises on purpose do, because
// handlers and callbacks run under the caller's own register.
#pragma once

#include "base/target.h"
#include "simd/vec.h"

namespace qor::numeric {

class MxcsrGuard {
 public:
  QOR_INLINE MxcsrGuard() : caller_(read()) { enter(); }
  QOR_INLINE ~MxcsrGuard() { leave(); }
  MxcsrGuard(const MxcsrGuard&) = delete;
  MxcsrGuard& operator=(const MxcsrGuard&) = delete;

  // Runs f under the caller's register; what f leaves there is the caller's from then on.
  template <class F>
  void outside(F f) {
    leave();
    f();
    caller_ = read();
    enter();
  }

 private:
  static constexpr unsigned control_bits = 0xFFC0, standard = 0x1F80;  // all masked, to nearest, subnormals kept
  static constexpr unsigned reported_flags = 0x1D;                     // invalid, zero divide, overflow, underflow

  QOR_INLINE static unsigned read() {
    asm volatile("" ::: "memory");
    return simd::control_register();
  }
  QOR_INLINE static void write(unsigned csr) {
    simd::set_control_register(csr);
    asm volatile("" ::: "memory");
  }
  QOR_INLINE void enter() const {
    if ((caller_ & control_bits) != standard) [[unlikely]]
      write(standard | (caller_ & 0x3F));
  }
  QOR_INLINE void leave() const {
    const unsigned now = read();
    constexpr unsigned compared = control_bits | reported_flags;
    if ((now & compared) != (caller_ & compared)) [[unlikely]]
      write(caller_ | (now & 0x22));
  }

  unsigned caller_;
};

}  // namespace qor::numeric
