// Eigen's array functions, those that it vectorises. In double precision it has no sine and cosine of its own.
#include <Eigen/Core>

#include "harness.h"

namespace bench {
namespace {

template <class T>
using Array = Eigen::Map<Eigen::Array<T, Eigen::Dynamic, 1>, Eigen::Aligned16>;
template <class T>
using ConstArray = Eigen::Map<const Eigen::Array<T, Eigen::Dynamic, 1>, Eigen::Aligned16>;

// r = the expression in the arrays x and y.
#define QOR_MAP(Function, expression)                            \
  template <class T>                                             \
  void run_##Function(int n, const T* a, const T* b, T* r, T*) { \
    [[maybe_unused]] const ConstArray<T> x(a, n), y(b, n);       \
    Array<T>(r, n) = expression;                                 \
  }
#define QOR_BOTH(Function, expression)                                                   \
  QOR_MAP(Function, expression)                                                          \
  const Add add_##Function(MathPeer<double>{#Function, "eigen", run_##Function<double>}, \
                           MathPeer<float>{#Function, "eigen", run_##Function<float>});
#define QOR_SINGLE(Function, expression) \
  QOR_MAP(Function, expression)          \
  const Add add_##Function(MathPeer<float>{#Function, "eigen", run_##Function<float>});
QOR_BOTH(Exp, x.exp())
QOR_BOTH(Ln, x.log())
QOR_BOTH(Sqrt, x.sqrt())
QOR_BOTH(InvSqrt, x.rsqrt())
QOR_BOTH(Inv, x.inverse())
QOR_BOTH(Div, x / y)
QOR_BOTH(Floor, x.floor())
QOR_BOTH(Ceil, x.ceil())
QOR_BOTH(Round, x.round())
QOR_BOTH(Rint, x.rint())
QOR_SINGLE(Sin, x.sin())
QOR_SINGLE(Cos, x.cos())
QOR_SINGLE(Tanh, x.tanh())
void run_sin_cos(int n, const float* a, const float* b, float* r, float* r2) {
  run_Sin(n, a, b, r, r2);
  run_Cos(n, a, b, r2, r);
}
const Add add_sin_cos(MathPeer<float>{"SinCos", "eigen sin + cos", run_sin_cos});

}  // namespace
}  // namespace bench
