#include "fft/real.h"

#include <iterator>

#include "fft/create.h"
#include "fft/pairs.h"
#include "fft/real_plan.h"

namespace qor::fft {
namespace {

// Passes of small transforms of orders 5 on, each digit the order of a radix. Found by measuring all.
constexpr const char* small_passes[] = {"32",    "42",    "322",    "332",    "3222",   "3232",
                                        "32222", "32232", "322222", "322232", "3222222"};
constexpr int least_small = 5, most_small = least_small + static_cast<int>(std::size(small_passes)) - 1;

template <int R, class T>
void tiny_forward(const T* src, T* dst, const T& scale) {
  using V = simd::Vec<T>;
  Real<V, R>::forward([&](int r) { return lone<V>(src[r] * scale); }, [&](int p, V x) { dst[p] = x[0]; });
}
template <int R, class T>
void tiny_inverse(const T* pairs, const T& zero, const T& middle, T* dst, const T& scale) {
  using V = simd::Vec<T>;
  Real<V, R>::inverse([&](int p) { return lone<V>(p == 0   ? zero
                                                  : p == 1 ? middle
                                                           : pairs[p - 2]); },
                      [&](int r, V x) { dst[r] = x[0] * scale; });
}

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

}  // namespace

template <class T>
RealPlan<T>::~RealPlan() {
  destroy(small_);
  destroy(large_);
}

template <class T>
int RealPlan<T>::make(int n) {
  n_ = n;
  if (n > 1 && (n & (n - 1)) == 0) {
    int order = 0;
    while (n >> order > 1) ++order;
    if (order < least_small) {
      with_order<1, 2, 3, 4>(order, [&](auto R) {
        tiny_forward_ = tiny_forward<R, T>;
        tiny_inverse_ = tiny_inverse<R, T>;
      });
      return 0;
    }
    if (order <= most_small) {
      small_ = create<SmallReal<T>>();
      if (small_ == nullptr || small_->make(n, small_passes[order - least_small]) != 0) return no_memory;
      work_ = small_->work_size();
    } else {
      large_ = create<LargeReal<T>>();
      if (large_ == nullptr || large_->make(n, order) != 0) return no_memory;
      work_ = large_->work_size();
    }
    return 0;
  }
  if (plan_.make(n % 2 == 0 ? n / 2 : n) != 0) return no_memory;
  work_ = plan_.work_size() + (n % 2 == 0 ? 0 : padded(2 * static_cast<std::size_t>(n)));
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

template <class T>
void RealPlan<T>::forward(const T* src, T* dst, const T& scale, T* work) const {
  if (tiny_forward_ != nullptr) return tiny_forward_(src, dst, scale);
  if (small_ != nullptr) return small_->forward(src, dst, scale, work);
  if (large_ != nullptr) return large_->forward(src, dst, scale, work);
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

template <class T>
void RealPlan<T>::inverse(const T& zero, const T& middle, const T* pairs, T* dst, const T& scale, T* work) const {
  if (tiny_inverse_ != nullptr) return tiny_inverse_(pairs, zero, middle, dst, scale);
  if (small_ != nullptr) return small_->inverse(pairs - 2, zero, middle, dst, scale, work);
  if (large_ != nullptr) return large_->inverse(pairs - 2, zero, middle, dst, scale, work);
  if (n_ % 2 == 0) {
    const int m = n_ / 2;
    if (m > 1) recombine<true>(pairs, dst + 2, factors_.get(), m);
    const T a = zero;  // it may be dst[0]
    dst[0] = a + middle;
    dst[1] = a - middle;
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

template class RealPlan<float>;
template class RealPlan<double>;

}  // namespace qor::fft
