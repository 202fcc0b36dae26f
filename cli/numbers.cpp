#include "numbers.h"

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>

#include "command.h"

namespace cli {

bool read_number(std::string_view word, double& value) {
  const bool plus = word.starts_with('+') && !word.starts_with("+-");
  const char *const begin = word.data() + (plus ? 1 : 0), *const end = word.data() + word.size();
  const auto result = std::from_chars(begin, end, value);
  const bool range = result.ec == std::errc::result_out_of_range;
  if (range) value = std::strtod(std::string(word).c_str(), nullptr);  // has the infinity or the zero
  return result.ptr == end && (result.ec == std::errc() || range);
}

bool flush_output() {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return true;
  if (errno != EPIPE) throw Failure(std::string("writing failed: ") + std::strerror(errno));
  return false;
}

void Writer::flush() {
  const char* from = buffer_.data();
  for (std::size_t left = buffer_.size(); left > 0;) {
    const ssize_t written = ::write(STDOUT_FILENO, from, left);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0 && errno == EPIPE) std::_Exit(0);  // whoever read has had enough
    if (written < 0) throw Failure(std::string("writing failed: ") + std::strerror(errno));
    from += written;
    left -= static_cast<std::size_t>(written);
  }
  buffer_.clear();
}

Reader::Reader(const std::string& file, bool raw)
    : file_(file == "-" ? stdin : std::fopen(file.c_str(), "rb")),
      name_(file == "-" ? "standard input" : file),
      raw_(raw) {
  if (!file_) throw Failure("cannot open " + file + ": " + std::strerror(errno));
}

bool Reader::next(double& value) {
  const auto separates = [](int c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == ',' || c == ';'; };
  std::string word;
  for (;;) {
    int c = getc_unlocked(file_.get());
    if (c == '#') {
      while (c != '\n' && c != EOF) c = getc_unlocked(file_.get());
    }
    if (c == EOF || separates(c)) {
      const long line = line_;
      if (c == '\n') ++line_;
      if (!word.empty()) {
        if (!read_number(word, value)) {
          for (char& letter : word) {
            if (letter < ' ' || letter > '~') letter = '?';
          }
          throw Failure(name_ + ", line " + std::to_string(line) + ": '" + word.substr(0, 40) + "' is not a number");
        }
        return true;
      }
      if (c == EOF) {
        if (std::ferror(file_.get()) != 0) throw Failure("cannot read " + name_ + ": " + std::strerror(errno));
        return false;
      }
      continue;
    }
    word += static_cast<char>(c);
  }
}

std::size_t Reader::raw_bytes(void* to, std::size_t each, std::size_t most) {
  const std::size_t bytes = std::fread(to, 1, each * most, file_.get());
  if (std::ferror(file_.get()) != 0) throw Failure("cannot read " + name_ + ": " + std::strerror(errno));
  if (bytes % each != 0) throw Failure(name_ + " ends within a number");
  return bytes / each;
}

double seconds() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

Progress::Progress(const char* what, double whole)
    : what_(what), whole_(whole), begin_(seconds()), terminal_(isatty(STDERR_FILENO) == 1) {}

void Progress::at(double done) {
  if (!terminal_) return;
  const double now = seconds();
  if (now - begin_ < 0.5 || now - shown_ < 0.1) return;
  shown_ = now;
  if (whole_ > 0) {
    std::fprintf(stderr, "\r%s %3.0f %%", what_, 100 * done / whole_);
  } else {
    std::fprintf(stderr, "\r%s %.3g, %.3g per second", what_, done, done / (now - begin_));
  }
}

Progress::~Progress() {
  if (shown_ > 0) std::fprintf(stderr, "\r\033[K");
}

}  // namespace cli
