// The demo as a user runs it: what it says about bad files and options, and that it works on a good one.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
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

std::string little_endian(unsigned value, int bytes) {
  std::string s;
  for (int i = 0; i < bytes; ++i) s += static_cast<char>(value >> 8 * i & 255);
  return s;
}
// A WAV file, with a chunk that nobody knows before the samples.
std::string wav(unsigned format, unsigned channels, unsigned bits, const std::string& data) {
  const std::string chunks = "fmt " + little_endian(16, 4) + little_endian(format, 2) + little_endian(channels, 2) +
                             little_endian(48000, 4) + little_endian(0, 4) + little_endian(0, 2) +
                             little_endian(bits, 2) + "junk" + little_endian(3, 4) + "abc" + std::string(1, 0) +
                             "data" + little_endian(unsigned(data.size()), 4) + data;
  return "RIFF" + little_endian(unsigned(chunks.size()) + 4, 4) + "WAVE" + chunks;
}
// One second at 48 kHz that swells towards 0.6 s: a tone that rises from 500 to 1500 Hz, and one of 9 kHz with half its
// amplitude.
double tones(int i) {
  const double t = i / 48000.0, swell = std::exp(-50 * (t - 0.6) * (t - 0.6));
  return 0.4 * swell * (std::sin(2 * M_PI * (500 + 500 * t) * t) + 0.5 * std::sin(2 * M_PI * 9000 * t));
}
std::string sampled(unsigned format, unsigned channels, unsigned bits) {
  std::string data;
  for (int i = 0; i < 48000; ++i) {
    for (unsigned c = 0; c < channels; ++c) {
      const double v = channels == 1 ? tones(i) : c == 0 ? 1.5 * tones(i) : 0.5 * tones(i);
      auto word = static_cast<unsigned>(static_cast<int>(std::lround(v * std::ldexp(1.0, int(bits) - 1))));
      if (format == 3) word = std::bit_cast<unsigned>(static_cast<float>(v));
      data += little_endian(bits == 8 ? word + 128 : word, int(bits) / 8);
    }
  }
  return data;
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
      {file("empty.wav", wav(1, 1, 16, "")), "has no samples"},
      {file("law.wav", wav(6, 1, 8, "abc")), "only PCM of 8 to 32 bits and 32-bit floats are read"},
      {file("none.wav", wav(1, 0, 16, "abcd")), "is damaged"},
      {file("half.wav", wav(1, 1, 16, "abcd").substr(0, 30)), "only PCM"},
      {file("one.wav", wav(1, 1, 16, "abcd")) + " " + file("two.wav", wav(1, 1, 16, "abcd")), "more than one file"},
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

// The tone of 9 kHz, a fifth of the power, goes; the fragment is found where it was taken, at the loudest place.
TEST_F(Demo, FiltersAndSearchesARecording) {
  struct Form {
    unsigned format, channels, bits;
  };
  for (const auto& [format, channels, bits] : {Form{1, 1, 8}, {1, 2, 16}, {1, 2, 24}, {3, 1, 32}}) {
    const Outcome outcome =
        run(file("tones.wav", wav(format, channels, bits, sampled(format, channels, bits))) + quick());
    ASSERT_EQ(outcome.status, 0) << outcome.output;
    double seconds = 0, apart = 1, thinned_apart = 1, score_apart = 1, from = 0, found = 1, score = 0, before = 0,
           after = 0;
    ASSERT_EQ(std::sscanf(outcome.output.c_str() + outcome.output.find("tones.wav:"),
                          "tones.wav: %lf s, 48000 samples per second low-passed at 5.74 kHz, 511 taps %*f ms "
                          "directly, %*f ms through transforms; they differ by %lf the same, every 4th sample %*f ms "
                          "directly; differ by %lf from the above correlated with a quarter second %*f ms through "
                          "transforms, %*f ms directly; they differ by %lf taken from %lf s, with as much noise "
                          "added; found at %lf s, correlation %lf power above 6.0 kHz %lf dB of all before, %lf",
                          &seconds, &apart, &thinned_apart, &score_apart, &from, &found, &score, &before, &after),
              9)
        << outcome.output;
    EXPECT_EQ(seconds, 1);
    EXPECT_LT(std::max({apart, thinned_apart, score_apart}), 1e-13);
    EXPECT_NEAR(from, 0.475, 0.01) << "a quarter second around 0.6 s";
    EXPECT_EQ(found, from);
    EXPECT_NEAR(score, std::sqrt(0.5), 0.03);
    EXPECT_NEAR(before, -7, 0.6);
    EXPECT_LT(after, bits == 8 ? -50 : -95);
  }
  for (const char* name : {"sound_wave.dat", "sound_spectrum.dat", "sound_search.dat"}) {
    EXPECT_GT(std::filesystem::file_size(folder_ / "output" / name), 3000u) << name;
  }
}

}  // namespace
