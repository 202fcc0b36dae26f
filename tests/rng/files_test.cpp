// Stream files: their bytes, the sequence after loading, every status, and files that were made to do harm.
#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <sstream>

#include "rng/engines.h"
#include "support/allocations.h"
#include "support/scratch_file.h"

namespace {

using plain::Seeds;
using qor::test::ScratchFile;

constexpr int callers_errno = 4711;

int save(const qor_stream* stream, const std::string& name) {
  errno = callers_errno;
  const int status = __wxrSaveStreamF(stream, name.c_str(), -1);
  EXPECT_EQ(errno, callers_errno);
  return status;
}
std::string saved(const qor_stream* stream) {
  const ScratchFile file;
  EXPECT_EQ(save(stream, file.name()), 0);
  return file.bytes();
}

// Loads and keeps what comes of it. The slot holds something else before.
struct Loaded {
  explicit Loaded(const std::string& name) {
    stream = untouched();
    errno = callers_errno;
    status = __wxrLoadStreamF(&stream, name.c_str());
    EXPECT_EQ(errno, callers_errno);
    EXPECT_TRUE(status == 0 || stream == nullptr || stream == untouched());
  }
  explicit Loaded(const ScratchFile& file) : Loaded(file.name()) {}
  Loaded(const Loaded&) = delete;
  Loaded& operator=(const Loaded&) = delete;
  ~Loaded() {
    if (status == 0) __wxrDeleteStream(&stream);
  }
  static qor_stream* untouched() { return reinterpret_cast<qor_stream*>(0x10); }

  qor_stream* stream;
  int status;
};
int load_status(const std::string& bytes) { return Loaded(ScratchFile(bytes)).status; }

void add_chunk(qor_stream* stream, unsigned key, const std::string& data) {
  void* const block = std::malloc(data.size() + 1);
  std::memcpy(block, data.data(), data.size());
  ASSERT_EQ(__wxrAddChunk(stream, key, block, unsigned(data.size())), 0);
}

// Files open and blocks alive, which must be as before when this goes.
class NothingLeft {
 public:
  NothingLeft() : files_(files()), blocks_(blocks()) {}
  ~NothingLeft() {
    EXPECT_EQ(blocks(), blocks_) << "blocks alive";
    EXPECT_EQ(files(), files_) << "open files";
  }

 private:
  static int blocks() {
#ifdef COUNTS_ALLOCATIONS
    return live_blocks;
#else
    return 0;
#endif
  }
  static int files() {
    int n = 0;
    DIR* const folder = opendir("/proc/self/fd");
    while (readdir(folder) != nullptr) ++n;
    closedir(folder);
    return n;
  }
  int files_, blocks_;
};

using namespace std::string_literals;

const std::string mcg_header = "RNG\0\x10\0\x08\0\0\0\0\0\0\0\x10\0"s;
const std::string mcg_file = mcg_header + "\x09\x03\0\0\x20\x6C\x80\x43"s;

TEST(StreamFiles, HaveTheseBytes) {
  EXPECT_EQ(saved(TestStream(QOR_BRNG_MCG31M1, {777})), mcg_file);

  const TestStream s(3, {5, 7});  // MCG59 by its number of old
  add_chunk(s, 1, "ab");
  __wxrAddChunk(s, 0x80000002, nullptr, 99);
  add_chunk(s, 3, "xyz\0\xFF"s);
  EXPECT_EQ(saved(s),
            "RNG\0\x10\0\x10\0\x03\0\0\0\x03\0\0\0"
            "\x05\0\0\0\x07\0\0\0\xFD\xC5\x23\x9B\x76\x13\x01\0"
            "\x03\0\0\0\x05\0\0\0xyz\0\xFF"
            "\x02\0\0\x80\0\0\0\0"
            "\x01\0\0\0\x02\0\0\0ab"s);
}

// The next elements in all forms, as bytes.
std::string drawn(qor_stream* s, int n) {
  std::vector<std::uint64_t> words(2 * std::size_t(n), 0);  // 16 bytes are the longest
  std::vector<double> doubles(std::size_t(n), 0);
  std::vector<float> singles(doubles.size());
  EXPECT_EQ(_wxriRngUniformBits(0, s, n, reinterpret_cast<unsigned*>(words.data())), 0);
  EXPECT_EQ(_wxrdRngUniform(0, s, n, doubles.data(), -1, 3), 0);
  EXPECT_EQ(_wxrsRngUniform(0, s, n, singles.data(), 0, 1), 0);
  return std::string(reinterpret_cast<const char*>(words.data()), 8 * words.size()) +
         std::string(reinterpret_cast<const char*>(doubles.data()), 8 * doubles.size()) +
         std::string(reinterpret_cast<const char*>(singles.data()), 4 * singles.size());
}

TEST(StreamFiles, ContinueTheSequenceOfEveryEngine) {
  for (const EngineRow& row : engine_rows()) {
    for (const int before : {0, 1, 100, 209, 1777}) {
      const TestStream s(row.brng, row.quasi ? Seeds{5} : Seeds{3, 1});
      if (before > 0) drawn(s, before);
      if (before == 100) __wxrLeapfrogStream(s, 2, 5);  // those that can
      const ScratchFile file(saved(s));
      const Loaded other(file);
      ASSERT_EQ(other.status, 0) << row.name;
      EXPECT_EQ(__wxrGetStreamStateBrng(other.stream), row.brng);
      EXPECT_EQ(saved(other.stream), file.bytes()) << row.name;
      for (const int n : {1, 1500}) EXPECT_TRUE(drawn(other.stream, n) == drawn(s, n)) << row.name << " " << before;
    }
  }
}

TEST(StreamFiles, BringChunksBackInReverseOrder) {
  const TestStream s(QOR_BRNG_MRG32K3A, {9});
  add_chunk(s, 5, "old");
  add_chunk(s, 6, "");
  add_chunk(s, 5, "newer");
  const Loaded once{ScratchFile(saved(s))};
  ASSERT_EQ(once.status, 0);
  ASSERT_EQ(__wxrGetNumChunks(once.stream), 3);
  EXPECT_EQ(std::memcmp(__wxrSearchChunk(once.stream, 5), "old", 3), 0);
  EXPECT_NE(__wxrSearchChunk(once.stream, 6), nullptr);
  EXPECT_NE(saved(once.stream), saved(s));
  const Loaded twice{ScratchFile(saved(once.stream))};
  ASSERT_EQ(twice.status, 0);
  EXPECT_EQ(saved(twice.stream), saved(s));
}

// The next n variates made in pairs, of both kinds, as bytes.
std::string gaussians(qor_stream* s, int n) {
  double d[8] = {};
  float f[8] = {};
  EXPECT_EQ(_wxrdRngGaussian(1, s, n, d, 0, 1), 0);
  EXPECT_EQ(_wxrsRngGaussian(1, s, n, f, 0, 1), 0);
  return {std::string(reinterpret_cast<const char*>(d), sizeof d) +
          std::string(reinterpret_cast<const char*>(f), sizeof f)};
}

TEST(StreamFiles, KeepPendingGaussianPairs) {
  const TestStream s(QOR_BRNG_MT19937, {9});
  for (const int n : {3, 4, 3}) {  // pending, pending, none
    gaussians(s, n);
    const Loaded other{ScratchFile(saved(s))};
    ASSERT_EQ(other.status, 0);
    for (const int m : {5, 2}) EXPECT_EQ(gaussians(other.stream, m), gaussians(s, m)) << n << " " << m;
  }
  // Chunks under the keys of pairs that are none.
  for (const unsigned size : {0u, 4u, 15u, 17u}) {
    const TestStream foreign(QOR_BRNG_MT19937, {9}), clean(QOR_BRNG_MT19937, {9});
    for (const unsigned key : {1u, 2u}) add_chunk(foreign, key, std::string(size, '\0'));
    const Loaded loaded{ScratchFile(saved(foreign))};
    ASSERT_EQ(loaded.status, 0);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(gaussians(loaded.stream, 5), gaussians(clean, 5)) << "size " << size;
  }
}

std::string le(unsigned value, int bytes = 4) { return {reinterpret_cast<const char*>(&value), std::size_t(bytes)}; }

TEST(StreamFiles, AreCheckedInOrder) {
  struct Edit {
    std::size_t at;
    std::string bytes;
  };
  struct Case {
    const char* what;
    int status;
    bool slot_null;
    std::vector<Edit> edits;
    std::size_t length = std::string::npos;
  };
  constexpr int bad = QOR_RNG_BAD_FILE, version = QOR_RNG_BAD_VERSION, shorter = QOR_RNG_CANNOT_READ;
  const std::string no_state = le(0) + le(0);
  // One chunk of 6 bytes at offset 24, its data at 32.
  const std::string whole = mcg_header + mcg_file.substr(16) + le(5) + le(6) + "chunk\1";
  const std::vector<Case> cases = {
      {"as it is", 0, false, {{8, "\1"}}},
      {"reserved bytes", 0, false, {{10, "\xFF\xFF"}}},
      {"longer header", 0, false, {{4, "\x11"}}},
      {"legacy number", 0, false, {{12, le(0)}}},
      {"bytes after the end", 0, false, {}},
      {"first byte of the magic", bad, false, {{0, "S"}}},
      {"third byte of the magic", bad, false, {{2, "\0"s}}},
      {"short and no magic", shorter, false, {{0, "X"}}, 15},
      {"version", version, false, {{3, "\1"}}},
      {"version and generator", version, false, {{3, "\xFF"}, {12, le(0x700000)}}},
      {"negative generator", bad, false, {{12, le(0xFFFFFFFF)}}},
      {"member of a single generator", bad, false, {{12, le(0x100001)}}},
      {"generator between the numberings", bad, false, {{12, le(279)}}},
      {"greater state", bad, false, {{6, "\x09"}}},
      {"another engine's state", bad, false, {{12, le(QOR_BRNG_MCG59)}}},
      {"shorter header", bad, false, {{4, "\x0F"}}},
      {"no header", bad, false, {{4, "\0\0"s}}},
      {"short after a wrong state size", bad, false, {{6, "\x09"}}, 16},
      {"short state", shorter, true, {}, 23},
      {"bad state", bad, true, {{16, no_state}}},
      {"bad state, short chunk", shorter, true, {{8, "\1"}, {16, no_state}}, 30},
      {"chunk a byte longer than the file", shorter, true, {{8, "\1"}, {28, le(7)}}},
      {"longest chunk", shorter, true, {{8, "\1"}, {28, le(0xFFFFFFFF)}}},
      {"most chunks", shorter, true, {{8, "\xFF\xFF"}}},
  };
  const NothingLeft check;
  for (const Case& c : cases) {
    std::string bytes = whole.substr(0, c.length);
    for (const Edit& e : c.edits) bytes.replace(e.at, e.bytes.size(), e.bytes);
    const Loaded loaded{ScratchFile(bytes)};
    EXPECT_EQ(loaded.status, c.status) << c.what;
    if (c.status == 0) continue;
    EXPECT_EQ(loaded.stream, c.slot_null ? nullptr : Loaded::untouched()) << c.what;
  }
}

TEST(StreamFiles, WithImpossibleStatesAreRefused) {
  // The state's words all `fill` but these: pairs of a place and a value.
  struct Case {
    int brng;
    unsigned fill;
    std::vector<std::string> possible, impossible;
  };
  const auto& [a, b, c] = _wxr_mt2203_table[3];
  const auto member = [&](unsigned a1, unsigned b1, unsigned c1) {
    return " 70 " + std::to_string(a1) + " 71 " + std::to_string(b1) + " 72 " + std::to_string(c1);
  };
  const std::string third = member(a, b, c);
  const auto& m = plain::wh_table[272].m;
  const std::string last = std::to_string(m[3] - 1), modulus = std::to_string(m[3]);
  const Case cases[] = {
      {QOR_BRNG_MCG31M1, 1, {"", "0 0x7FFFFFFE 1 0x7FFFFFFE"}, {"0 0", "0 0x7FFFFFFF", "1 0", "1 0x7FFFFFFF"}},
      {QOR_BRNG_MCG59, 0, {"0 2 2 5", "1 0x7FFFFFF 2 1"}, {"2 5", "0 1 2 3", "1 0x8000000 2 5", "0 1 2 5 3 0x8000000"}},
      {QOR_BRNG_MRG32K3A, 0, {"2 4294967086 3 4294944442"}, {"2 4294967087 3 1", "2 1 3 4294944443", "2 1", "5 1"}},
      {QOR_BRNG_WH + 272, 1, {"3 " + last}, {"3 " + modulus, "4 " + std::to_string(m[0]), "0 0", "7 0"}},
      {QOR_BRNG_R250, 0, {"250 249 251 103"}, {"250 250 251 103", "250 0x80000000 251 103", "250 0 251 102"}},
      {QOR_BRNG_MT19937,
       0,
       {"0 0x80000000", "1 1 624 624"},
       {"0 0x7FFFFFFF 624 1", "1 1 624 625", "1 1 624 0x80000000"}},
      {QOR_BRNG_MT2203 + 3, 0, {"0 0x20 69 69" + third}, {"0 0x1F 69 69" + third, "1 1 69 70" + third}},
      {QOR_BRNG_MT2203 + 3, 1, {}, {member(a ^ 2, b, c), member(a, b ^ 128, c), member(a, b, c ^ 32768)}},
      {QOR_BRNG_MT2203 + 4, 1, {}, {third}},
      {QOR_BRNG_SOBOL, 0, {"1 1", "0 1 1 2"}, {"", "1 41", "1 1 1284 1"}},
      {QOR_BRNG_NIEDERR, 0, {"1 1", "0 1 1 2"}, {"", "1 319", "1 1 10180 1"}},
  };
  for (const auto& [brng, fill, possible, impossible] : cases) {
    const std::string whole = saved(TestStream(brng, {3}));
    for (std::size_t i = 0; i < possible.size() + impossible.size(); ++i) {
      std::string bytes = whole.substr(0, 16);
      while (bytes.size() < whole.size()) bytes += le(fill);
      const std::string& changes = i < possible.size() ? possible[i] : impossible[i - possible.size()];
      std::istringstream in(changes);
      in.unsetf(std::ios::basefield);
      for (unsigned word, value; in >> word >> value;) bytes.replace(16 + 4 * word, 4, le(value));
      EXPECT_EQ(load_status(bytes), i < possible.size() ? 0 : QOR_RNG_BAD_FILE) << std::hex << brng << ": " << changes;
    }
  }
  // The states of abstract streams hold the addresses of another process; all ones are no state of the others.
  for (const int brng : {0, 3, 4, 276, 277, 278, QOR_BRNG_WH + 272, QOR_BRNG_SOBOL, QOR_BRNG_NIEDERR,
                         QOR_BRNG_MT2203 + 1023, QOR_BRNG_IABSTRACT, QOR_BRNG_DABSTRACT, QOR_BRNG_SABSTRACT}) {
    BrngRecord record;
    ASSERT_EQ(__wxrGetBrngProperties(brng, &record), 0);
    const unsigned size = unsigned(record.stateBytes) - 16;
    const std::string header = "RNG\0\x10\0"s + le(size, 2) + le(0) + le(unsigned(brng));
    EXPECT_EQ(load_status(header + std::string(size, '\xFF')), QOR_RNG_BAD_FILE) << std::hex << brng;
  }
}

// Everywhere in short files, at both ends and here and there in long ones.
std::vector<std::size_t> places(std::size_t bytes) {
  std::vector<std::size_t> list;
  for (std::size_t at = 0; at<bytes; at += at> 300 && at + 100 < bytes && bytes > 4000 ? 89 : 1) list.push_back(at);
  return list;
}

TEST(StreamFiles, CutShortAnywhereAreNotRead) {
  const auto& rows = engine_rows();  // made on the first call
  const NothingLeft check;
  for (const EngineRow& row : rows) {
    const TestStream s(row.brng, {3});
    add_chunk(s, 1, "twelve bytes");
    add_chunk(s, 2, "");
    const std::string whole = saved(s);
    for (const std::size_t n : places(whole.size())) {
      EXPECT_EQ(load_status(whole.substr(0, n)), QOR_RNG_CANNOT_READ) << row.name << " at " << n;
    }
  }
}

TEST(StreamFiles, DamagedInOneByteAreRefusedOrHarmless) {
  const auto& rows = engine_rows();
  const NothingLeft check;
  for (const EngineRow& row : rows) {
    const TestStream s(row.brng, {3});
    drawn(s, 10);
    const std::string whole = saved(s);
    ScratchFile file;
    for (const std::size_t at : places(whole.size())) {
      // Every value in the header and at both ends of the state, elsewhere the extremes and one bit.
      const bool every = at < 20 || at + 20 > whole.size();
      for (int change = 1; change < 256; change += every ? 1 : 127) {
        std::string bytes = whole;
        bytes[at] = char(bytes[at] ^ change);
        file.set(bytes);
        const Loaded loaded(file);
        if (loaded.status != 0) continue;
        EXPECT_EQ(saved(loaded.stream).substr(16), bytes.substr(16)) << row.name << ", byte " << at;
        drawn(loaded.stream, 9);
        unsigned more[4 * 1300];
        EXPECT_EQ(_wxriRngUniformBits(0, loaded.stream, 1300, more), 0);
        __wxrSkipAheadStream(loaded.stream, 1000);
        drawn(loaded.stream, 1);
      }
    }
  }
}

// A pipe with these bytes in it and nobody writing.
class Pipe {
 public:
  explicit Pipe(const std::string& bytes) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    EXPECT_GE(fcntl(ends[1], F_SETPIPE_SZ, 1 << 20), 1 << 20);
    EXPECT_EQ(write(ends[1], bytes.data(), bytes.size()), ssize_t(bytes.size()));
    close(ends[1]);
    end_ = ends[0];
  }
  ~Pipe() { close(end_); }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  std::string name() const { return "/proc/self/fd/" + std::to_string(end_); }

 private:
  int end_;
};

const std::string with_one_chunk = "RNG\0\x10\0\x08\0\x01\0\0\0\0\0\x10\0"s + mcg_file.substr(16) + le(7);

TEST(StreamFiles, CanBePipes) {
  const NothingLeft check;
  std::string data(300'000, 'q');
  for (std::size_t i = 0; i < data.size(); i += 977) data[i] = char(i);
  for (const std::size_t size : {0u, 1u, 65535u, 65536u, 65537u, 131072u, 131073u, 300'000u}) {
    const Pipe pipe(with_one_chunk + le(unsigned(size)) + data.substr(0, size));
    const Loaded loaded(pipe.name());
    ASSERT_EQ(loaded.status, 0) << size;
    EXPECT_EQ(std::memcmp(__wxrSearchChunk(loaded.stream, 7), data.data(), size), 0) << size;
  }
}

TEST(StreamFiles, MakeNoLargeAllocationThatTheyDoNotFill) {
  const NothingLeft check;
  for (const unsigned size : {1u << 24, 0x7FFFFFFFu, 0xFFFFFFF0u, 0xFFFFFFFFu}) {
    const std::string bytes = with_one_chunk + le(size) + std::string(70'000, 'q');
    const ScratchFile file(bytes);
    const Pipe pipe(bytes);
    for (const auto& [name, limit] : {std::pair(file.name(), 5000u), {pipe.name(), 140'000u}}) {
#ifdef COUNTS_ALLOCATIONS
      largest_request = 0;
#endif
      EXPECT_EQ(Loaded(name).status, QOR_RNG_CANNOT_READ) << size;
#ifdef COUNTS_ALLOCATIONS
      EXPECT_LE(largest_request, limit) << size;
#endif
    }
  }
}

TEST(StreamFiles, MayBeLargerThanAnAddressSpace) {
  // In a file system that refuses such files to programs with 32-bit offsets.
  const std::string name = testing::TempDir() + "qor_stream_file_" + std::to_string(getpid());
  const TestStream s(QOR_BRNG_MCG31M1, {777});
  ASSERT_EQ(save(s, name), 0);
  ASSERT_EQ(truncate64(name.c_str(), 6LL << 30), 0);
  const Loaded loaded(name);
  EXPECT_EQ(loaded.status, 0);

  // A chunk that the file holds and memory can't.
  ScratchFile file(with_one_chunk + le(0xFFFFFFE0));
  file.extend(6LL << 30);
  const NothingLeft check;
  const Loaded huge(file);
  EXPECT_EQ(huge.status, QOR_RNG_NO_MEMORY);
  EXPECT_EQ(huge.stream, nullptr);
  unlink(name.c_str());
}

TEST(StreamFiles, TakeNamesOfBothKinds) {
  const ScratchFile file;
  const std::string name = file.name(), longer = name + "/nowhere";
  const TestStream s(QOR_BRNG_MCG31M1, {777});
  EXPECT_EQ(__wxrSaveStreamF(s, longer.c_str(), int(name.size())), 0);
  EXPECT_EQ(file.bytes(), mcg_file);
  for (const int length : {-1, -0x7FFFFFFF - 1}) {
    file.clear();
    EXPECT_EQ(__wxrSaveStreamF(s, name.c_str(), length), 0);
    EXPECT_EQ(file.bytes(), mcg_file);
  }
  EXPECT_EQ(__wxrSaveStreamF(s, name.c_str(), 0), QOR_RNG_CANNOT_OPEN);
}

TEST(StreamFiles, ThatCannotBeOpenedReadOrWrittenSaySo) {
  const NothingLeft check;
  const TestStream s(QOR_BRNG_MCG31M1, {777});
  EXPECT_EQ(save(s, "/proc/nowhere/file"), QOR_RNG_CANNOT_OPEN);
  EXPECT_EQ(save(s, "/"), QOR_RNG_CANNOT_OPEN);
  EXPECT_EQ(Loaded("/proc/nowhere/file").status, QOR_RNG_CANNOT_OPEN);
  EXPECT_EQ(Loaded("/").status, QOR_RNG_CANNOT_READ);
  EXPECT_EQ(Loaded("/dev/null").status, QOR_RNG_CANNOT_READ);
  EXPECT_EQ(Loaded("/dev/zero").status, QOR_RNG_BAD_FILE);
  EXPECT_EQ(save(s, "/dev/null"), 0);
  // Written when the file is closed, or, beyond a buffer, before.
  const int small = save(s, "/dev/full");
  add_chunk(s, 1, std::string(100'000, 'q'));
  for (const int status : {small, save(s, "/dev/full")}) {
    EXPECT_TRUE(status == QOR_RNG_CANNOT_WRITE || status == QOR_RNG_CANNOT_CLOSE) << status;
  }
}

#ifdef COUNTS_ALLOCATIONS
TEST(StreamFiles, AnswerEveryFailedAllocation) {
  const TestStream s(QOR_BRNG_MT19937, {3});
  add_chunk(s, 1, "one");
  add_chunk(s, 2, "two");
  const ScratchFile file(saved(s));
  const std::string name = file.name();
  const NothingLeft check;
  for (int failures = 0;; ++failures) {
    until_failure = failures;
    const Loaded loaded(name);
    until_failure = -1;
    if (loaded.status == 0) {
      EXPECT_GE(failures, 6) << "the file, the stream, two chunks and their data";
      break;
    }
    ASSERT_EQ(loaded.status, failures == 0 ? QOR_RNG_CANNOT_OPEN : QOR_RNG_NO_MEMORY) << failures;
    EXPECT_EQ(loaded.stream, failures == 0 ? Loaded::untouched() : nullptr) << failures;
  }
  for (const int length : {int(name.size()), -1}) {  // with a copy of the name, and the file's own block
    until_failure = 0;
    const int status = __wxrSaveStreamF(s, name.c_str(), length);
    until_failure = -1;
    EXPECT_EQ(status, length < 0 ? QOR_RNG_CANNOT_OPEN : QOR_RNG_NO_MEMORY);
  }
}
#endif

int nothing_init(int, qor_stream*, int, const unsigned*) { return 0; }
int registered(int state_bytes) {
  const BrngRecord record = {state_bytes, 1, 0, 4, 32, nothing_init, __wxrsBRngR250, __wxrdBRngR250, __wxriBRngR250};
  return __wxrRegisterBrng(&record);
}

TEST(StreamFiles, CarryAnyStateOfRegisteredGenerators) {
  for (const int size : {0, 1, 65535}) {
    const int brng = registered(16 + size);
    const TestStream s(brng, {});
    std::memset(reinterpret_cast<char*>(static_cast<qor_stream*>(s)) + 16, 0xC3, std::size_t(size));
    const ScratchFile file(saved(s));
    EXPECT_EQ(file.bytes().size(), std::size_t(16 + size));
    EXPECT_EQ(file.bytes().substr(16), std::string(std::size_t(size), '\xC3'));
    const Loaded loaded(file);
    ASSERT_EQ(loaded.status, 0);
    EXPECT_TRUE(saved(loaded.stream) == file.bytes());
  }
  const TestStream headless(registered(3), {});
  EXPECT_EQ(load_status(saved(headless)), 0);
}

TEST(StreamFiles, ThatCouldNotBeLoadedAreNotWritten) {
  // A state longer than 16 bits can tell; addresses.
  unsigned words[4];
  double doubles[4];
  float singles[4];
  const auto update = [](auto*, int*, auto*, int*, int*, int*) { return 0; };
  qor_stream* list[4] = {};
  ASSERT_EQ(__wxrNewStreamEx(&list[0], registered(16 + 65536), 0, nullptr), 0);
  ASSERT_EQ(__wxriNewAbstractStream(&list[1], 4, words, update), 0);
  ASSERT_EQ(__wxrdNewAbstractStream(&list[2], 4, doubles, 0, 1, update), 0);
  ASSERT_EQ(__wxrsNewAbstractStream(&list[3], 4, singles, 0, 1, update), 0);
  for (qor_stream* const stream : list) {
    const TestStream owner(stream);
    const ScratchFile file("as before");
    EXPECT_EQ(save(stream, file.name()), QOR_RNG_BAD_FILE);
    EXPECT_EQ(file.bytes(), "as before");
    EXPECT_EQ(save(stream, "/proc/nowhere/file"), QOR_RNG_BAD_FILE) << "before anything is opened";
  }
}

TEST(StreamFiles, CountChunksIn16Bits) {
  const TestStream s(QOR_BRNG_MCG31M1, {777});
  for (unsigned i = 0; i < 65535; ++i) __wxrAddChunk(s, i, nullptr, 0);
  std::string bytes = saved(s);
  EXPECT_EQ(bytes.size(), 24u + 8 * 65535);
  const Loaded loaded{ScratchFile(bytes)};
  ASSERT_EQ(loaded.status, 0);
  EXPECT_EQ(__wxrGetNumChunks(loaded.stream), 65535);
  __wxrAddChunk(s, 65535, nullptr, 0);
  EXPECT_EQ(saved(s), mcg_file);
  __wxrAddChunk(s, 0xABCD, nullptr, 0);
  EXPECT_EQ(saved(s).substr(24), le(0xABCD) + le(0));
}

}  // namespace
