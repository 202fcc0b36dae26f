// The direct drivers: the checks in their order, then the sums.
#pragma once

#include "convolution/direct.h"
#include "convolution/drivers.def"

namespace qor::convolution {

inline int check_range(Kind kind, int nx, int ny, int start, int nz, int decimation) {
  const std::int64_t low = kind == Kind::convolution ? 0 : 1 - std::int64_t{nx};
  const std::int64_t end = kind == Kind::convolution ? std::int64_t{nx} + ny - 1 : ny;
  if (start < low || start >= end) return status::bad_start;
  if (decimation < 1 || start + (std::int64_t{nz} - 1) * decimation >= end) return status::bad_decimation;
  return status::ok;
}

// The arguments of a driver as they came. T is the type of the sums, D that of the data.
template <Kind kind, class T, class D>
struct Driver {
  [[gnu::noinline]] static int compute(int rank, const D* x, const int* xshape, const int* xstride, const D* y,
                                       const int* yshape, const int* ystride, D* z, const int* zshape,
                                       const int* zstride, const int* start, const int* decimation) {
    // An operand that needs a copy must fit into memory with it; in place it is there already.
    const auto fits = [rank](const int* shape, const int* stride, bool copied) {
      const std::int64_t n = datasize(shape, rank);
      copied = copied || !std::is_same_v<T, D> || !is_dense(shape, stride, rank, rank == 1 ? 0 : 1);
      return n <= std::numeric_limits<int>::max() &&
             (!copied || n <= std::numeric_limits<std::ptrdiff_t>::max() / static_cast<std::ptrdiff_t>(sizeof(T)));
    };
    if (!fits(xshape, xstride, kind == Kind::convolution || rank > 1) || !fits(yshape, ystride, false) ||
        !fits(zshape, zstride, false)) {
      return status::no_memory;
    }
    Problem<D> p{rank,
                 Array<const D>::at(x, rank, xshape, xstride),
                 Array<const D>::at(y, rank, yshape, ystride),
                 Array<D>::at(z, rank, zshape, zstride),
                 {},
                 {}};
    if constexpr (kind == Kind::convolution) p.a.reverse(rank);
    for (int k = 0; k < rank; ++k) {
      p.offset[k] = kind == Kind::convolution ? start[k] - xshape[k] + 1 : start[k];
      p.step[k] = decimation[k];
    }
    return Direct<T, D>(p).run();
  }

  [[gnu::noinline]] static int scalar(const D* x, int xstride, const D* y, int ystride, D* z, int zstride, int xshape,
                                      int yshape, int start, int zshape, int decimation) {
    if (x == nullptr) return status::null_x;
    if (xshape < 1) return status::bad_xshape;
    if (y == nullptr) return status::null_y;
    if (yshape < 1) return status::bad_yshape;
    if (z == nullptr) return status::null_z;
    if (zshape < 1) return status::bad_zshape;
    if (zstride == 0) return status::bad_zstride;
    const int s = check_range(kind, xshape, yshape, start, zshape, decimation);
    if (s != status::ok) return s;
    return compute(1, x, &xshape, &xstride, y, &yshape, &ystride, z, &zshape, &zstride, &start, &decimation);
  }

  [[gnu::noinline]] static int arrays(int rank, const D* x, const int* xshape, const int* xstride, const D* y,
                                      const int* yshape, const int* ystride, D* z, const int* zshape,
                                      const int* zstride, const int* start, const int* decimation) {
    if (rank < 1 || rank > max_rank) return status::bad_rank;
    if (x == nullptr) return status::null_x;
    if (y == nullptr) return status::null_y;
    if (z == nullptr) return status::null_z;
    for (int k = 0; k < rank; ++k) {
      if (xshape[k] < 1) return status::bad_xshape;
      if (yshape[k] < 1) return status::bad_yshape;
      if (zshape[k] < 1) return status::bad_zshape;
      if (zstride[k] == 0) return status::bad_zstride;
      const int s = check_range(kind, xshape[k], yshape[k], start[k], zshape[k], decimation[k]);
      if (s != status::ok) return s;
    }
    return compute(rank, x, xshape, xstride, y, yshape, ystride, z, zshape, zstride, start, decimation);
  }
};

// Compiled once, with the entries.
#define DRIVER_ELSEWHERE(Name, kind, Class, D, T) extern template struct Driver<Kind::kind, T, D>;
CONV_DIRECT(DRIVER_ELSEWHERE)
#undef DRIVER_ELSEWHERE

}  // namespace qor::convolution
