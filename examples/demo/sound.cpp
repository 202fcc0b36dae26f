// A recording: low-passed directly and through transforms, thinned out, and a noisy fragment of it found again.
#include <algorithm>
#include <cmath>
#include <filesystem>

#include "demo.h"
#include "wav.h"

namespace {

using Samples = std::vector<double>;
constexpr double pi = 3.14159265358979323846;
constexpr int tap_count = 511, thinning = 4, segment = 4096, longest_seconds = 60;
using enum qor::Kind;
using enum qor::Mode;

int length(const Samples& s) { return static_cast<int>(s.size()); }
Samples zeros(int n) { return Samples(static_cast<std::size_t>(n)); }
double largest(const Samples& s) {
  double most = 0;
  for (const double v : s) most = std::max(most, std::fabs(v));
  return most;
}
// The largest difference between b and every step-th element of a, as a part of b's largest.
double difference(const Samples& a, const Samples& b, int step = 1) {
  double most = 0;
  for (std::size_t i = 0; i < b.size(); ++i) {
    most = std::max(most, std::fabs(a[i * static_cast<std::size_t>(step)] - b[i]));
  }
  return most / std::max(largest(b), 1e-300);
}

// A convolution or correlation; z is as long as wanted already. xstride 0 repeats the first element nx times.
struct Sums {
  qor::Kind kind;
  qor::Mode mode;
  int start = 0, decimation = 1;
  int nx = 0, xstride = 1;
  double milliseconds = 0;

  void run(const Samples& x, const Samples& y, Samples& z) {
    if (nx == 0) nx = length(x);
    qor::Task<double> task(kind, nx, length(y), mode, length(z));
    task.set_start(start);
    task.set_decimation(decimation);
    const Stopwatch watch;
    task.execute(x.data(), std::span(&xstride, 1), y.data(), {}, z.data(), {});
    milliseconds = 1000 * watch.seconds();
  }
};

// ---- filtering ------------------------------------------------------------------------------------------------------

// sin(x)/x up to the cutoff, in parts of the rate, under a Blackman window; they add up to 1.
Samples low_pass_taps(double cutoff) {
  Samples taps = zeros(tap_count);
  double sum = 0;
  for (int i = 0; i < tap_count; ++i) {
    const double t = i - tap_count / 2, turn = 2 * pi * i / (tap_count - 1);
    double& tap = taps[static_cast<std::size_t>(i)];
    tap = t == 0 ? 2 * cutoff : std::sin(2 * pi * cutoff * t) / (pi * t);
    tap *= 0.42 - 0.5 * std::cos(turn) + 0.08 * std::cos(2 * turn);
    sum += tap;
  }
  for (double& tap : taps) tap /= sum;
  return taps;
}

// The window's transition band ends at half the rate that is left after thinning out.
constexpr double cutoff = 0.5 / thinning - 2.75 / tap_count;

void filter(const Recording& sound, Samples& filtered, Samples& thinned) {
  const Samples taps = low_pass_taps(cutoff);
  const int n = length(sound.samples);
  filtered = zeros(n);
  thinned = zeros((n - 1) / thinning + 1);
  Samples directly = zeros(n);
  Sums one{convolution, direct, tap_count / 2}, other{convolution, fourier, tap_count / 2},
      fewer{convolution, direct, tap_count / 2, thinning};
  one.run(taps, sound.samples, directly);
  other.run(taps, sound.samples, filtered);
  fewer.run(taps, sound.samples, thinned);
  std::printf(
      "  low-passed at %.2f kHz, %d taps     %8.2f ms directly, %.2f ms through transforms; they differ by %.0e\n",
      cutoff * sound.rate / 1000, tap_count, one.milliseconds, other.milliseconds, difference(directly, filtered));
  std::printf("  the same, every %dth sample        %9.2f ms directly; differ by %.0e from the above\n", thinning,
              fewer.milliseconds, difference(filtered, thinned, thinning));
}

// ---- search ---------------------------------------------------------------------------------------------------------

struct Search {
  int at = 0, found = 0;  // samples
  Samples score;          // the correlation coefficient with the recording from each sample on
};

// The loudest quarter of a second, with as much noise added, is looked for in the recording.
void search(const Recording& sound, Search& out) {
  const Samples& y = sound.samples;
  const int n = length(y), m = std::max(1, std::min(sound.rate, n) / 4);
  Samples squares = y, energy = zeros(n - m + 1), fragment = zeros(m);
  for (double& s : squares) s *= s;
  // The energy from each sample on: correlation with a constant 1.
  Sums moving{correlation, fourier, 0, 1, m, 0};
  moving.run({1.0}, squares, energy);
  const auto loudest = std::max_element(energy.begin(), energy.end());
  out.at = static_cast<int>(loudest - energy.begin());

  qor::Stream stream(QOR_BRNG_MT19937, seed);
  stream.gaussian(fragment, 0, std::sqrt(*loudest / m));
  double size = 0;
  for (int i = 0; i < m; ++i) {
    double& v = fragment[static_cast<std::size_t>(i)];
    v += y[static_cast<std::size_t>(out.at + i)];
    size += v * v;
  }

  Samples directly = zeros(n - m + 1);
  out.score = zeros(n - m + 1);
  Sums one{correlation, direct}, other{correlation, fourier};
  other.run(fragment, y, out.score);
  const bool compare = static_cast<double>(n) * m < 3e9;  // some seconds
  if (compare) one.run(fragment, y, directly);
  std::printf("  correlated with a quarter second    %8.2f ms through transforms", other.milliseconds);
  if (compare)
    std::printf(", %.2f ms directly; they differ by %.0e", one.milliseconds, difference(directly, out.score));
  const double quiet = 1e-4 * *loudest;  // what has less energy than this is silence
  for (std::size_t i = 0; i < out.score.size(); ++i) out.score[i] /= std::sqrt(size * std::max(energy[i], quiet));
  out.found = static_cast<int>(std::max_element(out.score.begin(), out.score.end()) - out.score.begin());
  std::printf("\n  taken from %.4f s, with as much noise added; found at %.4f s, correlation %.2f\n",
              out.at / static_cast<double>(sound.rate), out.found / static_cast<double>(sound.rate),
              out.score[static_cast<std::size_t>(out.found)]);
}

// ---- spectra and pictures -------------------------------------------------------------------------------------------

// The power at each multiple of rate / n: the mean over half-overlapping segments under a Hann window.
Samples power_spectrum(const Samples& samples, int n) {
  Samples part = zeros(n + 2);
  Samples power = zeros(n / 2 + 1);
  const qor::RealTransform<double> transform(n, qor::Scaling::none);
  std::vector<unsigned char> buffer(transform.buffer_size());
  int count = 0;
  for (int at = 0; at == 0 || at + n <= length(samples); at += n / 2, ++count) {
    for (int i = 0; i < n; ++i) {
      const double s = at + i < length(samples) ? samples[static_cast<std::size_t>(at + i)] : 0;
      part[static_cast<std::size_t>(i)] = s * (0.5 - 0.5 * std::cos(2 * pi * i / n));
    }
    transform.forward(std::span(part).first(static_cast<std::size_t>(n)), part, qor::Packing::ccs, buffer);
    for (std::size_t k = 0; k < power.size(); ++k) {
      power[k] += part[2 * k] * part[2 * k] + part[2 * k + 1] * part[2 * k + 1];
    }
  }
  for (double& p : power) p /= static_cast<double>(count) * n * n;
  return power;
}

int draw_sound(const Options& options, const Recording& sound, const Samples& filtered, const Samples& thinned,
               const Search& hit) {
  constexpr int n_spectrum = 4096;
  const Samples before = power_spectrum(sound.samples, n_spectrum), after = power_spectrum(filtered, n_spectrum);
  const Samples fewer = power_spectrum(thinned, n_spectrum / thinning);  // the same steps
  const double top = std::max(largest(before), 1e-300), step = sound.rate / 1000.0 / n_spectrum;
  const auto part_above = [](const Samples& power) {
    double all = 0, above = 0;
    for (std::size_t k = 0; k < power.size(); ++k) {
      all += power[k];
      if (k >= power.size() / thinning) above += power[k];
    }
    return 10 * std::log10(std::max(above, 1e-300) / std::max(all, 1e-300));
  };
  std::printf("  power above %.1f kHz                 %.0f dB of all before, %.0f dB after\n",
              sound.rate / 2000.0 / thinning, part_above(before), part_above(after));

  const auto decibels = [top](double p) { return std::max(-160.0, 10 * std::log10(std::max(p, 1e-300) / top)); };
  const int n = length(sound.samples), columns = std::min(n, 1000);
  const auto extremes = [n, columns](const Samples& s, int column, double& low, double& high) {
    const auto from = s.begin() + static_cast<std::ptrdiff_t>(std::int64_t{n} * column / columns);
    const auto to = s.begin() + static_cast<std::ptrdiff_t>(std::int64_t{n} * (column + 1) / columns);
    const auto [a, b] = std::minmax_element(from, to);
    low = *a, high = *b;
  };
  const int scores = length(hit.score), score_columns = std::min(scores, 4000);
  const bool written =
      write_table(options.output + "/sound_wave.dat", columns,
                  [&](std::FILE* file, int i) {
                    double low, high, filtered_low, filtered_high;
                    extremes(sound.samples, i, low, high);
                    extremes(filtered, i, filtered_low, filtered_high);
                    std::fprintf(file, "%.6g %.4g %.4g %.4g %.4g\n", (i + 0.5) * n / columns / sound.rate, low, high,
                                 filtered_low, filtered_high);
                  }) &&
      write_table(options.output + "/sound_spectrum.dat", length(before),
                  [&](std::FILE* file, int i) {
                    const auto k = static_cast<std::size_t>(i);
                    std::fprintf(file, "%.6g %.5g %.5g ", i * step, decibels(before[k]), decibels(after[k]));
                    if (k < fewer.size()) {
                      std::fprintf(file, "%.5g\n", decibels(fewer[k]));
                    } else {
                      std::fprintf(file, "NaN\n");
                    }
                  }) &&
      write_table(options.output + "/sound_search.dat", score_columns, [&](std::FILE* file, int i) {
        const auto from = static_cast<std::size_t>(std::int64_t{scores} * i / score_columns);
        const auto to = static_cast<std::size_t>(std::int64_t{scores} * (i + 1) / score_columns);
        const auto best = std::max_element(hit.score.begin() + static_cast<std::ptrdiff_t>(from),
                                           hit.score.begin() + static_cast<std::ptrdiff_t>(to));
        std::fprintf(file, "%.6g %.4g\n", static_cast<double>(best - hit.score.begin()) / sound.rate, *best);
      });
  if (!written) return 1;
  char numbers[128];
  std::snprintf(numbers, sizeof numbers, "end = %.6g\ncutoff = %.6g\nfound = %.6g\nthinning = %d\n",
                n / static_cast<double>(sound.rate), cutoff * sound.rate / 1000,
                hit.found / static_cast<double>(sound.rate), thinning);
  return draw(options, "sound", numbers + ("name = " + quoted(sound.name) + "\n")) ? 0 : 1;
}

}  // namespace

int show_sound(const Options& options) {
  Recording sound;
  if (options.recording.empty() && !std::filesystem::exists(usual_recording)) {
    std::printf("\nNo recording: %s, of Debian's package alsa-utils, is not there. Give a WAV file of yours.\n",
                usual_recording);
    return 0;
  }
  const std::string path = options.recording.empty() ? usual_recording : options.recording;
  if (const std::string wrong = read_wav(path, sound); !wrong.empty()) return fail(wrong);
  const auto most = static_cast<std::size_t>(sound.rate) * longest_seconds;
  const bool cut = sound.samples.size() > most;
  if (cut) sound.samples.resize(most);
  std::printf("\n%s: %s%.2f s, %d samples per second\n", sound.name.c_str(), cut ? "the first " : "",
              length(sound.samples) / static_cast<double>(sound.rate), sound.rate);
  Samples filtered, thinned;
  Search hit;
  filter(sound, filtered, thinned);
  search(sound, hit);
  return draw_sound(options, sound, filtered, thinned, hit);
}
