// Exported operations on streams, chunks and the registry: translation only.
#include "base/target.h"
#include "rng/streams/file.h"
#include "rng/streams/status.h"
#include "rng/streams/stream.h"

using namespace qor;

QOR_ENTRY int __wxrNewStreamEx(qor_stream** slot, int brng, int n, const unsigned* seeds) {
  return rng::create(slot, brng, n, seeds);
}
QOR_ENTRY int __wxrAllocateStream(qor_stream** slot, const BrngRecord* table, int brng, int entry, int member) {
  return rng::allocate(slot, table, brng, entry, member);
}
QOR_ENTRY int __wxrCopyStream(qor_stream** slot, const qor_stream* source) { return rng::copy(slot, source); }
QOR_ENTRY int __wxrCopyStreamState(qor_stream* destination, const qor_stream* source) {
  return rng::copy_state(destination, source);
}
QOR_ENTRY int __wxrLeapfrogStream(qor_stream* stream, int k, int nstreams) {
  return rng::leapfrog(stream, k, nstreams);
}
QOR_ENTRY int __wxrSkipAheadStream(qor_stream* stream, int nskip) { return rng::skip_ahead(stream, nskip); }
QOR_ENTRY int __wxrDeleteStream(qor_stream** slot) { return rng::destroy(slot); }
QOR_ENTRY int __wxrGetStreamStateBrng(const qor_stream* stream) { return stream->brng; }

QOR_ENTRY int __wxrAddChunk(qor_stream* stream, unsigned key, void* data, unsigned size) {
  return rng::add_chunk(stream, key, data, size);
}
QOR_ENTRY void* __wxrSearchChunk(const qor_stream* stream, unsigned key) { return rng::search_chunk(stream, key); }
QOR_ENTRY int __wxrGetNumChunks(const qor_stream* stream) { return rng::count_chunks(stream); }
QOR_ENTRY int __wxrDeleteChunks(qor_stream* stream) {
  rng::delete_chunks(stream);
  return rng::status::ok;
}

QOR_ENTRY int __wxrSaveStreamF(const qor_stream* stream, const char* name, int length) {
  return rng::save(stream, name, length);
}
QOR_ENTRY int __wxrLoadStreamF(qor_stream** slot, const char* name) { return rng::load(slot, name); }

QOR_ENTRY int __wxrRegisterBrng(const BrngRecord* record) { return rng::register_generator(record); }
QOR_ENTRY int __wxrGetNumRegBrngs() { return NRegBrngsNew; }
QOR_ENTRY int __wxrGetBrngProperties(int brng, BrngRecord* record) { return rng::properties(brng, record); }
QOR_ENTRY BrngRecord* __wxrGetBrngBaseOffset(int brng, int* entry, int* member) {
  const rng::Generator g = rng::resolve(brng);
  *entry = g.entry;
  *member = g.member;
  return g.table;
}
QOR_ENTRY int __wxrIsBrngValid(const BrngRecord* table, int entry, int member) {
  return rng::validate(table, entry, member);
}
