// Uniform numbers drawn from a stream through its generator's record.
#pragma once

#include <cstdint>

#include "rng/streams/stream.h"

namespace qor::rng {

int uniform(std::uint32_t method, Stream* stream, int n, double* r, double a, double b);
int uniform(std::uint32_t method, Stream* stream, int n, float* r, float a, float b);
int uniform_integers(Stream* stream, int n, std::int32_t* r, std::int32_t a, std::int32_t b);
int uniform_bits(Stream* stream, int n, std::uint32_t* r);

}  // namespace qor::rng
