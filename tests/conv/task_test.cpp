// Tasks: what they compute in every mode and class against plain sums, and what becomes of their state.
#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <vector>

#include "conv/problems.h"
#include "qor/conv.h"
#include "support/allocations.h"

namespace {

using namespace qor::test;

constexpr int conv = QOR_CONV_KIND_CONVOLUTION, corr = QOR_CONV_KIND_CORRELATION;
constexpr int fft = QOR_CONV_MODE_FFT, direct = QOR_CONV_MODE_DIRECT;
constexpr int single = QOR_CONV_PRECISION_SINGLE, wide = QOR_CONV_PRECISION_DOUBLE;

// A task that deletes itself.
class Task {
 public:
  Task() = default;
  Task(int kind, int mode, int precision, const Ints& nx, const Ints& ny, const Ints& nz) {
    EXPECT_EQ(__wxrNewTask(&task_, kind, 21, mode, 41, precision, int(nx.size()), nx.data(), ny.data(), nz.data()), 0);
  }
  ~Task() {
    if (task_ != nullptr) {
      EXPECT_EQ(__wxrDeleteTask(&task_), 0);
    }
  }
  Task(const Task&) = delete;
  Task& operator=(const Task&) = delete;
  operator qor_conv_task*() const { return task_; }
  qor_conv_task* operator->() const { return task_; }
  qor_conv_task** handle() { return &task_; }
  int edit(int parameter, const Ints& value) const { return __wxrEditTask(task_, parameter, value.data()); }
  int status() const { return __wxrccGetStatus(task_); }
  int reset() const { return __wxrccSetStatus(task_, 0); }

 private:
  qor_conv_task* task_ = nullptr;
};

// ---- results --------------------------------------------------------------------------------------------------------

double norm(const auto& v) {
  double s = 0;
  for (const auto x : v) s += double(x) * double(x);
  return std::sqrt(s);
}

// Sums by transforms have an error in proportion to the operands' norms.
template <class D>
void expect_sums(const Case& c, const std::vector<Sum>& sums, const std::vector<D>& z, double unit, double spread) {
  ASSERT_EQ(sums.size(), z.size());
  for (std::size_t i = 0; i < z.size(); ++i) {
    Wide bound = unit * ((sums[i].products + 1) * sums[i].size + spread);
    if (sizeof(D) == 4) bound += 0x1p-24 * std::fabs(sums[i].value);
    ASSERT_LE(std::fabs(z[i] - sums[i].value), bound) << "output " << i << " of " << text(c);
  }
}

template <class D>
void expect_agreement(Draw& draw, const Case& c, int round) {
  const int precision = sizeof(D) == 4 ? single : wide;
  const std::vector<D> x = draw.values<D>(c.nx, c.sx), y = draw.values<D>(c.ny, c.sy);
  const std::vector<Sum> sums = plain_sums(c, x, y);
  const double spread = 3 * std::log2(double(x.size() + y.size()) + 2) * norm(x) * norm(y);
  Placed<D> px(x, c.nx, c.sx, round % 2 == 0), py(y, c.ny, c.sy, round % 3 == 0);
  // Strides that are those of a dense array, and starts and decimations that are the usual ones, needn't be told.
  const auto stride = [](const Ints& s, const Ints& n) { return s == dense(n) ? nullptr : s.data(); };
  const bool fixed = round % 2 == 0;
  Task task;
  const int rank = int(c.nx.size()), kind = c.correlates ? corr : conv;
  if (fixed) {
    ASSERT_EQ(__wxrNewTaskX(task.handle(), kind, 0, direct, 0, precision, rank, c.nx.data(), c.ny.data(), c.nz.data(),
                            px.data(), stride(c.sx, c.nx)),
              0);
  } else {
    ASSERT_EQ(__wxrNewTask(task.handle(), kind, 0, direct, 0, precision, rank, c.nx.data(), c.ny.data(), c.nz.data()),
              0);
  }
  Ints usual;
  for (const int n : c.nx) usual.push_back(c.correlates ? 1 - n : 0);
  if (c.start != usual || round % 4 == 0) {
    ASSERT_EQ(task.edit(QOR_CONV_EDIT_START, c.start), 0);
  }
  if (c.step != Ints(c.nx.size(), 1) || round % 5 == 0) {
    ASSERT_EQ(task.edit(QOR_CONV_EDIT_DECIMATION, c.step), 0);
  }
  for (const int internal : {precision, wide}) {  // wide twice for double data
    for (const int mode : {direct, fft, 2}) {
      ASSERT_EQ(task.edit(QOR_CONV_EDIT_INTERNAL_PRECISION, {internal}), 0);
      ASSERT_EQ(task.edit(QOR_CONV_EDIT_MODE, {mode}), 0);
      std::vector<D> former;
      for (int execution = 0; execution < 2; ++execution) {
        Placed<D> pz({}, c.nz, c.sz, round % 2 != 0);
        const int s = fixed ? __wxrExecX(task, py.data(), stride(c.sy, c.ny), pz.data(), stride(c.sz, c.nz))
                            : __wxrExec(task, px.data(), stride(c.sx, c.nx), py.data(), stride(c.sy, c.ny), pz.data(),
                                        stride(c.sz, c.nz));
        ASSERT_EQ(s, 0) << text(c);
        const std::vector<D> z = pz.values();
        const bool in_single = internal == single && (mode == direct || rank == 1);
        expect_sums(c, sums, z, in_single ? 0x1p-24 : 0x1p-53, mode == direct ? 0 : spread);
        if (execution > 0) {
          EXPECT_EQ(z, former) << "a repetition gives other bits: " << text(c);
        }
        former = z;
      }
    }
  }
}

TEST(Tasks, ComputePlainSumsInEveryModeClassAndRank) {
  Draw draw(29);
  const int longest[] = {0, 70, 12, 6, 4, 3, 3, 2};
  for (int round = 0; round < 40 && !HasFatalFailure(); ++round) {
    for (int rank = 1; rank <= 7; ++rank) {
      expect_agreement<double>(draw, draw.problem(round % 4 < 2, rank, longest[rank]), round);
      expect_agreement<float>(draw, draw.problem(round % 4 < 2, rank, longest[rank]), round);
    }
  }
}

// Sizes beyond a block of the transforms, and of their set-up for one operand much longer than the other.
TEST(Tasks, ComputePlainSumsOfLongOperands) {
  struct Size {
    Ints nx, ny, step;
  };
  const Size sizes[] = {{{300}, {300}, {1}},
                        {{64}, {3000}, {1}},
                        {{2500}, {70}, {3}},
                        {{900}, {1100}, {4}},
                        {{40, 30}, {60, 50}, {1, 1}},
                        {{3, 70}, {100, 9}, {2, 1}},
                        {{1, 1}, {90, 70}, {1, 1}},
                        {{9, 9, 9}, {20, 11, 10}, {1, 3, 2}},
                        {{2, 9, 1}, {40, 3, 20}, {1, 1, 1}},
                        {{3, 2, 3, 2}, {4, 5, 30, 3}, {2, 1, 1, 1}}};
  Draw draw(31);
  int round = 0;
  for (const Size& size : sizes) {
    Case c{round % 3 == 0, size.nx, size.ny, {}, {}, size.step, {}, {}, {}};
    for (std::size_t k = 0; k < c.nx.size(); ++k) {
      c.start.push_back(c.correlates ? 1 - c.nx[k] : 0);
      c.nz.push_back((c.nx[k] + c.ny[k] - 2) / c.step[k] + 1);
    }
    c.sx = draw.stride(c.nx, false), c.sy = draw.stride(c.ny, false), c.sz = draw.stride(c.nz, false);
    expect_agreement<double>(draw, c, round);
    expect_agreement<float>(draw, c, round++);
  }
}

TEST(Tasks, BeginWhereTheirKindBegins) {
  const double x[] = {1, 2}, y[] = {1, 10, 100};
  double z[4] = {};
  const Task convolution(conv, direct, wide, {2}, {3}, {4}), correlation(corr, direct, wide, {2}, {3}, {4}),
      other(3, direct, wide, {2}, {3}, {3}), neither(0, fft, 0, {2}, {3}, {3});
  EXPECT_EQ(__wxrExec(convolution, x, nullptr, y, nullptr, z, nullptr), 0);
  EXPECT_EQ(std::vector<double>(z, z + 4), (std::vector<double>{1, 12, 120, 200}));
  EXPECT_EQ(__wxrExec(correlation, x, nullptr, y, nullptr, z, nullptr), 0);
  EXPECT_EQ(std::vector<double>(z, z + 4), (std::vector<double>{2, 21, 210, 100}));
  for (const Task* task : {&other, &neither}) {  // correlations from index 0
    EXPECT_EQ(__wxrExec(*task, x, nullptr, y, nullptr, z, nullptr), 0);
    EXPECT_NEAR(z[0], 21, 1e-12);
    EXPECT_NEAR(z[2], 100, 1e-12);
  }
}

TEST(Tasks, ReadTheFixedOperandWhenExecuted) {
  double x[] = {1, 0, 2}, other[] = {5, 5};
  const double y[] = {1, 1};
  double z[3];
  const int two = 2, three = 3, stride = 2;
  Task task, copy;
  ASSERT_EQ(__wxrNewTaskX(task.handle(), conv, 0, direct, 0, wide, 1, &two, &two, &three, x, &stride), 0);
  EXPECT_EQ(__wxrExecX(task, y, nullptr, z, nullptr), 0);
  EXPECT_EQ(std::vector<double>(z, z + 3), (std::vector<double>{1, 3, 2}));
  x[0] = 3;
  ASSERT_EQ(__wxrCopyTask(copy.handle(), task), 0);
  EXPECT_EQ(__wxrExecX(copy, y, nullptr, z, nullptr), 0);
  EXPECT_EQ(std::vector<double>(z, z + 3), (std::vector<double>{3, 5, 2}));
  EXPECT_EQ(__wxrExec(task, other, nullptr, y, nullptr, z, nullptr), 0);
  EXPECT_EQ(std::vector<double>(z, z + 3), (std::vector<double>{5, 10, 5}));
  // None was given.
  const Task plain(conv, direct, wide, {2}, {2}, {3});
  EXPECT_EQ(__wxrExecX(plain, y, nullptr, z, nullptr), -2331);
}

// ---- state ----------------------------------------------------------------------------------------------------------

class EachMode : public ::testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Tasks, EachMode, ::testing::Values(fft, direct));

TEST(Tasks, AreRefusedWithoutARecordOrAPlaceForIt) {
  qor_conv_task* none = nullptr;
  const int n = 1;
  double v = 0;
  EXPECT_EQ(__wxrNewTask(nullptr, conv, 0, direct, 0, wide, 1, &n, &n, &n), -5);
  EXPECT_EQ(__wxrNewTaskX(nullptr, conv, 0, direct, 0, wide, 1, &n, &n, &n, &v, nullptr), -5);
  EXPECT_EQ(__wxrEditTask(nullptr, 99, nullptr), -5);
  EXPECT_EQ(__wxrCommitTask(nullptr), -5);
  EXPECT_EQ(__wxrExec(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), -5);
  EXPECT_EQ(__wxrExecX(nullptr, nullptr, nullptr, nullptr, nullptr), -5);
  EXPECT_EQ(__wxrCopyTask(&none, nullptr), -5);
  EXPECT_EQ(__wxrDeleteTask(nullptr), -5);
  EXPECT_EQ(__wxrDeleteTask(&none), 0);
  EXPECT_EQ(__wxrccSetStatus(nullptr, 3), -5);
  EXPECT_EQ(__wxrccGetStatus(nullptr), -5);
  const Task failed(conv, direct, wide, {1}, {1}, {1});
  failed.edit(1, {0});
  EXPECT_EQ(__wxrCopyTask(nullptr, failed), -5) << "before the status";
}

TEST(Tasks, TakeTheirDescriptionAsItIs) {
  const Task task(7, -3, 1, {2, 3}, {4, 5}, {6, 7});
  EXPECT_EQ(task.status(), 0);
  EXPECT_EQ(task->kind, 7);
  EXPECT_EQ(task->word2, 21);
  EXPECT_EQ(task->mode, -3);
  EXPECT_EQ(task->word4, 41);
  EXPECT_EQ(task->data_precision, 1);
  EXPECT_EQ(task->internal_precision, 1);
  EXPECT_EQ(task->rank, 2);
  EXPECT_EQ(task->xshape[1] * task->yshape[1] * task->zshape[1], 3 * 5 * 7);
  EXPECT_EQ(task->xshape, task->xshape_entries);
  EXPECT_EQ(task->start, nullptr);
  EXPECT_EQ(task->decimation, nullptr);
  EXPECT_EQ(task->xstride, nullptr);
  EXPECT_EQ(task->x, nullptr);
  EXPECT_EQ(task->committed, 0);
}

TEST(Tasks, AreEditedParameterByParameter) {
  for (int parameter = -2; parameter <= 22; ++parameter) {
    const Task task(conv, direct, wide, {2, 2}, {2, 2}, {3, 3});
    const int code = parameter < 1 || parameter > 19                        ? -2211
                     : (parameter >= 3 && parameter <= 6) || parameter == 9 ? 0
                                                                            : -2212;
    ASSERT_EQ(__wxrCommitTask(task), 0);
    EXPECT_EQ(task->committed, 1);
    EXPECT_EQ(task.edit(parameter, {31, 32}), code) << parameter;
    EXPECT_EQ(task->committed, 0) << parameter;
    EXPECT_EQ(task.status(), code) << parameter;
    EXPECT_EQ(task->mode, parameter == 3 ? 31 : direct);
    EXPECT_EQ(task->parameter4, parameter == 4 ? 31 : 0);
    EXPECT_EQ(task->start, parameter == 5 ? task->start_entries : nullptr);
    EXPECT_EQ(task->decimation, parameter == 6 ? task->decimation_entries : nullptr);
    EXPECT_EQ(task->start_entries[1], parameter == 5 ? 32 : 0);
    EXPECT_EQ(task->decimation_entries[1], parameter == 6 ? 32 : 0);
    EXPECT_EQ(task->internal_precision, parameter == 9 ? 31 : wide);
  }
}

TEST_P(EachMode, AFailureLastsUntilItIsReset) {
  const double x[] = {1, 2}, y[] = {3, 4};
  double z[3] = {7, 7, 7};
  const auto execute = [&](const Task& task) { return __wxrExec(task, x, nullptr, y, nullptr, z, nullptr); };
  const auto fail_by_edit = [](int parameter, int code) {
    return [=](const Task& task) { EXPECT_EQ(task.edit(parameter, {1}), code); };
  };
  const auto fail_by_null = [](const Task& task) { EXPECT_EQ(__wxrEditTask(task, 99, nullptr), -5); };
  const auto fail_by_stride = [&](const Task& task) {
    const int zero = 0;
    EXPECT_EQ(__wxrExec(task, x, nullptr, y, nullptr, z, &zero), -2323);
  };
  const auto fail_by_order = [](const Task& task) { EXPECT_EQ(__wxrccSetStatus(task, 17), 0); };
  struct {
    std::function<void(const Task&)> fail;
    int code;
  } const rows[] = {{fail_by_edit(1, -2212), -2212},
                    {fail_by_edit(0, -2211), -2211},
                    {fail_by_null, -5},
                    {fail_by_stride, -2323},
                    {fail_by_order, 17}};
  for (const auto& row : rows) {
    const Task task(conv, GetParam(), wide, {2}, {2}, {3});
    row.fail(task);
    const int committed = task->committed;
    EXPECT_EQ(task.status(), row.code);
    EXPECT_EQ(task.edit(3, {5}), row.code);
    EXPECT_EQ(task.edit(1, {5}), row.code) << "an edit that would fail otherwise";
    EXPECT_EQ(__wxrEditTask(task, 3, nullptr), row.code) << "the status before the value";
    EXPECT_EQ(task->mode, GetParam());
    EXPECT_EQ(__wxrCommitTask(task), row.code);
    EXPECT_EQ(execute(task), row.code);
    EXPECT_EQ(task->committed, committed);
    EXPECT_EQ(z[0], 7);
    qor_conv_task* copy = nullptr;
    EXPECT_EQ(__wxrCopyTask(&copy, task), row.code);
    EXPECT_EQ(copy, nullptr);
    EXPECT_EQ(task.reset(), row.code);
    EXPECT_EQ(execute(task), 0);
    EXPECT_EQ(task->committed, 1);
    EXPECT_NEAR(z[1], 10, 1e-12);
    z[0] = 7;
  }
}

TEST_P(EachMode, TheFirstOfTwoFaultsDecides) {
  double data[40] = {};
  const int zero = 0, bad_start = 99;
  const Task pairing(conv, GetParam(), wide, {0}, {2}, {3});  // an xshape of 0 as well
  ASSERT_EQ(__wxrEditTask(pairing, QOR_CONV_EDIT_INTERNAL_PRECISION, &single), 0);
  EXPECT_EQ(__wxrExec(pairing, nullptr, nullptr, nullptr, nullptr, nullptr, &zero), -2000);
  const Task shapes(conv, GetParam(), wide, {0}, {2}, {0});
  EXPECT_EQ(__wxrExec(shapes, data, nullptr, nullptr, nullptr, nullptr, nullptr), -2311);
  const Task stride(corr, GetParam(), single, {2}, {2}, {3});
  ASSERT_EQ(__wxrEditTask(stride, QOR_CONV_EDIT_START, &bad_start), 0);
  EXPECT_EQ(__wxrExec(stride, data, nullptr, data, nullptr, data, &zero), -2323);
  stride.reset();
  EXPECT_EQ(__wxrExec(stride, data, nullptr, data, nullptr, data, nullptr), -2302);
  stride.reset();
  ASSERT_EQ(stride.edit(QOR_CONV_EDIT_START, {0}), 0);
  ASSERT_EQ(stride.edit(QOR_CONV_EDIT_DECIMATION, {0}), 0);
  EXPECT_EQ(__wxrExec(stride, data, nullptr, nullptr, nullptr, data, nullptr), -2332);
  stride.reset();
  EXPECT_EQ(__wxrExec(stride, data, nullptr, data, nullptr, data, nullptr), -2303);
  // Higher ranks: the pointers first, then dimension by dimension; a pair of precisions is no fault.
  const Task two(conv, GetParam(), wide, {2, 0}, {2, 2}, {4, 1});
  ASSERT_EQ(two.edit(QOR_CONV_EDIT_INTERNAL_PRECISION, {1}), 0);
  EXPECT_EQ(__wxrExec(two, data, nullptr, nullptr, nullptr, nullptr, nullptr), -2332);
  two.reset();
  EXPECT_EQ(__wxrExec(two, data, nullptr, data, nullptr, data, nullptr), -2303) << "dimension 0";
  // Shapes that were never given are zeros.
  Task shapeless;
  ASSERT_EQ(__wxrNewTask(shapeless.handle(), corr, 0, GetParam(), 0, wide, 2, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(__wxrExec(shapeless, data, nullptr, data, nullptr, data, nullptr), -2311);
  shapeless.reset();
  EXPECT_EQ(__wxrExec(shapeless, nullptr, nullptr, data, nullptr, data, nullptr), -2331);
}

TEST_P(EachMode, DoubleDataAndSingleSumsArePairedInHigherRanksOnly) {
  const double x[] = {1, 1e9}, y[] = {1, 1e9};
  double z[3] = {};
  const Task one(conv, GetParam(), wide, {2}, {2}, {3}), two(conv, GetParam(), wide, {2, 1}, {2, 1}, {3, 1});
  for (const Task* task : {&one, &two}) ASSERT_EQ(task->edit(QOR_CONV_EDIT_INTERNAL_PRECISION, {1}), 0);
  EXPECT_EQ(__wxrExec(one, x, nullptr, y, nullptr, z, nullptr), -2000);
  EXPECT_EQ(one.status(), -2000);
  EXPECT_EQ(__wxrExec(two, x, nullptr, y, nullptr, z, nullptr), 0);
  EXPECT_NEAR(z[1], 2e9, 1e3);
  EXPECT_NEAR(z[2], 1e18, 1e3) << "in double";
}

TEST_P(EachMode, RanksThatNoDriverTakesReachTheirCodeAndNothingElse) {
  for (const int rank : {-2147483647 - 1, -1, 0, 8, 100, 2147483647}) {
    // More entries than there is room for can't be read here.
    Guarded<int> shape(7);
    for (int i = 0; i < 7; ++i) shape[i] = 2;
    double data[4] = {};
    Task task, copy;
    ASSERT_EQ(__wxrNewTaskX(task.handle(), corr, 0, GetParam(), 0, wide, rank, shape.data(), shape.data(), shape.data(),
                            data, shape.data()),
              0);
    EXPECT_EQ(task->rank, rank);
    EXPECT_EQ(task->x, data);
    EXPECT_EQ(task->committed, 0);
    ASSERT_EQ(__wxrEditTask(task, QOR_CONV_EDIT_START, shape.data()), 0);
    ASSERT_EQ(__wxrEditTask(task, QOR_CONV_EDIT_DECIMATION, shape.data()), 0);
    ASSERT_EQ(__wxrCopyTask(copy.handle(), task), 0);
    for (const Task* t : {&task, &copy}) {
      EXPECT_EQ((*t)->xshape_entries[0], rank < 1 ? 0 : 2);
      EXPECT_EQ(__wxrExecX(*t, nullptr, nullptr, nullptr, nullptr), -2301) << "before null pointers";
      EXPECT_EQ(t->status(), -2301);
    }
  }
}

TEST_P(EachMode, SizesBeyondMemoryAreRefused) {
  double data[4] = {1, 1, 1, 1};
  const int none[] = {0, 0, 0};
  const Ints one{1, 1, 1};
  // The dense stride of the last dimension of z is beyond an int here.
  for (const Ints& many : {Ints{65536, 65536, 1}, Ints{1 << 20, 1 << 20, 1 << 20}, Ints{46341, 46341, 1}}) {
    const Task task(conv, GetParam(), wide, many, one, many);
    EXPECT_EQ(__wxrExec(task, data, none, data, none, data, nullptr), -2001);
    EXPECT_EQ(task.status(), -2001);
  }
  const Task last(corr, GetParam(), wide, {1}, {2}, {2147483647});
  EXPECT_EQ(__wxrExec(last, data, nullptr, data, nullptr, data, nullptr), -2303);
}

// ---- copies, private data -------------------------------------------------------------------------------------------

TEST(Tasks, AreCopiedWithAllTheyAre) {
  const Task task(corr, fft, single, {2, 3}, {4, 5}, {1, 2});
  task->above[0] = task->above[1] = task->also_above = 77;
  ASSERT_EQ(task.edit(QOR_CONV_EDIT_PARAMETER4, {9}), 0);
  ASSERT_EQ(task.edit(QOR_CONV_EDIT_INTERNAL_PRECISION, {wide}), 0);
  ASSERT_EQ(task.edit(QOR_CONV_EDIT_START, {1, -1}), 0);
  Task copy, early;
  ASSERT_EQ(__wxrCopyTask(early.handle(), task), 0);
  ASSERT_EQ(__wxrCommitTask(task), 0);
  ASSERT_EQ(__wxrCopyTask(copy.handle(), task), 0);
  EXPECT_EQ(early->committed, 0);
  EXPECT_EQ(copy->committed, 1);
  EXPECT_EQ(copy->above[0], 0) << "of the layers above";
  EXPECT_EQ(task->above[0] + task->above[1] + task->also_above, 3 * 77);
  ASSERT_EQ(task.edit(QOR_CONV_EDIT_START, {0, 0}), 0);
  EXPECT_EQ(copy->start, copy->start_entries);
  EXPECT_EQ(copy->start[1], -1);
  EXPECT_EQ(copy->decimation, nullptr);
  EXPECT_EQ(copy->parameter4, 9);
  EXPECT_EQ(copy->word2, 21);
  EXPECT_EQ(copy->word4, 41);
  EXPECT_EQ(copy->kind, corr);
  EXPECT_EQ(copy->data_precision, single);
  EXPECT_EQ(copy->internal_precision, wide);
  EXPECT_EQ(copy->zshape[1], 2);
  EXPECT_EQ(copy->xshape, copy->xshape_entries);
}

struct Seen {
  int releases = 0, copies = 0, answer = 0;
  qor_conv_task* task = nullptr;
  void* data = nullptr;
} seen;
int on_release(qor_conv_task* task, void* data) {
  ++seen.releases;
  seen.task = task;
  seen.data = data;
  return seen.answer;
}
int on_copy(qor_conv_task* task, void** slot, void* data) {
  ++seen.copies;
  seen.data = data;
  EXPECT_EQ(slot, &task->private_data);
  EXPECT_EQ(*slot, data);
  EXPECT_EQ(task->release_private_data, on_release);
  if (seen.answer != 0) return seen.answer;
  *slot = std::malloc(4);
  return 0;
}

// Leaks and double frees are the sanitizers' to find, here and in the next tests.
TEST(TasksPrivateData, IsTheCallersWhenHeAttachesIt) {
  const std::vector<float> x(200, 1), y(1000, 1);
  std::vector<float> z(1199);
  Task task(conv, fft, single, {200}, {1000}, {1199}), copy;
  void* const data = std::malloc(4);
  task->private_data = data;
  task->release_private_data = on_release;
  task->copy_private_data = on_copy;
  seen = {};
  for (int i = 0; i < 2; ++i) EXPECT_EQ(__wxrExec(task, x.data(), nullptr, y.data(), nullptr, z.data(), nullptr), 0);
  EXPECT_NEAR(z[600], 200, 1e-2);
  EXPECT_EQ(task->private_data, data);
  EXPECT_EQ(task->release_private_data, on_release);
  ASSERT_EQ(__wxrCopyTask(copy.handle(), task), 0);
  EXPECT_EQ(seen.copies, 1);
  EXPECT_EQ(seen.data, data);
  EXPECT_NE(copy->private_data, data);
  EXPECT_EQ(seen.releases, 0);
  qor_conv_task* const record = task;
  EXPECT_EQ(__wxrDeleteTask(task.handle()), 0);
  EXPECT_EQ(seen.releases, 1);
  EXPECT_EQ(seen.task, record);
  EXPECT_EQ(seen.data, data);
  EXPECT_EQ(task.operator qor_conv_task*(), nullptr);
  EXPECT_EQ(__wxrDeleteTask(copy.handle()), 0);
  EXPECT_EQ(seen.releases, 2);
}

TEST(TasksPrivateData, ThatCannotBeCopiedOrReleasedIsReported) {
  struct {
    bool copies, releases;
    int answer, copy_code, delete_code;
  } const rows[] = {{true, true, 5, -2230, -2240}, {false, true, 0, -2230, 0}, {true, false, 0, 0, -2240}};
  for (const auto& row : rows) {
    Task task(conv, direct, wide, {1}, {1}, {1});
    task->private_data = std::malloc(4);
    task->release_private_data = on_release;
    task->copy_private_data = row.copies ? on_copy : nullptr;
    seen = {};
    seen.answer = row.answer;
    qor_conv_task* const nobody = reinterpret_cast<qor_conv_task*>(8);
    qor_conv_task* copy = nobody;
    EXPECT_EQ(__wxrCopyTask(&copy, task), row.copy_code);
    EXPECT_EQ(task.status(), 0);
    if (row.copy_code != 0) {
      EXPECT_EQ(copy, nobody);
    } else {
      EXPECT_EQ(__wxrDeleteTask(&copy), 0);
    }
    EXPECT_EQ(seen.copies, row.copies);
    if (!row.releases) task->release_private_data = nullptr;
    EXPECT_EQ(__wxrDeleteTask(task.handle()), row.delete_code);
    EXPECT_EQ(task.operator qor_conv_task*(), nullptr);
  }
}

// What an execution leaves is used again, replaced, left out of copies, and goes with the task.
TEST(TasksPrivateData, OfTheLibraryGoesWithTheTask) {
  const std::vector<float> x(300, 1), y(300, 1);
  std::vector<float> z(599);
  const auto execute = [&](qor_conv_task* t) {
    EXPECT_EQ(__wxrExec(t, x.data(), nullptr, y.data(), nullptr, z.data(), nullptr), 0);
    EXPECT_NEAR(z[299], 300, 1e-2);
  };
  Task task(conv, fft, single, {300}, {300}, {599});
  execute(task);
  void* const kept = task->private_data;
  ASSERT_NE(kept, nullptr);
  execute(task);
  EXPECT_EQ(task->private_data, kept);
  ASSERT_EQ(task.edit(QOR_CONV_EDIT_INTERNAL_PRECISION, {wide}), 0);
  execute(task);
  Task copy;
  ASSERT_EQ(__wxrCopyTask(copy.handle(), task), 0);
  EXPECT_EQ(copy->private_data, nullptr);
  EXPECT_EQ(__wxrDeleteTask(task.handle()), 0);
  execute(copy);
  EXPECT_NE(copy->private_data, nullptr);
}

#if defined(COUNTS_ALLOCATIONS)
TEST(Tasks, WithoutMemoryReturnTheirCodeAndKeepNothing) {
  const int n = 300, nz = 599;
  const std::vector<double> x(300, 1), y(300, 1);
  std::vector<double> z(599);
  const int blocks = live_blocks;
  errno = 4711;
  qor_conv_task* const nobody = reinterpret_cast<qor_conv_task*>(8);
  qor_conv_task *task = nobody, *copy = nobody;
  until_failure = 0;
  const int created = __wxrNewTask(&task, conv, 0, fft, 0, wide, 1, &n, &n, &nz);
  until_failure = -1;
  EXPECT_EQ(created, -4);
  EXPECT_EQ(task, nobody);
  for (const int mode : {fft, direct}) {
    for (int allocations = 0;; ++allocations) {
      ASSERT_LT(allocations, 50);
      ASSERT_EQ(__wxrNewTask(&task, conv, 0, mode, 0, wide, 1, &n, &n, &nz), 0);
      until_failure = 0;
      const int copied = __wxrCopyTask(&copy, task);
      until_failure = allocations;
      const int executed = __wxrExec(task, x.data(), nullptr, y.data(), nullptr, z.data(), nullptr);
      const bool failed = until_failure == 0;
      until_failure = -1;
      EXPECT_EQ(copied, -4);
      EXPECT_EQ(copy, nobody);
      EXPECT_TRUE(executed == 0 || executed == -2001 || (mode == fft && executed == -2800)) << executed;
      EXPECT_TRUE(failed || executed == 0);
      EXPECT_EQ(__wxrccSetStatus(task, 0), executed);
      EXPECT_EQ(__wxrExec(task, x.data(), nullptr, y.data(), nullptr, z.data(), nullptr), 0);
      EXPECT_NEAR(z[299], 300, 1e-9);
      EXPECT_EQ(__wxrDeleteTask(&task), 0);
      EXPECT_EQ(live_blocks, blocks) << "after " << allocations << " allocations";
      task = nobody;
      if (!failed) break;
    }
  }
  EXPECT_EQ(errno, 4711);
}
#endif

}  // namespace
