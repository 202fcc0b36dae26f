// Words of an engine, read from qor_words.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace battery {

inline std::string words_program;  // the path of qor_words

class Words {
 public:
  // Its arguments: the engine and options.
  explicit Words(const std::string& arguments)
      : pipe_(popen((words_program + " " + arguments).c_str(), "r")), block_(1 << 14), at_(block_.size()) {}
  ~Words() {
    if (pipe_ != nullptr) pclose(pipe_);
  }
  Words(const Words&) = delete;
  Words& operator=(const Words&) = delete;

  std::uint32_t operator()() {
    if (at_ == block_.size()) fill();
    return block_[at_++];
  }

 private:
  void fill() {
    if (pipe_ == nullptr || std::fread(block_.data(), sizeof block_[0], block_.size(), pipe_) != block_.size()) {
      std::fprintf(stderr, "battery: no words from %s\n", words_program.c_str());
      std::exit(2);
    }
    at_ = 0;
  }
  std::FILE* pipe_;
  std::vector<std::uint32_t> block_;
  std::size_t at_;
};

}  // namespace battery
