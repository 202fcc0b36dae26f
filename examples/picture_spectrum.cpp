// The two-dimensional spectrum of a picture, drawn: the logarithm of its magnitude, frequency 0 in the middle; and the
// picture again from its low frequencies alone. Reads and writes PGM; ./run picture converts from and to other formats.
// Uses the public header and the shared object alone.
#include <qor/dft.h>
#include <qor/version.h>

#include <chrono>
#include <complex>

#include "pgm.h"

namespace {

using namespace pgm;

void check(int status) {
  if (status != 0) fail(qor_dft_zx9_error_message_external(status));
}

double milliseconds(std::chrono::steady_clock::time_point since) {
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - since).count();
}

}  // namespace

int main(int argc, char** argv) {
  if (!qor_cpu_supported()) fail("this processor lacks SSE2 or SSSE3");
  if (argc != 3) fail("usage: picture_spectrum IN.pgm OUT\nwrites OUT-spectrum.pgm and OUT-smooth.pgm");
  const Picture picture = read_pgm(argv[1]);
  const int width = picture.width, height = picture.height, half = width / 2 + 1, lengths[] = {height, width};

  // A half-spectrum has the horizontal frequencies 0 .. width / 2; the others are conjugates.
  qor_dft_descriptor* d = nullptr;
  const int apart = QOR_DFT_OUT_OF_PLACE;
  const double back = 1.0 / (static_cast<double>(width) * height);
  check(qor_dft_zx9_create_descriptor_external(&d, QOR_DFT_SINGLE, QOR_DFT_REAL, 2, lengths));
  check(qor_dft_zx9_set_value_external(d, QOR_DFT_PLACEMENT, &apart));
  check(qor_dft_zx9_set_value_external(d, QOR_DFT_BACKWARD_SCALE, &back));
  check(qor_dft_zx9_commit_descriptor_external(d));

  Picture in = picture, out(width, height);
  std::vector<std::complex<float>> spectrum(static_cast<std::size_t>(height) * static_cast<std::size_t>(half));
  const auto at = [&](int y, int k) -> std::complex<float>& {
    return spectrum[static_cast<std::size_t>(y) * static_cast<std::size_t>(half) + static_cast<std::size_t>(k)];
  };
  const auto begin = std::chrono::steady_clock::now();
  check(qor_dft_zx9_compute_forward_external(d, in.values.data(), spectrum.data()));
  std::printf("%s: %d * %d, its spectrum in %.2f ms\n", argv[1], width, height, milliseconds(begin));

  // Frequency (v, u) is drawn at (v + height / 2, u + width / 2); white is the largest but the mean.
  double largest = 0;
  for (std::size_t i = 1; i < spectrum.size(); ++i)
    largest = std::max(largest, std::log1p(double{std::abs(spectrum[i])}));
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const int v = (y - height / 2 + height) % height, u = x - width / 2;
      const std::complex<float> z = u >= 0 ? at(v, u) : at((height - v) % height, -u);
      out.at(x, y) = static_cast<float>(255 * std::log1p(double{std::abs(z)}) / std::max(largest, 1e-30));
    }
  }
  write_pgm(std::string(argv[2]) + "-spectrum.pgm", out);

  // What is beyond a twelfth of the highest frequency goes.
  for (int y = 0; y < height; ++y) {
    for (int k = 0; k < half; ++k) {
      const double v = static_cast<double>(std::min(y, height - y)) / height, u = static_cast<double>(k) / width;
      if (std::hypot(u, v) > 0.5 / 12) at(y, k) = 0;
    }
  }
  check(qor_dft_zx9_compute_backward_external(d, spectrum.data(), out.values.data()));
  write_pgm(std::string(argv[2]) + "-smooth.pgm", out);
  check(qor_dft_zx9_free_descriptor_external(&d));
  return 0;
}
