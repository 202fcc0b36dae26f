#include "convolution/fourier.h"

#include <algorithm>
#include <type_traits>

#include "convolution/primitive.h"
#include "convolution/via_dfti.h"
#include "fft/record.h"

namespace qor::convolution {
namespace {

// n elements in order, converted.
template <class T, class D>
void copy_elements(const Array<const D>& from, T* to) {
  for (int i = 0; i < from.shape[0]; ++i) to[i] = from.origin[i * from.stride[0]];
}

// Rank 1. The operands are used where they are if they can be, and so is z.
template <Kind kind, class T, class D>
int compute_line(const Arguments<D>& c, Kept& kept) {
  constexpr bool same = std::is_same_v<T, D>;
  Array<const D> x = Array<const D>::at(c.x, 1, c.xshape, c.xstride);
  const Array<const D> y = Array<const D>::at(c.y, 1, c.yshape, c.ystride);
  const Array<D> z = Array<D>::at(c.z, 1, c.zshape, c.zstride);
  const int nx = *c.xshape, ny = *c.yshape, nz = *c.zshape;
  if constexpr (kind == Kind::correlation) x.reverse(1);
  const std::int64_t full = std::int64_t{nx} + ny - 1;
  const bool x_copied = !same || x.stride[0] != 1, y_copied = !same || y.stride[0] != 1;
  const bool z_copied = !same || z.stride[0] != 1 || nz != full;
  const Scheme scheme = scheme_of(std::max(nx, ny), std::min(nx, ny));
  // Each part of the work space aligned.
  const auto part = [](std::int64_t n) { return (n * std::int64_t{sizeof(T)} + 63) / 64 * 64; };
  const std::int64_t bytes = part(x_copied ? nx : 0) + part(y_copied ? ny : 0) + part(z_copied ? full : 0);
  const std::size_t own = convolution_work<T>(scheme);
  char* work = nullptr;
  if (bytes != 0 || own != 0) {
    if (bytes > std::numeric_limits<std::ptrdiff_t>::max() - static_cast<std::int64_t>(own)) return status::no_memory;
    if (scheme.order > fft::largest_order) return status::transform_failed;
    work = kept.work(static_cast<std::size_t>(bytes) + own);
    if (work == nullptr) return status::no_memory;
  }
  const auto take = [&](std::int64_t n) {
    T* const p = reinterpret_cast<T*>(work);
    work += part(n);
    return p;
  };
  const numeric::ArithmeticGuard guard;
  const auto operand = [&](const Array<const D>& a, bool copied) -> const T* {
    if constexpr (same) {
      if (!copied) return a.origin;
    }
    T* const to = take(a.shape[0]);
    copy_elements(a, to);
    return to;
  };
  const T *const a = operand(x, x_copied), *const b = operand(y, y_copied);
  if constexpr (same) {
    if (!z_copied) {
      convolve(a, nx, b, ny, z.origin, work);
      return status::ok;
    }
  }
  T* const sums = take(full);
  convolve(a, nx, b, ny, sums, work);
  const std::int64_t first = std::int64_t{*c.start} + (kind == Kind::correlation ? nx - 1 : 0);
  const T* from = sums + first;
  for (int j = 0; j < nz; ++j, from += *c.decimation) z.origin[j * z.stride[0]] = static_cast<D>(*from);
  return status::ok;
}

}  // namespace

template <Kind kind, class T, class D>
int FourierDriver<kind, T, D>::compute(const Arguments<D>& c, Kept& kept) {
  if (c.scalars) return compute_line<kind, T, D>(c, kept);
  for (const int* shape : {c.xshape, c.yshape, c.zshape}) {
    if (datasize(shape, c.rank) > std::numeric_limits<int>::max()) return status::no_memory;
  }
  for (int k = 0; k < c.rank; ++k) {
    if (std::int64_t{c.xshape[k]} + c.yshape[k] - 1 > std::numeric_limits<int>::max()) return status::no_memory;
  }
  Array<const D> x = Array<const D>::at(c.x, c.rank, c.xshape, c.xstride);
  int first[max_rank];
  std::copy(c.start, c.start + c.rank, first);
  if constexpr (kind == Kind::correlation) {
    x.reverse(c.rank);
    for (int k = 0; k < c.rank; ++k) first[k] += c.xshape[k] - 1;
  }
  return basic_cc_via_dfti(c.rank, x, Array<const D>::at(c.y, c.rank, c.yshape, c.ystride),
                           Array<D>::at(c.z, c.rank, c.zshape, c.zstride), first, c.decimation, kept);
}

#define DRIVER(Name, kind, Class, D, T)                                          \
  template struct Checked<FourierDriver<Kind::kind, T, D>, Kind::kind, D, Kept>; \
  template struct FourierDriver<Kind::kind, T, D>;
CONV_MEMBERS(DRIVER)
#undef DRIVER

}  // namespace qor::convolution
