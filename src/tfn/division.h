// Quotient and reciprocal: the processor's division, correctly rounded in both accuracies. What is left to do is to
// notice results that are to be reported.
#pragma once

#include <cmath>
#include <limits>

#include "numeric/float_parts.h"
#include "qor/tfn.h"
#include "simd/vec.h"
#include "tfn/accuracy.h"

namespace qor::tfn {

// What to report of y = x/b.
template <class T>
inline int quotient_status(T x, T b, T y) {
  using L = std::numeric_limits<T>;
  const T size = static_cast<T>(__builtin_fabs(y));
  if (y != y) return x != x || b != b ? TFN_STATUS_OK : TFN_STATUS_ERRDOM;
  if (size > L::max())
    return !(__builtin_fabs(x) <= L::max()) ? TFN_STATUS_OK : b == 0 ? TFN_STATUS_SING : TFN_STATUS_OVERFLOW;
  if (size < L::min()) return x == 0 || __builtin_fabs(b) > L::max() ? TFN_STATUS_OK : TFN_STATUS_UNDERFLOW;
  return TFN_STATUS_OK;
}

template <Accuracy>
struct Div {
  static constexpr int results = 1;
  static constexpr double filler = 1;
  template <class T>
  static constexpr double bound = 0.5;

  template <class V>
  QOR_INLINE static void fast(V x, V b, const simd::lane_t<V>*, V* y, simd::Bits<V>& usual) {
    y[0] = x / b;
    usual = numeric::normal_magnitude(y[0]);
  }
  // Zeros over other numbers are no failures.
  template <class V>
  QOR_COLD static void retry(const V& x, const V&, V* y, simd::Bits<V>& usual) {
    usual |= simd::eq(x, V{}) & simd::eq(y[0], V{});
  }
  template <class T>
  static int element(T x, T b, T* y) {
    y[0] = x / b;
    return quotient_status(x, b, y[0]);
  }
};

template <Accuracy>
struct Inv {
  static constexpr int results = 1;
  static constexpr double filler = 1;
  template <class T>
  static constexpr double bound = 0.5;

  template <class V>
  QOR_INLINE static void fast(V x, const simd::lane_t<V>*, V* y, simd::Bits<V>& usual) {
    y[0] = 1 / x;
    usual = numeric::normal_magnitude(y[0]);
  }
  template <class T>
  static int element(T x, T* y) {
    y[0] = 1 / x;
    return quotient_status(T(1), x, y[0]);
  }
};

}  // namespace qor::tfn
