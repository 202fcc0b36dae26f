// The C++ library: its Mersenne Twister, with the library's conversion to [0, 1), and its normal distribution.
#include <random>

#include "harness.h"

namespace bench {
namespace {

std::mt19937& engine() {
  static std::mt19937 e(1);
  return e;
}
void words(int n, std::uint32_t* r) {
  std::mt19937& e = engine();
  for (int i = 0; i < n; ++i) r[i] = e();
}
template <class T>
void uniforms(int n, T* r) {
  std::mt19937& e = engine();
  for (int i = 0; i < n; ++i) r[i] = static_cast<T>(e() * 0x1p-32);
}
template <class T>
void normals(int n, T* r) {
  static std::normal_distribution<T> normal;
  std::mt19937& e = engine();
  for (int i = 0; i < n; ++i) r[i] = normal(e);
}

const Add here{DrawPeer<std::uint32_t>{"MT19937", "std::mt19937", false, words},
               DrawPeer<double>{"MT19937", "std::mt19937", false, uniforms<double>},
               DrawPeer<float>{"MT19937", "std::mt19937", false, uniforms<float>},
               DrawPeer<double>{"Gaussian", "std", false, normals<double>},
               DrawPeer<float>{"Gaussian", "std", false, normals<float>}};

}  // namespace
}  // namespace bench
