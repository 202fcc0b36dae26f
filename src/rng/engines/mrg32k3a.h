// MRG32K3A: two recurrences of order three, combined.
//   p[k] = 1403580 p[k-2] -  810728 p[k-3] mod m1 = 2^32 - 209
//   q[k] =  527612 q[k-1] - 1370589 q[k-3] mod m2 = 2^32 - 22853,   z[k] = p[k] - q[k] mod m1
// (P. L'Ecuyer, Good parameters and implementations for combined multiple recursive random number generators,
// Operations Research 47, 1999.)
//
// A long request is cut into blocks of eight stretches of the sequence that are computed side by side; multiplying the
// state by powers of the recurrences' matrices gives the stretches' first states. Residues are doubles and symmetric
// about zero: below 2^31 in size, so that products with the 21-bit coefficients, and their differences, are exact.
#pragma once

#include <array>

#include "numeric/modular.h"
#include "rng/engines/sinks.h"
#include "rng/streams/status.h"

namespace qor::rng {

namespace mrg32k3a {

using numeric::Matrix3;

inline constexpr int stretches = 8, vectors = stretches / simd::lanes<VecD>;

// What differs between the two recurrences. x[k] = a x[k - 3 + near] - b x[k - 3].
struct First {
  static constexpr std::uint32_t modulus = 4294967087, excess = 209;  // 2^32 mod modulus
  static constexpr std::uint32_t a = 1403580, b = 810728;
  static constexpr int near = 1;
  static constexpr Matrix3 step = numeric::companion({0, a, modulus - b});
  static_assert(step[6] == 4294156359);
};
struct Second {
  static constexpr std::uint32_t modulus = 4294944443, excess = 22853;
  static constexpr std::uint32_t a = 527612, b = 1370589;
  static constexpr int near = 2;
  static constexpr Matrix3 step = numeric::companion({a, 0, modulus - b});
  static_assert(step[6] == 4293573854);
};

// The next residue, from words of 32 bits. The multiple of m keeps the difference positive; with 2^32 = excess mod m,
// two folds bring it below 2^32 + 2^18.
template <class R>
QOR_INLINE std::uint32_t next(std::uint32_t near, std::uint32_t far) {
  constexpr std::uint64_t lift = (R::b + 8) * std::uint64_t{R::modulus};
  std::uint64_t u = std::uint64_t{R::a} * near + (lift - std::uint64_t{R::b} * far);
  u = (u >> 32) * R::excess + static_cast<std::uint32_t>(u);
  if constexpr (R::excess > 2048) u = (u >> 32) * R::excess + static_cast<std::uint32_t>(u);
  return static_cast<std::uint32_t>(u >= R::modulus ? u - R::modulus : u);
}

// u modulo m, for integers |u| < 2^53: |result| <= m/2 + 2. Adding 1.5 2^52 rounds the quotient to an integer; quotient
// and product are exact.
inline constexpr double round_by = 0x1.8p52;
template <class R>
QOR_INLINE VecD reduce(VecD u) {
  const VecD quotient = (u * splat<VecD>(1.0 / R::modulus) + splat<VecD>(round_by)) - splat<VecD>(round_by);
  return u - quotient * splat<VecD>(double{R::modulus});
}

// The matrices of 0, L, 2L .. 7L steps side by side, a stretch a lane, their entries in halves of 16 bits: a product
// with a word of 32 bits is exact, and so is the sum of three.
struct alignas(16) JumpTable {
  double low[9][stretches], high[9][stretches];
};
template <class R, int L>
constexpr JumpTable make_jump_table() {
  JumpTable table{};
  Matrix3 m = numeric::identity3;
  const Matrix3 jump = numeric::pow_mod(R::step, L, R::modulus);
  for (std::size_t s = 0; s < stretches; ++s, m = numeric::mul_mod(jump, m, R::modulus)) {
    for (std::size_t e = 0; e < 9; ++e) {
      table.low[e][s] = m[e] & 0xFFFF;
      table.high[e][s] = m[e] >> 16;
    }
  }
  return table;
}
template <class R, int L>
inline constexpr JumpTable jump_table = make_jump_table<R, L>();

// The residues of one recurrence in all stretches: x[(k + 0) % 3] the oldest after k steps.
template <class R>
struct Residues {
  VecD x[3][vectors];

  template <int L>
  void fan_out(const std::uint32_t* word) {
    const JumpTable& t = jump_table<R, L>;
    VecD w[3];
    for (int j = 0; j < 3; ++j) w[j] = Scaled<0>{}(splat<VecU32>(word[j])).part[0];
    for (int i = 0; i < 3; ++i) {
      for (int v = 0; v < vectors; ++v) {
        const auto entry = [&](const double(&half)[9][stretches], int j) {
          return simd::load<VecD>(&half[3 * i + j][simd::lanes<VecD> * v]);
        };
        const VecD high = entry(t.high, 0) * w[0] + entry(t.high, 1) * w[1] + entry(t.high, 2) * w[2];
        const VecD low = entry(t.low, 0) * w[0] + entry(t.low, 1) * w[1] + entry(t.low, 2) * w[2];
        x[i][v] = reduce<R>(reduce<R>(high) * splat<VecD>(65536) + low);
      }
    }
  }

  template <int K>
  QOR_INLINE VecD step(int v) {
    const VecD u = x[(K + R::near) % 3][v] * splat<VecD>(R::a) - x[K % 3][v] * splat<VecD>(R::b);
    return x[K % 3][v] = reduce<R>(u);
  }

  // The words of one stretch's state after k steps.
  void take(int stretch, int k, std::uint32_t* word) const {
    for (int j = 0; j < 3; ++j) {
      const double residue = x[(k + j) % 3][stretch / simd::lanes<VecD>][stretch % simd::lanes<VecD>];
      const std::uint32_t w = static_cast<std::uint32_t>(static_cast<std::int32_t>(residue));
      word[j] = residue < 0 ? w + R::modulus : w;
    }
  }
};

// Four symmetric residues as words, plus 2^31 modulo 2^32: negative ones get m = 2^32 - excess more.
template <class R>
QOR_INLINE VecU32 biased_words(VecD low, VecD high) {
  const VecD bias = splat<VecD>(round_by + 0x1p31);
  const VecU32 w = simd::evens(as<VecU32>(low + bias), as<VecU32>(high + bias));
  return w - simd::and_not(simd::sign_mask(w), splat<VecU32>(R::excess));
}
// p - q mod m1 from biased words, whose order as signed words is that of the residues.
QOR_INLINE VecU32 combine(VecU32 p, VecU32 q) {
  const VecU32 borrow = as<VecU32>(as<simd::Ints<VecU32>>(q) > as<simd::Ints<VecU32>>(p));
  return p - q - (borrow & splat<VecU32>(First::excess));
}

}  // namespace mrg32k3a

struct Mrg32k3a {
  using Word = std::uint32_t;
  static constexpr double unit = 2.328306549837829e-10;
  static_assert(unit == 1.0 / mrg32k3a::First::modulus);
  static constexpr int least = 1;  // on purpose: a request for no element delivers one

  std::uint32_t s[3], t[3];  // the last residues of the two recurrences, oldest first

  int seed(int n, const std::uint32_t* words) {
    for (int i = 0; i < 6; ++i) (i < 3 ? s[i] : t[i - 3]) = i < n ? words[i] : 1;
    settle<mrg32k3a::First>(s);
    settle<mrg32k3a::Second>(t);
    return status::ok;
  }
  int leapfrog(std::int32_t, int) { return status::no_leapfrog; }
  int skip_ahead(int n) {
    jump<mrg32k3a::First>(s, n);
    jump<mrg32k3a::Second>(t, n);
    return status::ok;
  }
  bool valid() const { return settled<mrg32k3a::First>(s) && settled<mrg32k3a::Second>(t); }

  template <class Sink>
  void draw(int n, Sink sink) {
    int i = 0;
    for (; i <= n - mrg32k3a::stretches * long_stretch; i += mrg32k3a::stretches * long_stretch) {
      draw_block<long_stretch>(i, sink);
    }
    for (; i <= n - mrg32k3a::stretches * short_stretch; i += mrg32k3a::stretches * short_stretch) {
      draw_block<short_stretch>(i, sink);
    }
    if (n - i >= worth_a_block) {
      draw_start(i, n - i, sink);
      return;
    }
    for (; i < n; ++i) sink.put(i, splat<VecU32>(next()), 1);
  }

 private:
  // 1024 elements, the block size of the distributions, and 128.
  static constexpr int long_stretch = 128, short_stretch = 16;
  static constexpr int worth_a_block = 32;  // a short block takes about as long as so many elements one by one

  template <class R>
  static void settle(std::uint32_t* x) {
    for (int i = 0; i < 3; ++i) {
      if (x[i] >= R::modulus) x[i] -= R::modulus;
    }
    if ((x[0] | x[1] | x[2]) == 0) x[0] = 1;
  }
  // Residues, not all zero: the recurrence never gets there.
  template <class R>
  static bool settled(const std::uint32_t* x) {
    return (x[0] | x[1] | x[2]) != 0 && x[0] < R::modulus && x[1] < R::modulus && x[2] < R::modulus;
  }
  template <class R>
  static void jump(std::uint32_t* x, int n) {
    const numeric::Matrix3 power = numeric::pow_mod(R::step, n, R::modulus);
    const numeric::Vector3 v = numeric::mul_mod(power, numeric::Vector3{x[0], x[1], x[2]}, R::modulus);
    for (std::size_t i = 0; i < 3; ++i) x[i] = v[i];
  }

  QOR_INLINE std::uint32_t next() {
    using namespace mrg32k3a;
    const std::uint32_t p = mrg32k3a::next<First>(s[First::near], s[0]);
    const std::uint32_t q = mrg32k3a::next<Second>(t[Second::near], t[0]);
    s[0] = s[1], s[1] = s[2], s[2] = p;
    t[0] = t[1], t[1] = t[2], t[2] = q;
    return p >= q ? p - q : p - q + First::modulus;
  }

  // L rows of the eight stretches' words. The state moves on by n elements of the block.
  template <int L>
  [[gnu::noinline]] void generate(int n, std::uint32_t (*z)[mrg32k3a::stretches]) {
    using namespace mrg32k3a;
    Residues<First> p;
    Residues<Second> q;
    p.template fan_out<L>(s);
    q.template fan_out<L>(t);
    const bool whole = n == stretches * L;
    if (!whole) {
      p.take(n / L, 0, s);
      q.take(n / L, 0, t);
      for (int k = 0; k < n % L; ++k) next();
    }
    const auto row = [&]<int K>(std::uint32_t* words) {
      for (int v = 0; v < vectors; v += 2) {
        const VecD p0 = p.template step<K>(v), p1 = p.template step<K>(v + 1);
        const VecD q0 = q.template step<K>(v), q1 = q.template step<K>(v + 1);
        const VecU32 w = combine(biased_words<First>(p0, p1), biased_words<Second>(q0, q1));
        simd::store(words + simd::lanes<VecD> * v, w);
      }
    };
    for (int k = 0; k + 3 <= L; k += 3) {
      row.template operator()<0>(z[k]);
      row.template operator()<1>(z[k + 1]);
      row.template operator()<2>(z[k + 2]);
    }
    if constexpr (L % 3 > 0) row.template operator()<0>(z[L / 3 * 3]);
    if constexpr (L % 3 > 1) row.template operator()<1>(z[L / 3 * 3 + 1]);
    if (whole) {
      p.take(stretches - 1, L, s);
      q.take(stretches - 1, L, t);
    }
  }

  static constexpr int lanes = simd::lanes<VecU32>;

  template <int L, class Sink>
  void draw_block(int i, Sink sink) {
    static_assert(L % lanes == 0);
    std::uint32_t z[L][mrg32k3a::stretches];
    generate<L>(mrg32k3a::stretches * L, z);
    for (int stretch = 0; stretch < mrg32k3a::stretches; stretch += lanes) {
      for (int k = 0; k < L; k += lanes) {
        VecU32 w[lanes];
        for (int j = 0; j < lanes; ++j) w[j] = simd::load<VecU32>(&z[k + j][stretch]);
        simd::transpose(w[0], w[1], w[2], w[3]);
        for (int j = 0; j < lanes; ++j) sink.put(i + (stretch + j) * L + k, w[j]);
      }
    }
  }

  // The first n elements of a short block.
  template <class Sink>
  void draw_start(int i, int n, Sink sink) {
    std::uint32_t z[short_stretch][mrg32k3a::stretches];
    generate<short_stretch>(n, z);
    for (int k = 0; k < n; k += lanes) {
      VecU32 w;
      for (int j = 0; j < lanes; ++j) w[j] = z[k % short_stretch + j][k / short_stretch];
      if (k + lanes <= n) {
        sink.put(i + k, w);
      } else {
        sink.put(i + k, w, n - k);
      }
    }
  }
};

}  // namespace qor::rng
