// Exported engines and modular powers: translation only.
#include <algorithm>

#include "base/target.h"
#include "numeric/modular.h"
#include "rng/engines/abstract.h"
#include "rng/engines/engines.def"
#include "rng/engines/mcg31m1.h"
#include "rng/engines/mcg59.h"
#include "rng/engines/mrg32k3a.h"
#include "rng/engines/mt19937.h"
#include "rng/engines/mt2203.h"
#include "rng/engines/niederreiter.h"
#include "rng/engines/r250.h"
#include "rng/engines/slots.h"
#include "rng/engines/sobol.h"
#include "rng/engines/wh.h"

using namespace qor;

#define QOR_ENGINE_ENTRIES(tag, Engine, bytes, ...)                                                         \
  static_assert(sizeof(rng::Engine) + rng::header_bytes == bytes);                                          \
  QOR_ENTRY int __wxrBRng##tag##InitStream(int method, qor_stream* stream, int n, const unsigned* params) { \
    return rng::Slots<rng::Engine>::init(method, stream, n, params);                                        \
  }                                                                                                         \
  QOR_ENTRY int __wxrsBRng##tag(qor_stream* stream, int n, float* r, float a, float b) {                    \
    return rng::Slots<rng::Engine>::singles(stream, n, r, a, b);                                            \
  }                                                                                                         \
  QOR_ENTRY int __wxrdBRng##tag(qor_stream* stream, int n, double* r, double a, double b) {                 \
    return rng::Slots<rng::Engine>::doubles(stream, n, r, a, b);                                            \
  }                                                                                                         \
  QOR_ENTRY int __wxriBRng##tag(qor_stream* stream, int n, unsigned* r) {                                   \
    return rng::Slots<rng::Engine>::words(stream, n, r);                                                    \
  }
QOR_GENERATORS(QOR_ENGINE_ENTRIES, QOR_ENGINE_ENTRIES)

QOR_ENTRY int __wxriNewAbstractStream(qor_stream** slot, int n, unsigned* buffer, qor_i_update update) {
  return rng::IAbstract::create(slot, QOR_BRNG_IABSTRACT, {n, buffer, update, {}, 0, 0});
}
QOR_ENTRY int __wxrdNewAbstractStream(qor_stream** slot, int n, double* buffer, double a, double b,
                                      qor_d_update update) {
  return rng::DAbstract::create(slot, QOR_BRNG_DABSTRACT, {n, buffer, update, {}, a, b});
}
QOR_ENTRY int __wxrsNewAbstractStream(qor_stream** slot, int n, float* buffer, float a, float b, qor_s_update update) {
  return rng::SAbstract::create(slot, QOR_BRNG_SABSTRACT, {n, buffer, update, {}, a, b});
}

namespace {

using numeric::Matrix3;
using numeric::Vector3;

Matrix3 matrix(const unsigned* a) {
  Matrix3 m;
  std::copy_n(a, 9, m.begin());
  return m;
}
Vector3 vector(const unsigned* v) { return {v[0], v[1], v[2]}; }

}  // namespace

QOR_ENTRY unsigned __wxriPowMod(unsigned a, int n, unsigned m) { return numeric::pow_mod(a, n, m); }
QOR_ENTRY unsigned __wxriPowMod2P31M1(unsigned a, int n) { return numeric::pow_mod_m31(a, n); }
QOR_ENTRY unsigned long long __wxriPowMod2P59(unsigned low, unsigned high, int n) {
  return numeric::pow_mod_2_59(low | static_cast<unsigned long long>(high) << 32, n);
}
QOR_ENTRY void __wxriVect3PowMod(unsigned* v, const unsigned* row, unsigned m, int n) {
  const Matrix3 a = numeric::pow_mod(numeric::companion(vector(row)), n, m);
  std::ranges::copy(numeric::mul_mod(a, vector(v), m), v);
}
QOR_ENTRY void __wxriMatr3x3PowMod(const unsigned* a, unsigned* result, unsigned m, int n) {
  std::ranges::copy(numeric::pow_mod(matrix(a), n, m), result);
}
QOR_ENTRY void __wxriMatr3x3MulMod(const unsigned* a, const unsigned* b, unsigned* result, unsigned m) {
  std::ranges::copy(numeric::mul_mod(matrix(a), matrix(b), m), result);
}
QOR_ENTRY void __wxriMatr3x3VectMulMod(const unsigned* a, const unsigned* v, unsigned* result, unsigned m) {
  std::ranges::copy(numeric::mul_mod(matrix(a), vector(v), m), result);
}
