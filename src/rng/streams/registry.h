// The registry of generators: two tables of records, one a numbering, and what an identifier means in them.
#pragma once

#include "qor/rng.h"

namespace qor::rng {

inline constexpr int registry_capacity = 512;
inline constexpr int predefined_generators = 12;  // of the current table
inline constexpr int legacy_generators = 279;     // of the legacy table; it never grows
inline constexpr int first_current_brng = 1 << 20;

struct Generator {
  BrngRecord* table;
  int entry;
  int member;
  const BrngRecord& record() const { return table[entry]; }
};

// The table, entry and member of an identifier. Never fails: an invalid one gives an entry that validate() rejects.
inline Generator resolve(int brng) {
  if (brng >= first_current_brng) return {__RegBrngsNew, (brng >> 20) - 1, brng & 0xFFFFF};
  if (brng >= 4 && brng < 277) return {__RegBrngs, 4, brng - 4};  // the legacy Wichmann-Hill family
  return {__RegBrngs, brng, 0};
}

// The place in the list of predefined generators; beyond its end for registered ones. The legacy table has a record for
// each of the 273 Wichmann-Hill members.
inline int predefined_index(const Generator& g) {
  return g.table == __RegBrngs && g.entry >= 277 ? g.entry - 272 : g.entry;
}

int validate(const BrngRecord* table, int entry, int member);
int properties(int brng, BrngRecord* record);
int register_generator(const BrngRecord* record);

}  // namespace qor::rng
