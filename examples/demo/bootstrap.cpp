// A bootstrap of the change of the mean in a real series.
#include <algorithm>
#include <cmath>

#include "demo.h"

namespace {

double mean_of(const double* x, long n) {
  double sum = 0;
  for (long i = 0; i < n; ++i) sum += x[i];
  return sum / static_cast<double>(n);
}

// Adds `sign` times the mean of a resample of x to each of the results; `indices` has room for all that they need.
void add_resampled_means(qor::Stream& stream, std::span<const double> x, double sign, std::span<int> indices,
                         std::span<double> out) {
  indices = indices.first(out.size() * x.size());
  stream.uniform(indices, 0, static_cast<int>(x.size()));
  for (double& result : out) {
    double sum = 0;
    for (const int index : indices.first(x.size())) sum += x[static_cast<std::size_t>(index)];
    result += sign * sum / static_cast<double>(x.size());
    indices = indices.subspan(x.size());
  }
}

}  // namespace

int show_bootstrap(const Options& options, const Series& series) {
  const double* const x = series.values.data();
  const int n = static_cast<int>(series.values.size()), n1 = static_cast<int>(series.split), n2 = n - n1;
  const double mean1 = mean_of(x, n1), mean2 = mean_of(x + n1, n2), change = mean2 - mean1;
  const long last1 = series.start + n1 - 1, last2 = series.start + n - 1;

  // A long series gets fewer resamples: a billion draws are enough for anyone watching.
  const long most = std::max(1000L, 1'000'000'000L / n), resamples = std::min(options.resamples, most);
  std::vector<double> changes(static_cast<std::size_t>(resamples));
  const int rounds = std::max(1, 16384 / n);
  std::vector<int> indices(static_cast<std::size_t>(rounds) * static_cast<std::size_t>(std::max(n1, n2)));

  const Stopwatch watch;
  {
    qor::Stream stream(QOR_BRNG_MT19937, seed);
    const std::span<const double> whole(series.values), before = whole.first(static_cast<std::size_t>(n1));
    Progress progress("bootstrap");
    for (long done = 0; done < resamples; done += rounds) {
      const auto now = static_cast<std::size_t>(std::min<long>(rounds, resamples - done));
      const std::span out(changes.data() + done, now);
      add_resampled_means(stream, before, -1, indices, out);
      add_resampled_means(stream, whole.subspan(before.size()), 1, indices, out);
      progress.at(static_cast<double>(done) / static_cast<double>(resamples));
    }
  }
  double squares = 0;
  for (const double c : changes) squares += (c - change) * (c - change);
  const double deviation = std::sqrt(squares / static_cast<double>(resamples));
  const auto quantile = [&changes](double part) {
    const auto at = changes.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(changes.size() - 1));
    std::nth_element(changes.begin(), at, changes.end());
    return *at;
  };
  const double low = quantile(0.025), high = quantile(0.975);
  const double seconds = watch.seconds();

  std::printf("\n%s: %d values\n", series.name.c_str(), n);
  std::printf("  mean of %ld to %ld  %12.2f\n", series.start, last1, mean1);
  std::printf("  mean of %ld to %ld  %12.2f\n", last1 + 1, last2, mean2);
  std::printf("  change of the mean  %12.2f   95 %% interval %.2f to %.2f, standard error %.2f\n", change, low, high,
              deviation);
  std::printf("  %ld resamples, %.3g index draws, %.2f s\n", resamples,
              static_cast<double>(resamples) * static_cast<double>(n), seconds);

  const double reach = deviation > 0 ? 4.5 * deviation : 1;
  Histogram histogram(change - reach, change + reach, 150);
  for (const double c : changes) histogram.add(c);
  const bool written =
      write_table(options.output + "/series.dat", n,
                  [&](std::FILE* file, int i) { std::fprintf(file, "%ld %.17g\n", series.start + i, x[i]); }) &&
      write_table(
          options.output + "/bootstrap.dat", static_cast<int>(histogram.counts.size()), [&](std::FILE* file, int i) {
            const double middle = histogram.middle(i);
            std::fprintf(
                file, "%.10g %g %d\n", middle,
                histogram.counts[static_cast<std::size_t>(i)] / static_cast<double>(resamples) / histogram.width,
                middle >= low && middle <= high);
          });
  if (!written) return 1;
  char numbers[512];
  std::snprintf(numbers, sizeof numbers,
                "start = %ld\ncut = %ld\nend = %ld\nmean1 = %.10g\nmean2 = %.10g\nchange = %.10g\nlow = %.10g\n"
                "high = %.10g\ndeviation = %.10g\nresamples = %ld\n",
                series.start, last1, last2, mean1, mean2, change, low, high, deviation, resamples);
  const std::string texts = "name = " + quoted(series.name) + "\nunit = " + quoted(series.unit) +
                            "\nposition = " + quoted(series.position) + "\n";
  return draw(options, "bootstrap", numbers + texts) ? 0 : 1;
}
