/* Level-1 kernels: vectors with strides, real and complex.
     gcc -m32 level1.c $(pkg-config --cflags --libs qor) -o level1 */
#include <qor/qor.h>
#include <stdio.h>

int main(void) {
  double matrix[6] = {1, 2, 3, 4, 5, 6}; /* two rows of three */
  double column[2], z[4] = {1, 2, 3, 4}; /* two complex numbers */
  const double i[2] = {0, 1};
  if (!qor_cpu_supported()) return 2;
  qor_blas_zx9_dcopy(2, matrix + 1, 3, column, 1);       /* the middle column */
  qor_blas_zx9_daxpy(3, 10.0, matrix, 1, matrix + 3, 1); /* ten times the first row to the second */
  qor_blas_zx9_zscal(2, i, z, 1);                        /* times the imaginary unit */
  printf("%g %g, %g %g %g, %g%+gi %g%+gi\n", column[0], column[1], matrix[3], matrix[4], matrix[5], z[0], z[1], z[2],
         z[3]);
  return 0;
}
