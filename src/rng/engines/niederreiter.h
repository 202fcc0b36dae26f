// The Niederreiter sequence in base 2, in up to 318 dimensions. (H. Niederreiter, J. Number Theory 30, 1988; P.
// Bratley, B. L. Fox and H. Niederreiter, ACM Trans. Model. Comput. Simul. 2, 1992.)
#pragma once

#include "rng/engines/digital_net.h"

namespace qor::rng {

struct Niederreiter : DigitalNet<318> {
  // The parameters are a dimension, or polynomials as rng.h tells: 0, -3 or -4.
  int seed(Stream& stream, int n, const std::uint32_t* params);
};

}  // namespace qor::rng
