/* qor/blas1.h: level-1 kernels on vectors, in four types: s, d real; c, z complex, real and imaginary parts
   interleaved.

   n counts elements; n <= 0 does nothing. Increments count elements (a complex one is two reals) and may be negative or
   zero: element i of x is x[i incx] for incx >= 0 and x[(i - n + 1) incx] otherwise, so that every element lies at or
   above the pointer (C. L. Lawson, R. J. Hanson, D. R. Kincaid and F. T. Krogh, ACM TOMS 5, 1979). scal does nothing
   for increments below 1. Arrays may start at any address that is a multiple of 4. Two vectors may be the same but must
   not overlap otherwise. Nothing but the elements named is read or written.

   Arithmetic rounds as the caller's control register says; a complex product takes four multiplications and two sums.
   No status, no errors. All functions may be called from any number of threads at once. The complex scalars are passed
   by address, a real and an imaginary part. */
#ifndef QOR_BLAS1_H
#define QOR_BLAS1_H

#ifdef __cplusplus
extern "C" {
#endif

/* y = x, bit for bit. */
void qor_blas_zx9_scopy(int n, const float* x, int incx, float* y, int incy);
void qor_blas_zx9_dcopy(int n, const double* x, int incx, double* y, int incy);
void qor_blas_zx9_ccopy(int n, const float* x, int incx, float* y, int incy);
void qor_blas_zx9_zcopy(int n, const double* x, int incx, double* y, int incy);

/* x and y exchanged. */
void qor_blas_zx9_sswap(int n, float* x, int incx, float* y, int incy);
void qor_blas_zx9_dswap(int n, double* x, int incx, double* y, int incy);
void qor_blas_zx9_cswap(int n, float* x, int incx, float* y, int incy);
void qor_blas_zx9_zswap(int n, double* x, int incx, double* y, int incy);

/* x = alpha x; csscal and zdscal scale complex vectors by a real number. Products are made for alpha = 0 and 1 too: NaN
   and infinities stay what they make them. */
void qor_blas_zx9_sscal(int n, float alpha, float* x, int incx);
void qor_blas_zx9_dscal(int n, double alpha, double* x, int incx);
void qor_blas_zx9_cscal(int n, const float* alpha, float* x, int incx);
void qor_blas_zx9_zscal(int n, const double* alpha, double* x, int incx);
void qor_blas_zx9_csscal(int n, float alpha, float* x, int incx);
void qor_blas_zx9_zdscal(int n, double alpha, double* x, int incx);

/* y = y + alpha x; alpha = 0 does nothing. */
void qor_blas_zx9_saxpy(int n, float alpha, const float* x, int incx, float* y, int incy);
void qor_blas_zx9_daxpy(int n, double alpha, const double* x, int incx, double* y, int incy);
void qor_blas_zx9_caxpy(int n, const float* alpha, const float* x, int incx, float* y, int incy);
void qor_blas_zx9_zaxpy(int n, const double* alpha, const double* x, int incx, double* y, int incy);

#ifdef __cplusplus
}
#endif
#endif
