// A stream: one heap block, a header of 16 bytes with the engine's state behind it. Which engine, and how long the
// block is, says the registry's record of `brng`, looked up anew on every call: a stream stays a plain block of bytes.
#pragma once

#include <algorithm>
#include <cstdint>

#include "qor/rng.h"
#include "rng/streams/registry.h"

namespace qor::rng {

// A tagged block of data on a stream's list; the stream owns both.
struct Chunk {
  std::uint32_t key;
  std::uint32_t size;
  void* data;
  Chunk* next;
};

}  // namespace qor::rng

struct qor_stream {
  std::int32_t brng;
  std::uint8_t headerFlag;  // 1; the three bytes after it stay unset
  qor::rng::Chunk* chunks;  // newest first
  std::uint32_t chunkMark;  // 0 after every change of the list

  template <class State>
  State& state() {
    return *reinterpret_cast<State*>(this + 1);
  }
  template <class State>
  const State& state() const {
    return *reinterpret_cast<const State*>(this + 1);
  }
};

namespace qor::rng {

using Stream = ::qor_stream;
inline constexpr int header_bytes = 16;
static_assert(sizeof(void*) != 4 || sizeof(Stream) == header_bytes);

// The bytes of the block and of the state in it: a registered generator may ask for less than the header.
inline std::size_t block_bytes(const BrngRecord& record) {
  return static_cast<std::size_t>(std::max(record.stateBytes, header_bytes));
}
inline std::size_t state_bytes(const BrngRecord& record) { return block_bytes(record) - header_bytes; }

// The methods of an engine's initialisation.
namespace method {
inline constexpr int seed = 0, leapfrog = 1, skip_ahead = 2;
}

int create(Stream** slot, int brng, int n, const std::uint32_t* seeds);
int allocate(Stream** slot, const BrngRecord* table, int brng, int entry, int member);
int copy(Stream** slot, const Stream* source);
int copy_state(Stream* destination, const Stream* source);
int leapfrog(Stream* stream, std::int32_t k, int nstreams);
int skip_ahead(Stream* stream, int nskip);
int destroy(Stream** slot);

// Whether the state of a stream whose bytes came from outside is one that seeding and drawing can produce. It lies with
// the engines; the state of a registered generator is not looked at.
bool has_valid_state(const Stream* stream);
// Whether a state of that engine means anything in another process. It lies with the engines, too.
bool can_be_stored(const Stream* stream);
// What a word of 32 bits is multiplied by, with one rounding, for the engine's number on [0, 1); 0 when that isn't how
// its numbers come about, or when it may fail. It lies with the engines, too.
void unit_of(const Stream* stream, double& unit);

int add_chunk(Stream* stream, std::uint32_t key, void* data, std::uint32_t size);
void* search_chunk(const Stream* stream, std::uint32_t key);
void* search_chunk(const Stream* stream, std::uint32_t key, std::uint32_t size);  // of just this size
int count_chunks(const Stream* stream);
void delete_chunks(Stream* stream);
void delete_chunks(Stream* stream, std::uint32_t key);  // those of one key
// Adds a copy of n words as a chunk: 0, or -4 with nothing changed.
int add_copy(Stream* stream, std::uint32_t key, const std::uint32_t* words, int n);
// Gives `stream`, whose list is empty, copies of the source's chunks in the same order: 0, or -4 with those that found
// room.
int copy_chunks(Stream* stream, const Stream* source);

// The record behind a stream's identifier, unchecked: streams are made for valid identifiers only.
inline const BrngRecord& record_of(const Stream* stream) { return resolve(stream->brng).record(); }

}  // namespace qor::rng
