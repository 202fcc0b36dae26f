// Highway's math functions, compiled for SSSE3 and nothing above it.
#include <hwy/highway.h>
//
#include <hwy/contrib/math/math-inl.h>

#include "harness.h"

static_assert(HWY_STATIC_TARGET == HWY_SSSE3, "another instruction set than the library's would be no peer");

namespace bench {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

template <class T>
using Tag = hn::ScalableTag<T>;

#define QOR_BENCH_MAP(name, function)                                \
  template <class T>                                                 \
  void name(int n, const T* a, T* r, T*) {                           \
    const Tag<T> d;                                                  \
    const int step = static_cast<int>(hn::Lanes(d));                 \
    for (int i = 0; i < n; i += step) hn::Store(function, d, r + i); \
  }
QOR_BENCH_MAP(ln, hn::Log(d, hn::Load(d, a + i)))
QOR_BENCH_MAP(square_root, hn::Sqrt(hn::Load(d, a + i)))
QOR_BENCH_MAP(sine, hn::Sin(d, hn::Load(d, a + i)))
QOR_BENCH_MAP(cosine, hn::Cos(d, hn::Load(d, a + i)))
template <class T>
void sine_and_cosine(int n, const T* a, T* r, T* r2) {
  const Tag<T> d;
  const int step = static_cast<int>(hn::Lanes(d));
  for (int i = 0; i < n; i += step) {
    const auto x = hn::Load(d, a + i);
    hn::Store(hn::Sin(d, x), d, r + i);
    hn::Store(hn::Cos(d, x), d, r2 + i);
  }
}

// No large arguments: they are outside the functions' range.
const Add here{MathPeer<double>{"Ln", "highway", 0.9, ln<double>},
               MathPeer<double>{"Sqrt", "highway", 0.5, square_root<double>},
               MathPeer<double>{"Sin", "highway", 2.7, sine<double>},
               MathPeer<double>{"Cos", "highway", 2.7, cosine<double>},
               MathPeer<double>{"SinCos", "highway sin + cos", 2.7, sine_and_cosine<double>},
               MathPeer<float>{"Ln", "highway", 0.85, ln<float>},
               MathPeer<float>{"Sqrt", "highway", 0.5, square_root<float>},
               MathPeer<float>{"Sin", "highway", 2.2, sine<float>},
               MathPeer<float>{"Cos", "highway", 2.1, cosine<float>},
               MathPeer<float>{"SinCos", "highway sin + cos", 2.2, sine_and_cosine<float>}};

}  // namespace
}  // namespace bench
