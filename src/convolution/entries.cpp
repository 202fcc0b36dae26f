// The direct drivers' names.
#include "convolution/drivers.def"
#include "convolution/drivers.h"
#include "qor/conv.h"

namespace conv = qor::convolution;

#define DRIVER(Name, kind, Class, D, T)                                                     \
  template struct conv::Checked<conv::Driver<conv::Kind::kind, T, D>, conv::Kind::kind, D>; \
  template struct conv::Driver<conv::Kind::kind, T, D>;
CONV_MEMBERS(DRIVER)

#define SCALAR_ENTRY(Name, kind, Class, D, T)                                                                        \
  QOR_ENTRY int _wxr##Name##Class##Direct1D_dec(const D* x, int xstride, const D* y, int ystride, D* z, int zstride, \
                                                int xshape, int yshape, int start, int zshape, int decimation) {     \
    return conv::Driver<conv::Kind::kind, T, D>::scalar(x, xstride, y, ystride, z, zstride, xshape, yshape, start,   \
                                                        zshape, decimation);                                         \
  }
#define ARRAY_ENTRY(Name, kind, Class, D, T)                                                                          \
  QOR_ENTRY int _wxr##Name##Class##DirectAll_dec(                                                                     \
      int rank, const D* x, const int* xshape, const int* xstride, const D* y, const int* yshape, const int* ystride, \
      D* z, const int* zshape, const int* zstride, const int* start, const int* decimation) {                         \
    return conv::Driver<conv::Kind::kind, T, D>::arrays(rank, x, xshape, xstride, y, yshape, ystride, z, zshape,      \
                                                        zstride, start, decimation);                                  \
  }
#define UNUSED_ARRAY_ENTRY(Name, kind, Class, D, T)                                                             \
  QOR_ENTRY int _wxr##Name##Class##DirectAll_nodec(int, const D*, const int*, const int*, const D*, const int*, \
                                                   const int*, D*, const int*, const int*, const int*) {        \
    return conv::status::not_here;                                                                              \
  }
#define NODEC_ENTRY(Name, kind)                                                                                     \
  QOR_ENTRY int _wxr##Name##SSDirect1D_nodec(const float* x, int xstride, const float* y, int ystride, float* z,    \
                                             int zstride, int xshape, int yshape, int start, int zshape) {          \
    return conv::Driver<conv::Kind::kind, float, float>::scalar(x, xstride, y, ystride, z, zstride, xshape, yshape, \
                                                                start, zshape, 1);                                  \
  }
#define UNUSED_ENTRY(Name, Class, D)                                                                           \
  QOR_ENTRY int _wxr##Name##Class##Direct1D_nodec(const D*, int, const D*, int, D*, int, int, int, int, int) { \
    return conv::status::not_here;                                                                             \
  }

CONV_MEMBERS(SCALAR_ENTRY)
CONV_MEMBERS(ARRAY_ENTRY)
CONV_MEMBERS(UNUSED_ARRAY_ENTRY)
NODEC_ENTRY(Conv, convolution)
NODEC_ENTRY(Corr, correlation)
UNUSED_ENTRY(Conv, DD, double)
UNUSED_ENTRY(Conv, SD, float)
UNUSED_ENTRY(Corr, DD, double)
UNUSED_ENTRY(Corr, SD, float)
