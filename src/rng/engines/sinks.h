// Where an engine's words go: to the caller as they are, or as numbers a + (b - a) u. An engine hands over vectors of
// consecutive words: put(i, words) stores them as elements i, i + 1, ..., put(i, words, count) the first `count` only.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "simd/vec.h"

namespace qor::rng {

using simd::as;
using simd::splat;
using simd::VecD;
using simd::VecF;
using simd::VecU32;
using simd::VecU64;

// A vector of words as doubles: four 32-bit words fill two vectors, two 64-bit words one.
template <class Words>
struct Doubles {
  VecD part[simd::lanes<Words> / simd::lanes<VecD>];
};

// Words times 2^Log2. A 32-bit word becomes the fraction of a double of 2^52 units, whose constant part is then taken
// off: exact. A 64-bit word goes in halves, the high one as the fraction of 2^84 units; only adding the halves rounds.
template <int Log2>
class Scaled {
  static constexpr std::uint32_t exponent(int e) { return static_cast<std::uint32_t>(e + Log2 + 1023) << 20; }
  static constexpr double power(int e) { return std::bit_cast<double>(std::uint64_t{exponent(e)} << 32); }

 public:
  QOR_INLINE Doubles<VecU32> operator()(VecU32 w) const {
    const VecU32 high = splat<VecU32>(exponent(52));
    const VecD base = splat<VecD>(power(52));
    return {{as<VecD>(simd::zip_low(w, high)) - base, as<VecD>(simd::zip_high(w, high)) - base}};
  }
  QOR_INLINE Doubles<VecU64> operator()(VecU64 w) const {
    const VecU64 low = (w & splat<VecU64>(0xFFFFFFFF)) | splat<VecU64>(std::uint64_t{exponent(52)} << 32);
    const VecU64 high = (w >> 32) | splat<VecU64>(std::uint64_t{exponent(84)} << 32);
    return {{(as<VecD>(high) - splat<VecD>(power(84) + power(52))) + as<VecD>(low)}};
  }
};

// word * scale + a, with these roundings.
class Affine {
 public:
  Affine(double scale, double a) : scale_(splat<VecD>(scale)), a_(splat<VecD>(a)) {}
  template <class Words>
  QOR_INLINE Doubles<Words> operator()(Words w) const {
    Doubles<Words> x = Scaled<0>{}(w);
    for (VecD& part : x.part) part = part * scale_ + a_;
    return x;
  }

 private:
  VecD scale_, a_;
};

// The forms of output: `stride<Words>` elements of type T for each word.
struct AsWords {
  using T = std::uint32_t;
  template <class Words>
  static constexpr int stride = sizeof(simd::lane_t<Words>) / sizeof(T);
  template <class Words>
  QOR_INLINE void store(T* r, Words w) const {
    simd::store(r, as<VecU32>(w));
  }
};
template <class Scale>
struct AsDoubles {
  using T = double;
  template <class Words>
  static constexpr int stride = 1;
  Scale scale;
  template <class Words>
  QOR_INLINE void store(T* r, Words w) const {
    const Doubles<Words> x = scale(w);
    for (const VecD& part : x.part) {
      simd::store(r, part);
      r += simd::lanes<VecD>;
    }
  }
};
template <class Scale>
struct AsSingles {
  using T = float;
  template <class Words>
  static constexpr int stride = 1;
  Scale scale;
  QOR_INLINE void store(T* r, VecU32 w) const {
    const Doubles<VecU32> x = scale(w);
    simd::store(r, simd::narrow(x.part[0], x.part[1]));
  }
  QOR_INLINE void store(T* r, VecU64 w) const {
    const VecD x = scale(w).part[0];
    const VecD pair = as<VecD>(simd::narrow(x, x));
    std::memcpy(r, &pair, sizeof pair / 2);
  }
};
// A 32-bit word times 2^-32, rounded once to single, as a sum of halves: 2^-16 units in the fraction of 2^7 and 2^-32
// units in that of 2^-9. The difference is exact, the sum is the word with one rounding: what rounding the (exact)
// double gives.
struct AsUnitSingles {
  using T = float;
  template <class Words>
  static constexpr int stride = 1;
  QOR_INLINE void store(T* r, VecU32 w) const {
    const VecF low = as<VecF>((w & splat<VecU32>(0xFFFF)) | splat<VecU32>(std::bit_cast<std::uint32_t>(0x1p-9f)));
    const VecF high = as<VecF>((w >> 16) | splat<VecU32>(std::bit_cast<std::uint32_t>(0x1p7f)));
    simd::store(r, (high - splat<VecF>(0x1p7f + 0x1p-9f)) + low);
  }
};

template <class Form>
class Sink {
 public:
  using T = typename Form::T;
  QOR_INLINE Sink(T* r, Form form) : r_(r), form_(form) {}

  template <class Words>
  QOR_INLINE void put(int i, Words w) const {
    form_.store(r_ + i * Form::template stride<Words>, w);
  }
  template <class Words>
  QOR_INLINE void put(int i, Words w, int count) const {
    constexpr int stride = Form::template stride<Words>;
    T whole[simd::lanes<Words> * stride];
    form_.store(whole, w);
    std::memcpy(r_ + i * stride, whole, static_cast<std::size_t>(count * stride) * sizeof(T));
  }

 private:
  T* r_;
  Form form_;
};

}  // namespace qor::rng
