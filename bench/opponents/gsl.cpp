// GSL: the same engine where it has it, otherwise its nearest relative.
#include <gsl/gsl_qrng.h>
#include <gsl/gsl_randist.h>
#include <gsl/gsl_rng.h>

#include <type_traits>

#include "harness.h"

namespace bench {
namespace {

template <const gsl_rng_type** type>
gsl_rng* engine() {
  static gsl_rng* const g = gsl_rng_alloc(*type);
  return g;
}
template <const gsl_rng_type** type>
void words(int n, std::uint32_t* r) {
  gsl_rng* const g = engine<type>();
  for (int i = 0; i < n; ++i) r[i] = gsl_rng_get(g);
}
template <const gsl_rng_type** type, class T>
void uniforms(int n, T* r) {
  gsl_rng* const g = engine<type>();
  for (int i = 0; i < n; ++i) r[i] = static_cast<T>(gsl_rng_uniform(g));
}
template <double (*f)(const gsl_rng*, double)>
void normals(int n, double* r) {
  gsl_rng* const g = engine<&gsl_rng_mt19937>();
  for (int i = 0; i < n; ++i) r[i] = f(g, 1.0);
}

// Vectors of d coordinates: doubles where the caller wants them, singles by way of a buffer.
template <const gsl_qrng_type** type, unsigned d, class T>
void vectors(int n, T* r) {
  static gsl_qrng* const g = gsl_qrng_alloc(*type, d);
  if constexpr (std::is_same_v<T, double>) {
    int i = 0;
    for (; i + int{d} <= n; i += int{d}) gsl_qrng_get(g, r + i);
    double rest[d];
    if (i < n) gsl_qrng_get(g, rest);
    for (int j = 0; i < n; ++i, ++j) r[i] = rest[j];
  } else {
    double vector[d];
    for (int i = 0; i < n;) {
      gsl_qrng_get(g, vector);
      for (unsigned j = 0; j < d && i < n; ++j, ++i) r[i] = static_cast<T>(vector[j]);
    }
  }
}
template <const gsl_qrng_type** type, unsigned d>
void add_vectors(const char* work, const char* name) {
  Add{DrawPeer<double>{work, name, false, vectors<type, d, double>},
      DrawPeer<float>{work, name, false, vectors<type, d, float>}};
}

template <const gsl_rng_type** type>
void add(const char* work, const char* name) {
  Add{DrawPeer<std::uint32_t>{work, name, false, words<type>},
      DrawPeer<double>{work, name, false, uniforms<type, double>},
      DrawPeer<float>{work, name, false, uniforms<type, float>}};
}
const bool added = [] {
  add<&gsl_rng_mt19937>("MT19937", "gsl mt19937");
  add<&gsl_rng_cmrg>("MRG32K3A", "gsl cmrg");
  add<&gsl_rng_fishman18>("MCG31M1", "gsl fishman18");
  add<&gsl_rng_r250>("R250", "gsl r250");
  // Its Niederreiter sequence ends at 12 dimensions.
  add_vectors<&gsl_qrng_sobol, 40>("Sobol 40", "gsl sobol");
  add_vectors<&gsl_qrng_sobol, 7>("Sobol 7", "gsl sobol");
  add_vectors<&gsl_qrng_sobol, 1>("Sobol 1", "gsl sobol");
  add_vectors<&gsl_qrng_sobol, 40>("Niederr 40", "gsl sobol");
  Add{DrawPeer<double>{"Gaussian", "gsl polar", false, normals<gsl_ran_gaussian>},
      DrawPeer<double>{"Gaussian", "gsl ziggurat", false, normals<gsl_ran_gaussian_ziggurat>}};
  return true;
}();

}  // namespace
}  // namespace bench
