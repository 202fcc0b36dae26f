// Products of real polynomials modulo t^M + 1, M = 2^order: plain products when the degrees allow.
//
// A real polynomial modulo t^M + 1 is the complex one with the coefficients x[j] + i x[j + m], m = M/2, modulo t^m - i
// (the right-angle convolution of R. Crandall and B. Fagin, 1994). t^n - exp(i f) splits into t^(n/2) -+ exp(i f/2):
// two blocks in place of one, each half as long, and so on, every block with one root of its own; in the end there are
// values whose products are wanted, in an order that need not be known. Two levels are a pass of radix 4. Arrays beyond
// largest_part are done part by part from some pass on, through the products and back.
#pragma once

#include "fft/plan.h"

namespace qor::fft {

template <class T>
class Negacyclic {
 public:
  static constexpr int least_order = 7, largest_order = 30;

  // Elements of work space.
  static std::size_t work_size(int order);
  // `work` is aligned to a vector and lives as long as this.
  Negacyclic(int order, T* work);

  // The factor of all products, n <= M coefficients.
  void set_factor(const T* x, int n);
  // Coefficient i of the product with x, n <= M coefficients, is added to dst[i] for i < add, else stored for i < end.
  void multiply(const T* x, int n, T* dst, int add, int end);

 private:
  using V = simd::Vec<T>;
  template <bool Multiplies>
  void run(const T* x, int n, T* to);
  template <bool Multiplies>
  void part(T* p, int n, int level, int block);
  template <bool Multiplies>
  void passes(T* p, int n, int first_level);
  void first_pass(const T* x, int n, T* to);
  void last_pass(T* dst, int add, int end);

  int m_, quarter_;
  T *factor_, *data_, *own_roots_;
  const T* roots_;
};

}  // namespace qor::fft
