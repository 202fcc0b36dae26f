// Discrete variates. A method, where there is one, is already checked; parameters are checked here.
#pragma once

#include <cstdint>

#include "rng/streams/stream.h"

namespace qor::rng {

int bernoulli(int method, Stream* stream, int n, std::int32_t* r, double p);
int geometric(int method, Stream* stream, int n, std::int32_t* r, double p);
int binomial(int method, Stream* stream, int n, std::int32_t* r, int ntrial, double p);
int hypergeometric(int method, Stream* stream, int n, std::int32_t* r, int l, int s, int m);
int negbinomial(int method, Stream* stream, int n, std::int32_t* r, double a, double p);
int poisson(int method, Stream* stream, int n, std::int32_t* r, double lambda);
int poisson_v(int method, Stream* stream, int n, std::int32_t* r, const double* lambda);

// As poisson_v, for any lambda from 0 on; results stop at 2^31 - 1.
int poisson_each(Stream* stream, int n, std::int32_t* r, const double* lambda);

}  // namespace qor::rng
