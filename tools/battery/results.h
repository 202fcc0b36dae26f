// What the battery knows of engines and what it finds. A result is a line of a file a subject: kind, test, sizes,
// logarithm of p, figure, separated by tabs.
#pragma once

#include <string>
#include <vector>

namespace battery {

// A p-value below this, by its logarithm, is a failure.
constexpr double failure = -10;

struct Result {
  std::string kind;  // "classical", "dieharder", "witness"
  std::string test, sizes;
  double log_p = 0;
  std::string figure;
};

// What is tested: an engine, one of its members, or all members in turn.
struct Subject {
  const char* words;  // the argument of qor_words
  const char* text;   // what passes, what fails, and why that is expected
  bool dieharder = true;
};
extern const std::vector<Subject> subjects;
// The subject whose results are the witnesses of known failures.
constexpr const char* witnesses = "witnesses";

// Why a subject is known to fail a test: null when it should pass.
const char* known_failure(const std::string& subject, const Result& result);

std::string results_path(const std::string& folder, const std::string& subject);
std::vector<Result> read_results(const std::string& folder, const std::string& subject);
void write_results(const std::string& folder, const std::string& subject, const std::vector<Result>& results);

// A p-value as text: 0.43, 3e-7, 10^-480.
std::string text_of_p(double log_p);

// The page's section; false when results are missing.
bool print_report(const std::string& folder);

}  // namespace battery
