// Loads whatever bytes libFuzzer makes up as a stream file. A stream that comes of it is drawn from in every way, moved
// about, copied, saved and loaded again: nothing may crash, leak, touch memory beyond its own or allocate much, and a
// saved file must give the same stream. The first argument that is no option is the folder of the corpus; valid files
// of every generator are put there first.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz/reader.h"
#include "qor/rng.h"
#include "rng/engines/engines.def"
#include "support/scratch_file.h"

namespace {

using qor::test::require;
using qor::test::ScratchFile;

constexpr int numbers = 1300;  // two blocks of the longest engine

// Raw words of all generators fit: up to 16 bytes each.
std::string drawn(qor_stream* s) {
  static unsigned words[4 * numbers];
  static double doubles[numbers];
  static float singles[numbers];
  std::string all;
  for (const int n : {1, 7, numbers}) {
    std::memset(words, 0, sizeof words);
    _wxriRngUniformBits(0, s, n, words);
    all.append(reinterpret_cast<const char*>(words), sizeof words);
    for (const int method : {0, 1}) {
      std::memset(doubles, 0, sizeof doubles);
      std::memset(singles, 0, sizeof singles);
      _wxrdRngGaussian(method, s, n, doubles, 0, 1);
      _wxrsRngGaussian(method, s, n, singles, 0, 1);
      all.append(reinterpret_cast<const char*>(doubles), sizeof doubles);
      all.append(reinterpret_cast<const char*>(singles), sizeof singles);
    }
    _wxrdRngUniform(0, s, n, doubles, -1, 3);
    _wxrsRngUniform(QOR_RNG_METHOD_ACCURATE, s, n, singles, -1, 3);
    all.append(reinterpret_cast<const char*>(doubles), sizeof doubles);
    all.append(reinterpret_cast<const char*>(singles), sizeof singles);
  }
  return all;
}

void exercise(qor_stream* s) {
  static const ScratchFile second, third;
  const std::string second_name = second.name(), third_name = third.name();
  qor_stream *copy = nullptr, *again = nullptr;
  require(__wxrCopyStream(&copy, s) == 0, "a loaded stream can be copied");
  require(__wxrSaveStreamF(s, second_name.c_str(), int(second_name.size())) == 0, "a loaded stream can be saved");
  require(__wxrLoadStreamF(&again, second_name.c_str()) == 0, "a saved stream can be loaded");
  const std::string sequence = drawn(s);
  require(drawn(copy) == sequence, "a copy continues the sequence");
  // Of two pending pairs another one can be the newer in the loaded list.
  const bool reordered = __wxrGetNumChunks(again) > 1;
  require(reordered || drawn(again) == sequence, "a loaded stream continues the sequence");

  __wxrSkipAheadStream(s, 12345);
  __wxrLeapfrogStream(s, 2, 7);
  drawn(s);
  require(__wxrSaveStreamF(s, third_name.c_str(), -1) == 0, "a used stream can be saved");
  __wxrDeleteStream(&again);
  require(__wxrLoadStreamF(&again, third_name.c_str()) == 0, "what drawing leaves behind can be loaded");
  __wxrDeleteStream(&again);
  __wxrDeleteStream(&copy);
}

void write_file(const std::string& name, const std::string& bytes) {
  if (std::FILE* f = std::fopen(name.c_str(), "wb")) {
    std::fwrite(bytes.data(), 1, bytes.size(), f);
    std::fclose(f);
  }
}

// Streams of each generator, fresh, used, and with chunks.
void write_seeds(const std::string& folder) {
#define QOR_ENGINE_BRNG(tag, ...) QOR_BRNG_##tag,
  const int brngs[] = {QOR_ENGINES(QOR_ENGINE_BRNG) 0, 1, 2, 3};
  const unsigned seeds[2] = {23, 45};
  ScratchFile file;
  for (const int brng : brngs) {
    for (const int kind : {0, 1, 2}) {
      qor_stream* s = nullptr;
      const bool quasi = brng == QOR_BRNG_SOBOL || brng == QOR_BRNG_NIEDERR;  // a dimension
      if (__wxrNewStreamEx(&s, brng, quasi ? 1 : 2, seeds) == 0) {
        double d;
        float f;
        if (kind > 0) _wxrdRngGaussian(1, s, 1, &d, 0, 1);
        if (kind > 1) {
          _wxrsRngGaussian(1, s, 1, &f, 0, 1);
          __wxrAddChunk(s, 9, std::calloc(1, 40), 40);
        }
        __wxrSaveStreamF(s, file.name().c_str(), -1);
        write_file(folder + "/seed-" + std::to_string(brng) + "-" + std::to_string(kind), file.bytes());
      }
      if (s != nullptr) __wxrDeleteStream(&s);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  for (int i = 1; i < *argc; ++i) {
    if ((*argv)[i][0] != '-') {
      write_seeds((*argv)[i]);
      break;
    }
  }
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t n) {
  static ScratchFile file;
  static const std::string name = file.name();
  file.set(bytes, n);
  qor_stream* s = nullptr;
  const int status = __wxrLoadStreamF(&s, name.c_str());
  require((status == 0) == (s != nullptr), "a stream comes with status 0");
  if (status == 0) {
    exercise(s);
    __wxrDeleteStream(&s);
  }
  return 0;
}
