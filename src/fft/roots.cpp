#include "fft/roots.h"

#include <cmath>

namespace qor::fft {

// Angle i / (8 n) of a turn.
Roots::Step Roots::step(std::uint32_t i) const {
  const long double x = 0.785398163397448309615660845819875721L * i / n_;
  return {std::cos(x), std::sin(x)};
}

Roots::Roots(std::uint32_t n) : n_(n) {
  while (n >> (2 * shift_) > 1) ++shift_;
  const std::uint32_t fine = 1u << shift_, coarse = (n >> shift_) + 1;
  steps_ = Array<Step>(fine + coarse);
  if (!steps_) return;
  for (std::uint32_t i = 0; i < fine; ++i) steps_.get()[i] = step(i);
  for (std::uint32_t i = 0; i < coarse; ++i) steps_.get()[fine + i] = step(i << shift_);
}

Roots::~Roots() = default;

template <class T>
QOR_INLINE void Roots::find(std::uint32_t k, T& re, T& im) const {
  const std::uint64_t n = n_;
  std::uint64_t a = std::uint64_t{8} * k;  // a whole turn is 8 n
  const bool below = a > 4 * n;
  if (below) a = 8 * n - a;
  const bool left = a > 2 * n;
  if (left) a = 4 * n - a;
  const bool steep = a > n;
  const std::uint32_t b = static_cast<std::uint32_t>(steep ? 2 * n - a : a), fine = 1u << shift_;
  const Step &x = steps_.get()[b & (fine - 1)], &y = steps_.get()[fine + (b >> shift_)];
  const long double c = x.cos * y.cos - x.sin * y.sin, s = x.sin * y.cos + x.cos * y.sin;
  const T u = static_cast<T>(steep ? s : c), v = static_cast<T>(steep ? c : s);
  re = left ? -u : u;
  im = below ? v : -v;
}

void Roots::get(std::uint32_t k, double& re, double& im) const { find(k, re, im); }
void Roots::get(std::uint32_t k, float& re, float& im) const { find(k, re, im); }

}  // namespace qor::fft
