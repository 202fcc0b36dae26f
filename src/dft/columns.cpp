#include "dft/columns.h"

#include "fft/butterfly.h"
#include "fft/convolution.h"

namespace qor::dft {
namespace {

using fft::Complex;
using fft::lane_t;

// R rows of the caller's array, `step` reals apart: pairs of real and imaginary parts. The inverse exchanges the parts.
// Here the columns are side by side.
template <class V, bool Inverse>
struct Beside {
  lane_t<V>* p;
  std::ptrdiff_t step;
  QOR_INLINE void next() { p += 2 * simd::lanes<V>; }
  QOR_INLINE Complex<V> load(int r) const {
    const lane_t<V>* const q = p + r * step;
    const V a = simd::held(simd::load<V>(q)), b = simd::held(simd::load<V>(q + simd::lanes<V>));
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
// Here they are `across` reals apart, and values are scaled when they are loaded.
template <class V, bool Inverse>
struct Apart {
  static constexpr int half = simd::lanes<V> / 2;
  lane_t<V>* p;
  std::ptrdiff_t step, across;
  lane_t<V> scale;
  QOR_INLINE void next() { p += 2 * half * across; }
  QOR_INLINE Complex<V> load(int r) const {
    const lane_t<V>* const q = p + r * step;
    const V a = simd::held(simd::load_pairs<V>(q, q + across));
    const V b = simd::held(simd::load_pairs<V>(q + half * across, q + (half + 1) * across));
    const V even = simd::evens(a, b) * simd::splat<V>(scale), odd = simd::odds(a, b) * simd::splat<V>(scale);
    return Inverse ? Complex<V>{odd, even} : Complex<V>{even, odd};
  }
  QOR_INLINE void store(int r, Complex<V> x) const {
    lane_t<V>* const q = p + r * step;
    const V a = Inverse ? x.im : x.re, b = Inverse ? x.re : x.im;
    simd::store_pairs(q, q + across, simd::zip_low(a, b));
    simd::store_pairs(q + half * across, q + (half + 1) * across, simd::zip_high(a, b));
  }
};
// R rows of the buffer: registers of real and of imaginary parts in turns.
template <class V>
struct Inside {
  lane_t<V>* p;
  std::ptrdiff_t step;
  QOR_INLINE void next() { p += 2 * simd::lanes<V>; }
  QOR_INLINE V* row(int r) const { return reinterpret_cast<V*>(p + r * step); }
  QOR_INLINE Complex<V> load(int r) const { return {simd::held(row(r)[0]), simd::held(row(r)[1])}; }
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
  for (int w = 0; w < registers; ++w, in.next(), out.next()) {
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
    for (int w = 0; w < registers; w += 2) __builtin_prefetch(line + 32 * w);
  });
}

// Passes that read or write the caller's array, whose rows are `step` apart in `in` and `out` as they are passed.
template <int R, class V, class In, class Out>
[[gnu::noinline]] void only_pass(In in, Out out, int registers) {
  butterflies<R, false, V>(in, out, nullptr, registers);
}
template <int R, class V, class In>
[[gnu::noinline]] void first_pass(In in, int rows, lane_t<V>* buffer, const int* place, Pitch pitch, int registers,
                                  bool far) {
  constexpr int ahead = (rows_ahead + R - 1) / R;
  const std::ptrdiff_t down = in.step;
  in.step *= rows;
  for (int j = 0; j < rows; ++j, in.p += down) {
    if (far && j + ahead < rows) fetch_rows<R>(in.p + ahead * down, in.step, registers);
    butterflies<R, false, V>(in, Inside<V>{buffer + pitch(place[j] * R), pitch.row}, nullptr, registers);
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
template <int R, class V, class Out>
[[gnu::noinline]] void last_pass(lane_t<V>* buffer, int m, const lane_t<V>* twiddles, Pitch pitch, Out out,
                                 int registers, bool far) {
  constexpr int ahead = (rows_ahead + R - 1) / R;
  const int step = pitch(m);
  const std::ptrdiff_t down = out.step;
  out.step *= m;
  for (int k = 0; k < m; ++k, out.p += down) {
    if (far && k + ahead < m) fetch_rows<R>(out.p + ahead * down, out.step, registers);
    butterflies<R, true, V>(Inside<V>{buffer + pitch(k), step}, out, twiddles + k * (R - 1) * 2 * simd::lanes<V>,
                            registers);
  }
}

// Calls f with the radix as a constant.
template <class F>
QOR_INLINE void with_radix(int radix, F f) {
  fft::unrolled<fft::largest_radix - 1>([&](auto i) {
    if (radix == i + 2) f(std::integral_constant<int, i + 2>{});
  });
}

// Radices of powers of two, by the power, each digit the order of one. Found by measuring.
constexpr const char* binary_passes[] = {"",    "1",   "2",    "3",    "4",    "32",    "33",   "322",
                                         "332", "333", "3322", "3332", "3333", "33322", "33332"};
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
  work_ = static_cast<std::size_t>(n) * 2 * static_cast<std::size_t>(at_once()) +
          static_cast<std::size_t>(n / pass_[0].radix) * gap;
  return make_tables() ? 0 : fft::no_memory;
}

template <class T>
template <bool Inverse>
void Columns<T>::run_lines(Grid<const T> in, Grid<T> out, int columns, T scale, T* work) const {
  T* const rest = work + 2 * static_cast<std::size_t>(n_) * static_cast<std::size_t>(at_once());
  for (int j = 0; j < n_; ++j) {
    for (int c = 0; c < columns; ++c) std::copy_n(in.p + j * in.down + c * in.across, 2, work + 2 * (c * n_ + j));
  }
  for (int c = 0; c < columns; ++c) {
    T* const line = work + 2 * c * n_;
    lines_->template run<Inverse>(line, line, scale, rest);
  }
  for (int j = 0; j < n_; ++j) {
    for (int c = 0; c < columns; ++c) std::copy_n(work + 2 * (c * n_ + j), 2, out.p + j * out.down + c * out.across);
  }
}

template <class T>
template <bool Inverse>
void Columns<T>::run(Grid<const T> in, Grid<T> out, int columns, T scale, T* work) const {
  if (lines_ != nullptr) return run_lines<Inverse>(in, out, columns, scale, work);
  using Near = Beside<V, Inverse>;
  using Far = Apart<V, Inverse>;
  const int registers = columns / lanes;
  const Near near_in{const_cast<T*>(in.p), in.down}, near_out{out.p, out.down};
  const Far far_in{const_cast<T*>(in.p), in.down, in.across, scale}, far_out{out.p, out.down, out.across, 1};
  const bool in_near = in.across == 2 && scale == 1, out_near = out.across == 2;
  if (count_ < 2) {
    with_radix(n_, [&](auto R) {
      in_near&& out_near ? only_pass<R, V>(near_in, near_out, registers) : only_pass<R, V>(far_in, far_out, registers);
    });
    return;
  }
  const auto reaches_far = [&](std::ptrdiff_t down) {
    return static_cast<std::size_t>(n_) * sizeof(T) * static_cast<std::size_t>(std::abs(down)) > far_bytes;
  };
  const Pitch pitch{2 * columns, pass_[0].radix, gap};
  with_radix(pass_[0].radix, [&](auto R) {
    const int rows = n_ / R;
    in_near ? first_pass<R, V>(near_in, rows, work, place_.get(), pitch, registers, reaches_far(in.down))
            : first_pass<R, V>(far_in, rows, work, place_.get(), pitch, registers, false);
  });
  for (int i = 1; i < count_; ++i) {
    const int radix = pass_[i].radix, m = pass_[i].m;
    const T* const twiddles = twiddles_.get() + pass_[i].twiddles;
    with_radix(radix, [&](auto R) {
      if (i + 1 < count_) {
        inner_pass<R>(work, n_ / (R * m), m, twiddles, pitch, registers);
      } else if (out_near) {
        last_pass<R, V>(work, m, twiddles, pitch, near_out, registers, reaches_far(out.down));
      } else {
        last_pass<R, V>(work, m, twiddles, pitch, far_out, registers, false);
      }
    });
  }
}

template class Columns<float>;
template class Columns<double>;
#define QOR_DFT_RUN(T, inverse) template void Columns<T>::run<inverse>(Grid<const T>, Grid<T>, int, T, T*) const;
QOR_DFT_RUN(float, false)
QOR_DFT_RUN(float, true)
QOR_DFT_RUN(double, false)
QOR_DFT_RUN(double, true)
#undef QOR_DFT_RUN

}  // namespace qor::dft
