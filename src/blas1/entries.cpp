#include "base/target.h"
#include "blas1/level1.h"
#include "qor/blas1.h"

namespace blas1 = qor::blas1;

// The members of a type: letter, real type, parts of an element.
#define BLAS1_MEMBERS(letter, T, parts)                                                     \
  QOR_ENTRY void qor_blas_zx9_##letter##copy(int n, const T* x, int incx, T* y, int incy) { \
    blas1::copy<T, parts>(n, x, incx, y, incy);                                             \
  }                                                                                         \
  QOR_ENTRY void qor_blas_zx9_##letter##swap(int n, T* x, int incx, T* y, int incy) {       \
    blas1::swap<T, parts>(n, x, incx, y, incy);                                             \
  }
#define BLAS1_REAL(letter, T)                                                                        \
  BLAS1_MEMBERS(letter, T, 1)                                                                        \
  QOR_ENTRY void qor_blas_zx9_##letter##scal(int n, T alpha, T* x, int incx) {                       \
    blas1::scal<T, 1>(n, &alpha, x, incx);                                                           \
  }                                                                                                  \
  QOR_ENTRY void qor_blas_zx9_##letter##axpy(int n, T alpha, const T* x, int incx, T* y, int incy) { \
    blas1::axpy<T, 1>(n, &alpha, x, incx, y, incy);                                                  \
  }
#define BLAS1_COMPLEX(letter, T, real_letter)                                                               \
  BLAS1_MEMBERS(letter, T, 2)                                                                               \
  QOR_ENTRY void qor_blas_zx9_##letter##scal(int n, const T* alpha, T* x, int incx) {                       \
    blas1::scal<T, 2>(n, alpha, x, incx);                                                                   \
  }                                                                                                         \
  QOR_ENTRY void qor_blas_zx9_##letter##real_letter##scal(int n, T alpha, T* x, int incx) {                 \
    blas1::scal_by_real<T>(n, alpha, x, incx);                                                              \
  }                                                                                                         \
  QOR_ENTRY void qor_blas_zx9_##letter##axpy(int n, const T* alpha, const T* x, int incx, T* y, int incy) { \
    blas1::axpy<T, 2>(n, alpha, x, incx, y, incy);                                                          \
  }
BLAS1_REAL(s, float)
BLAS1_REAL(d, double)
BLAS1_COMPLEX(c, float, s)
BLAS1_COMPLEX(z, double, d)
