// The inner loops of direct sums: up to six vectors of neighbouring outputs, which every tap is added to in turn.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include "fft/butterfly.h"
#include "simd/vec.h"

namespace qor::convolution {

inline constexpr int block_vectors = 6;  // with a tap and a product that fills eight registers

// Rows of taps, every one repeated in all lanes or, in sums of few outputs, once; and the rows of data that meet them.
template <class V, class Tap = V>
struct Rows {
  const Tap* taps;
  const simd::lane_t<V>* data;
  int count, width;
  std::ptrdiff_t tap_pitch, data_pitch;
};

// Blocks: out[x] = or += the sum over rows and taps of taps[c] data[x + c], x < lanes of so many vectors. Sums have names,
// since an array of them would be kept in memory.

// One vector or two. Even and odd taps have sums of their own, which wait for each other the less.
template <int K, class V>
void add_small_block(const Rows<V>& rows, simd::lane_t<V>* out, bool add) {
  using namespace simd;
  constexpr int L = lanes<V>;
  V even0{}, even1{}, odd0{}, odd1{};
  const V* row_taps = rows.taps;
  const lane_t<V>* row_data = rows.data;
  for (int r = rows.count; r > 0; --r, row_taps += rows.tap_pitch, row_data += rows.data_pitch) {
    const lane_t<V>* data = row_data;
    const V *tap = row_taps, *const end = tap + rows.width;
    const auto add_tap = [&](V& s0, V& s1, int c) {
      s0 += load<V>(data + c) * tap[c];
      if constexpr (K == 2) s1 += load<V>(data + c + L) * tap[c];
    };
    for (; end - tap >= 2; tap += 2, data += 2) add_tap(even0, even1, 0), add_tap(odd0, odd1, 1);
    if (tap != end) add_tap(even0, even1, 0);
  }
  const auto put = [&](int k, V sum) { store(out + k * L, add ? load<V>(out + k * L) + sum : sum); };
  put(0, even0 + odd0);
  if constexpr (K == 2) put(1, even1 + odd1);
}
// Six: all eight registers.
template <class V>
[[gnu::noinline]] void add_full_block(const Rows<V>& rows, simd::lane_t<V>* out, bool add) {
  using namespace simd;
  V s0{}, s1{}, s2{}, s3{}, s4{}, s5{};
  const V* row_taps = rows.taps;
  const lane_t<V>* row_data = rows.data;
  for (int r = rows.count; r > 0; --r, row_taps += rows.tap_pitch, row_data += rows.data_pitch) {
    const lane_t<V>* data = row_data;
    const V* tap = row_taps;
    int left = rows.width;
    for (; left >= 8; left -= 8, tap += 8, data += 8) {
      add_six_products<0>(s0, s1, s2, s3, s4, s5, tap, data);
      add_six_products<1>(s0, s1, s2, s3, s4, s5, tap, data);
      add_six_products<2>(s0, s1, s2, s3, s4, s5, tap, data);
      add_six_products<3>(s0, s1, s2, s3, s4, s5, tap, data);
      add_six_products<4>(s0, s1, s2, s3, s4, s5, tap, data);
      add_six_products<5>(s0, s1, s2, s3, s4, s5, tap, data);
      add_six_products<6>(s0, s1, s2, s3, s4, s5, tap, data);
      add_six_products<7>(s0, s1, s2, s3, s4, s5, tap, data);
    }
    if (left & 4) {
      add_six_products<0>(s0, s1, s2, s3, s4, s5, tap, data);
      add_six_products<1>(s0, s1, s2, s3, s4, s5, tap, data);
      add_six_products<2>(s0, s1, s2, s3, s4, s5, tap, data);
      add_six_products<3>(s0, s1, s2, s3, s4, s5, tap, data);
      tap += 4, data += 4;
    }
    if (left & 2) {
      add_six_products<0>(s0, s1, s2, s3, s4, s5, tap, data);
      add_six_products<1>(s0, s1, s2, s3, s4, s5, tap, data);
      tap += 2, data += 2;
    }
    if (left & 1) add_six_products<0>(s0, s1, s2, s3, s4, s5, tap, data);
  }
  constexpr int L = lanes<V>;
  const auto put = [&](int k, V sum) { store(out + k * L, add ? load<V>(out + k * L) + sum : sum); };
  put(0, s0), put(1, s1), put(2, s2), put(3, s3), put(4, s4), put(5, s5);
}
// Three, with taps by twos. Every load of data serves two taps, which leaves fewer loads, and
// fewer instructions, than one tap at a time takes.
template <class V>
[[gnu::noinline]] void add_half_block(const Rows<V>& rows, simd::lane_t<V>* out, bool add) {
  using namespace simd;
  constexpr int L = lanes<V>;
  V s0{}, s1{}, s2{};
  const V* row_taps = rows.taps;
  const lane_t<V>* row_data = rows.data;
  for (int r = rows.count; r > 0; --r, row_taps += rows.tap_pitch, row_data += rows.data_pitch) {
    const lane_t<V>* data = row_data;
    const V* tap = row_taps;
    int left = rows.width;
    for (; left >= 8; left -= 8, tap += 8, data += 8) {
      add_paired_products<0>(s0, s1, s2, tap, data);
      add_paired_products<1>(s0, s1, s2, tap, data);
      add_paired_products<L == 2 ? 4 : 2>(s0, s1, s2, tap, data);
      add_paired_products<L == 2 ? 5 : 3>(s0, s1, s2, tap, data);
    }
    if (L == 2 && left >= 4) {
      add_paired_products<0>(s0, s1, s2, tap, data);
      add_paired_products<1>(s0, s1, s2, tap, data);
      left -= 4, tap += 4, data += 4;
    }
    for (; left > 0; --left, ++tap, ++data) {
      s0 += load<V>(data) * *tap;
      s1 += load<V>(data + L) * *tap;
      s2 += load<V>(data + 2 * L) * *tap;
    }
  }
  const auto put = [&](int k, V sum) { store(out + k * L, add ? load<V>(out + k * L) + sum : sum); };
  put(0, s0), put(1, s1), put(2, s2);
}
inline constexpr int shortest_paired = 24;  // taps
template <class V>
void add_block(int vectors, const Rows<V>& rows, simd::lane_t<V>* out, bool add) {
  constexpr int half = block_vectors / 2 * simd::lanes<V>;
  if (vectors == 1) return add_small_block<1>(rows, out, add);
  if (vectors == 2) return add_small_block<2>(rows, out, add);
  if (vectors == block_vectors && rows.width < shortest_paired) return add_full_block(rows, out, add);
  add_half_block(rows, out, add);
  if (vectors == block_vectors / 2) return;
  Rows<V> second = rows;
  second.data += half;
  add_block(vectors - block_vectors / 2, second, out + half, add);
}

// A row of n outputs. Data is there from `from` up to `to` (it is indexed by output + tap), and a block of zeros on
// either side of that, so that a block takes every tap that meets data in any of its lanes.
template <class V>
void add_row(const Rows<V>& rows, int from, int to, int n, simd::lane_t<V>* out, bool add) {
  using T = simd::lane_t<V>;
  constexpr int L = simd::lanes<V>;
  for (int x = 0; x < n;) {
    const int vectors = std::min((n - x + L - 1) / L, block_vectors), size = vectors * L;
    const int first = from - x - size + 1 > 0 ? from - x - size + 1 : 0;
    const int end = to - x < rows.width ? to - x : rows.width;
    Rows<V> part = rows;
    part.taps += first;
    part.data += x + first;
    part.width = end - first;
    if (part.width <= 0) part.count = 0;
    if (x + size <= n) {
      add_block(vectors, part, out + x, add);
    } else {
      T rest[block_vectors * L] = {};
      const std::size_t bytes = static_cast<std::size_t>(n - x) * sizeof(T);
      if (add) std::memcpy(rest, out + x, bytes);
      add_block(vectors, part, rest, add);
      std::memcpy(out + x, rest, bytes);
    }
    x += size;
  }
}
// Taps that are infinite or NaNs must meet nothing but data: for the row they are as small as can be, of the same sign, so
// that infinite data isn't multiplied by zero, and what they contribute is added after it.
template <class V>
QOR_COLD void shrink_unusual_taps(V* taps, int n) {
  using T = simd::lane_t<V>;
  for (V* v = taps; v != taps + n; ++v) {
    if ((*v)[0] - (*v)[0] != 0) *v = simd::splat<V>(std::copysign(std::numeric_limits<T>::min(), (*v)[0]));
  }
}
template <class V>
QOR_COLD void add_unusual_taps(const Rows<V>& rows, int from, int to, int n, simd::lane_t<V>* out, bool) {
  for (int r = 0; r < rows.count; ++r) {
    for (int c = 0; c < rows.width; ++c) {
      const simd::lane_t<V> tap = rows.taps[r * rows.tap_pitch + c][0];
      if (tap - tap == 0) continue;
      for (int x = std::max(from - c, 0); x < std::min(to - c, n); ++x) {
        out[x] += tap * rows.data[r * rows.data_pitch + x + c];
      }
    }
  }
}

// N neighbouring outputs from x on, each summed over vectors of taps in C chains. Nothing but data meets a tap.
template <int N, int C, class V>
void add_dots(const Rows<V, simd::lane_t<V>>& rows, int from, int to, int x, simd::lane_t<V>* out, bool add) {
  using T = simd::lane_t<V>;
  constexpr int L = simd::lanes<V>;
  const auto first = [&](int n) { return std::max(from - x - n, 0); };
  const auto end = [&](int n) { return std::min(to - x - n, rows.width); };
  V sum[N][C] = {};
  T rest[N] = {};
  for (int r = 0; r < rows.count; ++r) {
    const T *const taps = rows.taps + r * rows.tap_pitch, *const data = rows.data + r * rows.data_pitch + x;
    int c = first(0);
    const auto add_ends = [&](int low, int high, int n) {
      for (int i = low; i < high; ++i) rest[n] += taps[i] * data[n + i];
    };
    for (int n = 1; n < N; ++n) add_ends(first(n), std::min(c, end(n)), n);
    for (const int all = end(N - 1); c + C * L <= all; c += C * L) {
      fft::unrolled<C>([&](auto k) {
        const V tap = simd::load<V>(taps + c + k * L);
        fft::unrolled<N>([&](auto n) { sum[n][k] += tap * simd::load<V>(data + c + k * L + n); });
      });
    }
    for (int n = 0; n < N; ++n) add_ends(std::max(c, first(n)), end(n), n);
  }
  fft::unrolled<N>([&](auto n) {
    fft::unrolled<C>([&](auto k) {
      if (k != 0) sum[n][0] += sum[n][k];
    });
    for (int i = 0; i < L; ++i) rest[n] += sum[n][0][i];
    out[x + n] = add ? out[x + n] + rest[n] : rest[n];
  });
}
// A row of few outputs; tap and data as for add_row.
template <class V>
void add_few(const Rows<V, simd::lane_t<V>>& rows, int from, int to, int n, simd::lane_t<V>* out, bool add) {
  int x = 0;
  for (; n - x >= 4; x += 4) add_dots<4, 1>(rows, from, to, x, out, add);
  for (; x < n; ++x) add_dots<1, 4>(rows, from, to, x, out, add);
}

}  // namespace qor::convolution
