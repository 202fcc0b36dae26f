// The demo as a user runs it: what it says about bad files and options, and that it works on a good one.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

struct Outcome {
  int status;
  std::string output;
};
Outcome run(const std::string& arguments) {
  std::FILE* const pipe = popen((QOR_DEMO " " + arguments + " 2>&1").c_str(), "r");
  Outcome outcome{-1, {}};
  std::array<char, 256> text;
  while (std::fgets(text.data(), text.size(), pipe) != nullptr) outcome.output += text.data();
  const int status = pclose(pipe);
  outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return outcome;
}

class Demo : public testing::Test {
 protected:
  Demo() { std::filesystem::create_directories(folder_); }
  ~Demo() override { std::filesystem::remove_all(folder_); }
  std::string file(const std::string& name, const std::string& text) const {
    std::ofstream(folder_ / name) << text;
    return (folder_ / name).string();
  }
  std::string quick() const {
    return " --variates 20000 --resamples 2000 --paths 40000 --output " + (folder_ / "output").string();
  }
  std::filesystem::path folder_ =
      std::filesystem::temp_directory_path() / ("qor_demo_test_" + std::to_string(getpid()));
};

TEST_F(Demo, SaysWhatIsWrongWithAFileAndLeavesWithStatus1) {
  struct Row {
    std::string arguments, message;
  };
  const std::string twelve = file("twelve.txt", "1 2 3 4 5 6 7 8 9 10 11 12");
  const Row rows[] = {
      {"/nonexistent/series.txt", "cannot open /nonexistent/series.txt: No such file or directory"},
      {folder_.string(), "cannot read " + folder_.string() + ": Is a directory"},
      {file("empty.txt", ""), "has no numbers"},
      {file("comments.txt", "# 1 2 3\n\n"), "has no numbers"},
      {file("text.txt", "1 2 3\n4 five 6\n"), "line 2: 'five' is not a number"},
      {file("half.txt", "1 2 3x 4\n"), "line 1: '3x' is not a number"},
      {file("nan.txt", "1 2 nan 4\n"), "line 1: 'nan' is not a number"},
      {file("binary.bin", std::string("\x7f\x45\x4c\x46\x01\x00\x02", 7)), "line 1: '?ELF?\?\?' is not a number"},
      {file("three.txt", "1 2 3"), "both parts need at least two"},
      {twelve + " --split 11", "split after 11: both parts need at least two"},
      {twelve + " --split 2x", "--split needs a number"},
      {twelve + " --split", "--split needs a value"},
      {twelve + " " + twelve, "more than one file"},
      {"--frobnicate", "unknown option --frobnicate"},
      {twelve + " --output /proc/nowhere", "cannot make the folder /proc/nowhere"},
  };
  for (const Row& row : rows) {
    const Outcome outcome = run(row.arguments);
    EXPECT_EQ(outcome.status, 1) << row.arguments;
    EXPECT_NE(outcome.output.find(row.message), std::string::npos) << row.arguments << " says\n" << outcome.output;
  }
}

TEST_F(Demo, ComparesTheTwoPartsOfASeries) {
  const std::string series = file("series.csv", "# start: 2001\n1, 1, 1, 1; 1\r\n# a note\n4 4 4 4 4 4 4\n");
  const Outcome split = run(series + " --split 5" + quick());
  EXPECT_EQ(split.status, 0) << split.output;
  EXPECT_NE(split.output.find("12 values"), std::string::npos) << split.output;
  EXPECT_NE(split.output.find("3.00   95 % interval 3.00 to 3.00"), std::string::npos) << split.output;
  EXPECT_NE(split.output.find("mean of 2001 to 2005"), std::string::npos) << split.output;
  EXPECT_EQ(split.output.find('\r'), std::string::npos) << "progress without a terminal";
  const Outcome halves = run(series + quick());
  EXPECT_NE(halves.output.find("mean of 2001 to 2006"), std::string::npos) << halves.output;
}

TEST_F(Demo, FindsTheChangeInTheNileAndWritesItsTables) {
  const Outcome outcome = run(quick());
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  for (const char* text : {"mean of 1871 to 1898       1097.75", "mean of 1899 to 1970        849.97", "-247.78"}) {
    EXPECT_NE(outcome.output.find(text), std::string::npos) << outcome.output;
  }
  double low = 0, high = 0;
  const std::size_t at = outcome.output.find("interval ");
  ASSERT_EQ(std::sscanf(outcome.output.c_str() + at, "interval %lf to %lf", &low, &high), 2);
  EXPECT_NEAR(low, -304, 6);  // four standard errors of a quantile of 2000 resamples
  EXPECT_NEAR(high, -190, 6);
  for (const char* name : {"gaussian.dat", "series.dat", "bootstrap.dat", "basket.dat"}) {
    EXPECT_GT(std::filesystem::file_size(folder_ / "output" / name), 300u) << name;
  }
}

// The closed form by another way: numerical integration of the payoff over the normal logarithm of the mean.
TEST_F(Demo, PricesTheBasketWithinItsErrors) {
  const Outcome outcome = run(quick());
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  double mean = 0, variance = 0;
  for (int i = 0; i < 10; ++i) {
    const double s = 0.15 + 0.02 * i;
    mean += (0.03 - s * s / 2) / 10;
    for (int k = 0; k < 10; ++k) variance += s * (0.15 + 0.02 * k) * (0.3 + 0.7 * std::pow(0.8, std::abs(i - k))) / 100;
  }
  double exact = 0;
  constexpr double step = 1e-4;
  for (double z = -9; z < 9; z += step) {
    const double payoff = std::max(0.0, 100 * std::exp(mean + std::sqrt(variance) * z) - 100);
    exact += step * std::exp(-0.03 - z * z / 2) / std::sqrt(2 * M_PI) * payoff;
  }
  double closed = 0, simulated = 0, error = 1, arithmetic = 0, arithmetic_error = 1, by_way = 0, by_way_error = 1;
  const char* const at = outcome.output.c_str() + outcome.output.find("geometric mean, closed form");
  ASSERT_EQ(
      std::sscanf(at,
                  "geometric mean, closed form %lf geometric mean, simulated %lf standard error %lf, off by %*f of it "
                  "arithmetic mean, simulated %lf standard error %lf "
                  "arithmetic mean, by way of the geometric one %lf standard error %lf",
                  &closed, &simulated, &error, &arithmetic, &arithmetic_error, &by_way, &by_way_error),
      7)
      << outcome.output;
  EXPECT_NEAR(closed, exact, 1e-3);
  EXPECT_NEAR(simulated, closed, 4.5 * error);
  EXPECT_NEAR(arithmetic, by_way, 4.5 * arithmetic_error);
  EXPECT_LT(by_way_error, arithmetic_error / 4);
  EXPECT_GT(by_way, closed);  // the arithmetic mean is the larger
}

}  // namespace
