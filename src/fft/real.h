// Transforms of n real values. Powers of two have passes of their own (real_passes.h). Other even n: the values are taken
// as n/2 complex ones and transformed; with Z of that transform, s = Z[k] + conj Z[n/2 - k],
// d = Z[k] - conj Z[n/2 - k] and q[k] = -i exp(-2 pi i k / n),
//   X[k] = (s + q[k] d) / 2,  X[n/2 - k] = conj (s - q[k] d) / 2,
// and backwards Z[k] = (s + conj q[k] d) / 2 with X for Z in s and d. Odd n: the complex transform of n.
//
// Spectra are passed as two numbers, the values at the frequencies 0 and n/2, and the array of the pairs from frequency
// 1 on; the packings differ in where those lie.
#pragma once

#include "fft/plan.h"

namespace qor::fft {

template <class T>
class SmallReal;
template <class T>
class LargeReal;

template <class T>
class RealPlan {
 public:
  RealPlan() = default;
  ~RealPlan();
  RealPlan(const RealPlan&) = delete;
  RealPlan& operator=(const RealPlan&) = delete;

  // 0 or no_memory.
  int make(int n);
  std::size_t work_size() const { return work_; }

  // Leaves a spectrum in dst: the value at 0 in dst[0]; for even n that at n/2 in dst[1] and pairs from dst[2] on, for
  // odd n pairs from dst[1] on.
  void forward(const T* src, T* dst, const T& scale, T* work) const;
  // From the values at 0 and, for even n, n/2, and the pairs. dst may be what holds them.
  void inverse(const T& zero, const T& middle, const T* pairs, T* dst, const T& scale, T* work) const;

 private:
  int n_ = 0;
  std::size_t work_ = 0;
  void (*tiny_forward_)(const T*, T*, const T&) = nullptr;
  void (*tiny_inverse_)(const T*, const T&, const T&, T*, const T&) = nullptr;
  SmallReal<T>* small_ = nullptr;
  LargeReal<T>* large_ = nullptr;
  Plan<T> plan_;  // of the other lengths
  Array<T> factors_;
};

}  // namespace qor::fft
