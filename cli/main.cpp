// qor: the library from the shell.
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <new>
#include <qor/qor.hpp>

#include "command.h"
#include "numbers.h"
#include "programs.h"

namespace cli {

const std::vector<Command> commands = {
    {"random", "[OPTIONS]", "variates from random streams",
     "Draws variates from a random stream and prints them, a line each or --columns a line. The numbers depend on "
     "engine, seed and distribution alone. qor random --raw | dieharder -a -g 200 tests an engine's words.",
     list_of_distributions, run_random},
    {"engines", "[OPTIONS]", "the engines and what they can do",
     "Lists the engines: identifier, members of the family, seed words, bits of a word, period, and whether they "
     "leapfrog and skip ahead.",
     nullptr, run_engines},
    {"math", "FUNCTION [OPTIONS] [FILE]", "a function of every number of a file",
     "Reads numbers from FILE or standard input, pairs of them for functions of two arguments, and prints the "
     "function's values, a line each. How many were out of domain and the like is told at the end on standard error.",
     list_of_functions, run_math},
    {"fft", "[OPTIONS] [FILE]", "the Fourier transform of a column of numbers",
     "Transforms real numbers from FILE or standard input, of any count n, and prints the n/2 + 1 frequencies from 0 "
     "on, a real and an imaginary part a line. --inverse takes those and prints the numbers.",
     nullptr, run_fft},
    {"convolve", "A B [OPTIONS]", "the convolution or correlation of two files of numbers",
     "Prints the full convolution, sums of x[i] y[k - i] for k from 0 to nx + ny - 2, of the numbers x of A and y "
     "of B. One of the files may be -, standard input.",
     nullptr, run_convolve},
    {"bench", "[WORD...]", "how fast the library is on this processor",
     "Times engines, distributions, functions and transforms, those whose names have all the words, and prints "
     "nanoseconds an element (of transforms, a point): the fastest of seven rounds.",
     nullptr, run_bench},
    {"selftest", "", "does the library keep its promises here?",
     "Checks known answers of the engines, errors of the functions against the stated bounds, transforms against their "
     "definition, and more. Status 0 when all is well.",
     nullptr, run_selftest},
};

namespace {

int print_usage(std::FILE* to) {
  std::fprintf(to, "usage: qor COMMAND [ARGUMENTS]\n\n");
  for (const Command& c : commands) std::fprintf(to, "  %-10s %s\n", c.name.c_str(), c.summary.c_str());
  std::fprintf(
      to,
      "  help       this text; qor COMMAND --help tells more\n  --version  the versions of program and library\n\n"
      "qor random --engine mt2203:17 --seed 1 --dist gaussian:0,1 -n 1e6\n"
      "qor random --raw | dieharder -a -g 200\n"
      "echo 0.5 1 2 | qor math sin\n");
  return to == stdout ? 0 : 2;
}

int run_command(const std::vector<std::string>& words, std::string& prefix) {
  if (words.empty()) return print_usage(stderr);
  if (words[0] == "help" && words.size() > 1) return run_command({words[1], "--help"}, prefix);
  if (words[0] == "help" || words[0] == "--help" || words[0] == "-h") return print_usage(stdout);
  if (words[0] == "--version") {
    std::printf("qor %s, library %s\n", QOR_VERSION, qor_version());
    return 0;
  }
  const auto command = std::ranges::find(commands, words[0], &Command::name);
  if (command == commands.end()) {
    std::vector<std::string> names;
    for (const Command& c : commands) names.push_back(c.name);
    throw Misuse(unknown("command", words[0], names));
  }
  prefix += " " + command->name;
  return command->run(std::span(words).subspan(1));
}

int run(const std::vector<std::string>& words) {
  std::string prefix = "qor";
  const auto failed = [&](const char* text) {
    std::fprintf(stderr, "%s: %s\n", prefix.c_str(), text);
    return 1;
  };
  try {
    const int status = run_command(words, prefix);
    flush_output();
    return status;
  } catch (const Misuse& misuse) {
    failed(misuse.what());
    std::fprintf(stderr, "%s --help tells more\n", prefix.c_str());
    return 2;
  } catch (const std::bad_alloc&) {
    return failed("so many numbers don't fit into memory");
  } catch (const std::exception& error) {
    return failed(error.what());
  }
}

}  // namespace

}  // namespace cli

int main(int argc, char** argv) {
  if (qor_cpu_supported() == 0) {
    std::fprintf(stderr, "qor: this processor lacks SSE2 or SSSE3\n");
    return 1;
  }
  std::signal(SIGPIPE, SIG_IGN);  // noticed where it is written
  return cli::run(std::vector<std::string>(argv + 1, argv + argc));
}
