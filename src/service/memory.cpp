#include "service/memory.h"

#include <pthread.h>

#include <cstdint>
#include <utility>

#include "qor/service.h"
#include "service/environment.h"
#include "service/spin_lock.h"

namespace qor::service {
namespace {

constexpr int most_slots = 512;
constexpr int largest_cached = 40 << 20;

struct Slot {
  void* mem;
  std::uint32_t size;
  pthread_t owner;
  bool in_use;
};

// Everything here is guarded by memory_lock. Slots 0 .. in_play - 1 may hold blocks, `filled` of them do.
struct Cache {
  Slot slot[most_slots];
  int in_play, filled;
  std::uint32_t allocated, used;  // bytes of all blocks, and of those handed out

  std::uint32_t unused() const { return allocated - used; }
  bool full() const { return in_play == most_slots; }
};
constinit Cache cache{};

// A block is a fifth larger than the first request for it, rounded to the nearest byte.
std::uint32_t roomy(int size) { return static_cast<std::uint32_t>((12LL * size + 5) / 10); }

// Does the slot serve the request with nothing to spare? The other test, that it has exactly 1.2 times the request, the
// double constant 1.2 multiplied in extended precision, is here in integers: 2^-52 of the odd number times less than
// 2^26 is never so near to a whole number that it would be rounded to one, so only 0 passes, as equal.
bool exact(const Slot& s, int size) { return s.size == static_cast<std::uint32_t>(size); }

// Where the calling thread's request is served from, or null.
Slot* find(pthread_t self, int size) {
  Slot* first = nullptr;
  for (int i = 0; i < cache.in_play; ++i) {
    Slot& s = cache.slot[i];
    if (s.mem == nullptr || s.in_use || pthread_equal(s.owner, self) == 0) continue;
    if (s.size < static_cast<std::uint32_t>(size)) continue;
    if (exact(s, size)) return &s;
    if (first == nullptr) first = &s;
  }
  return first;
}

void hand_out(Slot& s) {
  s.in_use = true;
  cache.used += s.size;
}

// Puts a new block into the slot; a failing hook leaves it as it was.
bool refill(Slot& s, pthread_t owner, std::uint32_t size) {
  void* const block = i_malloc(size);
  if (block == nullptr) return false;
  if (s.mem != nullptr) i_free(s.mem);
  cache.allocated += size - s.size;
  s = {block, size, owner, false};
  return true;
}

void empty(Slot& s) {
  i_free(s.mem);
  cache.allocated -= s.size;
  --cache.filled;
  s = {};
}

}  // namespace

void* allocate(int size) {
  if (pass_through() || size < 0 || size > largest_cached) return i_malloc(static_cast<std::size_t>(size));
  const pthread_t self = pthread_self();
  const Locked hold(memory_lock);
  free_extra();
  if (Slot* s = find(self, size)) {
    hand_out(*s);
    return s->mem;
  }
  const std::uint32_t bytes = roomy(size);
  if (!cache.full()) {
    Slot& s = cache.slot[cache.in_play];
    if (!refill(s, self, bytes)) return nullptr;
    ++cache.in_play, ++cache.filled;
    hand_out(s);
    return s.mem;
  }
  // The replaced block's slot stays free to be handed out to the same thread again.
  for (Slot& s : cache.slot) {
    if (!s.in_use && s.mem != nullptr) return refill(s, self, bytes) ? s.mem : nullptr;
  }
  return i_malloc(bytes);
}

void deallocate(void* block) {
  if (!pass_through()) {
    const Locked hold(memory_lock);
    for (int i = 0; block != nullptr && i < cache.in_play; ++i) {
      Slot& s = cache.slot[i];
      if (s.mem != block) continue;
      if (s.in_use) cache.used -= s.size;
      s.in_use = false;
      return;
    }
  }
  i_free(block);
}

void free_extra() {
  const auto most = static_cast<std::uint32_t>(settings.most_unused);
  if (cache.unused() > most || cache.full()) {
    for (int i = most_slots - 1; i >= 0; --i) {
      Slot& s = cache.slot[i];
      if (s.in_use || s.mem == nullptr) continue;
      empty(s);
      if (cache.unused() < most) break;
    }
  }
  // filled < 1.2 in_play: so whenever a slot is in play.
  if (10 * cache.filled < 12 * cache.in_play || cache.full()) shrink_slots();
}

void shrink_slots() {
  int to = 0, from = cache.in_play - 1;
  while (cache.in_play != cache.filled) {
    while (to < from && cache.slot[to].mem != nullptr) ++to;
    while (from > to && cache.slot[from].mem == nullptr) --from;
    if (to < from)
      cache.slot[to] = std::exchange(cache.slot[from], {});
    else
      cache.in_play = cache.filled;
  }
}

void free_buffers() {
  if (pass_through()) return;
  const Locked hold(memory_lock);
  for (Slot& s : cache.slot) {
    if (s.size != 0 && s.mem != nullptr) i_free(s.mem);
  }
  cache = {};
}

}  // namespace qor::service
