// Convolution tasks made, edited, copied, executed and deleted in any order with any shapes, strides, starts and
// decimations. A model of the task foretells every status; results are compared with plain sums of small integers, and
// arrays are blocks of exactly the elements from the lowest to the highest, which the sanitizer watches.
#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <vector>

#include "conv/layout.h"
#include "fuzz/reader.h"
#include "qor/conv.h"

namespace {

using qor::test::Ints;
using qor::test::next;
using qor::test::place;
using qor::test::Reader;
using qor::test::require;

constexpr int most_tasks = 3, most_elements = 4096, most_products = 1 << 17;

// Private data of the caller's: how many there are, and whether the functions succeed.
int live_data;
bool functions_fail;
int release_data(qor_conv_task*, void*) {
  --live_data;
  return functions_fail;
}
int copy_data(qor_conv_task*, void** slot, void*) {
  if (functions_fail) return 1;
  ++live_data;
  *slot = std::malloc(3);
  return 0;
}

struct Model {
  qor_conv_task* task = nullptr;
  int status = 0, kind = 0, mode = 0, precision = 0, internal = 0, rank = 0;
  Ints nx, ny, nz;
  std::optional<Ints> start, step, xstride;
  bool attached = false, releases = false, copies = false;
  std::unique_ptr<char[]> x;  // of a task with a fixed operand
};

int small(Reader& bytes, int n) { return bytes.take<std::uint8_t>() % n; }

// As many entries as there may be dimensions, although the rank may say otherwise.
Ints entries(Reader& bytes, int rank, int low, int high) {
  Ints v(9, std::max(low, 1));
  const bool wild = small(bytes, 64) == 63;
  const int range = high - low + 1;
  for (int k = 0; k < std::clamp(rank, 1, 9); ++k) {
    v[k] = wild ? bytes.take<int>() : low + (range > 256 ? bytes.below(range) : small(bytes, range));
  }
  return v;
}
std::optional<Ints> strides(Reader& bytes, int rank, bool may_be_zero) {
  if (small(bytes, 2) == 0) return {};
  Ints v = entries(bytes, rank, -4, 40);
  for (int& s : v) s = s == 0 && !may_be_zero ? 1 : s;
  return v;
}

Model make(Reader& bytes) {
  Model m;
  const int kind = small(bytes, 32);
  m.kind = kind == 31 ? bytes.take<int>() : 1 + kind % 2;
  m.mode = small(bytes, 4) - 1;
  m.precision = 1 + small(bytes, 2);
  m.internal = m.precision;
  const int rank = small(bytes, 64);
  m.rank = rank == 63 ? bytes.take<std::int8_t>() : 1 + rank % 7;
  const int longest[] = {9, 700, 12, 6, 4, 3, 3, 2};
  const int low = small(bytes, 16) == 15 ? -1 : 1, high = longest[m.rank < 1 || m.rank > 7 ? 0 : m.rank];
  m.nx = entries(bytes, m.rank, low, high);
  m.ny = entries(bytes, m.rank, low, high);
  m.nz = entries(bytes, m.rank, low, m.rank == 1 ? 2 * high : high);
  if (small(bytes, 8) != 7) {  // no more than there is
    for (int k = 0; k < 9; ++k) m.nz[k] = int(std::min<long long>(m.nz[k], m.nx[k] + 0LL + m.ny[k] - 1));
  }
  return m;
}

struct Extent {
  double all = 1, span = 1;  // elements, and from the lowest to the highest
};
Extent extent(const Ints& n, const Ints& stride, int rank) {
  Extent e;
  for (int k = 0; k < rank; ++k) {
    e.all *= n[k];
    e.span += std::fabs(double(stride[k])) * (n[k] - 1);
  }
  return e;
}
Ints dense(const Ints& n, int rank) {
  Ints s(9, 1);
  double product = 1;
  for (int k = 0; k < std::min(rank, 7); ++k) {
    s[k] = int(product);
    product = std::clamp(product * n[k], 0.0, 2147483647.0);
  }
  return s;
}
struct Call {
  bool x, y, z;
  Ints sx, sy, sz, start, step;
};

// The status by the order of the checks.
int foretold(const Model& m, const Call& c) {
  if (m.status != 0) return m.status;
  if (m.rank == 1 && m.precision != 1 && m.internal == 1) return -2000;
  const auto range = [&](int k) {
    const long long low = m.kind == 1 ? 0 : 1LL - m.nx[k], end = m.kind == 1 ? m.nx[k] + 0LL + m.ny[k] - 1 : m.ny[k];
    if (c.start[k] < low || c.start[k] >= end) return -2302;
    return c.step[k] < 1 || c.start[k] + (m.nz[k] - 1LL) * c.step[k] >= end ? -2303 : 0;
  };
  if (m.rank == 1) {
    return !c.x           ? -2331
           : m.nx[0] < 1  ? -2311
           : !c.y         ? -2332
           : m.ny[0] < 1  ? -2312
           : !c.z         ? -2333
           : m.nz[0] < 1  ? -2313
           : c.sz[0] == 0 ? -2323
                          : range(0);
  }
  if (m.rank < 1 || m.rank > 7) return -2301;
  if (!c.x || !c.y || !c.z) return !c.x ? -2331 : !c.y ? -2332 : -2333;
  for (int k = 0; k < m.rank; ++k) {
    const int code = m.nx[k] < 1 ? -2311 : m.ny[k] < 1 ? -2312 : m.nz[k] < 1 ? -2313 : c.sz[k] == 0 ? -2323 : range(k);
    if (code != 0) return code;
  }
  return 0;
}

template <class D>
void fill(D* data, std::size_t n, unsigned seed) {
  for (std::size_t i = 0; i < n; ++i) data[i] = D(int((seed = seed * 1664525 + 1013904223) >> 28) - 8);
}

// z against the full result, from all pairs of elements.
template <class D>
void compare(const Model& m, const Call& c, const D* x, const D* y, const D* z) {
  const int rank = m.rank;
  Ints full(9, 1), i(static_cast<std::size_t>(rank)), j(i), at(i);
  for (int k = 0; k < rank; ++k) full[k] = m.nx[k] + m.ny[k] - 1;
  const Ints stride = dense(full, rank);
  std::vector<double> sums(static_cast<std::size_t>(extent(full, stride, rank).all));
  do {
    const double a = x[place(i, m.nx, c.sx)];
    do {
      for (int k = 0; k < rank; ++k) at[k] = m.kind == 1 ? i[k] + j[k] : j[k] - i[k] + m.nx[k] - 1;
      sums[place(at, full, stride)] += a * y[place(j, m.ny, c.sy)];
    } while (next(j, m.ny));
  } while (next(i, m.nx));
  const double size = 64.0 * double(extent(m.nx, stride, rank).all + extent(m.ny, stride, rank).all);
  const bool single_sums = m.precision == 1 && m.internal == 1 && rank == 1;
  do {
    for (int k = 0; k < rank; ++k) at[k] = c.start[k] + j[k] * c.step[k] + (m.kind == 1 ? 0 : m.nx[k] - 1);
    const double exact = sums[place(at, full, stride)], got = double(z[place(j, m.nz, c.sz)]);
    const double rounding = (sizeof(D) == 4 ? 1e-7 : 0) * std::fabs(exact);
    const double error = m.mode == 1 ? 0 : size * (single_sums ? 2e-6 : 4e-15) + rounding;
    require(std::fabs(got - exact) <= error, "an output is its sum");
  } while (next(j, m.nz));
}

// Do two outputs have the same place? Then nobody can say what is there.
bool outputs_meet(const Model& m, const Ints& stride, std::size_t span) {
  std::vector<bool> taken(span);
  Ints j(static_cast<std::size_t>(m.rank));
  do {
    const std::size_t at = place(j, m.nz, stride);
    if (taken[at]) return true;
    taken[at] = true;
  } while (next(j, m.nz));
  return false;
}

template <class D>
void execute(Reader& bytes, Model& m, bool fixed) {
  const std::optional<Ints> sx = fixed ? m.xstride : strides(bytes, m.rank, true), sy = strides(bytes, m.rank, true),
                            sz = strides(bytes, m.rank, small(bytes, 16) == 15);
  const int absent = small(bytes, 32);  // an operand, rarely
  Call c{absent != 1,
         absent != 2,
         absent != 3,
         sx.value_or(dense(m.nx, m.rank)),
         sy.value_or(dense(m.ny, m.rank)),
         sz.value_or(dense(m.nz, m.rank)),
         m.start.value_or(Ints(9)),
         m.step.value_or(Ints(9, 1))};
  if (fixed) c.x = m.x != nullptr;
  if (!m.start && m.kind == 2) {
    for (int k = 0; k < 9; ++k) c.start[k] = int(1u - unsigned(m.nx[k]));
  }
  const int code = foretold(m, c);
  Extent ex, ey, ez;
  bool sound = code == 0;
  if (sound) {
    ex = extent(m.nx, c.sx, m.rank), ey = extent(m.ny, c.sy, m.rank), ez = extent(m.nz, c.sz, m.rank);
    if (std::max({ex.all, ey.all, ez.all}) > most_elements || ex.all * ey.all > most_products) return;
    if (std::max({ex.span, ey.span, ez.span}) > 100 * most_elements) return;
  }
  const auto x_span = static_cast<std::size_t>(sound ? ex.span : 1),
             y_span = static_cast<std::size_t>(sound ? ey.span : 1),
             z_span = static_cast<std::size_t>(sound ? ez.span : 1);
  const std::unique_ptr<D[]> x(new D[x_span]), y(new D[y_span]), z(new D[z_span]);
  const D untouched = D(12345.5);
  fill(x.get(), x_span, bytes.take<std::uint8_t>());
  fill(y.get(), y_span, bytes.take<std::uint8_t>());
  std::fill(z.get(), z.get() + z_span, untouched);
  if (fixed) m.task->x = c.x ? x.get() : nullptr;  // arrays live for one execution here
  const auto pointer = [](const std::optional<Ints>& s) { return s ? s->data() : nullptr; };
  const D* const y_given = c.y ? y.get() : nullptr;
  D* const z_given = c.z ? z.get() : nullptr;
  const int status =
      fixed ? __wxrExecX(m.task, y_given, pointer(sy), z_given, pointer(sz))
            : __wxrExec(m.task, c.x ? x.get() : nullptr, pointer(sx), y_given, pointer(sy), z_given, pointer(sz));
  require(status == code, "an execution returns the first fault");
  m.status = code;
  if (!sound) {
    require(z[0] == untouched, "a refused execution writes nothing");
    return;
  }
  require(m.task->committed == 1, "an execution commits");
  if (!outputs_meet(m, c.sz, z_span)) compare(m, c, x.get(), y.get(), z.get());
}

void edit(Reader& bytes, Model& m) {
  const int free_ones[] = {3, 4, 5, 6, 9};
  const int parameter = small(bytes, 16) == 15 ? small(bytes, 24) - 2 : free_ones[small(bytes, 5)];
  const Ints v = parameter == 5   ? entries(bytes, m.rank, -3, 6)
                 : parameter == 6 ? entries(bytes, m.rank, small(bytes, 16) == 15 ? 0 : 1, 4)
                                  : entries(bytes, 1, 0, 2);
  const bool null = small(bytes, 64) == 63;
  const int status = __wxrEditTask(m.task, parameter, null ? nullptr : v.data());
  if (m.status == 0) {
    const bool free = (parameter >= 3 && parameter <= 6) || parameter == 9;
    m.status = null ? -5 : parameter < 1 || parameter > 19 ? -2211 : free ? 0 : -2212;
    require(m.task->committed == 0, "an edited task isn't committed");
    if (m.status == 0) {
      if (parameter == 3) m.mode = v[0];
      if (parameter == 5) m.start = v;
      if (parameter == 6) m.step = v;
      if (parameter == 9) m.internal = v[0];
    }
  }
  require(status == m.status, "an edit returns its status");
}

void attach(Model& m, bool releases, bool copies) {
  if (m.task->private_data != nullptr || m.task->release_private_data != nullptr) return;  // the library's by now
  m.task->private_data = std::malloc(3);
  m.task->release_private_data = releases ? release_data : nullptr;
  m.task->copy_private_data = copies ? copy_data : nullptr;
  m.attached = true, m.releases = releases, m.copies = copies;
  ++live_data;
}

void remove(Model& m) {
  const int code = m.attached && (functions_fail || !m.releases) ? -2240 : 0;
  if (m.attached && !m.releases) --live_data;
  require(__wxrDeleteTask(&m.task) == code && m.task == nullptr, "a task is deleted");
}

void copy(Model& m, Model& to) {
  qor_conv_task* task = nullptr;
  const int status = __wxrCopyTask(&task, m.task);
  const int code = m.status != 0 ? m.status : m.attached && (functions_fail || !m.copies) ? -2230 : 0;
  require(status == code && (status == 0) == (task != nullptr), "a copy comes with status 0");
  if (task == nullptr) return;
  if (to.task != nullptr) remove(to);
  to.task = task;
  to.status = 0, to.kind = m.kind, to.mode = m.mode, to.precision = m.precision, to.internal = m.internal;
  to.rank = m.rank, to.nx = m.nx, to.ny = m.ny, to.nz = m.nz, to.start = m.start, to.step = m.step;
  to.xstride = m.xstride, to.attached = m.attached, to.releases = m.releases, to.copies = m.copies;
  to.x.reset(m.x == nullptr ? nullptr : new char[1]);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t n) {
  Reader bytes(data, n);
  Model tasks[most_tasks];
  live_data = 0;
  while (!bytes.empty()) {
    Model& m = tasks[small(bytes, most_tasks)];
    const int what = small(bytes, 16);
    functions_fail = small(bytes, 8) == 7;
    if (m.task == nullptr) {
      const bool fixed = what % 2 == 0;
      m = make(bytes);
      if (fixed) m.xstride = strides(bytes, m.rank, true);
      if (fixed) m.x.reset(new char[1]);
      const int status =
          fixed
              ? __wxrNewTaskX(&m.task, m.kind, 2, m.mode, 4, m.precision, m.rank, m.nx.data(), m.ny.data(), m.nz.data(),
                              m.x.get(), m.xstride ? m.xstride->data() : nullptr)
              : __wxrNewTask(&m.task, m.kind, 2, m.mode, 4, m.precision, m.rank, m.nx.data(), m.ny.data(), m.nz.data());
      require(status == 0 && m.task->rank == m.rank && m.task->word4 == 4, "a task is made");
    } else if (what < 8) {
      const bool fixed = small(bytes, 2) == 0 && (m.x != nullptr || small(bytes, 8) == 7);
      if (m.precision == 1) {
        execute<float>(bytes, m, fixed);
      } else {
        execute<double>(bytes, m, fixed);
      }
    } else if (what < 11) {
      edit(bytes, m);
    } else if (what == 11) {
      require(__wxrCommitTask(m.task) == m.status, "a commitment returns the status");
    } else if (what == 12) {
      Model& to = tasks[small(bytes, most_tasks)];
      if (&to != &m) copy(m, to);
    } else if (what == 13) {
      require(__wxrccSetStatus(m.task, 0) == m.status, "the former status comes back");
      m.status = 0;
    } else if (what == 14) {
      attach(m, small(bytes, 8) != 7, small(bytes, 8) != 7);
    } else {
      remove(m);
      m = Model();
    }
    if (m.task != nullptr) require(__wxrccGetStatus(m.task) == m.status, "the status is kept");
    if (m.status != 0 && small(bytes, 2) == 0) __wxrccSetStatus(m.task, m.status = 0);
  }
  functions_fail = false;
  for (Model& m : tasks) {
    if (m.task != nullptr) remove(m);
  }
  require(live_data == 0, "private data goes with its task");
  return 0;
}
