// Transforms of 2^o points, o from 3 to 14: all at once to 2^6, then in passes on packed values (codelets.h).
#pragma once

#include <cstddef>

#include "fft/codelets.h"
#include "fft/tables.h"

namespace qor::fft {

template <class T>
class Power {
 public:
  using V = simd::Vec<T>;
  using Whole = void (*)(const T*, T*, const T&);

  // For orders that are done in passes: 0 or no_memory.
  int make(int order);
  std::size_t work_size() const { return work_; }
  // The whole transform by direction and whether there is a scale; null from order 7 on.
  using Wholes = Whole[2][2];
  static const Wholes* whole(int order);
  template <bool Inverse>
  void run(const T* src, T* dst, const T& scale, T* work) const;

 private:
  // By direction, the first also by whether there is a scale.
  using First = void (*)(const T*, T*, const T&, const Step<T>&);
  using Later = void (*)(const T*, T*, const Step<T>&);
  struct Kernels {
    First first[2][2];
    Later later[2];
  };
  static constexpr int most_passes = 4;
  static const Kernels& kernels(int radix_order);
  std::size_t array_size() const { return padded(2 * static_cast<std::size_t>((1 << order_) + 32 * gap_)); }

  int order_ = 0, count_ = 0, gap_ = 0;
  std::size_t work_ = 0;
  const Kernels* kernel_[most_passes];
  Step<T> step_[most_passes];
  Array<T> twiddles_;
};

}  // namespace qor::fft
