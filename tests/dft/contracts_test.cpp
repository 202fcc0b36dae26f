// What descriptors accept and refuse, what they say, and what happens without memory.
#include <array>
#include <set>

#include "dft/drawn.h"
#include "qor/service.h"
#include "support/allocations.h"

namespace {

using drawn::Descriptor;

int create(qor_dft_descriptor** d, int precision, int domain, int rank, const int* lengths) {
  return qor_dft_zx9_create_descriptor_external(d, precision, domain, rank, lengths);
}

TEST(DftContracts, CreateNamesTheFirstArgumentThatIsWrong) {
  const int good[8] = {2, 2, 2, 2, 2, 2, 2, 2}, bad[2] = {2, 0};
  qor_dft_descriptor* const before = reinterpret_cast<qor_dft_descriptor*>(0x40);
  qor_dft_descriptor* d = before;
  EXPECT_EQ(create(nullptr, 0, 0, 0, good), QOR_DFT_NULL_POINTER);
  EXPECT_EQ(create(&d, 0, 0, 0, nullptr), QOR_DFT_NULL_POINTER);
  EXPECT_EQ(create(&d, 35, 0, 0, good), QOR_DFT_BAD_PRECISION);
  EXPECT_EQ(create(&d, 36, 31, 0, good), QOR_DFT_BAD_DOMAIN);
  EXPECT_EQ(create(&d, 36, 32, 0, good), QOR_DFT_BAD_RANK);
  EXPECT_EQ(create(&d, 37, 33, 8, good), QOR_DFT_BAD_RANK);
  EXPECT_EQ(create(&d, 37, 33, 2, bad), QOR_DFT_BAD_LENGTH);
  EXPECT_EQ(d, before);
}

TEST(DftContracts, ParametersAreKeptAndBadValuesRefused) {
  Descriptor d(QOR_DFT_SINGLE, QOR_DFT_REAL, {6, 10});
  EXPECT_EQ(d.get(QOR_DFT_PRECISION), QOR_DFT_SINGLE);
  EXPECT_EQ(d.get(QOR_DFT_DOMAIN), QOR_DFT_REAL);
  EXPECT_EQ(d.get(QOR_DFT_RANK), 2);
  EXPECT_EQ((d.get<std::array<int, 2>>(QOR_DFT_LENGTHS)), (std::array{6, 10}));
  EXPECT_NE(std::string(d.get<const char*>(QOR_DFT_VERSION)), "");
  // Defaults, and the strides that follow from the placement.
  EXPECT_EQ(d.get(QOR_DFT_PLACEMENT), QOR_DFT_IN_PLACE);
  EXPECT_EQ((d.get<std::array<int, 3>>(QOR_DFT_SIGNAL_STRIDES)), (std::array{0, 12, 1}));
  EXPECT_EQ((d.get<std::array<int, 3>>(QOR_DFT_SPECTRUM_STRIDES)), (std::array{0, 6, 1}));
  EXPECT_EQ(d.set(QOR_DFT_PLACEMENT, QOR_DFT_OUT_OF_PLACE), 0);
  EXPECT_EQ((d.get<std::array<int, 3>>(QOR_DFT_SIGNAL_STRIDES)), (std::array{0, 10, 1}));
  EXPECT_EQ(d.get<double>(QOR_DFT_FORWARD_SCALE), 1);
  EXPECT_EQ(d.get(QOR_DFT_CE_STORAGE), QOR_DFT_CE_COMPLEX);
  EXPECT_EQ(d.get(QOR_DFT_PACKED_FORMAT), QOR_DFT_HALF_SPECTRUM);
  EXPECT_EQ(d.set(QOR_DFT_BACKWARD_SCALE, 0.25), 0);
  EXPECT_EQ(d.get<double>(QOR_DFT_BACKWARD_SCALE), 0.25);
  const struct {
    int parameter, good, bad;
  } rows[] = {{QOR_DFT_TRANSFORMS, 3, 0},       {QOR_DFT_THREAD_LIMIT, 0, -1},   {QOR_DFT_CE_STORAGE, 40, 41},
              {QOR_DFT_PLACEMENT, 45, 46},      {QOR_DFT_PACKED_FORMAT, 60, 61}, {QOR_DFT_SIGNAL_DISTANCE, -7, 0},
              {QOR_DFT_SPECTRUM_DISTANCE, 9, 0}};
  for (const auto& row : rows) {
    EXPECT_EQ(d.set(row.parameter, row.good), 0) << row.parameter;
    if (row.bad != 0 || row.parameter == QOR_DFT_TRANSFORMS) {
      EXPECT_EQ(d.set(row.parameter, row.bad), QOR_DFT_BAD_VALUE) << row.parameter;
    }
    EXPECT_EQ(d.get(row.parameter), row.good) << row.parameter;
  }
  for (const int parameter : {1, 2, 3, 4, 22, 23}) EXPECT_EQ(d.set(parameter, 2), QOR_DFT_READ_ONLY) << parameter;
  for (const int parameter : {0, 15, 20, 24, -1}) {
    int value = 0;
    EXPECT_EQ(d.set(parameter, 2), QOR_DFT_UNKNOWN_PARAMETER) << parameter;
    EXPECT_EQ(qor_dft_zx9_get_value_external(d.get(), parameter, &value), QOR_DFT_UNKNOWN_PARAMETER) << parameter;
  }
}

struct Setting {
  int parameter;
  std::vector<int> value;
};
struct Row {
  int status, domain;
  std::vector<int> lengths;
  std::vector<Setting> settings;
};

TEST(DftContracts, SettingsThatDoNotGoTogetherAreRefusedByCommit) {
  constexpr int complex = QOR_DFT_COMPLEX, real = QOR_DFT_REAL;
  const Setting apart{QOR_DFT_PLACEMENT, {QOR_DFT_OUT_OF_PLACE}}, reals{QOR_DFT_CE_STORAGE, {QOR_DFT_CE_REAL}},
      perm{QOR_DFT_PACKED_FORMAT, {QOR_DFT_PERM}}, two{QOR_DFT_TRANSFORMS, {2}};
  const auto signal = [](std::vector<int> s) { return Setting{QOR_DFT_SIGNAL_STRIDES, s}; };
  const auto spectrum = [](std::vector<int> s) { return Setting{QOR_DFT_SPECTRUM_STRIDES, s}; };
  const auto distances = [](int x) { return Setting{QOR_DFT_SIGNAL_DISTANCE, {x}}; };
  const auto distance2 = [](int x) { return Setting{QOR_DFT_SPECTRUM_DISTANCE, {x}}; };
  const Row rows[] = {
      {QOR_DFT_FORMAT_MISMATCH, real, {8}, {reals}},
      {QOR_DFT_FORMAT_MISMATCH, real, {8}, {perm}},
      {0, complex, {8}, {perm}},  // says nothing about complex signals
      {0, real, {4, 8}, {reals, perm}},
      {QOR_DFT_FORMAT_RANK, real, {2, 4, 8}, {reals, perm}},
      {QOR_DFT_SIGNAL_LAYOUT, complex, {4, 8}, {signal({0, 0, 1})}},
      {QOR_DFT_SIGNAL_LAYOUT, complex, {4, 8}, {signal({0, 7, 1})}},
      {QOR_DFT_SIGNAL_LAYOUT, complex, {4, 8}, {apart, signal({0, -7, 1})}},
      {0, complex, {4, 8}, {apart, signal({3, -1, 4})}},
      {0, complex, {1, 8}, {apart, signal({0, 2147483647, 1})}},  // of no consequence
      {0, real, {8, 1}, {apart, signal({0, 1, -2147483647 - 1}), spectrum({0, 1, 1 << 30})}},
      {QOR_DFT_SPECTRUM_LAYOUT, complex, {4, 8}, {apart, spectrum({0, 8, 8})}},
      {QOR_DFT_SPECTRUM_LAYOUT, real, {4, 8}, {apart, spectrum({0, 4, 1})}},
      {0, real, {4, 8}, {apart, spectrum({0, 5, 1})}},
      {QOR_DFT_NO_DISTANCE, complex, {8}, {two}},
      {QOR_DFT_NO_DISTANCE, complex, {8}, {two, apart, distances(8)}},
      {0, complex, {8}, {two, distances(8)}},
      {QOR_DFT_SIGNAL_LAYOUT, complex, {8}, {two, distances(7)}},
      {QOR_DFT_IN_PLACE_LAYOUT, complex, {8}, {two, distances(8), distance2(9)}},
      {QOR_DFT_IN_PLACE_LAYOUT, complex, {4, 8}, {spectrum({0, 9, 1})}},
      {0, complex, {4, 8}, {signal({0, 9, 1}), spectrum({0, 9, 1})}},
      {QOR_DFT_IN_PLACE_REAL_LAYOUT, real, {4, 8}, {signal({0, 8, 1})}},
      {QOR_DFT_IN_PLACE_REAL_LAYOUT, real, {4, 8}, {signal({1, 10, 1})}},
      {QOR_DFT_IN_PLACE_REAL_LAYOUT, real, {8}, {signal({0, 2})}},
      {QOR_DFT_IN_PLACE_REAL_LAYOUT, real, {8}, {two, distances(11), distance2(5)}},
      {0, real, {4, 8}, {signal({2, 12, 1}), spectrum({1, 6, 1})}},
      {QOR_DFT_IN_PLACE_REAL_LAYOUT, real, {8}, {reals, perm, signal({0, 2})}},
      {QOR_DFT_TOO_LARGE, complex, {70000, 70000}, {}},
      {QOR_DFT_TOO_LARGE, real, {3, 70000, 70000}, {}},
      {QOR_DFT_TOO_LARGE, complex, {2147483647, 2147483647, 2147483647}, {}},
      {QOR_DFT_TOO_LARGE, real, {2147483647}, {}},
      {QOR_DFT_TOO_LARGE, complex, {8}, {signal({1 << 30, 1})}},
      {QOR_DFT_TOO_LARGE, complex, {8}, {apart, signal({0, 1 << 27})}},
  };
  for (const Row& row : rows) {
    const testing::ScopedTrace trace(__FILE__, __LINE__, "row " + std::to_string(&row - rows));
    Descriptor d(QOR_DFT_DOUBLE, row.domain, row.lengths);
    for (const Setting& s : row.settings) EXPECT_EQ(d.set(s.parameter, s.value), 0);
    EXPECT_EQ(d.commit(), row.status);
    EXPECT_EQ(d.get(QOR_DFT_COMMIT_STATUS), row.status == 0 ? QOR_DFT_COMMITTED : QOR_DFT_UNCOMMITTED);
  }
}

TEST(DftContracts, EveryStatusHasOneClassAndAMessageOfItsOwn) {
  std::set<std::string> messages;
  int known = 0;
  for (int status = -3100; status <= 10; ++status) {
    int classes = 0;
    for (int c = -1; c <= 5; ++c) classes += qor_dft_zx9_error_class_external(status, c);
    const bool is_known = classes == 1;
    EXPECT_LE(classes, 1) << status;
    known += is_known;
    if (!is_known) continue;
    EXPECT_TRUE(messages.insert(qor_dft_zx9_error_message_external(status)).second) << status;
  }
  EXPECT_EQ(known, 21);
  EXPECT_FALSE(messages.contains(qor_dft_zx9_error_message_external(1)));
  EXPECT_EQ(qor_dft_zx9_error_class_external(QOR_DFT_BAD_RANK, QOR_DFT_CLASS_ARGUMENT), 1);
  EXPECT_EQ(qor_dft_zx9_error_class_external(QOR_DFT_TOO_LARGE, QOR_DFT_CLASS_SETTINGS), 1);
}

TEST(DftContracts, ComputingNeedsACommitAndArraysThatFitThePlacement) {
  Descriptor d(QOR_DFT_DOUBLE, QOR_DFT_COMPLEX, {4});
  double x[8] = {1, 2, 3, 4, 5, 6, 7, 8}, y[8] = {};
  EXPECT_EQ(d.forward(x, nullptr), QOR_DFT_NOT_COMMITTED);
  EXPECT_EQ(d.commit(), 0);
  EXPECT_EQ(d.commit(), 0);
  EXPECT_EQ(d.forward(nullptr, nullptr), QOR_DFT_NULL_POINTER);
  EXPECT_EQ(d.forward(x, y), QOR_DFT_PLACEMENT_MISMATCH);
  EXPECT_EQ(x[0], 1);
  EXPECT_EQ(d.forward(x, x), 0);
  EXPECT_EQ(x[0], 16);
  EXPECT_EQ(d.set(QOR_DFT_PLACEMENT, QOR_DFT_OUT_OF_PLACE), 0);
  EXPECT_EQ(d.backward(x, y), QOR_DFT_NOT_COMMITTED);
  EXPECT_EQ(d.commit(), 0);
  EXPECT_EQ(d.backward(x, nullptr), QOR_DFT_PLACEMENT_MISMATCH);
  EXPECT_EQ(d.backward(x, x), QOR_DFT_PLACEMENT_MISMATCH);
  EXPECT_EQ(d.backward(x, y), 0);
  EXPECT_EQ(y[7], 32);
}

TEST(DftContracts, HandlesAreCheckedAndCopiesLiveOnTheirOwn) {
  qor_dft_descriptor *copy = nullptr, *none = nullptr;
  EXPECT_EQ(qor_dft_zx9_free_descriptor_external(nullptr), QOR_DFT_NULL_POINTER);
  EXPECT_EQ(qor_dft_zx9_free_descriptor_external(&none), 0);
  EXPECT_EQ(qor_dft_zx9_commit_descriptor_external(nullptr), QOR_DFT_NULL_POINTER);
  EXPECT_EQ(qor_dft_zx9_set_value_external(nullptr, QOR_DFT_RANK, nullptr), QOR_DFT_NULL_POINTER);
  int words[8] = {};
  auto* const other = reinterpret_cast<qor_dft_descriptor*>(words);
  EXPECT_EQ(qor_dft_zx9_commit_descriptor_external(other), QOR_DFT_NOT_A_DESCRIPTOR);
  EXPECT_EQ(qor_dft_zx9_compute_forward_external(other, words, words), QOR_DFT_NOT_A_DESCRIPTOR);
  {
    Descriptor d(QOR_DFT_SINGLE, QOR_DFT_COMPLEX, {5, 4});
    EXPECT_EQ(d.set(QOR_DFT_FORWARD_SCALE, 2.0), 0);
    EXPECT_EQ(d.commit(), 0);
    EXPECT_EQ(qor_dft_zx9_copy_descriptor_external(d.get(), &copy), 0);
    EXPECT_EQ(d.set(QOR_DFT_FORWARD_SCALE, 3.0), 0);
  }
  const Descriptor d(copy);
  EXPECT_EQ(d.get(QOR_DFT_COMMIT_STATUS), QOR_DFT_COMMITTED);
  std::vector<float> x(40, 1);
  EXPECT_EQ(d.forward(x.data(), nullptr), 0);
  EXPECT_EQ(x[0], 40);
  EXPECT_EQ(x[2], 0);
}

#ifdef COUNTS_ALLOCATIONS
TEST(DftContracts, EveryFailedAllocationIsReportedAndNothingIsKept) {
  int failures = 0;
  for (int failing = 0;; ++failing) {
    const int blocks = live_blocks, lengths[3] = {34, 15, 6};
    std::vector<double> x(2 * 34 * 15 * 6 + 8, 1);
    const std::vector<double> ones = x;
    qor_serv_freebuffers();
    qor_dft_descriptor* d = nullptr;
    errno = 4711;
    until_failure = failing;
    int status = create(&d, QOR_DFT_DOUBLE, QOR_DFT_COMPLEX, 3, lengths);
    if (status == 0) status = qor_dft_zx9_commit_descriptor_external(d);
    if (status == 0) {
      status = qor_dft_zx9_compute_forward_external(d, x.data(), nullptr);
    }
    until_failure = -1;
    const bool done = status == 0;
    EXPECT_TRUE(done || x == ones) << "written without memory";
    EXPECT_EQ(errno, 4711);
    EXPECT_TRUE(done || status == QOR_DFT_NO_MEMORY) << status << ' ' << failing;
    qor_dft_zx9_free_descriptor_external(&d);
    qor_serv_freebuffers();
    EXPECT_LE(live_blocks, blocks + 2) << failing;  // x and ones
    if (done) break;
    ++failures;
  }
  EXPECT_GT(failures, 10);
}
#endif

}  // namespace
