// The Sobol sequence in up to 40 dimensions. (I. M. Sobol, USSR Comput. Math. Math. Phys. 7, 1967, and 16, 1976.)
#pragma once

#include "rng/engines/digital_net.h"

namespace qor::rng {

struct Sobol : DigitalNet<40> {
  // The parameters are a dimension, or a table as rng.h tells: 0, -3 or -4.
  int seed(Stream& stream, int n, const std::uint32_t* params);
};

}  // namespace qor::rng
