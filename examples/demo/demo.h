// What the parts of the demo share: options, watches, streams, tables and pictures.
#pragma once

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <functional>
#include <qor/qor.hpp>
#include <string>
#include <vector>

#include "series.h"

constexpr unsigned seed = 1871;
constexpr const char* usual_recording = "/usr/share/sounds/alsa/Front_Center.wav";

struct Options {
  std::string file = QOR_EXAMPLES "/data/nile.txt", output = QOR_EXAMPLES "/output";
  std::string recording;  // empty: the usual one, if it is there
  long split = 0, variates = 10'000'000, resamples = 1'000'000, paths = 2'000'000;
};

// Says what is wrong; 1, the status to leave with.
int fail(const std::string& what);

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

// ---- tables and pictures --------------------------------------------------------------------------------------------

std::string quoted(const std::string& text);  // for gnuplot
std::string shown(const std::string& path);   // from here, when it is near

// Writes a table for gnuplot, a row a call of `row`.
bool write_table(const std::string& path, int rows, const std::function<void(std::FILE*, int)>& row);
// Runs examples/<script>.gp after the given assignments; it leaves <script>.png and .svg in the output folder.
bool draw(const Options& options, const std::string& script, const std::string& assignments);

// ---- the parts: 0, or the status to leave with ----------------------------------------------------------------------

int show_gaussians(const Options& options);
int show_bootstrap(const Options& options, const Series& series);
int show_basket(const Options& options);
int show_sound(const Options& options);
