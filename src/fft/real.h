// Transforms of n real values. Even n: the values are taken as n/2 complex ones and transformed; with Z of that
// transform, s = Z[k] + conj Z[n/2 - k], d = Z[k] - conj Z[n/2 - k] and q[k] = -i exp(-2 pi i k / n),
//   X[k] = (s + q[k] d) / 2,  X[n/2 - k] = conj (s - q[k] d) / 2,
// and backwards Z[k] = (s + conj q[k] d) / 2 with X for Z in s and d. Odd n: the complex transform of n.
//
// Spectra are passed as two numbers, the values at the frequencies 0 and n/2, and the array of the pairs from frequency
// 1 on; the packings differ in where those lie.
#pragma once

#include "fft/pairs.h"
#include "fft/plan.h"

namespace qor::fft {

// In place or from x to y, x and y pointing to pair 1: s + q d and conj (s - q d) of the pairs k and m - k, for
// k = 1 .. (m - 1)/2 and the middle one of an even m. The factors q lie as the twiddle factors of a pass do.
template <bool Inverse, class T>
QOR_INLINE void recombine(const T* x, T* y, const T* factors, int m) {
  using V = simd::Vec<T>;
  using C = Packed<V, Inverse>;
  constexpr int L = lanes<V>;
  const auto conj = [](C a) { return C{simd::flip_sign(a.v, simd::alternating_signs<V>(1))}; };
  // Values i .. of the lower half and j .. of the upper half in opposite order; i and j count from pair 1.
  const auto both = [&](auto in, auto out, int i, int j, auto whole) {
    const auto ordered = [](C a) { return decltype(whole)::value ? C{simd::reverse_pairs(a.v)} : a; };
    const auto load = [](const T* p) { return decltype(whole)::value ? simd::load<V>(p) : simd::load_low(p); };
    const T* const q = factors + i / C::values * 2 * L + i % C::values * 2;
    const C a = in.load(i), b = conj(ordered(in.load(j)));
    const C s = a + b, d = (a - b) * Complex<V>{load(q), load(q + L)};
    out.store(i, s + d);
    out.store(j, ordered(conj(s - d)));
  };
  const Turns<V, Inverse> in{const_cast<T*>(x)}, out{y};
  const int pairs = (m - 1) / 2;
  // Of few values each was stored by itself just now, and loading several at once would wait for that.
  const int wide = m > largest_radix || C::values == 1 ? pairs - pairs % C::values : 0;
  int i = 0;
  for (; i < wide; i += C::values) both(in, out, i, m - 1 - i - C::values, std::true_type());
  for (; i < pairs; ++i) both(in.half(), out.half(), i, m - 2 - i, std::false_type());
  if (m % 2 == 0) {
    const T re = x[m - 2], im = x[m - 1];
    y[m - 2] = 2 * re;
    y[m - 1] = -2 * im;
  }
}

template <class T>
class RealPlan {
 public:
  int make(int n) {
    n_ = n;
    if (plan_.make(n % 2 == 0 ? n / 2 : n) != 0) return no_memory;
    const int pairs = n % 2 == 0 ? (n / 2 - 1) / 2 : 0;
    if (pairs == 0) return 0;
    const Roots roots(static_cast<std::uint32_t>(n));
    using Values = Packed<simd::Vec<T>>;
    factors_ = Array<T>(4 * static_cast<std::size_t>(pairs + 2 * Values::values));
    if (!roots || !factors_) return no_memory;
    for (int i = 0; i < pairs; ++i) {
      T re, im;
      roots.get(static_cast<std::uint32_t>(i + 1), re, im);
      put_factor<Values>(factors_.get(), i, im, -re);
    }
    return 0;
  }
  std::size_t work_size() const {
    return plan_.work_size() + (n_ % 2 == 0 ? 0 : padded(2 * static_cast<std::size_t>(n_)));
  }

  // Leaves a spectrum in dst: the value at 0 in dst[0]; for even n that at n/2 in dst[1] and pairs from dst[2] on, for
  // odd n pairs from dst[1] on.
  QOR_INLINE void forward(const T* src, T* dst, const T& scale, T* work) const {
    if (n_ % 2 == 0) {
      const int m = n_ / 2;
      plan_.template run<false>(src, dst, T(0.5) * scale, work);
      const T re = 2 * dst[0], im = 2 * dst[1];
      dst[0] = re + im;
      dst[1] = re - im;
      if (m > 1) recombine<false>(dst + 2, dst + 2, factors_.get(), m);
    } else {
      T* const z = work + plan_.work_size();
      for (int i = 0; i < n_; ++i) {
        z[2 * i] = src[i];
        z[2 * i + 1] = 0;
      }
      plan_.template run<false>(z, z, scale, work);
      dst[0] = z[0];
      std::copy(z + 2, z + n_ + 1, dst + 1);
    }
  }
  // From the values at 0 and, for even n, n/2, and the pairs.
  QOR_INLINE void inverse(T zero, T middle, const T* pairs, T* dst, const T& scale, T* work) const {
    if (n_ % 2 == 0) {
      const int m = n_ / 2;
      if (m > 1) recombine<true>(pairs, dst + 2, factors_.get(), m);
      dst[0] = zero + middle;
      dst[1] = zero - middle;
      plan_.template run<true>(dst, dst, scale, work);
    } else {
      T* const z = work + plan_.work_size();
      z[0] = zero;
      z[1] = 0;
      for (int k = 1; 2 * k < n_; ++k) {
        const T re = pairs[2 * k - 2], im = pairs[2 * k - 1];
        z[2 * k] = z[2 * (n_ - k)] = re;
        z[2 * k + 1] = im;
        z[2 * (n_ - k) + 1] = -im;
      }
      plan_.template run<true>(z, z, scale, work);
      for (int i = 0; i < n_; ++i) dst[i] = z[2 * i];
    }
  }

 private:
  int n_ = 0;
  Plan<T> plan_;
  Array<T> factors_;
};

}  // namespace qor::fft
