// Exported distributions: translation only.
#include "base/target.h"
#include "rng/distributions/gaussian.h"
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
