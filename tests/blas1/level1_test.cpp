// Every kernel against its definition, element by element, between pages that can't be touched.
#include <gtest/gtest.h>

#include <complex>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "qor/blas1.h"
#include "support/guarded.h"

namespace qor::test {
namespace {

// A kernel of elements of `parts` reals: on the library's arrays, and on one element of each by definition. Kernels of
// one vector leave y alone.
template <class T>
struct Kernel {
  std::string name;
  int parts;
  bool one_vector;
  std::function<void(int n, const T* alpha, T* x, int incx, T* y, int incy)> run;
  std::function<void(const T* alpha, T* x, T* y)> define;
};

template <class T>
void product(const T* alpha, const T* x, int parts, T* r) {
  if (parts == 1) {
    r[0] = alpha[0] * x[0];
  } else {
    const T re = x[0] * alpha[0] - x[1] * alpha[1], im = x[1] * alpha[0] + x[0] * alpha[1];
    r[0] = re, r[1] = im;
  }
}

#define MEMBERS(letter, T, parts, ALPHA)                                                                              \
  list.push_back(                                                                                                     \
      {#letter "copy", parts, false,                                                                                  \
       [](int n, const T*, T* x, int incx, T* y, int incy) { qor_blas_zx9_##letter##copy(n, x, incx, y, incy); },     \
       [](const T*, T* x, T* y) { std::memcpy(y, x, parts * sizeof(T)); }});                                          \
  list.push_back(                                                                                                     \
      {#letter "swap", parts, false,                                                                                  \
       [](int n, const T*, T* x, int incx, T* y, int incy) { qor_blas_zx9_##letter##swap(n, x, incx, y, incy); },     \
       [](const T*, T* x, T* y) { std::swap_ranges(x, x + parts, y); }});                                             \
  list.push_back({#letter "scal", parts, true,                                                                        \
                  [](int n, const T* a, T* x, int incx, T*, int) { qor_blas_zx9_##letter##scal(n, ALPHA, x, incx); }, \
                  [](const T* a, T* x, T*) { product(a, x, parts, x); }});                                            \
  list.push_back({#letter "axpy", parts, false,                                                                       \
                  [](int n, const T* a, T* x, int incx, T* y, int incy) {                                             \
                    qor_blas_zx9_##letter##axpy(n, ALPHA, x, incx, y, incy);                                          \
                  },                                                                                                  \
                  [](const T* a, T* x, T* y) {                                                                        \
                    T r[2];                                                                                           \
                    product(a, x, parts, r);                                                                          \
                    for (int k = 0; k < parts; ++k) y[k] += r[k];                                                     \
                  }});
#define BY_REAL(name, T)                                                                                   \
  list.push_back({#name, 2, true,                                                                          \
                  [](int n, const T* a, T* x, int incx, T*, int) { qor_blas_zx9_##name(n, *a, x, incx); }, \
                  [](const T* a, T* x, T*) { x[0] *= *a, x[1] *= *a; }});

template <class T>
std::vector<Kernel<T>> kernels();
template <>
std::vector<Kernel<float>> kernels() {
  std::vector<Kernel<float>> list;
  MEMBERS(s, float, 1, *a) MEMBERS(c, float, 2, a) BY_REAL(csscal, float) return list;
}
template <>
std::vector<Kernel<double>> kernels() {
  std::vector<Kernel<double>> list;
  MEMBERS(d, double, 1, *a) MEMBERS(z, double, 2, a) BY_REAL(zdscal, double) return list;
}

// Reals that a vector spans.
int span(int n, int inc, int parts) { return n <= 0 ? 0 : ((n - 1) * std::abs(inc) + 1) * parts; }
int start(int n, int inc) { return inc < 0 ? (1 - n) * inc : 0; }

template <class T>
class Level1 : public ::testing::Test {};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Level1, Precisions);

TYPED_TEST(Level1, DoesWhatItIsDefinedToDoAndTouchesNothingElse) {
  using T = TypeParam;
  std::mt19937 random(1);
  const auto draw = [&] { return static_cast<T>(random() * 0x1p-32 - 0.5); };
  for (const Kernel<T>& k : kernels<T>()) {
    for (int trial = 0; trial < 600; ++trial) {
      const int n = trial < 40 ? trial - 3 : 1 + static_cast<int>(random() % 60);
      const bool unit = trial % 2 == 0;
      const int incx = unit ? 1 : static_cast<int>(random() % 7) - 3,
                incy = unit ? 1 : static_cast<int>(random() % 7) - 3;
      if (k.name.ends_with("swap") && (incx == 0 || incy == 0)) continue;
      const T alpha[] = {trial % 50 == 7 ? T(0) : draw(), trial % 50 == 7 ? T(0) : draw()};
      std::vector<T> x(static_cast<std::size_t>(span(n, incx, k.parts))),
          y(static_cast<std::size_t>(span(n, incy, k.parts)));
      for (T& v : x) v = draw();
      for (T& v : y) v = draw();
      Guarded<T> gx(static_cast<int>(x.size()), x.data()), gy(static_cast<int>(y.size()), y.data());
      k.run(n, alpha, gx.data(), incx, gy.data(), incy);
      for (int i = 0; i < n && (!k.one_vector || incx > 0); ++i) {
        k.define(alpha, x.data() + (start(n, incx) + i * incx) * k.parts,
                 y.data() + (start(n, incy) + i * incy) * k.parts);
      }
      const std::string where =
          k.name + " n " + std::to_string(n) + " incx " + std::to_string(incx) + " incy " + std::to_string(incy);
      EXPECT_EQ(0, x.empty() ? 0 : std::memcmp(gx.data(), x.data(), x.size() * sizeof(T))) << where;
      EXPECT_EQ(0, y.empty() ? 0 : std::memcmp(gy.data(), y.data(), y.size() * sizeof(T))) << where;
    }
  }
}

// At addresses that are multiples of 4 only; signalling NaNs pass through copy and swap as they are.
TYPED_TEST(Level1, MovesBitsAtAnyAddress) {
  using T = TypeParam;
  constexpr int n = 21;
  for (const Kernel<T>& k : kernels<T>()) {
    if (!k.name.ends_with("copy") && !k.name.ends_with("swap")) continue;
    const auto reals = static_cast<std::size_t>(n * k.parts);
    const std::vector<T> pattern(reals, std::numeric_limits<T>::signaling_NaN());
    for (const int inc : {1, 2}) {
      std::vector<char> from(2 * reals * sizeof(T) + 4, 'a'), to(from.size(), 'b');
      auto* const x = reinterpret_cast<T*>(from.data() + 4);
      auto* const y = reinterpret_cast<T*>(to.data() + 4);
      std::memcpy(static_cast<void*>(x), pattern.data(), reals * sizeof(T));
      k.run(n, nullptr, x, 1, y, inc);
      for (int i = 0; i < n; ++i) {
        EXPECT_EQ(0, std::memcmp(static_cast<void*>(y + i * inc * k.parts), pattern.data(),
                                 static_cast<std::size_t>(k.parts) * sizeof(T)))
            << k.name;
      }
      EXPECT_EQ(std::string(to.data(), 4), "bbbb");
    }
  }
}

}  // namespace
}  // namespace qor::test
