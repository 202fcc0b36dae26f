// The common part of the Mersenne Twisters: a block of N words made anew when it is used up, four words at a time, with
// tempering and output in the same pass. (M. Matsumoto and T. Nishimura, ACM Trans. Model. Comput. Simul. 8, 1998.)
#pragma once

#include "rng/engines/sinks.h"
#include "rng/streams/status.h"

namespace qor::rng {

// Engine::rule() gives the member's twist constant (`matrix`) and its `temper`, for vectors of words.
template <class Engine, int N, int M, std::uint32_t Upper>
struct Twister {
  using Word = std::uint32_t;
  static constexpr double unit = 0x1p-32;
  static constexpr int least = 0;

  std::uint32_t mt[N];
  std::int32_t pos;  // the next word to be tempered and delivered; N: the block is used up

  int seed(int n, const std::uint32_t* words) {
    constexpr std::uint32_t one = 1;
    if (n < 1) {
      n = 1;
      words = &one;
    }
    const auto mixed = [this](int i) { return mt[i - 1] ^ (mt[i - 1] >> 30); };
    mt[0] = 19650218;
    for (int i = 1; i < N; ++i) mt[i] = 1812433253 * mixed(i) + static_cast<std::uint32_t>(i);
    pos = N;

    int i = 1;
    const auto step = [this, &i] {
      if (++i == N) {
        mt[0] = mt[N - 1];
        i = 1;
      }
    };
    for (int k = 0, j = 0; k < (N > n ? N : n); ++k) {
      mt[i] = (mt[i] ^ (mixed(i) * 1664525)) + words[j] + static_cast<std::uint32_t>(j);
      step();
      if (++j == n) j = 0;
    }
    for (int k = 0; k < N - 1; ++k) {
      mt[i] = (mt[i] ^ (mixed(i) * 1566083941)) - static_cast<std::uint32_t>(i);
      step();
    }
    mt[0] = 0x80000000;
    return status::ok;
  }
  int leapfrog(std::int32_t, int) { return status::no_leapfrog; }
  int skip_ahead(int) { return status::no_skip_ahead; }
  // The recurrence permutes the nonzero states, of which the lower bits of the first word are no part.
  bool valid() const {
    std::uint32_t any = mt[0] & Upper;
    for (int k = 1; k < N; ++k) any |= mt[k];
    return any != 0 && pos >= 0 && pos <= N;
  }

  template <class Sink>
  void draw(int n, Sink sink) {
    const auto rule = static_cast<const Engine*>(this)->rule();
    for (int i = 0; i < n;) {
      if (pos == N) {
        if (n - i >= N) {
          regenerate(rule.matrix, [&](int k, VecU32 w, auto... count) { sink.put(i + k, rule.temper(w), count...); });
          i += N;
          continue;
        }
        regenerate(rule.matrix, [](auto...) {});
        pos = 0;
      }
      const int count = N - pos < n - i ? N - pos : n - i;
      int k = 0;
      for (; k <= count - lanes; k += lanes) sink.put(i + k, rule.temper(simd::load<VecU32>(mt + pos + k)));
      if (k < count) {
        std::uint32_t rest[lanes] = {};
        std::memcpy(rest, mt + pos + k, static_cast<std::size_t>(count - k) * sizeof *rest);
        sink.put(i + k, rule.temper(simd::load<VecU32>(rest)), count - k);
      }
      i += count;
      pos += count;
    }
  }

 private:
  static constexpr int lanes = simd::lanes<VecU32>;

  // The words at k, k + 1, ... taken round the block's end.
  template <int K>
  VecU32 wrapped() const {
    VecU32 v;
    for (int lane = 0; lane < lanes; ++lane) v[lane] = mt[(K + lane) % N];
    return v;
  }

  VecU32 next_to(int k) const { return simd::load<VecU32>(mt + k + 1); }

  // The next block in place, each vector of it given to out(k, words), a word that is left over to out(k, words, 1).
  // Word k comes from the old words k and k + 1 and from word k + M: old below N, then new.
  template <class Out>
  QOR_INLINE void regenerate(std::uint32_t matrix, Out out) {
    const VecU32 a = splat<VecU32>(matrix);
    const auto twist = [&](int k, VecU32 next, VecU32 middle) {
      const VecU32 y = (simd::load<VecU32>(mt + k) & splat<VecU32>(Upper)) | (next & splat<VecU32>(~Upper));
      const VecU32 w = middle ^ (y >> 1) ^ (simd::sign_mask(next << 31) & a);
      simd::store(mt + k, w);
      out(k, w);
    };
    constexpr int across = (N - M) / lanes * lanes;  // here the middle words run over the block's end
    constexpr int left = N % lanes;
    constexpr int last = N - left - lanes;  // the last vector: unless words are left, here the following words do, too
    static_assert((N - M) % lanes != 0 && left <= 1);
    for (int k = 0; k < across; k += lanes) twist(k, next_to(k), simd::load<VecU32>(mt + k + M));
    twist(across, next_to(across), wrapped<across + M>());
    for (int k = across + lanes; k < last; k += lanes) twist(k, next_to(k), simd::load<VecU32>(mt + k + M - N));
    if constexpr (left == 0) {
      twist(last, wrapped<last + 1>(), simd::load<VecU32>(mt + last + M - N));
    } else {
      twist(last, next_to(last), simd::load<VecU32>(mt + last + M - N));
      const std::uint32_t y = (mt[N - 1] & Upper) | (mt[0] & ~Upper);
      mt[N - 1] = mt[M - 1] ^ (y >> 1) ^ (y % 2 != 0 ? matrix : 0);
      out(N - 1, splat<VecU32>(mt[N - 1]), 1);
    }
  }
};

}  // namespace qor::rng
