// Complex functions as one would write them over the real ones: parts in arrays of their own, a call for each real
// function, loops between.
#include <cmath>

#include "complex.h"
#include "qor/tfn.h"

namespace bench {
namespace {

constexpr int block = 256;  // arrays are static: the compiler would have them filled otherwise
template <class T>
using Array = T[block];

// The real functions of one precision and accuracy.
#define QOR_REAL(letter, T, suffix)                                                                    \
  using Number = T;                                                                                    \
  static void exp(int n, const T* a, T* r) { _tfn##letter##Exp_##suffix(n, a, r); }                    \
  static void ln(int n, const T* a, T* r) { _tfn##letter##Ln_##suffix(n, a, r); }                      \
  static void log10(int n, const T* a, T* r) { _tfn##letter##Log10_##suffix(n, a, r); }                \
  static void sqrt(int n, const T* a, T* r) { _tfn##letter##Sqrt_##suffix(n, a, r); }                  \
  static void sinh(int n, const T* a, T* r) { _tfn##letter##Sinh_##suffix(n, a, r); }                  \
  static void cosh(int n, const T* a, T* r) { _tfn##letter##Cosh_##suffix(n, a, r); }                  \
  static void sincos(int n, const T* a, T* s, T* c) { _tfn##letter##SinCos_##suffix(n, a, s, c); }     \
  static void hypot(int n, const T* a, const T* b, T* r) { _tfn##letter##Hypot_##suffix(n, a, b, r); } \
  static void atan2(int n, const T* a, const T* b, T* r) { _tfn##letter##Atan2_##suffix(n, a, b, r); }
struct DoubleHigh {
  QOR_REAL(d, double, HA)
};
struct DoubleLow {
  QOR_REAL(d, double, 50)
};
struct SingleHigh {
  QOR_REAL(s, float, HA)
};
struct SingleLow {
  QOR_REAL(s, float, 21)
};
#undef QOR_REAL

template <class R>
struct Plain {
  using T = typename R::Number;

  template <class F>
  static void each(int n, F f) {
    for (int i = 0; i < n; ++i) f(i);
  }
  // x + iy becomes the function of itself.
  static void exp(int n, T* x, T* y) {
    static Array<T> e, s, c;
    R::exp(n, x, e);
    R::sincos(n, y, s, c);
    each(n, [&](int i) { x[i] = e[i] * c[i], y[i] = e[i] * s[i]; });
  }
  static void ln(int n, T* x, T* y) {
    static Array<T> size;
    R::hypot(n, x, y, size);
    R::atan2(n, y, x, y);
    R::ln(n, size, x);
  }
  static void log10(int n, T* x, T* y) {
    static Array<T> size;
    R::hypot(n, x, y, size);
    R::atan2(n, y, x, y);
    R::log10(n, size, x);
    each(n, [&](int i) { y[i] *= T(M_LOG10E); });
  }
  static void sqrt(int n, T* x, T* y) {
    static Array<T> size, p, q;
    R::hypot(n, x, y, size);
    each(n, [&](int i) { p[i] = (size[i] + x[i]) / 2, q[i] = (size[i] - x[i]) / 2; });
    R::sqrt(n, p, x);
    R::sqrt(n, q, q);
    each(n, [&](int i) { y[i] = std::copysign(q[i], y[i]); });
  }
  static void sinh(int n, T* x, T* y) {
    static Array<T> sh, ch, s, c;
    R::sinh(n, x, sh);
    R::cosh(n, x, ch);
    R::sincos(n, y, s, c);
    each(n, [&](int i) { x[i] = sh[i] * c[i], y[i] = ch[i] * s[i]; });
  }
  static void cosh(int n, T* x, T* y) {
    static Array<T> sh, ch, s, c;
    R::sinh(n, x, sh);
    R::cosh(n, x, ch);
    R::sincos(n, y, s, c);
    each(n, [&](int i) { x[i] = ch[i] * c[i], y[i] = sh[i] * s[i]; });
  }
  static void tanh(int n, T* x, T* y) {
    static Array<T> sh, ch, s, c;
    each(n, [&](int i) { x[i] *= 2, y[i] *= 2; });
    R::sinh(n, x, sh);
    R::cosh(n, x, ch);
    R::sincos(n, y, s, c);
    each(n, [&](int i) {
      const T d = 1 / (ch[i] + c[i]);
      x[i] = sh[i] * d, y[i] = s[i] * d;
    });
  }
  // f(z) = -i g(iz): of the circular functions by the hyperbolic ones.
  static void turned(int n, T* x, T* y, void (*g)(int, T*, T*)) {
    each(n, [&](int i) { y[i] = -y[i]; });
    g(n, y, x);
    each(n, [&](int i) { y[i] = -y[i]; });
  }
  static void sin(int n, T* x, T* y) { turned(n, x, y, sinh); }
  static void tan(int n, T* x, T* y) { turned(n, x, y, tanh); }
  static void cos(int n, T* x, T* y) {
    each(n, [&](int i) { y[i] = -y[i]; });
    cosh(n, y, x);
    each(n, [&](int i) { std::swap(x[i], y[i]); });
  }
  // ln(z + sqrt(z^2 + sign)), or with sqrt(z + 1) sqrt(z - 1).
  static void asinh(int n, T* x, T* y) {
    static Array<T> p, q;
    each(n, [&](int i) { p[i] = x[i] * x[i] - y[i] * y[i] + 1, q[i] = 2 * x[i] * y[i]; });
    sqrt(n, p, q);
    each(n, [&](int i) { x[i] += p[i], y[i] += q[i]; });
    ln(n, x, y);
  }
  static void acosh(int n, T* x, T* y) {
    static Array<T> p, q, u, v;
    each(n, [&](int i) { p[i] = x[i] + 1, u[i] = x[i] - 1, q[i] = v[i] = y[i]; });
    sqrt(n, p, q);
    sqrt(n, u, v);
    each(n, [&](int i) { x[i] += p[i] * u[i] - q[i] * v[i], y[i] += p[i] * v[i] + q[i] * u[i]; });
    ln(n, x, y);
  }
  // (ln(1 + z) - ln(1 - z))/2
  static void atanh(int n, T* x, T* y) {
    static Array<T> p, q;
    each(n, [&](int i) { p[i] = 1 + x[i], q[i] = y[i], x[i] = 1 - x[i], y[i] = -y[i]; });
    ln(n, p, q);
    ln(n, x, y);
    each(n, [&](int i) { x[i] = (p[i] - x[i]) / 2, y[i] = (q[i] - y[i]) / 2; });
  }
  static void asin(int n, T* x, T* y) { turned(n, x, y, asinh); }
  static void atan(int n, T* x, T* y) { turned(n, x, y, atanh); }
  static void acos(int n, T* x, T* y) {
    asin(n, x, y);
    each(n, [&](int i) { x[i] = T(M_PI_2) - x[i], y[i] = -y[i]; });
  }

  static void run(int n, const T* a, T* r, void (*f)(int, T*, T*)) {
    static Array<T> x, y;
    for (int first = 0; first < n; first += block) {
      const int count = n - first < block ? n - first : block;
      const T* const from = a + 2 * first;
      each(count, [&](int i) { x[i] = from[2 * i], y[i] = from[2 * i + 1]; });
      f(count, x, y);
      T* const to = r + 2 * first;
      each(count, [&](int i) { to[2 * i] = x[i], to[2 * i + 1] = y[i]; });
    }
  }
  static void power(int n, const T* a, const T* b, int step, T* r) {
    static Array<T> x, y;
    for (int first = 0; first < n; first += block) {
      const int count = n - first < block ? n - first : block;
      const T *const from = a + 2 * first, *const w = b + step * first;
      each(count, [&](int i) { x[i] = from[2 * i], y[i] = from[2 * i + 1]; });
      ln(count, x, y);
      each(count, [&](int i) {
        const T re = w[step * i], im = w[step * i + 1], old = x[i];
        x[i] = re * old - im * y[i], y[i] = re * y[i] + im * old;
      });
      exp(count, x, y);
      T* const to = r + 2 * first;
      each(count, [&](int i) { to[2 * i] = x[i], to[2 * i + 1] = y[i]; });
    }
  }

  static std::vector<ComplexPeer<T>> list() {
    std::vector<ComplexPeer<T>> all;
#define QOR_PLAIN(Name, f) all.push_back({#Name, "plain", [](int n, const T* a, const T*, T* r) { run(n, a, r, f); }});
    QOR_PLAIN(Exp, exp)
    QOR_PLAIN(Ln, ln)
    QOR_PLAIN(Log10, log10)
    QOR_PLAIN(Sqrt, sqrt)
    QOR_PLAIN(Sin, sin)
    QOR_PLAIN(Cos, cos)
    QOR_PLAIN(Tan, tan)
    QOR_PLAIN(Sinh, sinh)
    QOR_PLAIN(Cosh, cosh)
    QOR_PLAIN(Tanh, tanh)
    QOR_PLAIN(Asin, asin)
    QOR_PLAIN(Acos, acos)
    QOR_PLAIN(Atan, atan)
    QOR_PLAIN(Asinh, asinh)
    QOR_PLAIN(Acosh, acosh)
    QOR_PLAIN(Atanh, atanh)
#undef QOR_PLAIN
    all.push_back({"Pow", "plain", [](int n, const T* a, const T* b, T* r) { power(n, a, b, 2, r); }});
    all.push_back({"Powx", "plain", [](int n, const T* a, const T* b, T* r) { power(n, a, b, 0, r); }});
    return all;
  }
};

}  // namespace

template <>
std::vector<ComplexPeer<double>> plain_complex(bool high) {
  return high ? Plain<DoubleHigh>::list() : Plain<DoubleLow>::list();
}
template <>
std::vector<ComplexPeer<float>> plain_complex(bool high) {
  return high ? Plain<SingleHigh>::list() : Plain<SingleLow>::list();
}

}  // namespace bench
