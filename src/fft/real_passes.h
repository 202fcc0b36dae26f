// The passes of transforms of 2^o real values that never leave the reals (decimation in time, self-sorting). Between
// passes an array holds the spectra of n/m sets of m values, frequency by frequency: for each vector of sets, the rows
// of the pass, its real parts and its imaginary parts. Frequency 0 has frequency m/2 as its imaginary part. A pass of
// radix R takes the sets j, j + rows, j + 2 rows, ... to one of R m values:
//   X[k + u m] = sum_r (x_r[k] w^(r k)) exp(-2 pi i r u / R),  w = exp(-2 pi i / (R m)),  k = 0 .. m/2,
// where the results beyond R m / 2 are conjugates of those at R m less the frequency. The inverse runs the same steps
// backwards. Vectors lie along the rows; the last pass, with one row left, has them along the frequencies.
#pragma once

#include "fft/half_complex.h"
#include "fft/passes.h"

namespace qor::fft {

// A vector of one value.
template <class V>
QOR_INLINE V lone(lane_t<V> x) {
  V v{};
  v[0] = x;
  return v;
}

// A pass writes, or in the inverse reads, its rows in the order in which the next pass of radix `next` takes them: row
// vectors j, j + vectors, j + 2 vectors, ... follow each other.
struct Order {
  int next, vectors;
};
// The rows that the first pass makes of the caller's array: `width` vectors each in `count` places, `pitch` elements
// apart. The points of the next pass are next_pitch elements apart.
struct FirstRows {
  int next, next_pitch, count, pitch, width;
};

// Vectors of the work space.
template <class V, class T>
QOR_INLINE auto as_vectors(T* p) {
  return reinterpret_cast<std::conditional_t<std::is_const_v<T>, const V*, V*>>(p);
}

// Points `apart` elements apart become frequencies `pitch` vectors apart, or the reverse.
template <int R, class V>
QOR_INLINE void real_first(const lane_t<V>* in, int apart, V* out, int pitch, const FirstRows& rows,
                           const lane_t<V>& scale) {
  const V factor = splat<V>(scale);
  for (int i = 0; i < rows.count; ++i, out += 2 * rows.next * rows.width) {
    for (int r = 0; r < rows.next; ++r) {
      const lane_t<V>* p = in + i * rows.pitch + r * rows.next_pitch;
      V* to = out + 2 * r;
      for (int j = 0; j < rows.width; ++j, p += lanes<V>, to += 2 * rows.next) {
        Real<V, R>::forward([&](int k) { return simd::load<V>(p + k * apart) * factor; },
                            [&](int q, V x) { to[q / 2 * pitch + q % 2] = x; });
      }
    }
  }
}
template <int R, class V>
QOR_INLINE void real_last_inverse(const V* in, int pitch, lane_t<V>* out, int apart, const FirstRows& rows,
                                  const lane_t<V>& scale) {
  const V factor = splat<V>(scale);
  for (int i = 0; i < rows.count; ++i, in += 2 * rows.next * rows.width) {
    for (int r = 0; r < rows.next; ++r) {
      lane_t<V>* p = out + i * rows.pitch + r * rows.next_pitch;
      const V* from = in + 2 * r;
      for (int j = 0; j < rows.width; ++j, p += lanes<V>, from += 2 * rows.next) {
        Real<V, R>::inverse([&](int q) { return simd::held(from[q / 2 * pitch + q % 2]); },
                            [&](int k, V x) { simd::store<V>(p + k * apart, x * factor); });
      }
    }
  }
}

// The frequencies 0 and m/2 of a pass between spectra of m values (narrow) and of R m (wide). `apart` is the vectors
// between frequencies m apart.
template <int R, bool Inverse, class V>
[[gnu::noinline]] void real_ends(V* narrow, V* wide, int apart, Order order) {
  using C = Complex<V>;
  const auto even = [&](int q) { return q < 2 ? q : q / 2 * apart + q % 2; };
  const auto odd = [&](int u) { return u * apart + apart / 2; };
  for (int j = 0; j < order.vectors; ++j) {
    V* p = narrow + 2 * R * j;
    for (int i = 0; i < order.next; ++i, p += 2 * R * order.vectors, wide += 2) {
      if constexpr (Inverse) {
        Real<V, R>::inverse([&](int q) { return wide[even(q)]; }, [&](int r, V x) { p[2 * r] = x; });
        OddReal<V, R>::inverse(
            [&](int u) {
              return C{wide[odd(u)], wide[odd(u) + 1]};
            },
            [&](int r, V x) { p[2 * r + 1] = x; });
      } else {
        Real<V, R>::forward([&](int r) { return p[2 * r]; }, [&](int q, V x) { wide[even(q)] = x; });
        OddReal<V, R>::forward([&](int r) { return p[2 * r + 1]; },
                               [&](int u, C x) {
                                 wide[odd(u)] = x.re;
                                 wide[odd(u) + 1] = x.im;
                               });
      }
    }
  }
}

// Where frequencies k, k + m, ... of the result lie, and R m - k, ...: from lower up and from upper up, `apart` vectors
// apart; those of k + 1 are `pitch` up from lower and down from upper.
template <class V>
struct Wide {
  V *lower, *upper;
  int pitch, apart;
};

// `count` frequencies of that pass. Twiddle factors: for each frequency those of r = 1 .. R - 1, real part and imaginary
// part in every lane. Spread: the rows of the narrow side are in their natural order.
template <int R, bool Inverse, bool Spread, class V>
[[gnu::noinline]] void real_columns(V* narrow, int pitch, const Wide<V>& wide, const V* twiddles, int count,
                                    Order order) {
  using C = Complex<V>;
  constexpr int unit = Spread ? 2 : 2 * R;
  const int across = unit * order.vectors, row_apart = Spread ? across * order.next : 2;
  const int apart = wide.apart;
  V *lower = wide.lower, *upper = wide.upper;
  for (int k = 0; k < count; ++k) {
    V *low = lower, *high = upper;
    for (V *row = narrow, *const rows_end = narrow + across; row != rows_end; row += unit) {
      V *p = row, *const end = row + across * order.next;
      do {
        const auto at = [&](int u) { return 2 * u < R ? low + u * apart : high + (R - 1 - u) * apart; };
        const auto factor = [&](int r) { return C{twiddles[2 * r - 2], twiddles[2 * r - 1]}; };
        if constexpr (Inverse) {
          from_upper_conjugate<V, R>(
              [&](int u) {
                return C{simd::held(at(u)[0]), simd::held(at(u)[1])};
              },
              [&](int r, C y) {
                if (r != 0) y = y * factor(r);
                p[r * row_apart] = y.im;
                p[r * row_apart + 1] = y.re;
              });
        } else {
          UpperConjugate<V, R>::run(
              [&](int r) {
                const C y{simd::held(p[r * row_apart]), simd::held(p[r * row_apart + 1])};
                return r == 0 ? y : y * factor(r);
              },
              [&](int u, C y) {
                at(u)[0] = y.re;
                at(u)[1] = y.im;
              });
        }
        p += across;
        low += 2;
        high += 2;
      } while (p != end);
    }
    narrow += pitch;
    lower += wide.pitch;
    upper -= wide.pitch;
    twiddles += 2 * (R - 1);
  }
}

// R rows of lanes<V> frequencies as lanes: t[r] has the lanes' values in row r.
template <int R, class V>
QOR_INLINE void load_lanes(const lane_t<V>* p, V* t) {
  constexpr int L = lanes<V>;
  unrolled<R / L>([&](auto g) {
    unrolled<L>([&](auto l) { t[g * L + l] = simd::held(as_vectors<V>(p)[(2 * R * l + 2 * L * g) / L]); });
    simd::transpose(t + g * L);
  });
}
template <int R, class V>
QOR_INLINE void store_lanes(lane_t<V>* p, V* t) {
  constexpr int L = lanes<V>;
  unrolled<R / L>([&](auto g) {
    simd::transpose(t + g * L);
    unrolled<L>([&](auto l) { as_vectors<V>(p)[(2 * R * l + 2 * L * g) / L] = t[g * L + l]; });
  });
}
// Where row r of frequency 0 or, behind it, m/2 lies.
template <class V>
constexpr int lone_row(int r) {
  return r / lanes<V> * 2 * lanes<V> + r % lanes<V>;
}

// Complex values in the caller's array, frequencies up from p or, Down, down from it.
template <bool Down, class V>
QOR_INLINE Complex<V> load_frequencies(const lane_t<V>* p) {
  constexpr int L = lanes<V>;
  const V a = simd::held(simd::load<V>(Down ? p - L + 2 : p)),
          b = simd::held(simd::load<V>(Down ? p - 2 * L + 2 : p + L));
  if constexpr (Down && L == 4) {
    return {__builtin_shufflevector(a, b, 2, 0, 6, 4), __builtin_shufflevector(a, b, 3, 1, 7, 5)};
  } else {
    return {simd::evens(a, b), simd::odds(a, b)};
  }
}
template <bool Down, class V>
QOR_INLINE void store_frequencies(lane_t<V>* p, Complex<V> x) {
  constexpr int L = lanes<V>;
  const V a = simd::zip_low(x.re, x.im), b = simd::zip_high(x.re, x.im);
  if constexpr (Down) {
    simd::store_pairs(p, p - 2, a);
    simd::store_pairs(p - L, p - L - 2, b);
  } else {
    simd::store<V>(p, a);
    simd::store<V>(p + L, b);
  }
}

// The pass between one row of n = R m values and planes of R rows: `count` vectors of frequencies from k on, in `work`
// those of k first. Twiddle factors: as columns() in passes.h has them.
template <int R, class V>
QOR_INLINE void real_last(const V* work, lane_t<V>* out, int k, int m, const V* twiddles, int count) {
  using C = Complex<V>;
  constexpr int L = lanes<V>;
  const lane_t<V>* x = reinterpret_cast<const lane_t<V>*>(work);
  lane_t<V>* low = out + 2 * k;
  lane_t<V>* high = out + 2 * (m - k);
  do {
    V re[R], im[R];
    load_lanes<R>(x, re);
    load_lanes<R>(x + L, im);
    UpperConjugate<V, R>::run(
        [&](int r) {
          const C y{re[r], im[r]};
          return r == 0 ? y : y * C{twiddles[2 * r - 2], twiddles[2 * r - 1]};
        },
        [&](int u, C y) {
          if (2 * u < R) {
            store_frequencies<false>(low + 2 * u * m, y);
          } else {
            store_frequencies<true>(high + 2 * (R - 1 - u) * m, y);
          }
        });
    x += 2 * R * L;
    low += 2 * L;
    high -= 2 * L;
    twiddles += 2 * (R - 1);
  } while (--count != 0);
}
template <int R, class V>
QOR_INLINE void real_first_inverse(const lane_t<V>* in, V* work, int k, int m, const V* twiddles, int count) {
  using C = Complex<V>;
  constexpr int L = lanes<V>;
  lane_t<V>* x = reinterpret_cast<lane_t<V>*>(work);
  const lane_t<V>* low = in + 2 * k;
  const lane_t<V>* high = in + 2 * (m - k);
  do {
    V re[R], im[R];
    from_upper_conjugate<V, R>(
        [&](int u) {
          return 2 * u < R ? load_frequencies<false, V>(low + 2 * u * m)
                           : load_frequencies<true, V>(high + 2 * (R - 1 - u) * m);
        },
        [&](int r, C y) {
          if (r != 0) y = y * C{twiddles[2 * r - 2], twiddles[2 * r - 1]};
          re[r] = y.im;
          im[r] = y.re;
        });
    store_lanes<R>(x, re);
    store_lanes<R>(x + L, im);
    x += 2 * R * L;
    low += 2 * L;
    high -= 2 * L;
    twiddles += 2 * (R - 1);
  } while (--count != 0);
}

// The frequencies 0 and m/2 of that pass. They are written after the others, and in the inverse made after them.
template <int R, class V>
QOR_INLINE void real_last_ends(const V* work, lane_t<V>* out, int m) {
  const lane_t<V>* in = reinterpret_cast<const lane_t<V>*>(work);
  Real<V, R>::forward([&](int r) { return lone<V>(in[lone_row<V>(r)]); },
                      [&](int p, V x) { out[p < 2 ? p : p / 2 * 2 * m + p % 2] = x[0]; });
  OddReal<V, R>::forward([&](int r) { return lone<V>(in[lanes<V> + lone_row<V>(r)]); },
                         [&](int u, Complex<V> x) {
                           out[(2 * u + 1) * m] = x.re[0];
                           out[(2 * u + 1) * m + 1] = x.im[0];
                         });
}
template <int R, class V>
QOR_INLINE void real_first_inverse_ends(const lane_t<V>* in, lane_t<V> zero, lane_t<V> middle, V* work, int m) {
  lane_t<V>* out = reinterpret_cast<lane_t<V>*>(work);
  Real<V, R>::inverse([&](int p) { return lone<V>(p == 0   ? zero
                                                  : p == 1 ? middle
                                                           : in[p / 2 * 2 * m + p % 2]); },
                      [&](int r, V x) { out[lone_row<V>(r)] = x[0]; });
  OddReal<V, R>::inverse(
      [&](int u) {
        return Complex<V>{lone<V>(in[(2 * u + 1) * m]), lone<V>(in[(2 * u + 1) * m + 1])};
      },
      [&](int r, V x) { out[lanes<V> + lone_row<V>(r)] = x[0]; });
}

}  // namespace qor::fft
