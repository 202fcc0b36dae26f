#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "results.h"

namespace battery {

const std::vector<Subject> subjects = {
    {"MCG31M1",
     "A congruential generator of period 2^31 - 2, the quickest to exhaust. Its points in a few dimensions lie on a "
     "coarse "
     "lattice, which birthday spacings see within 2^13 points; collisions see that no number comes twice in a period. "
     "dieharder, fed the upper halves of its words, finds nothing. For small jobs and comparisons only."},
    {"R250",
     "Each word is the exclusive or of two earlier ones. All linear tests see it at once (complexity 250), and the gap "
     "test sees that a small number 250 after another implies one between them, 147 after the first. Of dieharder's "
     "tests "
     "a few give 10^-6 to 10^-8 with some seeds and not with others: seeded from one word, the lowest bit of nearly "
     "all of "
     "the 250 words is the same. Known to give wrong results in simulations (A. M. Ferrenberg, D. P. Landau and Y. J. "
     "Wong, "
     "1992). Not for new work."},
    {"MRG32K3A", "Two recurrences of order three combined, period 2^191. Passes all of this."},
    {"MCG59",
     "A congruential generator modulo 2^59. Birthday spacings see its lattice beyond about 2^20 points. The lower a "
     "bit, "
     "the shorter its period: bit k repeats after 2^(k-1) elements, the lowest two never change. Leapfrogging by a "
     "power of "
     "two makes every bit as poor as one so many places lower: choose an odd count of streams, or give each a stretch "
     "by "
     "skip-ahead."},
    {"WH", "Member 0: four congruential generators of 24 bits added modulo 1. Passes all of this."},
    {"WH:all", "All 273 members in turn, a number each. Passes all of this."},
    {"MT19937",
     "Linear over two elements: a bit of its words has complexity 19937, and matrices of a greater order are singular. "
     "Nothing else here notices it."},
    {"MT2203",
     "Member 0. Linear like MT19937, of complexity 2203, which the rank of matrices of order 2500 sees too. Nothing "
     "else "
     "here notices it."},
    {"MT2203:1023", "The last member, alike.", false},
    {"MT2203:all",
     "All 1024 members in turn, a word each, seeded with (20, member). Seeded with the same words they begin alike: "
     "their "
     "first 500 words are no independent samples, as the witness shows. Give each member a seed of its own."},
};

const char* known_failure(const std::string& subject, const Result& r) {
  struct Known {
    const char *subject, *kind, *test, *sizes, *why;  // null: any
  };
  constexpr const char *linear = "linear", *lattice = "lattice", *period = "period", *pairs = "three-term recurrence";
  static const Known list[] = {
      {"MCG31M1", "classical", "birthday spacings", nullptr, lattice},
      {"MCG31M1", "classical", "collisions", nullptr, period},
      {"MCG31M1", "dieharder", nullptr, nullptr, period},
      {"R250", "classical", "linear complexity", nullptr, linear},
      {"R250", "classical", "matrix rank", nullptr, linear},
      {"R250", "classical", "gap", nullptr, pairs},
      {"R250", "dieharder", nullptr, nullptr, pairs},
      {"MCG59", "classical", "birthday spacings", "2^22 points of 2 x 32 bits", lattice},
      {"MT19937", "classical", "linear complexity", "50 000 bits", linear},
      {"MT2203", "classical", "linear complexity", nullptr, linear},
      {"MT2203", "classical", "matrix rank", "one of order 2500", linear},
      {"MT2203:1023", "classical", "linear complexity", nullptr, linear},
      {"MT2203:1023", "classical", "matrix rank", "one of order 2500", linear},
  };
  if (r.kind == "witness") {
    // Leapfrogging by odd counts is the cure.
    const bool cure = r.test.find(" 65535 ") != std::string::npos || r.test.find(" 1048577 ") != std::string::npos;
    return cure ? nullptr : "witness";
  }
  for (const Known& k : list) {
    if (subject == k.subject && r.kind == k.kind && (k.test == nullptr || r.test == k.test) &&
        (k.sizes == nullptr || r.sizes == k.sizes)) {
      return k.why;
    }
  }
  return nullptr;
}

std::string results_path(const std::string& folder, const std::string& subject) {
  std::string name = subject;
  std::replace(name.begin(), name.end(), ':', '-');
  return folder + "/" + name + ".tsv";
}

std::vector<Result> read_results(const std::string& folder, const std::string& subject) {
  std::vector<Result> results;
  std::FILE* const file = std::fopen(results_path(folder, subject).c_str(), "r");
  if (file == nullptr) return results;
  char line[512];
  while (std::fgets(line, sizeof line, file) != nullptr) {
    std::vector<std::string> fields(1);
    for (const char* c = line; *c != '\0' && *c != '\n'; ++c) {
      if (*c == '\t') {
        fields.emplace_back();
      } else {
        fields.back() += *c;
      }
    }
    if (fields.size() == 5)
      results.push_back({fields[0], fields[1], fields[2], std::atof(fields[3].c_str()), fields[4]});
  }
  std::fclose(file);
  return results;
}

void write_results(const std::string& folder, const std::string& subject, const std::vector<Result>& results) {
  std::FILE* const file = std::fopen(results_path(folder, subject).c_str(), "w");
  if (file == nullptr) {
    std::perror(results_path(folder, subject).c_str());
    std::exit(2);
  }
  for (const Result& r : results) {
    std::fprintf(file, "%s\t%s\t%s\t%.6g\t%s\n", r.kind.c_str(), r.test.c_str(), r.sizes.c_str(), r.log_p,
                 r.figure.c_str());
  }
  std::fclose(file);
}

std::string text_of_p(double log_p) {
  char text[40];
  if (log_p > -2) {
    std::snprintf(text, sizeof text, "%.2f", std::pow(10, log_p));
  } else if (log_p > -6) {
    std::snprintf(text, sizeof text, "%.0e", std::pow(10, log_p));
  } else {
    std::snprintf(text, sizeof text, "10^%.0f", log_p);
  }
  return text;
}

namespace {

std::string cell(const Result& r) {
  const std::string p = text_of_p(r.log_p);
  return r.log_p < failure ? "**" + p + "**" : p;
}

// Rows by test, columns by subject; of several results of a test the smallest p.
void print_table(const std::map<std::string, std::vector<Result>>& found, const std::string& kind, bool with_sizes) {
  std::vector<std::string> rows;
  std::map<std::string, std::map<std::string, Result>> cells;
  std::vector<std::string> columns;
  for (const Subject& s : subjects) {
    bool any = false;
    for (const Result& r : found.at(s.words)) {
      if (r.kind != kind) continue;
      any = true;
      const std::string row = with_sizes ? r.test + ", " + r.sizes : r.test;
      if (std::find(rows.begin(), rows.end(), row) == rows.end()) rows.push_back(row);
      const auto [at, fresh] = cells[row].try_emplace(s.words, r);
      if (!fresh && r.log_p < at->second.log_p) at->second = r;
    }
    if (any) columns.push_back(s.words);
  }
  std::printf("| test |");
  for (const std::string& c : columns) std::printf(" %s |", c.c_str());
  std::printf("\n|---|");
  for (std::size_t i = 0; i < columns.size(); ++i) std::printf("---|");
  std::printf("\n");
  for (const std::string& row : rows) {
    std::printf("| %s |", row.c_str());
    for (const std::string& c : columns) {
      const auto at = cells[row].find(c);
      std::printf(" %s |", at == cells[row].end() ? "" : cell(at->second).c_str());
    }
    std::printf("\n");
  }
}

constexpr const char* head = R"(## Engines

How random the engines' words are, by tests of our own with exact or well-known null distributions (`tools/battery`, on
NTL) and by the sound tests of dieharder. Table entries are p-values, two-sided but for linear complexity and the rank of
a single matrix; below 10^-10 they are failures and **bold**. With this many entries a few of 10^-2 or 10^-3 are due. All
seeds are fixed, so that the figures come out again.

Our tests read the first bits of the numbers u. dieharder is fed by pipe with words of 32 bits, all of which count: of
R250, MRG32K3A, MT19937 and MT2203 the words as they are, of MCG59 the upper 32 of 59 bits, of MCG31M1 the upper 16 bits
of one word and the next, of WH floor(2^32 u). It prints eight decimals; a p-value that prints as 0 or 1 is taken for
a failure when a second run on other words gives the same.

The quasi-random engines, Sobol and Niederr, are not here: their vectors are spread more evenly than random ones on
purpose, so every test of randomness fails, as it should. What they promise instead is proved by tests/rng/quasi_test.cpp.
Abstract streams deliver the caller's numbers.
)";

}  // namespace

bool print_report(const std::string& folder) {
  std::map<std::string, std::vector<Result>> found;
  bool complete = true;
  const auto read = [&](const std::string& subject) {
    found[subject] = read_results(folder, subject);
    if (!found[subject].empty()) return;
    std::fprintf(stderr, "battery: no results of %s yet\n", subject.c_str());
    complete = false;
  };
  for (const Subject& s : subjects) {
    read(s.words);
    const std::vector<Result>& results = found[s.words];
    const bool has = std::any_of(results.begin(), results.end(), [](const Result& r) { return r.kind == "dieharder"; });
    if (s.dieharder && !results.empty() && !has) {
      std::fprintf(stderr, "battery: no results of dieharder on %s yet\n", s.words);
      complete = false;
    }
  }
  read(witnesses);
  if (!complete) return false;

  std::printf("%s\n### Tests of our own\n\n", head);
  print_table(found, "classical", true);
  std::printf("\n### dieharder\n\nThe smallest p-value of each test's.\n\n");
  print_table(found, "dieharder", false);
  std::printf(
      "\n### Shortest witnesses of known failures\n\n"
      "The smallest sample, by powers of two where it is one, that gives p < 10^-10.\n\n"
      "| engine and test | sample | found | p |\n|---|---|---|---|\n");
  for (const Result& r : found[witnesses]) {
    std::printf("| %s | %s | %s | %s |\n", r.test.c_str(), r.sizes.c_str(), r.figure.c_str(), cell(r).c_str());
  }
  std::printf("\n### Engine by engine\n");
  for (const Subject& s : subjects) {
    int results = 0, fails = 0;
    for (const Result& r : found[s.words]) {
      ++results;
      fails += r.log_p < failure;
    }
    std::printf("\n- **%s**: %d p-values, %d below 10^-10. %s", s.words, results, fails, s.text);
    for (const Result& r : found[s.words]) {
      const bool known = known_failure(s.words, r) != nullptr;
      if (r.log_p < failure && !known) std::printf(" Unexpected: %s, %s.", r.test.c_str(), r.sizes.c_str());
      if (r.log_p >= failure && known && r.kind == "classical")
        std::printf(" Passes %s, %s, though expected to fail.", r.test.c_str(), r.sizes.c_str());
    }
  }
  std::printf("\n");
  return true;
}

}  // namespace battery
