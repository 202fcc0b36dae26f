/* qor/fft.h: discrete Fourier transforms of real and complex arrays, of lengths that are powers of two (FFT) and of any
   length (DFT), through specification records.

   Definition. Forward: X[k] = sum over n of x[n] exp(-2 pi i k n / N); inverse: the positive exponent. Which of them is
   scaled is fixed when the record is made:

     flag  1  forward times 1/N             2  inverse times 1/N
           4  both times 1/sqrt(N)          8  neither

   Arrays. _32f and _64f are arrays of N reals, _32fc and _64fc of N complex numbers, each a real and an imaginary part.
   They may start at any address that is a multiple of 4. dst may be src (in place), partial overlap is not allowed; out
   of place, src is left as it is.

   Real spectra are kept in one of three packings. With (k) for the pair of real and imaginary part at frequency k:

     Perm   even N: re(0) re(N/2) (1) (2) ... (N/2 - 1)     odd N: re(0) (1) ... ((N - 1)/2)      N elements
     Pack   even N: re(0) (1) ... (N/2 - 1) re(N/2)         odd N: re(0) (1) ... ((N - 1)/2)      N elements
     CCS    even N: re(0) 0 (1) ... (N/2 - 1) re(N/2) 0     odd N: re(0) 0 (1) ... ((N - 1)/2)    N + 2, N + 1 elements

   The zeros of CCS aren't read. An array for CCS in place has its full size.

   Work space. GetBufSize says how many bytes the transforms of a record need, 0 when none. `buffer` is such a space, at
   any address, not shared between calls that run at the same time; a null pointer makes the call allocate one for
   itself, which for short transforms takes longer than the transform.

   Accuracy. The root mean square error relative to that of the spectrum is at most 0.6 eps sqrt(log2 N), for lengths
   with a prime factor above 13 at most 1.2 eps sqrt(log2 N), with eps = 2^-23 or 2^-52. Results depend on the arguments
   alone, not on alignment nor on the caller's rounding mode.

   Methods. Self-sorting mixed-radix passes (T. G. Stockham, 1966), large powers of two in blocks that fit the caches
   (D. H. Bailey, J. Supercomputing 4, 1990), prime factors above 13 as convolutions (C. M. Rader, Proc. IEEE 56, 1968;
   L. I. Bluestein, IEEE Trans. Audio 18, 1970). Every length takes O(N log N).

   Memory. The tables of a complex record take at most 4 N reals; none for N = 2^order up to order 6, at most 2 N from
   order 15 on.

   Threads. A record isn't changed by transforms: any number of threads may use it at once, each with its own arrays and
   buffer. */
#ifndef QOR_FFT_H
#define QOR_FFT_H

#ifdef __cplusplus
extern "C" {
#endif

/* What the functions return. */
#define QFPS_OK 0
#define QFPS_BAD_LENGTH (-6)    /* a length below 1 */
#define QFPS_NULL_POINTER (-8)  /* a null pointer */
#define QFPS_NO_MEMORY (-9)     /* memory could not be allocated */
#define QFPS_BAD_ORDER (-15)    /* order outside 0 .. 30 */
#define QFPS_BAD_FLAG (-16)     /* unknown flag */
#define QFPS_WRONG_RECORD (-17) /* the record is one of another kind of transform */

/* Flags. */
#define QFPS_DIV_FORWARD_BY_N 1
#define QFPS_DIV_INVERSE_BY_N 2
#define QFPS_DIV_BY_SQRT_N 4
#define QFPS_NO_SCALING 8

/* Records. Their contents are the library's. */
typedef struct qfpsFFTSpec_R_32f qfpsFFTSpec_R_32f;
typedef struct qfpsFFTSpec_C_32fc qfpsFFTSpec_C_32fc;
typedef struct qfpsDFTSpec_R_32f qfpsDFTSpec_R_32f;
typedef struct qfpsDFTSpec_C_32fc qfpsDFTSpec_C_32fc;
typedef struct qfpsFFTSpec_R_64f qfpsFFTSpec_R_64f;
typedef struct qfpsFFTSpec_C_64fc qfpsFFTSpec_C_64fc;
typedef struct qfpsDFTSpec_R_64f qfpsDFTSpec_R_64f;
typedef struct qfpsDFTSpec_C_64fc qfpsDFTSpec_C_64fc;

/* ---- real transforms, N = 2^order -------------------------------------------------------------------------------- */

/* InitAlloc makes a record for order 0 .. 30; on failure *spec is left as it is. The hint is kept and not used. Free
   takes the record's memory back. Failures: InitAlloc -8 (spec), -15, -9, -16 in this order; the others -8, -17, and
   the transforms -9 when they have to allocate a buffer. */
int qfpsFFTInitAlloc_R_32f(qfpsFFTSpec_R_32f** spec, int order, int flag, int hint);
int qfpsFFTGetBufSize_R_32f(const qfpsFFTSpec_R_32f* spec, int* size);
int qfpsFFTFwd_RToPerm_32f(const float* src, float* dst, const qfpsFFTSpec_R_32f* spec, unsigned char* buffer);
int qfpsFFTInv_PermToR_32f(const float* src, float* dst, const qfpsFFTSpec_R_32f* spec, unsigned char* buffer);
int qfpsFFTFwd_RToPack_32f(const float* src, float* dst, const qfpsFFTSpec_R_32f* spec, unsigned char* buffer);
int qfpsFFTInv_PackToR_32f(const float* src, float* dst, const qfpsFFTSpec_R_32f* spec, unsigned char* buffer);
int qfpsFFTFwd_RToCCS_32f(const float* src, float* dst, const qfpsFFTSpec_R_32f* spec, unsigned char* buffer);
int qfpsFFTInv_CCSToR_32f(const float* src, float* dst, const qfpsFFTSpec_R_32f* spec, unsigned char* buffer);
int qfpsFFTFree_R_32f(qfpsFFTSpec_R_32f* spec);

int qfpsFFTInitAlloc_R_64f(qfpsFFTSpec_R_64f** spec, int order, int flag, int hint);
int qfpsFFTGetBufSize_R_64f(const qfpsFFTSpec_R_64f* spec, int* size);
int qfpsFFTFwd_RToPerm_64f(const double* src, double* dst, const qfpsFFTSpec_R_64f* spec, unsigned char* buffer);
int qfpsFFTInv_PermToR_64f(const double* src, double* dst, const qfpsFFTSpec_R_64f* spec, unsigned char* buffer);
int qfpsFFTFwd_RToPack_64f(const double* src, double* dst, const qfpsFFTSpec_R_64f* spec, unsigned char* buffer);
int qfpsFFTInv_PackToR_64f(const double* src, double* dst, const qfpsFFTSpec_R_64f* spec, unsigned char* buffer);
int qfpsFFTFwd_RToCCS_64f(const double* src, double* dst, const qfpsFFTSpec_R_64f* spec, unsigned char* buffer);
int qfpsFFTInv_CCSToR_64f(const double* src, double* dst, const qfpsFFTSpec_R_64f* spec, unsigned char* buffer);
int qfpsFFTFree_R_64f(qfpsFFTSpec_R_64f* spec);

/* ---- complex transforms, N = 2^order ----------------------------------------------------------------------------- */

/* As above, for complex arrays. */
int qfpsFFTInitAlloc_C_32fc(qfpsFFTSpec_C_32fc** spec, int order, int flag, int hint);
int qfpsFFTGetBufSize_C_32fc(const qfpsFFTSpec_C_32fc* spec, int* size);
int qfpsFFTFwd_CToC_32fc(const float* src, float* dst, const qfpsFFTSpec_C_32fc* spec, unsigned char* buffer);
int qfpsFFTInv_CToC_32fc(const float* src, float* dst, const qfpsFFTSpec_C_32fc* spec, unsigned char* buffer);
int qfpsFFTFree_C_32fc(qfpsFFTSpec_C_32fc* spec);

int qfpsFFTInitAlloc_C_64fc(qfpsFFTSpec_C_64fc** spec, int order, int flag, int hint);
int qfpsFFTGetBufSize_C_64fc(const qfpsFFTSpec_C_64fc* spec, int* size);
int qfpsFFTFwd_CToC_64fc(const double* src, double* dst, const qfpsFFTSpec_C_64fc* spec, unsigned char* buffer);
int qfpsFFTInv_CToC_64fc(const double* src, double* dst, const qfpsFFTSpec_C_64fc* spec, unsigned char* buffer);
int qfpsFFTFree_C_64fc(qfpsFFTSpec_C_64fc* spec);

/* ---- real transforms of any length ------------------------------------------------------------------------------- */

/* As above, with the length N >= 1 in place of the order (-6). Odd lengths take about twice the time of even ones. */
int qfpsDFTInitAlloc_R_32f(qfpsDFTSpec_R_32f** spec, int length, int flag, int hint);
int qfpsDFTGetBufSize_R_32f(const qfpsDFTSpec_R_32f* spec, int* size);
int qfpsDFTFwd_RToPerm_32f(const float* src, float* dst, const qfpsDFTSpec_R_32f* spec, unsigned char* buffer);
int qfpsDFTInv_PermToR_32f(const float* src, float* dst, const qfpsDFTSpec_R_32f* spec, unsigned char* buffer);
int qfpsDFTFwd_RToPack_32f(const float* src, float* dst, const qfpsDFTSpec_R_32f* spec, unsigned char* buffer);
int qfpsDFTInv_PackToR_32f(const float* src, float* dst, const qfpsDFTSpec_R_32f* spec, unsigned char* buffer);
int qfpsDFTFwd_RToCCS_32f(const float* src, float* dst, const qfpsDFTSpec_R_32f* spec, unsigned char* buffer);
int qfpsDFTInv_CCSToR_32f(const float* src, float* dst, const qfpsDFTSpec_R_32f* spec, unsigned char* buffer);
int qfpsDFTFree_R_32f(qfpsDFTSpec_R_32f* spec);

int qfpsDFTInitAlloc_R_64f(qfpsDFTSpec_R_64f** spec, int length, int flag, int hint);
int qfpsDFTGetBufSize_R_64f(const qfpsDFTSpec_R_64f* spec, int* size);
int qfpsDFTFwd_RToPerm_64f(const double* src, double* dst, const qfpsDFTSpec_R_64f* spec, unsigned char* buffer);
int qfpsDFTInv_PermToR_64f(const double* src, double* dst, const qfpsDFTSpec_R_64f* spec, unsigned char* buffer);
int qfpsDFTFwd_RToPack_64f(const double* src, double* dst, const qfpsDFTSpec_R_64f* spec, unsigned char* buffer);
int qfpsDFTInv_PackToR_64f(const double* src, double* dst, const qfpsDFTSpec_R_64f* spec, unsigned char* buffer);
int qfpsDFTFwd_RToCCS_64f(const double* src, double* dst, const qfpsDFTSpec_R_64f* spec, unsigned char* buffer);
int qfpsDFTInv_CCSToR_64f(const double* src, double* dst, const qfpsDFTSpec_R_64f* spec, unsigned char* buffer);
int qfpsDFTFree_R_64f(qfpsDFTSpec_R_64f* spec);

/* ---- complex transforms of any length ---------------------------------------------------------------------------- */

/* As above, for complex arrays. */
int qfpsDFTInitAlloc_C_32fc(qfpsDFTSpec_C_32fc** spec, int length, int flag, int hint);
int qfpsDFTGetBufSize_C_32fc(const qfpsDFTSpec_C_32fc* spec, int* size);
int qfpsDFTFwd_CToC_32fc(const float* src, float* dst, const qfpsDFTSpec_C_32fc* spec, unsigned char* buffer);
int qfpsDFTInv_CToC_32fc(const float* src, float* dst, const qfpsDFTSpec_C_32fc* spec, unsigned char* buffer);
int qfpsDFTFree_C_32fc(qfpsDFTSpec_C_32fc* spec);

int qfpsDFTInitAlloc_C_64fc(qfpsDFTSpec_C_64fc** spec, int length, int flag, int hint);
int qfpsDFTGetBufSize_C_64fc(const qfpsDFTSpec_C_64fc* spec, int* size);
int qfpsDFTFwd_CToC_64fc(const double* src, double* dst, const qfpsDFTSpec_C_64fc* spec, unsigned char* buffer);
int qfpsDFTInv_CToC_64fc(const double* src, double* dst, const qfpsDFTSpec_C_64fc* spec, unsigned char* buffer);
int qfpsDFTFree_C_64fc(qfpsDFTSpec_C_64fc* spec);

/* ---- arrays ------------------------------------------------------------------------------------------------------ */

/* From one packing of the spectrum of n reals to another; in place if the array has room. -8, -6. */
int qfpsPermToPack_32f(const float* src, float* dst, int n);
int qfpsPermToCCS_32f(const float* src, float* dst, int n);
int qfpsPackToPerm_32f(const float* src, float* dst, int n);
int qfpsPackToCCS_32f(const float* src, float* dst, int n);
int qfpsCCSToPerm_32f(const float* src, float* dst, int n);
int qfpsCCSToPack_32f(const float* src, float* dst, int n);
int qfpsPermToPack_64f(const double* src, double* dst, int n);
int qfpsPermToCCS_64f(const double* src, double* dst, int n);
int qfpsPackToPerm_64f(const double* src, double* dst, int n);
int qfpsPackToCCS_64f(const double* src, double* dst, int n);
int qfpsCCSToPerm_64f(const double* src, double* dst, int n);
int qfpsCCSToPack_64f(const double* src, double* dst, int n);

/* Multiplies the spectrum srcdst of n reals by the spectrum src, both in Perm: the convolution theorem. -8, -6. */
int qfpsMulPerm_32f_I(const float* src, float* srcdst, int n);
int qfpsMulPerm_64f_I(const double* src, double* srcdst, int n);

/* n zeros; n elements copied, the arrays may overlap. -8, -6. */
int qfpsZero_32f(float* dst, int n);
int qfpsCopy_32f(const float* src, float* dst, int n);
int qfpsZero_64f(double* dst, int n);
int qfpsCopy_64f(const double* src, double* dst, int n);

/* n elements at a multiple of 32 bytes, or null: for n below 1 and without memory. qfpsFree takes them back, and takes
   a null pointer. */
float* qfpsMalloc_32f(int n);
double* qfpsMalloc_64f(int n);
unsigned char* qfpsMalloc_8u(int n);
void qfpsFree(void* block);

#ifdef __cplusplus
}
#endif
#endif
