// What is fixed about complex transforms of one length: the passes, their twiddle factors, the work space.
//
// Powers of two have kernels of their own to 2^14 (power.h); larger ones are split into blocks that fit the caches
// (blocked.h). Other lengths whose prime factors are at most 13 run in packed passes (passes.h). A prime factor above 13
// is the first pass, a convolution for each of its rows (convolution.h).
#pragma once

#include "fft/power.h"
#include "fft/tables.h"

namespace qor::fft {

inline constexpr int largest_radix = 16, largest_prime = 13;

template <class T>
class Convolution;
template <class T>
class Blocked;

template <class T>
class Plan {
 public:
  using V = simd::Vec<T>;

  Plan() = default;
  ~Plan();
  Plan(const Plan&) = delete;
  Plan& operator=(const Plan&) = delete;

  // 0 or no_memory. With `split`, n a power of two from 2^9 on, for run_split() instead of run().
  int make(int n, bool split = false);
  int length() const { return n_; }
  // Elements of work space that run() needs, aligned to a vector.
  std::size_t work_size() const { return work_; }

  // The transform of src times scale; dst may be src. Inverse has the positive exponent.
  template <bool Inverse>
  QOR_INLINE void run(const T* src, T* dst, const T& scale, T* work) const {
    if (const auto whole = single_[Inverse][scale != 1]; whole != nullptr) return whole(src, dst, scale);
    if (power_ != nullptr) return power_->template run<Inverse>(src, dst, scale, work);
    run_passes<Inverse>(src, dst, scale, work);
  }
  // The same in the split layout (and the inverse with real and imaginary parts exchanged), reading every stride-th
  // value.
  template <bool Inverse>
  void run_split(const T* src, int stride, Split<V> dst, const T& scale, T* work) const;

 private:
  struct Pass {
    int radix, m;  // rows of m frequencies become rows of radix * m
    int in_gap;
    Rows rows;
    std::size_t twiddles;  // where in the table
  };
  static constexpr int max_passes = 20;

  void choose_passes(int n);
  // Elements of an array between passes, and room for vectors to stay aligned.
  std::size_t array_size() const { return padded(2 * static_cast<std::size_t>(n_ + largest_radix * gap_) + 64); }
  template <bool Inverse>
  void run_passes(const T* src, T* dst, const T& scale, T* work) const;
  template <bool Inverse>
  void run_packed_passes(const T* src, T* dst, const T& scale, T* work) const;

  int n_ = 0, count_ = 0, gap_ = 0;
  bool split_ = false;
  void (*single_[2][2])(const T*, T*, const T&) = {};  // by direction and whether scaled, when there are no passes
  Pass pass_[max_passes];
  std::size_t work_ = 0;
  Array<T> twiddles_;
  Convolution<T>* convolution_ = nullptr;  // for the rows of the first pass
  Blocked<T>* blocked_ = nullptr;
  Power<T>* power_ = nullptr;
};

}  // namespace qor::fft
