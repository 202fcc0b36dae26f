// The checks that every driver makes, in their order.
#pragma once

#include "convolution/layout.h"
#include "convolution/status.h"

namespace qor::convolution {

// The arguments of a driver as they came.
template <class D>
struct Arguments {
  int rank;
  const D* x;
  const int *xshape, *xstride;
  const D* y;
  const int *yshape, *ystride;
  D* z;
  const int *zshape, *zstride, *start, *decimation;
  bool scalars = false;  // came as scalars, not as arrays of one
};

inline int check_range(Kind kind, int nx, int ny, int start, int nz, int decimation) {
  const std::int64_t low = kind == Kind::convolution ? 0 : 1 - std::int64_t{nx};
  const std::int64_t end = kind == Kind::convolution ? std::int64_t{nx} + ny - 1 : ny;
  if (start < low || start >= end) return status::bad_start;
  if (decimation < 1 || start + (std::int64_t{nz} - 1) * decimation >= end) return status::bad_decimation;
  return status::ok;
}

// The two forms of a driver. Own::compute takes arguments that are sound, and whatever else was passed.
template <class Own, Kind kind, class D, class... Extra>
struct Checked {
  [[gnu::noinline]] static int scalar(const D* x, int xstride, const D* y, int ystride, D* z, int zstride, int xshape,
                                      int yshape, int start, int zshape, int decimation, Extra&... extra) {
    if (x == nullptr) return status::null_x;
    if (xshape < 1) return status::bad_xshape;
    if (y == nullptr) return status::null_y;
    if (yshape < 1) return status::bad_yshape;
    if (z == nullptr) return status::null_z;
    if (zshape < 1) return status::bad_zshape;
    if (zstride == 0) return status::bad_zstride;
    const int s = check_range(kind, xshape, yshape, start, zshape, decimation);
    if (s != status::ok) return s;
    return Own::compute(
        {1, x, &xshape, &xstride, y, &yshape, &ystride, z, &zshape, &zstride, &start, &decimation, true}, extra...);
  }

  [[gnu::noinline]] static int arrays(int rank, const D* x, const int* xshape, const int* xstride, const D* y,
                                      const int* yshape, const int* ystride, D* z, const int* zshape,
                                      const int* zstride, const int* start, const int* decimation, Extra&... extra) {
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
    return Own::compute({rank, x, xshape, xstride, y, yshape, ystride, z, zshape, zstride, start, decimation},
                        extra...);
  }
};

}  // namespace qor::convolution
