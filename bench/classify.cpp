// The largest error of each peer, in units in the last place of the exact result, on a dense sample of its item's
// range: even steps, and the neighbours of the multiples of pi/2, where sine and cosine are small. The exact results
// are those of the accuracy sweeps.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>
#include <vector>

#include "harness.h"
#include "tfn/sweep.h"

namespace bench {
namespace {

struct PeerError {
  const char *item, *precision, *peer;
  double ulp;
};
constexpr PeerError peer_errors[] = {
#include "peer_errors.inc"
};

constexpr int size = 96000;  // of a block of the sample; each block is shifted against the others

template <class T>
using Wide = typename qor::test::Wider<T>::type;

template <class T>
void fill(const MathItem& item, int blocks, int number, T* a, T* b) {
  std::mt19937 random(static_cast<unsigned>(number));
  for (int i = 0; i < size; ++i) {
    a[i] = static_cast<T>(sample(item.a, (i + (number + 0.5) / blocks) / size));
    b[i] = static_cast<T>(sample(item.b, random() * 0x1p-32));
  }
  if (number != 0 || item.a.spacing != Range::even || item.a.to != 30) return;
  for (int k = -19, i = 0; k <= 19; ++k) {
    T near = static_cast<T>(k * 1.5707963267948966);
    for (int step = 0; step < 8; ++step) near = std::nextafter(near, T(-100));
    for (int step = 0; step < 16; ++step, near = std::nextafter(near, T(100))) a[i++] = near;
  }
}

// What the sweeps hold a function against; SinCos has two exact results.
template <class T>
Wide<T> (*exact_of(const std::string& function, bool second))(Wide<T>, Wide<T>) {
  for (const auto& m : qor::test::members<T>()) {
    if (function == "SinCos" ? m.function == (second ? "Cos" : "Sin") : m.function == function) return m.exact;
  }
  return nullptr;
}

template <class T>
void classify(const std::string& filter, const char* precision) {
  static Buffer<T, at_inputs> a, b;
  constexpr int blocks = sizeof(T) == 8 ? 2 : 10;
  for (const MathItem& item : math_items) {
    const std::string name = std::string(item.name) + " " + precision;
    const auto exact = exact_of<T>(item.function, false);
    if (name.find(filter) == std::string::npos || exact == nullptr) continue;
    const auto exact2 = std::strcmp(item.function, "SinCos") == 0 ? exact_of<T>("SinCos", true) : nullptr;
    const std::vector<MathPeer<T>> peers = peers_of<T>(item);
    std::vector<double> largest(peers.size());
    for (int number = 0; number < blocks; ++number) {
      fill(item, blocks, number, a.data, b.data);
      std::vector<Wide<T>> want, want2;
      for (int i = 0; i < size; ++i) {
        want.push_back(exact(a.data[i], b.data[i]));
        if (exact2 != nullptr) want2.push_back(exact2(a.data[i], b.data[i]));
      }
      for (std::size_t p = 0; p < peers.size(); ++p) {
        peers[p].run(size, a.data, b.data, output<T>(), second_output<T>());
        for (int i = 0; i < size; ++i) {
          const auto at = static_cast<std::size_t>(i);
          largest[p] = std::max(largest[p], qor::test::ulps(output<T>()[i], want[at]));
          if (exact2 != nullptr) largest[p] = std::max(largest[p], qor::test::ulps(second_output<T>()[i], want2[at]));
        }
      }
    }
    for (std::size_t p = 0; p < peers.size(); ++p) {
      std::printf("{\"%s\", \"%s\", \"%s\", %.3g},\n", item.name, precision, peers[p].name, std::fmin(largest[p], 1e9));
    }
    std::fflush(stdout);
  }
}

}  // namespace

void classify(const std::string& filter) {
  classify<double>(filter, "double");
  classify<float>(filter, "single");
}

double peer_error(const std::string& item, const std::string& precision, const std::string& peer) {
  for (const PeerError& e : peer_errors) {
    if (item == e.item && precision == e.precision && peer == e.peer) return e.ulp;
  }
  return no_limit;  // not measured: in no class
}

}  // namespace bench
