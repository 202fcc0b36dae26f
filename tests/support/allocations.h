// Makes allocations of the whole program fail on demand, and counts the blocks alive. For one source file of a program.
#pragma once

#include <cerrno>
#include <cstdlib>

#if !defined(__SANITIZE_ADDRESS__)
#define COUNTS_ALLOCATIONS 1
extern "C" void* __libc_malloc(std::size_t);
extern "C" void __libc_free(void*);
// Volatile, since the compiler takes it that malloc touches no variable.
inline volatile int until_failure = -1;  // allocations that still succeed; -1: all
inline volatile int live_blocks = 0, refused = 0;
inline volatile std::size_t largest_request = 0;
extern "C" void* malloc(std::size_t n) {
  if (n > largest_request) largest_request = n;
  if (until_failure == 0) {
    refused = refused + 1;
    errno = ENOMEM;
    return nullptr;
  }
  if (until_failure > 0) until_failure = until_failure - 1;
  void* p = __libc_malloc(n);
  live_blocks = live_blocks + (p != nullptr);
  return p;
}
extern "C" void free(void* p) {
  live_blocks = live_blocks - (p != nullptr);
  __libc_free(p);
}
#else
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
#endif
