/* The smallest program: a stream, five Gaussian variates, and a logarithm of an array.
   Build: gcc -m32 quickstart.c $(pkg-config --cflags --libs qor) -o quickstart */
#include <qor/qor.h>
#include <stdio.h>

int main(void) {
  const unsigned seed = 1871;
  qor_stream* stream;
  double variates[5], logarithms[3] = {1.0, 2.718281828459045, 0.0};
  int i;

  if (!qor_cpu_supported()) {
    fprintf(stderr, "this processor lacks SSE2 or SSSE3\n");
    return 2;
  }
  if (__wxrNewStreamEx(&stream, QOR_BRNG_MT19937, 1, &seed) != QOR_RNG_OK) return 1;
  if (_wxrdRngGaussian(QOR_RNG_GAUSSIAN_BOXMULLER2, stream, 5, variates, 100.0, 15.0) != QOR_RNG_OK) return 1;
  __wxrDeleteStream(&stream);
  for (i = 0; i < 5; ++i) printf("%.3f ", variates[i]);

  _tfndLn_HA(3, logarithms, logarithms); /* in place */
  printf("\nln: %g %g %g, status %d\n", logarithms[0], logarithms[1], logarithms[2], _tfnGetErrStatus());
  return 0;
}
