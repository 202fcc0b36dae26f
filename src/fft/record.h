// Specification records of all transforms, and the operations on them. A record begins with the fields that callers
// count on; what its transforms need follows.
#pragma once

#include <cmath>
#include <cstdint>

#include "base/align.h"
#include "fft/create.h"
#include "fft/packing.h"
#include "fft/pairs.h"
#include "fft/real.h"
#include "numeric/mxcsr.h"

namespace qor::fft {

namespace status {
inline constexpr int ok = 0, bad_length = -6, null_pointer = -8, no_memory = fft::no_memory, bad_order = -15,
                     bad_flag = -16, wrong_record = -17;
}
inline constexpr int largest_order = 30;

// Type tags. A record of lengths that are not powers of two is another one than that of orders.
inline constexpr std::int32_t real_fft = 9, complex_fft = 10, real_dft = 11, complex_dft = 12;

template <class PlanType>
struct Record {
  std::int32_t tag;
  std::int32_t size;  // order or length
  std::int32_t scales_forward, scales_inverse;
  double scale;
  std::int32_t hint;
  std::int32_t work_bytes;  // 0: none needed
  PlanType plan;
};
template <class T>
using RealRecord = Record<RealPlan<T>>;
template <class T>
using ComplexRecord = Record<Plan<T>>;

// Work space up to this size lies on the stack, beyond it in the caller's buffer or one that lives for the call.
inline constexpr std::size_t stack_bytes = 16384;
inline constexpr std::size_t buffer_alignment = 16;

// `size` is the order when the tag is that of an FFT.
template <class R, class T>
int create(R** spec, std::int32_t tag, int size, int flag, int hint) {
  const bool by_order = tag == real_fft || tag == complex_fft;
  if (spec == nullptr) return status::null_pointer;
  if (by_order && (size < 0 || size > largest_order)) return status::bad_order;
  if (!by_order && size < 1) return status::bad_length;
  R* const r = create<R>();
  if (r == nullptr) return status::no_memory;
  int result = status::ok;
  const numeric::ArithmeticGuard guard;
  const int n = by_order ? 1 << size : size;
  r->tag = tag;
  r->size = size;
  r->hint = hint;
  r->scales_forward = flag == 1 || flag == 4;
  r->scales_inverse = flag == 2 || flag == 4;
  r->scale = 1.0 / n;
  if (flag == 4) r->scale = 1 / std::sqrt(static_cast<double>(n));
  if (flag != 1 && flag != 2 && flag != 4 && flag != 8) {
    result = status::bad_flag;
  } else {
    result = r->plan.make(n);
  }
  const std::size_t work = r->plan.work_size();
  if (work > (INT32_MAX - buffer_alignment) / sizeof(T)) result = result == 0 ? status::no_memory : result;
  r->work_bytes = work * sizeof(T) <= stack_bytes ? 0 : static_cast<std::int32_t>(work * sizeof(T));
  if (result == status::ok) {
    *spec = r;
  } else {
    fft::destroy(r);
  }
  return result;
}

template <class R>
int check(const R* spec, std::int32_t tag) {
  return spec == nullptr ? status::null_pointer : spec->tag != tag ? status::wrong_record : status::ok;
}
template <class R>
int destroy(R* spec, std::int32_t tag) {
  const int result = check(spec, tag);
  if (result == status::ok) {
    spec->tag = 0;
    fft::destroy(spec);
  }
  return result;
}
template <class R>
int buffer_size(const R* spec, std::int32_t tag, int* size) {
  if (spec == nullptr || size == nullptr) return status::null_pointer;
  if (spec->tag != tag) return status::wrong_record;
  *size = spec->work_bytes > 0 ? spec->work_bytes + static_cast<int>(buffer_alignment) : 0;
  return status::ok;
}

// f with a buffer that lives for the call.
template <class T, class F>
QOR_COLD int in_own_buffer(int bytes, F f) {
  const Array<std::uint8_t> own(static_cast<std::size_t>(bytes));
  if (!own) return status::no_memory;
  f(reinterpret_cast<T*>(own.get()));
  return status::ok;
}

// Checks the arguments and calls f with the scale and work space.
template <class T, class R, class F>
QOR_INLINE int transform_with(const R* spec, std::int32_t tag, bool scaled, const void* src, const void* dst,
                              std::uint8_t* buffer, F f) {
  if (const int result = check(spec, tag); result != status::ok) return result;
  if (src == nullptr || dst == nullptr) return status::null_pointer;
  const numeric::ArithmeticGuard guard;
  const T scale = scaled ? static_cast<T>(spec->scale) : T(1);
  if (spec->work_bytes == 0) {
    alignas(buffer_alignment) T work[stack_bytes / sizeof(T)];
    f(scale, work);
  } else if (buffer == nullptr) [[unlikely]] {
    return in_own_buffer<T>(spec->work_bytes, [&](T* work) { f(scale, work); });
  } else {
    f(scale, align_up<T>(buffer, buffer_alignment));
  }
  return status::ok;
}

template <class T, bool Inverse>
QOR_INLINE int complex_transform(const T* src, T* dst, const ComplexRecord<T>* spec, std::int32_t tag,
                                 std::uint8_t* buffer) {
  return transform_with<T>(spec, tag, spec != nullptr && (Inverse ? spec->scales_inverse : spec->scales_forward) != 0,
                           src, dst, buffer,
                           [&](const T& scale, T* work) { spec->plan.template run<Inverse>(src, dst, scale, work); });
}
template <class T>
int length_of(const RealRecord<T>* spec) {
  return spec->tag == real_fft ? 1 << spec->size : spec->size;
}
template <class T, Packing P>
int forward_real(const T* src, T* dst, const RealRecord<T>* spec, std::int32_t tag, std::uint8_t* buffer) {
  return transform_with<T>(spec, tag, spec != nullptr && spec->scales_forward != 0, src, dst, buffer,
                           [&](const T& scale, T* work) {
                             spec->plan.forward(src, dst, scale, work);
                             if (P != Packing::perm) repack(Packing::perm, dst, P, dst, length_of(spec));
                           });
}
template <class T, Packing P>
int inverse_real(const T* src, T* dst, const RealRecord<T>* spec, std::int32_t tag, std::uint8_t* buffer) {
  return transform_with<T>(spec, tag, spec != nullptr && spec->scales_inverse != 0, src, dst, buffer,
                           [&](const T& scale, T* work) {
                             const int n = length_of(spec);
                             const T* from = src;
                             Packing packing = P;
                             if (P == Packing::pack && n % 2 == 0) {  // its pairs start elsewhere
                               repack(Packing::pack, src, Packing::perm, dst, n);
                               from = dst;
                               packing = Packing::perm;
                             }
                             const T middle = n % 2 == 0 ? from[middle_value(packing, n)] : T(0);
                             spec->plan.inverse(from[0], middle, from + first_pair(packing, n), dst, scale, work);
                           });
}

template <class T>
int multiply_perm(const T* src, T* srcdst, int n) {
  if (src == nullptr || srcdst == nullptr) return status::null_pointer;
  if (n < 1) return status::bad_length;
  const numeric::ArithmeticGuard guard;
  const int pairs = first_pair(Packing::perm, n);
  for (int i = 0; i < pairs; ++i) srcdst[i] *= src[i];
  multiply_pairs(src + pairs, srcdst + pairs, (n - 1) / 2);
  return status::ok;
}
template <class T>
int convert(Packing from, const T* src, Packing to, T* dst, int n) {
  if (src == nullptr || dst == nullptr) return status::null_pointer;
  if (n < 1) return status::bad_length;
  repack(from, src, to, dst, n);
  return status::ok;
}
template <class T>
int zero(T* dst, int n) {
  if (dst == nullptr) return status::null_pointer;
  if (n < 1) return status::bad_length;
  std::memset(dst, 0, static_cast<std::size_t>(n) * sizeof(T));
  return status::ok;
}
template <class T>
int copy(const T* src, T* dst, int n) {
  if (src == nullptr || dst == nullptr) return status::null_pointer;
  if (n < 1) return status::bad_length;
  std::memmove(dst, src, static_cast<std::size_t>(n) * sizeof(T));
  return status::ok;
}

}  // namespace qor::fft
