// The inner loops of direct sums: up to six vectors of neighbouring outputs, which every tap is added to in turn.
#pragma once

#include "simd/vec.h"

namespace qor::convolution {

inline constexpr int block_vectors = 6;  // with a tap and a product that fills eight registers

// Rows of taps, every one repeated in all lanes, and the rows of data that meet them.
template <class V>
struct Rows {
  const V* taps;
  const simd::lane_t<V>* data;
  int count, width;
  std::ptrdiff_t tap_pitch, data_pitch;
};

// out[x] = or += the sum over rows and taps of taps[c] data[x + c], in order, x < K lanes.
template <int K, class V>
void add_block(const Rows<V>& rows, simd::lane_t<V>* out, bool add) {
  using namespace simd;
  constexpr int L = lanes<V>;
  V sum[K] = {};
  const V* row_taps = rows.taps;
  const lane_t<V>* row_data = rows.data;
  for (int r = rows.count; r > 0; --r, row_taps += rows.tap_pitch, row_data += rows.data_pitch) {
    const lane_t<V>* data = row_data;
    const V *tap = row_taps, *const end = tap + rows.width;
    const auto add_tap = [&](int c) {
#pragma GCC unroll 8
      for (int k = 0; k < K; ++k) sum[k] += load<V>(data + c + k * L) * tap[c];
    };
    for (; end - tap >= 2; tap += 2, data += 2) add_tap(0), add_tap(1);
    if (tap != end) add_tap(0);
  }
#pragma GCC unroll 8
  for (int k = 0; k < K; ++k) store(out + k * L, add ? load<V>(out + k * L) + sum[k] : sum[k]);
}
// All eight registers; six names, since an array would be kept in memory.
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
template <class V>
void add_block(int vectors, const Rows<V>& rows, simd::lane_t<V>* out, bool add) {
  switch (vectors) {
    case 1:
      return add_block<1>(rows, out, add);
    case 2:
      return add_block<2>(rows, out, add);
    case 3:
      return add_block<3>(rows, out, add);
    case 4:
      return add_block<4>(rows, out, add);
    case 5:
      return add_block<5>(rows, out, add);
    default:
      return add_full_block(rows, out, add);
  }
}

// A row of n outputs. Data is there from `from` up to `to` (it is indexed by output + tap), and a block of zeros on
// either side of that, so that a block takes every tap that meets data in any of its lanes.
template <class V>
void add_row(const Rows<V>& rows, int from, int to, int n, simd::lane_t<V>* out, bool add) {
  using T = simd::lane_t<V>;
  constexpr int L = simd::lanes<V>;
  for (int x = 0; x < n;) {
    const int left = (n - x + L - 1) / L, blocks = (left + block_vectors - 1) / block_vectors;
    const int vectors = (left + blocks - 1) / blocks, size = vectors * L;
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
// The same, when a tap is infinite or a NaN: nothing but data meets it. The same order, hence the same sums.
template <class V>
QOR_COLD void add_row_strictly(const Rows<V>& rows, int from, int to, int n, simd::lane_t<V>* out, bool add) {
  for (int x = 0; x < n; ++x) {
    simd::lane_t<V> sum = 0;
    for (int r = 0; r < rows.count; ++r) {
      for (int c = from > x ? from - x : 0; c < rows.width && c < to - x; ++c) {
        sum += rows.data[r * rows.data_pitch + x + c] * rows.taps[r * rows.tap_pitch + c][0];
      }
    }
    out[x] = add ? out[x] + sum : sum;
  }
}

}  // namespace qor::convolution
