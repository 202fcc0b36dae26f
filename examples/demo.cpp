// What the library does, on the scale it is made for: ten million Gaussian variates by both methods beside the theory,
// a bootstrap of the change of the mean in a real series, and the price of an option on a basket of ten correlated
// assets. Uses the public headers and the shared object alone.
#include <qor/qor.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

#include "series.h"

namespace {

constexpr unsigned seed = 1871;

struct Options {
  std::string file = QOR_EXAMPLES "/data/nile.txt", output = QOR_EXAMPLES "/output";
  long split = 0, variates = 10'000'000, resamples = 1'000'000, paths = 2'000'000;
};

int fail(const std::string& what) {
  std::fprintf(stderr, "demo: %s\n", what.c_str());
  return 1;
}

// A line that counts up while the work goes on, if someone is watching.
class Progress {
 public:
  explicit Progress(const char* what) : what_(what) {}
  void at(double part) {
    const int percent = static_cast<int>(100 * part);
    if (!terminal_ || percent == percent_) return;
    percent_ = percent;
    std::printf("\r  %s %3d %%", what_, percent);
    std::fflush(stdout);
  }
  ~Progress() {
    if (terminal_) std::printf("\r\033[K");
  }

 private:
  const char* what_;
  bool terminal_ = isatty(STDOUT_FILENO) == 1;
  int percent_ = -1;
};

class Stopwatch {
 public:
  double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin_).count(); }

 private:
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

// An MT19937 stream that deletes itself.
class Stream {
 public:
  Stream() : status_(__wxrNewStreamEx(&stream_, QOR_BRNG_MT19937, 1, &seed)) {}
  ~Stream() {
    if (stream_ != nullptr) __wxrDeleteStream(&stream_);
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  operator qor_stream*() const { return stream_; }
  int status() const { return status_; }

 private:
  qor_stream* stream_ = nullptr;
  int status_;
};

// ---- pictures -------------------------------------------------------------------------------------------------------

std::string quoted(const std::string& text) {
  std::string out = "'";
  for (const char c : text) out += c == '\'' ? "''" : c == '\n' ? std::string(" ") : std::string(1, c);
  return out + "'";
}

std::string shown(const std::filesystem::path& path) {
  std::error_code error;
  const std::filesystem::path near = std::filesystem::proximate(path, error);
  return error || near.string().rfind("..", 0) == 0 ? path.string() : near.string();
}

// Runs examples/<script>.gp after the given assignments; it leaves <script>.png and .svg in the output folder.
bool draw(const Options& options, const std::string& script, const std::string& assignments) {
  std::FILE* const gnuplot = popen("command -v gnuplot >/dev/null || exit 127; exec gnuplot", "w");
  if (gnuplot == nullptr) return fail("cannot start gnuplot"), false;
  std::fprintf(gnuplot, "folder = %s\n%sload %s\n", quoted(options.output).c_str(), assignments.c_str(),
               quoted(QOR_EXAMPLES "/" + script + ".gp").c_str());
  const int status = pclose(gnuplot);
  if (WIFEXITED(status) && WEXITSTATUS(status) == 127) {
    std::printf("  no picture: gnuplot is not installed\n");
    return true;
  }
  if (status != 0) return fail("gnuplot could not draw the picture"), false;
  for (const char* kind : {".png", ".svg"}) {
    std::printf("  picture: %s\n", shown(options.output + "/" + script + kind).c_str());
  }
  return true;
}

// Writes a table for gnuplot, a row a call of `row`.
bool write_table(const std::string& path, int rows, const std::function<void(std::FILE*, int)>& row) {
  std::FILE* const file = std::fopen(path.c_str(), "w");
  if (file == nullptr) return fail("cannot write " + path + ": " + std::strerror(errno)), false;
  for (int i = 0; i < rows; ++i) row(file, i);
  return std::fclose(file) == 0;
}

// ---- Gaussian variates ----------------------------------------------------------------------------------------------

struct Histogram {
  double low, width;
  std::vector<double> counts;
  Histogram(double from, double to, int bins)
      : low(from), width((to - from) / bins), counts(static_cast<std::size_t>(bins)) {}
  void add(double x) {
    const double bin = (x - low) / width;
    if (bin >= 0 && bin < static_cast<double>(counts.size())) ++counts[static_cast<std::size_t>(bin)];
  }
  double middle(int bin) const { return low + (bin + 0.5) * width; }
};

struct Sample {
  double seconds = 0, mean = 0, deviation = 0, skewness = 0, kurtosis = 0;
  Histogram histogram{-6, 6, 160};
};

int sample_gaussians(const Options& options, int method, Sample& sample) {
  const Stream stream;
  if (stream.status() != QOR_RNG_OK) return stream.status();
  const char* const labels[] = {"method 0", "method 1"};
  Progress progress(labels[method]);
  std::vector<double> block(1 << 16);
  double s1 = 0, s2 = 0, s3 = 0, s4 = 0;
  for (long done = 0; done < options.variates;) {
    const int n = static_cast<int>(std::min<long>(options.variates - done, static_cast<long>(block.size())));
    const Stopwatch watch;
    const int status = _wxrdRngGaussian(method, stream, n, block.data(), 0.0, 1.0);
    sample.seconds += watch.seconds();
    if (status != QOR_RNG_OK) return status;
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
  return QOR_RNG_OK;
}

int show_gaussians(const Options& options) {
  Sample samples[2];
  std::printf("Gaussian variates: MT19937, double precision, %ld by each method\n", options.variates);
  for (const int method : {QOR_RNG_GAUSSIAN_BOXMULLER, QOR_RNG_GAUSSIAN_BOXMULLER2}) {
    const int status = sample_gaussians(options, method, samples[method]);
    if (status != QOR_RNG_OK) return fail("the generator returned status " + std::to_string(status));
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

// ---- bootstrap ------------------------------------------------------------------------------------------------------

double mean_of(const double* x, long n) {
  double sum = 0;
  for (long i = 0; i < n; ++i) sum += x[i];
  return sum / static_cast<double>(n);
}

// Adds `sign` times the mean of a resample of x to each of `rounds` results; `indices` has room for rounds * n.
int add_resampled_means(qor_stream* stream, const double* x, int n, int rounds, double sign, int* indices,
                        double* out) {
  const int status = _wxriRngUniform(0, stream, rounds * n, indices, 0, n);
  if (status != QOR_RNG_OK) return status;
  for (int r = 0; r < rounds; ++r, indices += n) {
    double sum = 0;
    for (int i = 0; i < n; ++i) sum += x[indices[i]];
    out[r] += sign * sum / n;
  }
  return QOR_RNG_OK;
}

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
    const Stream stream;
    int status = stream.status();
    Progress progress("bootstrap");
    for (long done = 0; status == QOR_RNG_OK && done < resamples; done += rounds) {
      const int now = static_cast<int>(std::min<long>(rounds, resamples - done));
      double* const out = changes.data() + done;
      status = add_resampled_means(stream, x, n1, now, -1, indices.data(), out);
      if (status == QOR_RNG_OK) status = add_resampled_means(stream, x + n1, n2, now, 1, indices.data(), out);
      progress.at(static_cast<double>(done) / static_cast<double>(resamples));
    }
    if (status != QOR_RNG_OK) return fail("the generator returned status " + std::to_string(status));
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

// ---- a basket of assets
// ----------------------------------------------------------------------------------------------

// Ten assets of 100 each follow geometric Brownian motions for a year; a call at 100 on their mean.
constexpr int assets = 10;
constexpr double spot = 100, strike = 100, rate = 0.03;

// The logarithms of what the assets grow by: their means, and the factor of their variance, packed by columns.
struct Basket {
  double mean[assets], factor[assets * (assets + 1) / 2];
  double mean_of_all = 0, variance_of_all = 0;  // of the mean of the logarithms
};

Basket make_basket() {
  Basket b;
  double variance[assets][assets], lower[assets][assets] = {};
  const auto volatility = [](int i) { return 0.15 + 0.02 * i; };
  for (int i = 0; i < assets; ++i) {
    b.mean[i] = rate - volatility(i) * volatility(i) / 2;
    b.mean_of_all += b.mean[i] / assets;
    for (int k = 0; k < assets; ++k) {
      variance[i][k] = volatility(i) * volatility(k) * (0.3 + 0.7 * std::pow(0.8, std::abs(i - k)));
      b.variance_of_all += variance[i][k] / (assets * assets);
    }
  }
  double* packed = b.factor;
  for (int k = 0; k < assets; ++k) {
    for (int i = k; i < assets; ++i) {
      double sum = variance[i][k];
      for (int j = 0; j < k; ++j) sum -= lower[i][j] * lower[k][j];
      *packed++ = lower[i][k] = i == k ? std::sqrt(sum) : sum / lower[k][k];
    }
  }
  return b;
}

// The call on the geometric mean, whose logarithm is normal.
double geometric_price(const Basket& b) {
  const auto normal = [](double z) { return 0.5 * std::erfc(-z / std::sqrt(2.0)); };
  const double deviation = std::sqrt(b.variance_of_all);
  const double d2 = (std::log(spot / strike) + b.mean_of_all) / deviation, d1 = d2 + deviation;
  return std::exp(-rate) * (spot * std::exp(b.mean_of_all + b.variance_of_all / 2) * normal(d1) - strike * normal(d2));
}

struct Average {
  double n = 0, sum = 0, squares = 0;
  void add(double x) { n += 1, sum += x, squares += x * x; }
  double mean() const { return sum / n; }
  double error() const { return std::sqrt(std::max(0.0, squares / n - mean() * mean()) / n); }
};

int show_basket(const Options& options) {
  const Basket basket = make_basket();
  const double exact = geometric_price(basket);
  struct Estimate {
    double paths, price, error;
  };
  std::vector<Estimate> convergence;
  // The call on the arithmetic mean has no closed form; its difference from the geometric one varies much less.
  Average geometric, arithmetic, difference;
  double seconds = 0;
  {
    const Stream stream;
    int status = stream.status();
    Progress progress("basket");
    constexpr int block = 1000;
    std::vector<double> growth(static_cast<std::size_t>(block) * assets);
    double next = 100;
    for (long done = 0; status == QOR_RNG_OK && done < options.paths;) {
      const int n =
          static_cast<int>(std::min<long>(std::min<long>(block, static_cast<long>(next) - done), options.paths - done));
      const Stopwatch watch;
      status = _wxrdRngGaussianMV(QOR_RNG_GAUSSIAN_BOXMULLER2, stream, n, growth.data(), assets, QOR_RNG_STORAGE_PACKED,
                                  basket.mean, basket.factor);
      if (status == QOR_RNG_OK) _tfndExp_HA(n * assets, growth.data(), growth.data());
      seconds += watch.seconds();
      for (int j = 0; j < n; ++j) {
        double sum = 0, product = 1;
        for (int i = 0; i < assets; ++i) {
          const double value = growth[static_cast<std::size_t>(j * assets + i)];
          sum += value, product *= value;
        }
        const double discount = std::exp(-rate), above = std::pow(product, 1.0 / assets) * spot - strike;
        const double g = discount * std::max(0.0, above), a = discount * std::max(0.0, sum / assets * spot - strike);
        geometric.add(g), arithmetic.add(a), difference.add(a - g);
      }
      done += n;
      if (done >= static_cast<long>(next) || done == options.paths) {
        convergence.push_back({static_cast<double>(done), geometric.mean(), geometric.error()});
        next *= 1.5;
      }
      progress.at(static_cast<double>(done) / static_cast<double>(options.paths));
    }
    if (status != QOR_RNG_OK) return fail("the generator returned status " + std::to_string(status));
  }
  std::printf("\nOption on a basket of %d correlated assets: %ld paths, %.3g vectors per second\n", assets,
              options.paths, static_cast<double>(options.paths) / seconds);
  std::printf("  %-44s %9.4f\n", "geometric mean, closed form", exact);
  std::printf("  %-44s %9.4f   standard error %.4f, off by %+.2f of it\n", "geometric mean, simulated",
              geometric.mean(), geometric.error(), (geometric.mean() - exact) / geometric.error());
  std::printf("  %-44s %9.4f   standard error %.4f\n", "arithmetic mean, simulated", arithmetic.mean(),
              arithmetic.error());
  std::printf("  %-44s %9.4f   standard error %.4f\n", "arithmetic mean, by way of the geometric one",
              exact + difference.mean(), difference.error());
  const bool written = write_table(options.output + "/basket.dat", static_cast<int>(convergence.size()),
                                   [&convergence](std::FILE* file, int i) {
                                     const Estimate& e = convergence[static_cast<std::size_t>(i)];
                                     std::fprintf(file, "%.0f %.10g %.10g\n", e.paths, e.price, 1.96 * e.error);
                                   });
  if (!written) return 1;
  char numbers[64];
  std::snprintf(numbers, sizeof numbers, "exact = %.10g\n", exact);
  return draw(options, "basket", numbers) ? 0 : 1;
}

// ---- command line ---------------------------------------------------------------------------------------------------

constexpr const char* usage =
    "usage: demo [FILE] [--split N] [--output FOLDER] [--variates N] [--resamples N]\n"
    "            [--paths N]\n"
    "\n"
    "FILE holds a series of numbers (default: the flow of the Nile). Its first N values are compared with the rest;\n"
    "without --split and without a line '# split: N' in the file, its halves.\n";

// -1: go on; otherwise the status to leave with.
int parse(int argc, char** argv, Options& options) {
  bool file_seen = false;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--help" || word == "-h") return std::printf("%s", usage), 0;
    if (word.rfind("--", 0) != 0) {
      if (file_seen) return fail("more than one file: " + word);
      options.file = word;
      file_seen = true;
      continue;
    }
    long* const number = word == "--split"       ? &options.split
                         : word == "--variates"  ? &options.variates
                         : word == "--resamples" ? &options.resamples
                         : word == "--paths"     ? &options.paths
                                                 : nullptr;
    if (number == nullptr && word != "--output") return fail("unknown option " + word + "\n" + usage);
    if (++i == argc) return fail(word + " needs a value");
    if (number == nullptr) {
      options.output = argv[i];
    } else {
      char* end = nullptr;
      *number = std::strtol(argv[i], &end, 10);
      if (*end != 0 || *number < 1 || *number > 100'000'000) {
        return fail(word + " needs a number from 1 to 100000000, not '" + argv[i] + "'");
      }
    }
  }
  return -1;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (const int status = parse(argc, argv, options); status >= 0) return status;

  Series series;
  if (const std::string wrong = read_series(options.file, series); !wrong.empty()) return fail(wrong);
  const long n = static_cast<long>(series.values.size());
  if (options.split != 0) series.split = options.split;
  if (series.split == 0) series.split = n / 2;
  if (series.split < 2 || n - series.split < 2) {
    return fail(options.file + " has " + std::to_string(n) + " numbers, split after " + std::to_string(series.split) +
                ": both parts need at least two");
  }
  std::error_code error;
  std::filesystem::create_directories(options.output, error);
  if (error) return fail("cannot make the folder " + options.output + ": " + error.message());

  std::signal(SIGPIPE, SIG_IGN);  // a gnuplot that ends early is noticed by its status
  const int parts[] = {show_gaussians(options), show_bootstrap(options, series), show_basket(options)};
  return *std::max_element(std::begin(parts), std::end(parts));
}
