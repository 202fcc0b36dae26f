// Blocks aligned to 32 bytes. The raw block's address is kept in the word before the block.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "base/align.h"
#include "base/errno_guard.h"

namespace qor::fft {

// Null for no elements and for no memory. The block starts at the first boundary at least a word behind the raw one's
// start; `slack` covers that at worst.
inline void* allocate(std::size_t count, std::size_t size) {
  constexpr std::size_t alignment = 32, slack = alignment + sizeof(std::uint32_t);
  if (count < 1 || count > (PTRDIFF_MAX - slack) / size) return nullptr;
  ErrnoGuard keep;
  char* const raw = static_cast<char*>(std::malloc(count * size + slack));
  if (raw == nullptr) return nullptr;
  void** const block = align_up<void*>(raw + sizeof(void*), alignment);
  block[-1] = raw;
  return block;
}
inline void* allocate_elements(int count, std::size_t size) {
  return count < 1 ? nullptr : allocate(static_cast<std::size_t>(count), size);
}
inline void release(void* block) {
  if (block == nullptr) return;
  ErrnoGuard keep;
  std::free(static_cast<void**>(block)[-1]);
}

// An aligned array that frees itself.
template <class T>
class Array {
 public:
  Array() = default;
  explicit Array(std::size_t count) : p_(static_cast<T*>(allocate(count, sizeof(T)))) {}
  Array(Array&& o) noexcept : p_(std::exchange(o.p_, nullptr)) {}
  Array& operator=(Array&& o) noexcept {
    std::swap(p_, o.p_);
    return *this;
  }
  ~Array() { release(p_); }
  T* get() const { return p_; }
  explicit operator bool() const { return p_ != nullptr; }

 private:
  T* p_ = nullptr;
};

}  // namespace qor::fft
