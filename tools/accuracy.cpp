// The deep accuracy sweep: every single of one-argument functions, some ten million doubles a function. Prints a line a
// function, writes a page when asked to, and fails when a bound is exceeded.
//   qor_accuracy [--doubles N] [--singles STEP] [--complex N] [--only TEXT] [--markdown FILE | --append FILE]
// N: doubles a function (default 7000000), complex numbers a function (default 1000000); STEP: every STEPth bit pattern of
// the singles (default 1: all 2^32). Zeros leave a kind out. --append adds to a page that has the other kinds.
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "tfn/complex_sweep.h"
#include "tfn/sweep.h"

namespace {

using namespace qor::test;

struct Options {
  long long doubles = 7000000;
  std::uint64_t step = 1;
  long long complex = 1000000;
  const char* only = "";
  const char* markdown = nullptr;
  bool append = false;
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

std::string hexadecimal(double x) {
  char text[40];
  std::snprintf(text, sizeof text, "%a", x);
  return text;
}

class Report {
 public:
  Report(const Options& o, const std::string& command)
      : file_(o.markdown != nullptr ? std::fopen(o.markdown, o.append ? "a" : "w") : nullptr), command_(command) {
    if (file_ == nullptr || o.append) return;
    std::fprintf(
        file_,
        "# Accuracy\n\n"
        "Largest error found of each member, in units in the last place of the exact result, and its argument.\n"
        "Written by `%s`.\n"
        "Doubles are held against libquadmath: stratified arguments, drawn from all bit patterns,\n"
        "next to 1, the ends of table intervals, moderate size, neighbours of multiples of pi/2 and of pi/256 up to\n"
        "2^64, integers, and where each function is hard. Singles are held against the `_HA` kernel of doubles, which\n"
        "the C library's double precision confirms at every 61st argument and at the worst ones.\n\n"
        "![Largest errors](accuracy.svg)\n\n"
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
    const std::string at = hexadecimal(w.at) + (m.inputs == 2 ? ", " + hexadecimal(w.b) : "");
    std::printf("%-18s %-7s max %.4f ulp (bound %.2f) at %s  [%s]%s\n", m.name.c_str(), m.output.c_str(), w.ulp,
                m.bound, at.c_str(), count.c_str(), met ? "" : "  EXCEEDED");
    std::fflush(stdout);
    if (file_ != nullptr) {
      std::fprintf(file_, "| `%s`%s%s | %.4f | %.2f | %s | %s |\n", m.name.c_str(), m.output.empty() ? "" : ", ",
                   m.output.c_str(), w.ulp, m.bound, at.c_str(), count.c_str());
      std::fflush(file_);
    }
  }
  void complex_heading() {
    if (file_ == nullptr) return;
    std::fprintf(
        file_,
        "\n## Complex numbers\n\n"
        "Largest distance of result and exact result (libquadmath's), in units in the last place of the exact\n"
        "result's size, and largest error of a part in its own; of `_50` and `_21` few parts have a bound.\n"
        "Arguments: all bit patterns, on and next to the axes, the unit circle, 1 and i, multiples of pi/2,\n"
        "both parts tiny or huge or of unlike size, and where each function is hard: next to cuts, poles,\n"
        "branch points, overflow. Written by `%s`.\n\n"
        "| member | max ulp | bound | at | max ulp of a part | bound | at | arguments |\n"
        "|---|---|---|---|---|---|---|---|\n",
        command_.c_str());
  }
  template <class T>
  void complex_row(const ComplexMember<T>& m, const ComplexWorst<T>& w, long long count) {
    const bool met = w.error.size <= m.size_bound && w.error.part <= m.part_bound;
    failed_ = failed_ || !met;
    const auto at = [&](const ComplexArguments<T>& z) {
      std::string text = hexadecimal(z.re) + ", " + hexadecimal(z.im);
      if (m.inputs == 2) text += "; " + hexadecimal(z.b_re) + ", " + hexadecimal(z.b_im);
      return text;
    };
    const auto bound = [](double b) {
      char text[20];
      std::snprintf(text, sizeof text, "%.2f", b);
      return std::isinf(b) ? std::string("-") : std::string(text);
    };
    std::printf("%-18s max %.4f ulp (bound %s) at %s; parts %.4g (%s) at %s  [%lld]%s\n", m.name.c_str(), w.error.size,
                bound(m.size_bound).c_str(), at(w.size_at).c_str(), w.error.part, bound(m.part_bound).c_str(),
                at(w.part_at).c_str(), count, met ? "" : "  EXCEEDED");
    std::fflush(stdout);
    if (file_ != nullptr) {
      std::fprintf(file_, "| `%s` | %.4f | %s | %s | %.4g | %s | %s | %lld |\n", m.name.c_str(), w.error.size,
                   bound(m.size_bound).c_str(), at(w.size_at).c_str(), w.error.part, bound(m.part_bound).c_str(),
                   at(w.part_at).c_str(), count);
      std::fflush(file_);
    }
  }
  void fail(const std::string& why) {
    failed_ = true;
    std::printf("%s\n", why.c_str());
  }
  bool failed() const { return failed_; }

 private:
  std::FILE* file_;
  std::string command_;
  bool failed_ = false;
};

// The members that compute one function; the oracle, which takes the time, works for all of them at once.
template <class M>
std::vector<std::vector<M>> functions(const Options& o, bool wanted, const std::vector<M>& members) {
  std::vector<std::vector<M>> groups;
  for (const auto& m : members) {
    if (!wanted || m.name.find(o.only) == std::string::npos) continue;
    const auto group = std::find_if(groups.begin(), groups.end(), [&](const auto& g) {
      return g[0].function == m.function && g[0].inputs == m.inputs;
    });
    if (group == groups.end()) {
      groups.push_back({m});
    } else {
      group->push_back(m);
    }
  }
  return groups;
}

// piece_inputs(piece) -> the arguments; piece_exact(inputs) -> the results they should have.
template <class T, class PieceInputs, class PieceExact>
std::vector<Worst<T>> sweep(const std::vector<Member<T>>& group, int pieces, PieceInputs piece_inputs,
                            PieceExact piece_exact) {
  std::vector<std::vector<Worst<T>>> found(static_cast<std::size_t>(pieces));
  in_parallel(pieces, group[0].function + (sizeof(T) == 8 ? " of doubles" : " of singles"), [&](int piece) {
    const Inputs<T> in = piece_inputs(piece);
    const auto exact = piece_exact(in);
    for (const auto& m : group) found[static_cast<std::size_t>(piece)].push_back(worst(m, in, exact));
  });
  std::vector<Worst<T>> all(group.size());
  for (const auto& one : found) {
    for (std::size_t m = 0; m < group.size(); ++m) all[m].take(one[m].ulp, one[m].at, one[m].b);
  }
  return all;
}

template <class T>
void sweep_strata(const Options& o, Report& report, const std::vector<Member<T>>& group) {
  const Member<T>& first = group[0];
  constexpr int per_stratum = 500;
  const auto size = inputs<T>(first.function, first.inputs, per_stratum, 0).size();
  const int pieces = static_cast<int>(std::max(1LL, o.doubles / static_cast<long long>(size)));
  const auto all = sweep<T>(
      group, pieces,
      [&](int piece) {
        return inputs<T>(first.function, first.inputs, per_stratum, 2 * static_cast<std::uint64_t>(piece));
      },
      [&](const Inputs<T>& in) { return exact_results(first, in); });
  const std::string count = std::to_string(pieces * static_cast<long long>(size)) + " stratified";
  for (std::size_t m = 0; m < group.size(); ++m) report.row(group[m], all[m], count);
}

// Every single. The C library's double functions would take hours; the _HA member in double precision, which is swept
// by itself, does the work. Every 61st of its results is held against the oracle, and so are the worst found.
void sweep_singles(const Options& o, Report& report, const std::vector<Member<float>>& group) {
  const auto wide_members = members<double>();
  const auto wide = std::find_if(wide_members.begin(), wide_members.end(), [&](const auto& m) {
    return m.function == group[0].function && m.output.empty() && m.name.ends_with("_HA");
  });
  if (wide == wide_members.end()) return;
  constexpr int pieces = 1 << 14;
  std::atomic<long long> disagreements{0};
  auto all = sweep<float>(
      group, pieces,
      [&](int piece) {
        Inputs<float> in;
        in.a.reserve(((std::size_t{1} << 31) / pieces * 2) / static_cast<std::size_t>(o.step) + 1);
        const std::uint64_t first = (std::uint64_t{1} << 32) / pieces * static_cast<unsigned>(piece);
        const std::uint64_t end = first + (std::uint64_t{1} << 32) / pieces;
        for (std::uint64_t b = (first + o.step - 1) / o.step * o.step; b < end; b += o.step) {
          in.add(std::bit_cast<float>(static_cast<std::uint32_t>(b)));
        }
        return in;
      },
      [&](const Inputs<float>& in) {
        const std::vector<double> x(in.a.begin(), in.a.end());
        std::vector<double> y(x.size());
        wide->run(static_cast<int>(x.size()), x.data(), x.data(), y.data());
        for (std::size_t i = 0; i < x.size(); i += 61) {
          const double independent = group[0].exact(x[i], x[i]);
          const bool same =
              std::isnan(independent)
                  ? std::isnan(y[i])
                  : y[i] == independent || std::fabs(y[i] - independent) <= 0x1p-45 * std::fabs(independent) + DBL_MIN;
          if (!same) ++disagreements;
        }
        return y;
      });
  for (std::size_t m = 0; m < group.size(); ++m) {
    Inputs<float> worst_found;
    worst_found.add(all[m].at);
    all[m].ulp = worst(group[m], worst_found, exact_results(group[m], worst_found)).ulp;
    report.row(group[m], all[m], o.step == 1 ? "all 2^32" : "every " + std::to_string(o.step) + "th of 2^32");
  }
  if (disagreements != 0) report.fail(group[0].function + ": the double kernel and the oracle disagree");
}

template <class T>
void sweep_complex(const Options& o, Report& report, const std::vector<ComplexMember<T>>& group) {
  const ComplexMember<T>& first = group[0];
  constexpr int per_stratum = 50;
  const auto piece_inputs = [&](int piece) {
    return complex_inputs<T>(first.function, first.inputs, per_stratum, 2 * static_cast<std::uint64_t>(piece));
  };
  const long long size = piece_inputs(0).size();
  const int pieces = static_cast<int>(std::max(1LL, o.complex / size));
  std::vector<std::vector<ComplexWorst<T>>> found(static_cast<std::size_t>(pieces));
  std::atomic<long long> count{0};
  in_parallel(pieces, first.function + (sizeof(T) == 8 ? " of complex doubles" : " of complex singles"),
              [&](int piece) {
                const ComplexInputs<T> in = piece_inputs(piece);
                const auto exact = complex_exact(first, in);
                for (const auto& m : group)
                  found[static_cast<std::size_t>(piece)].push_back(complex_worst(m, in, exact));
                count += in.size();
              });
  for (std::size_t m = 0; m < group.size(); ++m) {
    ComplexWorst<T> all;
    for (const auto& one : found) all.take(one[m]);
    report.complex_row(group[m], all, count);
  }
}

}  // namespace

int main(int argc, char** argv) {
  Options o;
  for (int i = 1; i + 1 < argc; i += 2) {
    if (std::strcmp(argv[i], "--doubles") == 0) o.doubles = std::atoll(argv[i + 1]);
    if (std::strcmp(argv[i], "--singles") == 0) o.step = std::strtoull(argv[i + 1], nullptr, 10);
    if (std::strcmp(argv[i], "--complex") == 0) o.complex = std::atoll(argv[i + 1]);
    if (std::strcmp(argv[i], "--only") == 0) o.only = argv[i + 1];
    if (std::strcmp(argv[i], "--markdown") == 0) o.markdown = argv[i + 1];
    if (std::strcmp(argv[i], "--append") == 0) o.markdown = argv[i + 1], o.append = true;
  }
  if (argc % 2 == 0) {
    std::fprintf(stderr,
                 "usage: qor_accuracy [--doubles N] [--singles STEP] [--complex N] [--only TEXT] [--markdown FILE | "
                 "--append FILE]\n");
    return 2;
  }
  _tfnSetMode(TFN_ERR_IGNORE);
  std::string command = "./run accuracy";
  for (int i = 1; i < argc; ++i) command += std::string(" ") + argv[i];
  Report report(o, command);

  for (const auto& group : functions(o, o.doubles != 0, members<double>())) sweep_strata(o, report, group);
  for (const auto& group : functions(o, o.step != 0, members<float>())) {
    if (group[0].inputs == 1) {
      sweep_singles(o, report, group);
    } else {
      sweep_strata(o, report, group);
    }
  }
  if (o.complex != 0) report.complex_heading();
  for (const auto& group : functions(o, o.complex != 0, complex_members<double>())) sweep_complex(o, report, group);
  for (const auto& group : functions(o, o.complex != 0, complex_members<float>())) sweep_complex(o, report, group);
  return report.failed() ? 1 : 0;
}
