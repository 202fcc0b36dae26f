// The benchmark harness. A work item is one job that several contenders do on the same data: the library's functions
// and its opponents. All contenders of an item take turns, one short slot each, for many rounds in one process, so that
// whatever else the machine does falls on all of them alike; only ratios of such rounds mean anything.
//
// Rows are added by add_*_rows(); opponents add themselves to the lists of peers below when their file is compiled in.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace bench {

constexpr double no_limit = 1e300;

// One implementation. call(n) does the job once on n elements; for opponents n is a multiple of 8. Its largest error in
// ulp is a measured constant where a comparison is made within a class of accuracy, otherwise 0.
struct Contender {
  std::string name;
  double ulp = 0;
  bool ours = false;
  std::function<void(int n)> call;
  // In rounds of its own behind the others: wide vectors lower the clock for what follows them.
  bool apart = false;
};

// One row of the table: one of our functions against the fastest of the opponents that are named (all, when none is)
// and whose error is within max_ulp. A target of 0 means that none is set.
struct Claim {
  std::string label, ours;
  std::vector<std::string> against;
  double max_ulp = no_limit, target = 0;
  std::string note;
  std::string mean = "";  // the geometric mean of the ratios of all claims with the same name here gets a line
};

struct Work {
  std::string group, name;
  int elements = 1000;
  std::vector<Contender> contenders;
  std::vector<Claim> claims;
  double flops = 0;                              // nominal, an element; for tables in MFLOPS
  int most_rounds = 1 << 30;                     // of work that takes long
  std::function<std::string()> check = nullptr;  // run once before the timing; a complaint makes the row void
};

inline constexpr int small_size = 8, large_size = 100000;

// Nanoseconds per element of each contender, by round.
using Times = std::vector<std::vector<double>>;
Times measure(const std::vector<Contender>& contenders, int elements, int rounds);

double minimum(const std::vector<double>& v);
double median(std::vector<double> v);
std::vector<double> ratios(const std::vector<double>& a, const std::vector<double>& b);

// ---- opponents ------------------------------------------------------------------------------------------------------

// A function of vector mathematics, of one argument or two; r2 is SinCos's second output.
template <class T>
struct MathPeer {
  const char *function, *name;
  void (*run)(int n, const T* a, const T* b, T* r, T* r2);
};
// A word of 128 bits.
struct WideWord {
  std::uint32_t part[4];
};
// A source of random numbers, T = std::uint32_t, std::uint64_t and WideWord being words. work is "uniform" for one that
// serves every engine's row, an engine's name for one that makes that engine's numbers (same_sequence: the very same
// ones, from a stream with no seed), or "Gaussian", "Gaussian 0", "Gaussian 1".
template <class T>
struct DrawPeer {
  const char *work, *name;
  bool same_sequence;
  void (*run)(int n, T* r);
};

// Transforms of n values, real or complex, out of place. plan() takes its time and returns what does one transform.
enum class FftKind { real_forward, real_inverse, complex_forward };
template <class T>
struct FftPeer {
  const char* name;
  bool in_class;  // SSE2 alone
  std::function<void()> (*plan)(FftKind kind, int n, T* in, T* out);
};
template <class T>
std::vector<FftPeer<T>>& fft_peers() {
  static std::vector<FftPeer<T>> list;
  return list;
}
// The same of several dimensions, on a number of threads.
template <class T>
struct DftPeer {
  const char* name;
  std::function<void()> (*plan)(FftKind kind, const std::vector<int>& n, int threads, T* in, T* out);
};
template <class T>
std::vector<DftPeer<T>>& dft_peers() {
  static std::vector<DftPeer<T>> list;
  return list;
}
// The full convolution of rank 2 (rank 1: nx1 = ny1 = 1), dimension 0 first; x is the shorter operand.
template <class T>
struct ConvPeer {
  const char* name;
  void (*run)(const T* x, int nx0, int nx1, const T* y, int ny0, int ny1, T* z);
};

// The full convolution of arrays of n and m elements in each dimension, x the shorter one, by transforms of `points`
// points a dimension: one for each block of y that leaves room, if `blocks`. plan() takes its time.
struct FftConv {
  int rank, n, m, points;
  bool blocks;
};
template <class T>
struct FftConvPeer {
  const char* name;
  std::function<void()> (*plan)(const FftConv& what, const T* x, const T* y, T* z);
};

template <class T>
std::vector<MathPeer<T>>& math_peers() {
  static std::vector<MathPeer<T>> list;
  return list;
}
template <class T>
std::vector<DrawPeer<T>>& draw_peers() {
  static std::vector<DrawPeer<T>> list;
  return list;
}

template <class T>
std::vector<ConvPeer<T>>& conv_peers() {
  static std::vector<ConvPeer<T>> list;
  return list;
}

template <class T>
std::vector<FftConvPeer<T>>& fft_conv_peers() {
  static std::vector<FftConvPeer<T>> list;
  return list;
}

// At namespace scope: const Add here{MathPeer<double>{...}, ...}.
struct Add {
  template <class... Peer>
  explicit Add(Peer... peers) {
    (add(peers), ...);
  }

 private:
  template <class T>
  static void add(const MathPeer<T>& p) {
    math_peers<T>().push_back(p);
  }
  template <class T>
  static void add(const FftPeer<T>& p) {
    fft_peers<T>().push_back(p);
  }
  template <class T>
  static void add(const DftPeer<T>& p) {
    dft_peers<T>().push_back(p);
  }
  template <class T>
  static void add(const DrawPeer<T>& p) {
    draw_peers<T>().push_back(p);
  }
  template <class T>
  static void add(const ConvPeer<T>& p) {
    conv_peers<T>().push_back(p);
  }
  template <class T>
  static void add(const FftConvPeer<T>& p) {
    fft_conv_peers<T>().push_back(p);
  }
};

// ---- rows -----------------------------------------------------------------------------------------------------------

// Every array of the benchmarks holds large_size elements at least and starts at a fixed place within its page, inputs
// half a page away from outputs: a load that seems to overlap an earlier store, for having the same low 12 bits of
// address, waits for it, and that must not depend on where the arrays happen to be.
inline constexpr int at_outputs = 0, at_second_outputs = 1024, at_inputs = 2048;
template <class T, int Place>
struct alignas(4096) Buffer {
  alignas(64) char skipped[Place + 64];
  T data[large_size + 64];
};
template <class T>
T* output();  // where contenders write
template <class T>
T* second_output();

// A work item of vector mathematics: a function on ranges of its arguments.
struct Range {
  double from, to;
  enum Spacing { even, logarithmic, both_signs } spacing = even;  // both_signs: logarithmic, either sign
};
struct MathItem {
  const char *name, *function;
  Range a, b = {1, 1};
};
extern const std::vector<MathItem> math_items;
double sample(const Range& range, double u);  // u in [0, 1)
// The peers that compute an item's function.
template <class T>
std::vector<MathPeer<T>> peers_of(const MathItem& item) {
  std::vector<MathPeer<T>> peers;
  for (const MathPeer<T>& peer : math_peers<T>()) {
    if (std::string(peer.function) == item.function) peers.push_back(peer);
  }
  return peers;
}

void add_rng_rows(std::vector<Work>& works);
void add_math_rows(std::vector<Work>& works);
void add_complex_rows(std::vector<Work>& works);
void add_distribution_rows(std::vector<Work>& works);
void add_conv_rows(std::vector<Work>& works);
void add_task_rows(std::vector<Work>& works);
void add_level1_rows(std::vector<Work>& works);
void add_limit_rows(std::vector<Work>& works);
void add_fft_rows(std::vector<Work>& works);
void add_dft_rows(std::vector<Work>& works);

// The largest error of every peer of the items whose names contain filter, measured; written as the rows of
// peer_errors.inc, from which peer_error() reads.
void classify(const std::string& filter);
double peer_error(const std::string& item, const std::string& precision, const std::string& peer);

}  // namespace bench
