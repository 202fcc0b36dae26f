/* A signal smoothed by a short filter: by one call of a driver, and by a task, which is described once and may be executed
   on any number of signals.
     gcc -m32 convolve.c $(pkg-config --cflags --libs qor) -o convolve */
#include <qor/qor.h>
#include <stdio.h>

int main(void) {
  const double x[8] = {1, 1, 1, 5, 5, 5, 1, 1}, filter[3] = {0.25, 0.5, 0.25};
  const int nx = 8, ny = 3, nz = 8, start = 1; /* the middle 8 of the full result's 8 + 3 - 1 elements */
  double z[8];
  qor_conv_task* task = NULL;
  int status, i;
  if (!qor_cpu_supported()) return 2;

  status = _wxrConvDDDirect1D_dec(x, 1, filter, 1, z, 1, nx, ny, start, nz, 1);
  if (status != 0) return 1;
  for (i = 0; i < 8; ++i) printf("%g ", z[i]);

  status = __wxrNewTask(&task, QOR_CONV_KIND_CONVOLUTION, 0, QOR_CONV_MODE_FFT, 0, QOR_CONV_PRECISION_DOUBLE, 1, &nx,
                        &ny, &nz);
  if (status == 0) status = __wxrEditTask(task, QOR_CONV_EDIT_START, &start);
  if (status == 0) status = __wxrExec(task, x, NULL, filter, NULL, z, NULL); /* dense arrays: no strides */
  __wxrDeleteTask(&task);
  if (status != 0) return 1;
  printf("\n");
  for (i = 0; i < 8; ++i) printf("%.3f ", z[i]);
  printf("\n");
  return 0;
}
