// Level-1 kernels on vectors of reals (parts = 1) or of interleaved complex numbers (parts = 2), with any increments.
// Unit increments run a register at a time. Increments count elements; a negative one starts at the vector's far end,
// as in the reference routines (C. L. Lawson et al., Basic linear algebra subprograms for Fortran usage, ACM TOMS 5,
// 1979).
#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "base/target.h"
#include "simd/vec.h"

namespace qor::blas1 {

// One element.
template <class T, int parts>
struct Element {
  T part[parts];
};

// Where a vector of n elements starts, and the step in reals.
template <class T, int parts>
struct Walk {
  using E = Element<std::remove_const_t<T>, parts>;
  T* p;
  std::ptrdiff_t step;
  Walk(int n, T* x, int inc)
      : p(inc < 0 ? x + std::ptrdiff_t{1 - n} * inc * parts : x), step(std::ptrdiff_t{inc} * parts) {}
  E get() const {
    E e;
    std::memcpy(&e, p, sizeof e);
    return e;
  }
  void put(E e) const { std::memcpy(p, &e, sizeof e); }
  void next() { p += step; }
};

// alpha times an element, or a register of elements. A complex product is (re, im) re(alpha) + (im, re) (-im(alpha),
// im(alpha)): the same rounding in both forms.
template <class T, int parts>
class Scale {
 public:
  using V = simd::Vec<T>;
  explicit Scale(const T* alpha) {
    for (int k = 0; k < parts; ++k) alpha_[k] = alpha[k];
    re_ = simd::splat<V>(alpha_[0]);
    if constexpr (parts == 2) {
      for (int l = 0; l < simd::lanes<V>; ++l) im_[l] = l % 2 == 0 ? -alpha_[1] : alpha_[1];
    }
  }
  QOR_INLINE V operator()(V x) const {
    if constexpr (parts == 1) {
      return x * re_;
    } else {
      return x * re_ + simd::swap_pairs(x) * im_;
    }
  }
  QOR_INLINE Element<T, parts> operator()(Element<T, parts> x) const {
    if constexpr (parts == 1) {
      return {{x.part[0] * alpha_[0]}};
    } else {
      return {{x.part[0] * alpha_[0] - x.part[1] * alpha_[1], x.part[1] * alpha_[0] + x.part[0] * alpha_[1]}};
    }
  }
  bool zero() const { return alpha_[0] == 0 && alpha_[parts - 1] == 0; }

 private:
  T alpha_[parts];
  V re_, im_;
};

// f(at) for each register's first index in a vector of so many reals; returns how many reals that was.
template <class T, class F>
QOR_INLINE std::ptrdiff_t over_registers(std::ptrdiff_t reals, F f) {
  constexpr std::ptrdiff_t width = simd::lanes<simd::Vec<T>>;
  std::ptrdiff_t at = 0;
#pragma GCC unroll 4
  for (; at <= reals - width; at += width) f(at);
  return at;
}

template <class T, int parts>
void copy(int n, const T* x, int incx, T* y, int incy) {
  if (n <= 0) return;
  if (incx == 1 && incy == 1) {
    std::memcpy(y, x, sizeof(Element<T, parts>) * static_cast<std::size_t>(n));
    return;
  }
  Walk<const T, parts> from(n, x, incx);
  Walk<T, parts> to(n, y, incy);
  for (int i = 0; i < n; ++i, from.next(), to.next()) std::memcpy(to.p, from.p, sizeof(Element<T, parts>));
}

template <class T, int parts>
void swap(int n, T* x, int incx, T* y, int incy) {
  using V = simd::Vec<T>;
  if (n <= 0) return;
  std::ptrdiff_t done = 0;
  if (incx == 1 && incy == 1) {
    done = over_registers<T>(std::ptrdiff_t{n} * parts, [&](std::ptrdiff_t at) {
      const V a = simd::load<V>(x + at), b = simd::load<V>(y + at);
      simd::store(x + at, b);
      simd::store(y + at, a);
    });
  }
  Walk<T, parts> a(n, x + done, incx), b(n, y + done, incy);
  for (int i = static_cast<int>(done / parts); i < n; ++i, a.next(), b.next()) {
    const Element<T, parts> e = a.get();
    a.put(b.get());
    b.put(e);
  }
}

// As in the reference routines, only positive increments do anything.
template <class T, int parts>
void scal(int n, const T* alpha, T* x, int incx) {
  using V = simd::Vec<T>;
  if (n <= 0 || incx <= 0) return;
  const Scale<T, parts> scale(alpha);
  std::ptrdiff_t done = 0;
  if (incx == 1) {
    done = over_registers<T>(std::ptrdiff_t{n} * parts,
                             [&](std::ptrdiff_t at) { simd::store(x + at, scale(simd::load<V>(x + at))); });
  }
  Walk<T, parts> a(n, x + done, incx);
  for (int i = static_cast<int>(done / parts); i < n; ++i, a.next()) a.put(scale(a.get()));
}

// A complex vector by a real number: both parts by it.
template <class T>
void scal_by_real(int n, T alpha, T* x, int incx) {
  using V = simd::Vec<T>;
  if (n <= 0 || incx <= 0) return;
  std::ptrdiff_t done = 0;
  if (incx == 1) {
    done = over_registers<T>(2 * std::ptrdiff_t{n},
                             [&](std::ptrdiff_t at) { simd::store(x + at, simd::load<V>(x + at) * alpha); });
  }
  Walk<T, 2> a(n, x + done, incx);
  for (int i = static_cast<int>(done / 2); i < n; ++i, a.next()) {
    const Element<T, 2> e = a.get();
    a.put({{e.part[0] * alpha, e.part[1] * alpha}});
  }
}

template <class T, int parts>
void axpy(int n, const T* alpha, const T* x, int incx, T* y, int incy) {
  using V = simd::Vec<T>;
  const Scale<T, parts> scale(alpha);
  if (n <= 0 || scale.zero()) return;
  std::ptrdiff_t done = 0;
  if (incx == 1 && incy == 1) {
    done = over_registers<T>(std::ptrdiff_t{n} * parts, [&](std::ptrdiff_t at) {
      simd::store(y + at, simd::load<V>(y + at) + scale(simd::load<V>(x + at)));
    });
  }
  Walk<const T, parts> from(n, x + done, incx);
  Walk<T, parts> to(n, y + done, incy);
  for (int i = static_cast<int>(done / parts); i < n; ++i, from.next(), to.next()) {
    const Element<T, parts> a = scale(from.get()), b = to.get();
    Element<T, parts> sum;
    for (int k = 0; k < parts; ++k) sum.part[k] = b.part[k] + a.part[k];
    to.put(sum);
  }
}

}  // namespace qor::blas1
