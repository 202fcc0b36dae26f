// Tasks: the operations on the record that qor/conv.h declares.
#pragma once

#include <cstddef>

#include "qor/conv.h"

namespace qor::convolution {

using Task = qor_conv_task;

// Layers above read the record by these places.
static_assert(offsetof(Task, status) == 8 && offsetof(Task, kind) == 16 && offsetof(Task, word2) == 20);
static_assert(offsetof(Task, mode) == 24 && offsetof(Task, parameter4) == 28 && offsetof(Task, start) == 32);
static_assert(offsetof(Task, decimation) == 36 && offsetof(Task, word4) == 40);
static_assert(offsetof(Task, data_precision) == 44 && offsetof(Task, internal_precision) == 48);
static_assert(offsetof(Task, rank) == 52 && offsetof(Task, xshape) == 56 && offsetof(Task, yshape) == 60);
static_assert(offsetof(Task, zshape) == 64 && offsetof(Task, xstride) == 68 && offsetof(Task, start_entries) == 72);
static_assert(offsetof(Task, xstride_entries) == 72 + 5 * 28 && offsetof(Task, x) == 72 + 6 * 28);
static_assert(offsetof(Task, committed) == 244 && offsetof(Task, private_data) == 248 && sizeof(Task) == 260);

// What a new task is made of.
struct Description {
  int kind, word2, mode, word4, precision, rank;
  const int *xshape, *yshape, *zshape;
  const void* x;
  const int* xstride;
};
// The arrays of one execution; a null stride stands for that of a dense array.
struct Operands {
  const void* x;
  const int* xstride;
  const void* y;
  const int* ystride;
  void* z;
  const int* zstride;
};

int create(Task** handle, const Description& description);
int edit(Task* task, int parameter, const int* value);
int commit(Task* task);
int execute(Task* task, const Operands& operands);
int execute_fixed(Task* task, Operands operands);  // x and its stride are the task's
int copy(Task** handle, const Task* source);
int destroy(Task** handle);
int set_status(Task* task, int value);
int get_status(const Task* task);

}  // namespace qor::convolution
