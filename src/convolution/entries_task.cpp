#include "base/target.h"
#include "convolution/task.h"

namespace conv = qor::convolution;

QOR_ENTRY int __wxrNewTask(qor_conv_task** handle, int kind, int word2, int mode, int word4, int precision, int rank,
                           const int* xshape, const int* yshape, const int* zshape) {
  return conv::create(handle, {kind, word2, mode, word4, precision, rank, xshape, yshape, zshape, nullptr, nullptr});
}
QOR_ENTRY int __wxrNewTaskX(qor_conv_task** handle, int kind, int word2, int mode, int word4, int precision, int rank,
                            const int* xshape, const int* yshape, const int* zshape, const void* x,
                            const int* xstride) {
  return conv::create(handle, {kind, word2, mode, word4, precision, rank, xshape, yshape, zshape, x, xstride});
}
QOR_ENTRY int __wxrEditTask(qor_conv_task* task, int parameter, const int* value) {
  return conv::edit(task, parameter, value);
}
QOR_ENTRY int __wxrCommitTask(qor_conv_task* task) { return conv::commit(task); }
QOR_ENTRY int __wxrExec(qor_conv_task* task, const void* x, const int* xstride, const void* y, const int* ystride,
                        void* z, const int* zstride) {
  return conv::execute(task, {x, xstride, y, ystride, z, zstride});
}
QOR_ENTRY int __wxrExecX(qor_conv_task* task, const void* y, const int* ystride, void* z, const int* zstride) {
  return conv::execute_fixed(task, {nullptr, nullptr, y, ystride, z, zstride});
}
QOR_ENTRY int __wxrCopyTask(qor_conv_task** handle, const qor_conv_task* source) { return conv::copy(handle, source); }
QOR_ENTRY int __wxrDeleteTask(qor_conv_task** handle) { return conv::destroy(handle); }
QOR_ENTRY int __wxrccSetStatus(qor_conv_task* task, int value) { return conv::set_status(task, value); }
QOR_ENTRY int __wxrccGetStatus(const qor_conv_task* task) { return conv::get_status(task); }
