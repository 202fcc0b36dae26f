// Registry, stream operations and chunks: rules, order of errors, ownership, deliberate oddities.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>

#include "rng/engines.h"
#include "support/allocations.h"

namespace {

struct Header {
  int brng;
  unsigned char flag;
  void* chunks;
  unsigned mark;
};
Header& header(qor_stream* s) { return *reinterpret_cast<Header*>(s); }

void* block(const char* text) { return strdup(text); }

int resolved_validity(int brng) {
  int entry, member;
  const BrngRecord* table = __wxrGetBrngBaseOffset(brng, &entry, &member);
  return __wxrIsBrngValid(table, entry, member);
}

TEST(Registry, ResolvesIdentifiersOfBothNumberings) {
  struct Case {
    int brng;
    const BrngRecord* table;
    int entry, member;
  };
  for (const Case& c : {Case{0, __RegBrngs, 0, 0},
                        {3, __RegBrngs, 3, 0},
                        {4, __RegBrngs, 4, 0},
                        {276, __RegBrngs, 4, 272},
                        {277, __RegBrngs, 277, 0},
                        {278, __RegBrngs, 278, 0},
                        {0xFFFFF, __RegBrngs, 0xFFFFF, 0},
                        {0x100000, __RegBrngsNew, 0, 0},
                        {0x500110, __RegBrngsNew, 4, 272},
                        {0x9003FF, __RegBrngsNew, 8, 1023},
                        {0x7FFFFFFF, __RegBrngsNew, 2046, 0xFFFFF},
                        {-1, __RegBrngs, -1, 0}}) {
    int entry, member;
    EXPECT_EQ(__wxrGetBrngBaseOffset(c.brng, &entry, &member), c.table) << c.brng;
    EXPECT_EQ(entry, c.entry) << c.brng;
    EXPECT_EQ(member, c.member) << c.brng;
  }
}

TEST(Registry, KnowsWhichIdentifiersExist) {
  for (const int brng :
       {0, 3, 4, 276, 277, 278, 0x100000, 0x500000, 0x500110, 0x800000, 0x900000, 0x9003FF, 0xC00000}) {
    EXPECT_EQ(resolved_validity(brng), 0) << std::hex << brng;
  }
  const int next = (__wxrGetNumRegBrngs() + 1) << 20;
  for (const int brng : {279, 0xFFFFF, 0x100001, 0x500111, 0x800001, 0x900400, next, 0x7FFFFFFF, -1, -0x7FFFFFFF - 1}) {
    EXPECT_EQ(resolved_validity(brng), QOR_RNG_BAD_BRNG) << std::hex << brng;
    qor_stream* s = reinterpret_cast<qor_stream*>(&s);
    BrngRecord record;
    EXPECT_EQ(__wxrNewStreamEx(&s, brng, 0, nullptr), QOR_RNG_BAD_BRNG) << std::hex << brng;
    EXPECT_EQ(s, reinterpret_cast<qor_stream*>(&s)) << "the slot is left alone";
    EXPECT_EQ(__wxrGetBrngProperties(brng, &record), QOR_RNG_BAD_BRNG) << std::hex << brng;
  }
  EXPECT_EQ(__wxrIsBrngValid(__RegBrngsNew, 0, -1), QOR_RNG_BAD_BRNG);
}

TEST(Registry, HoldsThePredefinedRecordsInBothTables) {
  struct Row {
    int brng, legacy, values[5], members;
  };
  for (const Row& row : {Row{0x100000, 0, {24, 1, 0, 4, 31}, 1},
                         {0x200000, 1, {1024, 252, 1, 4, 32}, 1},
                         {0x300000, 2, {40, 6, 1, 4, 32}, 1},
                         {0x400000, 3, {32, 1, 0, 8, 59}, 1},
                         {0x500000, 4, {48, 4, 1, 16, 24}, 273},
                         {0x500110, 276, {48, 4, 1, 16, 24}, 273},
                         {0x600000, 277, {5472, 1324, 0, 4, 32}, 1},
                         {0x700000, 278, {43280, 10498, 0, 4, 32}, 1},
                         {0x800000, -1, {2516, 625, 1, 4, 32}, 1},
                         {0x900000, -1, {308, 70, 1, 4, 32}, 1024},
                         {0xA00000, -1, {36, 0, 1, 4, 32}, 1},
                         {0xB00000, -1, {52, 0, 1, 4, 32}, 1},
                         {0xC00000, -1, {44, 0, 1, 4, 32}, 1}}) {
    BrngRecord r, old;
    ASSERT_EQ(__wxrGetBrngProperties(row.brng, &r), 0);
    const int values[] = {r.stateBytes, r.seedWords, r.zeroPossible, r.wordBytes, r.bitsPerWord};
    EXPECT_TRUE(std::equal(values, values + 5, row.values)) << std::hex << row.brng;
    EXPECT_EQ(NumOffsets[(row.brng >> 20) - 1], row.members) << std::hex << row.brng;
    if (row.legacy < 0) continue;
    ASSERT_EQ(__wxrGetBrngProperties(row.legacy, &old), 0);
    EXPECT_EQ(std::memcmp(&r, &old, sizeof r), 0) << "legacy identifier " << row.legacy;
  }
  for (int i = 4; i <= 276; ++i) EXPECT_EQ(std::memcmp(&__RegBrngs[i], &__RegBrngsNew[4], sizeof(BrngRecord)), 0) << i;
  EXPECT_EQ(__RegBrngs[0].initStream, &__wxrBRngMCG31M1InitStream);
  EXPECT_EQ(__RegBrngsNew[7].dOut, &__wxrdBRngMT19937);
}

TEST(Registry, LeavesAbstractStreamsToTheirConstructors) {
  for (const int brng : {QOR_BRNG_IABSTRACT, QOR_BRNG_DABSTRACT, QOR_BRNG_SABSTRACT}) {
    qor_stream* s = reinterpret_cast<qor_stream*>(&s);
    EXPECT_EQ(__wxrNewStreamEx(&s, brng, 0, nullptr), QOR_RNG_BAD_BRNG);
    EXPECT_EQ(s, reinterpret_cast<qor_stream*>(&s)) << "the slot is left alone";
  }
}

int seven(int, qor_stream* s, int, const unsigned*) {
  if (BrngRecord r; __wxrGetBrngProperties(__wxrGetStreamStateBrng(s), &r) == 0 && r.stateBytes > 16)
    std::memset(&header(s) + 1, 7, 4);
  return 7;
}
const BrngRecord registered = {24, 2, 0, 4, 32, seven, __wxrsBRngR250, __wxrdBRngR250, __wxriBRngR250};

TEST(Registration, ChecksARecordInOrder) {
  BrngRecord r = {-1, 0, 0, 5, 0, nullptr, nullptr, nullptr, nullptr};
  EXPECT_EQ(__wxrRegisterBrng(&r), QOR_RNG_BAD_STATE_BYTES);
  r.stateBytes = 0;
  EXPECT_EQ(__wxrRegisterBrng(&r), QOR_RNG_BAD_WORD_BYTES);
  r.wordBytes = 16;
  EXPECT_EQ(__wxrRegisterBrng(&r), QOR_RNG_BAD_SEED_WORDS);
  r.seedWords = 1;
  EXPECT_EQ(__wxrRegisterBrng(&r), QOR_RNG_BAD_BITS);
  BrngRecord missing[4] = {registered, registered, registered, registered};
  missing[0].dOut = nullptr;
  missing[1].sOut = nullptr;
  missing[2].iOut = nullptr;
  missing[3].initStream = nullptr;
  for (const BrngRecord& m : missing) EXPECT_EQ(__wxrRegisterBrng(&m), QOR_RNG_NULL_SLOT);
}

TEST(Registration, GivesTheNextIdentifierAndAWorkingGenerator) {
  const int before = __wxrGetNumRegBrngs();
  const int brng = __wxrRegisterBrng(&registered);
  EXPECT_EQ(brng, (before + 1) << 20);
  EXPECT_TRUE(before > 12 || brng == 0xD00000);
  EXPECT_EQ(__wxrGetNumRegBrngs(), before + 1);
  EXPECT_EQ(NRegBrngsNew, before + 1);
  EXPECT_EQ(NumOffsets[before], 1);
  const TestStream s(brng, {});
  EXPECT_EQ(s.status(), 7) << "the generator's own status";
  EXPECT_EQ(s.state()[0], 0x07070707u);
  EXPECT_EQ(resolved_validity(brng + 1), QOR_RNG_BAD_BRNG);

  // A record that asks for less than the header still gives whole streams.
  BrngRecord small = registered;
  small.stateBytes = 0;
  const TestStream t(__wxrRegisterBrng(&small), {});
  EXPECT_EQ(__wxrCopyStreamState(t, s), QOR_RNG_INCOMPATIBLE);
  EXPECT_EQ(__wxrCopyStreamState(s, t), QOR_RNG_INCOMPATIBLE);
  EXPECT_EQ(s.state()[0], 0x07070707u);
  qor_stream* copy;
  ASSERT_EQ(__wxrCopyStream(&copy, t), 0);
  __wxrDeleteStream(&copy);
}

TEST(Streams, StartWithAnEmptyHeader) {
  const TestStream s(QOR_BRNG_MCG31M1, {5});
  EXPECT_EQ(header(s).brng, QOR_BRNG_MCG31M1);
  EXPECT_EQ(header(s).flag, 1);
  EXPECT_EQ(header(s).chunks, nullptr);
  EXPECT_EQ(header(s).mark, 0u);
  const TestStream legacy(3, {5});
  EXPECT_EQ(__wxrGetStreamStateBrng(legacy), 3) << "the identifier is kept as given";
  EXPECT_EQ(legacy.state(), TestStream(QOR_BRNG_MCG59, {5}).state());
}

TEST(Streams, CopyTheirSeedableStateWithinBothStates) {
  const TestStream a(QOR_BRNG_MCG31M1, {5}), b(QOR_BRNG_MCG31M1, {6});
  __wxrLeapfrogStream(a, 1, 3);
  const auto a_before = a.state();
  ASSERT_EQ(__wxrCopyStreamState(b, a), 0);
  EXPECT_EQ(b.state(), (plain::Seeds{a_before[0], 1132489760})) << "the value alone, not the multiplier";
  EXPECT_EQ(__wxrCopyStreamState(a, a), 0);
  EXPECT_EQ(a.state(), a_before);

  // Between generators the bytes are copied all the same: those of the source's record.
  const TestStream c(QOR_BRNG_MCG59, {9, 1});
  EXPECT_EQ(__wxrCopyStreamState(c, a), QOR_RNG_INCOMPATIBLE);
  EXPECT_EQ(c.state()[0], a_before[0]);
  EXPECT_EQ(c.state()[1], 1u);
  // 2500 bytes of a twister into 8: the sanitizers see what lies beyond, and so does the heap's next block.
  const TestStream big(QOR_BRNG_MT19937, {1}), small(QOR_BRNG_MCG31M1, {1}), beside(QOR_BRNG_MCG31M1, {77});
  EXPECT_EQ(__wxrCopyStreamState(small, big), QOR_RNG_INCOMPATIBLE);
  EXPECT_EQ(small.state(), (plain::Seeds{big.state()[0], big.state()[1]}));
  EXPECT_EQ(beside.state()[0], 77u);
  // The Wichmann-Hill record has 64 seedable bytes in a state of 32.
  qor_stream *from = nullptr, *to = nullptr;
  __wxrNewStreamEx(&from, QOR_BRNG_WH, 0, nullptr);
  __wxrNewStreamEx(&to, QOR_BRNG_WH + 5, 0, nullptr);
  std::memset(&header(from) + 1, 0x77, 32);
  EXPECT_EQ(__wxrCopyStreamState(to, from), 0);
  EXPECT_EQ(std::memcmp(&header(from) + 1, &header(to) + 1, 32), 0);
  __wxrDeleteStream(&from);
  __wxrDeleteStream(&to);
}

TEST(Chunks, AreFoundByKeyTheNewestFirst) {
  const TestStream s(QOR_BRNG_MCG31M1, {});
  EXPECT_EQ(__wxrGetNumChunks(s), 0);
  EXPECT_EQ(__wxrSearchChunk(s, 1), nullptr);
  void *one = block("one"), *two = block("two"), *again = block("again");
  header(s).mark = 9;
  EXPECT_EQ(__wxrAddChunk(s, 1, one, 4), 0);
  EXPECT_EQ(header(s).mark, 0u);
  __wxrAddChunk(s, 2, two, 4);
  EXPECT_EQ(__wxrSearchChunk(s, 1), one);
  __wxrAddChunk(s, 1, again, 6);
  __wxrAddChunk(s, 3, nullptr, 100);
  EXPECT_EQ(__wxrSearchChunk(s, 1), again);
  EXPECT_EQ(__wxrSearchChunk(s, 2), two);
  EXPECT_EQ(__wxrSearchChunk(s, 3), nullptr);
  EXPECT_EQ(__wxrGetNumChunks(s), 4);
  header(s).mark = 9;
  EXPECT_EQ(__wxrDeleteChunks(s), 0);
  EXPECT_EQ(__wxrGetNumChunks(s), 0);
  EXPECT_EQ(header(s).mark, 0u);
}

struct Node {
  unsigned key, size;
  void* data;
  Node* next;
};

TEST(Streams, CopyWithChunksOfTheirOwn) {
  const TestStream source(QOR_BRNG_MT19937, {3});
  __wxrAddChunk(source, 1, block("first"), 6);
  __wxrAddChunk(source, 2, nullptr, 5);
  __wxrAddChunk(source, 1, block(""), 0);
  __wxrAddChunk(source, 4, block("\1last"), 6);
  header(source).mark = 11;
  unsigned drawn[700], more[700];
  _wxriRngUniformBits(0, source, 700, drawn);
  qor_stream* raw = nullptr;
  ASSERT_EQ(__wxrCopyStream(&raw, source), 0);
  const TestStream copy(raw);
  EXPECT_EQ(header(copy).mark, 11u);
  const Node *a = static_cast<Node*>(header(source).chunks), *b = static_cast<Node*>(header(copy).chunks);
  for (; a != nullptr && b != nullptr; a = a->next, b = b->next) {
    EXPECT_NE(a, b);
    EXPECT_EQ(a->key, b->key);
    EXPECT_EQ(a->size, b->size);
    EXPECT_EQ(a->data == nullptr, b->data == nullptr);
    if (a->data == nullptr) continue;
    EXPECT_NE(a->data, b->data);
    EXPECT_EQ(std::memcmp(a->data, b->data, a->size), 0);
  }
  EXPECT_EQ(a, b) << "lists of the same length";
  _wxriRngUniformBits(0, source, 700, drawn);
  _wxriRngUniformBits(0, copy, 700, more);
  EXPECT_TRUE(std::equal(drawn, drawn + 700, more));
}

#ifdef COUNTS_ALLOCATIONS
TEST(Streams, AnswerEveryFailedAllocationAndKeepErrno) {
  until_failure = 0;
  void* const probe = block("probe");
  until_failure = -1;
  std::free(probe);
  if (probe != nullptr) GTEST_SKIP() << "another allocator has taken the place of this program's";

  const TestStream source(QOR_BRNG_MT19937, {3});
  for (unsigned key = 1; key <= 3; ++key) __wxrAddChunk(source, key, block("data"), 5);
  qor_stream* copy = nullptr;
  int failures = 0, status = QOR_RNG_NO_MEMORY;
  for (; status == QOR_RNG_NO_MEMORY && failures < 20; failures += status == QOR_RNG_NO_MEMORY) {
    const int before = live_blocks;
    copy = source;
    errno = 99;
    until_failure = failures;
    status = __wxrCopyStream(&copy, source);
    until_failure = -1;
    EXPECT_EQ(errno, 99);
    if (status != QOR_RNG_NO_MEMORY) break;
    EXPECT_EQ(copy, nullptr) << "allocation " << failures;
    EXPECT_EQ(live_blocks, before) << "allocation " << failures;
  }
  EXPECT_EQ(status, 0);
  EXPECT_EQ(failures, 7) << "a block, three nodes and their data";
  __wxrDeleteStream(&copy);

  char data[4];
  qor_stream* fresh = source;
  until_failure = 0;
  const int add = __wxrAddChunk(source, 9, data, 4), create = __wxrNewStreamEx(&fresh, QOR_BRNG_MT19937, 0, nullptr);
  until_failure = -1;
  EXPECT_EQ(add, QOR_RNG_NO_MEMORY);
  EXPECT_EQ(__wxrGetNumChunks(source), 3);
  EXPECT_EQ(create, QOR_RNG_NO_MEMORY);
  EXPECT_EQ(fresh, nullptr);
}
#else
TEST(Streams, LeaveNothingBehindWhenAChunkCannotBeCopied) {
  const TestStream source(QOR_BRNG_MCG59, {3});
  __wxrAddChunk(source, 1, block("huge"), 0xF0000000);  // more than there is
  __wxrAddChunk(source, 2, block("small"), 6);
  qor_stream* copy = source;
  errno = 99;
  EXPECT_EQ(__wxrCopyStream(&copy, source), QOR_RNG_NO_MEMORY);
  EXPECT_EQ(copy, nullptr);
  EXPECT_EQ(errno, 99);
  EXPECT_EQ(__wxrGetNumChunks(source), 2);
}
#endif

// Last, since there is no way back.
TEST(Registration, EndsWhenTheRegistryIsFull) {
  while (__wxrGetNumRegBrngs() < 512) ASSERT_GT(__wxrRegisterBrng(&registered), 0);
  EXPECT_EQ(__wxrRegisterBrng(&registered), QOR_RNG_REGISTRY_FULL);
  EXPECT_EQ(__wxrGetNumRegBrngs(), 512);
  EXPECT_EQ(resolved_validity(512 << 20), 0);
  EXPECT_EQ(resolved_validity(513 << 20), QOR_RNG_BAD_BRNG);
}

}  // namespace
