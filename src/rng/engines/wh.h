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

// Consecutive elements, a component a line: residues 1 .. m - 1 as doubles. As many as words fit a vector, so that
// words can be transposed.
inline constexpr int stretch = simd::lanes<VecU32>, vectors = stretch / simd::lanes<VecD>;
struct Elements {
  VecD x[components][vectors];
};

// What is the same in all elements of a request.
struct Constants {
  VecD modulus[components], reciprocal[components];
  VecD step[components], quotient[components];  // a^stretch mod m, and that over m

  explicit Constants(const std::uint32_t* moduli) {
    for (int i = 0; i < components; ++i) {
      modulus[i] = splat<VecD>(moduli[i]);
      reciprocal[i] = splat<VecD>(1) / modulus[i];
    }
  }
  void set_step(int i, std::uint32_t factor) {
    step[i] = splat<VecD>(factor);
    quotient[i] = step[i] / modulus[i];
  }
};

// x step mod m, exactly: the product is below 2^48. The quotient's distance from an integer is 1/m > 2^-24 at least,
// and its error below 2^-28: less 1/2 it rounds to its floor.
QOR_INLINE VecD next(VecD x, VecD step, VecD quotient, VecD modulus) {
  const VecD round_by = splat<VecD>(0x1.8p52);
  const VecD whole = (x * quotient - splat<VecD>(0.5) + round_by) - round_by;
  return x * step - whole * modulus;
}

// The forms of output: store(r, elements) has `stride` results of type T for each of the elements.
struct Words {
  using T = std::uint32_t;
  static constexpr int stride = components;
  QOR_INLINE void store(T* r, const Elements& e, const Constants&) const {
    VecU32 w[components];
    for (int i = 0; i < components; ++i) w[i] = simd::truncate(e.x[i][0], e.x[i][1]);
    simd::transpose(w[0], w[1], w[2], w[3]);
    for (int k = 0; k < stretch; ++k) simd::store(r + components * k, w[k]);
  }
};
template <class Result>
struct Numbers {
  using T = Result;
  static constexpr int stride = 1;
  VecD width, a;

  Numbers(double low, double high) : width(splat<VecD>(high - low)), a(splat<VecD>(low)) {}
  QOR_INLINE void store(T* r, const Elements& e, const Constants& c) const {
    static_assert(vectors == 2);
    VecD s[vectors];
    for (int v = 0; v < vectors; ++v) {
      s[v] = e.x[0][v] * c.reciprocal[0];
      for (int i = 1; i < components; ++i) s[v] += e.x[i][v] * c.reciprocal[i];
    }
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

  // The state together with its member's row.
  class Member {
   public:
    Member(Wh& state, int member) : state_(state), row_(wh::table[member]) {}

    int seed(int n, const std::uint32_t* words) {
      for (int i = 0; i < wh::components; ++i) {
        state_.mult[i] = row_.multiplier[i];
        state_.x[i] = i < n ? words[i] : 1;
        settle(state_.x[i], row_.modulus[i]);
      }
      return skip_ahead(1);  // small seeds are small numbers
    }
    int leapfrog(std::int32_t k, int nstreams) {
      skip_ahead(k);
      for (int i = 0; i < wh::components; ++i) {
        state_.mult[i] = numeric::pow_mod(state_.mult[i], nstreams, row_.modulus[i]);
      }
      return status::ok;
    }
    int skip_ahead(int n) {
      for (int i = 0; i < wh::components; ++i) {
        const std::uint32_t m = row_.modulus[i];
        state_.x[i] = numeric::mul_mod(state_.x[i], numeric::pow_mod(state_.mult[i], n, m), m);
      }
      return status::ok;
    }

    template <class Form>
    void draw(int n, typename Form::T* r, Form form) {
      using namespace wh;
      if (n < 1) return;
      // The first elements, and the one that follows them.
      Constants c(row_.modulus);
      double ahead[components][stretch] = {};
      for (int i = 0; i < components; ++i) {
        const std::uint32_t m = row_.modulus[i];
        std::uint32_t& x = state_.x[i];
        settle(x, m);  // copied from another state both may be anything
        settle(state_.mult[i], m);
        for (int k = 0; k < stretch && k < n; ++k, x = numeric::mul_mod(x, state_.mult[i], m)) ahead[i][k] = x;
        if (n >= stretch) c.set_step(i, numeric::pow_mod(state_.mult[i], stretch, m));
      }
      Elements e;
      for (int i = 0; i < components; ++i) {
        for (int v = 0; v < vectors; ++v) e.x[i][v] = simd::load<VecD>(ahead[i] + v * simd::lanes<VecD>);
      }
      int k = 0;
      for (; k <= n - stretch; k += stretch) {
        form.store(r + k * Form::stride, e, c);
        for (int i = 0; i < components; ++i) {
          for (VecD& x : e.x[i]) x = next(x, c.step[i], c.quotient[i], c.modulus[i]);
        }
      }
      if (k < n) {
        typename Form::T rest[stretch * Form::stride];
        form.store(rest, e, c);
        std::memcpy(r + k * Form::stride, rest, static_cast<std::size_t>((n - k) * Form::stride) * sizeof *rest);
      }
      if (n < stretch) return;
      for (int i = 0; i < components; ++i) {
        const int at = n - k;
        state_.x[i] = static_cast<std::uint32_t>(
            static_cast<std::int32_t>(e.x[i][at / simd::lanes<VecD>][at % simd::lanes<VecD>]));
      }
    }

   private:
    static void settle(std::uint32_t& x, std::uint32_t m) {
      if (x >= m) x %= m;
      if (x == 0) x = 1;
    }

    Wh& state_;
    const wh::Row& row_;
  };
};

template <>
class Slots<Wh> : public InitSlot<Wh> {
 public:
  // Residues but zero: multipliers are primitive roots, whose powers are all of these.
  static bool valid(const Stream* stream) {
    const Wh& engine = stream->state<Wh>();
    const wh::Row& row = wh::table[resolve(stream->brng).member];
    for (int i = 0; i < wh::components; ++i) {
      const std::uint32_t last = row.modulus[i] - 1;
      if (engine.x[i] - 1 >= last || engine.mult[i] - 1 >= last) return false;
    }
    return true;
  }

  static int words(Stream* stream, int n, std::uint32_t* r) {
    const numeric::MxcsrGuard nearest;
    engine_of<Wh>(stream).draw(n, r, wh::Words{});
    return status::ok;
  }
  static int doubles(Stream* stream, int n, double* r, double a, double b) { return numbers(stream, n, r, a, b); }
  static int singles(Stream* stream, int n, float* r, float a, float b) { return numbers(stream, n, r, a, b); }

 private:
  template <class T>
  static int numbers(Stream* stream, int n, T* r, double a, double b) {
    const numeric::MxcsrGuard nearest;
    engine_of<Wh>(stream).draw(n, r, wh::Numbers<T>(a, b));
    return status::ok;
  }
};

}  // namespace qor::rng
