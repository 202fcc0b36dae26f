// Ten million Gaussian variates by both methods beside the theory.
#include <algorithm>
#include <cmath>

#include "demo.h"

namespace {

struct Sample {
  double seconds = 0, mean = 0, deviation = 0, skewness = 0, kurtosis = 0;
  Histogram histogram{-6, 6, 160};
};

void sample_gaussians(const Options& options, int method, Sample& sample) {
  qor::Stream stream(QOR_BRNG_MT19937, seed);
  const char* const labels[] = {"method 0", "method 1"};
  Progress progress(labels[method]);
  std::vector<double> block(1 << 16);
  double s1 = 0, s2 = 0, s3 = 0, s4 = 0;
  for (long done = 0; done < options.variates;) {
    const int n = static_cast<int>(std::min<long>(options.variates - done, static_cast<long>(block.size())));
    const Stopwatch watch;
    stream.gaussian(std::span(block).first(static_cast<std::size_t>(n)), 0, 1, method);
    sample.seconds += watch.seconds();
    for (int i = 0; i < n; ++i) {
      const double x = block[static_cast<std::size_t>(i)];
      s1 += x, s2 += x * x, s3 += x * x * x, s4 += x * x * x * x;
      sample.histogram.add(x);
    }
    done += n;
    progress.at(static_cast<double>(done) / static_cast<double>(options.variates));
  }
  // Central moments from those about zero; the mean is close to zero, so nothing cancels.
  const double n = static_cast<double>(options.variates), m = s1 / n;
  const double c2 = s2 / n - m * m, c3 = s3 / n - 3 * m * s2 / n + 2 * m * m * m;
  const double c4 = s4 / n - 4 * m * s3 / n + 6 * m * m * s2 / n - 3 * m * m * m * m;
  sample.mean = m;
  sample.deviation = std::sqrt(c2);
  sample.skewness = c3 / (c2 * std::sqrt(c2));
  sample.kurtosis = c4 / (c2 * c2);
}

}  // namespace

int show_gaussians(const Options& options) {
  Sample samples[2];
  std::printf("Gaussian variates: MT19937, double precision, %ld by each method\n", options.variates);
  for (const int method : {QOR_RNG_GAUSSIAN_BOXMULLER, QOR_RNG_GAUSSIAN_BOXMULLER2}) {
    sample_gaussians(options, method, samples[method]);
  }
  const double n = static_cast<double>(options.variates);
  std::printf("  %-24s %13s %10s %10s %10s %10s\n", "", "per second", "mean", "deviation", "skewness", "kurtosis");
  std::printf("  %-24s %13s %10.6f %10.6f %10.6f %10.6f\n", "theory", "", 0.0, 1.0, 0.0, 3.0);
  const char* const names[] = {"method 0, Box-Muller", "method 1, Box-Muller 2"};
  for (int method = 0; method < 2; ++method) {
    const Sample& s = samples[method];
    std::printf("  %-24s %13.0f %10.6f %10.6f %10.6f %10.6f\n", names[method], n / s.seconds, s.mean, s.deviation,
                s.skewness, s.kurtosis);
  }
  std::printf("  %-24s %13s %10.6f %10.6f %10.6f %10.6f\n", "standard error", "", 1 / std::sqrt(n),
              1 / std::sqrt(2 * n), std::sqrt(6 / n), std::sqrt(24 / n));

  // Per bin: middle, theory, and of each method the density and its distance from theory in standard errors.
  const Histogram& bins = samples[0].histogram;
  const bool written =
      write_table(options.output + "/gaussian.dat", static_cast<int>(bins.counts.size()), [&](std::FILE* file, int i) {
        const double left = bins.low + i * bins.width, right = left + bins.width;
        const double expected = n / 2 * (std::erfc(left / std::sqrt(2.0)) - std::erfc(right / std::sqrt(2.0)));
        std::fprintf(file, "%g %g", bins.middle(i), expected / n / bins.width);
        for (const Sample& s : samples) {
          const double count = s.histogram.counts[static_cast<std::size_t>(i)];
          std::fprintf(file, " %g", count / n / bins.width);
          if (expected < 20) {
            std::fprintf(file, " NaN");  // too few for the normal approximation
          } else {
            std::fprintf(file, " %g", (count - expected) / std::sqrt(expected));
          }
        }
        std::fprintf(file, "\n");
      });
  if (!written) return 1;
  return draw(options, "gaussian", "count = '" + std::to_string(options.variates) + "'\n") ? 0 : 1;
}
