// The order of work of a transform: phases of steps, a step being the one-dimensional transforms along one axis at all
// places of the others. Three arrays take part: the one that is read, the one that the columns' steps work in, and the
// one that is written; some of them may be the same.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "dft/settings.h"

namespace qor::dft {

enum Array : std::uint8_t { from, work, to };

struct Loop {
  int count;
  std::ptrdiff_t stride[3];  // in reals, in each array
};
// A place in each array.
template <class T>
struct Place {
  T* at[3];
  QOR_INLINE Place moved(const Loop& loop, std::ptrdiff_t i) const {
    return {{at[0] + i * loop.stride[0], at[1] + i * loop.stride[1], at[2] + i * loop.stride[2]}};
  }
};
// The loops that surround something, the slowest one first.
struct Nest {
  Loop loop[most_dimensions + 1];
  int depth = 0;
  void add(const Loop& l) { loop[depth++] = l; }
  int count() const {
    int n = 1;
    for (int i = 0; i < depth; ++i) n *= loop[i].count;
    return n;
  }
  template <class T>
  Place<T> place(Place<T> start, int index) const {
    for (int i = depth - 1; i >= 0 && index != 0; --i) {
      start = start.moved(loop[i], index % loop[i].count);
      index /= loop[i].count;
    }
    return start;
  }
};

struct Step {
  enum Kind : std::uint8_t { complex_rows, real_rows, columns } kind;
  Array source, target;
  bool scales;
  // Column 0 is in the work array already.
  bool patched;
  int axis;  // which of the lengths
  Loop along, across;
  Nest outside;
  int at_once;  // of `across` in an item
  int runs;     // items to a turn of `across`

  int items() const { return runs * outside.count(); }
};
// Its steps are done one after the other at each of the places, which threads share; with one step only, threads share
// its items.
struct Phase {
  Nest places;
  int first, last;  // steps
};
struct Program {
  Step step[most_dimensions];
  Phase phase[most_dimensions];
  int steps = 0, phases = 0;
};

// Sorts loops by the stride in the array, the largest first, drops those of one turn, and joins two that make one.
inline void arrange(Nest& nest, Array source, Array target, bool join) {
  const auto magnitude = [&](const Loop& l) { return std::abs(l.stride[target]); };
  sort_few(nest.loop, nest.depth, [&](const Loop& a, const Loop& b) { return magnitude(a) > magnitude(b); });
  int kept = 0;
  for (int i = 0; i < nest.depth; ++i) {
    const Loop l = nest.loop[i];
    if (l.count == 1) continue;
    if (join && kept > 0) {
      Loop& outer = nest.loop[kept - 1];
      if (outer.stride[source] == l.stride[source] * l.count && outer.stride[target] == l.stride[target] * l.count) {
        outer = {outer.count * l.count, {l.stride[0], l.stride[1], l.stride[2]}};
        continue;
      }
    }
    nest.loop[kept++] = l;
  }
  nest.depth = kept;
}

}  // namespace qor::dft
