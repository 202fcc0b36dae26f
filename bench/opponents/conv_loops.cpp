// Full convolution of rank 1 and 2 as anyone would write it: the sum of each output, and blocks of outputs kept
// in vector registers, the outputs near the ends being summed one by one.
#include <algorithm>
#include <cstring>

#include "harness.h"

namespace bench {
namespace {

template <class T>
T one_sum(const T* x, int nx0, int nx1, const T* y, int ny0, int ny1, int k0, int k1) {
  T sum = 0;
  for (int i1 = std::max(0, k1 - ny1 + 1); i1 < std::min(nx1, k1 + 1); ++i1) {
    const T *const row = x + i1 * nx0, *const other = y + (k1 - i1) * ny0;
    for (int i0 = std::max(0, k0 - ny0 + 1); i0 < std::min(nx0, k0 + 1); ++i0) sum += row[i0] * other[k0 - i0];
  }
  return sum;
}
template <class T>
void naive(const T* x, int nx0, int nx1, const T* y, int ny0, int ny1, T* z) {
  for (int k1 = 0; k1 < nx1 + ny1 - 1; ++k1) {
    for (int k0 = 0; k0 < nx0 + ny0 - 1; ++k0) *z++ = one_sum(x, nx0, nx1, y, ny0, ny1, k0, k1);
  }
}
template <class T>
void blocked(const T* x, int nx0, int nx1, const T* y, int ny0, int ny1, T* z) {
  using V [[gnu::vector_size(16)]] = T;  // the compiler would form these by itself, but keeps the sums in memory then
  constexpr int lanes = 16 / sizeof(T), vectors = 4, block = vectors * lanes;
  const int n0 = nx0 + ny0 - 1;
  for (int k1 = 0; k1 < nx1 + ny1 - 1; ++k1, z += n0) {
    int k0 = 0;
    while (k0 < n0) {
      if (k0 < nx0 - 1 || k0 + block > ny0) {
        z[k0] = one_sum(x, nx0, nx1, y, ny0, ny1, k0, k1);
        ++k0;
        continue;
      }
      V sum[vectors] = {};
      for (int i1 = std::max(0, k1 - ny1 + 1); i1 < std::min(nx1, k1 + 1); ++i1) {
        const T *const row = x + i1 * nx0, *const other = y + (k1 - i1) * ny0 + k0;
        for (int i0 = 0; i0 < nx0; ++i0) {
          for (int b = 0; b < vectors; ++b) {
            V part;
            std::memcpy(&part, other + b * lanes - i0, sizeof part);
            sum[b] += row[i0] * part;
          }
        }
      }
      std::memcpy(z + k0, sum, sizeof sum);
      k0 += block;
    }
  }
}

const Add here{ConvPeer<double>{"naive loop", naive<double>}, ConvPeer<double>{"blocked loop", blocked<double>},
               ConvPeer<float>{"naive loop", naive<float>}, ConvPeer<float>{"blocked loop", blocked<float>}};

}  // namespace
}  // namespace bench
