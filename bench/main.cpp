// qor_bench: the library against its peers, as ratios of interleaved rounds. See --help.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <regex>
#include <string>

#include "harness.h"
#include "table.h"

namespace {
using namespace bench;

constexpr char help[] =
    R"(qor_bench [FILTER] [--rounds N] [--full] [--markdown] [--only-opponents] [--list] [--once] [--classify] [--mflops FILE]

Measures the library and its peers on the same work, in turns of about 0.3 ms, for N rounds (default 61).
FILTER is a regular expression that the work's group or name contains: streams, math, complex, distributions, convolution,
level1, limits, tasks, 'Sin'.

  ratio min     the opponent's fastest round / our fastest round; above 1 the library is faster
  ratio median  the median of the rounds' own ratios
  met           do both ratios reach the target? 'tie': both are at least 0.95 where the target is 1; 'void': a
                contender's numbers are wrong, and the exit status is 1

  --full            also the library's times at 8 and at 100000 elements a call
  --markdown        tables for the documentation
  --only-opponents  calls nothing of the library; opponents of each row, fastest first
  --once            calls each of ours once on each item and measures nothing: for valgrind --tool=callgrind
  --list            the work items and their contenders
  --mflops FILE     writes the MFLOPS of the transforms as lines: series, n, MFLOPS; a blank line after a series
  --classify        measures the largest error of each peer of the math items and prints the rows of peer_errors.inc
)";

struct Options {
  std::string filter, mflops;
  int rounds = 61;
  bool full = false, markdown = false, only_opponents = false, list = false, classify = false, once = false;
};

[[noreturn]] void fail(const std::string& message) {
  std::fprintf(stderr, "qor_bench: %s (try --help)\n", message.c_str());
  std::exit(2);
}

Options parse(int argc, char** argv) {
  Options o;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--help") {
      std::fputs(help, stdout);
      std::exit(0);
    } else if (arg == "--rounds") {
      if (++i == argc || (o.rounds = std::atoi(argv[i])) < 1) fail("--rounds needs a number");
    } else if (arg == "--mflops") {
      if (++i == argc) fail("--mflops needs a file");
      o.mflops = argv[i];
    } else if (arg == "--full") {
      o.full = true;
    } else if (arg == "--markdown") {
      o.markdown = true;
    } else if (arg == "--only-opponents") {
      o.only_opponents = true;
    } else if (arg == "--once") {
      o.once = true;
    } else if (arg == "--list") {
      o.list = true;
    } else if (arg == "--classify") {
      o.classify = true;
    } else if (arg[0] == '-' || !o.filter.empty()) {
      fail("what is " + arg + "?");
    } else {
      o.filter = arg;
    }
  }
  return o;
}

std::regex compiled(const std::string& filter) try { return std::regex(filter); } catch (const std::regex_error&) {
  fail(filter + " is no regular expression");
}

std::string number(double x, int decimals) {
  char text[40];
  std::snprintf(text, sizeof text, "%.*f", decimals, x);
  return text;
}
std::string nanoseconds(double x) { return number(x, x < 0.995 ? 3 : x < 9.95 ? 2 : 1); }

std::string processor() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);) {
    if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
  }
  return "unknown processor";
}

bool eligible(const Claim& claim, const Contender& c) {
  const bool named = std::find(claim.against.begin(), claim.against.end(), c.name) != claim.against.end();
  return c.ours ? named : c.ulp <= claim.max_ulp && (named || claim.against.empty());
}

struct Measured {
  Work work;
  std::string complaint;      // what the check found
  Times times, small, large;  // small and large: ours alone
};

// The contenders that a claim compares, fastest first.
std::vector<std::size_t> ranked(const Measured& m, const Claim& claim) {
  std::vector<std::size_t> who;
  for (std::size_t i = 0; i < m.work.contenders.size(); ++i) {
    if (eligible(claim, m.work.contenders[i])) who.push_back(i);
  }
  std::sort(who.begin(), who.end(),
            [&](std::size_t a, std::size_t b) { return minimum(m.times[a]) < minimum(m.times[b]); });
  return who;
}

int index_of(const Work& work, const std::string& name) {
  for (std::size_t i = 0; i < work.contenders.size(); ++i) {
    if (work.contenders[i].name == name) return static_cast<int>(i);
  }
  return -1;
}

std::string verdict(double ratio, double target) {
  if (target <= 0) return "";
  if (ratio >= target) return "yes";
  return target == 1 && ratio >= 0.95 ? "tie" : "no";
}

void print_claims(const std::vector<Measured>& all, bool markdown) {
  struct Logs {
    double of_minima = 0, of_medians = 0;
    int count = 0;
  };
  std::map<std::string, Logs> logs;
  Table table({"work", "ours ns", "best opponent", "its ns", "ratio min", "ratio median", "target", "met", "note"},
              markdown);
  for (const Measured& m : all) {
    for (const Claim& claim : m.work.claims) {
      const std::vector<std::size_t> best = ranked(m, claim);
      const int ours = index_of(m.work, claim.ours);
      std::vector<std::string> row{claim.label, "", "none here", "", "", "", "", "", claim.note};
      if (claim.target > 0) row[6] = number(claim.target, 2);
      if (ours >= 0) row[1] = nanoseconds(minimum(m.times[static_cast<std::size_t>(ours)]));
      if (!best.empty()) {
        const std::vector<double>& theirs = m.times[best[0]];
        row[2] = m.work.contenders[best[0]].name;
        row[3] = nanoseconds(minimum(theirs));
        if (ours >= 0) {
          const std::vector<double>& mine = m.times[static_cast<std::size_t>(ours)];
          const double ratio = minimum(theirs) / minimum(mine);
          row[4] = number(ratio, 2);
          const double usual = median(ratios(theirs, mine));
          row[5] = number(usual, 2);
          if (!claim.mean.empty()) {
            Logs& mean = logs[claim.mean];
            mean.of_minima += std::log(ratio);
            mean.of_medians += std::log(usual);
            ++mean.count;
          }
          row[7] = m.complaint.empty() ? verdict(std::min(ratio, usual), claim.target) : "void";
        }
      }
      table.add(row);
    }
  }
  table.print();

  Table means({"geometric mean of", "functions", "ratio min", "ratio median"}, markdown);
  for (const auto& [name, mean] : logs) {
    means.add({name, std::to_string(mean.count), number(std::exp(mean.of_minima / mean.count), 2),
               number(std::exp(mean.of_medians / mean.count), 2)});
  }
  if (!logs.empty()) means.print();
}

void print_contenders(const std::vector<Measured>& all, bool markdown) {
  Table table({"work", "contender", "ulp", "ns min", "ns median"}, markdown);
  for (const Measured& m : all) {
    std::vector<std::size_t> order(m.times.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::sort(order.begin(), order.end(),
              [&](std::size_t a, std::size_t b) { return minimum(m.times[a]) < minimum(m.times[b]); });
    for (const std::size_t i : order) {
      const Contender& c = m.work.contenders[i];
      table.add({m.work.name, c.name, c.ulp > 0 ? number(c.ulp, 2) : "", nanoseconds(minimum(m.times[i])),
                 nanoseconds(median(m.times[i]))});
    }
  }
  table.print();
}

void print_ranks(const std::vector<Measured>& all, bool markdown) {
  Table table({"work", "opponents in class, ns, fastest first"}, markdown);
  for (const Measured& m : all) {
    for (const Claim& claim : m.work.claims) {
      std::string line;
      for (const std::size_t i : ranked(m, claim)) {
        line += (line.empty() ? "" : ", ") + m.work.contenders[i].name + " " + nanoseconds(minimum(m.times[i]));
      }
      table.add({claim.label, line});
    }
  }
  table.print();
}

void print_sizes(const std::vector<Measured>& all, bool markdown) {
  Table table(
      {"work", "ours", "n = " + std::to_string(small_size), "usual n", "its ns", "n = " + std::to_string(large_size)},
      markdown);
  for (const Measured& m : all) {
    std::size_t k = 0;
    for (std::size_t i = 0; i < m.work.contenders.size(); ++i) {
      if (!m.work.contenders[i].ours) continue;
      table.add({m.work.name, m.work.contenders[i].name, nanoseconds(minimum(m.small[k])),
                 std::to_string(m.work.elements), nanoseconds(minimum(m.times[i])), nanoseconds(minimum(m.large[k]))});
      ++k;
    }
  }
  table.print();
}

// One series a contender and kind of transform, for plotting; and the geometric means of the ratios.
void write_mflops(const std::vector<Measured>& all, const std::string& file) {
  std::map<std::string, std::map<int, double>> series;
  std::map<std::string, std::pair<double, int>> means;
  for (const Measured& m : all) {
    if (m.work.flops == 0) continue;
    const std::string kind = std::regex_replace(m.work.name, std::regex(" (n = )?[0-9]+"), "");
    for (std::size_t i = 0; i < m.work.contenders.size(); ++i) {
      const std::string& who = m.work.contenders[i].name;
      series[kind + ", " + who][m.work.elements] = 1000 * m.work.flops / minimum(m.times[i]);
      if (m.work.contenders[i].ours) continue;
      auto& [sum, count] = means[kind + " against " + who];
      sum += std::log(minimum(m.times[i]) / minimum(m.times[0]));
      ++count;
    }
  }
  std::ofstream out(file);
  for (const auto& [name, points] : series) {
    out << "# " << name << '\n';
    for (const auto& [n, mflops] : points) out << n << ' ' << static_cast<int>(mflops) << '\n';
    out << "\n\n";
  }
  for (const auto& [name, mean] : means) {
    std::printf("geometric mean of %d ratios, %s: %.3f\n", mean.second, name.c_str(),
                std::exp(mean.first / mean.second));
  }
}

}  // namespace

int main(int argc, char** argv) {
  const Options o = parse(argc, argv);
  if (o.classify) {
    classify(o.filter);
    return 0;
  }

  std::vector<Work> works, chosen;
  add_rng_rows(works);
  add_math_rows(works);
  add_complex_rows(works);
  add_distribution_rows(works);
  add_conv_rows(works);
  add_task_rows(works);
  add_level1_rows(works);
  add_limit_rows(works);
  add_fft_rows(works);
  add_dft_rows(works);
  const std::regex filter = compiled(o.filter);
  for (Work& work : works) {
    if (!std::regex_search(work.group, filter) && !std::regex_search(work.name, filter)) continue;
    if (o.only_opponents) std::erase_if(work.contenders, [](const Contender& c) { return c.ours; });
    chosen.push_back(std::move(work));
  }
  if (chosen.empty()) fail("no work item matches " + o.filter);
  if (o.list) {
    for (const Work& work : chosen) {
      std::printf("%s: %s:", work.group.c_str(), work.name.c_str());
      for (const Contender& c : work.contenders) std::printf(" [%s]", c.name.c_str());
      std::printf("\n");
    }
    return 0;
  }

  if (o.once) {
    for (const Work& work : chosen) {
      for (const Contender& c : work.contenders) {
        if (c.ours) c.call(work.elements);
      }
    }
    return 0;
  }

  char* program[] = {argv[0], nullptr};
  int one = 1;
  benchmark::Initialize(&one, program);
  const bool terminal = isatty(2) != 0;
  std::vector<Measured> all;
  for (const Work& work : chosen) {
    if (terminal) std::fprintf(stderr, "\r%-40s", work.name.c_str());
    const std::string complaint = work.check && !o.only_opponents ? work.check() : "";
    Measured m{work, complaint, measure(work.contenders, work.elements, std::min(o.rounds, work.most_rounds)), {}, {}};
    if (o.full) {
      std::vector<Contender> ours;
      for (const Contender& c : work.contenders) {
        if (c.ours) ours.push_back(c);
      }
      m.small = measure(ours, small_size, o.rounds);
      m.large = measure(ours, large_size, o.rounds);
    }
    all.push_back(std::move(m));
  }
  if (terminal) std::fprintf(stderr, "\r%-40s\r", "");

  std::printf("%s, 32-bit code, g++ %s, %d rounds; ns per element.\n", processor().c_str(), __VERSION__, o.rounds);
  if (std::strlen(QOR_BENCH_MISSING) != 0) std::printf("Left out, not installed: %s.\n", QOR_BENCH_MISSING);
  std::printf("\n");
  if (o.only_opponents) {
    print_ranks(all, o.markdown);
  } else {
    print_claims(all, o.markdown);
    if (o.full) print_sizes(all, o.markdown);
  }
  print_contenders(all, o.markdown);
  if (!o.mflops.empty()) write_mflops(all, o.mflops);
  bool sound = true;
  for (const Measured& m : all) {
    if (!m.complaint.empty()) std::printf("%s is void: %s.\n", m.work.name.c_str(), m.complaint.c_str());
    sound = sound && m.complaint.empty();
  }
  return sound ? 0 : 1;
}
