// Gaussian variates by the two forms of the Box-Muller transform. T is double or float.
#pragma once

#include "rng/streams/stream.h"

namespace qor::rng {

template <class T>
int box_muller(Stream* stream, int n, T* r, T a, T sigma);
template <class T>
int box_muller2(Stream* stream, int n, T* r, T a, T sigma);

// Methods 0 and 1; others are the caller's fault.
template <class T>
int gaussian(int method, Stream* stream, int n, T* r, T a, T sigma) {
  constexpr int (*methods[])(Stream*, int, T*, T, T) = {box_muller<T>, box_muller2<T>};
  return methods[method](stream, n, r, a, sigma);
}

}  // namespace qor::rng
