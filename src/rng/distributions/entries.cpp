// Exported distributions: translation only.
#include "base/target.h"
#include "rng/distributions/beta.h"
#include "rng/distributions/discrete.h"
#include "rng/distributions/gamma.h"
#include "rng/distributions/gaussian.h"
#include "rng/distributions/gaussian_mv.h"
#include "rng/distributions/inverse.h"
#include "rng/distributions/uniform.h"

using namespace qor;

QOR_ENTRY int _wxrdRngUniform(unsigned method, qor_stream* stream, int n, double* r, double a, double b) {
  return rng::uniform(method, stream, n, r, a, b);
}
QOR_ENTRY int _wxrsRngUniform(unsigned method, qor_stream* stream, int n, float* r, float a, float b) {
  return rng::uniform(method, stream, n, r, a, b);
}
QOR_ENTRY int _wxriRngUniform(unsigned, qor_stream* stream, int n, int* r, int a, int b) {
  return rng::uniform_integers(stream, n, r, a, b);
}
QOR_ENTRY int _wxriRngUniformBits(unsigned, qor_stream* stream, int n, unsigned* r) {
  return rng::uniform_bits(stream, n, r);
}

QOR_ENTRY int _wxrdRngGaussian(int method, qor_stream* stream, int n, double* r, double a, double sigma) {
  return rng::gaussian(method, stream, n, r, a, sigma);
}
QOR_ENTRY int _wxrsRngGaussian(int method, qor_stream* stream, int n, float* r, float a, float sigma) {
  return rng::gaussian(method, stream, n, r, a, sigma);
}
QOR_ENTRY int _vdRngGaussianBoxMuller(qor_stream* stream, int n, double* r, double a, double sigma) {
  return rng::box_muller(stream, n, r, a, sigma);
}
QOR_ENTRY int _vdRngGaussianBoxMuller2(qor_stream* stream, int n, double* r, double a, double sigma) {
  return rng::box_muller2(stream, n, r, a, sigma);
}
QOR_ENTRY int _vsRngGaussianBoxMuller(qor_stream* stream, int n, float* r, float a, float sigma) {
  return rng::box_muller(stream, n, r, a, sigma);
}
QOR_ENTRY int _vsRngGaussianBoxMuller2(qor_stream* stream, int n, float* r, float a, float sigma) {
  return rng::box_muller2(stream, n, r, a, sigma);
}

QOR_ENTRY int _wxrdRngExponential(int, qor_stream* stream, int n, double* r, double a, double beta) {
  return rng::exponential(stream, n, r, a, beta);
}
QOR_ENTRY int _wxrsRngExponential(int, qor_stream* stream, int n, float* r, float a, float beta) {
  return rng::exponential(stream, n, r, a, beta);
}
QOR_ENTRY int _wxrdRngLaplace(int, qor_stream* stream, int n, double* r, double a, double beta) {
  return rng::laplace(stream, n, r, a, beta);
}
QOR_ENTRY int _wxrsRngLaplace(int, qor_stream* stream, int n, float* r, float a, float beta) {
  return rng::laplace(stream, n, r, a, beta);
}
QOR_ENTRY int _wxrdRngWeibull(int, qor_stream* stream, int n, double* r, double alpha, double a, double beta) {
  return rng::weibull(stream, n, r, alpha, a, beta);
}
QOR_ENTRY int _wxrsRngWeibull(int, qor_stream* stream, int n, float* r, float alpha, float a, float beta) {
  return rng::weibull(stream, n, r, alpha, a, beta);
}
QOR_ENTRY int _wxrdRngCauchy(int, qor_stream* stream, int n, double* r, double a, double beta) {
  return rng::cauchy(stream, n, r, a, beta);
}
QOR_ENTRY int _wxrsRngCauchy(int, qor_stream* stream, int n, float* r, float a, float beta) {
  return rng::cauchy(stream, n, r, a, beta);
}
QOR_ENTRY int _wxrdRngRayleigh(int, qor_stream* stream, int n, double* r, double a, double beta) {
  return rng::rayleigh(stream, n, r, a, beta);
}
QOR_ENTRY int _wxrsRngRayleigh(int, qor_stream* stream, int n, float* r, float a, float beta) {
  return rng::rayleigh(stream, n, r, a, beta);
}
QOR_ENTRY int _wxrdRngLognormal(int, qor_stream* stream, int n, double* r, double a, double sigma, double b,
                                double beta) {
  return rng::lognormal(stream, n, r, a, sigma, b, beta);
}
QOR_ENTRY int _wxrsRngLognormal(int, qor_stream* stream, int n, float* r, float a, float sigma, float b, float beta) {
  return rng::lognormal(stream, n, r, a, sigma, b, beta);
}
QOR_ENTRY int _wxrdRngGumbel(int, qor_stream* stream, int n, double* r, double a, double beta) {
  return rng::gumbel(stream, n, r, a, beta);
}
QOR_ENTRY int _wxrsRngGumbel(int, qor_stream* stream, int n, float* r, float a, float beta) {
  return rng::gumbel(stream, n, r, a, beta);
}
QOR_ENTRY int _wxrdRngGamma(int, qor_stream* stream, int n, double* r, double alpha, double a, double beta) {
  return rng::gamma(stream, n, r, alpha, a, beta);
}
QOR_ENTRY int _wxrsRngGamma(int, qor_stream* stream, int n, float* r, float alpha, float a, float beta) {
  return rng::gamma(stream, n, r, alpha, a, beta);
}
QOR_ENTRY int _wxrdRngBeta(int method, qor_stream* stream, int n, double* r, double p, double q, double a,
                           double beta) {
  return rng::beta(method, stream, n, r, p, q, a, beta);
}
QOR_ENTRY int _wxrsRngBeta(int method, qor_stream* stream, int n, float* r, float p, float q, float a, float beta) {
  return rng::beta(method, stream, n, r, p, q, a, beta);
}
QOR_ENTRY int _wxrdRngGaussianMV(int method, qor_stream* stream, int n, double* r, int d, int storage, const double* a,
                                 const double* t) {
  return rng::gaussian_mv(method, stream, n, r, d, storage, a, t);
}
QOR_ENTRY int _wxrsRngGaussianMV(int method, qor_stream* stream, int n, float* r, int d, int storage, const float* a,
                                 const float* t) {
  return rng::gaussian_mv(method, stream, n, r, d, storage, a, t);
}

QOR_ENTRY int _wxriRngBernoulli(int method, qor_stream* stream, int n, int* r, double p) {
  return rng::bernoulli(method, stream, n, r, p);
}
QOR_ENTRY int _wxriRngGeometric(int method, qor_stream* stream, int n, int* r, double p) {
  return rng::geometric(method, stream, n, r, p);
}
QOR_ENTRY int _wxriRngBinomial(int method, qor_stream* stream, int n, int* r, int ntrial, double p) {
  return rng::binomial(method, stream, n, r, ntrial, p);
}
QOR_ENTRY int _wxriRngHypergeometric(int method, qor_stream* stream, int n, int* r, int l, int s, int m) {
  return rng::hypergeometric(method, stream, n, r, l, s, m);
}
QOR_ENTRY int _wxriRngPoisson(int method, qor_stream* stream, int n, int* r, double lambda) {
  return rng::poisson(method, stream, n, r, lambda);
}
QOR_ENTRY int _wxriRngPoissonV(int method, qor_stream* stream, int n, int* r, const double* lambda) {
  return rng::poisson_v(method, stream, n, r, lambda);
}
QOR_ENTRY int _wxriRngNegbinomial(int method, qor_stream* stream, int n, int* r, double a, double p) {
  return rng::negbinomial(method, stream, n, r, a, p);
}
