// The deep accuracy sweep: every single of one-argument functions, some ten million doubles a function. Prints a line a
// function, writes a page when asked to, and fails when a bound is exceeded.
//   qor_accuracy [--doubles N] [--singles STEP] [--only TEXT] [--markdown FILE]
// N: doubles a function (default 7000000); STEP: every STEPth bit pattern of the singles (default 1: all 2^32).
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "tfn/sweep.h"

namespace {

using namespace qor::test;

struct Options {
  long long doubles = 7000000;
  std::uint64_t step = 1;
  const char* only = "";
  const char* markdown = nullptr;
};

void progress(const std::string& what, double share) {
  if (isatty(2) != 0) std::fprintf(stderr, "\r%-28s %5.1f%% ", what.c_str(), 100 * share);
}
void end_progress() {
  if (isatty(2) != 0) std::fprintf(stderr, "\r%40s\r", "");
}

// Runs f(piece) for the pieces 0 .. n - 1 on all processors, and shows how far it is.
template <class F>
void in_parallel(int n, const std::string& what, F f) {
  std::atomic<int> next{0};
  const auto work = [&] {
    for (int i; (i = next++) < n;) {
      f(i);
      progress(what, double(i) / n);
    }
  };
  std::vector<std::thread> threads;
  for (unsigned t = 1; t < std::max(1u, std::thread::hardware_concurrency()); ++t) threads.emplace_back(work);
  work();
  for (auto& t : threads) t.join();
  end_progress();
}

class Report {
 public:
  Report(const char* markdown, const std::string& command)
      : file_(markdown != nullptr ? std::fopen(markdown, "w") : nullptr) {
    if (file_ == nullptr) return;
    std::fprintf(
        file_,
        "# Accuracy\n\n"
        "Largest error found of each member, in units in the last place of the exact result, and its argument.\n"
        "Written by `%s`. Oracles: libquadmath for doubles, the C library's double precision for\n"
        "singles. Doubles are drawn in seven strata: all bit patterns, next to 1, the ends of table intervals,\n"
        "moderate size, neighbours of multiples of pi/2 and of pi/256 up to 2^64, integers.\n\n"
        "| member | max ulp | bound | at | arguments |\n|---|---|---|---|---|\n",
        command.c_str());
  }
  ~Report() {
    if (file_ != nullptr) std::fclose(file_);
  }
  template <class T>
  void row(const Member<T>& m, const Worst<T>& w, const std::string& count) {
    const bool met = w.ulp <= m.bound;
    failed_ = failed_ || !met;
    std::printf("%-18s %-7s max %.4f ulp (bound %.2f) at %a  [%s]%s\n", m.name.c_str(), m.output.c_str(), w.ulp,
                m.bound, static_cast<double>(w.at), count.c_str(), met ? "" : "  EXCEEDED");
    std::fflush(stdout);
    if (file_ != nullptr) {
      std::fprintf(file_, "| `%s`%s%s | %.4f | %.2f | %a | %s |\n", m.name.c_str(), m.output.empty() ? "" : ", ",
                   m.output.c_str(), w.ulp, m.bound, static_cast<double>(w.at), count.c_str());
      std::fflush(file_);
    }
  }
  bool failed() const { return failed_; }

 private:
  std::FILE* file_;
  bool failed_ = false;
};

// Members that share an oracle are swept together: the oracle is what takes the time.
template <class T, class Arguments>
std::vector<Worst<T>> sweep(const std::vector<Member<T>>& group, int pieces, Arguments piece_arguments) {
  std::vector<std::vector<Worst<T>>> found(static_cast<std::size_t>(pieces), std::vector<Worst<T>>(group.size()));
  in_parallel(pieces, group[0].function, [&](int piece) {
    const std::vector<T> x = piece_arguments(piece);
    std::vector<typename Wider<T>::type> exact(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) exact[i] = group[0].exact(x[i]);
    std::vector<T> y(x.size());
    for (std::size_t m = 0; m < group.size(); ++m) {
      group[m].run(static_cast<int>(x.size()), x.data(), y.data());
      auto& w = found[static_cast<std::size_t>(piece)][m];
      for (std::size_t i = 0; i < x.size(); ++i) w.take(ulps(y[i], exact[i]), x[i]);
    }
  });
  std::vector<Worst<T>> all(group.size());
  for (const auto& one : found) {
    for (std::size_t m = 0; m < group.size(); ++m) all[m].take(one[m].ulp, one[m].at);
  }
  return all;
}

template <class T, class Arguments>
void sweep_all(const Options& o, Report& report, int pieces, const std::string& count, Arguments piece_arguments) {
  const auto all = members<T>();
  for (const char* function : {"Ln", "Sqrt", "Sin", "Cos"}) {
    std::vector<Member<T>> group;
    for (const auto& m : all) {
      if (m.function == function && m.name.find(o.only) != std::string::npos) group.push_back(m);
    }
    if (group.empty()) continue;
    const auto worst = sweep<T>(group, pieces, piece_arguments);
    for (std::size_t m = 0; m < group.size(); ++m) report.row(group[m], worst[m], count);
  }
}

}  // namespace

int main(int argc, char** argv) {
  Options o;
  for (int i = 1; i + 1 < argc; i += 2) {
    if (std::strcmp(argv[i], "--doubles") == 0) o.doubles = std::atoll(argv[i + 1]);
    if (std::strcmp(argv[i], "--singles") == 0) o.step = std::strtoull(argv[i + 1], nullptr, 10);
    if (std::strcmp(argv[i], "--only") == 0) o.only = argv[i + 1];
    if (std::strcmp(argv[i], "--markdown") == 0) o.markdown = argv[i + 1];
  }
  if (argc % 2 == 0 || o.step == 0) {
    std::fprintf(stderr, "usage: qor_accuracy [--doubles N] [--singles STEP] [--only TEXT] [--markdown FILE]\n");
    return 2;
  }
  _tfnSetMode(TFN_ERR_IGNORE);
  std::string command = "./run accuracy";
  for (int i = 1; i < argc; ++i) command += std::string(" ") + argv[i];
  Report report(o.markdown, command);

  constexpr int per_stratum = 1000;
  const int pieces = static_cast<int>(std::max(1LL, o.doubles / (7 * per_stratum)));
  sweep_all<double>(o, report, pieces, std::to_string(pieces * 7LL * per_stratum) + " stratified",
                    [](int piece) { return arguments<double>(per_stratum, static_cast<std::uint64_t>(piece)); });

  constexpr int single_pieces = 1 << 14;
  sweep_all<float>(o, report, single_pieces,
                   o.step == 1 ? "all 2^32" : "every " + std::to_string(o.step) + "th of 2^32", [&](int piece) {
                     std::vector<float> x;
                     const std::uint64_t first =
                         (std::uint64_t{1} << 32) / single_pieces * static_cast<unsigned>(piece);
                     const std::uint64_t end = first + (std::uint64_t{1} << 32) / single_pieces;
                     for (std::uint64_t b = (first + o.step - 1) / o.step * o.step; b < end; b += o.step) {
                       x.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(b)));
                     }
                     return x;
                   });
  return report.failed() ? 1 : 0;
}
