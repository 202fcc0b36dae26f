// Eigen's array functions. In double precision it has no sine and cosine of its own.
#include <Eigen/Core>

#include "harness.h"

namespace bench {
namespace {

template <class T>
using Array = Eigen::Map<Eigen::Array<T, Eigen::Dynamic, 1>, Eigen::Aligned16>;
template <class T>
using ConstArray = Eigen::Map<const Eigen::Array<T, Eigen::Dynamic, 1>, Eigen::Aligned16>;

template <class T>
void ln(int n, const T* a, T* r, T*) {
  Array<T>(r, n) = ConstArray<T>(a, n).log();
}
template <class T>
void square_root(int n, const T* a, T* r, T*) {
  Array<T>(r, n) = ConstArray<T>(a, n).sqrt();
}
void sine(int n, const float* a, float* r, float*) { Array<float>(r, n) = ConstArray<float>(a, n).sin(); }
void cosine(int n, const float* a, float* r, float*) { Array<float>(r, n) = ConstArray<float>(a, n).cos(); }
void sine_and_cosine(int n, const float* a, float* r, float* r2) {
  sine(n, a, r, nullptr);
  cosine(n, a, r2, nullptr);
}

const Add here{MathPeer<double>{"Ln", "eigen", 1.55, ln<double>},
               MathPeer<double>{"Sqrt", "eigen", 0.5, square_root<double>},
               MathPeer<float>{"Ln", "eigen", 1.05, ln<float>},
               MathPeer<float>{"Sqrt", "eigen", 3.7, square_root<float>},
               MathPeer<float>{"Sin", "eigen", 1.65, sine},
               MathPeer<float>{"Cos", "eigen", 1.45, cosine},
               MathPeer<float>{"SinCos", "eigen sin + cos", 1.65, sine_and_cosine},
               MathPeer<float>{"Sin large", "eigen", 1.5, sine}};

}  // namespace
}  // namespace bench
