// Discrete Fourier transforms in extended precision, by the defining sum split at each factor of the length.
#pragma once

#include <cmath>
#include <complex>
#include <vector>

namespace reference {

using Number = std::complex<long double>;
using Numbers = std::vector<Number>;

// exp(-2 pi i k / n) for all k, as products of steps of sqrt(n) and of 1.
inline Numbers roots(std::size_t n) {
  const long double turn = 2 * 3.14159265358979323846264338327950288L / static_cast<long double>(n);
  const auto root = [&](std::size_t k) {
    const long double x = turn * static_cast<long double>(k);
    return Number(std::cos(x), -std::sin(x));
  };
  std::size_t step = 1;
  while (step * step < n) ++step;
  Numbers fine, w(n);
  for (std::size_t k = 0; k < step; ++k) fine.push_back(root(k));
  for (std::size_t k = 0; k < n; k += step) {
    const Number coarse = root(k);
    for (std::size_t i = 0; i < step && k + i < n; ++i) {
      w[k + i] = {coarse.real() * fine[i].real() - coarse.imag() * fine[i].imag(),
                  coarse.real() * fine[i].imag() + coarse.imag() * fine[i].real()};
    }
  }
  return w;
}

inline Numbers transform(const Numbers& x) {
  const std::size_t n = x.size();
  if (n == 1) return x;
  std::size_t p = 2;
  while (n % p != 0) p = p * p > n ? n : p + 1;
  const std::size_t m = n / p;
  std::vector<Numbers> part(p, Numbers(m));
  for (std::size_t i = 0; i < n; ++i) part[i % p][i / p] = x[i];
  for (Numbers& y : part) y = transform(y);
  const Numbers w = roots(n);
  Numbers out(n);
  for (std::size_t k = 0; k < n; ++k) {
    for (std::size_t r = 0; r < p; ++r) out[k] += part[r][k % m] * w[r * k % n];
  }
  return out;
}

}  // namespace reference
