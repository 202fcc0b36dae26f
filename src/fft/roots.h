// Roots of unity exp(-2 pi i k / n) in extended precision. Angles are folded into the first eighth of a turn, so that
// the eighths come out exact; there a root is the product of one of some sqrt(n) coarse steps and one of as many fine
// ones. The product's error is a few units of 2^-64: rounded to double it differs from the correctly rounded root about
// once in a thousand times, by the last bit.
#pragma once

#include <cstdint>

#include "fft/memory.h"
#include "numeric/x87.h"

namespace qor::fft {

class Roots {
 public:
  explicit Roots(std::uint32_t n);
  ~Roots();
  Roots(const Roots&) = delete;
  Roots& operator=(const Roots&) = delete;
  explicit operator bool() const { return bool(steps_); }  // is there memory?

  // Real and imaginary part of the k-th root, k < n.
  void get(std::uint32_t k, double& re, double& im) const;
  void get(std::uint32_t k, float& re, float& im) const;

 private:
  struct Step {
    long double cos, sin;
  };
  Step step(std::uint32_t i) const;
  template <class T>
  void find(std::uint32_t k, T& re, T& im) const;

  std::uint32_t n_;
  int shift_ = 0;  // of 2^shift_ fine steps
  numeric::X87Precision extended_{numeric::x87_extended};
  Array<Step> steps_;
};

}  // namespace qor::fft
