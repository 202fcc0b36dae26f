// The loop around a kernel: r[i] = K(a[i]) over an array, bad elements reported in index order.
//
// A kernel K provides
//   results                    1 or 2 results an element
//   fast(x, at, y, usual)      y[0 .. results) for a vector x, right in the lanes it marks in `usual`; `at` is where x
//                              was loaded from, for those who want its bits as integers too
//   begin(x) -> state, finish(state, y, usual)   optional: fast in two stages. The first stage of the next vector runs
//                              before the second of this one, which then finds its operands ready: the processor holds
//                              fewer waiting instructions and overlaps more vectors.
//   retry(x, y, usual)         optional: a vector of which some lanes are not usual, once more; may make lanes usual
//   element(x, y) -> status    y[0 .. results) for any single x, and what to report
//   filler                     an argument that is always usual, for the lanes past the end
#pragma once

#include "numeric/mxcsr.h"
#include "simd/vec.h"
#include "tfn/report.h"

namespace qor::tfn {

template <class K, class T>
struct Map {
  using V = simd::Vec<T>;
  static constexpr int width = simd::lanes<V>;
  static constexpr bool two_stages = requires(V x) { K::begin(x); };

  const char* name;
  const T* a;
  T* r[2];  // equal for one result: a report names both

  // The elements i + lane of the lanes set. x is what a held there: in place, a has been overwritten by now.
  void repair(unsigned set, const T* x, int i, numeric::MxcsrGuard& guard) const {
    for (int lane = 0; set != 0; ++lane, set >>= 1) {
      if ((set & 1) == 0) continue;
      const int at = i + lane;
      T y[K::results];
      const int status = K::element(x[lane], y);
      for (int k = 0; k < K::results; ++k) r[k][at] = y[k];
      if (status != TFN_STATUS_OK) guard.outside([&] { report(status, at, a, a, r[0], r[1], name); });
    }
  }

  // A vector with lanes that are not usual: `count` of its lanes are elements, from i on.
  QOR_COLD void rare(const V& x, V* y, simd::Bits<V> usual, int i, int count, numeric::MxcsrGuard& guard) const {
    if constexpr (requires { K::retry(x, y, usual); }) {
      K::retry(x, y, usual);
      for (int k = 0; k < K::results; ++k) {
        for (int l = 0; l < count; ++l) r[k][i + l] = y[k][l];
      }
    }
    const unsigned set = ~simd::lanes_set(usual) & ((1u << count) - 1);
    if (set == 0) return;
    T copy[width];
    simd::store(copy, x);
    repair(set, copy, i, guard);
  }

  // The first stage of the vector at p, if K has two and there is a vector.
  QOR_INLINE static auto begin(const T* p) {
    if constexpr (two_stages) {
      return K::begin(p != nullptr ? simd::load<V>(p) : V{});
    } else {
      return 0;
    }
  }

  void run(int n) const {
    if (n <= 0) return;
    numeric::MxcsrGuard guard;
    int i = 0;
    [[maybe_unused]] auto begun = begin(n >= width ? a : nullptr);
    for (; i <= n - width; i += width) {
      const V x = simd::load<V>(a + i);
      V y[K::results];
      simd::Bits<V> usual;
      if constexpr (two_stages) {
        const auto now = begun;
        begun = begin(i + 2 * width <= n ? a + i + width : a + i);
        K::finish(now, y, usual);
      } else {
        K::fast(x, a + i, y, usual);
      }
      for (int k = 0; k < K::results; ++k) simd::store(r[k] + i, y[k]);
      if (simd::lanes_set(usual) != simd::all_lanes<V>) [[unlikely]]
        rare(x, y, usual, i, width, guard);
    }
    if (i < n) tail(i, n - i, guard);
  }

  // The last few elements go through the same code in a block of their own.
  [[gnu::noinline]] void tail(int i, int count, numeric::MxcsrGuard& guard) const {
    T block[width], out[2][width];
    for (int l = 0; l < width; ++l) block[l] = l < count ? a[i + l] : T(K::filler);
    V y[K::results];
    simd::Bits<V> usual;
    K::fast(simd::load<V>(block), block, y, usual);
    for (int k = 0; k < K::results; ++k) {
      simd::store(out[k], y[k]);
      for (int l = 0; l < count; ++l) r[k][i + l] = out[k][l];
    }
    if (simd::lanes_set(usual) != simd::all_lanes<V>) rare(simd::load<V>(block), y, usual, i, count, guard);
  }
};

template <class K, class T>
QOR_INLINE void map(const char* name, int n, const T* a, T* r) {
  static_assert(K::results == 1);
  Map<K, T>{name, a, {r, r}}.run(n);
}
template <class K, class T>
QOR_INLINE void map(const char* name, int n, const T* a, T* r1, T* r2) {
  static_assert(K::results == 2);
  Map<K, T>{name, a, {r1, r2}}.run(n);
}

}  // namespace qor::tfn
