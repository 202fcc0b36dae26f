// The C++ library: its Mersenne Twister, with the library's conversion to [0, 1), and its normal distribution.
#include <random>

#include "harness.h"

namespace bench {
namespace {

// Member 0 of the MT2203 family.
using Mt2203 = std::mersenne_twister_engine<std::uint32_t, 32, 69, 34, 5, 0xAF81055F, 12, 0xFFFFFFFF, 7, 0xDD7EEF80, 15,
                                            0xEFD78000, 18, 1812433253>;

template <class Engine>
Engine& engine() {
  static Engine e(1);
  return e;
}
template <class Engine>
void words(int n, std::uint32_t* r) {
  Engine& e = engine<Engine>();
  for (int i = 0; i < n; ++i) r[i] = static_cast<std::uint32_t>(e());
}
template <class Engine, class T>
void uniforms(int n, T* r) {
  Engine& e = engine<Engine>();
  for (int i = 0; i < n; ++i) r[i] = static_cast<T>(e() * 0x1p-32);
}
template <class T>
void normals(int n, T* r) {
  static std::normal_distribution<T> normal;
  std::mt19937& e = engine<std::mt19937>();
  for (int i = 0; i < n; ++i) r[i] = normal(e);
}

const Add here{DrawPeer<std::uint32_t>{"MT19937", "std::mt19937", false, words<std::mt19937>},
               DrawPeer<double>{"MT19937", "std::mt19937", false, uniforms<std::mt19937>},
               DrawPeer<float>{"MT19937", "std::mt19937", false, uniforms<std::mt19937>},
               DrawPeer<std::uint32_t>{"MT2203", "std engine", false, words<Mt2203>},
               DrawPeer<double>{"MT2203", "std engine", false, uniforms<Mt2203>},
               DrawPeer<float>{"MT2203", "std engine", false, uniforms<Mt2203>},
               DrawPeer<double>{"Gaussian", "std", false, normals<double>},
               DrawPeer<float>{"Gaussian", "std", false, normals<float>}};

}  // namespace
}  // namespace bench
