// The C library's complex functions, in loops.
#include <complex>

#include "complex.h"

namespace bench {
namespace {

// std::complex's functions of doubles and singles are the C library's; its power of whole exponents isn't.
inline std::complex<double> power(std::complex<double> x, std::complex<double> y) {
  return __builtin_cpow(x.__rep(), y.__rep());
}
inline std::complex<float> power(std::complex<float> x, std::complex<float> y) {
  return __builtin_cpowf(x.__rep(), y.__rep());
}

template <class T, class F>
void loop(int n, const T* a, T* r, F f) {
  for (int i = 0; i < n; ++i) {
    const std::complex<T> y = f(std::complex<T>(a[2 * i], a[2 * i + 1]), i);
    r[2 * i] = y.real();
    r[2 * i + 1] = y.imag();
  }
}

}  // namespace

template <class T>
std::vector<ComplexPeer<T>> c_library_complex() {
  using Z = std::complex<T>;
  std::vector<ComplexPeer<T>> list;
#define QOR_LOOP(Name, expression)                                           \
  list.push_back({#Name, "C loop", [](int n, const T* a, const T* b, T* r) { \
                    loop(n, a, r, [b](Z x, [[maybe_unused]] int i) {         \
                      static_cast<void>(b);                                  \
                      return expression;                                     \
                    });                                                      \
                  }});
  QOR_LOOP(Exp, std::exp(x))
  QOR_LOOP(Ln, std::log(x))
  QOR_LOOP(Log10, std::log10(x))
  QOR_LOOP(Sqrt, std::sqrt(x))
  QOR_LOOP(Sin, std::sin(x))
  QOR_LOOP(Cos, std::cos(x))
  QOR_LOOP(Tan, std::tan(x))
  QOR_LOOP(Sinh, std::sinh(x))
  QOR_LOOP(Cosh, std::cosh(x))
  QOR_LOOP(Tanh, std::tanh(x))
  QOR_LOOP(Asin, std::asin(x))
  QOR_LOOP(Acos, std::acos(x))
  QOR_LOOP(Atan, std::atan(x))
  QOR_LOOP(Asinh, std::asinh(x))
  QOR_LOOP(Acosh, std::acosh(x))
  QOR_LOOP(Atanh, std::atanh(x))
  QOR_LOOP(Pow, power(x, Z(b[2 * i], b[2 * i + 1])))
  QOR_LOOP(Powx, power(x, Z(b[0], b[1])))
#undef QOR_LOOP
  return list;
}
template std::vector<ComplexPeer<double>> c_library_complex();
template std::vector<ComplexPeer<float>> c_library_complex();

}  // namespace bench
