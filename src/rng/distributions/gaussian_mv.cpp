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

// The lower triangle as it is stored; element (i, k) is column(k)[i].
template <class T>
struct Factor {
  int d;
  bool packed;
  const T* elements;

  struct Column {
    const T* at;
    std::ptrdiff_t step;
    T operator[](int i) const { return at[i * step]; }
  };
  Column column(int k) const {
    const auto c = static_cast<std::ptrdiff_t>(k);
    if (packed) return {elements + c * (2 * d - c - 1) / 2, 1};
    return {elements + c, d};
  }
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
  Product(const Factor<T>& factor, const T* a) : d_(factor.d), a_(a), factor_(factor) {}

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
      const typename Factor<T>::Column column = factor_.column(k);
      for (int i = 0; i < rows; ++i) to[i] = i < height && first + i >= k ? column[first + i] : T(0);
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
  const T* a_;
  Factor<T> factor_;
  alignas(16) T columns_[stretch * rows], sums_[most_group * rows];
};

// The same for few dimensions, with as many vectors side by side as a register has lanes: no product is with a zero.
// Element k of such a group is a register, element (i, k) of the factor another one, the same in all lanes. Rows are
// taken six at a time from the last on, whose sums stay in registers.
template <class T>
class SmallProduct {
  using V = Vec<T>;
  static constexpr int lanes = simd::lanes<V>, rows = 6;
  static constexpr int registers = 512;  // of a block of groups: with the factor in the first-level cache

 public:
  static constexpr int least = lanes, most = 64;  // dimensions

  SmallProduct(const Factor<T>& factor, const T* a) : d_(factor.d), a_(a) {
    V* to = factor_;
    for (int first = 0, height = (d_ - 1) % rows + 1; first < d_; first += height, height = rows) {
      for (int k = 0; k < first + height; ++k) {
        const typename Factor<T>::Column column = factor.column(k);
        for (int i = std::max(first, k); i < first + height; ++i) *to++ = simd::splat<V>(column[i]);
      }
    }
    end_ = to;
  }

  void apply(int n, T* r) {
    int groups = n / lanes;
    for (int count; groups > 0; groups -= count, r += count * lanes * d_) {
      count = std::min(groups, registers / d_);
      block(count, r);
    }
    const int left = n % lanes;
    if (left == 0) return;
    T rest[lanes * most] = {};
    std::copy_n(r, left * d_, rest);
    block(1, rest);
    std::copy_n(rest, left * d_, r);
  }

 private:
  void block(int groups, T* r) {
    gather(groups, d_, r, z_);
    const V* t = end_;
    for (int first = d_ - rows; first >= 0; first -= rows) t = panel<rows>(groups, t, first, d_, z_);
    switch (d_ % rows) {
      case 1:
        panel<1>(groups, t, 0, d_, z_);
        break;
      case 2:
        panel<2>(groups, t, 0, d_, z_);
        break;
      case 3:
        panel<3>(groups, t, 0, d_, z_);
        break;
      case 4:
        panel<4>(groups, t, 0, d_, z_);
        break;
      case 5:
        panel<5>(groups, t, 0, d_, z_);
        break;
      default:
        break;
    }
    scatter(groups, d_, a_, z_, r);
  }

  // f(at) for rows at .. at + lanes - 1 at a time; the last ones overlap those before when d isn't a multiple of the lanes.
  template <class F>
  QOR_INLINE static void by_squares(int d, F f) {
    int at = 0;
    for (; at <= d - lanes; at += lanes) f(at);
    if (at < d) f(d - lanes);
  }
  [[gnu::noinline]] static void gather(int groups, int d, const T* r, V* z) {
    for (; groups > 0; --groups, r += lanes * d, z += d) {
      by_squares(d, [=](int at) {
        V v[lanes];
        for (int l = 0; l < lanes; ++l) v[l] = simd::held(simd::load<V>(r + at + l * d));
        simd::transpose(v);
        for (int l = 0; l < lanes; ++l) z[at + l] = v[l];
      });
    }
  }
  [[gnu::noinline]] static void scatter(int groups, int d, const T* a, const V* z, T* r) {
    for (; groups > 0; --groups, r += lanes * d, z += d) {
      by_squares(d, [=](int at) {
        V v[lanes];
        for (int l = 0; l < lanes; ++l) v[l] = simd::held(z[at + l]);
        simd::transpose(v);
        for (int l = 0; l < lanes; ++l) simd::store(r + at + l * d, v[l] + simd::load<V>(a + at));
      });
    }
  }

  // Rows first .. first + N - 1 of each group; `end` is behind their part of the factor, whose begin is returned.
  template <int N>
  static const V* panel(int groups, const V* end, int first, int d, V* z) {
    const V* const begin = end - N * first - N * (N + 1) / 2;
    for (; groups > 0; --groups, z += d) {
      V s[N] = {};
      const V *t = begin, *x = z;
      for (; x != z + first; ++x, t += N) add<0>(s, t, *x);
      triangle<0>(s, t, x);
      for (int i = 0; i < N; ++i) z[first + i] = s[i];
    }
    return begin;
  }
  template <int From, int N>
  QOR_INLINE static void add(V (&s)[N], const V* t, V element) {
    for (int i = From; i < N; ++i) s[i] += t[i - From] * element;
    simd::keep_order();
  }
  template <int C, int N>
  QOR_INLINE static void triangle(V (&s)[N], const V* t, const V* z) {
    if constexpr (C < N) {
      add<C>(s, t, z[C]);
      triangle<C + 1>(s, t + N - C, z);
    }
  }

  int d_;
  const T* a_;
  const V* end_;
  V factor_[most * (most + 1) / 2], z_[registers];
};

template <class T>
void triangular(int n, T* r, const Factor<T>& factor, const T* a) {
  const numeric::MxcsrGuard nearest;
  if (factor.d >= SmallProduct<T>::least && factor.d <= SmallProduct<T>::most) {
    SmallProduct<T>(factor, a).apply(n, r);
  } else {
    Product<T>(factor, a).apply(n, r);
  }
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
      triangular(n, r, Factor<T>{d, storage == QOR_RNG_STORAGE_PACKED, factor}, a);
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
