// xsimd's functions on its SSSE3 batches.
#include <xsimd/xsimd.hpp>

#include "harness.h"

static_assert(std::is_same_v<xsimd::default_arch, xsimd::ssse3>, "another instruction set would be no peer");

namespace bench {
namespace {

template <class T>
using V = xsimd::batch<T, xsimd::ssse3>;

// r[i] = the expression in x and y, vectors of the arguments.
#define QOR_MAP(Function, expression)                                                    \
  template <class T>                                                                     \
  void run_##Function(int n, const T* a, const T* b, T* r, T*) {                         \
    for (int i = 0; i < n; i += static_cast<int>(V<T>::size)) {                          \
      [[maybe_unused]] const auto x = V<T>::load_aligned(a + i);                         \
      [[maybe_unused]] const auto y = V<T>::load_aligned(b + i);                         \
      V<T>(expression).store_aligned(r + i);                                             \
    }                                                                                    \
  }                                                                                      \
  const Add add_##Function(MathPeer<double>{#Function, "xsimd", run_##Function<double>}, \
                           MathPeer<float>{#Function, "xsimd", run_##Function<float>});
QOR_MAP(Exp, xsimd::exp(x))
QOR_MAP(Ln, xsimd::log(x))
QOR_MAP(Log10, xsimd::log10(x))
QOR_MAP(Sqrt, xsimd::sqrt(x))
QOR_MAP(InvSqrt, V<T>(T(1)) / xsimd::sqrt(x))
QOR_MAP(Inv, V<T>(T(1)) / x)
QOR_MAP(Div, x / y)
QOR_MAP(Cbrt, xsimd::cbrt(x))
QOR_MAP(InvCbrt, V<T>(T(1)) / xsimd::cbrt(x))
QOR_MAP(Sin, xsimd::sin(x))
QOR_MAP(Cos, xsimd::cos(x))
QOR_MAP(Tan, xsimd::tan(x))
QOR_MAP(Asin, xsimd::asin(x))
QOR_MAP(Acos, xsimd::acos(x))
QOR_MAP(Atan, xsimd::atan(x))
QOR_MAP(Atan2, xsimd::atan2(x, y))
QOR_MAP(Sinh, xsimd::sinh(x))
QOR_MAP(Cosh, xsimd::cosh(x))
QOR_MAP(Tanh, xsimd::tanh(x))
QOR_MAP(Asinh, xsimd::asinh(x))
QOR_MAP(Acosh, xsimd::acosh(x))
QOR_MAP(Atanh, xsimd::atanh(x))
QOR_MAP(Pow, xsimd::pow(x, y))
QOR_MAP(Powx, xsimd::pow(x, y))
QOR_MAP(Hypot, xsimd::hypot(x, y))
QOR_MAP(Erf, xsimd::erf(x))
QOR_MAP(Erfc, xsimd::erfc(x))
QOR_MAP(Floor, xsimd::floor(x))
QOR_MAP(Ceil, xsimd::ceil(x))
QOR_MAP(Trunc, xsimd::trunc(x))
QOR_MAP(Round, xsimd::round(x))
QOR_MAP(Rint, xsimd::rint(x))

template <class T>
void run_sin_cos(int n, const T* a, const T*, T* r, T* r2) {
  for (int i = 0; i < n; i += static_cast<int>(V<T>::size)) {
    const auto v = xsimd::sincos(V<T>::load_aligned(a + i));
    v.first.store_aligned(r + i);
    v.second.store_aligned(r2 + i);
  }
}
const Add add_sin_cos(MathPeer<double>{"SinCos", "xsimd", run_sin_cos<double>},
                      MathPeer<float>{"SinCos", "xsimd", run_sin_cos<float>});

}  // namespace
}  // namespace bench
