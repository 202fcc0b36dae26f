#include "dieharder.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "words.h"

namespace battery {
namespace {

// Not among them: 5, 6, 7 and 14, which dieharder itself calls suspect or not to be used, and 204, which tests its own
// Kolmogorov-Smirnov test. Two slow ones are given fewer samples.
constexpr const char* sound[] = {"-d 0",
                                 "-d 1",
                                 "-d 2",
                                 "-d 3",
                                 "-d 4",
                                 "-d 8",
                                 "-d 9",
                                 "-d 10",
                                 "-d 11",
                                 "-d 12",
                                 "-d 13",
                                 "-d 15",
                                 "-d 16",
                                 "-d 17 -p 20",
                                 "-d 100",
                                 "-d 101",
                                 "-d 102",
                                 "-d 200 -n 8",
                                 "-d 201 -n 3 -p 100",
                                 "-d 202",
                                 "-d 203 -n 1",
                                 "-d 203 -n 31",
                                 "-d 205",
                                 "-d 206",
                                 "-d 207",
                                 "-d 208",
                                 "-d 209"};

struct Line {
  std::string test;
  int ntuple;
  double p;
};

std::vector<Line> run(const std::string& subject, unsigned seed, const std::string& options,
                      const std::function<void(const std::string&)>& progress) {
  const std::string command = words_program + " " + subject + " --seed " + std::to_string(seed) +
                              " | dieharder -g 200 -S 1 " + options + " 2>/dev/null";
  std::vector<Line> lines;
  std::FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return lines;
  char text[512], test[128];
  while (std::fgets(text, sizeof text, pipe) != nullptr) {
    int ntuple;
    double p;
    if (std::sscanf(text, " %127[^| ] | %d | %*d | %*d | %lf |", test, &ntuple, &p) != 3) continue;
    lines.push_back({test, ntuple, p});
    progress(test);
  }
  pclose(pipe);
  return lines;
}

bool extreme(double p) { return p <= 5e-9 || p >= 1 - 5e-9; }

// Two-sided; what is printed as 0 or 1 is anything up to 5e-9.
double log_of(double p) { return std::log10(std::min(1.0, 2 * std::max(std::min(p, 1 - p), 5e-9))); }

}  // namespace

std::vector<Result> dieharder(const std::string& subject, bool all,
                              const std::function<void(const std::string&)>& progress) {
  std::vector<Result> results;
  std::vector<std::string> runs(std::begin(sound), std::end(sound));
  if (all) runs = {"-a"};
  unsigned seed = 1000;
  for (const std::string& options : runs) {
    const auto report = [&](const std::string& test) {
      progress(all ? test : test + " (" + options + "), " + std::to_string(runs.size()) + " in all");
    };
    progress(options);
    const std::vector<Line> first = run(subject, ++seed, options, report);
    if (first.empty()) {
      std::fprintf(stderr, "battery: dieharder %s gives no result\n", options.c_str());
      std::exit(2);
    }
    std::vector<Line> second;
    if (std::any_of(first.begin(), first.end(), [](const Line& l) { return extreme(l.p); })) {
      second = run(subject, ++seed, options, report);
    }
    for (std::size_t i = 0; i < first.size(); ++i) {
      double log_p = log_of(first[i].p);
      if (i < second.size() && extreme(first[i].p) && extreme(second[i].p)) log_p *= 2;
      char figure[32];
      std::snprintf(figure, sizeof figure, "%.8f", first[i].p);
      results.push_back({"dieharder", first[i].test, std::to_string(first[i].ntuple), log_p, figure});
    }
  }
  return results;
}

}  // namespace battery
