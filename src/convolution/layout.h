// Where the elements of multi-dimensional arrays are, and the description of one problem, which every driver starts
// from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

namespace qor::convolution {

inline constexpr int max_rank = 7;
enum class Kind { convolution, correlation };

// Element i of dimension k is stride[k] * i elements from the origin, the place of element 0.
template <class T>
struct Array {
  T* origin;
  int shape[max_rank];
  std::ptrdiff_t stride[max_rank];

  // From a pointer to the lowest address: a negative stride runs down to it. One element needs no stride.
  static Array at(T* data, int rank, const int* shape, const int* stride) {
    Array a{data, {}, {}};
    for (int k = 0; k < rank; ++k) {
      a.shape[k] = shape[k];
      a.stride[k] = shape[k] == 1 ? 1 : stride[k];
      if (stride[k] < 0) a.origin -= static_cast<std::ptrdiff_t>(std::int64_t{stride[k]} * (shape[k] - 1));
    }
    return a;
  }
  // Every dimension backwards.
  void reverse(int rank) {
    for (int k = 0; k < rank; ++k) {
      origin += stride[k] * (shape[k] - 1);
      stride[k] = -stride[k];
    }
  }
};

// The product of the shape's entries, at most 2^62.
inline std::int64_t datasize(const int* shape, int rank) {
  std::int64_t n = 1;
  for (int k = 0; k < rank; ++k) n = n > (std::int64_t{1} << 31) ? n : n * shape[k];
  return n;
}

// Are the strides of dimensions from `first` on those of a dense array?
inline bool is_dense(const int* shape, const int* stride, int rank, int first) {
  std::int64_t dense = 1;
  for (int k = 0; k < rank; ++k) {
    if (k >= first && stride[k] != dense) return false;
    if (dense <= std::numeric_limits<int>::max()) dense *= shape[k];
  }
  return true;
}

// z[j] = sum over i of a[i] b[i + offset + j step], in every dimension; what lies outside the shapes counts as zero.
template <class D>
struct Problem {
  int rank;
  Array<const D> a, b;
  Array<D> z;
  int offset[max_rank], step[max_rank];

  // The same sums with a and b in each other's place: both run backwards.
  void exchange() {
    for (int k = 0; k < rank; ++k) offset[k] += a.shape[k] - b.shape[k];
    const Array<const D> kept = a;
    a = b;
    b = kept;
    a.reverse(rank);
    b.reverse(rank);
  }
  void exchange_dimensions(int k, int m) {
    const auto swap = [](auto& p, auto& q) {
      const auto kept = p;
      p = q;
      q = kept;
    };
    const auto swap_in = [&](auto& array) {
      swap(array.shape[k], array.shape[m]);
      swap(array.stride[k], array.stride[m]);
    };
    swap_in(a);
    swap_in(b);
    swap_in(z);
    swap(offset[k], offset[m]);
    swap(step[k], step[m]);
  }
};

// n elements that lie a stride apart, in a row of their own.
template <class D, class T>
void copy_row(const D* from, std::ptrdiff_t stride, T* to, int n) {
  if (stride == 1) {
    for (int i = 0; i < n; ++i) to[i] = from[i];
  } else if (stride == -1) {
    for (int i = 0; i < n; ++i) to[i] = from[-i];
  } else {
    for (int i = 0; i < n; ++i) to[i] = from[i * stride];
  }
}

}  // namespace qor::convolution
