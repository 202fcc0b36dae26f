// Convolution through the transform engine: products of spectra, in double precision, of blocks of the operands.
#pragma once

#include "convolution/kept.h"
#include "convolution/layout.h"

namespace qor::convolution {

// z[j] = sum over i of a[i] b[first + j step - i] in every dimension; what lies outside the shapes counts as zero.
// Returns a status.
template <class D>
int basic_cc_via_dfti(int rank, const Array<const D>& a, const Array<const D>& b, const Array<D>& z, const int* first,
                      const int* step, Kept& kept);

}  // namespace qor::convolution
