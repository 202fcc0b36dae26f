#include "fft/plan.h"

#include "fft/blocked.h"
#include "fft/convolution.h"
#include "fft/create.h"

namespace qor::fft {
namespace {

// Calls f with the radix, one of a first pass or of a later one, as a constant.
template <bool First, class F>
QOR_INLINE void with_radix(int radix, F f) {
  if constexpr (First) {
    switch (radix) {
#define QOR_FFT_RADIX(R) \
  case R:                \
    return f(std::integral_constant<int, R>{});
      QOR_FFT_RADIX(6)
      QOR_FFT_RADIX(10)
      QOR_FFT_RADIX(12)
      QOR_FFT_RADIX(14)
      QOR_FFT_RADIX(15)
#undef QOR_FFT_RADIX
      default:
        break;
    }
  }
  switch (radix) {
#define QOR_FFT_RADIX(R)                 \
  case R:                                \
    f(std::integral_constant<int, R>{}); \
    break;
    QOR_FFT_RADIX(2)
    QOR_FFT_RADIX(3)
    QOR_FFT_RADIX(4)
    QOR_FFT_RADIX(5)
    QOR_FFT_RADIX(7)
    QOR_FFT_RADIX(8)
    QOR_FFT_RADIX(9)
    QOR_FFT_RADIX(11)
    QOR_FFT_RADIX(13)
    QOR_FFT_RADIX(16)
#undef QOR_FFT_RADIX
    default:
      __builtin_unreachable();
  }
}

// The order of a power of two, -1 for other numbers.
constexpr int order_of(int n) {
  int order = 0;
  while (n >> order > 1) ++order;
  return n == 1 << order ? order : -1;
}

// Passes in the split layout, each digit the order of a radix. Found by measuring all.
constexpr const char* split_passes[] = {"324", "244", "344", "2442", "3442", "3344", "3444"};
constexpr int least_split_order = 9, largest_split_order = 15;

// Radices of the passes after the first for n without large prime factors.
template <class Add>
void add_small(int n, Add add) {
  for (const int r : {16, 8, 4, 2, 13, 11, 9, 7, 5, 3}) {
    for (; n % r == 0; n /= r) add(r);
  }
}

template <int R, bool Inverse, bool Scaled, class T>
void single_butterfly(const T* src, T* dst, const T& scale) {
  using V = simd::Vec<T>;
  using C = Packed<V, Inverse>;
  const Turns<V, Inverse, true> in{const_cast<T*>(src)}, out{dst};
  const auto load = [&](int i) { return Scaled ? in.load(i) * splat<V>(scale) : in.load(i); };
  transform<C, R>(load, [&](int u, C y) { out.store(u, y); });
}

}  // namespace

template <class T>
Plan<T>::~Plan() {
  destroy(convolution_);
  destroy(blocked_);
  destroy(power_);
}

template <class T>
void Plan<T>::choose_passes(int n) {
  int m = 1;
  const auto add = [&](int radix) {
    pass_[count_++] = {radix, m, 0, {}, 0};
    m *= radix;
  };
  const int rough = convolution_ == nullptr ? 1 : convolution_->length();
  if (split_) {
    int order = order_of(n);
    while (order > largest_split_order) order -= 4;  // further radices 16 go last
    for (const char* digits = split_passes[order - least_split_order]; *digits != 0; ++digits)
      add(1 << (*digits - '0'));
    while (m < n) add(16);
  } else if (rough > 1) {
    add(rough);
    add_small(n / rough, add);
  } else {
    // The first radix may be any, and is the one that leaves the fewest passes.
    int best = 1, fewest = max_passes;
    for (int first = 2; first <= largest_radix; ++first) {
      if (n % first != 0) continue;
      int count = 1;
      add_small(n / first, [&](int) { ++count; });
      if (count <= fewest) {
        fewest = count;
        best = first;
      }
    }
    if (n > 1) add(best);
    add_small(n / best, add);
  }
  // The caches' lines are few when rows lie a power of two apart.
  gap_ = split_ && static_cast<std::size_t>(n) * sizeof(T) >= 16384 ? 8 : 0;
  for (int i = 0; i < count_; ++i) {
    Pass& p = pass_[i];
    const int rows = n / (p.m * p.radix);
    p.in_gap = i > 0 ? gap_ : 0;
    p.rows = {rows, rows, 0};
    if (gap_ != 0 && i + 1 < count_) p.rows = {rows, rows / pass_[i + 1].radix, gap_};
  }
}

template <class T>
int Plan<T>::make(int n, bool split) {
  n_ = n;
  split_ = split;
  const int order = order_of(n);
  if (!split && order >= least_blocked_order) {
    blocked_ = create<Blocked<T>>();
    if (blocked_ == nullptr || blocked_->make(order) != 0) return no_memory;
    work_ = blocked_->work_size();
    return 0;
  }
  if (!split && order > 2) {
    if (const auto* all = Power<T>::whole(order)) {
      for (const int d : {0, 1}) {
        for (const int s : {0, 1}) single_[d][s] = (*all)[d][s];
      }
      return 0;
    }
    power_ = create<Power<T>>();
    if (power_ == nullptr || power_->make(order) != 0) return no_memory;
    work_ = power_->work_size();
    return 0;
  }
  int rough = rough_part(n, largest_prime);
  if (rough > 1) {
    if (!is_prime(rough)) rough = n;
    convolution_ = create<Convolution<T>>();
    if (convolution_ == nullptr || convolution_->make(rough) != 0) return no_memory;
  }
  choose_passes(n);
  if (n > 1 && n <= largest_radix && convolution_ == nullptr) {
    unrolled<largest_radix - 1>([&](auto i) {
      constexpr int R = i + 2;
      if constexpr (R != 8 && R != 16) {
        if (n != R) return;
        single_[0][0] = single_butterfly<R, false, false, T>;
        single_[0][1] = single_butterfly<R, false, true, T>;
        single_[1][0] = single_butterfly<R, true, false, T>;
        single_[1][1] = single_butterfly<R, true, true, T>;
      }
    });
    return 0;
  }

  using Values = Packed<V>;
  const auto size = [this](const Pass& p) {
    const int registers = split_ ? p.m / lanes<V> : (p.m + Values::values - 1) / Values::values;
    return static_cast<std::size_t>(registers) * static_cast<std::size_t>(p.radix - 1) * 2 * lanes<V>;
  };
  std::size_t total = 0;
  for (int i = 1; i < count_; ++i) {
    pass_[i].twiddles = total;
    total += size(pass_[i]);
  }
  if (count_ > 1) {
    twiddles_ = Array<T>(total);
    if (!twiddles_) return no_memory;
    for (int i = 1; i < count_; ++i) {
      T* const out = twiddles_.get() + pass_[i].twiddles;
      const int radix = pass_[i].radix, m = pass_[i].m;
      if (!(split_ ? fill_twiddles<Complex<V>>(out, radix, m) : fill_twiddles<Values>(out, radix, m))) return no_memory;
    }
  }
  const std::size_t arrays = count_ > 2 ? 2 : count_ == 2 ? 1 : 0;
  work_ = arrays * array_size() + (convolution_ != nullptr ? convolution_->work_size() : 0);
  return 0;
}

template <class T>
template <bool Inverse>
void Plan<T>::run_split(const T* src, int stride, Split<V> dst, const T& scale, T* work) const {
  Split<V> x{work}, y{work + array_size()};
  const Strided<V, Inverse> in{src, stride};
  if (pass_[0].radix == 4) {
    first_pass<4, V, Inverse>(in, scale, x, pass_[0].rows);
  } else {
    first_pass<8, V, Inverse>(in, scale, x, pass_[0].rows);
  }
  for (int i = 1; i < count_; ++i) {
    const Pass& p = pass_[i];
    const Split<V> twiddles{twiddles_.get() + p.twiddles}, out = i + 1 < count_ ? y : dst;
    const auto run = [&](auto R) { pass<R>(x, p.in_gap, out, twiddles, p.m, p.rows); };
    if (p.radix == 4) {
      run(std::integral_constant<int, 4>());
    } else if (p.radix == 8) {
      run(std::integral_constant<int, 8>());
    } else {
      run(std::integral_constant<int, 16>());
    }
    std::swap(x, y);
  }
}

template <class T>
template <bool Inverse>
void Plan<T>::run_packed_passes(const T* src, T* dst, const T& scale, T* work) const {
  using A = Turns<V, Inverse>;
  A x{work}, y{work + array_size()};
  const auto out = [&](int i) { return i + 1 < count_ ? i % 2 == 0 ? x : y : A{dst}; };
  const Pass& first = pass_[0];
  if (convolution_ != nullptr) {
    T* const rest = work + (count_ > 2 ? 2 : count_ == 2 ? 1 : 0) * array_size();
    for (int j = 0; j < first.rows.count; ++j) {
      convolution_->template run<Inverse>(src + 2 * j, first.rows.count, out(0).p + 2 * j * first.radix, scale, rest);
    }
  } else {
    with_radix<true>(first.radix, [&](auto R) {
      first_rows<R, V, Inverse>(A{const_cast<T*>(src)}, scale, out(0), first.rows.count);
    });
  }
  for (int i = 1; i < count_; ++i) {
    const Pass& p = pass_[i];
    const Split<V> twiddles{twiddles_.get() + p.twiddles};
    with_radix<false>(p.radix, [&](auto R) { pass<R>(out(i - 1), 0, out(i), twiddles, p.m, p.rows); });
  }
}

template <class T>
template <bool Inverse>
void Plan<T>::run_passes(const T* src, T* dst, const T& scale, T* work) const {
  if (blocked_ != nullptr) {
    blocked_->template run<Inverse>(src, dst, scale, work);
  } else if (n_ == 1) {
    dst[0] = src[0] * scale;
    dst[1] = src[1] * scale;
  } else {
    run_packed_passes<Inverse>(src, dst, scale, work);
  }
}

template class Plan<float>;
template class Plan<double>;
template void Plan<float>::run_passes<false>(const float*, float*, const float&, float*) const;
template void Plan<float>::run_passes<true>(const float*, float*, const float&, float*) const;
template void Plan<double>::run_passes<false>(const double*, double*, const double&, double*) const;
template void Plan<double>::run_passes<true>(const double*, double*, const double&, double*) const;

}  // namespace qor::fft
