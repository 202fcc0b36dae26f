// Keeps errno as the caller left it across calls of the C library that may change it. Without math errno the compiler
// takes it that malloc never does, hence the barrier.
#pragma once

#include <cerrno>

namespace qor {

class ErrnoGuard {
 public:
  ErrnoGuard() : saved_(errno) {}
  ~ErrnoGuard() {
    asm volatile("" ::: "memory");
    errno = saved_;
  }
  ErrnoGuard(const ErrnoGuard&) = delete;
  ErrnoGuard& operator=(const ErrnoGuard&) = delete;

 private:
  int saved_;
};

}  // namespace qor
