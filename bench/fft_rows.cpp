// Transforms: powers of two, real and complex, and complex ones of other lengths. The bar is FFTW with SSE2, the far
// mark FFTW with whatever the processor has. Nominal counts: 2.5 n log2 n operations for real and 5 n log2 n for
// complex ones.
#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>

#include "harness.h"
#include "qor/fft.h"

namespace bench {
namespace {

constexpr int first_order = 4, last_order = 22, large_order = 17;
const int lengths[] = {6,   9,    12,   15,   21,   30,   60,   97,    105,   210,
                       360, 1000, 1009, 1260, 2187, 3125, 5040, 10007, 44100, 100000};

// The arrays and the ways of one row, made when it is first called.
template <class T>
struct Job {
  FftKind kind;
  int n;
  T *in = nullptr, *out = nullptr;  // aligned, as callers who care for speed have them
  std::size_t size() const { return 2 * static_cast<std::size_t>(n) + 2; }
  void prepare() {
    if (in != nullptr) return;
    const std::size_t bytes = (size() * sizeof(T) + 63) / 64 * 64;
    in = static_cast<T*>(std::aligned_alloc(64, bytes));
    out = static_cast<T*>(std::aligned_alloc(64, bytes));
  }
  void fill() {
    unsigned word = 1;
    for (T* x = in; x < in + size(); ++x)
      *x = static_cast<T>((word = word * 69069u + 1u) >> 8) / static_cast<T>(1 << 24) - T(0.5);
  }
};

std::function<void()> ours(FftKind kind, int n, double* in, double* out);
std::function<void()> ours(FftKind kind, int n, float* in, float* out);
#define FFT_OURS(T, real, complex)                                                                       \
  std::function<void()> ours(FftKind kind, int n, T* in, T* out) {                                       \
    int bytes = 0;                                                                                       \
    if (kind == FftKind::complex_forward) {                                                              \
      qfpsDFTSpec_C_##complex* spec = nullptr;                                                           \
      qfpsDFTInitAlloc_C_##complex(&spec, n, QFPS_NO_SCALING, 0);                                        \
      qfpsDFTGetBufSize_C_##complex(spec, &bytes);                                                       \
      unsigned char* const buffer = qfpsMalloc_8u(bytes);                                                \
      return [=] { qfpsDFTFwd_CToC_##complex(in, out, spec, buffer); };                                  \
    }                                                                                                    \
    int order = 0;                                                                                       \
    while (1 << order < n) ++order;                                                                      \
    qfpsFFTSpec_R_##real* spec = nullptr;                                                                \
    qfpsFFTInitAlloc_R_##real(&spec, order, QFPS_NO_SCALING, 0);                                         \
    qfpsFFTGetBufSize_R_##real(spec, &bytes);                                                            \
    unsigned char* const buffer = qfpsMalloc_8u(bytes);                                                  \
    if (kind == FftKind::real_forward) return [=] { qfpsFFTFwd_RToPerm_##real(in, out, spec, buffer); }; \
    return [=] { qfpsFFTInv_PermToR_##real(in, out, spec, buffer); };                                    \
  }
FFT_OURS(double, 64f, 64fc)
FFT_OURS(float, 32f, 32fc)
#undef FFT_OURS

template <class T>
void add(std::vector<Work>& works, const std::string& name, FftKind kind, int n, double target) {
  const double levels = std::log2(static_cast<double>(n));
  Work work{"fft", name + (sizeof(T) == 8 ? " double" : " single"), n, {}, {}};
  work.flops = (kind == FftKind::complex_forward ? 5 : 2.5) * levels;
  const auto job = std::make_shared<Job<T>>(Job<T>{kind, n});
  const auto contend = [&](const char* contender, bool is_ours, auto plan) {
    work.contenders.push_back({contender, 0, is_ours, [job, plan, run = std::function<void()>()](int) mutable {
                                 if (!run) {
                                   job->prepare();
                                   run = plan(job->kind, job->n, job->in, job->out);
                                   job->fill();
                                 }
                                 run();
                               }});
  };
  contend("qor", true, [](FftKind k, int m, T* in, T* out) { return ours(k, m, in, out); });
  for (const FftPeer<T>& peer : fft_peers<T>()) {
    contend(peer.name, false, peer.plan);
    work.claims.push_back(
        {work.name, "qor", {peer.name}, no_limit, peer.in_class ? target : 0, peer.in_class ? "" : "far mark"});
  }
  works.push_back(work);
}

template <class T>
void add_all(std::vector<Work>& works) {
  for (int order = first_order; order <= last_order; ++order) {
    const std::string text = std::to_string(order);
    const double target = order < large_order ? 0.9 : 1.3;
    add<T>(works, "fft real forward " + text, FftKind::real_forward, 1 << order, target);
    add<T>(works, "fft real inverse " + text, FftKind::real_inverse, 1 << order, target);
    add<T>(works, "fft complex " + text, FftKind::complex_forward, 1 << order, target);
  }
  for (const int n : lengths) add<T>(works, "dft complex n = " + std::to_string(n), FftKind::complex_forward, n, 0.7);
}

}  // namespace

void add_fft_rows(std::vector<Work>& works) {
  add_all<double>(works);
  add_all<float>(works);
}

}  // namespace bench
