// What is fixed about real transforms of one power of two that run in passes of their own (real_passes.h): radices and
// twiddle factors. Small ones go through all passes with the whole array. Large ones are split in two: the first passes
// are done for a few neighbouring columns at a time, the others for a few neighbouring frequencies at a time, so that
// each half reads and writes the memory once (D. H. Bailey, 1990).
#pragma once

#include <algorithm>
#include <iterator>

#include "fft/plan.h"
#include "fft/real_passes.h"

namespace qor::fft {

// Calls f with the radix 2^order as a constant.
template <int... Orders, class F>
QOR_INLINE void with_order(int order, F f) {
  ((order == Orders ? f(std::integral_constant<int, 1 << Orders>()) : void()), ...);
}

struct RealPass {
  int order, m, rows;  // spectra of m values become `rows` of 2^order m values
  std::size_t twiddles;
  int radix() const { return 1 << order; }
};

// The rows of a pass as the one behind it wants them; last: that one is the last.
template <class V>
constexpr Order order_for(int rows, int next_radix, bool last) {
  const int vectors = rows / lanes<V>;
  return last ? Order{vectors, 1} : Order{next_radix, vectors / next_radix};
}

template <bool Inverse, bool Spread, class V>
inline void run_columns(int order, V* narrow, int pitch, const Wide<V>& wide, const V* twiddles, int count,
                        Order rows) {
  with_order<2, 3>(order,
                   [&](auto R) { real_columns<R, Inverse, Spread>(narrow, pitch, wide, twiddles, count, rows); });
}
// All frequencies of a pass; frequency k of the wide side is k * wide_pitch behind its start.
template <bool Inverse, class V>
inline void run_pass(const RealPass& p, V* narrow, int pitch, V* wide, int wide_pitch, const V* twiddles, Order rows) {
  const int apart = p.m * wide_pitch;
  with_order<2, 3>(p.order, [&](auto R) { real_ends<R, Inverse>(narrow, wide, apart, rows); });
  if (p.m > 2) {
    run_columns<Inverse, false>(p.order, narrow + pitch, pitch,
                                Wide<V>{wide + wide_pitch, wide + (p.m - 1) * wide_pitch, wide_pitch, apart}, twiddles,
                                p.m / 2 - 1, rows);
  }
}

// The factors of r = 1 .. radix - 1 for one register, whose lanes have the frequencies k, k + step, ...: the roots
// r k turns.
template <class V, class T>
T* put_real_factors(T* out, const Roots& roots, int turns, int radix, int k, int step) {
  for (int r = 1; r < radix; ++r, out += 2 * lanes<V>) {
    for (int l = 0; l < lanes<V>; ++l) {
      if (l == 0 || step != 0) {
        roots.get(static_cast<std::uint32_t>(r * (k + l * step) * turns), out[l], out[lanes<V> + l]);
      } else {
        out[l] = out[0];
        out[lanes<V> + l] = out[lanes<V>];
      }
    }
  }
  return out;
}

// The passes from spectra of m values on to one of n.
template <class T>
class RealPasses {
 public:
  using V = simd::Vec<T>;
  static constexpr int L = simd::lanes<V>;

  int make(int n, int m, const char* orders) {
    n_ = n;
    std::size_t total = 0;
    for (const char* o = orders; *o != 0; ++o) {
      const int order = *o - '0', radix = 1 << order;
      pass_[count_++] = {order, m, n / (m * radix), total};
      total +=
          static_cast<std::size_t>(o[1] != 0 ? m / 2 : m / 2 / L + 1) * static_cast<std::size_t>(2 * L * (radix - 1));
      m *= radix;
    }
    const Roots roots(static_cast<std::uint32_t>(n));
    twiddles_ = Array<T>(total);
    if (!roots || !twiddles_) return no_memory;
    for (int i = 0; i < count_; ++i) {
      const RealPass& p = pass_[i];
      T* out = twiddles_.get() + p.twiddles;
      if (i + 1 < count_) {
        for (int k = 1; k < p.m / 2; ++k) out = put_real_factors<V>(out, roots, p.rows, p.radix(), k, 0);
      } else {
        for (int k = 1; k + L <= p.m / 2; k += L) out = put_real_factors<V>(out, roots, p.rows, p.radix(), k, 1);
        put_real_factors<V>(out, roots, p.rows, p.radix(), last_start(p.m), 1);
      }
    }
    return 0;
  }
  int first_radix() const { return pass_[0].radix(); }
  // Elements of each of the two arrays x and y.
  std::size_t array_size() const { return static_cast<std::size_t>(n_) + 128; }

  // From x, rows in the order that the first pass takes, to the caller's array. Overwrites x and y.
  void forward(V* x, V* y, T* out) const {
    for (int i = 0; i + 1 < count_; ++i, std::swap(x, y)) {
      const RealPass& p = pass_[i];
      run_pass<false>(p, x, pitch(p.rows * p.radix()), y, pitch(p.rows), factors(i), rows(i));
    }
    const RealPass& p = pass_[count_ - 1];
    with_order<2, 3>(p.order, [&](auto R) { last<R>(x, out, p.m, factors(count_ - 1)); });
  }
  // The reverse. Returns which of x and y holds the result.
  V* inverse(const T* in, const T& zero, const T& middle, V* x, V* y) const {
    const RealPass& p = pass_[count_ - 1];
    with_order<2, 3>(p.order, [&](auto R) { first_inverse<R>(in, zero, middle, x, p.m, factors(count_ - 1)); });
    for (int i = count_ - 2; i >= 0; --i, std::swap(x, y)) {
      const RealPass& q = pass_[i];
      run_pass<true>(q, y, pitch(q.rows * q.radix()), x, pitch(q.rows), factors(i), rows(i));
    }
    return x;
  }
  // The last pass of the forward transform and the first of the inverse.
  template <int R>
  QOR_INLINE static void last(const V* x, T* out, int m, const V* w) {
    const int whole = (m / 2 - 1) / L, k = last_start(m);
    if (whole > 0) real_last<R>(x + pitch(R), out, 1, m, w, whole);
    real_last<R>(x + k * pitch(R), out, k, m, w + whole * 2 * (R - 1), 1);
    real_last_ends<R>(x, out, m);
  }
  template <int R>
  QOR_INLINE static void first_inverse(const T* in, const T& zero, const T& middle, V* x, int m, const V* w) {
    const int whole = (m / 2 - 1) / L, k = last_start(m);
    if (whole > 0) real_first_inverse<R>(in, x + pitch(R), 1, m, w, whole);
    real_first_inverse<R>(in, x + k * pitch(R), k, m, w + whole * 2 * (R - 1), 1);
    real_first_inverse_ends<R>(in, zero, middle, x, m);
  }
  const V* factors(int i) const { return as_vectors<V>(static_cast<const T*>(twiddles_.get() + pass_[i].twiddles)); }

 private:
  static constexpr int pitch(int rows) { return 2 * rows / L; }
  // The last vector of frequencies ends at m/2 - 1. (A vector longer than that begins at 1: what it says beyond is
  // overwritten.)
  static constexpr int last_start(int m) { return m / 2 > L ? m / 2 - L : 1; }
  Order rows(int i) const { return order_for<V>(pass_[i].rows, pass_[i + 1].radix(), i + 2 == count_); }

  int n_ = 0, count_ = 0;
  RealPass pass_[8];
  Array<T> twiddles_;
};

// Small transforms.
template <class T>
class SmallReal {
 public:
  using V = simd::Vec<T>;
  static constexpr int L = simd::lanes<V>;

  int make(int n, const char* orders) {
    order_ = orders[0] - '0';
    apart_ = n >> order_;
    if (passes_.make(n, 1 << order_, orders + 1) != 0) return no_memory;
    const int next = passes_.first_radix();
    const Order o = order_for<V>(apart_, next, orders[2] == 0);
    rows_ = {o.next, o.vectors * L, 1, 0, o.vectors};
    return 0;
  }
  std::size_t work_size() const { return 2 * padded(passes_.array_size()); }
  void forward(const T* src, T* dst, const T& scale, T* work) const {
    V *const x = as_vectors<V>(work), *const y = as_vectors<V>(work + work_size() / 2);
    // The last pass may look behind what there is.
    std::fill_n(x + (apart_ << order_) / L, 2, V{});
    if (apart_ == two_rows) {
      with_order<3, 4>(order_, [&](auto R) {
        real_first<R>(src, two_rows, x, 2 * two_rows / L, FirstRows{two_rows / L, L, 1, 0, 1}, scale);
        RealPasses<T>::template last<two_rows>(x, dst, R, passes_.factors(0));
      });
      return;
    }
    with_order<3, 4>(order_, [&](auto R) { real_first<R>(src, apart_, x, 2 * apart_ / L, rows_, scale); });
    passes_.forward(x, y, dst);
  }
  void inverse(const T* src, const T& zero, const T& middle, T* dst, const T& scale, T* work) const {
    V *const x = as_vectors<V>(work), *const y = as_vectors<V>(work + work_size() / 2);
    if (apart_ == two_rows) {
      with_order<3, 4>(order_, [&](auto R) {
        RealPasses<T>::template first_inverse<two_rows>(src, zero, middle, x, R, passes_.factors(0));
        real_last_inverse<R>(x, 2 * two_rows / L, dst, two_rows, FirstRows{two_rows / L, L, 1, 0, 1}, scale);
      });
      return;
    }
    const V* const z = passes_.inverse(src, zero, middle, x, y);
    with_order<3, 4>(order_, [&](auto R) { real_last_inverse<R>(z, 2 * apart_ / L, dst, apart_, rows_, scale); });
  }

 private:
  // Of the smallest transforms, of two passes, the second of radix 4: everything is a constant.
  static constexpr int two_rows = 4;

  int order_ = 0, apart_ = 0;
  FirstRows rows_{};
  RealPasses<T> passes_;
};

// Large transforms: n = points * columns, `group` columns and `together` frequencies at a time.
struct Halves {
  int points, group, together;  // the order of the points
};
// Of orders 16 to 22. Found by measuring.
inline constexpr Halves halves_of[] = {{8, 32, 16}, {8, 64, 16}, {8, 64, 16}, {9, 64, 16},
                                       {9, 64, 32}, {9, 64, 32}, {10, 64, 32}};
inline constexpr int least_halved = 16;
// Passes of an order as digits, threes and one or two twos, if need be.
struct Digits {
  char text[12] = {};
  constexpr Digits(int order, bool twos_first) {
    const int twos = (3 - order % 3) % 3, threes = (order - 2 * twos) / 3;
    for (int i = 0; i < twos + threes; ++i) text[i] = (twos_first ? i < twos : i >= threes) ? '2' : '3';
  }
};

template <class T>
class LargeReal {
 public:
  using V = simd::Vec<T>;
  static constexpr int L = simd::lanes<V>;

  // 2^order values.
  int make(int n, int order) {
    constexpr int known = least_halved + static_cast<int>(std::size(halves_of)) - 1;
    const Halves& halves = halves_of[std::min(order, known) - least_halved];
    const int points = order <= known ? halves.points : order / 2;
    return make(n, Digits(points, false).text, Digits(order - points, true).text, halves.group, halves.together);
  }
  // Orders of the passes over columns and over frequencies; sizes of groups.
  int make(int n, const char* column_orders, const char* frequency_orders, int group, int together) {
    n_ = n;
    group_ = group;
    together_ = together;
    order_ = column_orders[0] - '0';
    int m = 1 << order_;
    for (const char* o = column_orders + 1; *o != 0; ++o) pass_[columns_count_++] = {*o - '0', 0, 0, 0};
    count_ = columns_count_;
    for (const char* o = frequency_orders; *o != 0; ++o) pass_[count_++] = {*o - '0', 0, 0, 0};
    std::size_t total = 0;
    for (int i = 0; i < count_; ++i) {
      RealPass& p = pass_[i];
      p.m = m;
      p.rows = n / (m * p.radix());
      p.twiddles = total;
      if (i == columns_count_) points_ = m;
      const bool vectors = i + 1 == count_;
      total +=
          static_cast<std::size_t>(vectors ? m / 2 / L : m / 2) * static_cast<std::size_t>(2 * L * (p.radix() - 1));
      m *= p.radix();
    }
    columns_ = n / points_;
    pitch_ = 2 * columns_ / L + 8;
    for (int i = 0; i < columns_count_; ++i) pass_[i].rows = pass_[i].rows / columns_ * group_;
    ranges_ = Array<Range>(static_cast<std::size_t>(columns_));
    const Roots roots(static_cast<std::uint32_t>(n));
    twiddles_ = Array<T>(total);
    if (!roots || !ranges_ || !twiddles_ || ends_.make(2 * columns_, 2, frequency_orders) != 0) return no_memory;
    for (int i = 0; i < columns_count_; ++i) {
      const RealPass& p = pass_[i];
      T* out = twiddles_.get() + p.twiddles;
      for (int k = 1; k < p.m / 2; ++k) out = put_real_factors<V>(out, roots, n / (p.m * p.radix()), p.radix(), k, 0);
    }
    Range* const range = ranges_.get();
    int ranges = 1;
    range[0] = {1, 1};
    for (int i = columns_count_; i < count_; ++i) {
      const RealPass& p = pass_[i];
      T* out = twiddles_.get() + p.twiddles;
      for (int g = 0; g < groups(); ++g) {
        for (int j = 0; j < ranges; ++j) {
          const int start = range[j].start(first_frequency(g));
          if (i + 1 < count_) {
            for (int k = 0; k < together_; ++k) {
              out = put_real_factors<V>(out, roots, p.rows, p.radix(), start + k, 0);
            }
          } else {
            for (int k = 0; k < together_; k += L) {
              out = put_real_factors<V>(out, roots, p.rows, p.radix(), start + k, 1);
            }
          }
        }
      }
      if (i + 1 == count_) break;
      for (int u = p.radix() / 2 - 1; u >= 0; --u) {
        for (int j = 0; j < ranges; ++j) {
          const Range& from = range[j];
          Range* const to = range + 2 * u * ranges;
          to[2 * ranges - 1 - j] = {(u + 1) * p.m - from.base - (together_ - 1), -from.sign};
          to[j] = {u * p.m + from.base, from.sign};
        }
      }
      ranges *= p.radix();
    }
    ranges_count_ = ranges;
    return 0;
  }
  std::size_t work_size() const { return wide_size() + 2 * scratch_size(); }

  void forward(const T* src, T* dst, const T& scale, T* work) const {
    const Arrays a = arrays(work);
    for (int column = 0; column < columns_; column += group_) {
      with_order<3, 4>(order_, [&](auto R) {
        real_first<R>(src + column, n_ / R, a.x, 2 * points_ / R * group_ / L, first_rows(), scale);
      });
      V *x = a.x, *y = a.y;
      for (int i = 0; i < columns_count_; ++i, std::swap(x, y)) column_pass<false>(i, x, y, a.wide + 2 * column / L);
    }
    V* const spare = a.y + scratch_size() / L / 2;
    each_row([&](int natural, int ordered) { a.x[ordered] = a.wide[natural]; });
    T* const ends = reinterpret_cast<T*>(a.y);
    ends_.forward(a.x, spare, ends);
    dst[1] = ends[1];
    for (int i = 0; i < columns_; ++i) {
      dst[i * points_] = ends[2 * i];
      if (i > 0) dst[i * points_ + 1] = ends[2 * i + 1];
    }
    for (int g = 0; g < groups(); ++g) {
      V *x = a.wide + first_frequency(g) * pitch_, *y = a.x, *z = a.y;
      for (int i = columns_count_; i + 1 < count_; ++i) {
        frequency_pass<false>(i, g, x, y);
        x = y;
        std::swap(y, z);
      }
      each_range(g, [&](auto R, int k, int m, int offset, const V* w) {
        real_last<R>(x + offset, dst, k, m, w, together_ / L);
      });
    }
  }
  void inverse(const T* src, const T& zero, const T& middle, T* dst, const T& scale, T* work) const {
    const Arrays a = arrays(work);
    T* const ends = reinterpret_cast<T*>(a.y);
    for (int i = 0; i < columns_; ++i) {
      ends[2 * i] = src[i * points_];
      ends[2 * i + 1] = src[i * points_ + 1];
    }
    const V* const first = ends_.inverse(ends, zero, middle, a.x, a.y + scratch_size() / L / 2);
    each_row([&](int natural, int ordered) { a.wide[natural] = first[ordered]; });
    for (int g = 0; g < groups(); ++g) {
      V *x = a.x, *y = a.y;
      each_range(g, [&](auto R, int k, int m, int offset, const V* w) {
        real_first_inverse<R>(src, x + offset, k, m, w, together_ / L);
      });
      for (int i = count_ - 2; i >= columns_count_; --i, std::swap(x, y)) {
        frequency_pass<true>(i, g, i == columns_count_ ? a.wide + first_frequency(g) * pitch_ : y, x);
      }
    }
    for (int column = 0; column < columns_; column += group_) {
      V *x = a.x, *y = a.y;
      for (int i = columns_count_ - 1; i >= 0; --i, std::swap(x, y))
        column_pass<true>(i, x, y, a.wide + 2 * column / L);
      with_order<3, 4>(order_, [&](auto R) {
        real_last_inverse<R>(y, 2 * points_ / R * group_ / L, dst + column, n_ / R, first_rows(), scale);
      });
    }
  }

 private:
  // Neighbouring frequencies in the scratch space: those of the group from frequency k on start at base + sign (k - 1).
  struct Range {
    int base, sign;
    int start(int k) const { return base + sign * (k - 1); }
  };
  struct Arrays {
    V *wide, *x, *y;
  };
  int groups() const { return points_ / 2 / together_; }
  int first_frequency(int g) const { return std::min(1 + g * together_, points_ / 2 - together_); }
  std::size_t wide_size() const { return padded(static_cast<std::size_t>(points_ / 2 * pitch_ * L)); }
  std::size_t scratch_size() const {
    return padded(static_cast<std::size_t>(std::max(points_ * group_, columns_ * 2 * together_)) + 512);
  }
  Arrays arrays(T* work) const {
    T* const x = work + wide_size();
    return {as_vectors<V>(work), as_vectors<V>(x), as_vectors<V>(x + scratch_size())};
  }
  const V* factors(int i) const { return as_vectors<V>(static_cast<const T*>(twiddles_.get() + pass_[i].twiddles)); }
  FirstRows first_rows() const {
    const int next = pass_[0].radix(), count = points_ >> order_;
    return {next, count / next * columns_, count / next, columns_, group_ / L};
  }
  // Rows of the first pass over frequencies in their natural order and in that of the pass: f(natural, ordered).
  template <class F>
  QOR_INLINE void each_row(F f) const {
    const int radix = pass_[columns_count_].radix(), vectors = columns_ / L / radix;
    for (int j = 0; j < vectors; ++j) {
      for (int r = 0; r < radix; ++r) {
        const int from = 2 * (r * vectors + j), to = 2 * (j * radix + r);
        f(from, to);
        f(from + 1, to + 1);
      }
    }
  }
  // A pass over a group of columns; the last one has its wide side at `all` instead of wide.
  template <bool Inverse>
  void column_pass(int i, V* narrow, V* wide, V* all) const {
    const RealPass &p = pass_[i], &next = pass_[i + 1];
    const bool last = i + 1 == columns_count_;
    run_pass<Inverse>(p, narrow, 2 * p.rows * p.radix() / L, last ? all : wide, last ? pitch_ : 2 * p.rows / L,
                      factors(i), order_for<V>(p.rows, next.radix(), last));
  }
  // A pass over a group of frequencies, but the last.
  template <bool Inverse>
  void frequency_pass(int i, int g, V* narrow, V* wide) const {
    const RealPass& p = pass_[i];
    const int count = p.m / points_ * together_, pitch = 2 * p.rows / L;
    const Wide<V> to{wide, wide + (2 * count - 1) * pitch, pitch, 2 * count * pitch};
    const V* const w = factors(i) + g * count * 2 * (p.radix() - 1);
    const Order rows = order_for<V>(p.rows, pass_[i + 1].radix(), i + 2 == count_);
    if (i == columns_count_) {
      run_columns<Inverse, true>(p.order, narrow, pitch_, to, w, count, rows);
    } else {
      run_columns<Inverse, false>(p.order, narrow, pitch * p.radix(), to, w, count, rows);
    }
  }
  // The last pass over a group of frequencies: f(radix, frequency, m, offset in the scratch space, twiddle factors).
  template <class F>
  QOR_INLINE void each_range(int g, F f) const {
    const RealPass& p = pass_[count_ - 1];
    with_order<2, 3>(p.order, [&](auto R) {
      const V* w = factors(count_ - 1) + g * ranges_count_ * (together_ / L) * 2 * (R - 1);
      for (int j = 0; j < ranges_count_; ++j, w += together_ / L * 2 * (R - 1)) {
        f(R, ranges_.get()[j].start(first_frequency(g)), p.m, j * together_ * (2 * R / L), w);
      }
    });
  }

  int n_ = 0, points_ = 0, columns_ = 0, group_ = 0, together_ = 0, pitch_ = 0;
  int order_ = 0, columns_count_ = 0, count_ = 0, ranges_count_ = 0;
  RealPass pass_[12];
  RealPasses<T> ends_;
  Array<Range> ranges_;
  Array<T> twiddles_;
};

}  // namespace qor::fft
