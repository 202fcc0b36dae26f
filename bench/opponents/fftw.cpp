// FFTW, planned with FFTW_MEASURE. "FFTW SSE2" is the static library, told that there is no AVX: the function that asks
// the processor is ours. "FFTW" is the shared library as it comes. What is learnt planning one transform serves the next
// ones; a plan may take some seconds, which is enough for all but the largest.
#include <dlfcn.h>
#include <fftw3.h>

#include <cstdio>
#include <memory>

#include "harness.h"

extern "C" int fftw_have_simd_avx() { return 0; }
extern "C" int fftwf_have_simd_avx() { return 0; }

namespace bench {
namespace {

template <class T>
struct Calls;
#define FFTW_CALLS(T, X, library, file)                           \
  template <>                                                     \
  struct Calls<T> {                                               \
    static constexpr const char* shared = file;                   \
    static constexpr const char* prefix = #X;                     \
    using Plan = X##_plan;                                        \
    using Number = X##_complex;                                   \
    decltype(&X##_plan_dft_1d) complex = X##_plan_dft_1d;         \
    decltype(&X##_plan_dft_r2c_1d) forward = X##_plan_dft_r2c_1d; \
    decltype(&X##_plan_dft_c2r_1d) inverse = X##_plan_dft_c2r_1d; \
    decltype(&X##_execute) execute = X##_execute;                 \
    decltype(&X##_destroy_plan) destroy = X##_destroy_plan;       \
    decltype(&X##_set_timelimit) limit = X##_set_timelimit;       \
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

const Add here{
    FftPeer<double>{"FFTW SSE2", true, restricted<double>}, FftPeer<float>{"FFTW SSE2", true, restricted<float>},
    FftPeer<double>{"FFTW", false, unrestricted<double>}, FftPeer<float>{"FFTW", false, unrestricted<float>}};

}  // namespace
}  // namespace bench
