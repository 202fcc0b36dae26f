// The direct drivers: the checks in their order, then the sums.
#pragma once

#include "convolution/checks.h"
#include "convolution/direct.h"
#include "convolution/drivers.def"

namespace qor::convolution {

// T is the type of the sums, D that of the data.
template <Kind kind, class T, class D>
struct Driver : Checked<Driver<kind, T, D>, kind, D> {
  [[gnu::noinline]] static int compute(const Arguments<D>& c) {
    // An operand that needs a copy must fit into memory with it; in place it is there already.
    const auto fits = [&](const int* shape, const int* stride, bool copied) {
      const std::int64_t n = datasize(shape, c.rank);
      copied = copied || !std::is_same_v<T, D> || !is_dense(shape, stride, c.rank, c.rank == 1 ? 0 : 1);
      return n <= std::numeric_limits<int>::max() &&
             (!copied || n <= std::numeric_limits<std::ptrdiff_t>::max() / static_cast<std::ptrdiff_t>(sizeof(T)));
    };
    if (!fits(c.xshape, c.xstride, kind == Kind::convolution || c.rank > 1) || !fits(c.yshape, c.ystride, false) ||
        !fits(c.zshape, c.zstride, false)) {
      return status::no_memory;
    }
    Problem<D> p{c.rank,
                 Array<const D>::at(c.x, c.rank, c.xshape, c.xstride),
                 Array<const D>::at(c.y, c.rank, c.yshape, c.ystride),
                 Array<D>::at(c.z, c.rank, c.zshape, c.zstride),
                 {},
                 {}};
    if constexpr (kind == Kind::convolution) p.a.reverse(c.rank);
    for (int k = 0; k < c.rank; ++k) {
      p.offset[k] = kind == Kind::convolution ? c.start[k] - c.xshape[k] + 1 : c.start[k];
      p.step[k] = c.decimation[k];
    }
    return Direct<T, D>(p).run();
  }
};

// Compiled once, with the entries.
#define DRIVER_ELSEWHERE(Name, kind, Class, D, T)                          \
  extern template struct Checked<Driver<Kind::kind, T, D>, Kind::kind, D>; \
  extern template struct Driver<Kind::kind, T, D>;
CONV_MEMBERS(DRIVER_ELSEWHERE)
#undef DRIVER_ELSEWHERE

}  // namespace qor::convolution
