/* A signal smoothed by a short filter, by one call of a driver.
     gcc -m32 convolve.c $(pkg-config --cflags --libs qor) -o convolve */
#include <qor/qor.h>
#include <stdio.h>

int main(void) {
  if (!qor_cpu_supported()) return 2;
  {
    /* [driver] */
    const double x[8] = {1, 1, 1, 5, 5, 5, 1, 1}, filter[3] = {0.25, 0.5, 0.25};
    double z[8];
    /* The middle of the full result, 8 of its 8 + 3 - 1 elements from number 1 on. */
    const int status = _wxrConvDDDirect1D_dec(x, 1, filter, 1, z, 1, 8, 3, 1, 8, 1);
    /* [driver] */
    int i;
    if (status != 0) return 1;
    for (i = 0; i < 8; ++i) printf("%g ", z[i]);
    printf("\n");
  }
  return 0;
}
