// Direct convolution and correlation: full results, against loops; and the processor's multiply-adds, which bound them.
#include <cmath>
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
}

}  // namespace bench
