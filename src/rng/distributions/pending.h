// Two numbers that a method keeps on the stream from one call to the next, in a chunk of its own; none: the first is
// -1.
#pragma once

#include "base/owned.h"
#include "rng/streams/status.h"
#include "rng/streams/stream.h"

namespace qor::rng {

template <class T>
struct Pending {
  T u[2] = {T(-1), T(-1)};
  bool empty() const { return u[0] == T(-1); }
};

// The stream's pending pair under `key` (a chunk of that key and another size, as a file may bring along, is none),
// made on the first call; null without memory for it, `status` says which.
template <class T>
Pending<T>* pending_pair(Stream* stream, std::uint32_t key, int& status) {
  if (void* found = search_chunk(stream, key, sizeof(Pending<T>))) return static_cast<Pending<T>*>(found);
  auto fresh = Owned<Pending<T>>::allocate(sizeof(Pending<T>));
  if (!fresh) {
    status = status::no_memory;
    return nullptr;
  }
  *fresh.get() = {};
  status = add_chunk(stream, key, fresh.get(), sizeof(Pending<T>));
  return status < 0 ? nullptr : fresh.release();
}

}  // namespace qor::rng
