// Transforms down the columns of an array, several columns at once: a lane of a register is a column, so that nothing is
// shuffled but on the way in and out, where real and imaginary parts part and meet.
//
// n = R1 R2 ... Rs by decimation in time, in a buffer of n rows: the first pass reads the array's rows in the order of
// their reversed digits, the passes between run in place, the last one writes the array's rows in order.
#pragma once

#include <algorithm>

#include "fft/create.h"
#include "fft/plan.h"

namespace qor::dft {

// Complex numbers in the caller's array: a column goes `down`, the next one is `across`, both in reals.
template <class T>
struct Grid {
  T* p;
  std::ptrdiff_t down, across;
};

template <class T>
class Columns {
 public:
  using V = simd::Vec<T>;
  static constexpr int lanes = simd::lanes<V>;

  Columns() = default;
  ~Columns() { fft::destroy(lines_); }
  Columns(const Columns&) = delete;
  Columns& operator=(const Columns&) = delete;

  // 0 or fft::no_memory.
  int make(int n);
  int length() const { return n_; }
  // How many columns it is best to give to run(): 128 bytes of a row, more of short columns so that the buffer has 16
  // KiB, and few of long ones, which overflow the caches.
  int at_once() const { return n_ <= longest_at_once ? std::clamp(512 / n_, 4, 16) * lanes : lanes; }
  // Reals that run() needs.
  std::size_t work_size() const { return work_; }

  // Are rows done best as columns, several at once, and how many of them?
  bool serves_rows() const { return lines_ == nullptr && n_ <= (sizeof(T) == 8 ? 128 : 512); }
  int rows_at_once() const { return n_ <= 64 ? at_once() : 2 * lanes; }

  // Transforms up to at_once() columns, a multiple of `lanes`, times scale. The arrays are the same or apart.
  template <bool Inverse>
  void run(Grid<const T> in, Grid<T> out, int columns, T scale, T* work) const;

 private:
  struct Pass {
    int radix, m;
    std::size_t twiddles;
  };
  static constexpr int longest_at_once = 65536, most_passes = 20, gap = 4 * lanes;

  void choose_passes(int n);
  bool make_tables();
  template <bool Inverse>
  void run_lines(Grid<const T> in, Grid<T> out, int columns, T scale, T* work) const;

  int n_ = 0, count_ = 0;
  Pass pass_[most_passes];
  fft::Array<T> twiddles_;
  fft::Array<int> place_;          // of each group of the first pass: the block of the buffer
  fft::Plan<T>* lines_ = nullptr;  // long ones and those with large prime factors: one after the other
  std::size_t work_ = 0;
};

}  // namespace qor::dft
