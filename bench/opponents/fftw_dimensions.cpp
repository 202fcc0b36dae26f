// FFTW with SSE2 (fftw.cpp), transforms of several dimensions, on POSIX threads. Plans are measured for 2 seconds at most
// and what was found is kept for the next plan.
#include <fftw3.h>

#include "harness.h"

namespace bench {
namespace {

#define FFTW_DIMENSIONS(T, X)                                                                                 \
  std::function<void()> planned(FftKind kind, const std::vector<int>& n, int threads, T* in, T* out) {        \
    static const int ready = X##_init_threads();                                                              \
    const auto pairs = [](T* p) { return reinterpret_cast<X##_complex*>(p); };                                \
    const int rank = static_cast<int>(n.size());                                                              \
    if (ready != 0) X##_plan_with_nthreads(threads);                                                          \
    X##_set_timelimit(2);                                                                                     \
    X##_plan plan = nullptr;                                                                                  \
    if (kind == FftKind::complex_forward)                                                                     \
      plan = X##_plan_dft(rank, n.data(), pairs(in), pairs(out), FFTW_FORWARD, FFTW_MEASURE);                 \
    if (kind == FftKind::real_forward) plan = X##_plan_dft_r2c(rank, n.data(), in, pairs(out), FFTW_MEASURE); \
    if (kind == FftKind::real_inverse) plan = X##_plan_dft_c2r(rank, n.data(), pairs(in), out, FFTW_MEASURE); \
    return [plan] { X##_execute(plan); };                                                                     \
  }
FFTW_DIMENSIONS(double, fftw)
FFTW_DIMENSIONS(float, fftwf)
#undef FFTW_DIMENSIONS

const Add here{DftPeer<double>{"FFTW SSE2", planned}, DftPeer<float>{"FFTW SSE2", planned}};

}  // namespace
}  // namespace bench
