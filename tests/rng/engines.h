// The engines as the tests know them: each one's plain recurrence, a word at a time, and a row for every engine of the
// list.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "qor/rng.h"
#include "rng/engines/engines.def"
#include "rng/nets.h"

namespace plain {

using Seeds = std::vector<unsigned>;

// A sequence and, as the words behind a stream's header, the state before its next element.
struct Sequence {
  virtual ~Sequence() = default;
  virtual std::uint64_t next() = 0;                 // a word; of wider ones the low half
  virtual std::uint64_t high() const { return 0; }  // the other half of that word
  virtual double u() const { return 0; }            // the number of the last element, where no word gives it
  virtual Seeds state() const = 0;
};

struct MCG31M1 : Sequence {
  static constexpr double unit = 4.656612875245797e-10;
  static constexpr int least = 1;
  std::uint64_t x, mult = 1132489760;
  explicit MCG31M1(const Seeds& s) : x(s.empty() || s[0] % 0x7FFFFFFFu == 0 ? 1 : s[0] % 0x7FFFFFFFu) {}
  std::uint64_t next() override {
    const std::uint64_t now = x;
    x = x * mult % 0x7FFFFFFF;
    return now;
  }
  Seeds state() const override { return {unsigned(x), unsigned(mult)}; }
};

struct MCG59 : Sequence {
  static constexpr double unit = 1.734723475976807e-18;
  static constexpr int least = 1;
  std::uint64_t x = 0, mult = 302875106592253;
  explicit MCG59(const Seeds& s) {
    if (s.size() > 0) x = s[0];
    if (s.size() > 1) x |= std::uint64_t{s[1] & 0x7FFFFFF} << 32;
    if (x == 0) x = 1;
  }
  std::uint64_t next() override {
    const std::uint64_t now = x;
    x = x * mult % (std::uint64_t{1} << 59);
    return now;
  }
  Seeds state() const override { return {unsigned(x), unsigned(x >> 32), unsigned(mult), unsigned(mult >> 32)}; }
};

struct MRG32K3A : Sequence {
  static constexpr double unit = 2.328306549837829e-10;
  static constexpr int least = 1;
  static constexpr std::int64_t m1 = 4294967087, m2 = 4294944443;
  std::int64_t s[3] = {1, 1, 1}, t[3] = {1, 1, 1};
  explicit MRG32K3A(const Seeds& words) {
    for (std::size_t i = 0; i < words.size() && i < 6; ++i) (i < 3 ? s[i] : t[i - 3]) = words[i] % (i < 3 ? m1 : m2);
    if (s[0] == 0 && s[1] == 0 && s[2] == 0) s[0] = 1;
    if (t[0] == 0 && t[1] == 0 && t[2] == 0) t[0] = 1;
  }
  std::uint64_t next() override {
    const auto mod = [](std::int64_t v, std::int64_t m) { return (v % m + m) % m; };
    const std::int64_t p = mod(1403580 * s[1] - 810728 * s[0], m1), q = mod(527612 * t[2] - 1370589 * t[0], m2);
    s[0] = s[1], s[1] = s[2], s[2] = p;
    t[0] = t[1], t[1] = t[2], t[2] = q;
    return std::uint64_t(mod(p - q, m1));
  }
  Seeds state() const override {
    return {unsigned(s[0]), unsigned(s[1]), unsigned(s[2]), unsigned(t[0]), unsigned(t[1]), unsigned(t[2])};
  }
};

struct R250 : Sequence {
  static constexpr double unit = 0x1p-32;
  static constexpr int least = 0;
  Seeds x;
  unsigned k = 0;
  explicit R250(const Seeds& s) : x(250) {
    unsigned fill = s.empty() || s[0] == 0 ? 1 : s[0];
    for (unsigned& w : x) w = fill *= 69069;
    for (unsigned j = 0, bit = 0x80000000; j < 32; ++j, bit >>= 1) x[3 + 7 * j] = x[3 + 7 * j] % bit + bit;
    if (s.size() >= 250) std::copy_n(s.begin(), 250, x.begin());
  }
  std::uint64_t next() override {
    const unsigned w = x[k % 250] ^= x[(k + 147) % 250];
    k = (k + 1) % 250;
    return w;
  }
  Seeds state() const override {
    Seeds all = x;
    all.insert(all.end(), {k, 103});
    return all;
  }
};

struct Twister : Sequence {
  static constexpr double unit = 0x1p-32;
  static constexpr int least = 0;
  const unsigned size, middle, upper, first_shift, a, b, c;
  Seeds mt;
  unsigned pos;
  Twister(unsigned words, unsigned m, unsigned mask, unsigned shift, const unsigned (&row)[3], Seeds key)
      : size(words), middle(m), upper(mask), first_shift(shift), a(row[0]), b(row[1]), c(row[2]), mt(size), pos(size) {
    if (key.empty()) key = {1};
    const unsigned n = unsigned(key.size());
    mt[0] = 19650218;
    for (unsigned i = 1; i < size; ++i) mt[i] = 1812433253 * (mt[i - 1] ^ (mt[i - 1] >> 30)) + i;
    unsigned i = 1;
    const auto mix = [&](unsigned factor, unsigned add) {
      mt[i] = (mt[i] ^ ((mt[i - 1] ^ (mt[i - 1] >> 30)) * factor)) + add;
      if (++i == size) mt[0] = mt[size - 1], i = 1;
    };
    for (unsigned k = 0; k < std::max(size, n); ++k) mix(1664525, key[k % n] + k % n);
    for (unsigned k = 0; k < size - 1; ++k) mix(1566083941, 0u - i);
    mt[0] = 0x80000000;
  }
  std::uint64_t next() override {
    if (pos == size) {
      for (unsigned k = 0; k < size; ++k) {
        const unsigned y = (mt[k] & upper) | (mt[(k + 1) % size] & ~upper);
        mt[k] = mt[(k + middle) % size] ^ (y >> 1) ^ (y % 2 != 0 ? a : 0);
      }
      pos = 0;
    }
    unsigned y = mt[pos++];
    y ^= y >> first_shift;
    y ^= (y << 7) & b;
    y ^= (y << 15) & c;
    return y ^ (y >> 18);
  }
  Seeds state() const override {
    Seeds all = mt;
    all.push_back(pos);
    return all;
  }
};

struct MT19937 : Twister {
  explicit MT19937(const Seeds& key) : Twister(624, 397, 0x80000000, 11, {0x9908B0DF, 0x9D2C5680, 0xEFC60000}, key) {}
};

struct MT2203 : Twister {
  explicit MT2203(const Seeds& key, int member = 0) : Twister(69, 34, 0xFFFFFFE0, 12, _wxr_mt2203_table[member], key) {}
  Seeds state() const override {
    Seeds all = Twister::state();
    all.insert(all.end(), {a, b, c});
    return all;
  }
};

struct WhRow {
  std::uint64_t m[4], a[4];
};
inline constexpr WhRow wh_table[] = {
#include "rng/engines/wh_table.inc"
};
struct WH : Sequence {
  static constexpr double unit = 0;  // times a word: no number
  static constexpr int least = 0;
  const WhRow& row;
  std::uint64_t x[4], mult[4], last[4] = {};
  explicit WH(const Seeds& s, int member = 0) : row(wh_table[member]) {
    for (unsigned i = 0; i < 4; ++i) {
      mult[i] = row.a[i];
      const std::uint64_t seed = i < s.size() ? s[i] % row.m[i] : 1;
      x[i] = (seed == 0 ? 1 : seed) * mult[i] % row.m[i];
    }
  }
  std::uint64_t next() override {
    for (int i = 0; i < 4; ++i) {
      last[i] = x[i];
      x[i] = x[i] * mult[i] % row.m[i];
    }
    return last[0] | last[1] << 32;
  }
  std::uint64_t high() const override { return last[2] | last[3] << 32; }
  double u() const override {
    double sum = 0;
    for (int i = 0; i < 4; ++i) sum += double(last[i]) * (1 / double(row.m[i]));
    return sum - std::floor(sum);
  }
  Seeds state() const override {
    Seeds all(x, x + 4);
    all.insert(all.end(), mult, mult + 4);
    return all;
  }
};

// Vectors by the Gray code of their index. `matrices` are those of the largest dimension.
struct Net : Sequence {
  static constexpr double unit = 0x1p-32;
  static constexpr int least = 0;
  const std::vector<Matrix>& matrices;
  unsigned d, index = 0, position = 0;
  Net(const std::vector<Matrix>& m, const Seeds& s)
      : matrices(m), d(s.size() == 1 && s[0] >= 1 && s[0] <= m.size() ? s[0] : 1) {}
  std::uint64_t next() override {
    const unsigned w = coordinate(matrices[position], gray_code(index));
    if (++position == d) position = 0, ++index;
    return w;
  }
  Seeds state() const override {
    const std::size_t most = matrices.size();
    Seeds all(34 * most + 4);
    all[0] = index, all[1] = d, all[2] = position;
    for (std::size_t j = 0; j < d; ++j) {
      for (unsigned r = 0; r < 32; ++r) all[4 + r * most + j] = coordinate(matrices[j], 1u << r);
      all[4 + 32 * most + j] = coordinate(matrices[j], gray_code(index));
    }
    return all;
  }
};
struct Sobol : Net {
  explicit Sobol(const Seeds& s) : Net(all(), s) {}
  static const std::vector<Matrix>& all() {
    static const std::vector<Matrix> matrices = sobol_matrices(sobol_table());
    return matrices;
  }
};
struct Niederr : Net {
  explicit Niederr(const Seeds& s) : Net(all(), s) {}
  static const std::vector<Matrix>& all() {
    static const std::vector<Matrix> matrices = niederreiter_matrices(irreducible_polynomials(318));
    return matrices;
  }
};

}  // namespace plain

struct EngineRow {
  std::string name;
  int brng;
  double unit;
  int least;       // elements that a request for none delivers
  int word_bytes;  // of a raw word
  bool quasi;      // seeded with a dimension, not with words of any value
  std::function<std::unique_ptr<plain::Sequence>(const plain::Seeds&)> sequence;
};
// By name in messages; its bytes have gaps.
inline void PrintTo(const EngineRow& row, std::ostream* out) { *out << row.name; }

inline const std::vector<EngineRow>& engine_rows() {
#define ENGINE_ROW(tag, engine, bytes, words, zero, width, ...) \
  {#tag,                                                        \
   QOR_BRNG_##tag,                                              \
   plain::tag::unit,                                            \
   plain::tag::least,                                           \
   width,                                                       \
   std::is_base_of_v<plain::Net, plain::tag>,                   \
   [](const plain::Seeds& s) -> std::unique_ptr<plain::Sequence> { return std::make_unique<plain::tag>(s); }},
  static const std::vector<EngineRow> rows = {QOR_ENGINES(ENGINE_ROW)};
#undef ENGINE_ROW
  return rows;
}

// A stream that deletes itself.
class TestStream {
 public:
  TestStream(int brng, const plain::Seeds& seeds)
      : status_(__wxrNewStreamEx(&s_, brng, int(seeds.size()), seeds.data())) {}
  explicit TestStream(qor_stream* s) : s_(s) {}
  TestStream(const TestStream&) = delete;
  TestStream& operator=(const TestStream&) = delete;
  ~TestStream() {
    if (s_ != nullptr) __wxrDeleteStream(&s_);
  }
  operator qor_stream*() const { return s_; }
  int status() const { return status_; }
  // The words behind the header.
  plain::Seeds state() const {
    BrngRecord record;
    __wxrGetBrngProperties(__wxrGetStreamStateBrng(s_), &record);
    plain::Seeds words(std::size_t(record.stateBytes - 16) / 4);
    std::memcpy(words.data(), reinterpret_cast<const char*>(s_) + 16, words.size() * 4);
    return words;
  }

 private:
  qor_stream* s_ = nullptr;
  int status_ = 0;
};
