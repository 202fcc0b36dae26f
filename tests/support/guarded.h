// Arrays whose last element ends right before a page that can't be touched, and whose first one has such a page before
// it.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>

namespace qor::test {

template <class T>
class Guarded {
 public:
  // n elements at the end of their pages.
  explicit Guarded(int n, const T* from = nullptr) : n_(n), page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
    room_ = (static_cast<std::size_t>(n) * sizeof(T) + page_ - 1) / page_ * page_;
    base_ = static_cast<char*>(mmap(nullptr, room_ + 2 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(base_ + page_, room_, PROT_READ | PROT_WRITE);
    if (from != nullptr) std::memcpy(data(), from, static_cast<std::size_t>(n) * sizeof(T));
  }
  ~Guarded() { munmap(base_, room_ + 2 * page_); }
  Guarded(const Guarded&) = delete;
  Guarded& operator=(const Guarded&) = delete;

  T* data() { return reinterpret_cast<T*>(base_ + page_ + room_ - static_cast<std::size_t>(n_) * sizeof(T)); }
  // Room for as many elements at the start of the pages.
  T* head() { return reinterpret_cast<T*>(base_ + page_); }
  T& operator[](int i) { return data()[i]; }

 private:
  int n_;
  std::size_t page_, room_;
  char* base_;
};

}  // namespace qor::test
