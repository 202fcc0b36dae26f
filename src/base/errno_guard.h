// Keeps errno as the caller left it across calls of the C library that may change it.
#pragma once

#include <cerrno>

namespace qor {

class ErrnoGuard {
 public:
  ErrnoGuard() : saved_(errno) {}
  ~ErrnoGuard() { errno = saved_; }
  ErrnoGuard(const ErrnoGuard&) = delete;
  ErrnoGuard& operator=(const ErrnoGuard&) = delete;

 private:
  int saved_;
};

}  // namespace qor
