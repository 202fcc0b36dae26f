#include "convolution/plane.h"

#include <algorithm>
#include <utility>

#include "convolution/status.h"
#include "convolution/tiles.h"
#include "numeric/mxcsr.h"

namespace qor::convolution {
namespace {

// The tile whose outputs start at index `start`, `count` of them in each dimension.
struct Place {
  int start[2], count[2];
};

template <class D>
class Plane {
 public:
  Plane(const Tiling& tiling, const Array<const D>& kernel, const Array<const D>& data, const Array<D>& z,
        const int* first, const int* step)
      : tiling_(tiling), kernel_(kernel), data_(data), z_(z), first_(first), step_(step) {}

  int run(Kept& kept) {
    const std::size_t bytes = tiles_.work_bytes();
    const std::size_t lines = static_cast<std::size_t>(tile_count + 1) * longest_tile;
    char* const work = kept.work(bytes + lines * sizeof(D));
    if (work == nullptr) return status::no_memory;
    tiles_.use(work);
    D* line = reinterpret_cast<D*>(work + bytes);
    for (D*& row : rows_) row = std::exchange(line, line + longest_tile);
    zeros_ = line;
    std::fill(zeros_, zeros_ + longest_tile, D(0));

    put_kernel();
    Place places[tile_count], next{};
    for (bool more = true; more;) {
      int n = 0;
      for (; n < tile_count && more; ++n) {
        for (int k = 0; k < 2; ++k) next.count[k] = std::min(tiling_.outputs[k], z_.shape[k] - next.start[k]);
        places[n] = next;
        more = advance(&next);
      }
      put_tiles(places, n);
      tiles_.multiply();
      get_tiles(places, n);
    }
    return status::ok;
  }

 private:
  bool advance(Place* place) const {
    for (int k = 0; k < 2; ++k) {
      place->start[k] += place->count[k];
      if (place->start[k] < z_.shape[k]) return true;
      place->start[k] = 0;
    }
    return false;
  }

  void put_kernel() {
    const D* rows[tile_count];
    std::fill(rows, rows + tile_count, zeros_);
    for (int r = 0; r < tiling_.points[1]; ++r) {
      if (r < kernel_.shape[1]) {
        rows[0] = row_of(kernel_, r, 0, rows_[0]);
        tiles_.put_row(r, rows);
      } else {
        tiles_.clear_row(r);
      }
    }
    tiles_.keep_kernel();
  }

  // Row r of an array, from element `from` on, as many as a tile has: where it is, zeros_, or copied into `room`.
  const D* row_of(const Array<const D>& array, std::int64_t r, std::int64_t from, D* room) const {
    if (r < 0 || r >= array.shape[1]) return zeros_;
    const int n = tiling_.points[0];
    const std::int64_t end = from + n;
    const std::ptrdiff_t stride = array.stride[0];
    const D* const row = array.origin + static_cast<std::ptrdiff_t>(r) * array.stride[1];
    if (stride == 1 && from >= 0 && end <= array.shape[0]) return row + static_cast<std::ptrdiff_t>(from);
    const int low = static_cast<int>(std::clamp<std::int64_t>(-from, 0, n));
    const int high = static_cast<int>(std::clamp<std::int64_t>(array.shape[0] - from, low, n));
    if (low == high) return zeros_;
    const D* const here = row + static_cast<std::ptrdiff_t>(from + low) * stride;
    std::fill(room, room + low, D(0));
    copy_row(here, stride, room + low, high - low);
    std::fill(room + high, room + n, D(0));
    return room;
  }

  // The data's index that is first in a tile.
  std::int64_t window(const Place& p, int k) const {
    return first_[k] + std::int64_t{p.start[k]} * step_[k] - (kernel_.shape[k] - 1);
  }
  void put_tiles(const Place* places, int n) {
    const D* rows[tile_count];
    std::fill(rows, rows + tile_count, zeros_);
    for (int r = 0; r < tiling_.points[1]; ++r) {
      bool nothing = true;
      for (int t = 0; t < n; ++t) {
        rows[t] = row_of(data_, window(places[t], 1) + r, window(places[t], 0), rows_[t]);
        nothing = nothing && rows[t] == zeros_;
      }
      if (nothing) {
        tiles_.clear_row(r);
      } else {
        tiles_.put_row(r, rows);
      }
    }
  }

  void get_tiles(const Place* places, int n) {
    int height = 0;
    for (int t = 0; t < n; ++t) height = std::max(height, places[t].count[1]);
    for (int j = 0; j < height; ++j) {
      tiles_.get_row(kernel_.shape[1] - 1 + j * step_[1], rows_);
      for (int t = 0; t < n; ++t) {
        const Place& p = places[t];
        if (j >= p.count[1]) continue;
        D* const to = z_.origin + p.start[0] * z_.stride[0] + (p.start[1] + j) * z_.stride[1];
        const D* const from = rows_[t] + kernel_.shape[0] - 1;
        if (step_[0] == 1 && z_.stride[0] == 1) {
          for (int i = 0; i < p.count[0]; ++i) to[i] = from[i];
        } else {
          for (int i = 0; i < p.count[0]; ++i) to[i * z_.stride[0]] = from[i * step_[0]];
        }
      }
    }
  }

  const Tiling& tiling_;
  const Array<const D>&kernel_, &data_;
  const Array<D>& z_;
  const int *first_, *step_;
  Tiles tiles_{tiling_.points[0], tiling_.points[1]};
  D *rows_[tile_count] = {}, *zeros_ = nullptr;
};

}  // namespace

Tiling find_tiling(const int* kernel, const int* outputs, const int* step) {
  Tiling best{{}, {}, __builtin_inf()};
  for (int height = shortest_tile; height <= longest_tile; height *= 2) {
    for (int width = shortest_tile; width <= longest_tile; width *= 2) {
      Tiling t{{width, height}, {}, 0};
      double tiles = 1;
      for (int k = 0; k < 2; ++k) {
        const int room = t.points[k] - kernel[k] + 1;
        t.outputs[k] = room < 1 ? 0 : std::min((room - 1) / step[k] + 1, outputs[k]);
        const int count = t.outputs[k] == 0 ? 0 : (outputs[k] - 1) / t.outputs[k] + 1;
        tiles *= count;
      }
      if (tiles == 0) continue;
      // Nanoseconds, as measured once: a row, a column there and back, and those of the kernel.
      const auto orders = [](int n) {
        int order = 2;
        for (int left = n; left > 1; left /= 2) ++order;
        return n * order;
      };
      const double row = 30 + 0.36 * orders(width), column = 30 + 0.58 * orders(height);
      const double large = width * height > 32768 ? 1.35 : width * height > 8192 ? 1.1 : 1;
      const int few = tiles < 0x1p30 ? (static_cast<int>(tiles) + tile_count - 1) / tile_count : 0;
      const double groups = few != 0 ? few : tiles / tile_count;
      t.work = groups * ((height + t.outputs[1]) * row + width * column) + kernel[1] * row + width * column / 2;
      t.work *= large;
      if (t.work < best.work) best = t;
    }
  }
  return best;
}

template <class D>
int convolve_tiles(const Tiling& tiling, const Array<const D>& kernel, const Array<const D>& data, const Array<D>& z,
                   const int* first, const int* step, Kept& kept) {
  const numeric::ArithmeticGuard guard;
  return Plane<D>(tiling, kernel, data, z, first, step).run(kept);
}

template int convolve_tiles(const Tiling&, const Array<const float>&, const Array<const float>&, const Array<float>&,
                            const int*, const int*, Kept&);
template int convolve_tiles(const Tiling&, const Array<const double>&, const Array<const double>&, const Array<double>&,
                            const int*, const int*, Kept&);

}  // namespace qor::convolution
