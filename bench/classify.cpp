// The largest error of each peer, in units in the last place of the exact result, on a dense sample of its function's
// range: even steps, and the neighbours of the multiples of pi/2, where sine and cosine are small. The exact result is
// libquadmath's for doubles and that of the C library's double functions for singles.
#include <quadmath.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include "harness.h"
#include "table.h"

namespace bench {
namespace {

template <class T>
struct Wide;
template <>
struct Wide<double> {
  using type = __float128;
  static type ln(type x) { return logq(x); }
  static type square_root(type x) { return sqrtq(x); }
  static type sine(type x) { return sinq(x); }
  static type cosine(type x) { return cosq(x); }
};
template <>
struct Wide<float> {
  using type = double;
  static type ln(type x) { return std::log(x); }
  static type square_root(type x) { return std::sqrt(x); }
  static type sine(type x) { return std::sin(x); }
  static type cosine(type x) { return std::cos(x); }
};
template <class T>
using wide = typename Wide<T>::type;

constexpr int steps = 96000;  // a block of the sample; each block is shifted against the others
constexpr int blocks = 10;

template <class T>
std::vector<T> block(const Range& range, int number) {
  std::vector<T> x;
  for (int i = 0; i < steps; ++i) x.push_back(sample<T>(range, (i + (number + 0.5) / blocks) / steps));
  if (number == 0 && range.spacing == Range::even) {
    for (int k = -19; k <= 19; ++k) {
      T near = static_cast<T>(k * 1.5707963267948966);
      for (int i = 0; i < 8; ++i) near = std::nextafter(near, T(-100));
      for (int i = 0; i < 16; ++i, near = std::nextafter(near, T(100))) x.push_back(near);
    }
  }
  while (x.size() % 8 != 0) x.push_back(x.back());
  return x;
}

template <class T>
wide<T> exact(const char* function, wide<T> x, bool second) {
  if (std::strcmp(function, "Ln") == 0) return Wide<T>::ln(x);
  if (std::strcmp(function, "Sqrt") == 0) return Wide<T>::square_root(x);
  if (std::strcmp(function, "Cos") == 0 || second) return Wide<T>::cosine(x);
  return Wide<T>::sine(x);
}

template <class T>
double ulps(T got, wide<T> want) {
  const T near = static_cast<T>(want);
  if (got == near && near == want) return 0;
  if (!std::isfinite(got)) return 1e9;
  const T up = std::nextafter(std::abs(near), std::numeric_limits<T>::infinity());
  const double error = static_cast<double>(static_cast<wide<T>>(got) - want);
  return std::abs(error) / static_cast<double>(up - std::abs(near));
}

struct Worst {
  double ulp = 0, at = 0;
};

template <class T>
std::vector<Worst> worst_of(const Range& range, const std::vector<MathPeer<T>>& peers) {
  const bool two = std::strcmp(range.function, "SinCos") == 0;
  std::vector<Worst> worst(peers.size());
  for (int b = 0; b < blocks; ++b) {
    const std::vector<T> x = block<T>(range, b);
    static Buffer<T, at_inputs> in;
    std::copy(x.begin(), x.end(), in.data);
    std::vector<wide<T>> want, want2;
    for (const T v : x) want.push_back(exact<T>(range.function, v, false));
    if (two) {
      for (const T v : x) want2.push_back(exact<T>(range.function, v, true));
    }
    for (std::size_t p = 0; p < peers.size(); ++p) {
      peers[p].run(static_cast<int>(x.size()), in.data, output<T>(), second_output<T>());
      for (std::size_t i = 0; i < x.size(); ++i) {
        double error = ulps<T>(output<T>()[i], want[i]);
        if (two) error = std::max(error, ulps<T>(second_output<T>()[i], want2[i]));
        if (error > worst[p].ulp) worst[p] = {error, static_cast<double>(x[i])};
      }
    }
  }
  return worst;
}

int class_of(double ulp) { return ulp <= 1.05 ? 1 : ulp <= 4 ? 2 : 3; }

template <class T>
bool classify(const std::string& filter, const char* precision) {
  bool right = true;
  Table table({"work", "peer", "largest error, ulp", "at", "stated", ""}, false);
  for (const Range& range : math_ranges) {
    const std::string name = std::string(range.function) + " " + precision;
    if (name.find(filter) == std::string::npos) continue;
    std::vector<MathPeer<T>> peers;
    for (const MathPeer<T>& peer : math_peers<T>()) {
      if (std::strcmp(peer.function, range.function) == 0) peers.push_back(peer);
    }
    const std::vector<Worst> worst = worst_of<T>(range, peers);
    for (std::size_t p = 0; p < peers.size(); ++p) {
      const bool same = class_of(worst[p].ulp) == class_of(peers[p].ulp) && worst[p].ulp <= peers[p].ulp + 1e-3;
      right = right && same;
      char ulp[40], at[40], stated[40];
      std::snprintf(ulp, sizeof ulp, "%.4g", worst[p].ulp);
      std::snprintf(at, sizeof at, "%.9g", worst[p].at);
      std::snprintf(stated, sizeof stated, "%.4g", peers[p].ulp);
      table.add({name, peers[p].name, ulp, at, stated, same ? "" : "differs"});
    }
  }
  table.print();
  return right;
}

}  // namespace

bool classify(const std::string& filter) {
  const bool doubles = classify<double>(filter, "double"), singles = classify<float>(filter, "single");
  return doubles && singles;
}

}  // namespace bench
