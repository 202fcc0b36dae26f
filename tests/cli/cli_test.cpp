// The command line program as it is used: its documented examples, what it says about mistakes, pipes that end early.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "qor/qor.hpp"
#include "support/command.h"

namespace {

using qor::test::Outcome;

// A line of bash with the program as `qor`.
Outcome run(const std::string& line) {
  return qor::test::run_in_bash("set -o pipefail; qor() { '" QOR_PROGRAM "' \"$@\"; }; " + line);
}
std::vector<double> numbers_of(const std::string& line) {
  std::istringstream words(run(line).output);
  return {std::istream_iterator<double>(words), {}};
}
std::string output_of(const std::string& line) {
  const Outcome outcome = run(line);
  EXPECT_EQ(outcome.status, 0) << line << "\n" << outcome.output;
  return outcome.output;
}

class Program : public testing::Test {
 protected:
  Program() { std::filesystem::create_directories(folder_); }
  ~Program() override { std::filesystem::remove_all(folder_); }
  std::string file(const std::string& name, const std::string& text = {}) const {
    if (!text.empty()) std::ofstream(folder_ / name) << text;
    return (folder_ / name).string();
  }
  std::filesystem::path folder_ = std::filesystem::temp_directory_path() / ("qor_cli_test_" + std::to_string(getpid()));
};

TEST_F(Program, DrawsTheNumbersThatTheLibraryDraws) {
  qor::Stream stream(QOR_BRNG_MT2203 + 17, 1);
  std::vector<double> expected(100000);
  stream.gaussian(expected, 0.0, 1.0);
  const std::string line = "qor random --engine mt2203:17 --seed 1 --dist gaussian:0,1 -n 1e5";
  EXPECT_EQ(numbers_of(line), expected);  // text brings every bit back
  const std::string raw = output_of(line + " --raw");
  ASSERT_EQ(raw.size(), 8 * expected.size());
  EXPECT_EQ(std::memcmp(raw.data(), expected.data(), raw.size()), 0);

  // Integers, singles and words, by jumps and with several seed words.
  qor::Stream words(QOR_BRNG_MRG32K3A, {7, 8});
  words.skip_ahead(5'000'000'000);
  std::vector<int> counts(7);
  words.poisson(counts, 10);
  EXPECT_EQ(numbers_of("qor random --engine MRG32K3A --seed 7,8 --skip 5e9 --dist poisson:10 -n 7 --columns 3"),
            std::vector<double>(counts.begin(), counts.end()));
  qor::Stream leaping(QOR_BRNG_MCG59, 3);
  leaping.leapfrog(2, 5);
  std::vector<float> singles(5);
  leaping.gamma(singles, 2.5f);
  const std::vector<double> written =
      numbers_of("qor random --engine mcg59 --seed 0x3 --leapfrog 2/5 --single --dist gamma:2.5 -n 5");
  EXPECT_EQ(std::vector<float>(written.begin(), written.end()), singles);
}

// The recorded variates are those of this major version; last bits belong to the processor's square root.
TEST_F(Program, DrawsTheRecordedVariates) {
  std::ifstream file(QOR_TEST_DATA "/variates.kat");
  int rows = 0;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with('#')) continue;
    ++rows;
    std::istringstream fields(line);
    std::string distribution;
    fields >> distribution;
    const std::vector<double> recorded{std::istream_iterator<double>(fields), {}};
    const std::vector<double> drawn = numbers_of("qor random --seed 1871 -n 5 --dist " + distribution);
    ASSERT_EQ(recorded.size(), 5u) << line;
    ASSERT_EQ(drawn.size(), 5u) << line;
    for (std::size_t i = 0; i < 5; ++i)
      EXPECT_NEAR(drawn[i], recorded[i], 1e-14 * (1 + std::fabs(recorded[i]))) << line;
  }
  EXPECT_GE(rows, 25);
}

TEST_F(Program, WritesEverySortOfDistribution) {
  const std::string help = output_of("qor random --help");
  const std::regex row("\n  ([a-z]+)(:[^ ]*)? - ");
  int rows = 0;
  for (std::sregex_iterator at(help.begin(), help.end(), row), end; at != end; ++at, ++rows) {
    const std::string name = (*at)[1];
    const std::string parameters = name == "hypergeometric"                                              ? ":100,10,30"
                                   : name == "integers"                                                  ? ":0,9"
                                   : name == "binomial"                                                  ? ":10,0.5"
                                   : (*at)[2].str().find(",p") != std::string::npos                      ? ":2,0.5"
                                   : name == "beta"                                                      ? ":2,3"
                                   : std::set<std::string>{"bits", "uniform", "gaussian"}.contains(name) ? ""
                                                                                                         : ":0.5";
    EXPECT_EQ(numbers_of("qor random -n 50 --dist " + name + parameters).size(), 50u) << name << parameters;
  }
  EXPECT_EQ(rows, 19);
}

TEST_F(Program, KeepsAStreamInAFileAndGoesOnWithIt) {
  const std::string whole = output_of("qor random --engine wh:5 --dist exponential -n 30");
  const std::string kept = file("stream");
  const std::string first = output_of("qor random --engine wh:5 --dist exponential -n 11 --save " + kept);
  EXPECT_EQ(first + output_of("qor random --load " + kept + " --dist exponential -n 19"), whole);
}

TEST_F(Program, EndsQuietlyWhenTheReaderHasEnough) {
  EXPECT_EQ(output_of("qor random --raw | head -c 8 | wc -c"), "8\n");
  EXPECT_EQ(output_of("yes 1 | qor math sin | head -n 1; test ${PIPESTATUS[1]} = 0"), "0.8414709848078965\n");
  for (const std::string command : {"engines", "bench inv", "math --list", "random --help", "help", "--version"}) {
    EXPECT_EQ(output_of("(sleep 0.1; qor " + command + ") | true"), "");
  }
  for (const std::string command : {"random -n 1e6", "engines", "random --help", "--version"}) {
    const Outcome outcome = run("qor " + command + " > /dev/full");
    EXPECT_EQ(outcome.status, 1) << command;
    EXPECT_TRUE(outcome.output.ends_with("writing failed: No space left on device\n")) << outcome.output;
  }
}

TEST_F(Program, ComputesFunctionsTransformsAndConvolutions) {
  EXPECT_EQ(output_of("echo 0.5 1 2 | qor math sin"), "0.479425538604203\n0.8414709848078965\n0.9092974268256817\n");
  EXPECT_EQ(output_of("echo '1, 1  # a comment\n0 -1' | qor math atan2 -"), "0.7853981633974483\n3.141592653589793\n");
  EXPECT_EQ(output_of("echo 0 1 | qor math sincos --accuracy low --single"), "0 1\n0.84147096 0.5403023\n");
  EXPECT_EQ(output_of("echo 1 0 -1 -4 nan | qor math LN"),
            "0\n-inf\nnan\nnan\nnan\nqor math: 2 out of domain\nqor math: 1 at a pole\n");
  EXPECT_EQ(output_of("echo 0 0 1 0 | qor math --complex exp"), "1 0\n2.718281828459045 0\n");
  EXPECT_EQ(output_of("echo 1 2 3 4 | qor fft"), "10 0\n-2 2\n-2 0\n");
  const std::string series = file("series.txt", "3 1 4 1 5 9 2 6\n"), odd = file("odd.txt", "3 1 4 1 5\n");
  std::vector<double> back = numbers_of("qor fft " + series + " | qor fft --inverse");
  ASSERT_EQ(back.size(), 8u);
  EXPECT_NEAR(back[5], 9, 1e-14);
  back = numbers_of("qor fft --scale both " + odd + " | qor fft --inverse --odd --scale both");
  ASSERT_EQ(back.size(), 5u);
  EXPECT_NEAR(back[4], 5, 1e-14);
  EXPECT_EQ(output_of("echo +5 | qor fft | qor fft --inverse"), "5\n");
  EXPECT_EQ(output_of("echo 1 0 0 1 | qor fft --complex"), "1 1\n1 -1\n");
  const std::string a = file("a.txt", "1 2 3"), b = file("b.txt", "1\n1\n");
  EXPECT_EQ(output_of("qor convolve " + a + " " + b), "1\n3\n5\n3\n");
  EXPECT_EQ(output_of("qor convolve " + a + " " + b + " --same"), "1\n3\n5\n");
  const std::vector<double> through = numbers_of("qor convolve --method fourier " + a + " " + b);
  ASSERT_EQ(through.size(), 4u);
  for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(through[i], (std::vector<double>{1, 3, 5, 3})[i], 1e-14);
  EXPECT_EQ(output_of("qor convolve --correlate " + a + " " + b), "3\n5\n3\n1\n");
}

TEST_F(Program, SaysWhatIsWrong) {
  struct Row {
    std::string line;
    int status;
    std::string message;
  };
  const Row rows[] = {
      {"qor", 2, "usage: qor COMMAND"},
      {"qor randm", 2, "qor: no command 'randm', did you mean 'random'?"},
      {"qor random --engin mt19937", 2, "no option '--engin', did you mean '--engine'?"},
      {"qor random --engine mt19938", 2, "did you mean 'mt19937'?"},
      {"qor random --engine mt2203:1024", 2, "member of mt2203: 1024 is not from 0 to 1023"},
      {"qor random --dist gamma", 2, "gamma needs the parameter alpha"},
      {"qor random --dist gaussian:0,-1", 2, "gaussian: sigma must be positive"},
      {"qor random --dist gaussian:0,x", 2, "gaussian: 'x' is not a number"},
      {"qor random --dist uniform:1,2,3", 2, "uniform takes 2 parameters at most"},
      {"qor random --dist gauss", 2, "did you mean 'gaussian'?"},
      {"qor random --dist uniform:5,3", 2, "uniform: b must be above a"},
      {"qor random --dist integers:0,1e10", 2, "integers: b must be a whole number of 32 bits, above a"},
      {"qor random --dist binomial:-1,0.5", 2, "binomial: n must be a whole number from 0"},
      {"qor random --dist geometric:0", 2, "geometric: p must be above 0 and at most 1"},
      {"qor random --dist hypergeometric:10,20,5", 2, "hypergeometric: s must be a whole number from 0 to l"},
      {"qor random --dist poisson:1e10", 2, "poisson: lambda must be from 0 to 2^30"},
      {"qor random --engine sobol --seed 41", 2, "the dimension of sobol is from 1 to 40"},
      {"qor random --seed -1", 2, "--seed: -1 is not from 0 to 4294967295"},
      {"qor random -n 1e30", 2, "-n: 1e30 is not from 0 to"},
      {"qor random --save /nonexistent/x -n 1e15", 1, "cannot write /nonexistent/x: No such file or directory"},
      {"qor random -n 1.5", 2, "-n: '1.5' is not a whole number"},
      {"qor random -n", 2, "-n needs a value, COUNT"},
      {"qor random --save x", 2, "--save needs a count, -n"},
      {"qor random --leapfrog 5/5 -n 1", 2, "--leapfrog: 5 is not from 0 to 4"},
      {"qor random --skip 1 -n 1", 1, "skipping ahead: the engine can't skip ahead (-1003)"},
      {"qor random --load /nonexistent -n 1", 1, "/nonexistent: loading a stream: the file can't be opened (-1101)"},
      {"qor random --load " QOR_PROGRAM " -n 1", 1, "not a stream file"},
      {"qor math", 2, "a function is needed"},
      {"qor math sine", 2, "no function 'sine', did you mean 'sin'?"},
      {"qor math sni", 2, "no function 'sni', did you mean 'sin'?"},
      {"qor math erf --complex", 2, "no complex function 'erf' ('qor math --complex --list' lists them)"},
      {"qor math sin --accuracy best", 2, "--accuracy is one of high, low, not 'best'"},
      {"echo 1 two 3 | qor math sin", 1, "standard input, line 1: 'two' is not a number"},
      {"echo 1 2 3 | qor math pow", 1, "standard input: pow needs 2 numbers each time"},
      {"qor math sin /nonexistent", 1, "cannot open /nonexistent: No such file or directory"},
      {"qor math sin /tmp", 1, "cannot read /tmp: Is a directory"},
      {"qor fft --raw < /dev/null", 1, "standard input has no numbers"},
      {"printf 12345 | qor fft --raw", 1, "standard input ends within a number"},
      {"echo 1 2 3 | qor fft --inverse", 1, "pairs of numbers are needed"},
      {"qor convolve a.txt", 2, "two files are needed"},
      {"qor convolve - -", 2, "one file may be -, not both"},
      {"qor bench nothing-of-the-kind", 2, "nothing has all of these words"},
      {"qor engines 5", 2, "too many arguments, from '5' on"},
  };
  for (const Row& row : rows) {
    const Outcome outcome = run(row.line);
    EXPECT_EQ(outcome.status, row.status) << row.line;
    EXPECT_NE(outcome.output.find(row.message), std::string::npos) << row.line << " says\n" << outcome.output;
  }
}

TEST_F(Program, ListsTimesAndTestsItself) {
  const std::string engines = output_of("qor engines"), names = output_of("qor engines --names");
  std::istringstream lines(names);
  int count = 0;
  for (std::string name; lines >> name; ++count) {
    EXPECT_NE(engines.find("\n" + name + " "), std::string::npos) << name;
    EXPECT_NE(output_of("qor random --engine " + name + " -n 3"), "") << name;
  }
  EXPECT_EQ(count, 9);
  EXPECT_TRUE(
      std::regex_search(output_of("qor bench exp double low"), std::regex("exp double low +[0-9.]+ +[0-9.]+\n")));
  EXPECT_TRUE(output_of("qor selftest").ends_with("all is well\n"));
  EXPECT_EQ(output_of("qor --version"), "qor " QOR_VERSION ", library " QOR_VERSION "\n");
}

// Help, manual page and completion know the same commands and options.
TEST_F(Program, IsDocumented) {
  std::ifstream file(QOR_CLI "/qor.1");
  std::string page((std::istreambuf_iterator<char>(file)), {});
  page = std::regex_replace(page, std::regex("\\\\-"), "-");
  const std::string usage = output_of("qor help");
  const std::regex command_row("\n  ([a-z]+) +[a-z]"), option_row("\n  (-[-a-z]+)");
  int options = 0;
  for (std::sregex_iterator at(usage.begin(), usage.end(), command_row), end; at != end; ++at) {
    const std::string command = (*at)[1];
    if (command == "help") continue;
    EXPECT_NE(page.find(".SS \"qor " + command), std::string::npos) << command;
    const std::string help = output_of("qor " + command + " --help");
    EXPECT_EQ(help, output_of("qor help " + command));
    for (std::sregex_iterator row(help.begin(), help.end(), option_row); row != end; ++row, ++options) {
      EXPECT_NE(page.find((*row)[1]), std::string::npos) << command << " " << (*row)[1];
    }
  }
  EXPECT_GE(options, 25);
  // Every example of the manual page runs; those that need files or other programs run above.
  std::istringstream lines(page.substr(page.find(".SH EXAMPLES")));
  int examples = 0;
  for (std::string line; std::getline(lines, line);) {
    if (line.find("qor ") == std::string::npos || line.find("txt") != std::string::npos ||
        line.find("dieharder") != std::string::npos) {
      continue;
    }
    ++examples;
    EXPECT_NE(output_of(line + " | head -n 1"), "") << line;
  }
  EXPECT_GE(examples, 4);

  const auto complete = [](const std::string& words) {
    return output_of("export -f qor; source " QOR_CLI "/qor.bash; COMP_WORDS=(" + words +
                     "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _qor; echo \"${COMPREPLY[@]}\"");
  };
  EXPECT_EQ(complete("qor ra"), "random\n");
  EXPECT_EQ(complete("qor random --engine mt"), "mt19937 mt2203\n");
  EXPECT_EQ(complete("qor random --dist ga"), "gaussian gamma\n");
  EXPECT_EQ(complete("qor random --s"), "--seed --single --skip --save\n");
  EXPECT_EQ(complete("qor math as"), "asin asinh\n");
}

}  // namespace
