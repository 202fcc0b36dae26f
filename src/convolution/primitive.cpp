#include "convolution/primitive.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "convolution/block.h"
#include "fft/memory.h"
#include "fft/negacyclic.h"
#include "fft/record.h"

namespace qor::convolution {
namespace {

constexpr int least_result = 512, least_shorter = 64, piece = 4096, block_ratio = 3;
constexpr int tile_taps = 256, tile_outputs = 1024;  // of a direct sum, on the stack

template <class T>
bool all_finite(const T* p, int n) {
  using V = simd::Vec<T>;
  constexpr int L = simd::lanes<V>;
  V nothing[4] = {};
  int i = 0;
  for (; i + 4 * L <= n; i += 4 * L) {
    for (int k = 0; k < 4; ++k) {
      const V v = simd::load<V>(p + i + k * L);
      nothing[k] += v - v;
    }
  }
  const V sum = (nothing[0] + nothing[1]) + (nothing[2] + nothing[3]);
  T rest = 0;
  for (int k = 0; k < L; ++k) rest += sum[k];
  for (; i < n; ++i) rest += p[i] - p[i];
  return rest == 0;
}

// The direct sum, added to the first `held` outputs and stored as the others. The sum of an output is taken over the
// reversed b, tap by tap.
template <class T>
void sum_directly(const T* a, int na, const T* b, int nb, T* dst, std::ptrdiff_t held) {
  using V = simd::Vec<T>;
  constexpr int L = simd::lanes<V>, pad = block_vectors * L;
  alignas(64) V taps[tile_taps];
  alignas(64) T window[tile_outputs + tile_taps + 2 * pad];
  const std::ptrdiff_t end = std::ptrdiff_t{na} + nb - 1;
  if (nb > tile_taps) {  // some outputs are not reached by the first tile of taps
    std::fill(dst + held, dst + end, T(0));
    held = end;
  }
  for (int c0 = 0; c0 < nb; c0 += tile_taps) {
    const int width = std::min(tile_taps, nb - c0);
    const T* const last = b + (nb - 1 - c0);
    const auto spread_taps = [&] {
      for (int c = 0; c < width; ++c) taps[c] = simd::broadcast<V>(last - c);
    };
    spread_taps();
    const bool finite = all_finite(last - width + 1, width);
    // Output k meets a[k + c0 + c - (nb - 1)].
    const std::ptrdiff_t low = std::max(0, nb - c0 - width),
                         high = std::min<std::ptrdiff_t>(end, std::ptrdiff_t{na} + nb - 1 - c0);
    int n;
    for (std::ptrdiff_t k = low; k < high; k += n) {
      const bool adds = k < held;
      n = static_cast<int>(std::min<std::ptrdiff_t>(tile_outputs, (adds ? std::min(held, high) : high) - k));
      const int length = n + width - 1;
      const std::ptrdiff_t base = k + c0 - (nb - 1);
      Rows<V> rows{taps, window + pad, 1, width, 0, 0};
      int from = 0, to = length;
      if (base >= 0 && base + length + L <= na) {
        rows.data = a + base;
      } else {
        from = static_cast<int>(std::clamp<std::ptrdiff_t>(-base, 0, length));
        to = static_cast<int>(std::clamp<std::ptrdiff_t>(na - base, 0, length));
        std::fill(window, window + pad + from, T(0));
        std::copy(a + base + from, a + base + to, window + pad + from);
        std::fill(window + pad + to, window + length + 2 * pad, T(0));
      }
      if (!finite) shrink_unusual_taps(taps, width);
      add_row(rows, from, to, n, dst + k, adds);
      if (finite) continue;
      spread_taps();
      add_unusual_taps(rows, from, to, n, dst + k, true);
    }
  }
}

}  // namespace

Scheme scheme_of(int longer, int shorter) {
  const std::int64_t n = std::int64_t{longer} + shorter - 1;
  if (n < least_result || shorter < least_shorter) return {Scheme::direct, 0, 0};
  const bool one = longer < std::int64_t{block_ratio} * shorter;
  Scheme s{one ? Scheme::one_product : Scheme::blocks, 2, longer};
  while (std::int64_t{1} << s.order < (one ? n : std::int64_t{2} * shorter)) ++s.order;
  if (!one && s.order <= fft::largest_order) s.block = (1 << s.order) - shorter + 1;
  return s;
}

template <class T>
std::size_t convolution_work(const Scheme& s) {
  if (s.way == Scheme::direct) return 0;
  const std::size_t elements = fft::Negacyclic<T>::work_size(std::min(s.order, fft::largest_order));
  return elements > SIZE_MAX / sizeof(T) ? SIZE_MAX : elements * sizeof(T);
}

template <class T>
void convolve(const T* a, int na, const T* b, int nb, T* dst, void* work) {
  const Scheme s = scheme_of(std::max(na, nb), std::min(na, nb));
  // Direct sums have an order: of operands of one length their values decide, since exchanging them changes nothing.
  const bool later =
      s.way == Scheme::direct && na == nb && std::memcmp(a, b, static_cast<std::size_t>(na) * sizeof(T)) > 0;
  if (na < nb || later) std::swap(a, b), std::swap(na, nb);
  if (s.way == Scheme::direct) {
    for (int i = 0; i < na; i += piece) {
      sum_directly(a + i, std::min(piece, na - i), b, nb, dst + i, i == 0 ? 0 : nb - 1);
    }
    return;
  }
  fft::Negacyclic<T> product(s.order, static_cast<T*>(work));
  product.set_factor(b, nb);
  // What a block shares with the one before it has been stored.
  for (int i = 0; i < na;) {
    const int size = std::min(s.block, na - i);
    product.multiply(a + i, size, dst + i, i == 0 ? 0 : nb - 1, size + nb - 1);
    i += size;
  }
}

template <class T>
void add_convolution(const T* a, int na, const T* b, int nb, T* dst) {
  const numeric::ArithmeticGuard guard;
  sum_directly(a, na, b, nb, dst, std::ptrdiff_t{na} + nb - 1);
}

template <class T>
int full_convolution(const T* a, int na, const T* b, int nb, T* dst) {
  if (a == nullptr || b == nullptr || dst == nullptr) return fft::status::null_pointer;
  if (na < 1 || nb < 1) return fft::status::bad_length;
  const Scheme s = scheme_of(std::max(na, nb), std::min(na, nb));
  if (s.order > fft::largest_order) return fft::status::bad_order;
  const numeric::ArithmeticGuard guard;
  const std::size_t bytes = convolution_work<T>(s);
  const fft::Array<char> work(bytes);
  if (bytes != 0 && !work) return fft::status::no_memory;
  convolve(a, na, b, nb, dst, work.get());
  return fft::status::ok;
}

#define CONVOLUTION_OF(T)                                          \
  template std::size_t convolution_work<T>(const Scheme&);         \
  template void convolve(const T*, int, const T*, int, T*, void*); \
  template void add_convolution(const T*, int, const T*, int, T*); \
  template int full_convolution(const T*, int, const T*, int, T*);
CONVOLUTION_OF(float)
CONVOLUTION_OF(double)
#undef CONVOLUTION_OF

}  // namespace qor::convolution
