// A lock that neither sleeps nor is re-entrant.
#pragma once

#include <atomic>

#include "simd/vec.h"

namespace qor::service {

class SpinLock {
 public:
  void lock() {
    for (int expected = 0; !word_.compare_exchange_weak(expected, 1, std::memory_order_acquire); expected = 0) {
      while (word_.load(std::memory_order_relaxed) != 0) simd::spin_pause();
    }
  }
  void unlock() { word_.store(0, std::memory_order_release); }

 private:
  std::atomic<int> word_{0};
};

class Locked {
 public:
  explicit Locked(SpinLock& lock) : lock_(lock) { lock_.lock(); }
  ~Locked() { lock_.unlock(); }
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;

 private:
  SpinLock& lock_;
};

extern SpinLock memory_lock, transform_lock;

}  // namespace qor::service
