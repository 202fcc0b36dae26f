// Where elements of arrays of several dimensions lie. An index has an entry for each dimension; shapes and strides may have
// more.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qor::test {

using Ints = std::vector<int>;

// Steps through all indices, dimension 0 first; false after the last.
inline bool next(Ints& index, const Ints& shape) {
  for (std::size_t k = 0; k < index.size(); ++k) {
    if (++index[k] < shape[k]) return true;
    index[k] = 0;
  }
  return false;
}
// The element's number from the lowest.
inline std::size_t place(const Ints& index, const Ints& shape, const Ints& stride) {
  std::int64_t at = 0;
  for (std::size_t k = 0; k < index.size(); ++k) {
    const std::int64_t s = stride[k];
    at += s >= 0 ? s * index[k] : -s * (shape[k] - 1 - index[k]);
  }
  return static_cast<std::size_t>(at);
}

}  // namespace qor::test
