// Gamma variates. T is double or float.
#pragma once

#include "rng/streams/stream.h"

namespace qor::rng {

// Of shape alpha, displaced by a and scaled by beta; none is below a.
template <class T>
int gamma(Stream* stream, int n, T* r, T alpha, T a, T beta);

}  // namespace qor::rng
