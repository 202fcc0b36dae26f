// The full linear convolution of two arrays: a direct sum, one product of polynomials, or one for each block of the
// longer array. The lengths alone decide, by fixed bounds, so that the rounding of a result is predictable.
#pragma once

#include <cstddef>

namespace qor::convolution {

// What is done with arrays of these lengths, the first one the longer.
struct Scheme {
  enum Way { direct, one_product, blocks } way;
  int order;  // products are modulo t^(2^order) + 1
  int block;  // of the longer array, for a product
};
Scheme scheme_of(int longer, int shorter);

// Bytes of work space, aligned to 16, of which the direct sum needs none. SIZE_MAX if that is beyond all memory.
template <class T>
std::size_t convolution_work(const Scheme& scheme);

// dst[k] = sum over i of a[i] b[k - i], k < na + nb - 1. dst overlaps neither array.
template <class T>
void convolve(const T* a, int na, const T* b, int nb, T* dst, void* work);

// The direct sum is added to dst.
template <class T>
void add_convolution(const T* a, int na, const T* b, int nb, T* dst);

// The primitive with its checks and its codes, and work space of its own.
template <class T>
int full_convolution(const T* a, int na, const T* b, int nb, T* dst);

}  // namespace qor::convolution
