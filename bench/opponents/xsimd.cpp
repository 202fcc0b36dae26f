// xsimd's functions on its SSSE3 batches.
#include <xsimd/xsimd.hpp>

#include "harness.h"

static_assert(std::is_same_v<xsimd::default_arch, xsimd::ssse3>, "another instruction set would be no peer");

namespace bench {
namespace {

template <class T>
using V = xsimd::batch<T, xsimd::ssse3>;

#define QOR_BENCH_MAP(name, function)                           \
  template <class T>                                            \
  void name(int n, const T* a, T* r, T*) {                      \
    for (int i = 0; i < n; i += static_cast<int>(V<T>::size))   \
      function(V<T>::load_aligned(a + i)).store_aligned(r + i); \
  }
QOR_BENCH_MAP(ln, xsimd::log)
QOR_BENCH_MAP(square_root, xsimd::sqrt)
QOR_BENCH_MAP(sine, xsimd::sin)
QOR_BENCH_MAP(cosine, xsimd::cos)
template <class T>
void sine_and_cosine(int n, const T* a, T* r, T* r2) {
  for (int i = 0; i < n; i += static_cast<int>(V<T>::size)) {
    const auto v = xsimd::sincos(V<T>::load_aligned(a + i));
    v.first.store_aligned(r + i);
    v.second.store_aligned(r2 + i);
  }
}

const Add here{MathPeer<double>{"Ln", "xsimd", 0.8, ln<double>},
               MathPeer<double>{"Sqrt", "xsimd", 0.5, square_root<double>},
               MathPeer<double>{"Sin", "xsimd", 12.05, sine<double>},
               MathPeer<double>{"Cos", "xsimd", 16.35, cosine<double>},
               MathPeer<double>{"SinCos", "xsimd", 16.35, sine_and_cosine<double>},
               MathPeer<double>{"Sin large", "xsimd", 2.35, sine<double>},
               MathPeer<float>{"Ln", "xsimd", 0.8, ln<float>},
               MathPeer<float>{"Sqrt", "xsimd", 0.5, square_root<float>},
               MathPeer<float>{"Sin", "xsimd", 1.6, sine<float>},
               MathPeer<float>{"Cos", "xsimd", 1.5, cosine<float>},
               MathPeer<float>{"SinCos", "xsimd", 1.6, sine_and_cosine<float>},
               MathPeer<float>{"Sin large", "xsimd", 1.6, sine<float>}};

}  // namespace
}  // namespace bench
