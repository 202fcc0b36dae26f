// Level-1 kernels at unit stride, 1000 reals in the first-level cache (--full: 100000, beyond the second), against the
// C library's memcpy and loops that the compiler vectorises.
#include <cstring>

#include "harness.h"
#include "qor/blas1.h"

namespace bench {
namespace {

template <class T>
T* input() {
  static Buffer<T, at_inputs> buffer;
  return buffer.data;
}

template <class T>
void add(std::vector<Work>& works, const std::string& name, double target, void (*ours)(int n, const T* x, T* y),
         const char* peer, void (*theirs)(int n, const T* x, T* y)) {
  Work work{"level1", name, 1000, {}, {}};
  work.contenders.push_back({"qor", 0, true, [ours](int n) { ours(n, input<T>(), output<T>()); }});
  work.contenders.push_back({peer, 0, false, [theirs](int n) { theirs(n, input<T>(), output<T>()); }});
  work.claims.push_back({name, "qor", {}, no_limit, target, ""});
  works.push_back(work);
}

template <class T>
void move(int n, const T* x, T* y) {
  std::memcpy(y, x, sizeof(T) * static_cast<std::size_t>(n));
}
template <class T>
void scale(int n, const T*, T* y) {
  for (int i = 0; i < n; ++i) y[i] *= T(-1);
}
template <class T>
void add_multiple(int n, const T* x, T* y) {
  for (int i = 0; i < n; ++i) y[i] += T(1e-9) * x[i];
}

}  // namespace

void add_level1_rows(std::vector<Work>& works) {
  constexpr double tie = 0.95;
  add<double>(
      works, "dcopy", tie, [](int n, const double* x, double* y) { qor_blas_zx9_dcopy(n, x, 1, y, 1); }, "memcpy",
      move<double>);
  add<float>(
      works, "ccopy", tie, [](int n, const float* x, float* y) { qor_blas_zx9_ccopy(n / 2, x, 1, y, 1); }, "memcpy",
      move<float>);
  add<double>(
      works, "dscal", tie, [](int n, const double*, double* y) { qor_blas_zx9_dscal(n, -1, y, 1); }, "C loop",
      scale<double>);
  add<double>(
      works, "zdscal", tie, [](int n, const double*, double* y) { qor_blas_zx9_zdscal(n / 2, -1, y, 1); }, "C loop",
      scale<double>);
  add<double>(
      works, "daxpy", tie, [](int n, const double* x, double* y) { qor_blas_zx9_daxpy(n, 1e-9, x, 1, y, 1); }, "C loop",
      add_multiple<double>);
  add<float>(
      works, "saxpy", tie, [](int n, const float* x, float* y) { qor_blas_zx9_saxpy(n, 1e-9f, x, 1, y, 1); }, "C loop",
      add_multiple<float>);
}

}  // namespace bench
