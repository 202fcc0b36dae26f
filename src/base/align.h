// Addresses of aligned blocks.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qor {

// The first address from p on that is a multiple of `alignment`, a power of two.
template <class T>
T* align_up(void* p, std::size_t alignment) {
  return reinterpret_cast<T*>(static_cast<char*>(p) + (-reinterpret_cast<std::uintptr_t>(p) & (alignment - 1)));
}

}  // namespace qor
