/* A transform of two dimensions through a descriptor: a picture of 4 rows and 6 columns that is a wave.
     gcc -m32 descriptor.c $(pkg-config --cflags --libs qor) -lm -o descriptor */
#include <math.h>
#include <qor/qor.h>
#include <stdio.h>

int main(void) {
  const int lengths[2] = {4, 6}, apart = QOR_DFT_OUT_OF_PLACE;
  const double back = 1.0 / 24;
  qor_dft_descriptor* d;
  double picture[4][6], spectrum[4][4][2], again[4][6], most = 0; /* of each row 6/2 + 1 frequencies */
  int status, i, k;
  if (!qor_cpu_supported()) return 2;
  for (i = 0; i < 24; ++i) picture[i / 6][i % 6] = cos(2 * acos(-1.0) * (i / 6 / 4.0 + 2 * (i % 6) / 6.0));

  status = qor_dft_zx9_create_descriptor_external(&d, QOR_DFT_DOUBLE, QOR_DFT_REAL, 2, lengths);
  if (status == QOR_DFT_OK) status = qor_dft_zx9_set_value_external(d, QOR_DFT_PLACEMENT, &apart);
  if (status == QOR_DFT_OK) status = qor_dft_zx9_set_value_external(d, QOR_DFT_BACKWARD_SCALE, &back);
  if (status == QOR_DFT_OK) status = qor_dft_zx9_commit_descriptor_external(d);
  if (status == QOR_DFT_OK) status = qor_dft_zx9_compute_forward_external(d, picture, spectrum);
  if (status == QOR_DFT_OK) status = qor_dft_zx9_compute_backward_external(d, spectrum, again);
  if (status != QOR_DFT_OK) {
    printf("%s\n", qor_dft_zx9_error_message_external(status));
    return 1;
  }
  qor_dft_zx9_free_descriptor_external(&d);

  for (i = 0; i < 4; ++i) {
    for (k = 0; k < 4; ++k) printf("%5.1f", fabs(spectrum[i][k][0]) < 1e-12 ? 0.0 : spectrum[i][k][0]);
    printf("\n");
  }
  for (i = 0; i < 24; ++i) most = fmax(most, fabs(again[i / 6][i % 6] - picture[i / 6][i % 6]));
  printf("there and back: %s\n", most < 1e-15 ? "the same" : "different");
  return 0;
}
