// The names of the Fourier drivers and of the convolution of whole arrays.
#include "base/target.h"
#include "convolution/fourier.h"
#include "convolution/primitive.h"
#include "qor/conv.h"

namespace conv = qor::convolution;

#define SCALAR_ENTRIES(Name, kind, Class, D, T)                                                                    \
  QOR_ENTRY int _wxr##Name##Class##Fft1D_dec(const D* x, int xstride, const D* y, int ystride, D* z, int zstride,  \
                                             int xshape, int yshape, int start, int zshape, int decimation) {      \
    conv::Kept kept;                                                                                               \
    return conv::FourierDriver<conv::Kind::kind, T, D>::scalar(x, xstride, y, ystride, z, zstride, xshape, yshape, \
                                                               start, zshape, decimation, kept);                   \
  }                                                                                                                \
  QOR_ENTRY int _wxr##Name##Class##Fft1D_nodec(const D*, int, const D*, int, D*, int, int, int, int, int) {        \
    return conv::status::not_here;                                                                                 \
  }
#define ARRAY_ENTRIES(Name, kind, Class, D, T)                                                                         \
  QOR_ENTRY int _wxr##Name##Class##FftAll_dec(int rank, const D* x, const int* xshape, const int* xstride, const D* y, \
                                              const int* yshape, const int* ystride, D* z, const int* zshape,          \
                                              const int* zstride, const int* start, const int* decimation) {           \
    conv::Kept kept;                                                                                                   \
    return conv::FourierDriver<conv::Kind::kind, T, D>::arrays(rank, x, xshape, xstride, y, yshape, ystride, z,        \
                                                               zshape, zstride, start, decimation, kept);              \
  }                                                                                                                    \
  QOR_ENTRY int _wxr##Name##Class##FftAll_nodec(int, const D*, const int*, const int*, const D*, const int*,           \
                                                const int*, D*, const int*, const int*, const int*) {                  \
    return conv::status::not_here;                                                                                     \
  }
CONV_MEMBERS(SCALAR_ENTRIES)
CONV_MEMBERS(ARRAY_ENTRIES)

#define WHOLE_ENTRIES(suffix, T)                                                                          \
  QOR_ENTRY int qfpsConv_##suffix(const T* src1, int len1, const T* src2, int len2, T* dst) {             \
    return conv::full_convolution(src1, len1, src2, len2, dst);                                           \
  }                                                                                                       \
  QOR_ENTRY void ownConv_##suffix(const T* longer, int longlen, const T* shorter, int shortlen, T* dst) { \
    conv::add_convolution(longer, longlen, shorter, shortlen, dst);                                       \
  }
WHOLE_ENTRIES(32f, float)
WHOLE_ENTRIES(64f, double)
