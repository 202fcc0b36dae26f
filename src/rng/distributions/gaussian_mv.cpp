#include "rng/distributions/gaussian_mv.h"

#include <algorithm>

#include "numeric/mxcsr.h"
#include "rng/distributions/gaussian.h"
#include "simd/vec.h"

namespace qor::rng {
namespace {

using simd::Vec;

// Two registers of sums for each of N vectors, as members one by one: an array would live in memory.
template <class V, int N>
struct Sums {
  using T = simd::lane_t<V>;
  static constexpr int lanes = simd::lanes<V>;
  V low, high;
  Sums<V, N - 1> next;
  QOR_INLINE explicit Sums(const T* p)
      : low(simd::load_aligned<V>(p)), high(simd::load_aligned<V>(p + lanes)), next(p + 2 * lanes) {}
  // Adds the column times an element of each vector.
  QOR_INLINE void add(const T* column, const T* z, std::ptrdiff_t stride) {
    const V element = simd::broadcast<V>(z);
    low += simd::load_aligned<V>(column) * element;
    high += simd::load_aligned<V>(column + lanes) * element;
    simd::keep_order();
    next.add(column, z + stride, stride);
  }
  QOR_INLINE void store(T* p) const {
    simd::store(p, low);
    simd::store(p + lanes, high);
    next.store(p + 2 * lanes);
  }
};
template <class V>
struct Sums<V, 0> {
  template <class T>
  QOR_INLINE explicit Sums(const T*) {}
  template <class T>
  QOR_INLINE void add(const T*, const T*, std::ptrdiff_t) {}
  template <class T>
  QOR_INLINE void store(T*) const {}
};

// The product of the factor with the vectors, in place. The factor's rows are taken in panels of two registers' height,
// from the last to the first: a panel needs of each vector only what is left of it and above, which later panels leave
// alone. A panel is copied, a stretch of columns at a time, column by column with zeros above the diagonal, and then
// serves a group of vectors, three at a time, whose sums stay in registers.
template <class T>
class Product {
  using V = Vec<T>;
  static constexpr int lanes = simd::lanes<V>, rows = 2 * lanes;
  static constexpr int stretch = 512;     // columns: the copy fits the first-level cache, with the vectors
  static constexpr int most_group = 255;  // vectors: a multiple of three

 public:
  Product(int d, int storage, const T* a, const T* factor)
      : d_(d), packed_(storage == QOR_RNG_STORAGE_PACKED), a_(a), factor_(factor) {}

  void apply(int n, T* r) {
    const int group = std::clamp(98304 / d_ / 3 * 3, 24, most_group);  // stays in the second-level cache
    for (int j = 0; j < n; j += group) {
      T* const z = r + static_cast<std::ptrdiff_t>(j) * d_;
      const int count = std::min(group, n - j);
      for (int first = (d_ - 1) / rows * rows; first >= 0; first -= rows) panel(first, count, z);
    }
  }

 private:
  void panel(int first, int count, T* z) {
    const int height = std::min(rows, d_ - first), columns = first + height;
    for (int k = 0; k < columns; k += stretch) {
      const int wide = std::min(stretch, columns - k);
      copy_columns(first, height, k, wide);
      if (k == 0) std::fill_n(sums_, count * rows, T(0));
      const T* at = z + k;
      int i = 0;
      for (; i <= count - 3; i += 3, at += 3 * static_cast<std::ptrdiff_t>(d_)) {
        add<3>(columns_, columns_ + wide * rows, at, d_, sums_ + i * rows);
      }
      for (; i < count; ++i, at += d_) add<1>(columns_, columns_ + wide * rows, at, d_, sums_ + i * rows);
    }
    T* out = z + first;
    for (int i = 0; i < count; ++i, out += d_) {
      for (int l = 0; l < height; ++l) out[l] = sums_[i * rows + l] + a_[first + l];
    }
  }

  // Rows from `first` on, columns from `from` on; column k at columns_ + (k - from) * rows.
  void copy_columns(int first, int height, int from, int wide) {
    T* to = columns_;
    for (int k = from; k < from + wide; ++k, to += rows) {
      // Element (i, k) is at column[i * step].
      const auto row = static_cast<std::ptrdiff_t>(k);
      const T* const column = packed_ ? factor_ + row * (2 * d_ - row - 1) / 2 : factor_ + row;
      const std::ptrdiff_t step = packed_ ? 1 : d_;
      for (int i = 0; i < rows; ++i) to[i] = i < height && first + i >= k ? column[(first + i) * step] : T(0);
    }
  }

  // sums[v] += the columns' product with vector v, N of them `stride` apart. A function of its own, and order within
  // it, leave every register to the loop.
  template <int N>
  [[gnu::noinline]] static void add(const T* column, const T* end, const T* z, std::ptrdiff_t stride, T* sums) {
    Sums<V, N> of(sums);
    for (; column != end; column += rows, ++z) of.add(column, z, stride);
    of.store(sums);
  }

  int d_;
  bool packed_;
  const T *a_, *factor_;
  alignas(16) T columns_[stretch * rows], sums_[most_group * rows];
};

template <class T>
void triangular(int n, T* r, int d, int storage, const T* a, const T* factor) {
  const numeric::MxcsrGuard nearest;
  Product<T>(d, storage, a, factor).apply(n, r);
}

template <class T>
void diagonal(int n, T* r, int d, const T* a, const T* factor) {
  const numeric::MxcsrGuard nearest;
  for (int j = 0; j < n; ++j, r += d) {
    for (int i = 0; i < d; ++i) r[i] = r[i] * factor[i] + a[i];
  }
}

}  // namespace

template <class T>
int gaussian_mv(int method, Stream* stream, int n, T* r, int d, int storage, const T* a, const T* factor) {
  if (d == 1) return gaussian(method, stream, n, r, a[0], factor[0]);
  const int status = gaussian(method, stream, n * d, r, T(0), T(1));
  if (status < 0 || n < 1) return status;
  switch (storage) {
    case QOR_RNG_STORAGE_FULL:
    case QOR_RNG_STORAGE_PACKED:
      triangular(n, r, d, storage, a, factor);
      return status;
    case QOR_RNG_STORAGE_DIAGONAL:
      diagonal(n, r, d, a, factor);
      return status;
    default:
      return status;  // on purpose: the numbers stay standard normal
  }
}

template int gaussian_mv<double>(int, Stream*, int, double*, int, int, const double*, const double*);
template int gaussian_mv<float>(int, Stream*, int, float*, int, int, const float*, const float*);

}  // namespace qor::rng
