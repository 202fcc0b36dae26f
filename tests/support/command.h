// A command as a user runs it: what it prints, errors included, and its status.
#pragma once

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <regex>
#include <string>

namespace qor::test {

struct Outcome {
  int status;
  std::string output;
};

// A line of bash.
inline Outcome run_in_bash(const std::string& line) {
  const std::string quoted = std::regex_replace(line, std::regex("'"), "'\\''");
  std::FILE* const pipe = popen(("exec 2>&1; exec bash -c '" + quoted + "'").c_str(), "r");
  Outcome outcome{-1, {}};
  std::array<char, 4096> text;
  for (std::size_t n; (n = std::fread(text.data(), 1, text.size(), pipe)) > 0;) outcome.output.append(text.data(), n);
  const int status = pclose(pipe);
  outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return outcome;
}

}  // namespace qor::test
