// The loop around a kernel: r[i] = K(a[i]) or K(a[i], b[i]) over arrays, bad elements reported in index order.
//
// A kernel K of one argument provides
//   results                    1 or 2 results an element
//   fast(x, at, y, usual)      y[0 .. results) for a vector x, right in the lanes it marks in `usual`; `at` is where x
//                              was loaded from, for those who want its bits as integers too
//   begin(x) -> state, finish(state, y, usual)   optional: fast in two stages. The first stage of the next vector runs
//                              before the second of this one, which then finds its operands ready: the processor holds
//                              fewer waiting instructions and overlaps more vectors.
//   retry(x, y, usual)         optional: a vector of which some lanes are not usual, once more; may make lanes usual
//   element(x, y) -> status    y[0 .. results) for any single x, and what to report
//   filler                     an argument that is always usual, for the lanes past the end
// A kernel of two takes the second one after the first: fast(x, b, at, y, usual), begin(x, b), retry(x, b, y, usual),
// element(x, b, y); `filler` serves for both.
#pragma once

#include "numeric/mxcsr.h"
#include "simd/vec.h"
#include "tfn/report.h"

namespace qor::tfn {

// Where the second arguments come from.
template <class T>
struct NoSecond {
  static constexpr int inputs = 1;
};
template <class T>
struct SecondArray {
  static constexpr int inputs = 2;
  const T* b;
  QOR_INLINE simd::Vec<T> vector(int i) const { return simd::load<simd::Vec<T>>(b + i); }
  T at(int i) const { return b[i]; }
};
template <class T>
struct SecondScalar {
  static constexpr int inputs = 2;
  T b;
  QOR_INLINE simd::Vec<T> vector(int) const { return simd::splat<simd::Vec<T>>(b); }
  T at(int) const { return b; }
};

template <class K, class T, class Second>
struct Map {
  using V = simd::Vec<T>;
  using Mask = simd::Bits<V>;
  static constexpr int width = simd::lanes<V>;
  static constexpr bool binary = Second::inputs == 2;
  static constexpr bool two_stages = requires(V x) { K::begin(x); }
  || requires(V x) { K::begin(x, x); };

  // A vector of each argument; the second is unused for one.
  struct Arguments {
    V x, b;
  };

  const char* name;
  const T* a;
  T* r[2];  // equal for one result: a report names both
  Second second;

  QOR_INLINE Arguments arguments(int i) const {
    if constexpr (binary) {
      return {simd::load<V>(a + i), second.vector(i)};
    } else {
      return {simd::load<V>(a + i), V{}};
    }
  }
  QOR_INLINE static void fast(const Arguments& v, const T* at, V* y, Mask& usual) {
    if constexpr (binary) {
      K::fast(v.x, v.b, at, y, usual);
    } else {
      K::fast(v.x, at, y, usual);
    }
  }
  // The first stage of the vector at i, if K has two.
  QOR_INLINE auto begin(const Arguments& v) const {
    if constexpr (!two_stages) {
      return 0;
    } else if constexpr (binary) {
      return K::begin(v.x, v.b);
    } else {
      return K::begin(v.x);
    }
  }

  // The elements i + lane of the lanes set; v is what the arrays held there: in place they have been overwritten.
  void repair(unsigned set, const Arguments& v, int i, numeric::MxcsrGuard& guard) const {
    T x[width];
    [[maybe_unused]] T b[width];
    simd::store(x, v.x);
    if constexpr (binary) simd::store(b, v.b);
    for (int lane = 0; set != 0; ++lane, set >>= 1) {
      if ((set & 1) == 0) continue;
      const int at = i + lane;
      T y[K::results];
      int status;
      if constexpr (binary) {
        status = K::element(x[lane], b[lane], y);
      } else {
        status = K::element(x[lane], y);
      }
      for (int k = 0; k < K::results; ++k) r[k][at] = y[k];
      if (status == TFN_STATUS_OK) continue;
      const T* other = a;
      if constexpr (requires { second.b[0]; }) other = second.b;
      guard.outside([&] { report(status, at, a, other, r[0], r[1], name); });
    }
  }

  // A vector with lanes that are not usual: `count` of its lanes are elements, from i on.
  // The vectors come one by one and by value, so that those of the loop stay in registers.
  QOR_COLD void rare(V x, V b, V y0, V y1, Mask usual, int i, int count, numeric::MxcsrGuard& guard) const {
    const Arguments v = {x, b};
    V y[2] = {y0, y1};
    if constexpr (
        requires { K::retry(v.x, y, usual); } || requires { K::retry(v.x, v.b, y, usual); }) {
      if constexpr (binary) {
        K::retry(v.x, v.b, y, usual);
      } else {
        K::retry(v.x, y, usual);
      }
      for (int k = 0; k < K::results; ++k) {
        for (int l = 0; l < count; ++l) r[k][i + l] = y[k][l];
      }
    }
    const unsigned set = ~simd::lanes_set(usual) & ((1u << count) - 1);
    if (set != 0) repair(set, v, i, guard);
  }

  void run(int n) const {
    if (n <= 0) return;
    numeric::MxcsrGuard guard;
    int i = 0;
    [[maybe_unused]] auto begun = begin(n >= width ? arguments(0) : Arguments{});
    for (; i <= n - width; i += width) {
      const Arguments v = arguments(i);
      V y[K::results];
      Mask usual;
      if constexpr (two_stages) {
        const auto now = begun;
        begun = begin(arguments(i + 2 * width <= n ? i + width : i));
        K::finish(now, y, usual);
      } else {
        fast(v, a + i, y, usual);
      }
      for (int k = 0; k < K::results; ++k) simd::store(r[k] + i, y[k]);
      if (simd::lanes_set(usual) != simd::all_lanes<V>) [[unlikely]]
        rare(v.x, v.b, y[0], y[K::results - 1], usual, i, width, guard);
    }
    if (i < n) tail(i, n - i, guard);
  }

  void one(int i) const {
    numeric::MxcsrGuard guard;
    tail(i, 1, guard);
  }

  // The last few elements go through the same code in a block of their own.
  [[gnu::noinline]] void tail(int i, int count, numeric::MxcsrGuard& guard) const {
    T block[width], out[2][width];
    [[maybe_unused]] T other[width];
    for (int l = 0; l < width; ++l) block[l] = l < count ? a[i + l] : T(K::filler);
    Arguments v = {simd::load<V>(block), V{}};
    if constexpr (binary) {
      for (int l = 0; l < width; ++l) other[l] = l < count ? second.at(i + l) : T(K::filler);
      v.b = simd::load<V>(other);
    }
    V y[K::results];
    Mask usual;
    fast(v, block, y, usual);
    for (int k = 0; k < K::results; ++k) {
      simd::store(out[k], y[k]);
      for (int l = 0; l < count; ++l) r[k][i + l] = out[k][l];
    }
    if (simd::lanes_set(usual) != simd::all_lanes<V>) rare(v.x, v.b, y[0], y[K::results - 1], usual, i, count, guard);
  }
};

template <class K, class T>
QOR_INLINE void map(const char* name, int n, const T* a, T* r) {
  static_assert(K::results == 1);
  Map<K, T, NoSecond<T>>{name, a, {r, r}, {}}.run(n);
}
// Element i alone.
template <class K, class T>
QOR_INLINE void map_one(const char* name, int i, const T* a, T* r) {
  Map<K, T, NoSecond<T>>{name, a, {r, r}, {}}.one(i);
}
template <class K, class T>
QOR_INLINE void map(const char* name, int n, const T* a, T* r1, T* r2) {
  static_assert(K::results == 2);
  Map<K, T, NoSecond<T>>{name, a, {r1, r2}, {}}.run(n);
}
// Two arrays of arguments; one array and a scalar, of which the reports name the array alone.
template <class K, class T>
QOR_INLINE void map2(const char* name, int n, const T* a, const T* b, T* r) {
  static_assert(K::results == 1);
  Map<K, T, SecondArray<T>>{name, a, {r, r}, {b}}.run(n);
}
template <class K, class T>
QOR_INLINE void mapx(const char* name, int n, const T* a, T b, T* r) {
  static_assert(K::results == 1);
  Map<K, T, SecondScalar<T>>{name, a, {r, r}, {b}}.run(n);
}

}  // namespace qor::tfn
