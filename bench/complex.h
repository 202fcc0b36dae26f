// Peers of the complex functions. Arrays hold a real and an imaginary part each; b is one number for Powx.
#pragma once

#include <vector>

namespace bench {

template <class T>
struct ComplexPeer {
  const char *function, *name;
  void (*run)(int n, const T* a, const T* b, T* r);
};
template <class T>
std::vector<ComplexPeer<T>> c_library_complex();
// The textbook formulas over this library's own real functions of the same accuracy, block by block: fast, and wrong
// near cuts, poles, zeros and the ends of the range.
template <class T>
std::vector<ComplexPeer<T>> plain_complex(bool high);

}  // namespace bench
