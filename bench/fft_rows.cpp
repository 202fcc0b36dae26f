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

// The arrays of all rows, and what does one row's transforms: it is made when the row is first called and goes when the
// next one is. As callers who care for speed have them, arrays are aligned; inputs lie half a page from outputs (see
// Buffer in harness.h).
template <class T>
T* array(int place) {
  constexpr std::size_t elements = 2 * (std::size_t{1} << last_order) + 64, page = 4096;
  static char* const memory =
      static_cast<char*>(std::aligned_alloc(page, 3 * (elements * sizeof(T) / page + 2) * page));
  return reinterpret_cast<T*>(memory + (place == at_outputs ? 0 : (elements * sizeof(T) / page + 2) * page) + place);
}
template <class T>
struct Job {
  FftKind kind;
  int n;
  std::function<void()> runs[3];

  void prepare(std::size_t who, std::function<void()> (*plan)(FftKind, int, T*, T*)) {
    static Job* current = nullptr;
    if (current != this) {
      if (current != nullptr) {
        for (auto& run : current->runs) run = nullptr;
      }
      current = this;
    }
    T *const in = array<T>(at_inputs), *const out = array<T>(at_outputs);
    runs[who] = plan(kind, n, in, out);
    unsigned word = 1;
    for (T* x = in; x < in + 2 * n + 2; ++x)
      *x = static_cast<T>((word = word * 69069u + 1u) >> 8) / static_cast<T>(1 << 24) - T(0.5);
  }
};

std::function<void()> ours(FftKind kind, int n, double* in, double* out);
std::function<void()> ours(FftKind kind, int n, float* in, float* out);
#define FFT_OURS(T, real, complex)                                                               \
  std::function<void()> ours(FftKind kind, int n, T* in, T* out) {                               \
    int bytes = 0;                                                                               \
    if (kind == FftKind::complex_forward) {                                                      \
      qfpsDFTSpec_C_##complex* spec = nullptr;                                                   \
      qfpsDFTInitAlloc_C_##complex(&spec, n, QFPS_NO_SCALING, 0);                                \
      qfpsDFTGetBufSize_C_##complex(spec, &bytes);                                               \
      const std::shared_ptr<unsigned char> buffer(qfpsMalloc_8u(bytes), qfpsFree);               \
      const std::shared_ptr<void> owner(spec, [spec](void*) { qfpsDFTFree_C_##complex(spec); }); \
      return [=, keep = owner] { qfpsDFTFwd_CToC_##complex(in, out, spec, buffer.get()); };      \
    }                                                                                            \
    int order = 0;                                                                               \
    while (1 << order < n) ++order;                                                              \
    qfpsFFTSpec_R_##real* spec = nullptr;                                                        \
    qfpsFFTInitAlloc_R_##real(&spec, order, QFPS_NO_SCALING, 0);                                 \
    qfpsFFTGetBufSize_R_##real(spec, &bytes);                                                    \
    const std::shared_ptr<unsigned char> buffer(qfpsMalloc_8u(bytes), qfpsFree);                 \
    const std::shared_ptr<void> owner(spec, [spec](void*) { qfpsFFTFree_R_##real(spec); });      \
    if (kind == FftKind::real_forward)                                                           \
      return [=, keep = owner] { qfpsFFTFwd_RToPerm_##real(in, out, spec, buffer.get()); };      \
    return [=, keep = owner] { qfpsFFTInv_PermToR_##real(in, out, spec, buffer.get()); };        \
  }
FFT_OURS(double, 64f, 64fc)
FFT_OURS(float, 32f, 32fc)
#undef FFT_OURS

template <class T>
void add(std::vector<Work>& works, const std::string& name, FftKind kind, int n, double target) {
  const double levels = std::log2(static_cast<double>(n));
  Work work{"fft", name + (sizeof(T) == 8 ? " double" : " single"), n, {}, {}};
  work.most_rounds = n < 1 << large_order ? 61 : n < 1 << 20 ? 21 : 9;
  work.flops = (kind == FftKind::complex_forward ? 5 : 2.5) * levels;
  const auto job = std::make_shared<Job<T>>(Job<T>{kind, n, {}});
  const auto contend = [&](const char* contender, bool is_ours, bool apart, auto plan) {
    const std::size_t who = work.contenders.size();
    work.contenders.push_back({contender, 0, is_ours,
                               [job, plan, who](int) {
                                 if (!job->runs[who]) job->prepare(who, plan);
                                 job->runs[who]();
                               },
                               apart});
  };
  contend("qor", true, false, [](FftKind k, int m, T* in, T* out) { return ours(k, m, in, out); });
  for (const FftPeer<T>& peer : fft_peers<T>()) {
    contend(peer.name, false, !peer.in_class, peer.plan);
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
