#include "rng/streams/registry.h"

#include <iterator>

#include "base/target.h"
#include "rng/engines/engines.def"
#include "rng/streams/status.h"

namespace qor::rng {
namespace {

// The records name the exported entries, as a caller's own table would.
#define QOR_ENGINE_ROW(tag, engine, bytes, words, zero, width, bits, members) \
  {bytes, words, zero, width, bits, __wxrBRng##tag##InitStream, __wxrsBRng##tag, __wxrdBRng##tag, __wxriBRng##tag},
constexpr BrngRecord predefined[] = {QOR_GENERATORS(QOR_ENGINE_ROW, QOR_ENGINE_ROW)};
static_assert(std::size(predefined) == predefined_generators);

#define QOR_ENGINE_MEMBERS(tag, engine, bytes, words, zero, width, bits, members) members,

}  // namespace
}  // namespace qor::rng

using namespace qor::rng;

// 273 copies for the members of the legacy Wichmann-Hill family: 4 * 64 + 16 + 1.
#define QOR_WH predefined[4]
#define QOR_WH_4 QOR_WH, QOR_WH, QOR_WH, QOR_WH
#define QOR_WH_16 QOR_WH_4, QOR_WH_4, QOR_WH_4, QOR_WH_4
#define QOR_WH_64 QOR_WH_16, QOR_WH_16, QOR_WH_16, QOR_WH_16
QOR_DATA constinit BrngRecord __RegBrngs[registry_capacity] = {
    predefined[0], predefined[1], predefined[2], predefined[3], QOR_WH_64,     QOR_WH_64,
    QOR_WH_64,     QOR_WH_64,     QOR_WH_16,     QOR_WH,        predefined[5], predefined[6],
};
QOR_DATA constinit BrngRecord __RegBrngsNew[registry_capacity] = {QOR_GENERATORS(QOR_ENGINE_ROW, QOR_ENGINE_ROW)};
QOR_DATA constinit int NRegBrngsNew = predefined_generators;
QOR_DATA constinit int NumOffsets[registry_capacity] = {QOR_GENERATORS(QOR_ENGINE_MEMBERS, QOR_ENGINE_MEMBERS)};

namespace qor::rng {

int validate(const BrngRecord* table, int entry, int member) {
  if (entry < 0 || member < 0) return status::bad_brng;
  if (table == __RegBrngs) return entry < legacy_generators ? status::ok : status::bad_brng;
  return entry < NRegBrngsNew && member < NumOffsets[entry] ? status::ok : status::bad_brng;
}

int properties(int brng, BrngRecord* record) {
  const Generator g = resolve(brng);
  if (const int s = validate(g.table, g.entry, g.member); s != status::ok) return s;
  *record = g.record();
  return status::ok;
}

int register_generator(const BrngRecord* record) {
  const BrngRecord& r = *record;
  if (r.stateBytes < 0) return status::bad_state_bytes;
  if (r.wordBytes != 4 && r.wordBytes != 8 && r.wordBytes != 16) return status::bad_word_bytes;
  if (r.seedWords < 1) return status::bad_seed_words;
  if (r.bitsPerWord < 1) return status::bad_bits;
  if (r.dOut == nullptr || r.sOut == nullptr || r.iOut == nullptr || r.initStream == nullptr) return status::null_slot;
  if (NRegBrngsNew >= registry_capacity) return status::registry_full;
  const int entry = NRegBrngsNew;
  __RegBrngsNew[entry] = r;
  NumOffsets[entry] = 1;
  NRegBrngsNew = entry + 1;
  return (entry + 1) << 20;
}

}  // namespace qor::rng
