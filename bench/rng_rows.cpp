// Streams: words, doubles and singles on [0, 1), 10000 a call. The bar is the same recurrence as a plain loop, or the
// C++ library's own Mersenne Twister; the far mark is dSFMT.
#include <cstring>
#include <string>

#include "harness.h"
#include "qor/rng.h"

namespace bench {
namespace {

struct Engine {
  const char* name;
  int brng;
  const char* opponent;
  double words, doubles, singles;  // targets
  int word_bits;
  unsigned dimension = 0;  // of quasi-random vectors
};
const Engine engines[] = {
    {"MT19937", QOR_BRNG_MT19937, "std::mt19937", 1.8, 1.5, 0, 32},
    {"MT2203", QOR_BRNG_MT2203, "std engine", 1.6, 1.6, 1.6, 32},
    {"MRG32K3A", QOR_BRNG_MRG32K3A, "plain loop", 6, 6, 6, 32},
    {"MCG31M1", QOR_BRNG_MCG31M1, "plain loop", 3, 3, 3, 32},
    {"MCG59", QOR_BRNG_MCG59, "plain loop", 1.5, 1.5, 1.5, 64},
    {"R250", QOR_BRNG_R250, "gsl r250", 4, 4, 4, 32},
    {"WH", QOR_BRNG_WH, "plain loop", 3, 3, 3, 128},
    {"Sobol 40", QOR_BRNG_SOBOL, "gsl sobol", 0, 5, 0, 32, 40},
    {"Sobol 7", QOR_BRNG_SOBOL, "gsl sobol", 0, 0, 0, 32, 7},
    {"Sobol 1", QOR_BRNG_SOBOL, "gsl sobol", 0, 0, 0, 32, 1},
    {"Niederr 40", QOR_BRNG_NIEDERR, "gsl sobol", 0, 5, 0, 32, 40},
};
constexpr int elements = 10000;

int draw(qor_stream* s, int n, double* r) { return _wxrdRngUniform(0, s, n, r, 0, 1); }
int draw(qor_stream* s, int n, float* r) { return _wxrsRngUniform(0, s, n, r, 0, 1); }
int draw(qor_stream* s, int n, std::uint32_t* r) { return _wxriRngUniformBits(0, s, n, r); }
int draw(qor_stream* s, int n, std::uint64_t* r) {
  return _wxriRngUniformBits(0, s, n, static_cast<unsigned*>(static_cast<void*>(r)));
}
int draw(qor_stream* s, int n, WideWord* r) { return _wxriRngUniformBits(0, s, n, r->part); }

int open(qor_stream** stream, const Engine& engine) {
  return __wxrNewStreamEx(stream, engine.brng, engine.dimension > 0 ? 1 : 0, &engine.dimension);
}

// Opens the stream on first use: nothing of the library is called by rows that aren't run.
template <class T>
std::function<void(int)> ours(const Engine& engine) {
  return [engine, stream = static_cast<qor_stream*>(nullptr)](int n) mutable {
    if (stream == nullptr) open(&stream, engine);
    draw(stream, n, output<T>());
  };
}

// A call that failed would be quick, and a plain loop that made other numbers would be no opponent.
template <class T>
std::string check(const Engine& engine, const std::vector<DrawPeer<T>>& same) {
  qor_stream* stream = nullptr;
  int status = open(&stream, engine);
  if (status == 0) status = draw(stream, elements, output<T>());
  __wxrDeleteStream(&stream);
  if (status != 0) return "the library returns " + std::to_string(status);
  const std::vector<T> expected(output<T>(), output<T>() + elements);
  for (const DrawPeer<T>& peer : same) {
    peer.run(elements, output<T>());
    if (std::memcmp(expected.data(), output<T>(), elements * sizeof(T)) != 0) {
      return std::string(peer.name) + " and the library make different numbers";
    }
  }
  return {};
}

template <class T>
void add(std::vector<Work>& works, const Engine& engine, const char* what, double target) {
  Work work{"streams", std::string(engine.name) + " " + what, elements, {}, {}};
  work.contenders.push_back({"qor", 0, true, ours<T>(engine)});
  std::vector<DrawPeer<T>> same;
  for (const DrawPeer<T>& peer : draw_peers<T>()) {
    if (std::strcmp(peer.work, engine.name) != 0 && std::strcmp(peer.work, "uniform") != 0) continue;
    work.contenders.push_back({peer.name, 0, false, [peer](int n) { peer.run(n, output<T>()); }});
    if (peer.same_sequence) same.push_back(peer);
  }
  if (engine.dimension == 0 || std::strcmp(what, "words") != 0) {  // no peer delivers vectors of words
    work.claims.push_back({work.name, "qor", {engine.opponent}, no_limit, target, ""});
  }
  const bool far_target = std::strcmp(engine.name, "MT19937") == 0 && std::strcmp(what, "double") == 0;
  work.claims.push_back({work.name, "qor", {"dSFMT"}, no_limit, far_target ? 1.0 : 0.0, "far mark"});
  work.check = [engine, same] { return check<T>(engine, same); };
  works.push_back(work);
}

}  // namespace

void add_rng_rows(std::vector<Work>& works) {
  for (const Engine& engine : engines) {
    if (engine.word_bits == 32) add<std::uint32_t>(works, engine, "words", engine.words);
    if (engine.word_bits == 64) add<std::uint64_t>(works, engine, "words", engine.words);
    if (engine.word_bits == 128) add<WideWord>(works, engine, "words", engine.words);
    add<double>(works, engine, "double", engine.doubles);
    add<float>(works, engine, "single", engine.singles);
  }
}

}  // namespace bench
