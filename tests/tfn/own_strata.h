// Arguments that a function needs beside the strata that all share: ends of its domain, results about to overflow or
// vanish, change-overs between its formulas. Included by sweep.h.
#pragma once

namespace qor::test {

template <class T>
void own_strata(const std::string& function, Draw<T>& draw, int per_stratum, Inputs<T>& in) {
  for (int i = 0; i < per_stratum; ++i) {
    if (function == "Sqrt") {
      in.add(std::fabs(draw.scaled(std::numeric_limits<T>::min_exponent - 20, std::numeric_limits<T>::min_exponent)));
    }
  }
}

}  // namespace qor::test
