#include "rng/distributions/gaussian_mv.h"

#include <algorithm>

#include "base/owned.h"
#include "numeric/mxcsr.h"
#include "rng/distributions/gaussian.h"
#include "rng/streams/status.h"
#include "simd/vec.h"

namespace qor::rng {
namespace {

using simd::splat;
using simd::Vec;

// The product of the factor with the vectors, in place. The factor's rows are taken in panels of two registers' height,
// from the last to the first: a panel needs of each vector only what is left of it and above, which later panels leave
// alone. A panel is copied column by column, with zeros above the diagonal, and then serves all vectors, three at a
// time, whose sums stay in registers.
template <class T>
class Product {
  using V = Vec<T>;
  static constexpr int lanes = simd::lanes<V>;

 public:
  static constexpr int rows = 2 * lanes;

  Product(int d, int storage, const T* a, const T* factor, T* panel)
      : d_(d), packed_(storage == QOR_RNG_STORAGE_PACKED), a_(a), factor_(factor), panel_(panel) {}

  void apply(int n, T* r) {
    // So many vectors that they stay in the second-level cache while the panels pass.
    const int group = std::max(24, 65536 / d_ / 3 * 3);
    for (int j = 0; j < n; j += group) {
      T* const z = r + static_cast<std::ptrdiff_t>(j) * d_;
      const int count = std::min(group, n - j);
      for (int first = (d_ - 1) / rows * rows; first >= 0; first -= rows) {
        const int height = std::min(rows, d_ - first);
        copy_panel(first, height);
        int i = 0;
        for (; i <= count - 3; i += 3) multiply<3>(first, height, z + static_cast<std::ptrdiff_t>(i) * d_);
        for (; i < count; ++i) multiply<1>(first, height, z + static_cast<std::ptrdiff_t>(i) * d_);
      }
    }
  }

 private:
  // Rows first .. first + height - 1, columns 0 .. first + height - 1: column k at panel_ + k * rows.
  void copy_panel(int first, int height) {
    for (int i = 0; i < height; ++i) {
      const int row = first + i;
      const T* const full = factor_ + static_cast<std::ptrdiff_t>(row) * d_;
      const T* column = factor_ + row;  // element (row, k) of the packed columns, whose k-th has d - k elements
      for (int k = 0; k < first + height; ++k) {
        T& to = panel_[k * rows + i];
        if (k > row) {
          to = 0;
        } else if (packed_) {
          to = *column;
          column += d_ - k - 1;
        } else {
          to = full[k];
        }
      }
    }
    for (int k = 0; k < first + height; ++k) std::fill(panel_ + k * rows + height, panel_ + (k + 1) * rows, T(0));
  }

  template <int N>
  QOR_INLINE void multiply(int first, int height, T* z) const {
    V low[N], high[N];
    for (int v = 0; v < N; ++v) low[v] = high[v] = V{};
    const T* column = panel_;
    for (int k = 0; k < first + height; ++k, column += rows) {
      for (int v = 0; v < N; ++v) {
        const V element = simd::broadcast<V>(z + static_cast<std::ptrdiff_t>(v) * d_ + k);
        low[v] += simd::load_aligned<V>(column) * element;
        high[v] += simd::load_aligned<V>(column + lanes) * element;
      }
    }
    for (int v = 0; v < N; ++v) {
      alignas(16) T sum[rows];
      simd::store(sum, low[v]);
      simd::store(sum + lanes, high[v]);
      T* const out = z + static_cast<std::ptrdiff_t>(v) * d_ + first;
      for (int i = 0; i < height; ++i) out[i] = sum[i] + a_[first + i];
    }
  }

  int d_;
  bool packed_;
  const T *a_, *factor_;
  T* panel_;
};

constexpr int on_stack = 1024;  // from this dimension on the panel is on the heap

template <class T>
int triangular(int n, T* r, int d, int storage, const T* a, const T* factor) {
  constexpr int rows = Product<T>::rows;
  const numeric::MxcsrGuard nearest;
  if (d < on_stack) {
    alignas(16) T panel[on_stack * rows];
    Product<T>(d, storage, a, factor, panel).apply(n, r);
    return status::ok;
  }
  const auto panel = Owned<T>::allocate(static_cast<std::size_t>(d) * rows * sizeof(T) + 16);
  if (!panel) return status::no_memory;
  const auto aligned = (reinterpret_cast<std::uintptr_t>(panel.get()) + 15) & ~std::uintptr_t{15};
  Product<T>(d, storage, a, factor, reinterpret_cast<T*>(aligned)).apply(n, r);
  return status::ok;
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
    case QOR_RNG_STORAGE_PACKED: {
      const int done = triangular(n, r, d, storage, a, factor);
      return done < 0 ? done : status;
    }
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
