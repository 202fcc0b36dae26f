// The picture example as a user runs it, on pictures whose blurred and sharpened values are known.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/command.h"

namespace {

using qor::test::Outcome;

constexpr int width = 61, height = 47;

class PictureExample : public testing::Test {
 protected:
  PictureExample() { std::filesystem::create_directories(folder_); }
  ~PictureExample() override { std::filesystem::remove_all(folder_); }
  std::string file(const std::string& name, const std::string& bytes) const {
    std::ofstream(folder_ / name, std::ios::binary) << bytes;
    return (folder_ / name).string();
  }
  Outcome run(const std::string& arguments) const {
    return qor::test::run_in_bash("cd " + folder_.string() + " && " QOR_PICTURE " " + arguments);
  }
  // The values of a picture that was written.
  std::vector<int> values(const std::string& name) const {
    std::ifstream in(folder_ / name, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const std::string head = "P5\n61 47\n255\n";
    EXPECT_EQ(bytes.substr(0, head.size()), head);
    EXPECT_EQ(bytes.size(), head.size() + width * height);
    std::vector<int> v;
    for (const char c : bytes.substr(std::min(head.size(), bytes.size()))) v.push_back(static_cast<unsigned char>(c));
    v.resize(width * height);
    return v;
  }
  std::filesystem::path folder_ =
      std::filesystem::temp_directory_path() / ("qor_picture_test_" + std::to_string(getpid()));
};

template <class F>
std::string pgm(const std::string& head, int bytes, F value) {
  std::string s = head;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      if (bytes == 2) s += static_cast<char>(value(x, y) >> 8);
      s += static_cast<char>(value(x, y));
    }
  }
  return s;
}

TEST_F(PictureExample, LeavesAnEvenPictureAsItIs) {
  const auto grey = [](int, int) { return 77; };
  ASSERT_EQ(run(file("a.pgm", pgm("P5 # grey\n61 47\n# all over\n255\n", 1, grey)) + " out").status, 0);
  for (const char* name : {"out-blurred.pgm", "out-sharpened.pgm"}) {
    EXPECT_EQ(values(name), std::vector<int>(width * height, 77)) << "edges included: " << name;
  }
}

TEST_F(PictureExample, BlursAPointToABellAndSharpensAnEdge) {
  const double sigma = 2;
  const auto point = [](int x, int y) { return x == 20 && y == 30 ? 65535 : 0; };
  const Outcome outcome = run(file("b.pgm", pgm("P5 61 47 65535\n", 2, point)) + " out 2 1");
  ASSERT_EQ(outcome.status, 0) << outcome.output;
  double sum = 0;
  for (int i = -6; i <= 6; ++i) sum += std::exp(-i * i / (2 * sigma * sigma));
  const std::vector<int> blurred = values("out-blurred.pgm");
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const int dx = x - 20, dy = y - 30;
      const double bell =
          std::abs(dx) > 6 || std::abs(dy) > 6 ? 0 : std::exp(-(dx * dx + dy * dy) / (2 * sigma * sigma));
      EXPECT_NEAR(blurred[static_cast<std::size_t>(y * width + x)], 255 * bell / (sum * sum), 0.501) << x << " " << y;
    }
  }
  const auto edge = [](int x, int) { return x < 30 ? 100 : 150; };
  ASSERT_EQ(run(file("c.pgm", pgm("P5 61 47 255\n", 1, edge)) + " out 2 1").status, 0);
  const std::vector<int> sharp = values("out-sharpened.pgm");
  // On the dark side the blur has gained the part of the bell beyond the edge, which is taken away.
  double beyond = 0;
  for (int i = 1; i <= 6; ++i) beyond += std::exp(-i * i / (2 * sigma * sigma)) / sum;
  EXPECT_NEAR(sharp[29], 100 - 50 * beyond, 0.51);
  EXPECT_NEAR(sharp[30], 150 + 50 * beyond, 0.51);
  EXPECT_EQ(sharp[20], 100);
}

TEST_F(PictureExample, DoesTheSameInEveryWay) {
  const auto noise = [word = 1u](int, int) mutable { return static_cast<int>((word = word * 69069u + 1u) >> 24); };
  const Outcome outcome = run(file("d.pgm", pgm("P5 61 47 255\n", 1, noise)) + " out 5");
  ASSERT_EQ(outcome.status, 0) << outcome.output;
  int count = 0;
  for (std::size_t at = 0; (at = outcome.output.find("at most ", at)) != std::string::npos; ++count) {
    EXPECT_LT(std::atof(outcome.output.c_str() + (at += 8)), 2e-3) << outcome.output;
  }
  EXPECT_EQ(count, 3);
}

TEST_F(PictureExample, SaysWhatIsWrong) {
  struct Row {
    std::string arguments, message;
  };
  const auto black = [](int, int) { return 0; };
  const std::string good = file("good.pgm", pgm("P5 61 47 255\n", 1, black));
  const Row rows[] = {
      {"", "usage: picture"},
      {"/nonexistent.pgm out", "cannot open /nonexistent.pgm: No such file or directory"},
      {file("text.pgm", "P2 1 1 255 0") + " out", "is no binary PGM file"},
      {file("none.pgm", "P5") + " out", "is damaged"},
      {file("zero.pgm", "P5 0 5 255\n") + " out", "is damaged"},
      {file("huge.pgm", "P5 99999 99999 255\n") + " out", "too large"},
      {file("white.pgm", "P5 1 1 65536\n\0\0") + " out", "is damaged"},
      {file("short.pgm", pgm("P5 61 48 255\n", 1, black)) + " out", "ends too early"},
      {good + " out 0", "SIGMA"},
      {good + " out 3 x", "AMOUNT"},
      {good + " /nonexistent/out", "cannot write /nonexistent/out-blurred.pgm"},
  };
  for (const Row& row : rows) {
    const Outcome outcome = run(row.arguments);
    EXPECT_EQ(outcome.status, 1) << row.arguments;
    EXPECT_NE(outcome.output.find(row.message), std::string::npos) << row.arguments << " says\n" << outcome.output;
  }
}

}  // namespace
