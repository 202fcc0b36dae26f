// Transforms of 2^o points that exceed the caches. The points that are congruent modulo 2^m form 2^m blocks of 2^b
// points each, which are transformed one by one; then the m merging levels are done for 2^g columns of the blocks at a
// time.
#pragma once

#include "fft/plan.h"

namespace qor::fft {

struct Blocking {
  int order, merge, group;
};
inline constexpr Blocking blockings[] = {{15, 6, 5}, {16, 6, 5}, {17, 4, 6}, {18, 4, 6},
                                         {19, 6, 7}, {20, 6, 7}, {21, 8, 6}};
inline constexpr int least_blocked_order = blockings[0].order;

template <class T>
class Blocked {
 public:
  using V = simd::Vec<T>;

  int make(int order) {
    const Blocking& row = blockings[order < 21 ? order - least_blocked_order : 6];
    const int b = order - row.merge;
    size_ = 1 << b;
    pitch_ = size_ + 16;
    group_ = 1 << row.group;
    levels_ = row.merge == 4 ? 1 : 2;
    radix_ = row.merge == 6 ? 8 : 16;
    const std::size_t second = factors(size_);
    twiddles_ = Array<T>(second + (levels_ == 2 ? factors(radix_ * size_) : 0));
    if (!twiddles_ || block_.make(size_, true) != 0) return no_memory;
    if (!fill_twiddles<Complex<V>>(twiddles_.get(), radix_, size_)) return no_memory;
    if (levels_ == 2 && !fill_twiddles<Complex<V>>(twiddles_.get() + second, radix_, radix_ * size_)) return no_memory;
    return 0;
  }
  std::size_t work_size() const { return rows_size() + scratch_size() + block_.work_size(); }

  template <bool Inverse>
  void run(const T* src, T* dst, const T& scale, T* work) const {
    const Split<V> rows{work}, scratch{work + rows_size()};
    T* const rest = work + rows_size() + scratch_size();
    const int blocks = levels_ == 2 ? radix_ * radix_ : radix_;
    for (int r = 0; r < blocks; ++r) {
      block_.template run_split<Inverse>(src + 2 * r, blocks, rows + r * pitch_, scale, rest);
    }
    const Pairs<V, Inverse> out{dst};
    if (radix_ == 8) {
      merge<8>(rows, scratch, out);
    } else {
      merge<16>(rows, scratch, out);
    }
  }

 private:
  template <int R, class Out>
  [[gnu::noinline]] void merge(Split<V> rows, Split<V> scratch, Out out) const {
    const Split<V> twiddles{twiddles_.get()}, second{twiddles_.get() + factors(size_)};
    if (levels_ == 1) {
      columns<R>(rows, pitch_, out, size_, twiddles, size_);
      return;
    }
    const int pitch = group_ + 8;
    for (int k = 0; k < size_; k += group_) {
      for (int j = 0; j < R; ++j) {
        columns<R>(rows + (j * pitch_ + k), R * pitch_, scratch + j * R * pitch, pitch, twiddles + k * (R - 1), group_);
      }
      for (int u = 0; u < R; ++u) {
        columns<R>(scratch + u * pitch, R * pitch, out + (u * size_ + k), R * size_, second + (u * size_ + k) * (R - 1),
                   group_);
      }
    }
  }
  std::size_t factors(int m) const { return 2 * static_cast<std::size_t>(radix_ - 1) * static_cast<std::size_t>(m); }
  std::size_t rows_size() const {
    return 2 * static_cast<std::size_t>(levels_ == 2 ? radix_ * radix_ : radix_) * static_cast<std::size_t>(pitch_);
  }
  std::size_t scratch_size() const {
    return levels_ == 1 ? 0 : 2 * static_cast<std::size_t>(radix_ * radix_) * static_cast<std::size_t>(group_ + 8);
  }

  int size_ = 0, pitch_ = 0, group_ = 0, levels_ = 1, radix_ = 0;
  Plan<T> block_;
  Array<T> twiddles_;  // of the first merging pass and of the second
};

}  // namespace qor::fft
