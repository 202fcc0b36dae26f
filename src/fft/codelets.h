// Kernels of transforms of 2^o points on packed values, real and imaginary parts in turns: one register holds one
// complex value of double or two of single precision. A butterfly of A * B points is done in two steps, B butterflies of
// A points and A of B points, with the values between them on the stack. What decides is the number of instructions:
// four values of a step fit the eight registers; constants and twiddle factors are operands in memory; addresses are
// sums of the few integer registers that there are.
#pragma once

#include "fft/passes.h"

namespace qor::fft {

// The sign bits that multiply by -i and by i after an exchange of parts, and sqrt(1/2); then the factors between the two
// steps, as products take them, for frequency u of the first step and column b of the second. With Spread the values of
// a register are for u, u + 1, ..., otherwise they have the same u.
template <class V, int A, int B, bool Spread>
struct alignas(64) Constants {
  using T = lane_t<V>;
  static constexpr int L = lanes<V>, values = Spread ? L / 2 : 1;
  T sign[2][L] = {}, diagonal[L] = {};
  T factor[A / values][B][2][L] = {};

  constexpr Constants() {
    for (int i = 0; i < L; ++i) {
      sign[0][i] = i % 2 == 0 ? T(0) : T(-0.0);
      sign[1][i] = i % 2 == 0 ? T(-0.0) : T(0);
      diagonal[i] = cos_of<T, 1, 8>;
      for (int u = 0; u < A; u += values) {
        for (int b = 0; b < B; ++b) {
          const Angle a = angle((Spread ? u + i / 2 : u) * b, A * B);
          factor[u / values][b][0][i] = T(a.cos);
          factor[u / values][b][1][i] = T(i % 2 == 0 ? a.sin : -a.sin);
        }
      }
    }
  }
};
template <class V, int A, int B, bool Spread>
inline constexpr Constants<V, A, B, Spread> constants{};

// Arithmetic on packed values with constants in memory.
template <class V, bool Inverse>
struct Kit {
  using T = lane_t<V>;
  static constexpr int L = lanes<V>, values = L / 2;
  const T* p;

  template <int A, int B, bool Spread>
  QOR_INLINE static Kit of() {
    return {simd::opaque(constants<V, A, B, Spread>.sign[0])};
  }
  QOR_INLINE static V multiply(V x, V re, V im) {
    const V a = x * re, b = swapped(x) * im;
    return Inverse ? a - b : a + b;
  }
  QOR_INLINE static V times(V x, const T* w) {
    return multiply(x, simd::load_aligned<V>(w), simd::load_aligned<V>(w + L));
  }
  // -i x, exp(-i pi/4) x and exp(-3 i pi/4) x (conjugates in the inverse).
  QOR_INLINE V quarter(V x) const {
    return simd::flip_sign(swapped(x), simd::bits(simd::load_aligned<V>(p + Inverse * L)));
  }
  QOR_INLINE V eighth(V x) const { return (x + quarter(x)) * simd::load_aligned<V>(p + 2 * L); }
  QOR_INLINE V three_eighths(V x) const { return (quarter(x) - x) * simd::load_aligned<V>(p + 2 * L); }
  // The value of column b, u the first of the frequencies in it.
  template <int A, int B, bool Spread>
  QOR_INLINE V turned(int u, int b, V x) const {
    if (b == 0) return x;
    if (!Spread || L == 2) {
      if (u == 0) return x;
      if (4 * u * b == A * B) return quarter(x);
    }
    return times(x, p + 3 * L + (u / (Spread ? values : 1) * B + b) * 2 * L);
  }
};

// Butterflies of R points: get(i) loads point i, put(u, x) stores frequency u.
template <class K, int R>
struct Small;
template <class K>
struct Small<K, 2> {
  template <class Get, class Put>
  QOR_INLINE static void run(K, Get get, Put put) {
    const auto a = get(0), b = get(1);
    put(0, a + b);
    put(1, a - b);
  }
};
template <class K>
struct Small<K, 4> {
  template <class Get, class Put>
  QOR_INLINE static void run(K kit, Get get, Put put) {
    const auto x1 = get(1), x3 = get(3), c = x1 + x3, d = kit.quarter(x1 - x3);
    const auto x0 = get(0), x2 = get(2), a = x0 + x2, b = x0 - x2;
    put(0, a + c);
    put(2, a - c);
    put(1, b + d);
    put(3, b - d);
  }
};
template <class K>
struct Small<K, 8> {
  template <class Get, class Put>
  QOR_INLINE static void run(K kit, Get get, Put put) {
    decltype(get(0)) s[4], d[4];
    unrolled<4>([&](auto i) {
      constexpr int b = i < 2 ? 2 * i + 1 : 6 - 2 * i;
      const auto x = get(b), y = get(b + 4);
      s[b] = x + y;
      d[b] = x - y;
    });
    Small<K, 4>::run(
        kit, [&](int b) { return s[b]; }, [&](int v, auto x) { put(2 * v, x); });
    d[1] = kit.eighth(d[1]);
    d[3] = kit.three_eighths(d[3]);
    d[2] = kit.quarter(d[2]);
    Small<K, 4>::run(
        kit, [&](int b) { return d[b]; }, [&](int v, auto x) { put(2 * v + 1, x); });
  }
};

// The first values of x and y, and the last ones.
QOR_INLINE void exchange(simd::VecD&, simd::VecD&) {}
QOR_INLINE void exchange(simd::VecF& x, simd::VecF& y) {
  const auto a = simd::as<simd::VecD>(x), b = simd::as<simd::VecD>(y);
  x = simd::as<simd::VecF>(simd::zip_low(a, b));
  y = simd::as<simd::VecF>(simd::zip_high(a, b));
}
// A butterfly of A points; of the values that it leaves, those of frequency u + v become place u of value v's row.
template <int A, class K, class Get, class Put>
QOR_INLINE void transposed(K kit, Get get, Put put) {
  decltype(get(0)) x[A];
  Small<K, A>::run(kit, get, [&](int u, auto y) { x[u] = y; });
  unrolled<A / K::values>([&](auto g) {
    constexpr int u = g * K::values;
    if constexpr (K::values == 2) exchange(x[u], x[u + 1]);
    unrolled<K::values>([&](auto h) { put(u, h, x[u + h]); });
  });
}

// Two steps with columns of their own in the values of a register. in(b) gives the load of the first step's points a,
// out(u) the store of the second step's frequencies v.
template <int A, int B, class K, class In, class Out>
QOR_INLINE void two_steps(K kit, In in, Out out) {
  decltype(in(0)(0)) t[A][B];
  unrolled<B>([&](auto b) { Small<K, A>::run(kit, in(b), [&](int u, auto x) { t[u][b] = x; }); });
  unrolled<A>([&](auto u) {
    Small<K, B>::run(
        kit, [&](int b) { return kit.template turned<A, B, false>(u, b, t[u][b]); }, out(u));
  });
}
// Two steps of `values` rows that become one each: out(h, u) is for the frequencies u, u + 1 .. of row h.
template <int A, int B, class K, class In, class Out>
QOR_INLINE void two_steps_of_rows(K kit, In in, Out out) {
  decltype(in(0)(0)) t[K::values][A][B];
  unrolled<B>([&](auto b) { transposed<A>(kit, in(b), [&](int u, int h, auto x) { t[h][u][b] = x; }); });
  unrolled<K::values>([&](auto h) {
    unrolled<A / K::values>([&](auto g) {
      constexpr int u = g * K::values;
      Small<K, B>::run(
          kit, [&](int b) { return kit.template turned<A, B, true>(u, b, t[h][u][b]); }, out(h, u));
    });
  });
}
// Two steps of a single row: the values of a register are points b, b + 1 .. and then frequencies u, u + 1 ...
template <int A, int B, class K, class In, class Out>
QOR_INLINE void two_steps_of_one(K kit, In in, Out out) {
  constexpr int values = K::values;
  decltype(in(0)(0)) t[A][B];
  unrolled<B / values>(
      [&](auto b) { transposed<A>(kit, in(b * values), [&](int u, int h, auto x) { t[u][b * values + h] = x; }); });
  unrolled<A / values>([&](auto g) {
    constexpr int u = g * values;
    Small<K, B>::run(
        kit, [&](int b) { return kit.template turned<A, B, true>(u, b, t[u][b]); }, out(u));
  });
}

// ---- kernels ---------------------------------------------------------------------------------------------------------

// What a pass is told.
template <class T>
struct Step {
  const T* twiddles;
  int m;       // rows of m frequencies become rows of R m
  int in_gap;  // between the rows that are combined, beyond rows.count * m
  Rows rows;
};

template <bool Scaled, class V>
QOR_INLINE V scaled(V x, V scale) {
  return Scaled ? x * scale : x;
}

// All of a transform of A * B points.
template <int A, int B, class V, bool Inverse, bool Scaled>
void whole_transform(const lane_t<V>* src, lane_t<V>* dst, const lane_t<V>& scale) {
  const V factor = simd::broadcast<V>(&scale);
  const auto in = [&](int b) {
    return [=](int a) { return scaled<Scaled>(simd::load<V>(src + 2 * (B * a + b)), factor); };
  };
  const auto out = [&](int u) { return [=](int v, V x) { simd::store<V>(dst + 2 * (u + A * v), x); }; };
  two_steps_of_one<A, B>(Kit<V, Inverse>::template of<A, B, true>(), in, out);
}

// The first pass, from the caller's array: rows of A * B frequencies.
template <int A, int B, class V, bool Inverse, bool Scaled>
void first_of_two_steps(const lane_t<V>* src, lane_t<V>* out, const lane_t<V>& scale, const Step<lane_t<V>>& step) {
  using T = lane_t<V>;
  using K = Kit<V, Inverse>;
  constexpr int R = A * B, pair = 2 * static_cast<int>(sizeof(T));
  const K kit = K::template of<A, B, true>();
  const V factor = simd::broadcast<V>(&scale);
  const Rows rows = step.rows;
  int skipped = 0;
  for (int first = 0; first < rows.count; first += rows.block, skipped += rows.gap) {
    for (int j = first; j < first + rows.block; j += K::values) {
      Line<const T> line(src + 2 * j, rows.count * B * pair);
      const auto in = [&](int b) {
        if (b > 0) line.move(rows.count * pair);
        return [=](int a) { return scaled<Scaled>(simd::load<V>(line.at(a)), factor); };
      };
      T* const to = out + 2 * (j * R + skipped);
      const auto store = [&](int h, int u) {
        return [=](int v, V x) { simd::store<V>(to + 2 * (h * R + u + A * v), x); };
      };
      two_steps_of_rows<A, B>(kit, in, store);
    }
  }
}

// Later passes of radix A * B.
template <int A, int B, class V, bool Inverse>
void later_pass(const lane_t<V>* from, lane_t<V>* to, const Step<lane_t<V>>& step) {
  using T = lane_t<V>;
  using K = Kit<V, Inverse>;
  constexpr int R = A * B, L = lanes<V>, pair = 2 * static_cast<int>(sizeof(T));
  const K kit = K::template of<A, B, false>();
  const Rows rows = step.rows;
  const int m = step.m, in_apart = (rows.count * m + step.in_gap) * pair, out_apart = m * pair;
  int skipped = 0;
  for (int first = 0; first < rows.count; first += rows.block, skipped += rows.gap) {
    for (int j = first; j < first + rows.block; ++j) {
      const T* in = from + 2 * j * m;
      T* out = to + 2 * (j * R * m + skipped);
      const T* w = step.twiddles;
      for (const T* const end = in + 2 * m; in != end; in += L, out += L, w += 2 * L * (R - 1)) {
        const auto product = [=](V x, int i) { return i == 0 ? x : K::times(x, w + (i - 1) * 2 * L); };
        Line<const T> line(in, B * in_apart);
        Line<T> lines(out, A * out_apart);
        const auto load = [&](int b) {
          if (b > 0) line.move(in_apart);
          return [=](int a) { return product(simd::load_aligned<V>(line.at(a)), b * A + a); };
        };
        const auto store = [&](int u) {
          if (u > 0) lines.move(out_apart);
          return [=](int v, V x) { simd::store<V>(lines.at(v), x); };
        };
        two_steps<A, B>(kit, load, store);
      }
    }
  }
}

}  // namespace qor::fft
