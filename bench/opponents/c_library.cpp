// The C library's functions, element by element; the compiler vectorises those that are instructions.
#include <cmath>

#include "harness.h"

namespace bench {
namespace {

// r[i] = the expression in x and y, the arguments.
#define QOR_LOOP(Function, expression)                                                    \
  template <class T>                                                                      \
  void run_##Function(int n, const T* a, const T* b, T* r, T*) {                          \
    for (int i = 0; i < n; ++i) {                                                         \
      [[maybe_unused]] const T x = a[i], y = b[i];                                        \
      r[i] = expression;                                                                  \
    }                                                                                     \
  }                                                                                       \
  const Add add_##Function(MathPeer<double>{#Function, "C loop", run_##Function<double>}, \
                           MathPeer<float>{#Function, "C loop", run_##Function<float>});
QOR_LOOP(Exp, std::exp(x))
QOR_LOOP(Ln, std::log(x))
QOR_LOOP(Log10, std::log10(x))
QOR_LOOP(Sqrt, std::sqrt(x))
QOR_LOOP(InvSqrt, 1 / std::sqrt(x))
QOR_LOOP(Inv, 1 / x)
QOR_LOOP(Div, x / y)
QOR_LOOP(Cbrt, std::cbrt(x))
QOR_LOOP(InvCbrt, 1 / std::cbrt(x))
QOR_LOOP(Sin, std::sin(x))
QOR_LOOP(Cos, std::cos(x))
QOR_LOOP(Tan, std::tan(x))
QOR_LOOP(Asin, std::asin(x))
QOR_LOOP(Acos, std::acos(x))
QOR_LOOP(Atan, std::atan(x))
QOR_LOOP(Atan2, std::atan2(x, y))
QOR_LOOP(Sinh, std::sinh(x))
QOR_LOOP(Cosh, std::cosh(x))
QOR_LOOP(Tanh, std::tanh(x))
QOR_LOOP(Asinh, std::asinh(x))
QOR_LOOP(Acosh, std::acosh(x))
QOR_LOOP(Atanh, std::atanh(x))
QOR_LOOP(Pow, std::pow(x, y))
QOR_LOOP(Powx, std::pow(x, y))
QOR_LOOP(Hypot, std::hypot(x, y))
QOR_LOOP(Erf, std::erf(x))
QOR_LOOP(Erfc, std::erfc(x))
QOR_LOOP(Floor, std::floor(x))
QOR_LOOP(Ceil, std::ceil(x))
QOR_LOOP(Trunc, std::trunc(x))
QOR_LOOP(Round, std::round(x))
QOR_LOOP(Rint, std::rint(x))

void run_sin_cos(int n, const double* a, const double*, double* r, double* r2) {
  for (int i = 0; i < n; ++i) sincos(a[i], r + i, r2 + i);
}
void run_sin_cos(int n, const float* a, const float*, float* r, float* r2) {
  for (int i = 0; i < n; ++i) sincosf(a[i], r + i, r2 + i);
}
const Add add_sin_cos(MathPeer<double>{"SinCos", "C loop", run_sin_cos},
                      MathPeer<float>{"SinCos", "C loop", run_sin_cos});

}  // namespace
}  // namespace bench
