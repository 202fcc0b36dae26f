#include "convolution/task.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "base/owned.h"
#include "convolution/drivers.h"
#include "convolution/fourier.h"

namespace qor::convolution {
namespace {

constexpr int direct_mode = 1, single_precision = 1, convolution_kind = 1, correlation_kind = 2;
constexpr int zeros[max_rank] = {}, ones[max_rank] = {1, 1, 1, 1, 1, 1, 1};

// A rank that no driver takes is kept in the task; its arrays have the entries that there is room for.
int entries(int rank) { return std::clamp(rank, 0, max_rank); }

// A field that is null or points at the task's own entries.
struct ArrayField {
  int* Task::*pointer;
  int (Task::*own)[max_rank];

  void set(Task& task, const int* from) const {
    task.*pointer = from != nullptr ? task.*own : nullptr;
    if (from != nullptr) std::copy_n(from, entries(task.rank), task.*own);
  }
};
constexpr ArrayField start_field{&Task::start, &Task::start_entries};
constexpr ArrayField decimation_field{&Task::decimation, &Task::decimation_entries};
constexpr ArrayField xshape_field{&Task::xshape, &Task::xshape_entries};
constexpr ArrayField yshape_field{&Task::yshape, &Task::yshape_entries};
constexpr ArrayField zshape_field{&Task::zshape, &Task::zshape_entries};
constexpr ArrayField xstride_field{&Task::xstride, &Task::xstride_entries};

Task* allocate() {
  Task* const task = Owned<Task>::allocate(sizeof(Task)).release();
  if (task != nullptr) std::memset(task, 0, sizeof *task);
  return task;
}

const int* or_dense(const int* stride, const int* shape, int rank, int (&dense)[max_rank]) {
  if (stride != nullptr) return stride;
  std::int64_t n = 1;
  for (int k = 0; k < entries(rank); ++k) {
    // Beyond an int there are more elements than any driver takes.
    dense[k] = static_cast<int>(n);
    n = std::clamp<std::int64_t>(n * shape[k], 0, std::numeric_limits<int>::max());
  }
  return dense;
}

// ---- what a task keeps ----------------------------------------------------------------------------------------------

int release_kept(Task*, void* data) {
  static_cast<Kept*>(data)->~Kept();
  return 0;
}
// A copy prepares its own.
int copy_kept(Task* task, void** slot, void*) {
  *slot = nullptr;
  task->release_private_data = nullptr;
  task->copy_private_data = nullptr;
  return 0;
}
// Null when the slot is someone else's, or without memory.
Kept* kept_by(Task* task) {
  if (task->private_data == nullptr && task->release_private_data == nullptr && task->copy_private_data == nullptr) {
    Owned<Kept> block = Owned<Kept>::allocate(sizeof(Kept));
    if (!block) return nullptr;
    task->private_data = new (block.release()) Kept;
    task->release_private_data = release_kept;
    task->copy_private_data = copy_kept;
  }
  return task->release_private_data == release_kept ? static_cast<Kept*>(task->private_data) : nullptr;
}

// ---- execution ------------------------------------------------------------------------------------------------------

template <class Chosen, class D, class... Extra>
int drive(const Arguments<D>& c, Extra&... extra) {
  if (c.rank != 1) {
    return Chosen::arrays(c.rank, c.x, c.xshape, c.xstride, c.y, c.yshape, c.ystride, c.z, c.zshape, c.zstride, c.start,
                          c.decimation, extra...);
  }
  return Chosen::scalar(c.x, *c.xstride, c.y, *c.ystride, c.z, *c.zstride, *c.xshape, *c.yshape, *c.start, *c.zshape,
                        *c.decimation, extra...);
}

int dispatch(Task* task, Operands o) {
  const Task& t = *task;
  // A shape that was never given is none.
  const int* const xshape = t.xshape != nullptr ? t.xshape : zeros;
  const int* const yshape = t.yshape != nullptr ? t.yshape : zeros;
  const int* const zshape = t.zshape != nullptr ? t.zshape : zeros;
  int xdense[max_rank], ydense[max_rank], zdense[max_rank], first[max_rank] = {};
  o.xstride = or_dense(o.xstride, xshape, t.rank, xdense);
  o.ystride = or_dense(o.ystride, yshape, t.rank, ydense);
  o.zstride = or_dense(o.zstride, zshape, t.rank, zdense);
  if (t.kind == correlation_kind) {
    for (int k = 0; k < entries(t.rank); ++k) first[k] = static_cast<int>(1u - static_cast<unsigned>(xshape[k]));
  }
  const int* const start = t.start != nullptr ? t.start : first;
  const int* const decimation = t.decimation != nullptr ? t.decimation : ones;

  const bool single_data = t.data_precision == single_precision, single_sums = t.internal_precision == single_precision;
  // On purpose of rank 1 only: the higher ranks compute in double.
  if (t.rank == 1 && !single_data && single_sums) return status::not_here;
  const auto run = [&]<Kind kind, class T, class D>() {
    const Arguments<D> c{t.rank,
                         static_cast<const D*>(o.x),
                         xshape,
                         o.xstride,
                         static_cast<const D*>(o.y),
                         yshape,
                         o.ystride,
                         static_cast<D*>(o.z),
                         zshape,
                         o.zstride,
                         start,
                         decimation};
    if (t.mode == direct_mode) return drive<Driver<kind, T, D>>(c);
    Kept fresh, *const kept = kept_by(task);
    return drive<FourierDriver<kind, T, D>>(c, kept != nullptr ? *kept : fresh);
  };
  const auto run_kind = [&]<Kind kind>() {
    if (!single_data) return run.template operator()<kind, double, double>();
    return single_sums ? run.template operator()<kind, float, float>() : run.template operator()<kind, double, float>();
  };
  return t.kind == convolution_kind ? run_kind.template operator()<Kind::convolution>()
                                    : run_kind.template operator()<Kind::correlation>();
}

int apply(Task& task, int parameter, const int* value) {
  if (parameter < 1 || parameter > 19) return status::no_parameter;
  switch (parameter) {
    case 3:
      task.mode = *value;
      break;
    case 4:
      task.parameter4 = *value;
      break;
    case 5:
      start_field.set(task, value);
      break;
    case 6:
      decimation_field.set(task, value);
      break;
    case 9:
      task.internal_precision = *value;
      break;
    default:
      return status::fixed_parameter;
  }
  return status::ok;
}

}  // namespace

int create(Task** handle, const Description& d) {
  if (handle == nullptr) return status::null_task;
  Task* const task = allocate();
  if (task == nullptr) return status::no_task_memory;
  task->kind = d.kind;
  task->word2 = d.word2;
  task->mode = d.mode;
  task->word4 = d.word4;
  task->data_precision = task->internal_precision = d.precision;
  task->rank = d.rank;
  xshape_field.set(*task, d.xshape);
  yshape_field.set(*task, d.yshape);
  zshape_field.set(*task, d.zshape);
  xstride_field.set(*task, d.xstride);
  task->x = d.x;
  *handle = task;
  return status::ok;
}

int edit(Task* task, int parameter, const int* value) {
  if (task == nullptr) return status::null_task;
  if (task->status != status::ok) return task->status;
  task->committed = 0;
  return task->status = value == nullptr ? status::null_task : apply(*task, parameter, value);
}

int commit(Task* task) {
  if (task == nullptr) return status::null_task;
  if (task->status == status::ok) task->committed = 1;
  return task->status;
}

int execute(Task* task, const Operands& operands) {
  if (const int s = commit(task); s != status::ok) return s;
  return task->status = dispatch(task, operands);
}
int execute_fixed(Task* task, Operands operands) {
  if (task == nullptr) return status::null_task;
  operands.x = task->x;
  operands.xstride = task->xstride;
  return execute(task, operands);
}

int copy(Task** handle, const Task* source) {
  if (handle == nullptr || source == nullptr) return status::null_task;
  if (source->status != status::ok) return source->status;
  Owned<Task> made(allocate());
  if (!made) return status::no_task_memory;
  Task* const task = made.get();
  *task = *source;
  task->above[0] = task->above[1] = task->also_above = 0;
  for (const ArrayField* f :
       {&start_field, &decimation_field, &xshape_field, &yshape_field, &zshape_field, &xstride_field}) {
    f->set(*task, source->*f->pointer);
  }
  // Data that nobody can copy must not be in two tasks.
  if (task->private_data != nullptr &&
      (task->copy_private_data == nullptr ||
       task->copy_private_data(task, &task->private_data, source->private_data) != 0)) {
    return status::not_copied;
  }
  task->status = status::ok;  // whatever the copy function did
  *handle = made.release();
  return status::ok;
}

int destroy(Task** handle) {
  if (handle == nullptr) return status::null_task;
  const Owned<Task> task(*handle);
  if (!task) return status::ok;
  int result = status::ok;
  if (task->private_data != nullptr) {
    if (task->release_private_data == nullptr) {
      result = status::no_release;
    } else {
      result = task->release_private_data(task.get(), task->private_data);
    }
    const Owned<void> data(task->private_data);
    task->private_data = nullptr;
  }
  *handle = nullptr;
  return result == status::ok ? status::ok : status::not_released;
}

int set_status(Task* task, int value) {
  return task == nullptr ? status::null_task : std::exchange(task->status, value);
}
int get_status(const Task* task) { return task == nullptr ? status::null_task : task->status; }

}  // namespace qor::convolution
