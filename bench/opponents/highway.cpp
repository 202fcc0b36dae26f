// Highway's math functions, compiled for SSSE3 and nothing above it.
#include <hwy/highway.h>
//
#include <hwy/contrib/math/math-inl.h>

#include "harness.h"

static_assert(HWY_STATIC_TARGET == HWY_SSSE3, "another instruction set than the library's would be no peer");

namespace bench {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

// r[i] = the expression in x and y, vectors of the arguments with the tag d. Large arguments are outside the range of
// the sine and the cosine.
#define QOR_MAP(Function, expression)                                                      \
  template <class T>                                                                       \
  void run_##Function(int n, const T* a, const T* b, T* r, T*) {                           \
    const hn::ScalableTag<T> d;                                                            \
    for (int i = 0; i < n; i += static_cast<int>(hn::Lanes(d))) {                          \
      [[maybe_unused]] const auto x = hn::Load(d, a + i);                                  \
      [[maybe_unused]] const auto y = hn::Load(d, b + i);                                  \
      hn::Store(expression, d, r + i);                                                     \
    }                                                                                      \
  }                                                                                        \
  const Add add_##Function(MathPeer<double>{#Function, "highway", run_##Function<double>}, \
                           MathPeer<float>{#Function, "highway", run_##Function<float>});
QOR_MAP(Exp, hn::Exp(d, x))
QOR_MAP(Ln, hn::Log(d, x))
QOR_MAP(Log10, hn::Log10(d, x))
QOR_MAP(Sqrt, hn::Sqrt(x))
QOR_MAP(InvSqrt, hn::Div(hn::Set(d, T(1)), hn::Sqrt(x)))
QOR_MAP(Inv, hn::Div(hn::Set(d, T(1)), x))
QOR_MAP(Div, hn::Div(x, y))
QOR_MAP(Sin, hn::Sin(d, x))
QOR_MAP(Cos, hn::Cos(d, x))
QOR_MAP(Asin, hn::Asin(d, x))
QOR_MAP(Acos, hn::Acos(d, x))
QOR_MAP(Atan, hn::Atan(d, x))
QOR_MAP(Sinh, hn::Sinh(d, x))
QOR_MAP(Tanh, hn::Tanh(d, x))
QOR_MAP(Asinh, hn::Asinh(d, x))
QOR_MAP(Acosh, hn::Acosh(d, x))
QOR_MAP(Atanh, hn::Atanh(d, x))
QOR_MAP(Floor, hn::Floor(x))
QOR_MAP(Ceil, hn::Ceil(x))
QOR_MAP(Trunc, hn::Trunc(x))
QOR_MAP(Rint, hn::Round(x))

template <class T>
void run_sin_cos(int n, const T* a, const T* b, T* r, T* r2) {
  run_Sin(n, a, b, r, r2);
  run_Cos(n, a, b, r2, r);
}
const Add add_sin_cos(MathPeer<double>{"SinCos", "highway sin + cos", run_sin_cos<double>},
                      MathPeer<float>{"SinCos", "highway sin + cos", run_sin_cos<float>});

}  // namespace
}  // namespace bench
