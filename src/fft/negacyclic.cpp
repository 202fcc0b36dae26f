#include "fft/negacyclic.h"

#include <algorithm>

#include "fft/negacyclic_roots.h"

namespace qor::fft {
namespace {

constexpr int largest_part = 4096;

// The roots of a block: w2^2 = w1, w2^3 = w3.
// The roots of a block, w1, w2 and w3 with w2^2 = w1, w2^3 = w3, are asked for as w(0), w(1), w(2), each where it is used.
template <class V>
const lane_t<V>* place_of(const lane_t<V>* roots, int level, int block) {
  return roots + roots_start<V>(level) + block / lanes<V> * 6 * lanes<V> + block % lanes<V>;
}
// Those of one block in all lanes, in registers or memory, or loaded when asked for; and those of `lanes` blocks.
template <class V>
struct RootsOfOne {
  Complex<V> w[3];
  QOR_INLINE Complex<V> operator()(int i) const { return w[i]; }
};
template <class V>
QOR_INLINE auto lazy_roots_of_one(const lane_t<V>* at) {
  return [at](int i) {
    return Complex<V>{simd::broadcast<V>(at + 2 * i * lanes<V>), simd::broadcast<V>(at + (2 * i + 1) * lanes<V>)};
  };
}
template <class V>
QOR_INLINE RootsOfOne<V> roots_of_one(const lane_t<V>* at) {
  const auto w = lazy_roots_of_one<V>(at);
  return {{w(0), w(1), w(2)}};
}
template <class V>
QOR_INLINE auto roots_of_each(const lane_t<V>* at) {
  return [at](int i) { return Split<V>{const_cast<lane_t<V>*>(at)}.load(i * lanes<V>); };
}

template <class V>
QOR_INLINE Complex<V> conj_times(Complex<V> w, Complex<V> x) {
  return {x.re * w.re + x.im * w.im, x.im * w.re - x.re * w.im};
}
// Two levels forwards and backwards (but for a factor of 4); get(r) is asked for and put(r, x) called once each.
template <class V, class W, class Get, class Put>
QOR_INLINE void split4(W w, Get get, Put put) {
  const Complex<V> p2 = get(2) * w(0), x0 = get(0), s0 = x0 + p2, s1 = x0 - p2;
  const Complex<V> p1 = get(1) * w(1), p3 = get(3) * w(2), d0 = p1 + p3, d1 = p1 - p3;
  put(0, s0 + d0);
  put(1, s0 - d0);
  put(2, plus_i(s1, d1));
  put(3, minus_i(s1, d1));
}
template <class V, class W, class Get, class Put>
QOR_INLINE void join4(W w, Get get, Put put) {
  const Complex<V> y0 = get(0), y1 = get(1), s0 = y0 + y1, d0 = y0 - y1;
  const Complex<V> y2 = get(2), y3 = get(3), s1 = y2 + y3, d1 = y2 - y3;
  put(0, s0 + s1);
  put(2, conj_times(w(0), s0 - s1));
  put(1, conj_times(w(1), minus_i(d0, d1)));
  put(3, conj_times(w(2), plus_i(d0, d1)));
}

// A pass of two levels on a block, and of one.
template <bool Back, class V, class W>
QOR_INLINE void pass4(V* v, std::ptrdiff_t quarter, W w) {
  V* v3 = v + 3 * quarter;
  for (V* const end = v + quarter; v != end; v += 2, v3 += 2) {
    const auto at = [&](int r) { return r == 3 ? v3 : v + r * quarter; };
    const auto get = [&](int r) { return Complex<V>{simd::held(at(r)[0]), simd::held(at(r)[1])}; };
    const auto put = [&](int r, Complex<V> x) { at(r)[0] = x.re, at(r)[1] = x.im; };
    Back ? join4<V>(w, get, put) : split4<V>(w, get, put);
  }
}
template <bool Back, class V>
QOR_INLINE void pass2(V* v, std::ptrdiff_t half, Complex<V> w) {
  for (V* const end = v + half; v != end; v += 2) {
    const Complex<V> x{simd::held(v[0]), simd::held(v[1])}, y{simd::held(v[half]), simd::held(v[half + 1])};
    const Complex<V> z = Back ? y : y * w, sum = x + z, difference = Back ? conj_times(w, x - z) : x - z;
    v[0] = sum.re, v[1] = sum.im, v[half] = difference.re, v[half + 1] = difference.im;
  }
}
template <bool Back, class V>
[[gnu::noinline]] void level4(lane_t<V>* p, int n, int level, const lane_t<V>* roots) {
  V* v = reinterpret_cast<V*>(p);
  const std::ptrdiff_t size = 2 * n / lanes<V>;
  const lane_t<V>* at = roots + roots_start<V>(level);
  const auto each = [&](auto pass) {
    for (int b = 0; b < 1 << level; b += lanes<V>, at += 6 * lanes<V>) {
      for (int lane = 0; lane < std::min(lanes<V>, 1 << level); ++lane, v += size) pass(at + lane);
    }
  };
  if (size == 8) {
    each([&](const lane_t<V>* w) { pass4<Back>(v, 2, lazy_roots_of_one<V>(w)); });
  } else {
    each([&](const lane_t<V>* w) { pass4<Back>(v, size / 4, roots_of_one<V>(w)); });
  }
}
template <bool Back, class V>
[[gnu::noinline]] void level2(lane_t<V>* p, int n, int level, const lane_t<V>* roots) {
  V* v = reinterpret_cast<V*>(p);
  const std::ptrdiff_t size = 2 * n / lanes<V>;
  for (int b = 0; b < 1 << level; ++b, v += size) {
    pass2<Back>(v, size / 2, lazy_roots_of_one<V>(place_of<V>(roots, level, b))(0));
  }
}

// Vector k of `lanes` blocks of Size values becomes value k of each block, and back.
template <int Size, class V>
QOR_INLINE void to_columns(V* v) {
  if constexpr (Size == lanes<V>) {
    simd::transpose(v);
  } else {
    static_assert(Size == 2 * lanes<V>);
    V a[2] = {v[0], v[2]}, b[2] = {v[1], v[3]};
    simd::transpose(a), simd::transpose(b);
    v[0] = a[0], v[1] = a[1], v[2] = b[0], v[3] = b[1];
  }
}
template <int Size, class V>
QOR_INLINE void to_rows(V* v) {
  if constexpr (Size == lanes<V>) {
    simd::transpose(v);
  } else {
    V a[2] = {v[0], v[1]}, b[2] = {v[2], v[3]};
    simd::transpose(a), simd::transpose(b);
    v[0] = a[0], v[2] = a[1], v[1] = b[0], v[3] = b[1];
  }
}

// The last levels, of blocks of Size values, are done across blocks. What they make is stored as the columns are, times
// `scale` if that isn't 1; the way back begins with the product of that with the factor.
template <int Size, bool Scales, class V>
[[gnu::noinline]] void innermost(const lane_t<V>* p, lane_t<V>* to, int blocks, const lane_t<V>* at, lane_t<V> scale) {
  constexpr int L = lanes<V>;
  const V factor = simd::splat<V>(scale);
  for (int b = 0; b < blocks; b += L, p += 2 * Size * L, to += 2 * Size * L, at += 6 * L) {
    const Split<V> x{const_cast<lane_t<V>*>(p)}, y{to};
    V re[Size], im[Size];
    unrolled<Size>([&](auto k) {
      const Complex<V> c = x.load(k * L);
      re[k] = c.re, im[k] = c.im;
    });
    to_columns<Size>(re), to_columns<Size>(im);
    const auto w = roots_of_each<V>(at);
    const auto get = [&](int k) { return Complex<V>{re[k], im[k]}; };
    const auto put = [&](int k, Complex<V> c) { y.store(k * L, Scales ? c * factor : c); };
    if constexpr (Size == 4) {
      split4<V>(w, get, put);
    } else {
      const Complex<V> a = get(0), z = get(1) * w(0);
      put(0, a + z);
      put(1, a - z);
    }
  }
}
template <int Size, class V>
[[gnu::noinline]] void innermost_back(lane_t<V>* p, const lane_t<V>* factor, int blocks, const lane_t<V>* at) {
  constexpr int L = lanes<V>;
  for (int b = 0; b < blocks; b += L, p += 2 * Size * L, factor += 2 * Size * L, at += 6 * L) {
    const Split<V> x{p}, f{const_cast<lane_t<V>*>(factor)};
    V re[Size], im[Size];
    const auto w = roots_of_each<V>(at);
    const auto get = [&](int k) {
      const Complex<V> c = x.load(k * L);
      return Complex<V>{simd::held(c.re), simd::held(c.im)} * f.load(k * L);
    };
    const auto put = [&](int k, Complex<V> c) { re[k] = c.re, im[k] = c.im; };
    if constexpr (Size == 4) {
      join4<V>(w, get, put);
    } else {
      const Complex<V> a = get(0), c = get(1);
      put(0, a + c);
      put(1, conj_times(w(0), a - c));
    }
    to_rows<Size>(re), to_rows<Size>(im);
    unrolled<Size>([&](auto k) { x.store(k * L, {re[k], im[k]}); });
  }
}

// The first pass reads the caller's array, whose eighths are the real and then the imaginary parts of the quarters; of
// these the first P are there, the others zeros.
template <int P, class V>
[[gnu::noinline]] void first_columns(const lane_t<V>* x, int pitch, Split<V> to, int quarter, int count,
                                     const lane_t<V>* at) {
  const RootsOfOne<V> w = roots_of_one<V>(at);
  for (int j = 0; j < count; j += lanes<V>) {
    const auto load = [&](int eighth) { return simd::load<V>(x + j + eighth * pitch); };
    const auto product = [&](auto r, Complex<V> c) {
      if constexpr (r + 4 < P) {
        return Complex<V>{load(r), load(r + 4)} * c;
      } else if constexpr (r < P) {
        return c * load(r);
      } else {
        return Complex<V>{};
      }
    };
    Complex<V> x0{};
    if constexpr (P > 0) x0.re = load(0);
    if constexpr (P > 4) x0.im = load(4);
    const Complex<V> p2 = product(std::integral_constant<int, 2>(), w(0)), s0 = x0 + p2, s1 = x0 - p2;
    const Complex<V> p1 = product(std::integral_constant<int, 1>(), w(1));
    const Complex<V> p3 = product(std::integral_constant<int, 3>(), w(2)), d0 = p1 + p3, d1 = p1 - p3;
    to.store(j, s0 + d0);
    to.store(j + quarter, s0 - d0);
    to.store(j + 2 * quarter, plus_i(s1, d1));
    to.store(j + 3 * quarter, minus_i(s1, d1));
  }
}
// The last pass writes eighths likewise: the first A are added to what is there, the others up to E stored.
template <int A, int E, class V>
[[gnu::noinline]] void last_columns(Split<V> from, int quarter, lane_t<V>* x, int pitch, int count,
                                    const lane_t<V>* at) {
  const RootsOfOne<V> w = roots_of_one<V>(at);
  for (int j = 0; j < count; j += lanes<V>) {
    const auto put = [&](int eighth, V v) {
      lane_t<V>* const to = x + j + eighth * pitch;
      if (eighth < E) simd::store(to, eighth < A ? simd::load<V>(to) + v : v);
    };
    join4<V>(
        w, [&](int r) { return from.load(j + r * quarter); },
        [&](int r, Complex<V> c) { put(r, c.re), put(r + 4, c.im); });
  }
}

// Calls f with i, low <= i <= High, as a constant.
template <int Low, int High, class F>
QOR_INLINE void with_constant(int i, F f) {
  unrolled<High - Low + 1>([&](auto k) {
    if (i == k + Low) f(std::integral_constant<int, k + Low>());
  });
}

// Of m points, or of a part.
constexpr int order_of(int m) {
  int e = 0;
  for (; m > 1; m /= 2) ++e;
  return e;
}
constexpr int table_levels(int m) { return (order_of(m) + 1) / 2 * 2 - 2; }

}  // namespace

template <class T>
std::size_t Negacyclic<T>::work_size(int order) {
  const std::size_t m = std::size_t{1} << (order - 1);
  const bool tabulates = table_levels(std::min<int>(int(m), largest_part)) > static_levels || m > largest_part;
  return 2 * padded(2 * m) + (tabulates ? padded(roots_start<V>(table_levels(largest_part) + 1)) : 0);
}

template <class T>
Negacyclic<T>::Negacyclic(int order, T* work)
    : m_(1 << (order - 1)),
      quarter_(m_ / 4),
      factor_(work),
      data_(work + padded(2 * static_cast<std::size_t>(m_))),
      own_roots_(data_ + padded(2 * static_cast<std::size_t>(m_))),
      roots_(roots_table<V>.data()) {
  if (m_ <= largest_part && table_levels(m_) > static_levels) {
    fill_roots<V>(own_roots_, table_levels(m_), 0.5);
    roots_ = own_roots_;
  }
}

template <class T>
void Negacyclic<T>::first_pass(const T* x, int n, T* to) {
  constexpr int L = lanes<V>;
  const int full = n / quarter_, rest = n % quarter_, whole = rest / L * L;
  const T* const at = roots_table<V>.data();
  const auto columns = [&](int p, const T* from, int pitch, int j, int count) {
    with_constant<0, 8>(p, [&](auto P) { first_columns<P, V>(from, pitch, Split<V>{to} + j, quarter_, count, at); });
  };
  if (whole > 0) columns(full + 1, x, quarter_, 0, whole);
  int j = whole;
  if (rest > whole) {
    T mixed[8 * L] = {};
    for (int i = 0; i < 8 * L; ++i) {
      const int k = j + i % L + i / L * quarter_;
      if (k < n) mixed[i] = x[k];
    }
    columns(full + 1, mixed, L, j, L);
    j += L;
  }
  if (j < quarter_) columns(full, x + j, quarter_, j, quarter_ - j);
}

template <class T>
void Negacyclic<T>::last_pass(T* dst, int add, int end) {
  constexpr int L = lanes<V>;
  const T* const at = roots_table<V>.data();
  for (int j = 0; j < quarter_;) {
    const int add_here = add % quarter_, end_here = end % quarter_;
    int next = quarter_;
    for (const int bound : {add_here, end_here}) {
      if (bound > j) next = std::min(next, bound);
    }
    const int A = add / quarter_ + (j < add_here), E = end / quarter_ + (j < end_here), whole = (next - j) / L * L;
    const Split<V> from = Split<V>{data_} + j;
    bool done = false;
    if (whole > 0 && E == 8) {
      with_constant<0, 4>(A, [&](auto a) {
        last_columns<a, 8>(from, quarter_, dst + j, quarter_, whole, at);
        done = true;
      });
    } else if (whole > 0 && A == 0) {
      with_constant<0, 7>(E, [&](auto e) {
        last_columns<0, e>(from, quarter_, dst + j, quarter_, whole, at);
        done = true;
      });
    }
    if (done) {
      j += whole;
      continue;
    }
    T mixed[8 * L];
    last_columns<0, 8>(from, quarter_, mixed, L, L, at);
    for (int i = 0; i < 8 * L; ++i) {
      const int k = j + i % L + i / L * quarter_;
      if (k < end) dst[k] = k < add ? dst[k] + mixed[i] : mixed[i];
    }
    j += L;
  }
}

// All levels from first_level on of an array of n points, whose roots are at hand, and back. An odd number of levels
// leaves blocks of 2 in the end, or starts with a single one where vectors are longer than that.
template <class T>
template <bool Multiplies>
void Negacyclic<T>::passes(T* p, int n, int first_level) {
  constexpr bool short_vectors = simd::lanes<V> == 2;
  const bool odd = order_of(n) % 2 != 0;
  const T* const roots = roots_;
  T* const factor = factor_ + (p - data_);
  int level = first_level;
  if (!short_vectors && odd) level2<false, V>(p, n >> level, level, roots), ++level;
  const int start = level;
  for (; n >> level > 4; level += 2) level4<false, V>(p, n >> level, level, roots);
  const auto inner = [&](auto size) {
    const T* const at = roots + roots_start<V>(level);
    if constexpr (Multiplies) {
      innermost<size, false, V>(p, p, 1 << level, at, 1);
      innermost_back<size, V>(p, factor, 1 << level, at);
    } else {
      innermost<size, true, V>(p, factor, 1 << level, at, T(1) / static_cast<T>(m_));
    }
  };
  if constexpr (short_vectors) {
    if (odd) inner(std::integral_constant<int, 2>());
  }
  if (!short_vectors || !odd) inner(std::integral_constant<int, 4>());
  if (!Multiplies) return;
  while (level > start) {
    level -= 2;
    level4<true, V>(p, n >> level, level, roots);
  }
  if (start != first_level) level2<true, V>(p, n >> first_level, first_level, roots);
}

template <class T>
template <bool Multiplies>
void Negacyclic<T>::part(T* p, int n, int level, int block) {
  const double f = phi(level, static_cast<std::uint32_t>(block));
  if (n <= largest_part) {
    fill_roots<V>(own_roots_, table_levels(n), f);
    roots_ = own_roots_;
    passes<Multiplies>(p, n, 0);
    return;
  }
  T roots[6 * lanes<V>];
  fill_roots<V>(roots, 0, f);
  V* const v = reinterpret_cast<V*>(p);
  const std::ptrdiff_t quarter = n / 2 / lanes<V>;
  pass4<false>(v, quarter, roots_of_one<V>(roots));
  for (int b = 0; b < 4; ++b) part<Multiplies>(p + b * (n / 2), n / 4, level + 2, 4 * block + b);
  if constexpr (Multiplies) pass4<true>(v, quarter, roots_of_one<V>(roots));
}

template <class T>
template <bool Multiplies>
void Negacyclic<T>::run(const T* x, int n, T* to) {
  first_pass(x, n, to);
  if (m_ <= largest_part) {
    passes<Multiplies>(to, m_, 2);
  } else {
    for (int b = 0; b < 4; ++b) part<Multiplies>(to + b * (m_ / 2), quarter_, 2, b);
  }
}

template <class T>
void Negacyclic<T>::set_factor(const T* x, int n) {
  run<false>(x, n, data_);
}

template <class T>
void Negacyclic<T>::multiply(const T* x, int n, T* dst, int add, int end) {
  run<true>(x, n, data_);
  last_pass(dst, add, end);
}

template class Negacyclic<float>;
template class Negacyclic<double>;

}  // namespace qor::fft
