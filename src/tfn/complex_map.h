// The loop around a kernel of complex numbers, which lie in arrays as a real and an imaginary part each: r[i] = K(a[i])
// or K(a[i], b[i]), bad elements reported in index order.
//
// Numbers are taken apart, a block at a time, into an array of real and one of imaginary parts, both of doubles for
// arrays of singles too. A kernel turns such blocks into one another, in as many short passes as suit the processor's few
// registers, and the results are put together again. So a kernel is written once, for doubles; singles need a shorter
// formula and no care for what overflows.
//
// A kernel K provides
//   Number                     what blocks hold: double, or float for one of singles that works in single precision
//   inputs                     arguments, 1 or 2
//   run(z, r, usual, n)        r = K(z) for the first n numbers, whole vectors, and the lanes for which that holds
//   element(re, im, y) -> status   y[0] + i y[1] for any single argument, in doubles, and what to report
//   filler                     the parts of an argument that is always usual, for the numbers past the end
// A kernel of two arguments takes the second one after the first: run(z, w, r, usual, n), element(re, im, w_re, w_im, y).
// Results of singles that are no singles (too large, NaN) count as unusual by themselves.
#pragma once

#include <cmath>
#include <limits>

#include "numeric/mxcsr.h"
#include "simd/vec.h"
#include "tfn/accuracy.h"
#include "tfn/report.h"

namespace qor::tfn::complex {

// Numbers a block: the arrays of several passes stay within the first-level cache.
inline constexpr int block = 64;

template <class T>
struct alignas(16) Array {
  T at[block];
  QOR_INLINE simd::Vec<T> operator()(int i) const { return simd::load_aligned<simd::Vec<T>>(at + i); }
  QOR_INLINE void set(int i, simd::Vec<T> v) { *reinterpret_cast<simd::Vec<T>*>(at + i) = v; }
};
template <class T>
struct Numbers {
  Array<T> re, im;
};

// Which lanes of each vector are usual.
template <class T>
class Usual {
 public:
  using Mask = simd::Bits<simd::Vec<T>>;
  QOR_INLINE void set(int i, Mask m) { lanes_[i / width] = static_cast<unsigned char>(simd::lanes_set(m)); }
  QOR_INLINE void keep(int i, Mask m) { lanes_[i / width] &= static_cast<unsigned char>(simd::lanes_set(m)); }
  void keep_all(const Usual& other, int n) {
    for (int k = 0; k < n / width; ++k) lanes_[k] &= other.lanes_[k];
  }
  QOR_INLINE bool all(int i) const { return lanes_[i / width] == simd::all_lanes<simd::Vec<T>>; }
  void add(int i) { lanes_[i / width] |= static_cast<unsigned char>(1 << i % width); }
  bool operator()(int i) const { return (lanes_[i / width] >> i % width & 1) != 0; }

 private:
  static constexpr int width = simd::lanes<simd::Vec<T>>;
  unsigned char lanes_[block / width];
};

// A complex number as arrays hold it and as the scalar of Powx comes, two reals on the stack.
template <class T>
struct Scalar {
  T re, im;
};

// Where the second arguments come from.
template <class T>
struct NoSecond {};
template <class T>
struct SecondArray {
  const T* b;
};
template <class T>
struct SecondScalar {
  Scalar<T> b;
};

template <class K, class T, class Second>
struct Map {
  using Number = typename K::Number;
  using VT = simd::Vec<T>;
  static constexpr bool converts = sizeof(Number) != sizeof(T);
  static constexpr int step = simd::lanes<VT>;  // numbers that two vectors of the caller's hold

  const char* name;
  const T* a;
  T* r;
  Second second;

  // `step` numbers from p.
  QOR_INLINE static void take_apart(const T* p, Numbers<Number>& z, int i) {
    using namespace simd;
    const VT first = load<VT>(p), last = load<VT>(p + step);
    const VT re = evens(first, last), im = odds(first, last);
    if constexpr (converts) {
      z.re.set(i, widen_low(re));
      z.re.set(i + 2, widen_high(re));
      z.im.set(i, widen_low(im));
      z.im.set(i + 2, widen_high(im));
    } else {
      z.re.set(i, re);
      z.im.set(i, im);
    }
  }
  // Returns the lanes whose parts are finite.
  QOR_INLINE static simd::Bits<VT> put_together(const Numbers<Number>& y, int i, T* p) {
    using namespace simd;
    VT re, im;
    if constexpr (converts) {
      re = narrow(y.re(i), y.re(i + 2));
      im = narrow(y.im(i), y.im(i + 2));
    } else {
      re = y.re(i);
      im = y.im(i);
    }
    store(p, zip_low(re, im));
    store(p + step, zip_high(re, im));
    const VT infinity = splat<VT>(std::numeric_limits<T>::infinity());
    return lt(abs(re), infinity) & lt(abs(im), infinity);
  }

  [[gnu::noinline]] static void take(const T* p, int count, Numbers<Number>& z) {
    int i = 0;
    for (; i <= count - step; i += step) take_apart(p + 2 * i, z, i);
    if (i == count) return;
    T rest[2 * step];
    for (int k = 0; k < 2 * step; ++k) rest[k] = k < 2 * (count - i) ? p[2 * i + k] : T(K::filler);
    take_apart(rest, z, i);
  }

  void run(int n) const {
    if (n <= 0) return;
    numeric::MxcsrGuard guard;
    Numbers<Number> w;
    if constexpr (requires { second.b.re; }) {
      for (int i = 0; i < block; i += step) {
        T same[2 * step];
        for (int k = 0; k < step; ++k) same[2 * k] = second.b.re, same[2 * k + 1] = second.b.im;
        take_apart(same, w, i);
      }
    }
    for (int i = 0; i < n; i += block) some(i, n - i < block ? n - i : block, w, guard);
  }

  [[gnu::noinline]] void some(int first, int count, Numbers<Number>& w, numeric::MxcsrGuard& guard) const {
    Numbers<Number> z, y;
    Usual<Number> usual;
    take(a + 2 * first, count, z);
    const int padded = (count + step - 1) / step * step;
    if constexpr (K::inputs == 2) {
      if constexpr (!requires { second.b.re; }) take(second.b + 2 * first, count, w);
      K::run(z, w, y, usual, padded);
    } else {
      K::run(z, y, usual, padded);
    }
    T* const out = r + 2 * first;
    simd::Bits<VT> finite = ~simd::Bits<VT>{};
    int i = 0;
    for (; i <= count - step; i += step) finite &= put_together(y, i, out + 2 * i);
    if (i < count) {
      T rest[2 * step];
      finite &= put_together(y, i, rest);
      for (int k = 0; k < 2 * (count - i); ++k) out[2 * i + k] = rest[k];
    }
    bool good = simd::lanes_set(finite) == simd::all_lanes<VT>;
    for (i = 0; i < padded; i += simd::lanes<simd::Vec<Number>>) good = good && usual.all(i);
    if (!good) [[unlikely]]
      repair(z, w, usual, first, count, guard);
  }

  // The numbers that aren't usual, one by one.
  QOR_COLD void repair(const Numbers<Number>& z, const Numbers<Number>& w, const Usual<Number>& usual, int first,
                       int count, numeric::MxcsrGuard& guard) const {
    for (int i = 0; i < count; ++i) {
      T* const out = r + 2 * (first + i);
      if (usual(i) && std::isfinite(out[0]) && std::isfinite(out[1])) continue;
      double part[2];
      int status;
      if constexpr (K::inputs == 2) {
        status = K::element(z.re.at[i], z.im.at[i], w.re.at[i], w.im.at[i], part);
      } else {
        status = K::element(z.re.at[i], z.im.at[i], part);
      }
      for (int k = 0; k < 2; ++k) {
        out[k] = static_cast<T>(part[k]);
        if (status == TFN_STATUS_OK && std::isinf(out[k]) && std::isfinite(part[k])) status = TFN_STATUS_OVERFLOW;
      }
      if (status == TFN_STATUS_OK) continue;
      guard.outside([&] { report_complex(status, first + i, a, r, name); });
    }
  }
};

// What a kernel aims at: as good as the result's type allows, some ulp less, or what a single needs.
enum class Grade { high, low, single };
template <class T, Accuracy A>
inline constexpr Grade grade = sizeof(T) == 4        ? Grade::single
                               : A == Accuracy::high ? Grade::high
                                                     : Grade::low;

// Largest errors, unless a kernel says otherwise: of the result in units in the last place of its size, and of each part
// in its own.
template <class T, Accuracy A>
struct Bounds {
  static constexpr double size_bound = A == Accuracy::high ? 1.0 : 4.0;
  static constexpr double part_bound = A == Accuracy::high ? 4.0 : std::numeric_limits<double>::infinity();
};

// The numbers of a kernel in single precision that aren't usual, once more by Wide, which works in double precision.
template <class Wide>
QOR_COLD void again_in_doubles(const Numbers<float>& z, Numbers<float>& r, Usual<float>& usual, int n) {
  Numbers<double> x, y;
  Usual<double> good;
  for (int i = 0; i < n; ++i) {
    x.re.at[i] = z.re.at[i];
    x.im.at[i] = z.im.at[i];
  }
  Wide::run(x, y, good, n);
  for (int i = 0; i < n; ++i) {
    if (usual(i) || !good(i)) continue;
    r.re.at[i] = static_cast<float>(y.re.at[i]);
    r.im.at[i] = static_cast<float>(y.im.at[i]);
    usual.add(i);
  }
}
template <class Wide>
QOR_INLINE void rest_in_doubles(const Numbers<float>& z, Numbers<float>& r, Usual<float>& usual, int n) {
  bool all = true;
  for (int i = 0; i < n; i += simd::lanes<simd::VecF>) all = all && usual.all(i);
  if (!all) [[unlikely]]
    again_in_doubles<Wide>(z, r, usual, n);
}

template <class K, class T>
QOR_INLINE void map(const char* name, int n, const T* a, T* r) {
  Map<K, T, NoSecond<T>>{name, a, r, {}}.run(n);
}
template <class K, class T>
QOR_INLINE void map2(const char* name, int n, const T* a, const T* b, T* r) {
  Map<K, T, SecondArray<T>>{name, a, r, {b}}.run(n);
}
template <class K, class T>
QOR_INLINE void mapx(const char* name, int n, const T* a, Scalar<T> b, T* r) {
  Map<K, T, SecondScalar<T>>{name, a, r, {b}}.run(n);
}

}  // namespace qor::tfn::complex
