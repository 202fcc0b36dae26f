// Distributions whose inverse is a chain of kernels: whole requests at a time, in the output itself. T is double or
// float; each returns the engine's status.
#pragma once

#include "rng/streams/stream.h"

namespace qor::rng {

template <class T>
int exponential(Stream* stream, int n, T* r, T a, T beta);
template <class T>
int gumbel(Stream* stream, int n, T* r, T a, T beta);
template <class T>
int rayleigh(Stream* stream, int n, T* r, T a, T beta);
template <class T>
int weibull(Stream* stream, int n, T* r, T alpha, T a, T beta);
template <class T>
int cauchy(Stream* stream, int n, T* r, T a, T beta);
template <class T>
int lognormal(Stream* stream, int n, T* r, T a, T sigma, T b, T beta);
template <class T>
int laplace(Stream* stream, int n, T* r, T a, T beta);

}  // namespace qor::rng
