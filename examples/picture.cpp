// Blurs and sharpens a picture with two-dimensional tasks: directly, through transforms, and directly with the blur's
// factors one after the other, since it is separable. Reads and writes PGM (netpbm's grey pictures); ./run picture
// converts from and to other formats. Uses the public header and the shared object alone.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <qor/qor.hpp>
#include <string>
#include <vector>

#include "pgm.h"

namespace {

using namespace pgm;

// The picture with its edges continued outwards, so that what lies outside isn't black.
Picture continued(const Picture& picture, int margin) {
  Picture out(picture.width + 2 * margin, picture.height + 2 * margin);
  for (int y = 0; y < out.height; ++y) {
    for (int x = 0; x < out.width; ++x) {
      out.at(x, y) =
          picture.at(std::clamp(x - margin, 0, picture.width - 1), std::clamp(y - margin, 0, picture.height - 1));
    }
  }
  return out;
}

// The convolution where all of the kernel lies within the picture: the result is smaller by the kernel's size less 1.
Picture convolved(const Picture& kernel, const Picture& picture, qor::Mode mode, double& milliseconds) {
  Picture out(picture.width - kernel.width + 1, picture.height - kernel.height + 1);
  const int shape[] = {kernel.width, kernel.height}, whole[] = {picture.width, picture.height};
  const int part[] = {out.width, out.height}, start[] = {kernel.width - 1, kernel.height - 1};
  qor::returning::Task<float> task(qor::Kind::convolution, shape, whole, part, mode);
  qor::Status status = task.status();
  if (status.ok()) status = task.set_start(start);
  const auto begin = std::chrono::steady_clock::now();
  if (status.ok()) status = task.execute(kernel.values, picture.values, out.values);
  milliseconds += std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
  if (!status.ok()) fail(std::string("the task ended with: ") + status.text());
  return out;
}

// One dimension of the blur; the values add up to 1.
std::vector<float> bell(double sigma, int radius) {
  std::vector<double> v;
  double sum = 0;
  for (int i = -radius; i <= radius; ++i) sum += v.emplace_back(std::exp(-i * i / (2 * sigma * sigma)));
  std::vector<float> out;
  for (const double each : v) out.push_back(static_cast<float>(each / sum));
  return out;
}

double difference(const Picture& a, const Picture& b) {
  double most = 0;
  for (std::size_t i = 0; i < a.values.size(); ++i) most = std::max(most, std::fabs(double{a.values[i]} - b.values[i]));
  return most;
}

double number(const char* text, double low, double high, const std::string& what) {
  char* end = nullptr;
  const double v = std::strtod(text, &end);
  if (*end != 0 || !(v >= low && v <= high)) {
    fail(what + " must be from " + std::to_string(low) + " to " + std::to_string(high));
  }
  return v;
}

}  // namespace

int main(int argc, char** argv) {
  if (!qor_cpu_supported()) fail("this processor lacks SSE2 or SSSE3");
  if (argc < 3 || argc > 5)
    fail("usage: picture IN.pgm OUT [SIGMA [AMOUNT]]\nwrites OUT-blurred.pgm and OUT-sharpened.pgm");
  const double sigma = argc > 3 ? number(argv[3], 0.1, 50, "SIGMA, the blur in pixels,") : 4;
  const double amount = argc > 4 ? number(argv[4], 0, 20, "AMOUNT, of what the blur takes away,") : 1.5;
  const Picture picture = read_pgm(argv[1]);
  const int radius = static_cast<int>(std::ceil(3 * sigma)), size = 2 * radius + 1;
  const Picture wide = continued(picture, radius);

  // The blur and its factors; sharpened is the picture and `amount` times its difference from the blurred one.
  Picture row(size, 1), column(1, size), blur(size, size), sharpen(size, size);
  row.values = column.values = bell(sigma, radius);
  for (int y = 0; y < size; ++y) {
    for (int x = 0; x < size; ++x) {
      blur.at(x, y) = row.at(x, 0) * column.at(0, y);
      sharpen.at(x, y) = static_cast<float>(-amount) * blur.at(x, y);
    }
  }
  sharpen.at(radius, radius) += static_cast<float>(1 + amount);

  double direct = 0, through = 0, factors = 0, sharp_direct = 0, sharp_through = 0;
  const Picture blurred = convolved(blur, wide, qor::Mode::direct, direct);
  const Picture again = convolved(blur, wide, qor::Mode::fourier, through);
  const Picture half = convolved(row, wide, qor::Mode::direct, factors);
  const Picture separately = convolved(column, half, qor::Mode::direct, factors);
  const Picture sharp = convolved(sharpen, wide, qor::Mode::direct, sharp_direct);
  const Picture sharp_again = convolved(sharpen, wide, qor::Mode::fourier, sharp_through);
  std::printf("%s: %d * %d, kernels of %d * %d, values from 0 to 255\n", argv[1], picture.width, picture.height, size,
              size);
  std::printf("  blur, directly            %9.2f ms\n", direct);
  std::printf("  blur, through transforms  %9.2f ms, differs by at most %.1e\n", through, difference(blurred, again));
  std::printf("  blur, rows then columns   %9.2f ms, differs by at most %.1e\n", factors,
              difference(blurred, separately));
  std::printf("  sharpen, directly         %9.2f ms\n", sharp_direct);
  std::printf("  sharpen, by transforms    %9.2f ms, differs by at most %.1e\n", sharp_through,
              difference(sharp, sharp_again));
  write_pgm(std::string(argv[2]) + "-blurred.pgm", blurred);
  write_pgm(std::string(argv[2]) + "-sharpened.pgm", sharp);
  return 0;
}
