// Writes an engine's words to standard output, without end, for programs that test generators:
//
//   qor_words ENGINE[:MEMBER] [--seed N] [--one-seed] [--leapfrog N] [--numbers]
//
// ENGINE is a name of include/qor/rng.h (MT19937, ...). Words have 32 bits, in the order of this processor's bytes.
// Those of R250, MRG32K3A, MT19937 and MT2203 are written as they are; of MCG59 the upper 32 of 59 bits; of MCG31M1 the
// upper 16 bits of one and the next; of WH, whose words are four small residues, the first 32 bits of the number.
// MEMBER is that of a family, `all` for all members in turn, a word each. --numbers: of every engine the first 32 bits
// of its numbers, floor(2^32 u). --leapfrog: the first of N streams.
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "qor/rng.h"

namespace {

enum class Form { words, upper, halves, numbers };
struct Engine {
  const char* name;
  int brng, members;
  Form form;
};
constexpr Engine engines[] = {
    {"MCG31M1", QOR_BRNG_MCG31M1, 1, Form::halves},  {"R250", QOR_BRNG_R250, 1, Form::words},
    {"MRG32K3A", QOR_BRNG_MRG32K3A, 1, Form::words}, {"MCG59", QOR_BRNG_MCG59, 1, Form::upper},
    {"WH", QOR_BRNG_WH, 273, Form::numbers},         {"MT19937", QOR_BRNG_MT19937, 1, Form::words},
    {"MT2203", QOR_BRNG_MT2203, 1024, Form::words},
};
constexpr int block = 8192;

[[noreturn]] void fail(const std::string& what) {
  std::fprintf(stderr, "qor_words: %s\n", what.c_str());
  std::exit(2);
}
void check(int status, const char* what) {
  if (status != QOR_RNG_OK) fail(std::string(what) + " returns " + std::to_string(status));
}

// The next `block` words of a stream.
void draw(qor_stream* stream, Form form, std::uint32_t* out) {
  static std::uint32_t raw[2 * block];
  static double u[block];
  switch (form) {
    case Form::words:
      return check(_wxriRngUniformBits(0, stream, block, out), "drawing");
    case Form::upper:
      check(_wxriRngUniformBits(0, stream, block, raw), "drawing");
      for (int i = 0; i < block; ++i) out[i] = raw[2 * i] >> 27 | raw[2 * i + 1] << 5;
      return;
    case Form::halves:
      check(_wxriRngUniformBits(0, stream, 2 * block, raw), "drawing");
      for (int i = 0; i < block; ++i) out[i] = raw[2 * i] >> 15 << 16 | raw[2 * i + 1] >> 15;
      return;
    case Form::numbers:
      check(_wxrdRngUniform(0, stream, block, u, 0, 0x1p32), "drawing");
      for (int i = 0; i < block; ++i) out[i] = static_cast<std::uint32_t>(std::min(u[i], 0x1p32 - 1));
      return;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) fail("ENGINE[:MEMBER] [--seed N] [--one-seed] [--leapfrog N] [--numbers]");
  const std::string what = argv[1], name = what.substr(0, what.find(':'));
  const Engine* const engine =
      std::find_if(std::begin(engines), std::end(engines), [&](const Engine& e) { return name == e.name; });
  if (engine == std::end(engines)) fail("no engine " + name);
  unsigned seed = 1;
  int streams = 1, seed_words = 2;
  Form form = engine->form;
  for (int i = 2; i < argc; ++i) {
    if (std::strcmp(argv[i], "--numbers") == 0) {
      form = Form::numbers;
    } else if (std::strcmp(argv[i], "--one-seed") == 0) {
      seed_words = 1;
    } else if (i + 1 < argc && std::strcmp(argv[i], "--seed") == 0) {
      seed = static_cast<unsigned>(std::strtoul(argv[++i], nullptr, 0));
    } else if (i + 1 < argc && std::strcmp(argv[i], "--leapfrog") == 0) {
      streams = std::atoi(argv[++i]);
    } else {
      fail(std::string("unknown option ") + argv[i]);
    }
  }

  const std::string member = name == what ? "0" : what.substr(name.size() + 1);
  int first = std::atoi(member.c_str()), count = 1;
  if (member == "all") {
    first = 0;
    count = engine->members;
  }
  std::vector<qor_stream*> list(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    qor_stream*& stream = list[static_cast<std::size_t>(i)];
    const unsigned seeds[2] = {seed, static_cast<unsigned>(first + i)};
    const int given = engine->members > 1 ? seed_words : 1;
    check(__wxrNewStreamEx(&stream, engine->brng + first + i, given, seeds), "making the stream");
    if (streams > 1) check(__wxrLeapfrogStream(stream, 0, streams), "leapfrogging");
  }

  const std::size_t width = list.size();
  std::vector<std::uint32_t> words(width * block), column(block);
  for (;;) {
    for (std::size_t i = 0; i < width; ++i) {
      draw(list[i], form, column.data());
      for (std::size_t k = 0; k < block; ++k) words[k * width + i] = column[k];
    }
    const char* from = reinterpret_cast<const char*>(words.data());
    for (std::size_t left = words.size() * sizeof words[0]; left > 0;) {
      const ssize_t written = write(STDOUT_FILENO, from, left);
      if (written <= 0) return 0;
      from += written;
      left -= static_cast<std::size_t>(written);
    }
  }
}
