// Convolution of rank 2 by tiles (tiles.h): overlap-save in both dimensions. The shorter operand is the kernel, the
// longer one's part that a tile of outputs depends on is transformed; only rows with data and rows that are asked for
// are.
#pragma once

#include "convolution/kept.h"
#include "convolution/layout.h"

namespace qor::convolution {

// Points of the tiles in each dimension, and outputs that one yields.
struct Tiling {
  int points[2], outputs[2];
  double work;  // in nanoseconds, as an estimate
};

// The tiling of least work; its work is infinite if no tile is large enough.
Tiling find_tiling(const int* kernel, const int* outputs, const int* step);

// z[j] = sum over i of kernel[i] data[first + j step - i] in both dimensions; what lies outside the shapes counts as
// zero. Returns a status.
template <class D>
int convolve_tiles(const Tiling& tiling, const Array<const D>& kernel, const Array<const D>& data, const Array<D>& z,
                   const int* first, const int* step, Kept& kept);

}  // namespace qor::convolution
