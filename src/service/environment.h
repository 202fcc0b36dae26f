// What the environment says, read once.
#pragma once

#include <atomic>

namespace qor::service {

// -1 until read_environment() has run, then 0 or 1.
struct Settings {
  std::atomic<int> read{-1}, fast_memory_off{-1}, numa{-1};
  std::atomic<int> most_unused{156028108};  // bytes that may be cached and unused
};
extern Settings settings;

void read_environment();
inline bool pass_through() {
  if (settings.read.load(std::memory_order_acquire) != 1) read_environment();
  return settings.fast_memory_off.load(std::memory_order_relaxed) == 1;
}

// Decided at the first call.
bool in_serial();
int set_serial(const char* yes_or_no);

}  // namespace qor::service
