// Multivariate Gaussian variates. T is double or float.
#pragma once

#include "rng/streams/stream.h"

namespace qor::rng {

// n vectors a + factor z of d elements, z standard normal by the Gaussian generator's `method`, factor a lower
// triangular matrix in one of three forms of storage.
template <class T>
int gaussian_mv(int method, Stream* stream, int n, T* r, int d, int storage, const T* a, const T* factor);

}  // namespace qor::rng
