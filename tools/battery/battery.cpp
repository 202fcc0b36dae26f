// Tests the engines' randomness and writes what it finds to a folder, a file an engine:
//
//   qor_battery --words QOR_WORDS --results FOLDER [--all] [--no-dieharder] [SUBJECT...]
//   qor_battery --results FOLDER --report      the page's section, when all results are there
//
// A subject is an engine, or a family's member or all its members; `witnesses` are the smallest samples that show what
// is known against the engines. --all: everything that dieharder has. Ends with 1 when a test fails that is not known
// to, or passes although it is known to fail.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>

#include "dieharder.h"
#include "results.h"
#include "tests.h"

namespace battery {
namespace {

double seconds() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

void progress(const std::string& subject, const std::string& what) {
  static const double begin = seconds();
  const bool terminal = isatty(2) != 0;
  std::fprintf(stderr, "%s%6.0f s  %-12s %-60s%s", terminal ? "\r" : "", seconds() - begin, subject.c_str(),
               what.c_str(), terminal ? "" : "\n");
}

struct Classical {
  const char *test, *sizes;
  Outcome (*run)(Words& words);
};
const Classical classical[] = {
    {"linear complexity", "6 000 bits", [](Words& w) { return linear_complexity(w, 6000); }},
    {"linear complexity", "50 000 bits", [](Words& w) { return linear_complexity(w, 50000); }},
    {"matrix rank", "64 of order 300", [](Words& w) { return matrix_rank(w, 300, 64); }},
    {"matrix rank", "one of order 2500", [](Words& w) { return matrix_rank(w, 2500, 1); }},
    {"birthday spacings", "2^14 points of 3 x 15 bits, 32 times",
     [](Words& w) { return birthday_spacings(w, 1 << 14, 3, 15, 32); }},
    {"birthday spacings", "2^22 points of 2 x 32 bits",
     [](Words& w) { return birthday_spacings(w, 1 << 22, 2, 32, 1); }},
    {"collisions", "2^20 points of 30 bits", [](Words& w) { return collisions(w, 1 << 20, 1, 30); }},
    {"collisions", "2^21 points of 2 x 16 bits", [](Words& w) { return collisions(w, 1 << 21, 2, 16); }},
    {"gap", "2^19 below 1/128", [](Words& w) { return gaps(w, 1 << 19, 7); }},
};

std::vector<Result> test(const Subject& s, bool with_dieharder, bool all) {
  const std::string subject = s.words;
  std::vector<Result> results;
  for (const Classical& c : classical) {
    progress(subject, std::string(c.test) + ", " + c.sizes);
    Words words(subject + " --numbers --seed 20");
    const Outcome o = c.run(words);
    results.push_back({"classical", c.test, c.sizes, o.log_p, o.figure});
  }
  if (!with_dieharder || !s.dieharder) return results;
  const auto told = [&](const std::string& what) { progress(subject, what); };
  for (Result& r : dieharder(subject, all, told)) results.push_back(std::move(r));
  return results;
}

// A test of growing size n = 2^first, ..., 2^last, up to the first that fails.
Result smallest(const std::string& name, const std::string& words_of, const std::string& test,
                const std::string& points, int first, int last, const std::function<Outcome(Words&, int)>& run) {
  Result result;
  for (int k = first; k <= last; ++k) {
    progress(witnesses, words_of + ", " + test + ", 2^" + std::to_string(k));
    Words words(words_of + " --numbers --seed 20");
    const Outcome o = run(words, 1 << k);
    result = {"witness", name + ", " + test, "2^" + std::to_string(k) + points, o.log_p, o.figure};
    if (o.log_p < failure) break;
  }
  return result;
}

std::vector<Result> find_witnesses() {
  std::vector<Result> results;
  const auto complexity = [&](const std::string& words_of, const std::string& text, int n, int bit) {
    progress(witnesses, words_of);
    Words words(words_of + " --numbers --seed 20");
    const Outcome o = linear_complexity(words, n, bit);
    results.push_back({"witness", text + ", linear complexity", std::to_string(n) + " bits", o.log_p, o.figure});
  };
  complexity("MT19937", "MT19937", 50000, 31);
  complexity("MT2203", "MT2203", 6000, 31);
  complexity("R250", "R250", 600, 31);
  {
    Words words("R250 --numbers --seed 20");
    const Outcome o = matrix_rank(words, 300, 1);
    results.push_back({"witness", "R250, matrix rank", "one matrix of order 300", o.log_p, o.figure});
  }
  results.push_back(
      smallest("R250", "R250", "gap", " numbers below 1/128", 12, 22, [](Words& w, int n) { return gaps(w, n, 7); }));
  results.push_back(smallest("MCG31M1", "MCG31M1", "birthday spacings", " points of 3 x 15 bits", 6, 16,
                             [](Words& w, int n) { return birthday_spacings(w, n, 3, 15, 1); }));
  results.push_back(smallest("MCG31M1", "MCG31M1", "collisions", " points of 30 bits", 10, 24,
                             [](Words& w, int n) { return collisions(w, n, 1, 30); }));
  results.push_back(smallest("MCG59", "MCG59", "birthday spacings", " points of 2 x 32 bits", 14, 24,
                             [](Words& w, int n) { return birthday_spacings(w, n, 2, 32, 1); }));
  results.push_back(smallest("MT2203, all members in turn, one seed for all", "MT2203:all --one-seed", "collisions",
                             " points of 30 bits", 10, 20, [](Words& w, int n) { return collisions(w, n, 1, 30); }));
  // The last of the 32 bits is bit 27 of the 59.
  for (const char* streams : {"65536", "1048576", "16777216", "65535", "1048577"}) {
    complexity(std::string("MCG59 --leapfrog ") + streams,
               std::string("MCG59, one of ") + streams + " streams, last of 32 bits", 4096, 0);
  }
  return results;
}

// Says what is unexpected, and how many results are.
int surprises(const std::string& subject, const std::vector<Result>& results) {
  int count = 0;
  for (const Result& r : results) {
    const bool fails = r.log_p < failure, known = known_failure(subject, r) != nullptr;
    if (fails == known) continue;
    // Which of dieharder's tests notice a known weakness is left open.
    if (known && r.kind == "dieharder") continue;
    std::printf("%s %s %s: %s (%s), unexpectedly\n", subject.c_str(), r.test.c_str(), r.sizes.c_str(),
                text_of_p(r.log_p).c_str(), r.figure.c_str());
    ++count;
  }
  return count;
}

}  // namespace
}  // namespace battery

using namespace battery;

int main(int argc, char** argv) {
  std::string folder;
  std::vector<std::string> chosen;
  bool all = false, with_dieharder = true, report = false;
  for (int i = 1; i < argc; ++i) {
    const std::string option = argv[i];
    if (option == "--words" && i + 1 < argc) {
      words_program = argv[++i];
    } else if (option == "--results" && i + 1 < argc) {
      folder = argv[++i];
    } else if (option == "--all") {
      all = true;
    } else if (option == "--no-dieharder") {
      with_dieharder = false;
    } else if (option == "--report") {
      report = true;
    } else {
      chosen.push_back(option);
    }
  }
  if (folder.empty() || (words_program.empty() && !report)) {
    std::fprintf(stderr, "usage: see the head of battery.cpp\n");
    return 2;
  }
  if (report) return print_report(folder) ? 0 : 1;

  const auto by_name = [](const std::string& name) {
    return std::find_if(subjects.begin(), subjects.end(), [&](const Subject& s) { return name == s.words; });
  };
  if (chosen.empty()) {
    for (const Subject& s : subjects) chosen.emplace_back(s.words);
    chosen.emplace_back(witnesses);
  }
  for (const std::string& name : chosen) {
    if (name == witnesses || by_name(name) != subjects.end()) continue;
    std::fprintf(stderr, "battery: no subject %s; there are", name.c_str());
    for (const Subject& s : subjects) std::fprintf(stderr, " %s", s.words);
    std::fprintf(stderr, " %s\n", witnesses);
    return 2;
  }

  int bad = 0;
  for (const std::string& subject : chosen) {
    const std::vector<Result> results =
        subject == witnesses ? find_witnesses() : test(*by_name(subject), with_dieharder, all);
    write_results(folder, subject, results);
    if (isatty(2) != 0) std::fprintf(stderr, "\r%90s\r", "");
    const auto fails = std::count_if(results.begin(), results.end(), [](const Result& r) { return r.log_p < failure; });
    std::printf("%-12s %zu results, %d below p = 1e%.0f\n", subject.c_str(), results.size(), static_cast<int>(fails),
                failure);
    bad += surprises(subject, results);
  }
  return bad == 0 ? 0 : 1;
}
