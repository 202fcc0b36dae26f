// Transforms whose length p has no small factors, as cyclic convolutions of a length q that has.
//
// p prime and p - 1 smooth (C. M. Rader, 1968): with a generator g of the residues modulo p, q = p - 1,
//   X[g^-i] = x[0] + sum_j x[g^j] w^(g^(j - i)).
// Otherwise (L. I. Bluestein, 1970), any p, q >= 2 p - 1: with b[n] = exp(i pi n^2 / p),
//   X[k] = conj(b[k]) sum_n x[n] conj(b[n]) b[k - n].
// The inverse has its frequencies in the opposite order.
#pragma once

#include <algorithm>

#include "fft/pairs.h"
#include "fft/plan.h"

namespace qor::fft {

// What is left of n without its factors up to `prime`.
constexpr int rough_part(int n, int prime) {
  for (int p = 2; p <= prime; ++p) {
    while (n % p == 0) n /= p;
  }
  return n;
}
constexpr bool is_prime(int n) {
  for (int d = 2; d <= n / d; ++d) {
    if (n % d == 0) return false;
  }
  return n > 1;
}

template <class T>
class Convolution {
 public:
  int make(int p) {
    p_ = p;
    rader_ = is_prime(p) && rough_part(p - 1, largest_prime) == 1;
    q_ = p - 1;
    if (!rader_) {
      q_ = (2 * p + 2) / 4 * 4;
      while (rough_part(q_, 7) != 1) q_ += 4;
    }
    const std::size_t q = static_cast<std::size_t>(q_);
    kernel_ = Array<T>(2 * q + 16);
    if (rader_) {
      index_ = Array<int>(q);
    } else {
      chirp_ = Array<T>(2 * static_cast<std::size_t>(p));
    }
    if (!kernel_ || (rader_ ? !index_ : !chirp_) || plan_.make(q_) != 0) return no_memory;
    Array<T> work(plan_.work_size() + 1);
    if (!work || !(rader_ ? rader_kernel() : bluestein_kernel())) return no_memory;
    plan_.template run<false>(kernel_.get(), kernel_.get(), T(1) / static_cast<T>(q_), work.get());
    return 0;
  }
  int length() const { return p_; }
  std::size_t work_size() const { return padded(2 * static_cast<std::size_t>(q_)) + plan_.work_size(); }

  // The transform of the p values that start at src, `stride` apart.
  template <bool Inverse>
  void run(const T* src, int stride, T* dst, const T& scale, T* work) const {
    T* const u = work;
    T* const rest = work + padded(2 * static_cast<std::size_t>(q_));
    const auto value = [=](int i) { return Complex<T>{src[2 * stride * i] * scale, src[2 * stride * i + 1] * scale}; };
    const auto put = [=, this](int k, Complex<T> x) {
      if (Inverse && k != 0) k = p_ - k;
      dst[2 * k] = x.re;
      dst[2 * k + 1] = x.im;
    };
    const auto set = [=](int i, Complex<T> x) {
      u[2 * i] = x.re;
      u[2 * i + 1] = x.im;
    };
    const auto at = [](const T* a, int i) { return Complex<T>{a[2 * i], a[2 * i + 1]}; };
    if (rader_) {
      const Complex<T> x0 = value(0);
      for (int i = 0; i < q_; ++i) set(i, value(index_.get()[i]));
      plan_.template run<false>(u, u, 1, rest);
      const Complex<T> sum = x0 + at(u, 0);
      multiply_pairs(kernel_.get(), u, q_);
      set(0, at(u, 0) + x0);
      plan_.template run<true>(u, u, 1, rest);
      put(0, sum);
      for (int i = 0; i < q_; ++i) put(index_.get()[i == 0 ? 0 : q_ - i], at(u, i));
    } else {
      for (int i = 0; i < p_; ++i) set(i, value(i) * at(chirp_.get(), i));
      std::fill(u + 2 * p_, u + 2 * q_, T(0));
      plan_.template run<false>(u, u, 1, rest);
      multiply_pairs(kernel_.get(), u, q_);
      plan_.template run<true>(u, u, 1, rest);
      for (int k = 0; k < p_; ++k) put(k, at(u, k) * at(chirp_.get(), k));
    }
  }

 private:
  static int times(int a, int b, int modulus) {
    return static_cast<int>(static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b) %
                            static_cast<std::uint64_t>(modulus));
  }
  static int power(int a, int n, int modulus) {
    int r = 1;
    for (; n > 0; n >>= 1, a = times(a, a, modulus)) {
      if (n & 1) r = times(r, a, modulus);
    }
    return r;
  }
  // The least generator of the residues modulo the prime p.
  int generator() const {
    for (int g = 2;; ++g) {
      bool generates = true;
      for (int d = 2, rest = q_; rest > 1 && generates; ++d) {
        if (rest % d != 0) continue;
        generates = power(g, q_ / d, p_) != 1;
        while (rest % d == 0) rest /= d;
      }
      if (generates) return g;
    }
  }
  bool rader_kernel() {
    const Roots roots(static_cast<std::uint32_t>(p_));
    if (!roots) return false;
    const int g = generator();
    for (int i = 0, k = 1; i < q_; ++i, k = times(k, g, p_)) index_.get()[i] = k;
    for (int i = 0; i < q_; ++i) {
      T* const out = kernel_.get() + 2 * i;
      roots.get(static_cast<std::uint32_t>(index_.get()[i == 0 ? 0 : q_ - i]), out[0], out[1]);
    }
    return true;
  }
  bool bluestein_kernel() {
    const Roots roots(2 * static_cast<std::uint32_t>(p_));
    if (!roots) return false;
    T* const b = kernel_.get();
    std::fill(b, b + 2 * q_, T(0));
    for (int n = 0; n < p_; ++n) {
      T* const c = chirp_.get() + 2 * n;
      roots.get(static_cast<std::uint32_t>(times(n, n, 2 * p_)), c[0], c[1]);
      b[2 * n] = c[0];
      b[2 * n + 1] = -c[1];
      if (n > 0) {
        b[2 * (q_ - n)] = c[0];
        b[2 * (q_ - n) + 1] = -c[1];
      }
    }
    return true;
  }

  int p_ = 0, q_ = 0;
  bool rader_ = false;
  Plan<T> plan_;
  Array<T> kernel_;   // transformed, divided by q
  Array<int> index_;  // powers of the generator
  Array<T> chirp_;    // conj(b)
};

}  // namespace qor::fft
