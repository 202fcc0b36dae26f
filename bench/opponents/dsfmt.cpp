// dSFMT-19937: uniform numbers by the array.
#define DSFMT_MEXP 19937
#define HAVE_SSE2 1
#include <dSFMT.h>

#include <cstring>

#include "harness.h"

namespace bench {
namespace {

constexpr int block = 1000;

dsfmt_t* state() {
  static dsfmt_t s;
  static const bool ready = (dsfmt_init_gen_rand(&s, 1), true);
  static_cast<void>(ready);
  return &s;
}
const double* uniforms(int n) {
  static Buffer<double, at_inputs> b;
  dsfmt_fill_array_close_open(state(), b.data, n);
  return b.data;
}

// A word is the low half of a number of [1, 2), as the generator's own integer output has it.
template <class Word>
void words(int n, Word* r) {
  static Buffer<double, at_inputs> b;
  for (int i = 0; i < n; i += block) {
    const int m = n - i < block ? n - i : block;
    dsfmt_fill_array_close1_open2(state(), b.data, block);
    std::uint32_t halves[2 * block];
    std::memcpy(halves, b.data, sizeof halves);
    for (int j = 0; j < m; ++j) r[i + j] = halves[2 * j];
  }
}
// 64-bit words: the 52 bits that the generator has, and no more.
void wide_words(int n, std::uint64_t* r) {
  static Buffer<double, at_inputs> b;
  dsfmt_fill_array_close1_open2(state(), b.data, n);
  std::memcpy(r, b.data, static_cast<std::size_t>(n) * 8);
}
void doubles(int n, double* r) { dsfmt_fill_array_close_open(state(), r, n); }
void singles(int n, float* r) {
  for (int i = 0; i < n; i += block) {
    const double* const u = uniforms(block);
    const int m = n - i < block ? n - i : block;
    for (int j = 0; j < m; ++j) r[i + j] = static_cast<float>(u[j]);
  }
}

const Add here{DrawPeer<std::uint32_t>{"uniform", "dSFMT", false, words<std::uint32_t>},
               DrawPeer<std::uint64_t>{"uniform", "dSFMT", false, wide_words},
               DrawPeer<double>{"uniform", "dSFMT", false, doubles},
               DrawPeer<float>{"uniform", "dSFMT", false, singles}};

}  // namespace
}  // namespace bench
