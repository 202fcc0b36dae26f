// The example programs: what they print is what the manual says.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "support/command.h"

namespace {

std::string output_of(const std::string& command) {
  const qor::test::Outcome outcome = qor::test::run_in_bash("cd " QOR_EXAMPLE_PROGRAMS " && " + command);
  EXPECT_EQ(outcome.status, 0) << command << "\n" << outcome.output;
  return outcome.output;
}

TEST(Examples, PrintWhatTheySay) {
  struct Row {
    const char* program;
    std::string text;
  };
  const Row rows[] = {
      {"quickstart", "ln: 0 1 -inf, status 2\n"},
      {"functions", "element 2: ln 0, status 2\nelement 3: ln -1, status 1\n0 1 -1000\n0 1 -inf\n"},
      {"convolve", "0.75 1 2 4 5 4 2 0.75 \n0.750 1.000 2.000 4.000 5.000 4.000 2.000 0.750 \n"},
      {"level1", "2 5, 14 25 36, -2+1i -4+3i\n"},
      {"descriptor",
       "  0.0  0.0  0.0  0.0\n  0.0  0.0 12.0  0.0\n  0.0  0.0  0.0  0.0\n  0.0  0.0  0.0  0.0\n"
       "there and back: the same\n"},
      {"memory", "1000 blocks, a few allocations\n"},
      {"philox", "three known answers: right\nskip-ahead: right\nmean of 20000 Gaussian variates: 100.03\n"},
      {"variates", "gaussian     mean  99.9413  theory 100.0000\n"},
      {"spectrum",
       "perm    5.0   3.0   1.5   0.9  -2.5  -4.3\n"
       "pack    5.0   1.5   0.9  -2.5  -4.3   3.0\n"
       "ccs     5.0   0.0   1.5   0.9  -2.5  -4.3   3.0   0.0\n"
       "X[0] =  5.0 +0.00 i\nX[1] =  1.5 +0.87 i\nX[2] = -2.5 -4.33 i\nX[3] =  3.0 +0.00 i\n"},
      {"spectrum", "back    1.0   2.0   0.0  -1.0   3.0   0.0\n"},
  };
  for (const Row& row : rows) {
    const std::string output = output_of(std::string("./") + row.program);
    EXPECT_NE(output.find(row.text), std::string::npos) << row.program << " prints\n" << output;
  }
}

TEST(Examples, StreamsGoOnWhereTheyShould) {
  const std::string output = output_of("d=$(mktemp -d); p=$PWD; cd $d; $p/streams; rmdir $d");
  double skipped = 0, drawn = 1, next = 2, loaded = 3;
  ASSERT_EQ(std::sscanf(output.c_str(), "skipped: %lf, drawn: %lf stream: %lf, loaded: %lf", &skipped, &drawn, &next,
                        &loaded),
            4)
      << output;
  EXPECT_EQ(skipped, drawn);
  EXPECT_EQ(next, loaded);
}

// The estimate by skip-ahead has the same bits for any number of ranks, a number of blocks that they don't divide
// included; that of members of a family is another, and as good.
TEST(Examples, TheIntegralIsTheSameForAnyNumberOfRanks) {
  std::string by_jumps, by_members;
  for (const char* ranks : {"1", "2", "5"}) {
    const std::string output = output_of(std::string(QOR_RUN_RANKS " ") + ranks + QOR_RANKED " 23");
    const std::size_t first = output.find("mrg32k3a"), second = output.find("mt2203");
    ASSERT_NE(first, std::string::npos) << output;
    ASSERT_NE(second, std::string::npos) << output;
    EXPECT_NE(output.find(std::string(" on ") + ranks + " ranks"), std::string::npos) << output;
    const std::string jumps = output.substr(first, second - first), members = output.substr(second);
    if (by_jumps.empty()) by_jumps = jumps;
    EXPECT_EQ(jumps, by_jumps);
    EXPECT_NE(members, by_members);
    by_members = members;
    for (const std::string& line : {jumps, members}) {
      const std::size_t at = line.find("off by ");
      ASSERT_NE(at, std::string::npos);
      EXPECT_LT(std::abs(std::atof(line.c_str() + at + 7)), 4) << line;
    }
  }
}

}  // namespace
