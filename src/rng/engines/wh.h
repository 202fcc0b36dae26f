// The Wichmann-Hill family: four multiplicative congruential generators, x' = a x mod m with m a prime below 2^24,
// whose numbers x/m are added modulo 1. (B. A. Wichmann and I. D. Hill, Applied Statistics 31, 1982.)
//
// A word is the four x. With r[i] = 1/m[i] rounded to double, the number is
//   s = ((x[0] r[0] + x[1] r[1]) + x[2] r[2]) + x[3] r[3],  u = s - floor(s),
// each operation but the last rounded to double; the last one is exact.
#pragma once

#include "numeric/modular.h"
#include "rng/engines/slots.h"

namespace qor::rng {

namespace wh {

inline constexpr int components = 4;

struct Row {
  std::uint32_t modulus[components], multiplier[components];
};
inline constexpr Row table[] = {
#include "rng/engines/wh_table.inc"
};

// A register's width of consecutive words.
inline constexpr int stretch = simd::lanes<VecU32>;
using Stretch = std::uint32_t[components][stretch];

// Elements as words, a component a vector, for output that transposes them.
class WordElements {
 public:
  WordElements(const Stretch& first, const std::uint32_t* moduli, const std::uint32_t* steps) {
    for (int i = 0; i < components; ++i) {
      const std::uint32_t m = moduli[i], shifted = static_cast<std::uint32_t>((std::uint64_t{steps[i]} << 32) % m);
      x_[i] = simd::load<VecU32>(first[i]);
      modulus_[i] = splat<VecU32>(m);
      step_[i] = splat<VecU32>(shifted);
      quotient_[i] = splat<VecU32>(shifted * inverse(m));
    }
  }
  QOR_INLINE VecU32 component(int i) const { return x_[i]; }
  QOR_INLINE void advance() {
    for (int i = 0; i < components; ++i) {
      const VecU64 even = reduced(x_[i], i), odd = reduced(as<VecU32>(as<VecU64>(x_[i]) >> 32), i);
      const VecU32 high = as<VecU32>((even >> 32) | (odd & splat<VecU64>(0xFFFFFFFF00000000)));
      x_[i] = high + (simd::sign_mask(high) & modulus_[i]);
    }
  }
  std::uint32_t at(int i, int k) const { return x_[i][k]; }

 private:
  // 1/m modulo 2^32; m itself is that modulo 8, and every step doubles the bits.
  static std::uint32_t inverse(std::uint32_t m) {
    std::uint32_t r = m;
    for (int bits = 3; bits < 32; bits *= 2) r *= 2 - m * r;
    return r;
  }
  // In the high halves of the even lanes x step mod m, or that less m: with s = 2^32 step mod m and q the low half of
  // x s / m, x s - q m is a multiple of 2^32. (P. L. Montgomery, Math. Comp. 44, 1985.)
  QOR_INLINE VecU64 reduced(VecU32 x, int i) const {
    const VecU32 q = as<VecU32>(simd::mul_even(x, quotient_[i]));
    return simd::mul_even(x, step_[i]) - simd::mul_even(q, modulus_[i]);
  }

  VecU32 x_[components], modulus_[components], step_[components], quotient_[components];
};

// Elements as doubles, for output as numbers.
class NumberElements {
 public:
  static constexpr int vectors = stretch / simd::lanes<VecD>;

  NumberElements(const Stretch& first, const std::uint32_t* moduli, const std::uint32_t* steps) {
    for (int i = 0; i < components; ++i) {
      modulus_[i] = splat<VecD>(moduli[i]);
      reciprocal_[i] = splat<VecD>(1) / modulus_[i];
      step_[i] = splat<VecD>(steps[i]);
      quotient_[i] = step_[i] / modulus_[i];
      for (int k = 0; k < stretch; ++k) x_[i][k / simd::lanes<VecD>][k % simd::lanes<VecD>] = first[i][k];
    }
  }
  // The sum s of a vector of elements.
  QOR_INLINE VecD sum(int v) const {
    VecD s = x_[0][v] * reciprocal_[0];
    for (int i = 1; i < components; ++i) s += x_[i][v] * reciprocal_[i];
    return s;
  }
  // x step mod m, exactly: the product is below 2^48. The quotient's distance from an integer is 1/m > 2^-24 at least,
  // and its error below 2^-28: less 1/2 it rounds to its floor.
  QOR_INLINE void advance() {
    const VecD round_by = splat<VecD>(0x1.8p52);
    for (int i = 0; i < components; ++i) {
      for (VecD& x : x_[i]) {
        const VecD whole = (x * quotient_[i] - splat<VecD>(0.5) + round_by) - round_by;
        x = x * step_[i] - whole * modulus_[i];
      }
    }
  }
  std::uint32_t at(int i, int k) const {
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(x_[i][k / simd::lanes<VecD>][k % simd::lanes<VecD>]));
  }

 private:
  VecD x_[components][vectors];
  VecD modulus_[components], reciprocal_[components], step_[components], quotient_[components];
};

// The forms of output: store(r, elements) has `stride` results of type T for each of the elements.
struct Words {
  using T = std::uint32_t;
  using Elements = WordElements;
  static constexpr int stride = components;
  QOR_INLINE void store(T* r, const Elements& e) const {
    VecU32 w[components];
    for (int i = 0; i < components; ++i) w[i] = e.component(i);
    simd::transpose(w[0], w[1], w[2], w[3]);
    for (int k = 0; k < stretch; ++k) simd::store(r + components * k, w[k]);
  }
};
template <class Result>
struct Numbers {
  using T = Result;
  using Elements = NumberElements;
  static constexpr int stride = 1;
  VecD width, a;

  Numbers(double low, double high) : width(splat<VecD>(high - low)), a(splat<VecD>(low)) {}
  QOR_INLINE void store(T* r, const Elements& e) const {
    static_assert(Elements::vectors == 2);
    const VecD s[] = {e.sum(0), e.sum(1)};
    const VecU32 whole = simd::truncate(s[0], s[1]);
    const VecD low = (s[0] - simd::to_double_low(whole)) * width + a;
    const VecD high = (s[1] - simd::to_double_high(whole)) * width + a;
    if constexpr (sizeof(T) == sizeof(double)) {
      simd::store(r, low);
      simd::store(r + simd::lanes<VecD>, high);
    } else {
      simd::store(r, simd::narrow(low, high));
    }
  }
};

}  // namespace wh

struct Wh {
  std::uint32_t x[wh::components];     // the next element, each in 1 .. m - 1
  std::uint32_t mult[wh::components];  // the member's, or a power of it after a leapfrog

  static const wh::Row* row(const Stream& stream) { return row_of(wh::table, stream); }

  int seed(const Stream& stream, int n, const std::uint32_t* words) {
    const wh::Row* const r = row(stream);
    if (r == nullptr) return status::bad_brng;
    for (int i = 0; i < wh::components; ++i) {
      mult[i] = r->multiplier[i];
      x[i] = i < n ? words[i] : 1;
      settle(x[i], r->modulus[i]);
    }
    return skip_ahead(stream, 1);  // small seeds are small numbers
  }
  int leapfrog(const Stream& stream, std::int32_t k, int nstreams) {
    if (const int s = skip_ahead(stream, k); s != status::ok) return s;
    for (int i = 0; i < wh::components; ++i) mult[i] = numeric::pow_mod(mult[i], nstreams, row(stream)->modulus[i]);
    return status::ok;
  }
  int skip_ahead(const Stream& stream, int n) {
    const wh::Row* const r = row(stream);
    if (r == nullptr) return status::bad_brng;
    for (int i = 0; i < wh::components; ++i) {
      const std::uint32_t m = r->modulus[i];
      x[i] = numeric::mul_mod(x[i], numeric::pow_mod(mult[i], n, m), m);
    }
    return status::ok;
  }
  // Residues but zero: multipliers are primitive roots, whose powers are all of these.
  bool valid(const Stream& stream) const {
    const wh::Row* const r = row(stream);
    if (r == nullptr) return false;
    for (int i = 0; i < wh::components; ++i) {
      const std::uint32_t last = r->modulus[i] - 1;
      if (x[i] - 1 >= last || mult[i] - 1 >= last) return false;
    }
    return true;
  }

  template <class Form>
  int draw(const Stream& stream, int n, typename Form::T* r, Form form) {
    using namespace wh;
    const Row* const own = row(stream);
    if (own == nullptr) return status::bad_brng;
    if (n < 1) return status::ok;
    // The first elements, and the one that follows them.
    Stretch first = {};
    std::uint32_t steps[components] = {};
    for (int i = 0; i < components; ++i) {
      const std::uint32_t m = own->modulus[i];
      settle(x[i], m);  // copied from another state both may be anything
      settle(mult[i], m);
      for (int k = 0; k < stretch && k < n; ++k) {
        first[i][k] = x[i];
        x[i] = numeric::mul_mod(x[i], mult[i], m);
      }
      if (n >= stretch) steps[i] = numeric::pow_mod(mult[i], stretch, m);
    }
    typename Form::Elements e(first, own->modulus, steps);
    int k = 0;
    for (; k <= n - stretch; k += stretch) {
      form.store(r + k * Form::stride, e);
      e.advance();
    }
    if (k < n) {
      typename Form::T rest[stretch * Form::stride];
      form.store(rest, e);
      std::memcpy(r + k * Form::stride, rest, static_cast<std::size_t>((n - k) * Form::stride) * sizeof *rest);
    }
    for (int i = 0; i < components && n >= stretch; ++i) x[i] = e.at(i, n - k);
    return status::ok;
  }

 private:
  static void settle(std::uint32_t& x, std::uint32_t m) {
    if (x >= m) x %= m;
    if (x == 0) x = 1;
  }
};

template <>
class Slots<Wh> : public InitSlot<Wh> {
 public:
  static int words(Stream* stream, int n, std::uint32_t* r) { return draw(stream, n, r, wh::Words{}); }
  static int doubles(Stream* stream, int n, double* r, double a, double b) { return numbers(stream, n, r, a, b); }
  static int singles(Stream* stream, int n, float* r, float a, float b) { return numbers(stream, n, r, a, b); }

 private:
  template <class Form>
  static int draw(Stream* stream, int n, typename Form::T* r, Form form) {
    return stream->state<Wh>().draw(*stream, n, r, form);
  }
  template <class T>
  static int numbers(Stream* stream, int n, T* r, double a, double b) {
    const numeric::MxcsrGuard nearest;
    return draw(stream, n, r, wh::Numbers<T>(a, b));
  }
};

}  // namespace qor::rng
