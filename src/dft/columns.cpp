#include "dft/columns.h"

#include "fft/butterfly.h"
#include "fft/convolution.h"

namespace qor::dft {
namespace {

using fft::Complex;
using fft::lane_t;
using fft::Split;

// A value that stays in its register: used twice, the compiler would rather load it twice, and loads are what is scarce.
template <class V>
QOR_INLINE V held(V v) {
  asm("" : "+x"(v));
  return v;
}

// R rows of the caller's array, `step` reals apart: pairs of real and imaginary parts. The inverse exchanges the parts.
template <class V, bool Inverse>
struct Outside {
  lane_t<V>* p;
  std::ptrdiff_t step;
  QOR_INLINE Complex<V> load(int r) const {
    const lane_t<V>* const q = p + r * step;
    const V a = held(simd::load<V>(q)), b = held(simd::load<V>(q + simd::lanes<V>));
    const V even = simd::evens(a, b), odd = simd::odds(a, b);
    return Inverse ? Complex<V>{odd, even} : Complex<V>{even, odd};
  }
  QOR_INLINE void store(int r, Complex<V> x) const {
    lane_t<V>* const q = p + r * step;
    const V a = Inverse ? x.im : x.re, b = Inverse ? x.re : x.im;
    simd::store<V>(q, simd::zip_low(a, b));
    simd::store<V>(q + simd::lanes<V>, simd::zip_high(a, b));
  }
};
// R rows of the buffer: registers of real and of imaginary parts in turns.
template <class V>
struct Inside {
  lane_t<V>* p;
  std::ptrdiff_t step;
  QOR_INLINE V* row(int r) const { return reinterpret_cast<V*>(p + r * step); }
  QOR_INLINE Complex<V> load(int r) const { return {held(row(r)[0]), held(row(r)[1])}; }
  QOR_INLINE void store(int r, Complex<V> x) const {
    row(r)[0] = x.re;
    row(r)[1] = x.im;
  }
};

// A butterfly for each register of R rows. The factors lie as R - 1 pairs of registers.
template <int R, bool Turned, class V, class In, class Out>
QOR_INLINE void butterflies(In in, Out out, const lane_t<V>* factors, int registers) {
  using C = Complex<V>;
  const V* const f = reinterpret_cast<const V*>(factors);
  for (int w = 0; w < registers; ++w, in.p += 2 * simd::lanes<V>, out.p += 2 * simd::lanes<V>) {
    fft::transform<C, R>(
        [&](int r) {
          const C x = in.load(r);
          if (!Turned || r == 0) return x;
          return x * C{f[2 * r - 2], f[2 * r - 1]};
        },
        [&](int u, C x) { out.store(u, x); });
  }
}

// Where the buffer's rows lie, in reals: there is a gap behind every `block` rows, since powers of two would fall on the
// same few lines of a cache.
struct Pitch {
  int row, block, gap;
  QOR_INLINE int operator()(int i) const { return i * row + i / block * gap; }
};

// The lines of `Rows` rows that the passes reach so many rows later. Rows lie too far apart for the processor to guess.
constexpr int rows_ahead = 16;
constexpr std::size_t far_bytes = std::size_t{1} << 20;
template <int Rows, class T>
QOR_INLINE void fetch_rows(const T* p, std::ptrdiff_t step, int registers) {
  fft::unrolled<Rows>([&](auto r) {
    const char* const line = reinterpret_cast<const char*>(p + r * step);
    __builtin_prefetch(line);
    if (registers > 2) __builtin_prefetch(line + 64);
  });
}

template <int R, bool Inverse, class T>
[[gnu::noinline]] void only_pass(const T* in, std::ptrdiff_t in_pitch, T* out, std::ptrdiff_t out_pitch,
                                 int registers) {
  using V = simd::Vec<T>;
  butterflies<R, false, V>(Outside<V, Inverse>{const_cast<T*>(in), in_pitch}, Outside<V, Inverse>{out, out_pitch},
                           nullptr, registers);
}
template <int R, bool Inverse, class T>
[[gnu::noinline]] void first_pass(const T* in, std::ptrdiff_t in_pitch, int rows, T* buffer, const int* place,
                                  Pitch pitch, int registers, bool far) {
  using V = simd::Vec<T>;
  constexpr int ahead = (rows_ahead + R - 1) / R;
  for (int j = 0; j < rows; ++j) {
    if (far && j + ahead < rows) fetch_rows<R>(in + (j + ahead) * in_pitch, rows * in_pitch, registers);
    butterflies<R, false, V>(Outside<V, Inverse>{const_cast<T*>(in) + j * in_pitch, rows * in_pitch},
                             Inside<V>{buffer + pitch(place[j] * R), pitch.row}, nullptr, registers);
  }
}
template <int R, class T>
[[gnu::noinline]] void inner_pass(T* buffer, int rows, int m, const T* twiddles, Pitch pitch, int registers) {
  using V = simd::Vec<T>;
  const int step = pitch(m);
  for (int j = 0; j < rows; ++j) {
    T* const block = buffer + j * R * step;
    for (int k = 0; k < m; ++k) {
      const Inside<V> x{block + pitch(k), step};
      butterflies<R, true, V>(x, x, twiddles + k * (R - 1) * 2 * simd::lanes<V>, registers);
    }
  }
}
template <int R, bool Inverse, class T>
[[gnu::noinline]] void last_pass(T* buffer, int m, const T* twiddles, Pitch pitch, T* out, std::ptrdiff_t out_pitch,
                                 int registers, bool far) {
  using V = simd::Vec<T>;
  constexpr int ahead = (rows_ahead + R - 1) / R;
  const int step = pitch(m);
  for (int k = 0; k < m; ++k) {
    if (far && k + ahead < m) fetch_rows<R>(out + (k + ahead) * out_pitch, m * out_pitch, registers);
    butterflies<R, true, V>(Inside<V>{buffer + pitch(k), step}, Outside<V, Inverse>{out + k * out_pitch, m * out_pitch},
                            twiddles + k * (R - 1) * 2 * simd::lanes<V>, registers);
  }
}

// Calls f with the radix as a constant.
template <class F>
QOR_INLINE void with_radix(int radix, F f) {
  fft::unrolled<fft::largest_radix - 1>([&](auto i) {
    if (radix == i + 2) f(std::integral_constant<int, i + 2>{});
  });
}

// Radices of powers of two, by the power, each digit the order of one.
constexpr const char* binary_passes[] = {"",   "1",   "2",   "3",   "4",   "23",   "33",  "34",
                                         "44", "333", "343", "344", "444", "3343", "3443"};
constexpr int most_at_once = 14;

}  // namespace

template <class T>
void Columns<T>::choose_passes(int n) {
  int m = 1;
  const auto add = [&](int radix) {
    pass_[count_++] = {radix, m, 0};
    m *= radix;
  };
  int twos = 0, odd = n;
  for (; odd % 2 == 0; odd /= 2) ++twos;
  // An odd factor and a power of two together make a radix where there is one.
  for (const int r : {15, 13, 11, 9, 7, 5, 3}) {
    for (; odd % r == 0; odd /= r) {
      int both = r;
      if (twos % 4 != 0) {
        for (; twos % 4 != 0 && 2 * both <= fft::largest_radix; both *= 2) --twos;
      }
      add(both);
    }
  }
  for (; twos > most_at_once; twos -= 4) add(16);
  for (const char* digit = binary_passes[twos]; *digit != 0; ++digit) add(1 << (*digit - '0'));
}

template <class T>
bool Columns<T>::make_tables() {
  std::size_t total = 0;
  for (int i = 1; i < count_; ++i) {
    pass_[i].twiddles = total;
    total += static_cast<std::size_t>(pass_[i].m) * static_cast<std::size_t>(pass_[i].radix - 1) * 2 * lanes;
  }
  const int rows = n_ / pass_[0].radix;
  twiddles_ = fft::Array<T>(total);
  place_ = fft::Array<int>(static_cast<std::size_t>(rows));
  if (!twiddles_ || !place_) return false;
  for (int i = 1; i < count_; ++i) {
    const int radix = pass_[i].radix, m = pass_[i].m;
    T* out = twiddles_.get() + pass_[i].twiddles;
    const fft::Roots roots(static_cast<std::uint32_t>(radix * m));
    if (!roots) return false;
    for (int k = 0; k < m; ++k) {
      for (int r = 1; r < radix; ++r, out += 2 * lanes) {
        T re, im;
        roots.get(static_cast<std::uint32_t>(r * k), re, im);
        std::fill(out, out + lanes, re);
        std::fill(out + lanes, out + 2 * lanes, im);
      }
    }
  }
  // The digits of j, the last pass's radix first, are those of the place from its top.
  for (int j = 0; j < rows; ++j) {
    int place = 0, rest = j;
    for (int i = count_ - 1; i > 0; --i) {
      place = place * pass_[i].radix + rest % pass_[i].radix;
      rest /= pass_[i].radix;
    }
    place_.get()[j] = place;
  }
  return true;
}

template <class T>
int Columns<T>::make(int n) {
  n_ = n;
  if (n > longest_at_once || fft::rough_part(n, fft::largest_prime) > 1) {
    lines_ = fft::create<fft::Plan<T>>();
    if (lines_ == nullptr || lines_->make(n) != 0) return fft::no_memory;
    work_ = 2 * static_cast<std::size_t>(n) * static_cast<std::size_t>(at_once()) + lines_->work_size();
    return 0;
  }
  choose_passes(n);
  if (count_ < 2) return 0;
  work_ = static_cast<std::size_t>(n) * 2 * most_columns + static_cast<std::size_t>(n / pass_[0].radix) * gap;
  return make_tables() ? 0 : fft::no_memory;
}

template <class T>
template <bool Inverse>
void Columns<T>::run_lines(const T* in, std::ptrdiff_t in_pitch, T* out, std::ptrdiff_t out_pitch, int columns,
                           T* work) const {
  T* const rest = work + 2 * static_cast<std::size_t>(n_) * static_cast<std::size_t>(at_once());
  for (int j = 0; j < n_; ++j) {
    for (int c = 0; c < columns; ++c) std::copy_n(in + j * in_pitch + 2 * c, 2, work + 2 * (c * n_ + j));
  }
  for (int c = 0; c < columns; ++c) {
    T* const line = work + 2 * c * n_;
    lines_->template run<Inverse>(line, line, 1, rest);
  }
  for (int j = 0; j < n_; ++j) {
    for (int c = 0; c < columns; ++c) std::copy_n(work + 2 * (c * n_ + j), 2, out + j * out_pitch + 2 * c);
  }
}

template <class T>
template <bool Inverse>
void Columns<T>::run(const T* in, std::ptrdiff_t in_pitch, T* out, std::ptrdiff_t out_pitch, int columns,
                     T* work) const {
  if (lines_ != nullptr) return run_lines<Inverse>(in, in_pitch, out, out_pitch, columns, work);
  const int registers = columns / lanes;
  if (count_ < 2) {
    with_radix(n_, [&](auto R) { only_pass<R, Inverse>(in, in_pitch, out, out_pitch, registers); });
    return;
  }
  const bool far = static_cast<std::size_t>(n_) * sizeof(T) * static_cast<std::size_t>(std::abs(in_pitch)) > far_bytes;
  const Pitch pitch{2 * columns, pass_[0].radix, gap};
  with_radix(pass_[0].radix,
             [&](auto R) { first_pass<R, Inverse>(in, in_pitch, n_ / R, work, place_.get(), pitch, registers, far); });
  for (int i = 1; i < count_; ++i) {
    const int radix = pass_[i].radix, m = pass_[i].m;
    const T* const twiddles = twiddles_.get() + pass_[i].twiddles;
    if (i + 1 < count_) {
      with_radix(radix, [&](auto R) { inner_pass<R>(work, n_ / (R * m), m, twiddles, pitch, registers); });
    } else {
      with_radix(radix,
                 [&](auto R) { last_pass<R, Inverse>(work, m, twiddles, pitch, out, out_pitch, registers, far); });
    }
  }
}

template class Columns<float>;
template class Columns<double>;
#define QOR_DFT_RUN(T, inverse) \
  template void Columns<T>::run<inverse>(const T*, std::ptrdiff_t, T*, std::ptrdiff_t, int, T*) const;
QOR_DFT_RUN(float, false)
QOR_DFT_RUN(float, true)
QOR_DFT_RUN(double, false)
QOR_DFT_RUN(double, true)
#undef QOR_DFT_RUN

}  // namespace qor::dft
