// Transforms of tiles of a plane, four tiles at once: the cyclic products of a kernel with four real tiles.
//
// Two tiles are the lanes of real parts, two those of imaginary parts; since the kernel is real, the product of its
// spectrum with that of u + i v is that of its products with u and with v. Neither packing of half spectra nor a shuffle
// of lanes is needed. Spectra are left in the order in which decimation in frequency leaves them, from which the inverse
// starts: nothing is permuted. (Gentleman and Sande, Fast Fourier transforms for fun and profit, AFIPS 29, 1966.)
#pragma once

#include "fft/butterfly.h"

namespace qor::convolution {

inline constexpr int tile_count = 4, shortest_tile = 8, longest_tile = 256;

class Tiles {
 public:
  // Of width points a row, height rows: powers of two from shortest_tile to longest_tile.
  Tiles(int width, int height) : width_(width), height_(height) {}

  std::size_t work_bytes() const {
    const std::size_t plane = static_cast<std::size_t>(pitch()) * static_cast<std::size_t>(height_);
    const std::size_t spectrum = static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_);
    return sizeof(V) * (plane + spectrum + static_cast<std::size_t>(4 * longest_tile));
  }
  // Before anything else; aligned to 64.
  void use(char* work) {
    plane_ = reinterpret_cast<V*>(work);
    spectrum_ = plane_ + static_cast<std::ptrdiff_t>(pitch()) * height_;
    scratch_ = spectrum_ + static_cast<std::ptrdiff_t>(width_) * height_;
  }

  // Row r of the four tiles.
  template <class D>
  void put_row(int r, const D* const* rows);
  void clear_row(int r);
  // Takes the first tile as the kernel; the others are to be zero.
  void keep_kernel();
  // All rows being there, the tiles are multiplied by the kernel.
  void multiply();
  // Row r of the products.
  template <class D>
  void get_row(int r, D* const* rows);

 private:
  using V = simd::VecD;

  int pitch() const { return 2 * width_ + 4; }  // no multiple of a page

  int width_, height_;
  V *plane_ = nullptr, *spectrum_ = nullptr, *scratch_ = nullptr;
};

}  // namespace qor::convolution
