// The passes of a self-sorting transform (T. G. Stockham, 1966; decimation in time) of n points. Between passes an
// array holds n/m rows of m frequencies; row j is the transform of the points j, j + n/m, j + 2n/m, ... A pass of radix
// R makes one row of R m frequencies of the R rows j, j + n/(R m), ...
#pragma once

#include "fft/butterfly.h"

namespace qor::fft {

// ---- arrays of complex values; i is the index of the first of those that a register, or a pair of them, takes
// ---------

// Blocks of `lanes` real and `lanes` imaginary parts, aligned. i is a multiple of lanes.
template <class V>
struct Split {
  using Value = Complex<V>;
  lane_t<V>* p;
  QOR_INLINE Split operator+(int i) const { return {p + 2 * i}; }
  QOR_INLINE Value load(int i) const {
    const auto* q = static_cast<const lane_t<V>*>(__builtin_assume_aligned(p + 2 * i, sizeof(V)));
    return {simd::load<V>(q), simd::load<V>(q + lanes<V>)};
  }
  QOR_INLINE void store(int i, Value x) const {
    auto* q = static_cast<lane_t<V>*>(__builtin_assume_aligned(p + 2 * i, sizeof(V)));
    simd::store<V>(q, x.re);
    simd::store<V>(q + lanes<V>, x.im);
  }
};
// The caller's array, written from the split form; Swapped exchanges real and imaginary parts.
template <class V, bool Swapped>
struct Pairs {
  using Value = Complex<V>;
  lane_t<V>* p;
  QOR_INLINE Pairs operator+(int i) const { return {p + 2 * i}; }
  QOR_INLINE void store(int i, Value x) const {
    const V a = Swapped ? x.im : x.re, b = Swapped ? x.re : x.im;
    simd::store<V>(p + 2 * i, simd::zip_low(a, b));
    simd::store<V>(p + 2 * i + lanes<V>, simd::zip_high(a, b));
  }
};
// Real and imaginary parts in turns. With Half only the first value of the register exists in memory.
template <class V, bool Inverse, bool Half = false>
struct Turns {
  using Value = Packed<V, Inverse>;
  lane_t<V>* p;
  QOR_INLINE Turns operator+(int i) const { return {p + 2 * i}; }
  QOR_INLINE Turns<V, Inverse, true> half() const { return {p}; }
  QOR_INLINE Value load(int i) const { return {Half ? simd::load_low(p + 2 * i) : simd::load<V>(p + 2 * i)}; }
  QOR_INLINE void store(int i, Value x) const {
    if constexpr (Half) {
      simd::store_low(p + 2 * i, x.v);
    } else {
      simd::store<V>(p + 2 * i, x.v);
    }
  }
};
// Every stride-th value of the caller's array.
template <class V, bool Inverse>
struct Strided {
  using Value = Packed<V, Inverse>;
  const lane_t<V>* p;
  int stride;
  QOR_INLINE Value load(int i) const { return {simd::load_pairs<V>(p + 2 * stride * i, p + 2 * stride * (i + 1))}; }
};

// Pointers a stride apart, of which the compiler sees two multiples of the stride: it would keep all in memory.
template <class T>
struct Line {
  T* p;
  int s, s3;  // in bytes
  QOR_INLINE Line(T* start, int stride) : p(start), s(simd::opaque(stride)), s3(simd::opaque(3 * stride)) {}
  QOR_INLINE T* at(int i) const {
    T* q = p;
    for (; i >= 4; i -= 4) q = simd::opaque(beyond(q, 4 * s));
    return beyond(q, i == 3 ? s3 : i * s);
  }
  QOR_INLINE void move(int bytes) { p = simd::opaque(beyond(p, bytes)); }

 private:
  QOR_INLINE static T* beyond(T* q, int bytes) {
    using Bytes = std::conditional_t<std::is_const_v<T>, const char, char>;
    return reinterpret_cast<T*>(reinterpret_cast<Bytes*>(q) + bytes);
  }
};

// ---- passes
// -----------------------------------------------------------------------------------------------------------

// The rows that a pass combines lie a gap more than rows * m apart: powers of two would fall on the same few lines of a
// cache. So a pass puts its rows into blocks, as many as the next pass's radix, with a gap after each.
struct Rows {
  int count;  // rows to make
  int block;  // of them in a block
  int gap;    // values after a block
};

// First pass into the split layout, R a multiple of lanes. Groups of `lanes` frequencies of lanes/2 rows, transposed,
// are blocks of that layout. The inverse exchanges real and imaginary parts.
template <int R, class V, bool Inverse, class In>
[[gnu::noinline]] void first_pass(In in, const lane_t<V>& scale, Split<V> out, Rows rows) {
  constexpr int L = lanes<V>, rows_at_once = L / 2;
  using C = Packed<V, Inverse>;
  const V factor = splat<V>(scale);
  int skipped = 0;
  for (int first = 0; first < rows.count; first += rows.block, skipped += rows.gap) {
    for (int i = 0; i < rows.block; i += rows_at_once) {
      // An odd number of rows: the last one is made twice.
      const int j = first + (i + rows_at_once > rows.block ? rows.block - rows_at_once : i);
      V y[R];
      transform<C, R>([&](int r) { return in.load(j + r * rows.count) * factor; }, [&](int u, C x) { y[u] = x.v; });
      unrolled<R / L>([&](auto g) {
        V* const t = y + g * L;
        simd::transpose(t);
        unrolled<rows_at_once>([&](auto l) {
          out.store((j + l) * R + skipped + g * L, {t[2 * l + Inverse], t[2 * l + !Inverse]});
        });
      });
    }
  }
}

// First pass into rows of packed values, any R.
template <int R, class V, bool Inverse, class In>
[[gnu::noinline]] void first_rows(In in, const lane_t<V>& scale, Turns<V, Inverse> out, int rows) {
  using C = Packed<V, Inverse>;
  const V factor = splat<V>(scale);
  int j = 0;
  for (; j + C::values <= rows; j += C::values) {
    transform<C, R>(
        [&](int r) { return in.load(j + r * rows) * factor; },
        [&](int u, C x) { simd::store_pairs(out.p + 2 * (j * R + u), out.p + 2 * ((j + 1) * R + u), x.v); });
  }
  if (j < rows) {
    const Turns<V, Inverse, true> last_in{const_cast<lane_t<V>*>(in.p)}, last_out{out.p};
    transform<C, R>([&](int r) { return last_in.load(j + r * rows) * factor; },
                    [&](int u, C x) { last_out.store(j * R + u, x); });
  }
}

// A butterfly at each of `count` columns of R rows. Twiddle factors, exp(-2 pi i r k / (R m)) for frequency k of the
// r-th row, lie in the order of their use: for each register the R - 1 factors' real parts and imaginary parts.
template <int R, class In, class Out, class V>
QOR_INLINE void columns(In in, int in_apart, Out out, int out_apart, Split<V> twiddles, int count) {
  using C = typename In::Value;
  constexpr int L = lanes<V>;
  for (int k = 0; k < count; k += C::values, twiddles.p += 2 * L * (R - 1)) {
    transform<C, R>(
        [&](int r) {
          const C x = in.load(k + r * in_apart);
          return r == 0 ? x : x * twiddles.load((r - 1) * L);
        },
        [&](int u, C x) { out.store(k + u * out_apart, x); });
  }
}
template <int R, class V, bool I, bool Half>
QOR_INLINE void columns(Turns<V, I, Half> in, int in_apart, Turns<V, I, Half> out, int out_apart, Split<V> twiddles,
                        int count) {
  using C = Packed<V, I>;
  using T = lane_t<V>;
  constexpr int L = lanes<V>, pair = 2 * static_cast<int>(sizeof(T));
  Line<T> from(in.p, in_apart * pair), to(out.p, out_apart * pair);
  for (const T* const end = in.p + 2 * count; from.p < end; from.p += L, to.p += L, twiddles.p += 2 * L * (R - 1)) {
    transform<C, R>(
        [&](int r) {
          const C x = Turns<V, I, Half>{from.at(r)}.load(0);
          return r == 0 ? x : x * twiddles.load((r - 1) * L);
        },
        [&](int u, C x) { Turns<V, I, Half>{to.at(u)}.store(0, x); });
  }
}

template <int R, class In, class Out, class V>
[[gnu::noinline]] void pass(In in, int in_gap, Out out, Split<V> twiddles, int m, Rows rows) {
  using C = typename In::Value;
  const int apart = rows.count * m + in_gap, whole = m - m % C::values;
  for (int first = 0, skipped = 0; first < rows.count; first += rows.block, skipped += rows.gap) {
    for (int j = first; j < first + rows.block; ++j) {
      const In from = in + j * m;
      const Out to = out + (j * R * m + skipped);
      columns<R>(from, apart, to, m, twiddles, whole);
      if constexpr (requires { in.half(); }) {
        if (whole < m) {
          columns<R>(from.half() + whole, apart, to.half() + whole, m,
                     Split<V>{twiddles.p + whole * lanes<V> * (R - 1)}, 1);
        }
      }
    }
  }
}

}  // namespace qor::fft
