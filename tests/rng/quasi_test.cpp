// Sobol and Niederreiter vectors: against generator matrices, by the equidistribution they promise, and what seeding,
// leapfrog and copies do with dimensions and tables.
#include <gtest/gtest.h>

#include <cerrno>

#include "numeric/gf2.h"
#include "rng/engines.h"
#include "rng/engines/niederreiter.h"
#include "rng/engines/sobol.h"
#include "support/allocations.h"
#include "support/scratch_file.h"

namespace {

using plain::gray_code;
using plain::Matrix;
using plain::Words;

struct Family {
  const char* name;
  int brng;
  unsigned most, key;
  const std::vector<Matrix>& matrices;
  Words usual_table;  // all of it, as a caller would give it
};
const std::vector<Family>& families() {
  static const std::vector<Family> list = [] {
    Words polynomials = plain::irreducible_polynomials(318);
    polynomials.insert(polynomials.begin(), 318);
    return std::vector<Family>{
        {"Sobol", QOR_BRNG_SOBOL, 40, QOR_RNG_CHUNK_SOBOL, plain::Sobol::all(), plain::sobol_table()},
        {"Niederr", QOR_BRNG_NIEDERR, 318, QOR_RNG_CHUNK_NIEDERR, plain::Niederr::all(), polynomials}};
  }();
  return list;
}
// Copied from the table: a caller's own table, cut to the first coordinates.
Words cut_table(const Family& f, unsigned d) {
  Words table = f.usual_table;
  std::size_t end = 1;
  for (unsigned j = 0; j < d; ++j) end += f.key == QOR_RNG_CHUNK_SOBOL ? std::size_t(std::bit_width(table[end])) : 1;
  table.resize(end);
  table[0] = d;
  return table;
}

Words draw(qor_stream* s, std::size_t n) {
  Words words(n);
  EXPECT_EQ(_wxriRngUniformBits(0, s, int(n), words.data()), 0);
  return words;
}
// Elements from a place on, of the first d coordinates.
Words expected(const Family& f, unsigned d, std::uint64_t from, std::size_t n) {
  Words words;
  for (std::uint64_t i = from; i < from + n; ++i) {
    words.push_back(plain::coordinate(f.matrices[std::size_t(i % d)], gray_code(unsigned(i / d))));
  }
  return words;
}

TEST(Quasi, DeliverTheSequenceOfTheMatricesInEveryDimensionAndSplit) {
  for (const Family& f : families()) {
    unsigned dice = 1;
    for (unsigned d = 1; d <= f.most; d += d < 42 || d > 310 ? 1 : 17) {
      const TestStream s(f.brng, {d});
      const std::size_t total = 700 + 20 * d;
      const Words all = expected(f, d, 0, total);
      for (std::size_t at = 0; at < total;) {
        dice = dice * 69069 + 1;
        const std::size_t n = std::min<std::size_t>(total - at, (dice >> 16) % (dice >> 30 == 0 ? 12 * d + 40 : 20));
        ASSERT_EQ(draw(s, n), Words(all.begin() + std::ptrdiff_t(at), all.begin() + std::ptrdiff_t(at + n)))
            << f.name << " in " << d << " dimensions, " << n << " elements from " << at;
        at += n;
      }
    }
  }
}

TEST(Quasi, SkipToAnyPlaceAndBeginAgainAfterAllVectors) {
  for (const Family& f : families()) {
    for (const unsigned d : {1u, 2u, 3u, 7u, 40u}) {
      const TestStream s(f.brng, {d});
      std::uint64_t at = 0;
      // To 300 elements before the end, in steps as long as they can be.
      for (const std::uint64_t end = (std::uint64_t{1} << 32) * d - 300; at < end;) {
        const std::uint64_t step = std::min<std::uint64_t>(end - at, 0x7FFFFFFF);
        ASSERT_EQ(__wxrSkipAheadStream(s, int(step)), 0);
        at += step;
        qor_stream* copy = nullptr;
        ASSERT_EQ(__wxrCopyStream(&copy, s), 0);
        ASSERT_EQ(draw(TestStream(copy), 50), expected(f, d, at, 50))
            << f.name << ", " << d << " dimensions, at " << at;
      }
      EXPECT_EQ(draw(s, 1000), expected(f, d, at, 1000)) << f.name << ", " << d << " dimensions, over the end";
      const TestStream again(f.brng, {d});
      draw(again, 700);
      EXPECT_EQ(s.state(), again.state());
    }
  }
}

TEST(Quasi, TakeAnyWordForADimension) {
  for (const Family& f : families()) {
    const Words one = TestStream(f.brng, {1}).state();
    EXPECT_EQ(TestStream(f.brng, {}).state(), one);
    for (const unsigned word : {0u, f.most + 1, 0x7FFFFFFFu, 0x80000001u, 0xFFFFFFFFu}) {
      const TestStream s(f.brng, {word});
      EXPECT_EQ(s.status(), 0);
      EXPECT_EQ(s.state(), one) << f.name << " of " << word;
    }
  }
}

TEST(Quasi, LeapfrogByCoordinate) {
  for (const Family& f : families()) {
    for (const auto& [d, before] : {std::pair{5u, 0u}, {5u, 15u}, {5u, 18u}, {f.most, 0u}, {f.most, 3 * f.most + 11}}) {
      for (const unsigned k : {0u, 1u, 3u, 4u, f.most - 1}) {
        if (k >= d) continue;
        const TestStream s(f.brng, {d});
        draw(s, before);
        const Words untouched = s.state();
        for (const auto& [stream, streams] : {std::pair{0u, d - 1}, {0u, d + 1}, {d, d}, {~0u, d}, {0u, 0u}}) {
          ASSERT_EQ(__wxrLeapfrogStream(s, int(stream), int(streams)), QOR_RNG_NO_LEAPFROG);
          ASSERT_EQ(s.state(), untouched);
        }
        ASSERT_EQ(__wxrLeapfrogStream(s, int(k), int(d)), 0);
        const unsigned vector = before / d + (k < before % d ? 1 : 0);
        const std::vector<Matrix> matrix = {f.matrices[k]};
        const Family column{f.name, f.brng, 1, f.key, matrix, {}};
        EXPECT_EQ(draw(s, 200), expected(column, 1, vector, 200))
            << f.name << ", coordinate " << k << " of " << d << " after " << before;
        ASSERT_EQ(__wxrSkipAheadStream(s, 1000001), 0);
        EXPECT_EQ(__wxrLeapfrogStream(s, 0, 1), 0);
        EXPECT_EQ(__wxrLeapfrogStream(s, 0, int(d)), QOR_RNG_NO_LEAPFROG);
        EXPECT_EQ(draw(s, 201), expected(column, 1, vector + 1000201, 201));
      }
    }
  }
}

// ---- the sequences' quality -----------------------------------------------------------------------------------------

// Does every elementary interval of volume 2^(t-m) hold 2^t of the first 2^m vectors? For all shapes over these
// coordinates.
bool is_net(const std::vector<Words>& vectors, const Words& coordinates, unsigned m, unsigned t) {
  std::vector<unsigned> digits(coordinates.size());
  const std::function<bool(std::size_t, unsigned)> shapes = [&](std::size_t j, unsigned left) {
    digits[j] = left;
    if (j + 1 < digits.size()) {
      for (digits[j] = 0; digits[j] <= left && shapes(j + 1, left - digits[j]); ++digits[j]) continue;
      return digits[j] > left;
    }
    std::vector<unsigned> count(std::size_t{1} << (m - t));
    for (std::size_t i = 0; i >> m == 0; ++i) {
      std::size_t cell = 0;
      for (std::size_t c = 0; c < digits.size(); ++c) {
        cell = cell << digits[c] | std::size_t(std::uint64_t{vectors[i][coordinates[c]]} >> (32 - digits[c]));
      }
      ++count[cell];
    }
    return std::all_of(count.begin(), count.end(), [&](unsigned n) { return n == 1u << t; });
  };
  return shapes(0, m - t);
}

TEST(Quasi, FillEveryElementaryInterval) {
  struct Case {
    Words coordinates;
    unsigned quality;  // t
  };
  for (const Family& f : families()) {
    const bool sobol = f.key == QOR_RNG_CHUNK_SOBOL;
    const unsigned d = sobol ? 40 : 8;
    const TestStream s(f.brng, {d});
    std::vector<Words> vectors;
    for (int i = 0; i < 1 << 10; ++i) vectors.push_back(draw(s, d));
    for (const unsigned m : {1u, 4u, 5u, 9u, 10u}) {
      std::vector<Case> cases = {{{0, 1}, 0}, {{0, 1, 2}, 1}};
      // The sum of the degrees less one; alone a coordinate of Niederreiter's is best after whole digits.
      if (!sobol) cases.push_back({{0, 1, 2, 3, 4}, 5});
      for (unsigned j = 0; j < d; ++j) {
        const unsigned e = sobol ? 1 : unsigned(std::bit_width(f.usual_table[1 + j])) - 1;
        cases.push_back({{j}, m % e == 0 ? 0 : e - 1});
      }
      for (const auto& [coordinates, t] : cases) {
        if (m < t + 1) continue;
        EXPECT_TRUE(is_net(vectors, coordinates, m, t))
            << f.name << ", coordinates " << testing::PrintToString(coordinates) << ", m = " << m;
      }
    }
  }
}

TEST(SobolTable, HasPropertyAInEveryDimension) {
  // By elimination: the first digits of V_1 .. V_D of each coordinate. They follow the recurrence of its polynomial, by
  // which they go on beyond the 32 that the engine needs.
  std::vector<std::uint64_t> first_digits;
  for (std::size_t at = 1; at < plain::sobol_table().size();) {
    const unsigned p = plain::sobol_table()[at], s = unsigned(std::bit_width(p)) - 1;
    std::uint64_t row = plain::Sobol::all()[first_digits.size()][0];
    for (unsigned k = 32; k < 40; ++k) {
      for (unsigned i = 1; i <= s; ++i) row ^= (p >> (s - i) & row >> (k - i) & 1) << k;
    }
    first_digits.push_back(row);
    at += s + 1;
  }
  for (std::size_t d = 1; d <= 40; ++d) {
    std::vector<std::uint64_t> rows(first_digits.begin(), first_digits.begin() + std::ptrdiff_t(d));
    std::size_t rank = 0;
    for (std::size_t column = 0; column < d; ++column) {
      const auto has = [&](std::uint64_t row) { return (row >> column & 1) != 0; };
      const auto pivot = std::find_if(rows.begin() + std::ptrdiff_t(rank), rows.end(), has);
      if (pivot == rows.end()) break;
      std::swap(*pivot, rows[rank]);
      for (std::size_t j = rank + 1; j < d; ++j) rows[j] ^= has(rows[j]) ? rows[rank] : 0;
      ++rank;
    }
    EXPECT_EQ(rank, d);
  }
}

TEST(SobolTable, HoldsThePrimitivePolynomialsInOrderAndItsDigest) {
  std::uint64_t digest = 0xCBF29CE484222325;
  for (const unsigned word : plain::sobol_table()) {
    for (int shift = 0; shift < 32; shift += 8) digest = (digest ^ (word >> shift & 0xFF)) * 0x100000001B3;
  }
  EXPECT_EQ(digest, 0xBB477AC630D78557) << "the sequence must not change";

  const Words& table = plain::sobol_table();
  ASSERT_EQ(table[0], 40u);
  ASSERT_EQ(table[1], 1u);
  std::size_t at = 2;
  for (unsigned p = 3; at < table.size(); ++p) {
    if (!qor::numeric::gf2::is_primitive(p)) continue;
    ASSERT_EQ(table[at], p);
    at += std::size_t(std::bit_width(p));
  }
  EXPECT_EQ(at, table.size());
}

TEST(Polynomials, AreAsManyAsThereAreOfEveryDegree) {
  // (1/n) sum over d | n of mu(d) 2^(n/d), and phi(2^n - 1) / n.
  constexpr unsigned irreducible[] = {2, 1, 2, 3, 6, 9, 18, 30, 56, 99, 186, 335};
  constexpr unsigned primitive[] = {1, 1, 2, 2, 6, 6, 18, 16, 48, 60, 176, 144};
  namespace gf2 = qor::numeric::gf2;
  for (unsigned n = 1; n <= 12; ++n) {
    unsigned found = 0, found_primitive = 0;
    for (unsigned p = 1u << n; p >> (n + 1) == 0; ++p) {
      found += gf2::is_irreducible(p);
      found_primitive += gf2::is_primitive(p);
    }
    EXPECT_EQ(found, irreducible[n - 1]) << "degree " << n;
    EXPECT_EQ(found_primitive, primitive[n - 1]) << "degree " << n;
  }
  EXPECT_FALSE(gf2::is_irreducible(0));
  EXPECT_FALSE(gf2::is_irreducible(1));
  EXPECT_FALSE(gf2::is_primitive(1));
}

// ---- tables of the caller's -----------------------------------------------------------------------------------------

TEST(CallersTable, GivesTheSequenceOfItsMatricesAndStaysOnTheStreamItsCopiesAndItsFile) {
  struct Case {
    int brng;
    Words table;
    std::vector<Matrix> matrices;
  };
  std::vector<Case> cases;
  // Other numbers than the library's, degree 31, the van der Corput sequence not in front; a single coordinate.
  Words high = {3, 7, 1, 3, 0x80000009};
  for (unsigned k = 1; k <= 31; ++k) high.push_back((0x9E3779B9u >> (31 - k) & ((1u << k) - 1)) | 1);
  high.push_back(1);
  for (const Words& table : {high, Words{2, 1, 13, 1, 3, 7}, Words{1, 1}, cut_table(families()[0], 40)}) {
    cases.push_back({QOR_BRNG_SOBOL, table, plain::sobol_matrices(table)});
  }
  for (const Words& table : {Words{4, 0x80000009, 31, 2, 0xFFFFFFFF & 7}, Words{1, 3}, cut_table(families()[1], 318),
                             Words{2, 0x400003, 2}}) {
    cases.push_back({QOR_BRNG_NIEDERR, table, plain::niederreiter_matrices({table.begin() + 1, table.end()})});
  }
  for (const Case& c : cases) {
    const bool sobol = c.brng == QOR_BRNG_SOBOL;
    const unsigned key = sobol ? QOR_RNG_CHUNK_SOBOL : QOR_RNG_CHUNK_NIEDERR, d = c.table[0];
    const Family f{"", c.brng, d, key, c.matrices, {}};
    const TestStream s(c.brng, c.table);
    ASSERT_EQ(s.status(), 0) << "a table of " << d << " dimensions that begins with " << c.table[1];
    EXPECT_EQ(draw(s, 900), expected(f, d, 0, 900));
    __wxrSkipAheadStream(s, 1234567);
    EXPECT_EQ(draw(s, 900), expected(f, d, 1235467, 900));

    qor_stream* copy = nullptr;
    ASSERT_EQ(__wxrCopyStream(&copy, s), 0);
    qor_stream* loaded = nullptr;
    const qor::test::ScratchFile file;
    ASSERT_EQ(__wxrSaveStreamF(s, file.name().c_str(), -1), 0);
    ASSERT_EQ(__wxrLoadStreamF(&loaded, file.name().c_str()), 0);
    const TestStream owner(copy), owner_of_loaded(loaded), other(c.brng, {2});
    EXPECT_EQ(__wxrCopyStreamState(other, s), 0);  // the state alone is enough to go on
    const Words next = draw(s, 1777);
    for (qor_stream* const another : {copy, loaded, static_cast<qor_stream*>(other)}) {
      EXPECT_EQ(draw(another, 1777), next);
      if (another == other) continue;
      const void* const kept = __wxrSearchChunk(another, key);
      ASSERT_NE(kept, nullptr);
      EXPECT_EQ(std::memcmp(kept, c.table.data(), 4 * c.table.size()), 0);
    }

    // Seeded anew the stream keeps no more than the new table, and chunks that are none of it.
    BrngRecord record;
    __wxrGetBrngProperties(c.brng, &record);
    __wxrAddChunk(s, 1, nullptr, 0);
    for (int again = 0; again < 2; ++again) {
      EXPECT_EQ(record.initStream(0, s, int(c.table.size()), c.table.data()), 0);
      EXPECT_EQ(__wxrGetNumChunks(s), 2);
    }
    EXPECT_EQ(draw(s, 100), expected(f, d, 0, 100));
    EXPECT_EQ(record.initStream(0, s, 0, nullptr), 0);
    EXPECT_EQ(__wxrGetNumChunks(s), 1);
    EXPECT_EQ(s.state(), TestStream(c.brng, {}).state());
  }
}

TEST(CallersTable, IsRefusedWhenItIsNone) {
  for (const Family& f : families()) {
    const bool sobol = f.key == QOR_RNG_CHUNK_SOBOL;
    // One word too many, one too few, one coordinate more than there can be.
    const Words table = cut_table(f, f.most);
    std::vector<Words> list(3, table);
    list[0].push_back(1);
    list[1].pop_back();
    list[2][0] = f.most + 1;
    list[2].push_back(sobol ? 1 : 0x80000009);
    const auto refuse = [&list](std::initializer_list<const char*> tables) {
      for (const char* text : tables) list.push_back(plain::words(text));
    };
    if (sobol) {
      refuse({"777 DEADBEEF 3", "0 1", "FFFFFFFF 1", "1 0", "2 1", "1 B 1 1", "1 80000009 1 3 5 7 9 B"});
      // x, which isn't primitive, (x + 1)^2, irreducible of order 5, reducible and cut off, one twice.
      refuse({"1 2 1", "1 5 1 1", "1 1F 1 1 1 1", "1 FFFFFFFF 1", "2 7 1 1 7 1 3", "2 1 1"});
      // Even or too large numbers.
      refuse({"1 7 1 2", "1 7 3 1", "1 7 1 5", "1 7 1 80000001"});
    } else {
      refuse({"2 2", "1 2 3", "0 2", "FFFFFFFF 2", "1 0", "1 1", "1 5", "1 FFFFFFFF", "2 7 7", "3 2 3 4"});
    }
    const Words one = TestStream(f.brng, {1}).state();
    for (const Words& bad : list) {
      const TestStream s(f.brng, bad);
      EXPECT_EQ(s.status(), QOR_RNG_BAD_ARGUMENT) << f.name << " " << testing::PrintToString(bad);
      EXPECT_EQ(s.state(), one);
      EXPECT_EQ(__wxrGetNumChunks(s), 0);
    }
  }
}

#ifdef COUNTS_ALLOCATIONS
TEST(CallersTable, ThatFindsNoMemoryLeavesDimensionOne) {
  until_failure = 0;
  void* const probe = malloc(1);
  until_failure = -1;
  free(probe);
  if (probe != nullptr) GTEST_SKIP() << "another allocator has taken the place of this program's";
  for (const Family& f : families()) {
    const Words one = TestStream(f.brng, {1}).state(), table = cut_table(f, 7);
    for (const int allocations : {1, 2}) {  // of the stream, of the copy; the chunk's is the third
      qor_stream* s = nullptr;
      const int before = live_blocks;
      errno = 99;
      until_failure = allocations;
      const int status = __wxrNewStreamEx(&s, f.brng, int(table.size()), table.data());
      until_failure = -1;
      EXPECT_EQ(status, QOR_RNG_NO_MEMORY);
      EXPECT_EQ(errno, 99);
      EXPECT_EQ(live_blocks, before + 1);
      const TestStream owner(s);
      EXPECT_EQ(owner.state(), one);
      EXPECT_EQ(__wxrGetNumChunks(s), 0);
    }
  }
}
#endif

// ---- states from outside --------------------------------------------------------------------------------------------

template <class Engine>
void expect_checks(int brng) {
  const auto engine = [](qor_stream* s) -> Engine& { return s->state<Engine>(); };
  const auto valid = [&](qor_stream* s) { return engine(s).valid(); };
  for (const unsigned d : {1u, 2u, 6u, unsigned(Engine::most)}) {
    const TestStream s(brng, {d});
    EXPECT_TRUE(valid(s));
    for (const std::size_t n : {1, 7, 40, 5000, 101}) {
      draw(s, n);
      EXPECT_TRUE(valid(s)) << d << " dimensions, after " << n;
      if (n == 7) __wxrSkipAheadStream(s, 0x7FFFFFFF);
      if (n == 5000) __wxrLeapfrogStream(s, int(d) - 1, int(d));
      EXPECT_TRUE(valid(s)) << d << " dimensions, jumped after " << n;
    }
  }

  // After 18 elements in five dimensions. Index, dimension, position and first coordinate, the rows, the vector.
  constexpr unsigned most = Engine::most, last = sizeof(Engine) / 4 - 1;
  const unsigned changes[][2] = {
      {0, 4},        {1, 0},        {1, most + 1},      {1, ~0u},           {1, 4},   {2, 5}, {2, ~0u},
      {3, most - 4}, {3, ~0u >> 1}, {32 * most + 8, 1}, {32 * most + 9, 1}, {last, 1}};
  for (const auto& [word, value] : changes) {
    const TestStream s(brng, {5});
    draw(s, 18);
    reinterpret_cast<unsigned*>(&engine(s))[word] = value;
    EXPECT_FALSE(valid(s)) << "word " << word << " = " << value;
    // Neither draws nor jumps may leave the state, whatever is in it; the sanitizers watch.
    __wxrSkipAheadStream(s, 3);
    __wxrLeapfrogStream(s, 0, engine(s).dimension);
    draw(s, 2000);
    EXPECT_TRUE(engine(s).settled());
  }
}
TEST(QuasiStates, AreToldFromImpossibleOnesWhichDoNoHarm) {
  expect_checks<qor::rng::Sobol>(QOR_BRNG_SOBOL);
  expect_checks<qor::rng::Niederreiter>(QOR_BRNG_NIEDERR);
}

}  // namespace
