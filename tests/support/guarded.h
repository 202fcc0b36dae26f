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
  // n elements, at most a page of them, at the end of the page.
  explicit Guarded(int n, const T* from = nullptr) : n_(n), page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
    base_ = static_cast<char*>(mmap(nullptr, 3 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(base_ + page_, page_, PROT_READ | PROT_WRITE);
    if (from != nullptr) std::memcpy(data(), from, static_cast<std::size_t>(n) * sizeof(T));
  }
  ~Guarded() { munmap(base_, 3 * page_); }
  Guarded(const Guarded&) = delete;
  Guarded& operator=(const Guarded&) = delete;

  T* data() { return reinterpret_cast<T*>(base_ + 2 * page_ - static_cast<std::size_t>(n_) * sizeof(T)); }
  T& operator[](int i) { return data()[i]; }

 private:
  int n_;
  std::size_t page_;
  char* base_;
};

}  // namespace qor::test
