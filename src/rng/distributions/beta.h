// Beta variates. T is double or float.
#pragma once

#include "rng/streams/stream.h"

namespace qor::rng {

// a + beta x, x of the Beta distribution with shapes p and q.
template <class T>
int beta(int method, Stream* stream, int n, T* r, T p, T q, T a, T beta);

}  // namespace qor::rng
