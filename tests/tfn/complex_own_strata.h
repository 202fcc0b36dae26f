// Arguments that a complex function needs beside the strata that all share. Included by complex_sweep.h.
#pragma once

namespace qor::test {

template <class T>
ComplexInputs<T> complex_inputs(const std::string&, int, int per_stratum, std::uint64_t seed) {
  ComplexInputs<T> in;
  Draw<T> draw(seed);
  complex_strata(draw, per_stratum, in);
  return in;
}

}  // namespace qor::test
