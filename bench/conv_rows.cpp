// Convolution and correlation, full results: direct sums against loops, with the processor's multiply-adds, which bound
// them; whole arrays and Fourier tasks against FFTW, its plans and work space being made before the timing.
#include <cmath>
#include <functional>
#include <initializer_list>
#include <memory>
#include <random>

#include "harness.h"
#include "qor/conv.h"
#include "simd/vec.h"

namespace bench {
namespace {

template <class T>
struct Data {
  int rank, nx[2], ny[2], nz[2], start[2] = {0, 0}, step[2] = {1, 1}, sx[2], sy[2], sz[2];
  bool correlates;
  std::vector<T> x, turned, y, z;  // turned: x backwards, which makes one of convolution and correlation the other
  Data(int rank_, int n, int m, bool correlates_)
      : rank(rank_), nx{m, rank_ == 2 ? m : 1}, ny{n, rank_ == 2 ? n : 1}, correlates(correlates_) {
    for (int k = 0; k < 2; ++k) {
      nz[k] = nx[k] + ny[k] - 1;
      start[k] = correlates ? 1 - nx[k] : 0;
    }
    sx[0] = sy[0] = sz[0] = 1;
    sx[1] = nx[0], sy[1] = ny[0], sz[1] = nz[0];
    std::mt19937 engine(1);
    std::uniform_real_distribution<double> values(-1, 1);
    x.resize(static_cast<std::size_t>(nx[0] * nx[1]));
    y.resize(static_cast<std::size_t>(ny[0] * ny[1]));
    z.resize(static_cast<std::size_t>(nz[0] * nz[1]));
    for (T& v : x) v = static_cast<T>(values(engine));
    for (T& v : y) v = static_cast<T>(values(engine));
    turned.assign(x.rbegin(), x.rend());
  }
  void ours() {
    if constexpr (sizeof(T) == 8) {
      (correlates ? _wxrCorrDDDirectAll_dec : _wxrConvDDDirectAll_dec)(rank, x.data(), nx, sx, y.data(), ny, sy,
                                                                       z.data(), nz, sz, start, step);
    } else {
      (correlates ? _wxrCorrSSDirectAll_dec : _wxrConvSSDirectAll_dec)(rank, x.data(), nx, sx, y.data(), ny, sy,
                                                                       z.data(), nz, sz, start, step);
    }
  }
  void theirs(const ConvPeer<T>& peer) {
    peer.run((correlates ? turned : x).data(), nx[0], nx[1], y.data(), ny[0], ny[1], z.data());
  }
};

template <class T>
void add(std::vector<Work>& works, const char* what, int rank, int n, int m, bool correlates, double target) {
  const auto data = std::make_shared<Data<T>>(rank, n, m, correlates);
  const std::string name = std::string(what) + (sizeof(T) == 8 ? ", double" : ", single");
  Work work{"convolution", name, data->nz[0] * data->nz[1], {}, {}};
  work.contenders.push_back({"direct", 0, true, [data](int) { data->ours(); }});
  for (const ConvPeer<T>& peer : conv_peers<T>()) {
    work.contenders.push_back({peer.name, 0, false, [data, peer](int) { data->theirs(peer); }});
  }
  work.claims.push_back({name, "direct", {"blocked loop"}, no_limit, target, ""});
  work.check = [data]() -> std::string {
    data->ours();
    const std::vector<T> mine = data->z;
    data->theirs(conv_peers<T>().front());
    for (std::size_t i = 0; i < mine.size(); ++i) {
      if (!(std::fabs(mine[i] - data->z[i]) < (sizeof(T) == 8 ? 1e-11 : 1e-3))) return "an output differs";
    }
    return "";
  };
  works.push_back(work);
}

// What plan() returns, called for when it is needed first: planning takes seconds.
template <class T>
std::function<void()> lazily(const FftConvPeer<T>& peer, const FftConv& what, const std::shared_ptr<Data<T>>& data) {
  return [=, run = std::make_shared<std::function<void()>>()] {
    if (!*run) *run = peer.plan(what, data->x.data(), data->y.data(), data->z.data());
    (*run)();
  };
}

// Whole arrays against FFTW with the prescribed transforms (or loops, where direct sums are prescribed), and with four
// times as long ones as a far mark.
template <class T>
void add_whole(std::vector<Work>& works, int n, int m, int points, bool blocks) {
  const auto data = std::make_shared<Data<T>>(1, n, m, false);
  const std::string name =
      "whole arrays " + std::to_string(n) + " * " + std::to_string(m) + (sizeof(T) == 8 ? ", double" : ", single");
  const auto whole = [data] {
    if constexpr (sizeof(T) == 8) {
      qfpsConv_64f(data->x.data(), data->nx[0], data->y.data(), data->ny[0], data->z.data());
    } else {
      qfpsConv_32f(data->x.data(), data->nx[0], data->y.data(), data->ny[0], data->z.data());
    }
  };
  Work work{"convolution", name, data->nz[0], {}, {}};
  work.contenders.push_back({"ours", 0, true, [whole](int) { whole(); }});
  if (points == 0) {
    for (const ConvPeer<T>& peer : conv_peers<T>()) {
      work.contenders.push_back({peer.name, 0, false, [data, peer](int) { data->theirs(peer); }});
    }
  }
  std::function<void()> reference;
  for (const FftConvPeer<T>& peer : fft_conv_peers<T>()) {
    const auto contend = [&](const std::string& called, const FftConv& what) {
      const std::function<void()> run = lazily(peer, what, data);
      if (!reference) reference = run;
      work.contenders.push_back({called, 0, false, [run](int) { run(); }});
    };
    if (points != 0) contend(peer.name, {1, n, m, points, blocks});
    if (blocks) contend(std::string(peer.name) + ", longer blocks", {1, n, m, 4 * points, true});
  }
  work.claims.push_back({name, "ours", {points == 0 ? "blocked loop" : "FFTW SSE2"}, no_limit, 1.15, ""});
  if (!reference) reference = [data] { data->theirs(conv_peers<T>().front()); };
  work.check = [data, whole, reference]() -> std::string {
    whole();
    const std::vector<T> mine = data->z;
    reference();
    for (std::size_t i = 0; i < mine.size(); ++i) {
      if (!(std::fabs(mine[i] - data->z[i]) < (sizeof(T) == 8 ? 1e-11 : 1e-2))) return "an output differs";
    }
    return "";
  };
  works.push_back(work);
}

// A Fourier task of rank 2, executed again and again, against FFTW's transforms of good lengths.
template <class T>
void add_planes(std::vector<Work>& works, int n, int m, std::initializer_list<int> points) {
  const auto data = std::make_shared<Data<T>>(2, n, m, false);
  const std::string name = "Fourier task " + std::to_string(n) + "^2 * " + std::to_string(m) + "^2" +
                           (sizeof(T) == 8 ? ", double" : ", single");
  Work work{"convolution", name, data->nz[0] * data->nz[1], {}, {}};
  qor_conv_task* task = nullptr;
  __wxrNewTask(&task, 1, 0, 2, 0, sizeof(T) == 8 ? 2 : 1, 2, data->nx, data->ny, data->nz);
  if constexpr (sizeof(T) == 4) {  // transforms compute in double in any case
    const int single = 1;
    __wxrEditTask(task, 9, &single);
  }
  work.contenders.push_back({"ours", 0, true, [data, task](int) {
                               __wxrExec(task, data->x.data(), nullptr, data->y.data(), nullptr, data->z.data(),
                                         nullptr);
                             }});
  for (const FftConvPeer<T>& peer : fft_conv_peers<T>()) {
    for (const int size : points) {
      const std::function<void()> run = lazily<T>(peer, {2, n, m, size, false}, data);
      work.contenders.push_back({std::string(peer.name) + " " + std::to_string(size), 0, false, [run](int) { run(); }});
    }
  }
  work.claims.push_back({name, "ours", {}, no_limit, 1, ""});
  works.push_back(work);
}

// As many multiplications as additions, from registers to registers: sums of six vectors, as in the library's loops.
template <class T>
void multiply_adds(int n) {
  namespace simd = qor::simd;
  using V = simd::Vec<T>;
  V sum[6] = {}, factor = simd::splat<V>(T(1));
  for (int i = 0; i < n; i += 6 * simd::lanes<V>) {
#pragma GCC unroll 6
    for (int k = 0; k < 6; ++k) {
      V product = factor;
      asm volatile("" : "+x"(product));
      sum[k] += product * factor;
    }
  }
  for (V& s : sum) asm volatile("" : : "x"(s));
}
template <class T>
void add_limit(std::vector<Work>& works, const char* name) {
  constexpr int pairs = 48000;
  works.push_back({"convolution",
                   name,
                   pairs,
                   {{"limit", 0, false, [](int n) { multiply_adds<T>(n); }}},
                   {{name, "", {}, no_limit, 0, ""}}});
}

}  // namespace

void add_conv_rows(std::vector<Work>& works) {
  add_limit<double>(works, "limit: multiply and add, double");
  add_limit<float>(works, "limit: multiply and add, single");
  add<double>(works, "convolution 4096 * 512", 1, 4096, 512, false, 1);
  add<float>(works, "convolution 4096 * 512", 1, 4096, 512, false, 1);
  add<double>(works, "correlation 4096 * 512", 1, 4096, 512, true, 1);
  add<float>(works, "correlation 4096 * 512", 1, 4096, 512, true, 1);
  add<double>(works, "convolution 100 * 63", 1, 100, 63, false, 1);
  add<float>(works, "convolution 100 * 63", 1, 100, 63, false, 1);
  add<double>(works, "convolution 64^2 * 7^2", 2, 64, 7, false, 1.5);
  add<float>(works, "convolution 64^2 * 7^2", 2, 64, 7, false, 1.5);
  add<double>(works, "convolution 512^2 * 31^2", 2, 512, 31, false, 1);
  add<float>(works, "convolution 512^2 * 31^2", 2, 512, 31, false, 1);
  const struct {
    int n, m, points;
    bool blocks;
  } pairs[] = {{100, 63, 0, false},     {1000, 64, 128, true},      {300, 300, 1024, false},
               {4096, 512, 1024, true}, {100000, 1000, 2048, true}, {1048576, 4096, 8192, true}};
  for (const auto& p : pairs) {
    add_whole<double>(works, p.n, p.m, p.points, p.blocks);
    add_whole<float>(works, p.n, p.m, p.points, p.blocks);
  }
  add_planes<double>(works, 64, 7, {70, 72});
  add_planes<float>(works, 64, 7, {70, 72});
  add_planes<double>(works, 512, 31, {560, 576});
  add_planes<float>(works, 512, 31, {560, 576});
}

}  // namespace bench
