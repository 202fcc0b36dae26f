// The output loop of engines that step a whole vector of consecutive elements at a time by one multiplication. Several
// vectors are in flight, since a step's latency is several times its work.
#pragma once

#include "rng/engines/sinks.h"

namespace qor::rng {

// word(v[c]) are the next chains * lanes<V> elements, step(v[c]) leads to those of the next round. Returns the element
// that follows the n delivered.
template <int chains, class V, class Word, class Step, class Sink>
QOR_INLINE simd::lane_t<V> draw_chains(V (&v)[chains], int n, Word word, Step step, Sink sink) {
  constexpr int lanes = simd::lanes<V>;
  int i = 0;
  for (; i <= n - chains * lanes; i += chains * lanes) {
    for (int c = 0; c < chains; ++c) {
      sink.put(i + c * lanes, word(v[c]));
      v[c] = step(v[c]);
    }
  }
  simd::lane_t<V> ahead[chains * lanes];
  for (int c = 0; c < chains; ++c) simd::store(ahead + c * lanes, word(v[c]));
  const simd::lane_t<V> next = ahead[n - i];
  int c = 0;
  for (; i <= n - lanes; i += lanes) sink.put(i, word(v[c++]));
  if (i < n) sink.put(i, word(v[c]), n - i);
  return next;
}

}  // namespace qor::rng
