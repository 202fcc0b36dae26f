#include "rng/streams/stream.h"

#include <algorithm>
#include <cstring>

#include "base/owned.h"
#include "rng/streams/status.h"

namespace qor::rng {
namespace {

bool is_abstract(int brng) {
  return brng == QOR_BRNG_IABSTRACT || brng == QOR_BRNG_DABSTRACT || brng == QOR_BRNG_SABSTRACT;
}

}  // namespace

int allocate(Stream** slot, const BrngRecord* table, int brng, int entry, int member) {
  if (const int s = validate(table, entry, member); s != status::ok) return s;
  *slot = Owned<Stream>::allocate(block_bytes(table[entry])).release();
  if (*slot == nullptr) return status::no_memory;
  Stream& stream = **slot;
  stream.brng = brng;
  stream.chunks = nullptr;
  stream.chunkMark = 0;
  stream.headerFlag = 1;
  return status::ok;
}

int create(Stream** slot, int brng, int n, const std::uint32_t* seeds) {
  if (is_abstract(brng)) return status::bad_brng;  // these have constructors of their own
  const Generator g = resolve(brng);
  if (const int s = allocate(slot, g.table, brng, g.entry, g.member); s != status::ok) return s;
  // On purpose a failure leaves the stream in the slot: it is the caller's to delete.
  return g.record().initStream(method::seed, *slot, n, seeds);
}

int copy(Stream** slot, const Stream* source) {
  const Generator g = resolve(source->brng);
  if (const int s = allocate(slot, g.table, source->brng, g.entry, g.member); s != status::ok) return s;
  std::memcpy(static_cast<void*>(*slot), source, block_bytes(g.record()));
  (*slot)->chunks = nullptr;  // the bytes named the source's list
  const int s = copy_chunks(*slot, source);
  (*slot)->chunkMark = source->chunkMark;
  if (s != status::ok) destroy(slot);
  return s;
}

int copy_state(Stream* destination, const Stream* source) {
  if (destination == source) return status::ok;
  const Generator to = resolve(destination->brng), from = resolve(source->brng);
  const BrngRecord& record = from.record();
  // Records may promise more seedable words than their state holds. The least of the three is never negative.
  const std::size_t room = std::min(block_bytes(to.record()), block_bytes(record)) - header_bytes;
  const std::size_t seedable = static_cast<std::size_t>(record.wordBytes) * static_cast<std::size_t>(record.seedWords);
  // A state without seedable words is no numbers but pointers of the caller's.
  if (to.record().seedWords > 0) std::memcpy(destination + 1, source + 1, std::min(room, seedable));
  // On purpose after the copy, which is made between different generators too.
  return to.entry == from.entry ? status::ok : status::incompatible;
}

int leapfrog(Stream* stream, std::int32_t k, int nstreams) {
  std::uint32_t params;
  std::memcpy(&params, &k, sizeof k);
  return record_of(stream).initStream(method::leapfrog, stream, nstreams, &params);
}

int skip_ahead(Stream* stream, int nskip) {
  return record_of(stream).initStream(method::skip_ahead, stream, nskip, nullptr);
}

int destroy(Stream** slot) {
  delete_chunks(*slot);
  const Owned<Stream> block(*slot);
  *slot = nullptr;
  return status::ok;
}

}  // namespace qor::rng
