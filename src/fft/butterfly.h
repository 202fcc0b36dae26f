// Discrete Fourier transforms of R points, negative exponent, on R complex values held in registers. One source serves
// both precisions, any vector width and two kinds of complex values: Complex keeps real and imaginary parts in vectors
// of their own; Packed keeps them in turns in one vector, as callers' arrays do.
//
// transform<C, R>(get, put): get(i) loads point i, put(u, value) stores frequency u. Loads are as late and stores as
// early as the algorithm allows, since there are only eight registers.
#pragma once

#include <utility>

#include "base/target.h"
#include "simd/vec.h"

namespace qor::fft {

using simd::lane_t;
using simd::lanes;
using simd::splat;

template <class V>
struct Complex {
  using Vector = V;
  static constexpr int values = lanes<V>;
  V re, im;
};
template <class V>
QOR_INLINE Complex<V> operator+(Complex<V> a, Complex<V> b) {
  return {a.re + b.re, a.im + b.im};
}
template <class V>
QOR_INLINE Complex<V> operator-(Complex<V> a, Complex<V> b) {
  return {a.re - b.re, a.im - b.im};
}
template <class V>
QOR_INLINE Complex<V> operator*(Complex<V> a, V c) {
  return {a.re * c, a.im * c};
}
template <class V>
QOR_INLINE Complex<V> operator*(Complex<V> a, Complex<V> b) {
  return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
// a + i b and a - i b.
template <class V>
QOR_INLINE Complex<V> plus_i(Complex<V> a, Complex<V> b) {
  return {a.re - b.im, a.im + b.re};
}
template <class V>
QOR_INLINE Complex<V> minus_i(Complex<V> a, Complex<V> b) {
  return {a.re + b.im, a.im - b.re};
}

// The parts of packed values exchanged. A shuffle of words needs no copy of its operand before.
template <class V>
QOR_INLINE V swapped(V v) {
  if constexpr (sizeof(V) == sizeof(simd::VecU32)) {
    const auto w = simd::as<simd::VecU32>(v);
    if constexpr (lanes<V> == 2) {
      return simd::as<V>(__builtin_shufflevector(w, w, 2, 3, 0, 1));
    } else {
      return simd::as<V>(__builtin_shufflevector(w, w, 1, 0, 3, 2));
    }
  } else {
    return simd::swap_pairs(v);
  }
}

// Real and imaginary parts in turns. With Inverse the exponent of every transform is positive.
template <class V, bool Inverse = false>
struct Packed {
  using Vector = V;
  static constexpr int values = lanes<V> / 2;
  V v;
};
template <class V, bool I>
QOR_INLINE Packed<V, I> operator+(Packed<V, I> a, Packed<V, I> b) {
  return {a.v + b.v};
}
template <class V, bool I>
QOR_INLINE Packed<V, I> operator-(Packed<V, I> a, Packed<V, I> b) {
  return {a.v - b.v};
}
template <class V, bool I>
QOR_INLINE Packed<V, I> operator*(Packed<V, I> a, V c) {
  return {a.v * c};
}
// -i a (i a in the inverse).
template <class V, bool I>
QOR_INLINE Packed<V, I> quarter(Packed<V, I> a) {
  return {simd::flip_sign(swapped(a.v), simd::alternating_signs<V>(I ? 0 : 1))};
}
template <class V, bool I>
QOR_INLINE Packed<V, I> plus_i(Packed<V, I> a, Packed<V, I> b) {
  return {a.v - quarter(b).v};
}
template <class V, bool I>
QOR_INLINE Packed<V, I> minus_i(Packed<V, I> a, Packed<V, I> b) {
  return {a.v + quarter(b).v};
}

// A factor for a Packed value has every real part twice and, in im, {-im, im}; the inverse takes the conjugate.
template <class V, bool I>
QOR_INLINE Packed<V, I> operator*(Packed<V, I> a, Complex<V> w) {
  const V x = a.v * w.re, y = swapped(a.v) * w.im;
  return {I ? x - y : x + y};
}

// cos and sin of 2 pi k / n for the constants of butterflies: Taylor series in extended precision after reduction to
// the first octant. k and n are small.
struct Angle {
  long double cos, sin;
};
constexpr Angle angle(int k, int n) {
  k %= n;
  if (8 * k > n) {  // turn back by a quarter until within the first octant of either sign
    if (2 * k > n) {
      const Angle a = angle(n - k, n);
      return {a.cos, -a.sin};
    }
    if (4 * k > n) {
      // pi - x
      const Angle a = angle(n - 2 * k, 2 * n);
      return {-a.cos, a.sin};
    }
    const Angle a = angle(n - 4 * k, 4 * n);  // pi/2 - x
    return {a.sin, a.cos};
  }
  const long double x = 6.283185307179586476925286766559005768L * k / n, x2 = x * x;
  long double c = 0, s = 0;
  for (int i = 26; i >= 0; i -= 2) {
    c = 1 - x2 / ((i + 1) * (i + 2)) * c;
    s = 1 - x2 / ((i + 2) * (i + 3)) * s;
  }
  return {c, x * s};
}
template <class T, int K, int N>
inline constexpr T cos_of = T(angle(K, N).cos);
template <class T, int K, int N>
inline constexpr T sin_of = T(angle(K, N).sin);

// a times exp(-2 pi i K / N), cheaply for the eighths of a turn.
template <int K, int N, class V>
QOR_INLINE Complex<V> turned(Complex<V> a) {
  using T = lane_t<V>;
  constexpr int k = K % N;
  if constexpr (k == 0) {
    return a;
  } else if constexpr (4 * k == N) {
    return {a.im, -a.re};
  } else if constexpr (8 * k == N) {
    return Complex<V>{a.re + a.im, a.im - a.re} * splat<V>(cos_of<T, 1, 8>);
  } else if constexpr (8 * k == 3 * N) {
    const V c = splat<V>(cos_of<T, 1, 8>);
    return {(a.im - a.re) * c, (a.re + a.im) * -c};
  } else {
    const V c = splat<V>(cos_of<T, k, N>), s = splat<V>(sin_of<T, k, N>);
    return {a.re * c + a.im * s, a.im * c - a.re * s};
  }
}
// c + i s as the product with Packed takes it.
template <class V>
QOR_INLINE Complex<V> constant_factor(lane_t<V> c, lane_t<V> s) {
  Complex<V> w;
  for (int i = 0; i < lanes<V>; ++i) {
    w.re[i] = c;
    w.im[i] = i % 2 == 0 ? -s : s;
  }
  return w;
}
template <int K, int N, class V, bool I>
QOR_INLINE Packed<V, I> turned(Packed<V, I> a) {
  using T = lane_t<V>;
  constexpr int k = K % N;
  if constexpr (k == 0) {
    return a;
  } else if constexpr (4 * k == N) {
    return quarter(a);
  } else {
    return a * constant_factor<V>(cos_of<T, k, N>, -sin_of<T, k, N>);
  }
}

template <int... I, class F>
QOR_INLINE void unrolled(std::integer_sequence<int, I...>, F f) {
  (f(std::integral_constant<int, I>{}), ...);
}
template <int N, class F>
QOR_INLINE void unrolled(F f) {
  unrolled(std::make_integer_sequence<int, N>{}, f);
}

template <class C, int R>
struct Transform;

template <class C>
struct Transform<C, 1> {
  template <class Get, class Put>
  QOR_INLINE static void run(Get get, Put put) {
    put(0, get(0));
  }
};
template <class C>
struct Transform<C, 2> {
  template <class Get, class Put>
  QOR_INLINE static void run(Get get, Put put) {
    const C a = get(0), b = get(1);
    put(0, a + b);
    put(1, a - b);
  }
};
template <class C>
struct Transform<C, 4> {
  template <class Get, class Put>
  QOR_INLINE static void run(Get get, Put put) {
    const C x1 = get(1), x3 = get(3), c = x1 + x3, d = x1 - x3;
    const C x0 = get(0), x2 = get(2), a = x0 + x2, b = x0 - x2;
    put(0, a + c);
    put(2, a - c);
    put(1, minus_i(b, d));
    put(3, plus_i(b, d));
  }
};

// Composite sizes A * B: point B a + b, frequency u + A v.
template <class C, int A, int B>
struct Composite {
  template <class Get, class Put>
  QOR_INLINE static void run(Get get, Put put) {
    C t[A][B];
    unrolled<B>(
        [&](auto b) { Transform<C, A>::run([&](int a) { return get(B * a + b); }, [&](int u, C x) { t[u][b] = x; }); });
    unrolled<A>([&](auto u) {
      unrolled<B>([&](auto b) { t[u][b] = turned<u * b, A * B>(t[u][b]); });
      Transform<C, B>::run([&](int b) { return t[u][b]; }, [&](int v, C x) { put(u + A * v, x); });
    });
  }
};
template <class C>
struct Transform<C, 6> : Composite<C, 3, 2> {};
template <class C>
struct Transform<C, 10> : Composite<C, 5, 2> {};
template <class C>
struct Transform<C, 12> : Composite<C, 4, 3> {};
template <class C>
struct Transform<C, 14> : Composite<C, 7, 2> {};
template <class C>
struct Transform<C, 15> : Composite<C, 5, 3> {};
template <class C>
struct Transform<C, 8> : Composite<C, 2, 4> {};
template <class C>
struct Transform<C, 9> : Composite<C, 3, 3> {};
template <class C>
struct Transform<C, 16> : Composite<C, 4, 4> {};

// Odd primes: with s = x[r] + x[R - r], d = x[r] - x[R - r], frequencies u and R - u are p -+ i q,
//   p = x[0] + sum_r cos(2 pi r u / R) s[r],  q = sum_r sin(2 pi r u / R) d[r].
template <class C, int R>
struct Transform {
  template <class Get, class Put>
  QOR_INLINE static void run(Get get, Put put) {
    using V = typename C::Vector;
    using T = lane_t<V>;
    constexpr int half = R / 2;
    C s[half], d[half];
    const C x0 = get(0);
    C sum = x0;
    unrolled<half>([&](auto r) {
      const C a = get(r + 1), b = get(R - 1 - r);
      s[r] = a + b;
      d[r] = a - b;
      sum = sum + s[r];
    });
    put(0, sum);
    unrolled<half>([&](auto u) {
      C p = x0, q;
      unrolled<half>([&](auto r) {
        constexpr int k = (r + 1) * (u + 1) % R;
        p = p + s[r] * splat<V>(cos_of<T, k, R>);
        const C t = d[r] * splat<V>(sin_of<T, k, R>);
        q = r == 0 ? t : q + t;
      });
      put(u + 1, minus_i(p, q));
      put(R - 1 - u, plus_i(p, q));
    });
  }
};

template <class C, int R, class Get, class Put>
QOR_INLINE void transform(Get get, Put put) {
  Transform<C, R>::run(get, put);
}

}  // namespace qor::fft
