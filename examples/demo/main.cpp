// What the library does, on the scale it is made for: ten million Gaussian variates by both methods beside the theory,
// a bootstrap of the change of the mean in a real series, the price of an option on a basket of ten correlated assets,
// and a recording filtered, thinned out and searched. Uses the public headers and the shared object alone.
#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <system_error>

#include "demo.h"
#include "wav.h"

namespace {

constexpr const char* usage =
    "usage: demo [FILE] [RECORDING.wav] [--split N] [--output FOLDER] [--variates N] [--resamples N]\n"
    "            [--paths N]\n"
    "\n"
    "FILE holds a series of numbers (default: the flow of the Nile). Its first N values are compared with the rest;\n"
    "without --split and without a line '# split: N' in the file, its halves. RECORDING.wav is filtered and searched\n"
    "(default: a voice of Debian's package alsa-utils).\n";

// -1: go on; otherwise the status to leave with.
int parse(int argc, char** argv, Options& options) {
  bool series_seen = false;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--help" || word == "-h") return std::printf("%s", usage), 0;
    if (word.rfind("--", 0) != 0) {
      const bool sound = is_wav(word);
      if (sound ? !options.recording.empty() : series_seen) return fail("more than one file: " + word);
      (sound ? options.recording : options.file) = word;
      series_seen = series_seen || !sound;
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
  if (!qor_cpu_supported()) return fail("this processor lacks SSE2 or SSSE3");
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
  Recording recording;
  if (!options.recording.empty()) {
    if (const std::string wrong = read_wav(options.recording, recording); !wrong.empty()) return fail(wrong);
  }
  std::error_code error;
  std::filesystem::create_directories(options.output, error);
  if (error) return fail("cannot make the folder " + options.output + ": " + error.message());

  std::signal(SIGPIPE, SIG_IGN);  // a gnuplot that ends early is noticed by its status
  try {
    const int parts[] = {show_gaussians(options), show_bootstrap(options, series), show_basket(options),
                         show_sound(options)};
    return *std::max_element(std::begin(parts), std::end(parts));
  } catch (const qor::Error& wrong) {
    return fail(wrong.what());
  }
}
