// The parameters of the MT2203 family.
#include <algorithm>
#include <iterator>

#include "base/target.h"
#include "qor/rng.h"

// GCC ignores the attribute where a constant is defined. NOLINTNEXTLINE(readability-redundant-declaration)
extern "C" QOR_DATA const unsigned _wxr_mt2203_table[1024][3];
constexpr unsigned _wxr_mt2203_table[1024][3] = {
#include "rng/engines/mt2203_table.inc"
};

namespace {

using Row = unsigned[3];
constexpr bool is(const Row& row, unsigned a, unsigned b, unsigned c) {
  return row[0] == a && row[1] == b && row[2] == c;
}
// These members are fixed for good.
static_assert(is(_wxr_mt2203_table[0], 0xAF81055F, 0xDD7EEF80, 0xEFD78000));
static_assert(is(_wxr_mt2203_table[1], 0x832604E1, 0x66AD7F80, 0xEBD58000));
static_assert(is(_wxr_mt2203_table[2], 0x92F70739, 0x656D7780, 0xEFC50000));
static_assert(is(_wxr_mt2203_table[1023], 0xE1B6093F, 0x9D326E80, 0xEFD58000));
// A mask's low bits meet none of the bits shifted to them.
static_assert(std::all_of(std::begin(_wxr_mt2203_table), std::end(_wxr_mt2203_table),
                          [](const Row& row) { return row[0] != 0 && row[1] % 128 == 0 && row[2] % 32768 == 0; }));

}  // namespace
