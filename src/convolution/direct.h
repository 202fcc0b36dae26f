// Direct sums for any rank: D is the type of the data, T that of the sums.
//
// The dimension of the vectors is dimension 0, unless it is short and another one longer. The shorter operand gives the
// taps. Taps are taken in tiles of some rows (dimensions 0 and 1), each repeated in all lanes; outputs in tiles of
// rows too; the data that a pair of tiles needs is brought into a window: contiguous, of type T, with zeros on both
// sides. Where the caller's array is all that already, it is the window. A step in dimension 0 takes the taps of each
// residue by themselves, with the data of the same residue in the window: steps are all 1 then. The higher dimensions
// are loops over planes of data and the pairs of taps and outputs that meet there.
//
// Where outputs are few, and taps many, each output is a product of vectors of taps and data; taps aren't repeated.
//
// The sum of a tile is formed by itself and added to the output: partial sums have at most so many products as a tile
// has taps.
#pragma once

#include <algorithm>
#include <type_traits>

#include "base/align.h"
#include "base/owned.h"
#include "convolution/block.h"
#include "convolution/layout.h"
#include "convolution/status.h"

namespace qor::convolution {

inline constexpr int tile_taps = 512, tile_outputs = 2048;  // taps and data of a tile stay in the first-level cache
inline constexpr int few_outputs_taps = 1024, fewest_taps = 32;  // of tiles of few outputs

// An odometer over dimensions 2 and up: i[k] from low[k] up to high[k]; all of them at least one long.
struct Odometer {
  int rank, low[max_rank], high[max_rank], i[max_rank];
  void start() { std::copy(low, low + max_rank, i); }
  bool next() {
    for (int k = 2; k < rank; ++k) {
      if (++i[k] < high[k]) return true;
      i[k] = low[k];
    }
    return false;
  }
};

template <class T, class D>
class Direct {
 public:
  explicit Direct(const Problem<D>& problem) : p_(problem) {}

  int run() {
    arrange();
    if (!allocate()) return status::no_memory;
    Odometer plane{p_.rank, {}, {}, {}};
    std::copy(p_.b.shape, p_.b.shape + max_rank, plane.high);
    plane.start();
    do {
      each_tile(plane);
    } while (plane.next());
    if (z_.origin != static_cast<void*>(p_.z.origin)) scatter();
    return status::ok;
  }

 private:
  using V = simd::Vec<T>;
  static constexpr int pad = block_vectors * simd::lanes<V>;

  struct Tile {  // outputs and taps; taps of dimension 0 are those of residue `phase`, numbered within it
    int j0, width, j1, height;
    int phase, c0, taps, r0, rows;
    bool first;
  };
  struct Window {
    const T* data;
    std::ptrdiff_t pitch;
    int from, to;  // there is data from ... to; zeros outside
  };

  // Roles and dimensions as the sums want them, at least two dimensions.
  void arrange() {
    if (datasize(p_.a.shape, p_.rank) > datasize(p_.b.shape, p_.rank)) p_.exchange();
    const int longest =
        static_cast<int>(std::max_element(p_.z.shape, p_.z.shape + p_.rank) - static_cast<int*>(p_.z.shape));
    if (p_.z.shape[0] < 2 * pad && p_.z.shape[longest] > p_.z.shape[0]) p_.exchange_dimensions(0, longest);
    if (p_.rank == 1) {
      p_.rank = 2;
      p_.a.shape[1] = p_.b.shape[1] = p_.z.shape[1] = p_.step[1] = 1;
      p_.a.stride[1] = p_.b.stride[1] = p_.z.stride[1] = p_.offset[1] = 0;
    }
    const int taps = (p_.a.shape[0] - 1) / p_.step[0] + 1;
    few_outputs_ = p_.z.shape[0] <= 4 * simd::lanes<V> && taps >= fewest_taps;
    const int most = few_outputs_ ? few_outputs_taps : tile_taps;
    tap_width_ = std::min(taps, most);
    tap_rows_ = std::min(p_.a.shape[1], most / tap_width_);
    width_ = std::min(p_.z.shape[0], tile_outputs);
    // A pitch that is no multiple of a page's half: rows would fight for the same places of the cache.
    pitch_ = (width_ + tap_width_ + 2 * pad + 15) / 16 * 16;
    if (pitch_ % 128 == 0) pitch_ += 16;
    height_ = 1;
    if (p_.step[1] <= tap_rows_) {
      const int rows = 3 * tap_rows_ + 32768 / pitch_;
      height_ = std::min(p_.z.shape[1], rows / p_.step[1] + 1);
    }
  }

  bool allocate() {
    const std::uint64_t taps = sizeof(V) * static_cast<unsigned>(tap_width_ * tap_rows_);
    const std::uint64_t rows = static_cast<unsigned>((height_ - 1) * p_.step[1] + tap_rows_);
    const std::uint64_t window = sizeof(T) * static_cast<unsigned>(pitch_) * rows;
    const bool in_place = std::is_same_v<T, D> && p_.z.stride[0] == 1;
    const std::uint64_t dense = in_place ? 0 : sizeof(T) * static_cast<std::uint64_t>(datasize(p_.z.shape, p_.rank));
    const std::uint64_t bytes = 64 + taps + window + dense;
    if (bytes > std::numeric_limits<std::ptrdiff_t>::max()) return false;
    work_ = Owned<char>::allocate(static_cast<std::size_t>(bytes));
    if (!work_) return false;
    char* const start = align_up<char>(work_.get(), 64);
    taps_ = reinterpret_cast<V*>(start);
    window_ = reinterpret_cast<T*>(start + taps);
    if constexpr (std::is_same_v<T, D>) z_ = p_.z;
    if (!in_place) {
      z_.origin = reinterpret_cast<T*>(start + taps + window);
      std::ptrdiff_t stride = 1;
      for (int k = 0; k < p_.rank; ++k) {
        z_.stride[k] = stride;
        stride *= p_.z.shape[k];
      }
    }
    return true;
  }

  void each_tile(const Odometer& plane) {
    Tile t{};
    const int phases = std::min(p_.step[0], p_.a.shape[0]);
    for (t.j1 = 0; t.j1 < p_.z.shape[1]; t.j1 += t.height) {
      t.height = std::min(height_, p_.z.shape[1] - t.j1);
      for (t.j0 = 0; t.j0 < p_.z.shape[0]; t.j0 += t.width) {
        t.width = std::min(width_, p_.z.shape[0] - t.j0);
        t.first = true;
        for (t.r0 = 0; t.r0 < p_.a.shape[1]; t.r0 += t.rows) {
          t.rows = std::min(tap_rows_, p_.a.shape[1] - t.r0);
          for (t.phase = 0; t.phase < phases; ++t.phase) {
            const int count = (p_.a.shape[0] - t.phase - 1) / p_.step[0] + 1;
            for (t.c0 = 0; t.c0 < count; t.c0 += t.taps) {
              t.taps = std::min(tap_width_, count - t.c0);
              each_pair(plane, t);
              t.first = false;
            }
          }
        }
      }
    }
  }

  // All taps i and outputs j of the higher dimensions that meet in this plane of the data.
  void each_pair(const Odometer& plane, const Tile& t) {
    Odometer tap{p_.rank, {}, {}, {}};
    for (int k = 2; k < p_.rank; ++k) {
      const std::int64_t high = std::int64_t{plane.i[k]} - p_.offset[k];
      const std::int64_t low = high - (p_.z.shape[k] - std::int64_t{1}) * p_.step[k];
      tap.low[k] = static_cast<int>(std::max<std::int64_t>(low, 0));
      tap.high[k] = static_cast<int>(std::min<std::int64_t>(high + 1, p_.a.shape[k]));
      if (tap.low[k] >= tap.high[k]) return;
    }
    tap.start();
    Window window{};
    do {
      bool meets = true, first = t.first;
      std::ptrdiff_t taps_at = 0, outputs_at = 0;
      for (int k = 2; k < p_.rank && meets; ++k) {
        const std::int64_t behind = std::int64_t{plane.i[k]} - p_.offset[k] - tap.i[k];
        meets = behind % p_.step[k] == 0;
        first = first && (tap.i[k] == 0 || plane.i[k] == 0);  // no earlier plane reaches this output
        taps_at += tap.i[k] * p_.a.stride[k];
        outputs_at += static_cast<std::ptrdiff_t>(behind / p_.step[k]) * z_.stride[k];
      }
      if (!meets) continue;
      if (window.data == nullptr) window = bring(plane, t);
      if (few_outputs_) {
        std::ptrdiff_t pitch = 0;
        const T* const taps = line_up_taps(t, taps_at, &pitch);
        add_tile(t, window, outputs_at, !first, taps, pitch, add_few<V>);
      } else {
        const bool finite = spread_taps(t, taps_at);
        if (!finite) shrink_unusual_taps(taps_, t.rows * t.taps);
        add_tile(t, window, outputs_at, !first, taps_, t.taps, add_row<V>);
        if (!finite) {
          spread_taps(t, taps_at);
          add_tile(t, window, outputs_at, true, taps_, t.taps, add_unusual_taps<V>);
        }
      }
    } while (tap.next());
  }

  // The first tap of a tile's row r; `stride` becomes the distance to the next one.
  const D* tap_row(const Tile& t, std::ptrdiff_t at, int r, std::ptrdiff_t* stride) const {
    *stride = static_cast<std::ptrdiff_t>(std::int64_t{p_.a.stride[0]} * p_.step[0]);
    return p_.a.origin + at + (t.r0 + r) * p_.a.stride[1] + t.phase * p_.a.stride[0] + t.c0 * *stride;
  }
  // The taps of a tile, each in all lanes. Are they all finite?
  bool spread_taps(const Tile& t, std::ptrdiff_t at) {
    simd::Bits<V> nothing{};
    V* to = taps_;
    for (int r = 0; r < t.rows; ++r) {
      std::ptrdiff_t stride = 0;
      const D* const from = tap_row(t, at, r, &stride);
      for (int c = 0; c < t.taps; ++c) {
        const V tap = simd::splat<V>(static_cast<T>(from[c * stride]));
        nothing |= simd::bits(tap - tap);
        *to++ = tap;
      }
    }
    return nothing[0] == 0;
  }
  // The taps of a tile in rows, where they are if they are that already.
  const T* line_up_taps(const Tile& t, std::ptrdiff_t at, std::ptrdiff_t* pitch) {
    std::ptrdiff_t stride = 0;
    if constexpr (std::is_same_v<T, D>) {
      const D* const taps = tap_row(t, at, 0, &stride);
      *pitch = p_.a.stride[1];
      if (stride == 1) return taps;
    }
    T* const to = reinterpret_cast<T*>(taps_);
    for (int r = 0; r < t.rows; ++r) {
      const D* const from = tap_row(t, at, r, &stride);
      copy_row(from, stride, to + r * t.taps, t.taps);
    }
    *pitch = t.taps;
    return to;
  }

  // The data that the tile's outputs and taps meet. Element v of a row is b[base + v step].
  Window bring(const Odometer& plane, const Tile& t) {
    const int step = p_.step[0], length = t.width + t.taps - 1, n = p_.b.shape[0];
    const std::int64_t base = p_.offset[0] + t.phase + (std::int64_t{t.c0} + t.j0) * step;
    const auto steps_to = [&](std::int64_t index) {  // the first element at or beyond it
      return static_cast<int>(std::clamp<std::int64_t>((index - base + step - 1) / step, 0, length));
    };
    Window w{nullptr, pitch_, base < 0 ? steps_to(0) : 0, base < n ? steps_to(n) : 0};
    const std::int64_t row0 = p_.offset[1] + t.r0 + std::int64_t{t.j1} * p_.step[1];
    const D* start = p_.b.origin;
    for (int k = 2; k < p_.rank; ++k) start += plane.i[k] * p_.b.stride[k];
    if constexpr (std::is_same_v<T, D>) {
      const int ragged = (simd::lanes<V> - t.width % simd::lanes<V>) % simd::lanes<V>;
      const bool inside = base >= 0 && base + length + ragged <= n;
      if (inside && step == 1 && p_.b.stride[0] == 1) {
        w.data = start + base + static_cast<std::ptrdiff_t>(row0) * p_.b.stride[1];
        w.pitch = p_.b.stride[1];
        return w;
      }
    }
    const std::int64_t rows = std::int64_t{t.height - 1} * p_.step[1] + t.rows;
    for (std::int64_t r = std::max<std::int64_t>(0, -row0); r < rows && row0 + r < p_.b.shape[1]; ++r) {
      const D* const row = start + static_cast<std::ptrdiff_t>(row0 + r) * p_.b.stride[1];
      T* const to = window_ + static_cast<std::ptrdiff_t>(r) * pitch_ + pad;
      std::fill(to - pad, to + w.from, T(0));
      copy_row(row + static_cast<std::ptrdiff_t>(base + std::int64_t{w.from} * step) * p_.b.stride[0],
               static_cast<std::ptrdiff_t>(std::int64_t{p_.b.stride[0]} * step), to + w.from, w.to - w.from);
      std::fill(to + std::max(w.from, w.to), to + length + pad, T(0));
    }
    w.data = window_ + pad;
    return w;
  }

  template <class Tap, class AddRow>
  void add_tile(const Tile& t, const Window& w, std::ptrdiff_t outputs_at, bool add, const Tap* taps,
                std::ptrdiff_t tap_pitch, AddRow add_row) {
    T* out = z_.origin + outputs_at + t.j0 + t.j1 * z_.stride[1];
    for (int j = 0; j < t.height; ++j, out += z_.stride[1]) {
      const std::int64_t shift = p_.offset[1] + std::int64_t{t.j1 + j} * p_.step[1] + t.r0;
      const std::int64_t low = std::max<std::int64_t>(0, -shift);
      const std::int64_t high = std::min<std::int64_t>(t.rows, p_.b.shape[1] - shift);
      if (low >= high && add) continue;
      Rows<V, Tap> rows{taps, w.data, 0, t.taps, tap_pitch, w.pitch};
      if (low < high) {
        rows.count = static_cast<int>(high - low);
        rows.taps += low * tap_pitch;
        rows.data += (low + std::int64_t{j} * p_.step[1]) * w.pitch;
      }
      add_row(rows, w.from, w.to, t.width, out, add);
    }
  }

  void scatter() {
    Odometer at{p_.rank, {}, {}, {}};
    std::copy(p_.z.shape, p_.z.shape + max_rank, at.high);
    at.start();
    const T* from = z_.origin;
    do {
      D* plane = p_.z.origin;
      for (int k = 2; k < p_.rank; ++k) plane += at.i[k] * p_.z.stride[k];
      for (int j = 0; j < p_.z.shape[1]; ++j, plane += p_.z.stride[1]) {
        for (int i = 0; i < p_.z.shape[0]; ++i) plane[i * p_.z.stride[0]] = static_cast<D>(*from++);
      }
    } while (at.next());
  }

  Problem<D> p_;
  bool few_outputs_ = false;
  int tap_width_ = 0, tap_rows_ = 0, width_ = 0, height_ = 0, pitch_ = 0;
  Owned<char> work_;
  V* taps_ = nullptr;
  T* window_ = nullptr;
  Array<T> z_{};  // where sums are formed: the caller's z, or a dense array in the work block
};

}  // namespace qor::convolution
