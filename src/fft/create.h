// Objects in blocks of their own, without the C++ library's operator new.
#pragma once

#include <new>

#include "base/owned.h"

namespace qor::fft {

// Null without memory.
template <class X>
X* create() {
  Owned<X> block = Owned<X>::allocate(sizeof(X));
  return block ? new (block.release()) X() : nullptr;
}
template <class X>
void destroy(X* x) {
  if (x == nullptr) return;
  x->~X();
  Owned<X>(x).reset();
}

}  // namespace qor::fft
