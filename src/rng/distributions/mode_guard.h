// Around the kernel calls of a generator: errors go to a callback of the library's own, which makes the logarithm of
// zero finite. The caller's mode and callback come back on every exit path.
#pragma once

#include <cstdint>

#include "tfn/mode.h"

namespace qor::rng {

// What ln 0 counts as: the logarithm of the smallest subnormal number.
template <class T>
inline constexpr double ln_of_zero = sizeof(T) == 8 ? -744.4400719213812 : double(-103.27893f);

// Replaces the result of the singularity that ln 0 is; other errors keep the kernel's result.
template <class T>
int ln_callback(TfnErrorContext* context) {
  if (context->code == TFN_STATUS_SING) context->res1 = context->res2 = ln_of_zero<T>;
  return 0;
}

// Replaces the result of any error, for generators that know of no other: ln of what an engine shouldn't have made.
template <class T>
int ln_callback_always(TfnErrorContext* context) {
  context->res1 = context->res2 = ln_of_zero<T>;
  return 0;
}

class ModeGuard {
 public:
  explicit ModeGuard(TfnErrorCallBack callback)
      : mode_(tfn::set_mode(TFN_ERR_CALLBACK)), callback_(tfn::set_callback(callback)) {}
  ~ModeGuard() {
    tfn::set_callback(callback_);
    tfn::set_mode(mode_);
  }
  ModeGuard(const ModeGuard&) = delete;
  ModeGuard& operator=(const ModeGuard&) = delete;

 private:
  std::uint32_t mode_;
  TfnErrorCallBack callback_;
};

}  // namespace qor::rng
