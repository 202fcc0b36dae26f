/* qor/conv.h: convolution and correlation of data of rank 1 to 7.

   Drivers: one call, one computation. x and y are the operands, z the result; entries of x and y outside their shapes
   count as zero. With, per dimension, nx, ny, nz the shapes' entries:

     convolution   full[k] = sum over i of x[i] y[k - i],  k = 0 ... nx + ny - 2
     correlation   full[k] = sum over i of x[i] y[i + k],  k = 1 - nx ... ny - 1
     z[j] = full[start + j * decimation],  j = 0 ... nz - 1

   Layout. Dimension 0 comes first. A stride s >= 0 places index i at element s * i from the pointer, a stride s < 0 at
   |s| * (n - 1 - i): the pointer is always the lowest address. In more dimensions these places are added. A stride of 0
   makes all of x, or y, equal to its first element; for z it is refused. No byte outside the elements so named is read
   or written. z must not overlap x or y.

   Classes. DD: double data, double sums. SD: single data, double sums, each rounded once to single. SS: single data and
   sums.

   Accuracy. With n the largest number of products in a sum and u = 2^-53 (2^-24 for SS), the error of an output is at
   most (n + 1) u S to first order, S the sum of the products' absolute values (for SD, and half an ulp of the single).
   In rank 1 without decimation partial sums of at most 512 products are formed and added: (513 + n / 512) u S. Products
   are added in an order that depends on the shapes, start and decimation alone, so that strides and alignment change no
   bit. An infinity or a NaN spreads only to the outputs whose sums contain it; an output whose sum is empty is 0. The
   sums are the direct ones (no transforms): their number is prod(nz) times the overlap.

   Memory. One block per call, freed before the return: some 300 KB, and z once more in the type of the sums when z has
   a stride other than 1 in dimension 0 or the class is SD.

   Status: 0, or the first of these that applies, in this order, nothing being written:
     rank 1 drivers    -2331 x null, -2311 xshape < 1, -2332 y null, -2312 yshape < 1, -2333 z null, -2313 zshape < 1,
                       -2323 zstride 0, -2302 start, -2303 decimation, -2001 memory
     array drivers     -2301 rank, -2331, -2332, -2333, then dimension by dimension -2311, -2312, -2313, -2323, -2302,
                       -2303, then -2001
     -2302: start outside 0 ... nx + ny - 2 (correlation: 1 - nx ... ny - 1). -2303: decimation < 1, or the last output
     beyond the full result. -2001: no memory, or an array of more than 2^31 - 1 elements, or one that the driver must
     copy and whose copy couldn't exist (x in a convolution, what isn't dense, all of SD).
   errno stays as it was. Any number of threads may call these at once. */
#ifndef QOR_CONV_H
#define QOR_CONV_H

#ifdef __cplusplus
extern "C" {
#endif

/* ---- direct drivers -------------------------------------------------------------------------------------------- */

/* Rank 1. */
int _wxrConvDDDirect1D_dec(const double* x, int xstride, const double* y, int ystride, double* z, int zstride,
                           int xshape, int yshape, int start, int zshape, int decimation);
int _wxrConvSDDirect1D_dec(const float* x, int xstride, const float* y, int ystride, float* z, int zstride, int xshape,
                           int yshape, int start, int zshape, int decimation);
int _wxrConvSSDirect1D_dec(const float* x, int xstride, const float* y, int ystride, float* z, int zstride, int xshape,
                           int yshape, int start, int zshape, int decimation);
int _wxrCorrDDDirect1D_dec(const double* x, int xstride, const double* y, int ystride, double* z, int zstride,
                           int xshape, int yshape, int start, int zshape, int decimation);
int _wxrCorrSDDirect1D_dec(const float* x, int xstride, const float* y, int ystride, float* z, int zstride, int xshape,
                           int yshape, int start, int zshape, int decimation);
int _wxrCorrSSDirect1D_dec(const float* x, int xstride, const float* y, int ystride, float* z, int zstride, int xshape,
                           int yshape, int start, int zshape, int decimation);
/* Rank 1, decimation 1. */
int _wxrConvSSDirect1D_nodec(const float* x, int xstride, const float* y, int ystride, float* z, int zstride,
                             int xshape, int yshape, int start, int zshape);
int _wxrCorrSSDirect1D_nodec(const float* x, int xstride, const float* y, int ystride, float* z, int zstride,
                             int xshape, int yshape, int start, int zshape);

/* Rank 1 to 7; the arrays have an entry for each dimension. */
int _wxrConvDDDirectAll_dec(int rank, const double* x, const int* xshape, const int* xstride, const double* y,
                            const int* yshape, const int* ystride, double* z, const int* zshape, const int* zstride,
                            const int* start, const int* decimation);
int _wxrConvSDDirectAll_dec(int rank, const float* x, const int* xshape, const int* xstride, const float* y,
                            const int* yshape, const int* ystride, float* z, const int* zshape, const int* zstride,
                            const int* start, const int* decimation);
int _wxrConvSSDirectAll_dec(int rank, const float* x, const int* xshape, const int* xstride, const float* y,
                            const int* yshape, const int* ystride, float* z, const int* zshape, const int* zstride,
                            const int* start, const int* decimation);
int _wxrCorrDDDirectAll_dec(int rank, const double* x, const int* xshape, const int* xstride, const double* y,
                            const int* yshape, const int* ystride, double* z, const int* zshape, const int* zstride,
                            const int* start, const int* decimation);
int _wxrCorrSDDirectAll_dec(int rank, const float* x, const int* xshape, const int* xstride, const float* y,
                            const int* yshape, const int* ystride, float* z, const int* zshape, const int* zstride,
                            const int* start, const int* decimation);
int _wxrCorrSSDirectAll_dec(int rank, const float* x, const int* xshape, const int* xstride, const float* y,
                            const int* yshape, const int* ystride, float* z, const int* zshape, const int* zstride,
                            const int* start, const int* decimation);

/* These exist for their names: -2000, and nothing is done. */
int _wxrConvDDDirect1D_nodec(const double* x, int xstride, const double* y, int ystride, double* z, int zstride,
                             int xshape, int yshape, int start, int zshape);
int _wxrConvDDDirectAll_nodec(int rank, const double* x, const int* xshape, const int* xstride, const double* y,
                              const int* yshape, const int* ystride, double* z, const int* zshape, const int* zstride,
                              const int* start);
int _wxrConvSDDirect1D_nodec(const float* x, int xstride, const float* y, int ystride, float* z, int zstride,
                             int xshape, int yshape, int start, int zshape);
int _wxrConvSDDirectAll_nodec(int rank, const float* x, const int* xshape, const int* xstride, const float* y,
                              const int* yshape, const int* ystride, float* z, const int* zshape, const int* zstride,
                              const int* start);
int _wxrConvSSDirectAll_nodec(int rank, const float* x, const int* xshape, const int* xstride, const float* y,
                              const int* yshape, const int* ystride, float* z, const int* zshape, const int* zstride,
                              const int* start);
int _wxrCorrDDDirect1D_nodec(const double* x, int xstride, const double* y, int ystride, double* z, int zstride,
                             int xshape, int yshape, int start, int zshape);
int _wxrCorrDDDirectAll_nodec(int rank, const double* x, const int* xshape, const int* xstride, const double* y,
                              const int* yshape, const int* ystride, double* z, const int* zshape, const int* zstride,
                              const int* start);
int _wxrCorrSDDirect1D_nodec(const float* x, int xstride, const float* y, int ystride, float* z, int zstride,
                             int xshape, int yshape, int start, int zshape);
int _wxrCorrSDDirectAll_nodec(int rank, const float* x, const int* xshape, const int* xstride, const float* y,
                              const int* yshape, const int* ystride, float* z, const int* zshape, const int* zstride,
                              const int* start);
int _wxrCorrSSDirectAll_nodec(int rank, const float* x, const int* xshape, const int* xstride, const float* y,
                              const int* yshape, const int* ystride, float* z, const int* zshape, const int* zstride,
                              const int* start);

#ifdef __cplusplus
}
#endif
#endif
