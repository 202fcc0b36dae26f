// Engines against their plain recurrences: every output function, request size, alignment and split.
#include "rng/engines.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <xmmintrin.h>

#include <fstream>
#include <sstream>

namespace {

plain::Seeds usual_seeds(const EngineRow& e) {
  if (e.quasi) return {e.name == "Sobol" ? 13u : 102u};
  return {777, 0xDEADBEEF, 3, 4, 5, 0x80000001};
}

double as_double(std::uint64_t w) { return double(unsigned(w)) + 0x1p32 * double(unsigned(w >> 32)); }
double number(const EngineRow& e, const plain::Sequence& seq, std::uint64_t w, double a, double b) {
  return e.word_bytes == 16 ? seq.u() * (b - a) + a : as_double(w) * ((b - a) * e.unit) + a;
}

// The three kinds of output as bytes of `n` elements, from the library and from the plain sequence.
enum class Kind { words, doubles, singles };
constexpr Kind kinds[] = {Kind::words, Kind::doubles, Kind::singles};

std::size_t element_bytes(const EngineRow& e, Kind kind) {
  return kind == Kind::words ? std::size_t(e.word_bytes) : kind == Kind::doubles ? 8 : 4;
}
int draw(qor_stream* s, Kind kind, int n, void* r, double a, double b) {
  BrngRecord record;
  __wxrGetBrngProperties(__wxrGetStreamStateBrng(s), &record);
  switch (kind) {
    case Kind::words:
      return record.iOut(s, n, static_cast<unsigned*>(r));
    case Kind::doubles:
      return record.dOut(s, n, static_cast<double*>(r), a, b);
    default:
      return record.sOut(s, n, static_cast<float*>(r), float(a), float(b));
  }
}
void plain_draw(const EngineRow& e, plain::Sequence& seq, Kind kind, int n, char* r, double a, double b) {
  for (int i = 0; i < n; ++i, r += element_bytes(e, kind)) {
    const std::uint64_t low = seq.next(), w[2] = {low, seq.high()};
    const double d = kind == Kind::singles ? number(e, seq, low, float(a), float(b)) : number(e, seq, low, a, b);
    const float f = float(d);
    std::memcpy(r,
                kind == Kind::words     ? static_cast<const void*>(w)
                : kind == Kind::doubles ? static_cast<const void*>(&d)
                                        : &f,
                element_bytes(e, kind));
  }
}

// Room that ends at a page without access.
class GuardedRoom {
 public:
  GuardedRoom()
      : base_(static_cast<char*>(
            mmap(nullptr, bytes + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
    mprotect(base_ + bytes, page, PROT_NONE);
  }
  ~GuardedRoom() { munmap(base_, bytes + page); }
  GuardedRoom(const GuardedRoom&) = delete;
  GuardedRoom& operator=(const GuardedRoom&) = delete;
  char* end() const { return base_ + bytes; }
  char* begin() const { return base_; }
  static constexpr std::size_t page = 4096, bytes = 28 * page;

 private:
  char* base_;
};

class Engines : public testing::TestWithParam<EngineRow> {};
INSTANTIATE_TEST_SUITE_P(All, Engines, testing::ValuesIn(engine_rows()),
                         [](const auto& row) { return row.param.name; });

TEST_P(Engines, DeliverThePlainSequenceForEverySizeAndAlignmentAndLeaveThePlainState) {
  const EngineRow& e = GetParam();
  const GuardedRoom room;
  std::vector<int> sizes = {127, 128, 129, 137,  138,  139,  206,  207,  208,  247,  250,  251, 353,
                            623, 624, 625, 1023, 1024, 1025, 1151, 1247, 1248, 1249, 3000, 6007};
  for (int n = 0; n <= 70; ++n) sizes.push_back(n);
  const double intervals[][2] = {{0, 1}, {-3, 2.5}, {0, 4}, {1, 2}};
  for (const int n : sizes) {
    // At the start, and after another part of the block, so that requests begin anywhere in it.
    for (const auto& [kind, before] : {std::pair{Kind::words, 0},
                                       {Kind::doubles, 0},
                                       {Kind::singles, 0},
                                       {Kind::words, n * 37 % 700},
                                       {Kind::doubles, n * 37 % 700},
                                       {Kind::singles, n * 37 % 700}}) {
      const auto& [a, b] = intervals[n / 3 % 4];
      const int delivered = std::max(n, e.least);
      const TestStream s(e.brng, usual_seeds(e));
      const auto seq = e.sequence(usual_seeds(e));
      std::vector<char> skipped(16 * 700);
      if (before > 0) draw(s, Kind::words, before, skipped.data(), 0, 1);
      for (int i = 0; i < before; ++i) seq->next();

      const std::size_t bytes = std::size_t(delivered) * element_bytes(e, kind), shift = std::size_t(n) / 4 % 4 * 4;
      std::vector<char> expected(bytes + 1);
      plain_draw(e, *seq, kind, delivered, expected.data(), a, b);
      char* const r = room.end() - shift - bytes;
      std::memset(room.begin(), 0x5A, GuardedRoom::bytes);
      ASSERT_EQ(draw(s, kind, n, r, a, b), 0);
      ASSERT_EQ(std::memcmp(r, expected.data(), bytes), 0)
          << n << " elements of kind " << int(kind) << " after " << before;
      ASSERT_EQ(s.state(), seq->state()) << n << " elements after " << before;
      for (const char* c = r - 64; c != room.end(); c = c + 1 == r ? r + bytes : c + 1)
        ASSERT_EQ(*c, 0x5A) << n << " elements";
    }
  }
}

TEST_P(Engines, GiveTheSameSequenceHoweverARequestIsSplit) {
  const EngineRow& e = GetParam();
  const TestStream s(e.brng, usual_seeds(e));
  const auto seq = e.sequence(usual_seeds(e));
  unsigned dice = 1;
  for (int total = 0; total < 40000;) {
    dice = dice * 69069 + 1;
    const int n = 1 + int((dice >> 16) % (total % 3 == 0 ? 2500 : 40));
    const Kind kind = kinds[(dice >> 8) % 3];
    std::vector<char> got(std::size_t(n) * element_bytes(e, kind)), expected(got.size());
    draw(s, kind, n, got.data(), 0, 1);
    plain_draw(e, *seq, kind, n, expected.data(), 0, 1);
    ASSERT_EQ(got, expected) << "elements " << total << " and on, kind " << int(kind);
    total += n;
  }
}

TEST_P(Engines, IgnoreTheCallersRoundingAndFlushToZero) {
  const EngineRow& e = GetParam();
  const unsigned caller = _mm_getcsr();
  for (const unsigned csr : {0x3F80u, 0x5F80u, 0xFFC0u | 0x1F80u}) {
    for (const Kind kind : kinds) {
      const TestStream s(e.brng, usual_seeds(e));
      const auto seq = e.sequence(usual_seeds(e));
      constexpr int n = 1300;
      std::vector<char> got(n * element_bytes(e, kind)), expected(got.size());
      _mm_setcsr(csr);
      if (((_mm_getcsr() ^ csr) & 0xFFC0) != 0) {
        _mm_setcsr(caller);
        GTEST_SKIP() << "this (emulated) processor has no such control bits";
      }
      draw(s, kind, n, got.data(), -1, 3);
      const unsigned after = _mm_getcsr();
      _mm_setcsr(caller);
      EXPECT_EQ(after & 0xFFC0, csr & 0xFFC0);
      plain_draw(e, *seq, kind, n, expected.data(), -1, 3);
      EXPECT_EQ(got, expected) << "kind " << int(kind) << ", control " << csr;
    }
  }
}

// R250's first word is the exclusive or of its words 0 and 147, so seeds can plant any word.
TEST(Conversion, RoundsOnceForHalfwayAndExtremeWords) {
  plain::Seeds planted = {0,          1,          2,          0xFFFF,     0x10000,    0xFFFFFFFF, 0xFFFFFF80,
                          0xFFFFFF7F, 0x7FFFFFFF, 0x80000000, 0x80000080, 0x80000180, 0x01000001, 0x01000003,
                          0x01FFFFFF, 0x00FFFFFF, 0xFFFF0000, 0x00008000, 0x4000003F};
  for (unsigned bit = 0; bit < 32; ++bit) planted.insert(planted.end(), {1u << bit, (3u << bit) + 1});
  plain::Seeds seeds(250);
  for (std::size_t i = 0; i < planted.size(); ++i) seeds[147 + i] = planted[i];
  for (const auto& [a, b] :
       {std::pair{0.0, 1.0}, {0.0, 2.0}, {1.0, 2.0}, {-0.0, 1.0}, {1.0, 0.0}, {5.0, 5.0}, {-1e-30, 1e30}}) {
    const TestStream s(QOR_BRNG_R250, seeds), t(QOR_BRNG_R250, seeds);
    double d[83];
    float f[83];
    draw(s, Kind::doubles, int(planted.size()), d, a, b);
    draw(t, Kind::singles, int(planted.size()), f, a, b);
    for (std::size_t i = 0; i < planted.size(); ++i) {
      const double low = float(a), width = double(float(b)) - low;
      EXPECT_EQ(d[i], planted[i] * ((b - a) * 0x1p-32) + a) << std::hex << planted[i] << " on " << a << ", " << b;
      EXPECT_EQ(f[i], float(planted[i] * (width * 0x1p-32) + low))
          << std::hex << planted[i] << " on " << a << ", " << b;
    }
  }
}

TEST(KnownAnswers, OfTheDataFile) {
  std::ifstream file(QOR_TEST_DATA "/engines.kat");
  int lines = 0;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream fields(line);
    std::string name, seed_field, seed;
    int first;
    fields >> name >> seed_field >> first;
    plain::Seeds seeds;
    std::istringstream seed_list(seed_field == "-" ? "" : seed_field);
    while (std::getline(seed_list, seed, ',')) seeds.push_back(unsigned(std::stoul(seed, nullptr, 16)));
    const auto e =
        std::find_if(engine_rows().begin(), engine_rows().end(), [&](const auto& row) { return row.name == name; });
    ASSERT_NE(e, engine_rows().end()) << line;
    const TestStream s(e->brng, seeds);
    const std::size_t width = std::size_t(e->word_bytes);
    std::vector<char> words((std::size_t(first) + 4) * width);
    draw(s, Kind::words, first + 4, words.data(), 0, 1);
    std::uint64_t expected;
    for (std::size_t i = std::size_t(first); fields >> expected; ++i) {
      std::uint64_t word = 0;
      std::memcpy(&word, &words[i * width], std::min<std::size_t>(width, 8));
      EXPECT_EQ(word, expected) << line << ": word " << i;
    }
    ++lines;
  }
  EXPECT_GE(lines, 30);
}

TEST(Seeding, TakesWhatTheEngineTakesOfAnyNumberOfWords) {
  plain::Seeds many(1300);
  for (unsigned i = 0; i < many.size(); ++i) many[i] = 0xFFFFFFF0 + i * 2654435761u;
  for (const EngineRow& e : engine_rows()) {
    if (e.quasi) continue;
    for (const std::size_t n : {0, 1, 2, 3, 5, 6, 7, 68, 69, 70, 249, 250, 251, 623, 624, 625, 1300}) {
      const plain::Seeds seeds(many.begin(), many.begin() + std::ptrdiff_t(n));
      const TestStream s(e.brng, seeds);
      EXPECT_EQ(s.status(), 0);
      EXPECT_EQ(s.state(), e.sequence(seeds)->state()) << e.name << ", " << n << " words";
    }
  }
}

// ---- leapfrog and skip-ahead --------------------------------------------------------------------------------------

// Words; of 128 bits a mixture of the halves.
std::vector<std::uint64_t> words(const EngineRow& e, qor_stream* s, int n) {
  std::vector<unsigned> raw(std::size_t(n * e.word_bytes / 4));
  draw(s, Kind::words, n, raw.data(), 0, 1);
  std::vector<std::uint64_t> out(std::size_t(n), 0);
  for (std::size_t i = 0; i < out.size(); ++i) {
    std::uint64_t word[2] = {};
    std::memcpy(word, reinterpret_cast<const char*>(raw.data()) + i * std::size_t(e.word_bytes),
                std::size_t(e.word_bytes));
    out[i] = word[0] + 1000003 * word[1];
  }
  return out;
}
const EngineRow& engine(const std::string& name) {
  return *std::find_if(engine_rows().begin(), engine_rows().end(), [&](const auto& row) { return row.name == name; });
}

TEST(Leapfrog, DeliversEveryNthElementAndThenSkipsInThoseElements) {
  for (const char* name : {"MCG31M1", "MCG59", "WH"}) {
    const EngineRow& e = engine(name);
    const TestStream whole(e.brng, {99});
    const auto all = words(e, whole, 4000);
    for (const auto& [k, nstreams] : {std::pair{0, 1}, {0, 3}, {1, 3}, {2, 3}, {6, 7}, {0, 100}, {57, 100}}) {
      const TestStream s(e.brng, {99});
      ASSERT_EQ(__wxrLeapfrogStream(s, k, nstreams), 0);
      const auto some = words(e, s, 20);
      for (int i = 0; i < 20; ++i) EXPECT_EQ(some[std::size_t(i)], all[std::size_t(k + i * nstreams)]) << name;
      ASSERT_EQ(__wxrSkipAheadStream(s, 5), 0);
      EXPECT_EQ(words(e, s, 1)[0], all[std::size_t(k + 25 * nstreams)]) << name;
      // A stream of a stream.
      ASSERT_EQ(__wxrLeapfrogStream(s, 1, 2), 0);
      const auto fewer = words(e, s, 2);
      EXPECT_EQ(fewer[0], all[std::size_t(k + 27 * nstreams)]) << name;
      EXPECT_EQ(fewer[1], all[std::size_t(k + 29 * nstreams)]) << name;
    }
  }
}

TEST(SkipAhead, IsDiscardingThatManyElements) {
  for (const char* name : {"MCG31M1", "MCG59", "MRG32K3A", "WH", "Sobol", "Niederr"}) {
    const EngineRow& e = engine(name);
    for (const int n : {0, 1, 2, 3, 4, 1000, 123457}) {
      const TestStream skipped(e.brng, usual_seeds(e)), drawn(e.brng, usual_seeds(e));
      ASSERT_EQ(__wxrSkipAheadStream(skipped, n), 0);
      if (n > 0) words(e, drawn, n);
      EXPECT_EQ(words(e, skipped, 1100), words(e, drawn, 1100)) << name << " after " << n;
    }
    // The longest jump in one and in several.
    const TestStream once(e.brng, usual_seeds(e)), split(e.brng, usual_seeds(e));
    __wxrSkipAheadStream(once, 0x7FFFFFFF);
    for (const int n : {0x40000000, 0x20000000, 0x1FFFFFFF}) __wxrSkipAheadStream(split, n);
    EXPECT_EQ(once.state(), split.state()) << name;
    __wxrSkipAheadStream(once, -1);
    EXPECT_EQ(once.state(), split.state()) << name << ": a negative count skips nothing";
  }
}

TEST(WichmannHill, MembersFollowTheirRowsUnderBothNumberings) {
  for (int member = 0; member < 273; member += member < 8 || member >= 264 ? 1 : 8) {
    const TestStream s(QOR_BRNG_WH + member, usual_seeds(engine("WH"))), old(4 + member, usual_seeds(engine("WH")));
    ASSERT_EQ(s.status(), 0);
    ASSERT_EQ(__wxrLeapfrogStream(s, 2, 3), 0);
    plain::WH seq(usual_seeds(engine("WH")), member);
    double all[60], third[20];
    ASSERT_EQ(_wxrdRngUniform(0, old, 60, all, 0, 1), 0);
    ASSERT_EQ(_wxrdRngUniform(0, s, 20, third, 0, 1), 0);
    for (int i = 0; i < 60; ++i) {
      seq.next();
      ASSERT_EQ(all[i], seq.u()) << "member " << member;
      if (i % 3 != 2) continue;
      ASSERT_EQ(third[i / 3], seq.u()) << "member " << member;
    }
    EXPECT_EQ(old.state(), seq.state()) << "member " << member;
  }
}

TEST(StateWords, FromAnotherGeneratorAreReducedHoweverManyElementsAreDrawn) {
  const auto after_foreign_words = [](const char* name, int n) {
    const TestStream s(engine(name).brng, {});
    std::memset(reinterpret_cast<char*>(static_cast<qor_stream*>(s)) + 16, 0xFF,
                std::string(name) == "MRG32K3A" ? 24
                : std::string(name) == "WH"     ? 32
                                                : std::size_t(engine(name).word_bytes));
    return words(engine(name), s, n);
  };
  for (const int n : {5, 9, 90, 2000}) {
    plain::MCG31M1 mcg31m1({});
    plain::MCG59 mcg59({});
    plain::MRG32K3A mrg32k3a({});
    plain::WH wh({});
    mcg31m1.x = 0xFFFFFFFF % 0x7FFFFFFF;
    mcg59.x = (std::uint64_t{1} << 59) - 1;
    for (int i = 0; i < 3; ++i) mrg32k3a.s[i] = mrg32k3a.t[i] = 0xFFFFFFFF;
    for (int i = 0; i < 4; ++i) wh.x[i] = wh.mult[i] = 0xFFFFFFFF % wh.row.m[i];
    for (const std::uint64_t w : after_foreign_words("MCG31M1", n)) ASSERT_EQ(w, mcg31m1.next()) << n;
    for (const std::uint64_t w : after_foreign_words("MCG59", n)) ASSERT_EQ(w, mcg59.next()) << n;
    for (const std::uint64_t w : after_foreign_words("MRG32K3A", n)) ASSERT_EQ(w, mrg32k3a.next()) << n;
    for (const std::uint64_t w : after_foreign_words("WH", n)) ASSERT_EQ(w, wh.next() + 1000003 * wh.high()) << n;
  }
}

// A zero once reached would stay.
TEST(StateWords, OfAZeroMultiplierCountAsOne) {
  const TestStream s(QOR_BRNG_WH, {7, 7, 7, 7});
  const auto before = s.state();
  unsigned* const state = reinterpret_cast<unsigned*>(static_cast<qor_stream*>(s)) + 4;
  for (int i = 0; i < 4; ++i) state[4 + i] = unsigned(plain::wh_table[0].m[i]);
  unsigned drawn[4 * 9];
  ASSERT_EQ(_wxriRngUniformBits(0, s, 9, drawn), 0);
  for (std::size_t i = 0; i < std::size(drawn); ++i) EXPECT_EQ(drawn[i], before[i % 4]) << i;
}

TEST(Initialisation, RefusesWhatAnEngineCannotDoAndLeavesItsState) {
  struct Refusal {
    const char* name;
    int leapfrog, skip;
  };
  for (const Refusal& r : {Refusal{"MCG31M1", 0, 0},
                           {"MCG59", 0, 0},
                           {"MRG32K3A", QOR_RNG_NO_LEAPFROG, 0},
                           {"WH", 0, 0},
                           {"R250", QOR_RNG_NO_LEAPFROG, QOR_RNG_NO_SKIP_AHEAD},
                           {"MT19937", QOR_RNG_NO_LEAPFROG, QOR_RNG_NO_SKIP_AHEAD},
                           {"MT2203", QOR_RNG_NO_LEAPFROG, QOR_RNG_NO_SKIP_AHEAD},

                           {"Sobol", QOR_RNG_NO_LEAPFROG, 0},
                           {"Niederr", QOR_RNG_NO_LEAPFROG, 0}}) {
    const EngineRow& e = engine(r.name);
    const TestStream s(e.brng, usual_seeds(e));
    const auto before = s.state();
    EXPECT_EQ(__wxrLeapfrogStream(s, 0, 1), r.leapfrog) << r.name;
    EXPECT_EQ(__wxrSkipAheadStream(s, r.skip == 0 ? 0 : 7), r.skip) << r.name;
    BrngRecord record;
    __wxrGetBrngProperties(e.brng, &record);
    const unsigned params[] = {1};
    EXPECT_EQ(record.initStream(3, s, 1, params), QOR_RNG_BAD_METHOD) << r.name;
    EXPECT_EQ(record.initStream(-1, s, 1, params), QOR_RNG_BAD_METHOD) << r.name;
    EXPECT_EQ(s.state(), before) << r.name;
  }
}

TEST(ModularPowers, ObeyTheLawsOfPowers) {
  constexpr unsigned m31 = 0x7FFFFFFF, moduli[] = {2, 1000003, m31, 4294967087, 4294944443, 0xFFFFFFFF};
  constexpr unsigned long long mask59 = (1ULL << 59) - 1;
  for (const unsigned a : {1u, 2u, 12345u, 1132489760u, 2147483646u}) {
    EXPECT_EQ(__wxriPowMod2P31M1(a, 0x7FFFFFFE), 1u) << "Fermat's theorem for " << a;
    unsigned long long p59 = 1;
    for (int n = 0; n < 70; ++n) {
      EXPECT_EQ(__wxriPowMod2P31M1(a, n), __wxriPowMod(a, n, m31));
      EXPECT_EQ(__wxriPowMod2P59(a, 0x3FFFFFF, n), p59);
      p59 = p59 * (a + (0x3FFFFFFULL << 32)) & mask59;
    }
    for (const unsigned m : moduli) {
      std::uint64_t p = 1;
      for (int n = 0; n < 70; ++n, p = p * a % m) EXPECT_EQ(__wxriPowMod(a, n, m), p) << a << "^" << n << " mod " << m;
    }
  }

  const unsigned row[3] = {527612, 4294967000, 4293573854};
  const unsigned companion[9] = {0, 1, 0, 0, 0, 1, row[2], row[1], row[0]};
  for (const unsigned m : {4294967087u, 4294944443u, 97u}) {
    unsigned step[3] = {4294944442, 7, 4000000000}, power[9], square[9], product[9];
    for (int n = 0; n < 40; ++n) {
      unsigned jumped[3] = {4294944442, 7, 4000000000}, multiplied[3];
      __wxriVect3PowMod(jumped, row, m, n);
      __wxriMatr3x3PowMod(companion, power, m, n);
      const unsigned start[3] = {4294944442, 7, 4000000000};
      __wxriMatr3x3VectMulMod(power, start, multiplied, m);
      for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(jumped[i], step[i] % m) << n;
        EXPECT_EQ(multiplied[i], step[i] % m) << n;
      }
      std::uint64_t next = 0;
      for (int i = 0; i < 3; ++i) next = (next + std::uint64_t{row[2 - i]} * (step[i] % m) % m) % m;
      step[0] = step[1], step[1] = step[2], step[2] = unsigned(next);
    }
    __wxriMatr3x3PowMod(companion, power, m, 12345);
    __wxriMatr3x3MulMod(power, power, square, m);
    __wxriMatr3x3PowMod(companion, product, m, 24690);
    EXPECT_TRUE(std::equal(square, square + 9, product)) << "modulo " << m;
  }
}

}  // namespace
