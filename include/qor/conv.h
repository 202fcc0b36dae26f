/* qor/conv.h: convolution and correlation of data of rank 1 to 7.

   A task describes a problem once and is executed on any number of operands; it chooses one of the drivers, which can be
   called by themselves as well.

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

/* ---- statuses ---------------------------------------------------------------------------------------------------- */

#define QOR_CONV_OK 0
#define QOR_CONV_NO_TASK_MEMORY (-4)       /* no memory for the task */
#define QOR_CONV_NULL_POINTER (-5)         /* a null task, handle or value */
#define QOR_CONV_NOT_IMPLEMENTED (-2000)   /* double data with sums in single precision, rank 1; drivers without work */
#define QOR_CONV_NO_MEMORY (-2001)         /* no memory, or more elements than an array can have */
#define QOR_CONV_UNKNOWN_PARAMETER (-2211) /* edit: no such parameter */
#define QOR_CONV_FIXED_PARAMETER (-2212)   /* edit: a parameter that is fixed */
#define QOR_CONV_NO_RELEASE (-2220)        /* private data without a function that releases it */
#define QOR_CONV_COPY_FAILED (-2230)       /* the private data could not be copied */
#define QOR_CONV_RELEASE_FAILED (-2240)    /* the private data could not be released */
#define QOR_CONV_BAD_RANK (-2301)          /* rank outside 1 .. 7 */
#define QOR_CONV_BAD_START (-2302)         /* start outside the full result */
#define QOR_CONV_BAD_DECIMATION (-2303)    /* decimation below 1, or an output beyond the full result */
#define QOR_CONV_BAD_X_SHAPE (-2311)       /* a shape below 1 */
#define QOR_CONV_BAD_Y_SHAPE (-2312)
#define QOR_CONV_BAD_Z_SHAPE (-2313)
#define QOR_CONV_ZERO_Z_STRIDE (-2323) /* an output stride of 0 */
#define QOR_CONV_NULL_X (-2331)        /* a null operand or result */
#define QOR_CONV_NULL_Y (-2332)
#define QOR_CONV_NULL_Z (-2333)
#define QOR_CONV_TRANSFORM_FAILED (-2800) /* too large for a transform, or no memory for one */

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

/* ---- Fourier drivers ------------------------------------------------------------------------------------------------

   The same results by transforms. Checks, codes and layout are those above; also -2800: the transform failed.

   Rank 1 (1D, and All with rank 1) is qfpsConv below, which takes a direct sum for short arrays: SS in single
   precision, SD and DD in double. x and y are used in place when their stride is 1 (x of a correlation, and both of SD,
   are copied); the full result is formed in z when z's stride is 1 and it is asked for whole, otherwise in a work array
   of nx + ny - 1 elements.

   Rank 2 to 7: Fourier transforms in double precision for all classes, SS and SD results being rounded once. In each
   dimension the longer operand is cut into blocks where that saves work, and the blocks' results are added. Rank 2
   transforms real arrays of powers of two: pairs of overlapping blocks of up to 256 x 256 points as one complex block
   (overlap-save: every output is taken from one block), or the engine's transforms where those are less work. Ranks 3
   to 7 transform complex arrays, those of rank 4 of even lengths.

   Accuracy. Every output is wrong by at most about 3 u log2(N) |x| |y|, |.| the root of the sum of squares (of a block
   or a pair of them, where there are blocks), N the number of points of a transform, u as above; then SD and SS round
   once more. An infinity or a NaN may make every output of its block or pair one. Memory: one block of work space per
   call, and what the transform engine keeps for ranks above 1; all is freed before the return. */

/* Rank 1. */
int _wxrConvDDFft1D_dec(const double* x, int xstride, const double* y, int ystride, double* z, int zstride, int xshape,
                        int yshape, int start, int zshape, int decimation);
int _wxrConvSDFft1D_dec(const float* x, int xstride, const float* y, int ystride, float* z, int zstride, int xshape,
                        int yshape, int start, int zshape, int decimation);
int _wxrConvSSFft1D_dec(const float* x, int xstride, const float* y, int ystride, float* z, int zstride, int xshape,
                        int yshape, int start, int zshape, int decimation);
int _wxrCorrDDFft1D_dec(const double* x, int xstride, const double* y, int ystride, double* z, int zstride, int xshape,
                        int yshape, int start, int zshape, int decimation);
int _wxrCorrSDFft1D_dec(const float* x, int xstride, const float* y, int ystride, float* z, int zstride, int xshape,
                        int yshape, int start, int zshape, int decimation);
int _wxrCorrSSFft1D_dec(const float* x, int xstride, const float* y, int ystride, float* z, int zstride, int xshape,
                        int yshape, int start, int zshape, int decimation);

/* Rank 1 to 7; the arrays have an entry for each dimension. */
int _wxrConvDDFftAll_dec(int rank, const double* x, const int* xshape, const int* xstride, const double* y,
                         const int* yshape, const int* ystride, double* z, const int* zshape, const int* zstride,
                         const int* start, const int* decimation);
int _wxrConvSDFftAll_dec(int rank, const float* x, const int* xshape, const int* xstride, const float* y,
                         const int* yshape, const int* ystride, float* z, const int* zshape, const int* zstride,
                         const int* start, const int* decimation);
int _wxrConvSSFftAll_dec(int rank, const float* x, const int* xshape, const int* xstride, const float* y,
                         const int* yshape, const int* ystride, float* z, const int* zshape, const int* zstride,
                         const int* start, const int* decimation);
int _wxrCorrDDFftAll_dec(int rank, const double* x, const int* xshape, const int* xstride, const double* y,
                         const int* yshape, const int* ystride, double* z, const int* zshape, const int* zstride,
                         const int* start, const int* decimation);
int _wxrCorrSDFftAll_dec(int rank, const float* x, const int* xshape, const int* xstride, const float* y,
                         const int* yshape, const int* ystride, float* z, const int* zshape, const int* zstride,
                         const int* start, const int* decimation);
int _wxrCorrSSFftAll_dec(int rank, const float* x, const int* xshape, const int* xstride, const float* y,
                         const int* yshape, const int* ystride, float* z, const int* zshape, const int* zstride,
                         const int* start, const int* decimation);

/* These exist for their names: -2000, and nothing is done. */
int _wxrConvDDFft1D_nodec(const double* x, int xstride, const double* y, int ystride, double* z, int zstride,
                          int xshape, int yshape, int start, int zshape);
int _wxrConvDDFftAll_nodec(int rank, const double* x, const int* xshape, const int* xstride, const double* y,
                           const int* yshape, const int* ystride, double* z, const int* zshape, const int* zstride,
                           const int* start);
int _wxrConvSDFft1D_nodec(const float* x, int xstride, const float* y, int ystride, float* z, int zstride, int xshape,
                          int yshape, int start, int zshape);
int _wxrConvSDFftAll_nodec(int rank, const float* x, const int* xshape, const int* xstride, const float* y,
                           const int* yshape, const int* ystride, float* z, const int* zshape, const int* zstride,
                           const int* start);
int _wxrConvSSFft1D_nodec(const float* x, int xstride, const float* y, int ystride, float* z, int zstride, int xshape,
                          int yshape, int start, int zshape);
int _wxrConvSSFftAll_nodec(int rank, const float* x, const int* xshape, const int* xstride, const float* y,
                           const int* yshape, const int* ystride, float* z, const int* zshape, const int* zstride,
                           const int* start);
int _wxrCorrDDFft1D_nodec(const double* x, int xstride, const double* y, int ystride, double* z, int zstride,
                          int xshape, int yshape, int start, int zshape);
int _wxrCorrDDFftAll_nodec(int rank, const double* x, const int* xshape, const int* xstride, const double* y,
                           const int* yshape, const int* ystride, double* z, const int* zshape, const int* zstride,
                           const int* start);
int _wxrCorrSDFft1D_nodec(const float* x, int xstride, const float* y, int ystride, float* z, int zstride, int xshape,
                          int yshape, int start, int zshape);
int _wxrCorrSDFftAll_nodec(int rank, const float* x, const int* xshape, const int* xstride, const float* y,
                           const int* yshape, const int* ystride, float* z, const int* zshape, const int* zstride,
                           const int* start);
int _wxrCorrSSFft1D_nodec(const float* x, int xstride, const float* y, int ystride, float* z, int zstride, int xshape,
                          int yshape, int start, int zshape);
int _wxrCorrSSFftAll_nodec(int rank, const float* x, const int* xshape, const int* xstride, const float* y,
                           const int* yshape, const int* ystride, float* z, const int* zshape, const int* zstride,
                           const int* start);

/* ---- convolution of whole arrays ------------------------------------------------------------------------------------

   qfpsConv: dst[k] = sum over i of src1[i] src2[k - i], k = 0 ... len1 + len2 - 2. src1 and src2 may be the same array;
   dst overlaps neither. Exchanging the operands changes no bit. With L the longer length, S the shorter one and
   N = L + S - 1:

     N < 512 or S < 64   direct sums; from L = 4096 on those of pieces of 4096 elements, one after the other
     L < 3 S             one product of 2^k >= N points
     otherwise           overlap-add: products of M = 2^k >= 2 S points, each with M - S + 1 elements of the longer array

   Products are of polynomials modulo t^M + 1 by a right-angle convolution (R. Crandall and B. Fagin, Mathematics of
   Computation 62, 1994), whose transforms split t^M + 1 into factors: no spectrum is put in order, and nothing is set
   up beforehand.

   Accuracy: direct sums as the direct drivers of rank 1; products within about 3 u log2(M) |a| |b|, |.| the root of
   the sum of squares of the shorter array and of the block of the longer one. An infinity or a NaN spreads to the block.
   Memory: one block of about 2 M elements, none for direct sums.

   Status: 0; -8 a null pointer; -6 a length below 1; -15 more than 2^30 points; -9 no memory. errno stays as it was.

   ownConv: the direct sum alone, added to dst; lengths are at least 1, in any order, nothing is checked. */
int qfpsConv_64f(const double* src1, int len1, const double* src2, int len2, double* dst);
int qfpsConv_32f(const float* src1, int len1, const float* src2, int len2, float* dst);
void ownConv_64f(const double* longer, int longlen, const double* shorter, int shortlen, double* dst);
void ownConv_32f(const float* longer, int longlen, const float* shorter, int shortlen, float* dst);

/* ---- tasks ----------------------------------------------------------------------------------------------------------

   A task is a record that the library makes and deletes; the caller holds the pointer. Its shapes are fixed; mode,
   start, decimation and the precision of the sums can be edited. Executed, it hands its arguments to

     kind                     1 convolution (..Conv..), any other correlation (..Corr..)
     mode                     1 direct (..Direct..), any other through transforms (..Fft..)
     data, internal           single data (1): sums in single when the internal precision is 1 (SS), in double otherwise
                              (SD). Double data (any other): DD; but in rank 1 an internal precision of 1 is refused
                              with -2000, while higher ranks compute in double
     rank                     1: the driver of rank 1 with the first entries; any other: the driver for all ranks, which
                              returns -2301 outside 1 ... 7

   Defaults. No strides: those of a dense array of the shape, 1, n[0], n[0] n[1], ... No start: the first output of the
   full result, 1 - xshape in each dimension for kind 2 and 0 for any other kind. No decimation: 1. A shape that was
   never given (null) counts as zeros and is refused on execution.

   Status. Every operation returns 0 or a failure. What an edit or an execution returns stays in the task, and as long as
   that isn't 0, edits, commitment, copies and executions return it and do nothing; __wxrccSetStatus ends that. Beside
   the drivers' codes there are
     -4      no memory for the task
     -5      a null task, handle or value. Stored in the task for a null value
     -2000   above
     -2211   edit: no such parameter (below 1 or above 19)    -2212   edit: a parameter that is fixed
     -2230   copy: the private data could not be copied       -2240   deletion: the private data could not be released

   What a task keeps. Transforms set up by an execution, and their work space, stay in the task's private data for the
   next execution and go with the task, unless that slot is taken. They can be as large as several copies of the full
   result. A direct task keeps nothing.

   Threads. Different tasks may be used at the same time, one task by one thread at a time. errno stays as it was. */

/* All fields have 32 bits. Layers above may attach private data when the three fields are null, before the first
   execution: a block from malloc, that copies of the task and the task's end ask these functions about. Both return 0
   for success; after the release function the library frees the block itself, whatever that returned. */
typedef struct qor_conv_task {
  int above[2]; /* for layers above: never read or written */
  int status;   /* of the last edit or execution */
  int also_above;
  int kind;
  int word2; /* stored only */
  int mode;
  int parameter4;          /* stored only */
  int *start, *decimation; /* these and the shapes: null, or the entries below */
  int word4;               /* stored only */
  int data_precision, internal_precision;
  int rank;
  int *xshape, *yshape, *zshape, *xstride;
  int start_entries[7], decimation_entries[7], xshape_entries[7], yshape_entries[7], zshape_entries[7],
      xstride_entries[7];
  const void* x; /* of a task made with one, or null */
  int committed;
  void* private_data;
  int (*release_private_data)(struct qor_conv_task* task, void* data);
  /* The new task has the old one's three fields already; slot is the address of its private_data. */
  int (*copy_private_data)(struct qor_conv_task* task, void** slot, void* data);
} qor_conv_task;

#define QOR_CONV_KIND_CONVOLUTION 1
#define QOR_CONV_KIND_CORRELATION 2
#define QOR_CONV_MODE_FFT 0
#define QOR_CONV_MODE_DIRECT 1
#define QOR_CONV_PRECISION_SINGLE 1
#define QOR_CONV_PRECISION_DOUBLE 2

/* Makes a task with data and sums of one precision. Copies the shapes, of `rank` entries each (at most 7; none for a
   rank below 1). Looks at nothing but the handle: 0, -4, -5. After a failure *handle is as before. */
int __wxrNewTask(qor_conv_task** handle, int kind, int word2, int mode, int word4, int precision, int rank,
                 const int* xshape, const int* yshape, const int* zshape);
/* The same with an operand x for all executions by __wxrExecX. The task keeps the pointer: the data must live as long
   as the task and may change from execution to execution. xstride may be null. */
int __wxrNewTaskX(qor_conv_task** handle, int kind, int word2, int mode, int word4, int precision, int rank,
                  const int* xshape, const int* yshape, const int* zshape, const void* x, const int* xstride);

/* Sets a parameter from *value, or from `rank` entries at value: */
#define QOR_CONV_EDIT_MODE 3
#define QOR_CONV_EDIT_PARAMETER4 4
#define QOR_CONV_EDIT_START 5      /* rank entries */
#define QOR_CONV_EDIT_DECIMATION 6 /* rank entries */
#define QOR_CONV_EDIT_INTERNAL_PRECISION 9
/* Returns and stores 0, -5 (null value), -2211, -2212 (all others up to 19). The task is no longer committed. */
int __wxrEditTask(qor_conv_task* task, int parameter, const int* value);

/* Marks the task as committed; the first execution does so too. Nothing is checked before execution. */
int __wxrCommitTask(qor_conv_task* task);

/* Computes z from x and y: arrays of float when the data is single, of double otherwise, in the layout told at the
   top; each stride has `rank` entries or is null. Returns and stores the driver's status. x of __wxrExec may be any,
   also for a task that has one. */
int __wxrExec(qor_conv_task* task, const void* x, const int* xstride, const void* y, const int* ystride, void* z,
              const int* zstride);
int __wxrExecX(qor_conv_task* task, const void* y, const int* ystride, void* z, const int* zstride);

/* Makes another task like it; x is shared. 0, -4, -5, -2230, or the source's status. After a failure *handle is as
   before. */
int __wxrCopyTask(qor_conv_task** handle, const qor_conv_task* source);

/* Deletes the task, in whatever state, and sets *handle to null. 0 (also when there is no task), -5, or -2240, the task
   being deleted all the same. */
int __wxrDeleteTask(qor_conv_task** handle);

/* Stores a status and returns the former one; -5 without a task. */
int __wxrccSetStatus(qor_conv_task* task, int value);
int __wxrccGetStatus(const qor_conv_task* task);

#ifdef __cplusplus
}
#endif
#endif
