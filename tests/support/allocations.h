// Makes allocations of the whole program fail on demand, and counts the blocks alive. For one source file of a program.
#pragma once

#include <cerrno>
#include <cstdlib>

#if !defined(__SANITIZE_ADDRESS__)
#define COUNTS_ALLOCATIONS 1
extern "C" void* __libc_malloc(std::size_t);
extern "C" void __libc_free(void*);
inline int until_failure = -1;  // allocations that still succeed; -1: all
inline int live_blocks = 0;
extern "C" void* malloc(std::size_t n) {
  if (until_failure >= 0 && until_failure-- == 0) {
    until_failure = 0;
    errno = ENOMEM;
    return nullptr;
  }
  void* p = __libc_malloc(n);
  live_blocks += p != nullptr;
  return p;
}
extern "C" void free(void* p) {
  live_blocks -= p != nullptr;
  __libc_free(p);
}
#else
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
#endif
