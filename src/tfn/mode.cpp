#include "tfn/mode.h"

#include <pthread.h>

#include <cstdlib>
#include <initializer_list>

#include "base/errno_guard.h"
#include "numeric/x87.h"

namespace qor::tfn {
namespace {

// The x87 control word from before the first x87 request; shared by all threads, unguarded.
std::uint32_t tfnOldScalarCW;

// A slot is a key, made once, of heap cells that their thread's exit frees.
pthread_key_t Mode_key, ErrStatus_key, CallBack_key, InputVecorPointer_key;
pthread_once_t Mode_konce = PTHREAD_ONCE_INIT, ErrStatus_konce = PTHREAD_ONCE_INIT, CallBack_konce = PTHREAD_ONCE_INIT,
               InputVecorPointer_konce = PTHREAD_ONCE_INIT;
// Without a key (the process has used up its keys) the slot behaves as without memory.
bool Mode_has_key, ErrStatus_has_key, CallBack_has_key, InputVecorPointer_has_key;

void Mode_destroy(void* cell) { std::free(cell); }
void ErrStatus_destroy(void* cell) { std::free(cell); }
void CallBack_destroy(void* cell) { std::free(cell); }
void InputVecorPointer_destroy(void* cell) { std::free(cell); }

void Mode_alloc_key() { Mode_has_key = pthread_key_create(&Mode_key, Mode_destroy) == 0; }
void ErrStatus_alloc_key() { ErrStatus_has_key = pthread_key_create(&ErrStatus_key, ErrStatus_destroy) == 0; }
void CallBack_alloc_key() { CallBack_has_key = pthread_key_create(&CallBack_key, CallBack_destroy) == 0; }
void InputVecorPointer_alloc_key() {
  InputVecorPointer_has_key = pthread_key_create(&InputVecorPointer_key, InputVecorPointer_destroy) == 0;
}

template <class T>
T* cell(pthread_once_t& once, void (*alloc_key)(), const pthread_key_t& key, const bool& has_key, T initial) {
  static_assert(sizeof(T) <= 8);
  if (pthread_once(&once, alloc_key) != 0 || !has_key) return nullptr;
  if (void* present = pthread_getspecific(key)) return static_cast<T*>(present);
  ErrnoGuard keep;
  T* fresh = static_cast<T*>(std::malloc(8));
  if (fresh == nullptr) return nullptr;
  *fresh = initial;
  if (pthread_setspecific(key, fresh) != 0) {
    std::free(fresh);
    return nullptr;
  }
  return fresh;
}

template <class T>
T value_or(const T* cell, T initial) {
  return cell != nullptr ? *cell : initial;
}
template <class T>
T exchange(T* cell, T initial, T value) {
  if (cell == nullptr) return initial;
  const T old = *cell;
  *cell = value;
  return old;
}

}  // namespace

std::uint32_t* mode_cell() {
  return cell<std::uint32_t>(Mode_konce, Mode_alloc_key, Mode_key, Mode_has_key, TFN_MODE_DEFAULT);
}
std::int32_t* status_cell() {
  return cell<std::int32_t>(ErrStatus_konce, ErrStatus_alloc_key, ErrStatus_key, ErrStatus_has_key, 0);
}
TfnErrorCallBack* callback_cell() {
  return cell<TfnErrorCallBack>(CallBack_konce, CallBack_alloc_key, CallBack_key, CallBack_has_key, nullptr);
}
const void** base_pointer_cell() {
  return cell<const void*>(InputVecorPointer_konce, InputVecorPointer_alloc_key, InputVecorPointer_key,
                           InputVecorPointer_has_key, nullptr);
}

std::uint32_t mode() { return value_or<std::uint32_t>(mode_cell(), TFN_MODE_DEFAULT); }
std::int32_t status() { return value_or<std::int32_t>(status_cell(), 0); }
TfnErrorCallBack callback() { return value_or<TfnErrorCallBack>(callback_cell(), nullptr); }
const void* base_pointer() { return value_or<const void*>(base_pointer_cell(), nullptr); }

std::int32_t set_status(std::int32_t status) { return exchange<std::int32_t>(status_cell(), 0, status); }
TfnErrorCallBack set_callback(TfnErrorCallBack callback) {
  return exchange<TfnErrorCallBack>(callback_cell(), nullptr, callback);
}
void set_base_pointer(const void* base) { exchange<const void*>(base_pointer_cell(), nullptr, base); }

std::uint32_t set_mode(std::uint32_t wanted) {
  std::uint32_t* const word = mode_cell();
  if (word == nullptr) return TFN_MODE_DEFAULT;
  const std::uint32_t old = *word;
  for (const std::uint32_t field : {TFN_ACCURACY_MASK, TFN_ERR_MASK, TFN_EXTRA_MASK}) {
    if ((wanted & field) != 0) *word = (*word & ~field) | (wanted & field);
  }

  const std::uint32_t request = wanted & TFN_FPU_MASK;
  if (request == 0) return old;
  if (request == TFN_FPU_RESTORE) {
    // The field stays as it is: the mode shows the last request even after its restoration.
    if ((old & TFN_FPU_MASK) != 0 && numeric::x87_control() != tfnOldScalarCW) numeric::set_x87_control(tfnOldScalarCW);
    return old;
  }
  const std::uint32_t combined = (*word & TFN_ACCURACY_MASK) | request;
  const std::uint32_t precision =
      combined == (TFN_FPU_MODE1 | 1) || combined == (TFN_FPU_MODE1 | 2) ? numeric::x87_double : numeric::x87_extended;
  const std::uint32_t control = numeric::x87_control();
  if ((old & TFN_FPU_MASK) == 0) tfnOldScalarCW = control;
  if ((control & numeric::x87_precision_and_rounding) != precision) {
    numeric::set_x87_control((control & ~numeric::x87_precision_and_rounding) | precision);
  }
  *word = (*word & ~TFN_FPU_MASK) | request;
  return old;
}

}  // namespace qor::tfn
