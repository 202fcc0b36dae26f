// Numbers in and out: text or the bytes of this processor; blocks, so that endless input and output work.
#pragma once

#include <charconv>
#include <concepts>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

// The whole word as a number, +1 and 1e400 (an infinity) too; false when it is none.
bool read_number(std::string_view word, double& value);

// Hands over what was printed: false when the reader has gone away, a Failure for anything else.
bool flush_output();

// Standard output with its errors noticed: a reader that goes away ends the program quietly, anything else is a Failure.
class Writer {
 public:
  explicit Writer(bool raw) : raw_(raw) {}
  template <class T>
  void row(std::span<const T> values) {
    if (raw_) {
      bytes(reinterpret_cast<const char*>(values.data()), values.size_bytes());
      return;
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
      char text[40];
      char* end = text;
      if (values[i] == values[i]) {
        end = std::to_chars(text, text + sizeof text - 1, values[i]).ptr;
      } else {
        for (const char c : {'n', 'a', 'n'}) *end++ = c;  // without the sign that some have
      }
      *end++ = i + 1 == values.size() ? '\n' : ' ';
      bytes(text, static_cast<std::size_t>(end - text));
    }
  }
  void flush();

 private:
  void bytes(const char* data, std::size_t n) {
    if (buffer_.size() + n > 1 << 16) flush();
    buffer_.append(data, n);
  }
  bool raw_;
  std::string buffer_;
};

// Numbers of a file, "-" for standard input: words between blanks and commas, from # to the end of a line comments; or
// raw ones.
class Reader {
 public:
  Reader(const std::string& file, bool raw);
  // At most `most` numbers; none at the end.
  template <class T>
  std::vector<T> read(std::size_t most) {
    std::vector<T> values;
    if (raw_) {
      values.resize(most);
      values.resize(raw_bytes(values.data(), sizeof(T), most));
    } else {
      for (double value; values.size() < most && next(value);) values.push_back(static_cast<T>(value));
    }
    return values;
  }
  template <class T>
  std::vector<T> read_all() {
    std::vector<T> all;
    for (;;) {
      const std::vector<T> part = read<T>(1 << 16);
      if (part.empty()) return all;
      all.insert(all.end(), part.begin(), part.end());
    }
  }
  const std::string& name() const { return name_; }

 private:
  bool next(double& value);
  std::size_t raw_bytes(void* to, std::size_t each, std::size_t most);
  struct Close {
    void operator()(std::FILE* f) const {
      if (f != stdin) std::fclose(f);
    }
  };
  std::unique_ptr<std::FILE, Close> file_;
  std::string name_;
  bool raw_;
  long line_ = 1;
};

// A line on standard error that counts up, if that is a terminal and the work takes longer than a moment.
class Progress {
 public:
  Progress(const char* what, double whole);
  ~Progress();
  void at(double done);

 private:
  const char* what_;
  double whole_, begin_, shown_ = 0;
  bool terminal_;
};

double seconds();

}  // namespace cli
