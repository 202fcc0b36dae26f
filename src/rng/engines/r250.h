// R250: x[k] = x[k-250] xor x[k-103]. (S. Kirkpatrick and E. P. Stoll, J. Comput. Phys. 40, 1981.)
#pragma once

#include "rng/engines/sinks.h"
#include "rng/streams/status.h"

namespace qor::rng {

struct R250 {
  using Word = std::uint32_t;
  static constexpr double unit = 0x1p-32;
  static constexpr int least = 0;
  static constexpr int length = 250, lag = 103;

  std::uint32_t x[length];  // the last 250 words; a new word takes the place of the oldest
  std::int32_t oldest;
  std::int32_t tap;  // `lag`, and never changed: the distance back to the second word

  int seed(int n, const std::uint32_t* words) {
    oldest = 0;
    tap = lag;
    if (n >= length) {
      std::memcpy(x, words, sizeof x);
      return status::ok;
    }
    std::uint32_t fill = n >= 1 && words[0] != 0 ? words[0] : 1;
    for (std::uint32_t& word : x) word = fill = 69069 * fill;
    // A leading bit at a different place in each of 32 words keeps them linearly independent.
    for (int k = 0; k < 32; ++k) {
      std::uint32_t& word = x[3 + 7 * k];
      const std::uint32_t bit = std::uint32_t{1} << (31 - k);
      word = (word & (bit - 1)) | bit;
    }
    return status::ok;
  }
  int leapfrog(std::int32_t, int) { return status::no_leapfrog; }
  int skip_ahead(int) { return status::no_skip_ahead; }
  // All words zero is what 250 seeds of zero give.
  bool valid() const { return oldest >= 0 && oldest < length && tap == lag; }

  template <class Sink>
  void draw(int n, Sink sink) {
    for (int i = 0; i < n;) {
      // x[k-103] lies 147 places on while those are in the table, then 103 places back.
      const bool ahead = oldest < lag;
      const int other = ahead ? length - lag : -lag;
      const int room = (ahead ? lag : length) - oldest;
      const int count = room < n - i ? room : n - i;
      std::uint32_t* const word = x + oldest;
      int k = 0;
      for (; k <= count - lanes; k += lanes) {
        const VecU32 w = simd::load<VecU32>(word + k) ^ simd::load<VecU32>(word + k + other);
        simd::store(word + k, w);
        sink.put(i + k, w);
      }
      for (; k < count; ++k) {
        word[k] ^= word[k + other];
        sink.put(i + k, splat<VecU32>(word[k]), 1);
      }
      i += count;
      oldest += count;
      if (oldest == length) oldest = 0;
    }
  }

 private:
  static constexpr int lanes = simd::lanes<VecU32>;
};

}  // namespace qor::rng
