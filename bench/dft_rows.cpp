// Transforms of two and three dimensions, complex and real, out of place, on one thread and on two; and what two threads
// gain. The bar is FFTW with SSE2 on as many threads.
#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>

#include "harness.h"
#include "qor/dft.h"

namespace bench {
namespace {

template <class T>
struct Job {
  FftKind kind;
  std::vector<int> n;
  T *in = nullptr, *out = nullptr;
  std::size_t size() const {  // in complex numbers, rows with room for half-spectra
    std::size_t points = 1;
    for (const int length : n) points *= static_cast<std::size_t>(length);
    return points + points / static_cast<std::size_t>(n.back());
  }
  void prepare() {
    if (in != nullptr) return;
    const std::size_t bytes = (2 * size() * sizeof(T) + 63) / 64 * 64;
    in = static_cast<T*>(std::aligned_alloc(64, bytes));
    out = static_cast<T*>(std::aligned_alloc(64, bytes));
  }
  // Planning destroys what is in the arrays. Zeros are as fast as anything else, and stay finite.
  void fill() const { std::fill(in, in + 2 * size(), T(0)); }
};

template <class T>
std::function<void()> ours(FftKind kind, const std::vector<int>& n, int threads, T* in, T* out) {
  qor_dft_descriptor* d = nullptr;
  const int apart = QOR_DFT_OUT_OF_PLACE;
  qor_dft_zx9_create_descriptor_external(&d, sizeof(T) == 8 ? QOR_DFT_DOUBLE : QOR_DFT_SINGLE,
                                         kind == FftKind::complex_forward ? QOR_DFT_COMPLEX : QOR_DFT_REAL,
                                         static_cast<int>(n.size()), n.data());
  qor_dft_zx9_set_value_external(d, QOR_DFT_PLACEMENT, &apart);
  qor_dft_zx9_set_value_external(d, QOR_DFT_THREAD_LIMIT, &threads);
  qor_dft_zx9_commit_descriptor_external(d);
  if (kind == FftKind::real_inverse) return [=] { qor_dft_zx9_compute_backward_external(d, in, out); };
  return [=] { qor_dft_zx9_compute_forward_external(d, in, out); };
}

template <class T>
void add(std::vector<Work>& works, FftKind kind, int length, int rank) {
  const char* const kinds[] = {"real forward", "real inverse", "complex"};
  std::string name = std::string("dft ") + kinds[static_cast<int>(kind)] + " " + std::to_string(length);
  for (int d = 1; d < rank; ++d) name += " x " + std::to_string(length);
  const int points = static_cast<int>(std::pow(length, rank) + 0.5);
  Work work{"dft", name + (sizeof(T) == 8 ? " double" : " single"), points, {}, {}};
  work.flops = (kind == FftKind::complex_forward ? 5 : 2.5) * std::log2(static_cast<double>(points));
  const auto job = std::make_shared<Job<T>>(Job<T>{kind, std::vector<int>(static_cast<std::size_t>(rank), length)});
  const auto contend = [&](const std::string& contender, bool is_ours, int threads, auto plan) {
    work.contenders.push_back({contender, 0, is_ours, [job, plan, threads, run = std::function<void()>()](int) mutable {
                                 if (!run) {
                                   job->prepare();
                                   run = plan(job->kind, job->n, threads, job->in, job->out);
                                   job->fill();
                                 }
                                 run();
                               }});
  };
  for (const int threads : {1, 2}) {
    const std::string on = threads == 1 ? "" : ", 2 threads";
    contend("qor" + on, true, threads, ours<T>);
    for (const DftPeer<T>& peer : dft_peers<T>()) {
      contend(peer.name + on, false, threads, peer.plan);
      work.claims.push_back(
          {work.name + on, "qor" + on, {peer.name + on}, no_limit, 1.1, "", "transforms of several dimensions" + on});
    }
  }
  if (points >= 512 * 512) {
    work.claims.push_back({work.name + ", the second thread", "qor, 2 threads", {"qor"}, no_limit, 1.7, ""});
  }
  works.push_back(work);
}

template <class T>
void add_all(std::vector<Work>& works) {
  for (const FftKind kind : {FftKind::complex_forward, FftKind::real_forward, FftKind::real_inverse}) {
    for (int n = 64; n <= 2048; n *= 2) add<T>(works, kind, n, 2);
    for (int n = 16; n <= 256; n *= 2) add<T>(works, kind, n, 3);
  }
}

}  // namespace

void add_dft_rows(std::vector<Work>& works) {
  setenv("QOR_SERIAL", "NO", 0);  // as if the caller had asked for threads
  add_all<double>(works);
  add_all<float>(works);
}

}  // namespace bench
