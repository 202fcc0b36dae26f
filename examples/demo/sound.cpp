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
constexpr int direct = QOR_CONV_MODE_DIRECT, by_transforms = QOR_CONV_MODE_FFT;

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
  int kind, mode, start = 0, decimation = 1;
  int nx = 0, xstride = 1;
  double milliseconds = 0;

  int run(const Samples& x, const Samples& y, Samples& z) {
    if (nx == 0) nx = length(x);
    const int ny = length(y), nz = length(z);
    qor_conv_task* task = nullptr;
    int status = __wxrNewTask(&task, kind, 0, mode, 0, QOR_CONV_PRECISION_DOUBLE, 1, &nx, &ny, &nz);
    if (status == 0) status = __wxrEditTask(task, QOR_CONV_EDIT_START, &start);
    if (status == 0) status = __wxrEditTask(task, QOR_CONV_EDIT_DECIMATION, &decimation);
    const Stopwatch watch;
    if (status == 0) status = __wxrExec(task, x.data(), &xstride, y.data(), nullptr, z.data(), nullptr);
    milliseconds = 1000 * watch.seconds();
    __wxrDeleteTask(&task);
    return status;
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

int filter(const Recording& sound, Samples& filtered, Samples& thinned) {
  const Samples taps = low_pass_taps(cutoff);
  const int n = length(sound.samples);
  filtered = zeros(n);
  thinned = zeros((n - 1) / thinning + 1);
  Samples directly = zeros(n);
  Sums one{QOR_CONV_KIND_CONVOLUTION, direct, tap_count / 2},
      other{QOR_CONV_KIND_CONVOLUTION, by_transforms, tap_count / 2},
      fewer{QOR_CONV_KIND_CONVOLUTION, direct, tap_count / 2, thinning};
  int status = one.run(taps, sound.samples, directly);
  if (status == 0) status = other.run(taps, sound.samples, filtered);
  if (status == 0) status = fewer.run(taps, sound.samples, thinned);
  if (status != 0) return fail("filtering ended with status " + std::to_string(status));
  std::printf(
      "  low-passed at %.2f kHz, %d taps     %8.2f ms directly, %.2f ms through transforms; they differ by %.0e\n",
      cutoff * sound.rate / 1000, tap_count, one.milliseconds, other.milliseconds, difference(directly, filtered));
  std::printf("  the same, every %dth sample        %9.2f ms directly; differ by %.0e from the above\n", thinning,
              fewer.milliseconds, difference(filtered, thinned, thinning));
  return 0;
}

// ---- search ---------------------------------------------------------------------------------------------------------

struct Search {
  int at = 0, found = 0;  // samples
  Samples score;          // the correlation coefficient with the recording from each sample on
};

// The loudest quarter of a second, with as much noise added, is looked for in the recording.
int search(const Recording& sound, Search& out) {
  const Samples& y = sound.samples;
  const int n = length(y), m = std::max(1, std::min(sound.rate, n) / 4);
  Samples squares = y, energy = zeros(n - m + 1), fragment = zeros(m);
  for (double& s : squares) s *= s;
  // The energy from each sample on: correlation with a constant 1.
  Sums moving{QOR_CONV_KIND_CORRELATION, by_transforms, 0, 1, m, 0};
  if (const int s = moving.run({1.0}, squares, energy); s != 0) return fail("status " + std::to_string(s));
  const auto loudest = std::max_element(energy.begin(), energy.end());
  out.at = static_cast<int>(loudest - energy.begin());

  const Stream stream;
  int status = stream.status();
  if (status == QOR_RNG_OK) {
    status = _wxrdRngGaussian(QOR_RNG_GAUSSIAN_BOXMULLER2, stream, m, fragment.data(), 0, std::sqrt(*loudest / m));
  }
  if (status != QOR_RNG_OK) return fail("the generator returned status " + std::to_string(status));
  double size = 0;
  for (int i = 0; i < m; ++i) {
    double& v = fragment[static_cast<std::size_t>(i)];
    v += y[static_cast<std::size_t>(out.at + i)];
    size += v * v;
  }

  Samples directly = zeros(n - m + 1);
  out.score = zeros(n - m + 1);
  Sums one{QOR_CONV_KIND_CORRELATION, direct}, other{QOR_CONV_KIND_CORRELATION, by_transforms};
  status = other.run(fragment, y, out.score);
  const bool compare = static_cast<double>(n) * m < 3e9;  // some seconds
  if (status == 0 && compare) status = one.run(fragment, y, directly);
  if (status != 0) return fail("correlation ended with status " + std::to_string(status));
  std::printf("  correlated with a quarter second    %8.2f ms through transforms", other.milliseconds);
  if (compare)
    std::printf(", %.2f ms directly; they differ by %.0e", one.milliseconds, difference(directly, out.score));
  const double quiet = 1e-4 * *loudest;  // what has less energy than this is silence
  for (std::size_t i = 0; i < out.score.size(); ++i) out.score[i] /= std::sqrt(size * std::max(energy[i], quiet));
  out.found = static_cast<int>(std::max_element(out.score.begin(), out.score.end()) - out.score.begin());
  std::printf("\n  taken from %.4f s, with as much noise added; found at %.4f s, correlation %.2f\n",
              out.at / static_cast<double>(sound.rate), out.found / static_cast<double>(sound.rate),
              out.score[static_cast<std::size_t>(out.found)]);
  return 0;
}

// ---- spectra and pictures -------------------------------------------------------------------------------------------

// The power at each multiple of rate / n: the mean over half-overlapping segments under a Hann window. n = 2^order.
int power_spectrum(const Samples& samples, int order, Samples& power) {
  const int n = 1 << order;
  Samples part = zeros(n + 2);
  power = zeros(n / 2 + 1);
  qfpsFFTSpec_R_64f* spec = nullptr;
  int status = qfpsFFTInitAlloc_R_64f(&spec, order, QFPS_NO_SCALING, 0), count = 0;
  for (int at = 0; status == QFPS_OK && (at == 0 || at + n <= length(samples)); at += n / 2, ++count) {
    for (int i = 0; i < n; ++i) {
      const double s = at + i < length(samples) ? samples[static_cast<std::size_t>(at + i)] : 0;
      part[static_cast<std::size_t>(i)] = s * (0.5 - 0.5 * std::cos(2 * pi * i / n));
    }
    status = qfpsFFTFwd_RToCCS_64f(part.data(), part.data(), spec, nullptr);
    for (std::size_t k = 0; k < power.size(); ++k) {
      power[k] += part[2 * k] * part[2 * k] + part[2 * k + 1] * part[2 * k + 1];
    }
  }
  if (spec != nullptr) qfpsFFTFree_R_64f(spec);
  for (double& p : power) p /= static_cast<double>(count) * n * n;
  return status;
}

int draw_sound(const Options& options, const Recording& sound, const Samples& filtered, const Samples& thinned,
               const Search& hit) {
  constexpr int order = 12;
  Samples before, after, fewer;
  int status = power_spectrum(sound.samples, order, before);
  if (status == QFPS_OK) status = power_spectrum(filtered, order, after);
  if (status == QFPS_OK) status = power_spectrum(thinned, order - 2, fewer);  // a quarter of the rate, the same steps
  if (status != QFPS_OK) return fail("a transform ended with status " + std::to_string(status));
  const double top = std::max(largest(before), 1e-300), step = sound.rate / 1000.0 / (1 << order);
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
  if (const int status = filter(sound, filtered, thinned); status != 0) return status;
  if (const int status = search(sound, hit); status != 0) return status;
  return draw_sound(options, sound, filtered, thinned, hit);
}
