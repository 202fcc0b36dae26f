// The Fourier drivers: rank 1 by the convolution of whole arrays (primitive.h), higher ranks by the transform engine.
#pragma once

#include "convolution/checks.h"
#include "convolution/drivers.def"
#include "convolution/kept.h"

namespace qor::convolution {

// T is the type of the sums (of rank 1; those of higher ranks are double), D that of the data.
template <Kind kind, class T, class D>
struct FourierDriver : Checked<FourierDriver<kind, T, D>, kind, D, Kept> {
  static int compute(const Arguments<D>& c, Kept& kept);
};

// Compiled once, in fourier.cpp.
#define DRIVER_ELSEWHERE(Name, kind, Class, D, T)                                       \
  extern template struct Checked<FourierDriver<Kind::kind, T, D>, Kind::kind, D, Kept>; \
  extern template struct FourierDriver<Kind::kind, T, D>;
CONV_MEMBERS(DRIVER_ELSEWHERE)
#undef DRIVER_ELSEWHERE

}  // namespace qor::convolution
