#include "service/environment.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "service/spin_lock.h"

namespace qor::service {

constinit Settings settings;
constinit SpinLock memory_lock, transform_lock;

namespace {

bool filled(const char* value) { return value != nullptr && *value != '\0'; }
bool says_yes(const char* value) {
  return value != nullptr && (std::strcmp(value, "YES") == 0 || std::strcmp(value, "yes") == 0);
}

// n times 1.2 * 31 MiB, rounded; cut to what a setting holds.
int unused_bytes_of(int threads) {
  const std::int64_t bytes = (std::int64_t{threads} * 390070272 + 5) / 10;
  return bytes < INT32_MAX ? static_cast<int>(bytes) : INT32_MAX;
}

}  // namespace

void read_environment() {
  const Locked hold(memory_lock);
  if (settings.read == 1) return;
  settings.fast_memory_off = filled(std::getenv("QOR_DISABLE_FAST_MM")) || filled(std::getenv("QOR_MM_DISABLE"));
  settings.numa = std::getenv("QOR_MM_NUMA_MODE") != nullptr;
  if (const char* threads = std::getenv("QOR_MM_MAX_THREADS"); threads != nullptr && std::atoi(threads) > 0) {
    settings.most_unused = unused_bytes_of(std::atoi(threads));
  }
  settings.read.store(1, std::memory_order_release);  // last: whoever sees it sees the rest
}

bool in_serial() {
  static constinit std::atomic<std::uint32_t> decision{~0u};
  std::uint32_t decided = decision.load(std::memory_order_relaxed);
  if (decided != ~0u) return decided != 0;
  const char* threads = std::getenv("OMP_NUM_THREADS");
  if (threads == nullptr) threads = std::getenv("omp_num_threads");
  const char* const serial = std::getenv("QOR_SERIAL");
  const std::uint32_t mine = says_yes(serial) || (!filled(threads) && !filled(serial));
  // The first caller decides, for callers at the same moment too.
  return decision.compare_exchange_strong(decided, mine) ? mine != 0 : decided != 0;
}

int set_serial(const char* yes_or_no) { return setenv("QOR_SERIAL", yes_or_no, 1); }

}  // namespace qor::service
