// What anyone would write: the C library in a loop, and each engine's recurrence in a loop, an element at a time.
#include <cmath>
#include <cstdint>

#include "harness.h"

namespace bench {
namespace {

// ---- engines, from the state of a stream without a seed. next() is an element, scale * next() lies in [0, 1) ----

struct Mcg31m1 {
  using Word = std::uint32_t;
  static constexpr const char* name = "MCG31M1";
  static constexpr double scale = 1.0 / 2147483647.0;
  std::uint32_t x = 1;
  std::uint32_t next() {
    const std::uint32_t now = x;
    x = static_cast<std::uint32_t>(std::uint64_t{1132489760} * x % 2147483647u);
    return now;
  }
};
struct Mcg59 {
  using Word = std::uint64_t;
  static constexpr const char* name = "MCG59";
  static constexpr double scale = 0x1p-59;
  std::uint64_t x = 1;
  std::uint64_t next() {
    const std::uint64_t now = x;
    x = (x * 302875106592253u) & ((std::uint64_t{1} << 59) - 1);
    return now;
  }
};
struct Mrg32k3a {
  using Word = std::uint32_t;
  static constexpr const char* name = "MRG32K3A";
  static constexpr std::int64_t m1 = 4294967087, m2 = 4294944443;
  static constexpr double scale = 1.0 / 4294967087.0;
  std::int64_t s0 = 1, s1 = 1, s2 = 1, t0 = 1, t1 = 1, t2 = 1;
  std::uint32_t next() {
    std::int64_t p = (1403580 * s1 - 810728 * s0) % m1, q = (527612 * t2 - 1370589 * t0) % m2;
    if (p < 0) p += m1;
    if (q < 0) q += m2;
    s0 = s1, s1 = s2, s2 = p;
    t0 = t1, t1 = t2, t2 = q;
    return static_cast<std::uint32_t>(p >= q ? p - q : p - q + m1);
  }
};
struct R250 {
  using Word = std::uint32_t;
  static constexpr const char* name = "R250";
  static constexpr double scale = 0x1p-32;
  std::uint32_t x[250], now = 0;
  R250() {
    std::uint32_t fill = 1;
    for (std::uint32_t& word : x) word = fill *= 69069;
    for (int k = 0; k < 32; ++k) {  // 32 words get a leading bit, each another one
      const std::uint32_t bit = 0x80000000u >> k;
      x[3 + 7 * k] = (x[3 + 7 * k] & (bit - 1)) | bit;
    }
  }
  std::uint32_t next() {
    x[now] ^= x[now < 103 ? now + 250 - 103 : now - 103];
    const std::uint32_t word = x[now];
    now = now == 249 ? 0 : now + 1;
    return word;
  }
};
// Member 0. The number isn't a multiple of the word.
struct Wh {
  using Word = WideWord;
  static constexpr const char* name = "WH";
  static constexpr std::uint32_t m0 = 16776899, m1 = 16775723, m2 = 16775483, m3 = 16775219;
  static constexpr std::uint32_t a0 = 7840622, a1 = 4237906, a2 = 15194678, a3 = 8514082;
  static constexpr double scale = 1;
  std::uint32_t x0 = a0, x1 = a1, x2 = a2, x3 = a3;
  WideWord word() {
    const WideWord now = {{x0, x1, x2, x3}};
    x0 = static_cast<std::uint32_t>(std::uint64_t{a0} * x0 % m0);
    x1 = static_cast<std::uint32_t>(std::uint64_t{a1} * x1 % m1);
    x2 = static_cast<std::uint32_t>(std::uint64_t{a2} * x2 % m2);
    x3 = static_cast<std::uint32_t>(std::uint64_t{a3} * x3 % m3);
    return now;
  }
  double next() {
    const WideWord w = word();
    const double s = w.part[0] * (1.0 / m0) + w.part[1] * (1.0 / m1) + w.part[2] * (1.0 / m2) + w.part[3] * (1.0 / m3);
    return s - static_cast<int>(s);
  }
};

template <class Engine, class T>
void draw(int n, T* r) {
  static Engine kept;
  Engine engine = kept;
  for (int i = 0; i < n; ++i) {
    if constexpr (std::is_same_v<T, WideWord>) {
      r[i] = engine.word();
    } else if constexpr (std::is_integral_v<T>) {
      r[i] = engine.next();
    } else {
      r[i] = static_cast<T>(static_cast<double>(engine.next()) * Engine::scale);
    }
  }
  kept = engine;
}
template <class Engine>
void add_engine() {
  using W = typename Engine::Word;
  Add{DrawPeer<W>{Engine::name, "plain loop", true, draw<Engine, W>},
      DrawPeer<double>{Engine::name, "plain loop", true, draw<Engine, double>},
      DrawPeer<float>{Engine::name, "plain loop", true, draw<Engine, float>}};
}

const bool added = [] {
  add_engine<Mcg31m1>();
  add_engine<Mcg59>();
  add_engine<Mrg32k3a>();
  add_engine<R250>();
  add_engine<Wh>();
  return true;
}();

}  // namespace
}  // namespace bench
