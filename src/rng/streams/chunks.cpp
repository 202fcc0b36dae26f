#include <cstring>

#include "base/owned.h"
#include "rng/streams/status.h"
#include "rng/streams/stream.h"

namespace qor::rng {

int add_chunk(Stream* stream, std::uint32_t key, void* data, std::uint32_t size) {
  Owned<Chunk> node = Owned<Chunk>::allocate(sizeof(Chunk));
  if (!node) return status::no_memory;
  stream->chunkMark = 0;
  *node.get() = {key, size, data, stream->chunks};
  stream->chunks = node.release();
  return status::ok;
}

void* search_chunk(const Stream* stream, std::uint32_t key) {
  for (const Chunk* c = stream->chunks; c != nullptr; c = c->next) {
    if (c->key == key) return c->data;
  }
  return nullptr;
}

void* search_chunk(const Stream* stream, std::uint32_t key, std::uint32_t size) {
  for (const Chunk* c = stream->chunks; c != nullptr; c = c->next) {
    if (c->key == key && c->size == size) return c->data;
  }
  return nullptr;
}

int count_chunks(const Stream* stream) {
  int n = 0;
  for (const Chunk* c = stream->chunks; c != nullptr; c = c->next) ++n;
  return n;
}

void delete_chunks(Stream* stream) {
  for (Chunk* c = stream->chunks; c != nullptr;) {
    const Owned<Chunk> node(c);
    const Owned<void> data(c->data);
    c = c->next;
  }
  stream->chunks = nullptr;
  stream->chunkMark = 0;
}

void delete_chunks(Stream* stream, std::uint32_t key) {
  for (Chunk** link = &stream->chunks; *link != nullptr;) {
    if ((*link)->key != key) {
      link = &(*link)->next;
      continue;
    }
    const Owned<Chunk> node(*link);
    const Owned<void> data(node->data);
    *link = node->next;
    stream->chunkMark = 0;
  }
}

int add_copy(Stream* stream, std::uint32_t key, const std::uint32_t* words, int n) {
  const std::size_t bytes = static_cast<std::size_t>(n) * sizeof *words;
  Owned<void> data = Owned<void>::allocate(bytes);
  if (!data) return status::no_memory;
  std::memcpy(data.get(), words, bytes);
  const int s = add_chunk(stream, key, data.get(), static_cast<std::uint32_t>(bytes));
  if (s == status::ok) data.release();
  return s;
}

int copy_chunks(Stream* stream, const Stream* source) {
  Chunk** tail = &stream->chunks;
  for (const Chunk* c = source->chunks; c != nullptr; c = c->next) {
    Owned<Chunk> node = Owned<Chunk>::allocate(sizeof(Chunk));
    Owned<void> data = c->data == nullptr ? Owned<void>() : Owned<void>::allocate(c->size > 0 ? c->size : 1);
    if (!node || (c->data != nullptr && !data)) return status::no_memory;
    if (data) std::memcpy(data.get(), c->data, c->size);
    *node.get() = {c->key, c->size, data.release(), nullptr};
    *tail = node.release();
    tail = &(*tail)->next;
  }
  return status::ok;
}

}  // namespace qor::rng
