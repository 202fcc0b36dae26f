// FFTW, planned with FFTW_MEASURE. "FFTW SSE2" is the static library, told that there is no AVX: the function that asks
// the processor is ours. "FFTW" is the shared library as it comes. What is learnt planning one transform serves the next
// ones; a plan may take some seconds, which is enough for all but the largest.
#include <dlfcn.h>
#include <fftw3.h>

#include <algorithm>
#include <cstdio>
#include <memory>

#include "harness.h"

extern "C" int fftw_have_simd_avx() { return 0; }
extern "C" int fftwf_have_simd_avx() { return 0; }

namespace bench {
namespace {

template <class T>
struct Calls;
#define FFTW_CALLS(T, X, library, file)                            \
  template <>                                                      \
  struct Calls<T> {                                                \
    static constexpr const char* shared = file;                    \
    static constexpr const char* prefix = #X;                      \
    using Plan = X##_plan;                                         \
    using Number = X##_complex;                                    \
    decltype(&X##_plan_dft_1d) complex = X##_plan_dft_1d;          \
    decltype(&X##_plan_dft_r2c_1d) forward = X##_plan_dft_r2c_1d;  \
    decltype(&X##_plan_dft_c2r_1d) inverse = X##_plan_dft_c2r_1d;  \
    decltype(&X##_plan_dft_r2c_2d) forward2 = X##_plan_dft_r2c_2d; \
    decltype(&X##_plan_dft_c2r_2d) inverse2 = X##_plan_dft_c2r_2d; \
    decltype(&X##_malloc) memory = X##_malloc;                     \
    decltype(&X##_execute) execute = X##_execute;                  \
    decltype(&X##_destroy_plan) destroy = X##_destroy_plan;        \
    decltype(&X##_set_timelimit) limit = X##_set_timelimit;        \
  };
FFTW_CALLS(double, fftw, fftw3, "libfftw3.so.3")
FFTW_CALLS(float, fftwf, fftw3f, "libfftw3f.so.3")
#undef FFTW_CALLS

template <class T>
std::function<void()> planned(const Calls<T>& calls, double seconds, FftKind kind, int n, T* in, T* out) {
  using Number = typename Calls<T>::Number;
  const auto pairs = [](T* p) { return reinterpret_cast<Number*>(p); };
  calls.limit(seconds);
  typename Calls<T>::Plan plan = nullptr;
  if (kind == FftKind::complex_forward) plan = calls.complex(n, pairs(in), pairs(out), FFTW_FORWARD, FFTW_MEASURE);
  if (kind == FftKind::real_forward) plan = calls.forward(n, in, pairs(out), FFTW_MEASURE);
  if (kind == FftKind::real_inverse) plan = calls.inverse(n, pairs(in), out, FFTW_MEASURE | FFTW_DESTROY_INPUT);
  const std::shared_ptr<void> keep(plan, [plan, destroy = calls.destroy](void*) { destroy(plan); });
  return [execute = calls.execute, plan, keep] { execute(plan); };
}
template <class T>
std::function<void()> restricted(FftKind kind, int n, T* in, T* out) {
  return planned(Calls<T>(), n < 1 << 17 ? 2 : 5, kind, n, in, out);
}
template <class T>
std::function<void()> unrestricted(FftKind kind, int n, T* in, T* out) {
  static void* const library = dlopen(Calls<T>::shared, RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
  if (library == nullptr) return [] {};
  const auto find = [](auto& f, const char* name) {
    f = reinterpret_cast<std::remove_reference_t<decltype(f)>>(
        dlsym(library, (Calls<T>::prefix + std::string(name)).c_str()));
  };
  Calls<T> calls;
  find(calls.complex, "_plan_dft_1d");
  find(calls.forward, "_plan_dft_r2c_1d");
  find(calls.inverse, "_plan_dft_c2r_1d");
  find(calls.execute, "_execute");
  find(calls.destroy, "_destroy_plan");
  find(calls.limit, "_set_timelimit");
  return planned(calls, 1, kind, n, in, out);
}

template <class T>
void multiply(const T* a, T* b, int pairs, T scale) {
  for (int i = 0; i < 2 * pairs; i += 2) {
    const T re = a[i] * b[i] - a[i + 1] * b[i + 1], im = a[i] * b[i + 1] + a[i + 1] * b[i];
    b[i] = re * scale;
    b[i + 1] = im * scale;
  }
}
template <class T>
std::function<void()> convolution(const FftConv& c, const T* x, const T* y, T* z) {
  using Number = typename Calls<T>::Number;
  const Calls<T> calls;
  calls.limit(6);
  const bool flat = c.rank == 1;
  const int points = c.points, rows = flat ? 1 : points, pairs = rows * (points / 2 + 1);
  const auto array = [&] { return static_cast<T*>(calls.memory(sizeof(T) * static_cast<std::size_t>(2 * pairs))); };
  T *const signal = array(), *const first = array(), *const second = array();
  const auto forward = [&](T* to) {
    Number* const spectrum = reinterpret_cast<Number*>(to);
    return flat ? calls.forward(points, signal, spectrum, FFTW_MEASURE)
                : calls.forward2(rows, points, signal, spectrum, FFTW_MEASURE);
  };
  Number* const product = reinterpret_cast<Number*>(second);
  const auto to_first = forward(first), to_second = forward(second);
  const auto back = flat ? calls.inverse(points, product, signal, FFTW_MEASURE | FFTW_DESTROY_INPUT)
                         : calls.inverse2(rows, points, product, signal, FFTW_MEASURE | FFTW_DESTROY_INPUT);
  const auto pack = [=](const T* from, int n) {
    for (int r = 0; r < rows; ++r) {
      const int there = flat || r < n ? n : 0;
      std::copy(from + r * n, from + r * n + there, signal + r * points);
      std::fill(signal + r * points + there, signal + (r + 1) * points, T(0));
    }
  };
  return [=, execute = calls.execute] {
    const T scale = T(1) / static_cast<T>(points) / static_cast<T>(rows);
    const int block = c.blocks ? points - c.m + 1 : c.n, width = c.n + c.m - 1;
    pack(x, c.m);
    execute(to_first);
    for (int start = 0; start < c.n; start += block) {
      const int n = std::min(block, c.n - start), shared = start == 0 ? 0 : c.m - 1, size = n + c.m - 1;
      pack(y + start, n);
      execute(to_second);
      multiply(first, second, pairs, scale);
      execute(back);
      for (int i = 0; i < shared; ++i) z[start + i] += signal[i];
      for (int r = 0; r < (flat ? 1 : width); ++r) {
        std::copy(signal + r * points + shared, signal + r * points + size, z + r * width + start + shared);
      }
    }
  };
}

const Add here{
    FftConvPeer<double>{"FFTW SSE2", convolution<double>},  FftConvPeer<float>{"FFTW SSE2", convolution<float>},
    FftPeer<double>{"FFTW SSE2", true, restricted<double>}, FftPeer<float>{"FFTW SSE2", true, restricted<float>},
    FftPeer<double>{"FFTW", false, unrestricted<double>},   FftPeer<float>{"FFTW", false, unrestricted<float>}};

}  // namespace
}  // namespace bench
