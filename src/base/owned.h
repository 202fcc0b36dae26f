// A heap block that frees itself. Allocation never throws and leaves errno alone; a null pointer means no memory.
#pragma once

#include <cstdlib>
#include <utility>

#include "base/errno_guard.h"

namespace qor {

// T must be a plain block: no constructor runs, the bytes start undefined.
template <class T>
class Owned {
 public:
  Owned() = default;
  explicit Owned(T* p) : p_(p) {}
  Owned(Owned&& o) noexcept : p_(o.release()) {}
  Owned& operator=(Owned&& o) noexcept {
    reset(o.release());
    return *this;
  }
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;
  ~Owned() { reset(); }

  static Owned allocate(std::size_t bytes) {
    ErrnoGuard keep;
    return Owned(static_cast<T*>(std::malloc(bytes)));
  }
  void reset(T* p = nullptr) {
    ErrnoGuard keep;
    std::free(std::exchange(p_, p));
  }
  T* release() { return std::exchange(p_, nullptr); }
  T* get() const { return p_; }
  T* operator->() const { return p_; }
  explicit operator bool() const { return p_ != nullptr; }

 private:
  T* p_ = nullptr;
};

}  // namespace qor
