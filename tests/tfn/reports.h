// What a test of kernels looks at: results by their bits, and what the error path hands to a callback.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "qor/tfn.h"

namespace qor::test {

template <class T>
auto word(T x) {
  return std::bit_cast<std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>>(x);
}
template <class T>
std::vector<decltype(word(T()))> words(const T* x, std::size_t n) {
  std::vector<decltype(word(T()))> w(n);
  std::transform(x, x + n, w.begin(), word<T>);
  return w;
}

// What the callback saw, and what it writes instead of the result.
struct Reported {
  int code, index;
  std::string name;
  bool operator==(const Reported&) const = default;
};
inline std::ostream& operator<<(std::ostream& out, const Reported& r) {
  return out << r.code << '@' << r.index << ' ' << r.name;
}
inline std::vector<Reported> reported;
inline int collect(TfnErrorContext* c) {
  reported.push_back({c->code, c->index, std::string(c->funcName, static_cast<std::size_t>(c->funcNameLen))});
  return 1;
}
inline int replace_by_42(TfnErrorContext* c) {
  c->res1 = 42;
  c->res2 = 43;
  return 0;
}

class Kernels : public ::testing::Test {
 protected:
  void SetUp() override {
    reported.clear();
    _tfnSetMode(TFN_ERR_CALLBACK);
    _tfnSetErrorCallBack(collect);
    _tfnClearErrStatus();
  }
  void TearDown() override {
    _tfnClearErrorCallBack();
    _tfnSetMode(TFN_MODE_DEFAULT);
  }
};

}  // namespace qor::test
