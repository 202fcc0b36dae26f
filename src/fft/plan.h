// What is fixed about complex transforms of one length: the passes, their twiddle factors, the work space.
//
// Lengths whose prime factors are at most 13 run in passes (passes.h): multiples of 4 beyond the largest radix in the
// split layout, others packed. A prime factor above 13 is the first pass, a convolution for each of its rows (prime.h).
// Powers of two from 2^15 are split into blocks that fit the caches (blocked.h).
#pragma once

#include "fft/passes.h"
#include "fft/roots.h"

namespace qor::fft {

inline constexpr int no_memory = -9;
inline constexpr int largest_radix = 16, largest_prime = 13;

// Sizes of parts of the work space, so that each part is aligned.
constexpr std::size_t padded(std::size_t elements) { return (elements + 15) / 16 * 16; }

// The i-th complex factor of a sequence, as products with values of kind C take it.
template <class C, class T>
QOR_INLINE void put_factor(T* out, int i, T re, T im) {
  constexpr int L = simd::lanes<typename C::Vector>;
  out += i / C::values * 2 * L;
  i %= C::values;
  if constexpr (C::values == L) {
    out[i] = re;
    out[L + i] = im;
  } else {
    out[2 * i] = out[2 * i + 1] = re;
    out[L + 2 * i] = -im;
    out[L + 2 * i + 1] = im;
  }
}

// The twiddle factors of a pass (columns() in passes.h) on values of kind C. False without memory.
template <class C, class T>
bool fill_twiddles(T* out, int radix, int m) {
  const Roots roots(static_cast<std::uint32_t>(radix) * static_cast<std::uint32_t>(m));
  if (!roots) return false;
  for (int k = 0; k < m; k += C::values) {
    for (int r = 1; r < radix; ++r, out += 2 * simd::lanes<typename C::Vector>) {
      for (int i = 0; i < C::values; ++i) {
        T re, im;
        roots.get(static_cast<std::uint32_t>(r * (k + i)), re, im);
        put_factor<C>(out, i, re, im);
      }
    }
  }
  return true;
}

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

  // 0 or no_memory.
  int make(int n);
  int length() const { return n_; }
  // Elements of work space that run() needs, aligned to a vector.
  std::size_t work_size() const { return work_; }

  // The transform of src times scale; dst may be src. Inverse has the positive exponent.
  template <bool Inverse>
  QOR_INLINE void run(const T* src, T* dst, const T& scale, T* work) const {
    if (single_[Inverse] != nullptr) return single_[Inverse](src, dst, scale);
    run_passes<Inverse>(src, dst, scale, work);
  }
  // The same in the split layout (and the inverse with real and imaginary parts exchanged), reading every stride-th
  // value. For lengths that are split.
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
  template <bool Inverse, class In, class Last>
  void run_split_passes(In in, Last last, const T& scale, T* work) const;
  template <bool Inverse>
  void run_packed_passes(const T* src, T* dst, const T& scale, T* work) const;

  int n_ = 0, count_ = 0, gap_ = 0;
  bool split_ = false;
  void (*single_[2])(const T*, T*, const T&) = {};  // forward and inverse, when one butterfly is all
  Pass pass_[max_passes];
  std::size_t work_ = 0;
  Array<T> twiddles_;
  Convolution<T>* convolution_ = nullptr;  // for the rows of the first pass
  Blocked<T>* blocked_ = nullptr;
};

}  // namespace qor::fft
