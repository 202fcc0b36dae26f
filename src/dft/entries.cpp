#include "base/target.h"
#include "dft/descriptor.h"
#include "dft/status.h"
#include "qor/dft.h"

namespace dft = qor::dft;

struct qor_dft_descriptor : dft::Descriptor {};

namespace {

// f of the descriptor, when it is one and the pointer that goes with it isn't null.
template <class D, class F>
int with(D* handle, const void* argument, F f) {
  if (handle == nullptr || argument == nullptr) return QOR_DFT_NULL_POINTER;
  return handle->valid() ? f(*handle) : QOR_DFT_NOT_A_DESCRIPTOR;
}
int release(qor_dft_descriptor** handle) {
  if (handle == nullptr) return QOR_DFT_NULL_POINTER;
  if (*handle == nullptr) return QOR_DFT_OK;
  if (!(*handle)->valid()) return QOR_DFT_NOT_A_DESCRIPTOR;
  dft::destroy(*handle);
  *handle = nullptr;
  return QOR_DFT_OK;
}
// The inside makes the same thing under its own name.
dft::Descriptor** inside(qor_dft_descriptor** handle) { return reinterpret_cast<dft::Descriptor**>(handle); }

}  // namespace

QOR_ENTRY int qor_dft_zx9_create_descriptor_external(qor_dft_descriptor** handle, int precision, int domain, int rank,
                                                     const int* lengths) {
  return dft::create(inside(handle), precision, domain, rank, lengths);
}
QOR_ENTRY int qor_dft_zx9_copy_descriptor_external(const qor_dft_descriptor* handle, qor_dft_descriptor** copy) {
  return with(handle, copy, [=](auto& d) { return dft::copy(d, inside(copy)); });
}
QOR_ENTRY int qor_dft_zx9_free_descriptor_external(qor_dft_descriptor** handle) { return release(handle); }
QOR_ENTRY int qor_dft_zx9_set_value_external(qor_dft_descriptor* handle, int parameter, const void* value) {
  return with(handle, value, [=](auto& d) { return d.set(parameter, value); });
}
QOR_ENTRY int qor_dft_zx9_get_value_external(const qor_dft_descriptor* handle, int parameter, void* value) {
  return with(handle, value, [=](auto& d) { return d.get(parameter, value); });
}
QOR_ENTRY int qor_dft_zx9_commit_descriptor_external(qor_dft_descriptor* handle) {
  return with(handle, handle, [](auto& d) { return d.commit(); });
}
QOR_ENTRY int qor_dft_zx9_compute_forward_external(const qor_dft_descriptor* handle, void* in, void* out) {
  return with(handle, in, [=](auto& d) { return d.template compute<false>(in, out); });
}
QOR_ENTRY int qor_dft_zx9_compute_backward_external(const qor_dft_descriptor* handle, void* in, void* out) {
  return with(handle, in, [=](auto& d) { return d.template compute<true>(in, out); });
}
QOR_ENTRY int qor_dft_zx9_error_class_external(int status, int error_class) {
  return dft::is_of_class(status, error_class);
}
QOR_ENTRY const char* qor_dft_zx9_error_message_external(int status) { return dft::message_of(status); }
