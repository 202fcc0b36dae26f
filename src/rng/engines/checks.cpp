// What the list of generators tells of each engine: its checks of states that come from outside, its numbers' unit.
#include <algorithm>
#include <iterator>

#include "rng/engines/engines.def"
#include "rng/engines/mcg31m1.h"
#include "rng/engines/mcg59.h"
#include "rng/engines/mrg32k3a.h"
#include "rng/engines/mt19937.h"
#include "rng/engines/mt2203.h"
#include "rng/engines/niederreiter.h"
#include "rng/engines/r250.h"
#include "rng/engines/slots.h"
#include "rng/engines/sobol.h"
#include "rng/engines/wh.h"

namespace qor::rng {
namespace {

using Check = bool (*)(const Stream*);

// The state of a registered generator is its own affair; that of an abstract stream is addresses in this process, which
// no other can use.
bool always(const Stream*) { return true; }
bool never(const Stream*) { return false; }

#define QOR_ENGINE_CHECK(tag, Engine, ...) Slots<Engine>::valid,
#define QOR_NO_CHECK(...) never,
constexpr Check checks[] = {QOR_GENERATORS(QOR_ENGINE_CHECK, QOR_NO_CHECK)};
static_assert(std::size(checks) == predefined_generators);

Check check_of(const Stream* stream) {
  const int i = predefined_index(resolve(stream->brng));
  return i < predefined_generators ? checks[i] : always;
}

// An engine whose record still has the slots that it was made with.
struct Unit {
  decltype(BrngRecord::dOut) doubles;
  decltype(BrngRecord::iOut) words;
  double unit;
};
template <class Engine>
constexpr double unit_of_words() {
  if constexpr (requires { Engine::unit; }) {
    return sizeof(typename Engine::Word) == sizeof(std::uint32_t) ? Engine::unit : 0;
  } else {
    return 0;
  }
}
#define QOR_ENGINE_UNIT(tag, Engine, ...) {__wxrdBRng##tag, __wxriBRng##tag, unit_of_words<Engine>()},
constexpr Unit units[] = {QOR_ENGINES(QOR_ENGINE_UNIT)};

}  // namespace

bool has_valid_state(const Stream* stream) { return check_of(stream)(stream); }
bool can_be_stored(const Stream* stream) { return check_of(stream) != never; }

void unit_of(const Stream* stream, double& unit) {
  const BrngRecord& record = record_of(stream);
  const Unit* const found = std::find_if(std::begin(units), std::end(units), [&](const Unit& u) {
    return u.doubles == record.dOut && u.words == record.iOut;
  });
  unit = found == std::end(units) ? 0 : found->unit;
}

}  // namespace qor::rng
