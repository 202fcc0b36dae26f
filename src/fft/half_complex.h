// Transforms of R real values in registers, and the complex butterflies that go with them (H. V. Sorensen and others,
// 1987, "Real-valued fast Fourier transform algorithms"). The spectrum of real values is kept in planes, in the order of
// the Perm packing: the values at the frequencies 0 and R/2, then real and imaginary parts.
//
// An inverse step undoes the forward one and multiplies by R. In the inverse complex values have real and imaginary
// parts exchanged, which makes butterflies and products those of the forward direction.
#pragma once

#include "fft/butterfly.h"

namespace qor::fft {

// The complex transform of R values, frequencies R/2 .. R - 1 conjugate.
template <class V, int R>
struct UpperConjugate {
  template <class Get, class Put>
  QOR_INLINE static void run(Get get, Put put) {
    using C = Complex<V>;
    if constexpr (R == 1) {
      put(0, get(0));
    } else if constexpr (R == 2) {
      const C a = get(0), b = get(1);
      put(0, a + b);
      put(1, C{a.re - b.re, b.im - a.im});
    } else if constexpr (R == 4) {
      const C x1 = get(1), x3 = get(3), c = x1 + x3, d = x3 - x1;
      const C x0 = get(0), x2 = get(2), a = x0 + x2, b = x0 - x2;
      put(0, a + c);
      put(2, C{a.re - c.re, c.im - a.im});
      put(1, plus_i(b, d));
      put(3, C{b.re + d.im, d.re - b.im});
    } else {
      constexpr int A = R / 4;
      C t[A][4];
      unrolled<4>([&](auto b) {
        Transform<C, A>::run([&](int a) { return get(4 * a + b); }, [&](int u, C x) { t[u][b] = x; });
      });
      unrolled<A>([&](auto u) {
        unrolled<4>([&](auto b) { t[u][b] = turned<u * b, R>(t[u][b]); });
        UpperConjugate<V, 4>::run([&](int b) { return t[u][b]; }, [&](int v, C x) { put(u + A * v, x); });
      });
    }
  }
};

// The complex transform, parts exchanged, of R values given with R/2 .. R - 1 conjugate and parts in their places.
template <class V, int R, class Get, class Put>
QOR_INLINE void from_upper_conjugate(Get get, Put put) {
  using C = Complex<V>;
  const auto point = [&](int u) {
    const C x = get(u);
    return 2 * u < R || R == 1 ? C{x.im, x.re} : C{-x.im, x.re};
  };
  if constexpr (R <= 4) {
    Transform<C, R>::run(point, put);
  } else {
    Composite<C, 4, R / 4>::run(point, put);
  }
}

// R real values x[r] and the frequencies u + 1/2, u < R/2: the complex transform of half the length of
// (x[r] - i x[r + R/2]) exp(-pi i r / R).
template <class V, int R>
struct OddReal {
  static constexpr int half = R / 2;
  // Of the complex transform's frequency v.
  static constexpr int place(int v) { return 4 * v < R ? 2 * v : R - 1 - 2 * v; }

  template <class Get, class Put>
  QOR_INLINE static void forward(Get get, Put put) {
    Complex<V> x[half];
    unrolled<half>([&](auto r) { x[r] = turned<r, 2 * R>(Complex<V>{get(r), -get(r + half)}); });
    UpperConjugate<V, half>::run([&](int r) { return x[r]; }, [&](int v, Complex<V> y) { put(place(v), y); });
  }
  template <class Get, class Put>
  QOR_INLINE static void inverse(Get get, Put put) {
    Complex<V> y[half];
    from_upper_conjugate<V, half>([&](int v) { return get(place(v)); }, [&](int r, Complex<V> x) { y[r] = x; });
    unrolled<half>([&](auto r) {
      const Complex<V> x = turned<r, 2 * R>(y[r]);
      put(r, x.im * splat<V>(2));
      put(r + half, x.re * splat<V>(-2));
    });
  }
};

// R real values and their spectrum, plane by plane.
template <class V, int R>
struct Real {
  static constexpr int half = R / 2;
  static constexpr int even_plane(int p) { return 2 * p - p % 2; }
  static constexpr int odd_plane(int u) { return 2 * (2 * u + 1); }

  template <class Get, class Put>
  QOR_INLINE static void pair(Get get, Put put) {
    const V a = get(0), b = get(1);
    put(0, a + b);
    put(1, a - b);
  }
  template <class Get, class Put>
  QOR_INLINE static void forward(Get get, Put put) {
    if constexpr (R == 2) {
      pair(get, put);
    } else {
      V s[half], d[half];
      unrolled<half>([&](auto r) {
        const V a = get(r), b = get(r + half);
        s[r] = a + b;
        d[r] = a - b;
      });
      OddReal<V, half>::forward([&](int r) { return d[r]; },
                                [&](int u, Complex<V> y) {
                                  put(odd_plane(u), y.re);
                                  put(odd_plane(u) + 1, y.im);
                                });
      Real<V, half>::forward([&](int r) { return s[r]; }, [&](int p, V x) { put(even_plane(p), x); });
    }
  }
  template <class Get, class Put>
  QOR_INLINE static void inverse(Get get, Put put) {
    if constexpr (R == 2) {
      pair(get, put);
    } else {
      V s[half], d[half];
      Real<V, half>::inverse([&](int p) { return get(even_plane(p)); }, [&](int r, V x) { s[r] = x; });
      OddReal<V, half>::inverse(
          [&](int u) {
            return Complex<V>{get(odd_plane(u)), get(odd_plane(u) + 1)};
          },
          [&](int r, V x) { d[r] = x; });
      unrolled<half>([&](auto r) {
        put(r, s[r] + d[r]);
        put(r + half, s[r] - d[r]);
      });
    }
  }
};

}  // namespace qor::fft
