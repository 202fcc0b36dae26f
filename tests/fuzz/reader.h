// What fuzzers share: values read from made-up bytes, and the end when something isn't as it must be.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace qor::test {

inline void require(bool fact, const char* what, const char* where = "") {
  if (fact) return;
  std::fprintf(stderr, "not so: %s %s\n", what, where);
  std::abort();
}

// Reads on; beyond the end everything is 0.
class Reader {
 public:
  Reader(const std::uint8_t* bytes, std::size_t n) : at_(bytes), end_(bytes + n) {}
  bool empty() const { return at_ == end_; }
  template <class T>
  T take() {
    T value{};
    const auto left = static_cast<std::size_t>(end_ - at_), size = sizeof(T) < left ? sizeof(T) : left;
    std::memcpy(static_cast<void*>(&value), at_, size);
    at_ += size;
    return value;
  }
  // 0 .. n - 1.
  int below(int n) { return static_cast<int>(take<std::uint16_t>() % static_cast<unsigned>(n)); }
  // -n .. n
  int within(int n) { return below(2 * n + 1) - n; }

 private:
  const std::uint8_t *at_, *end_;
};

}  // namespace qor::test
