// Cube root and its reciprocal. |x| = 2^(3 q) 2^j m, m in [1, 2), j = 0, 1, 2; c of 12 bits is about the reciprocal of
// the middle of m's interval of width 1/128, and u = m c - 1, |u| below 2^-8 and a little:
//   cbrt x = 2^q T (1 + u)^(1/3),  1/cbrt x = 2^-q T' (1 + u)^(-1/3)
// with T = cbrt(2^j/c), T' = 1/T from a table of 384 rows. No division, no iteration.
// - _HA, and all members of the cube root: u is exact, T has two parts: T + (T_lo + T p(u)) with p below 2^-9 is off by
// 0.5 and some thousandths of an
//   ulp. So cube roots of cubes are exact.
// - _50 and _21 of the reciprocal: u is rounded and T has one part: 1.6 ulp. (The cube root itself is a quarter faster
//   this way; but 3 should be the root of 27.)
#pragma once

#include <array>
#include <cstdint>
#include <limits>

#include "numeric/float_parts.h"
#include "numeric/pair.h"
#include "qor/tfn.h"
#include "simd/vec.h"
#include "tfn/accuracy.h"

namespace qor::tfn {

enum class CubeRoot { plain, reciprocal };

constexpr numeric::Pair<double> cube_root(numeric::Pair<double> a) {
  double y = 1;
  for (int i = 0; i < 20; ++i) y -= (y - a.hi / (y * y)) / 3;
  using P = numeric::Pair<double>;
  const P root{y, 0};
  return root - (root - a / (root * root)) / P{3, 0};
}

// Row 128 j + i: T or T' in two parts of type T, and c, for m in 1 + [i, i + 1]/128.
template <class T>
struct alignas(4 * sizeof(T)) CubeRootRow {
  T root, root_lo, c, zero;
};
inline constexpr int cube_root_rows = 384;
template <class T, CubeRoot R>
inline constexpr auto cube_root_table = [] {
  std::array<CubeRootRow<T>, cube_root_rows> rows{};
  using P = numeric::Pair<double>;
  for (int j = 0; j < 3; ++j) {
    for (int i = 0; i < 128; ++i) {
      const double c = static_cast<double>(static_cast<int>(0x1p12 * 256 / (257 + 2 * i) + 0.5)) * 0x1p-12;
      const P radicand = P{double(1 << j), 0} / P{c, 0};
      const P root = R == CubeRoot::plain ? cube_root(radicand) : P{1, 0} / cube_root(radicand);
      const T hi = static_cast<T>(root.hi);
      rows[static_cast<std::size_t>(128 * j + i)] = {hi, static_cast<T>((root.hi - hi) + root.lo), static_cast<T>(c),
                                                     0};
    }
  }
  return rows;
}();

// (1 + u)^s - 1 = u p(u), the coefficients of the series from u on; the first term that is left out is economised:
// with |u| <= E, by Chebyshev polynomials, u^3 = 3/4 E^2 u +- E^3/4, u^6 = 3/2 E^2 u^4 - 9/16 E^4 u^2 + E^6/32 +-
// E^6/32 and u^7 = 7/4 E^2 u^5 - 7/8 E^4 u^3 + 7/64 E^6 u +- E^7/64.
template <CubeRoot R>
struct CubeRootSeries {
  double c[8];
  constexpr CubeRootSeries() : c{} {
    const double s = R == CubeRoot::plain ? 1.0 / 3 : -1.0 / 3;
    c[0] = 1;
    for (int k = 1; k < 8; ++k) c[k] = c[k - 1] * (s - (k - 1)) / k;
  }
};
template <CubeRoot R>
inline constexpr CubeRootSeries<R> cube_root_series{};
inline constexpr double cube_root_reach = 0x1p-8 + 0x1p-12;

template <CubeRoot R, class V, bool Exact>
QOR_INLINE V cube_root_polynomial(V u) {
  using T = simd::lane_t<V>;
  constexpr auto& c = cube_root_series<R>.c;
  constexpr double e2 = cube_root_reach * cube_root_reach;
  if constexpr (sizeof(T) == 8 && Exact) {
    return simd::horner(u, c[6], c[5] + c[7] * e2 * 7 / 4, c[4], c[3] - c[7] * e2 * e2 * 7 / 8, c[2],
                        c[1] + c[7] * e2 * e2 * e2 * 7 / 64) *
           u;
  } else if constexpr (sizeof(T) == 8) {
    return simd::horner(u, c[5], c[4] + c[6] * e2 * 3 / 2, c[3], c[2] - c[6] * e2 * e2 * 9 / 16, c[1]) * u;
  } else if constexpr (Exact) {
    return simd::horner(u, T(c[3]), T(c[2]), T(c[1])) * u;
  } else {
    return simd::horner(u, T(c[2]), T(c[1] + c[3] * e2 * 3 / 4)) * u;
  }
}

template <CubeRoot R, Accuracy A>
struct CubeRootKernel {
  static constexpr int results = 1;
  static constexpr double filler = 1;
  static constexpr bool exact = A == Accuracy::high || R == CubeRoot::plain;
  template <class T>
  static constexpr double bound = default_bound<T>(A);

  // Row and q of the exponent and the leading seven fraction bits, 128 (3 q + j) + i less the bias.
  QOR_INLINE static simd::VecU64 third(simd::VecU64 lead) {
    using namespace simd;
    return mul_even(as<VecU32>(lead >> 7), as<VecU32>(splat<VecU64>(683))) >> 11;  // up to 2046/3
  }
  QOR_INLINE static simd::VecU32 third(simd::VecU32 lead) {
    using namespace simd;
    using Shorts = vector_of<std::uint16_t, sizeof(VecU32)>::type;
    const Shorts product = as<Shorts>(lead >> 7) * as<Shorts>(splat<VecU32>(171));  // up to 256/3, in 16 bits
    return as<VecU32>(product) >> 9;
  }
  QOR_INLINE static simd::VecU64 times_rows(simd::VecU64 q) {
    return simd::mul_even(simd::as<simd::VecU32>(q), simd::as<simd::VecU32>(simd::splat<simd::VecU64>(cube_root_rows)));
  }
  QOR_INLINE static simd::VecU32 times_rows(simd::VecU32 q) { return (q << 8) + (q << 7); }

  template <class Offset>
  QOR_INLINE static simd::Columns<simd::VecD, 3> rows(simd::VecD, Offset offset) {
    return simd::gather_rows<3>(&cube_root_table<double, R>[0].root, offset);
  }
  template <class Offset>
  QOR_INLINE static simd::Columns<simd::VecF, 3> rows(simd::VecF, Offset offset) {
    return simd::gather_rows3(&cube_root_table<float, R>[0].root, offset);
  }

  // For |x| normal; the result as if x were 2^(3 down) times as small.
  template <class V>
  QOR_INLINE static V core(V x, int down = 0) {
    using namespace simd;
    using T = lane_t<V>;
    using B = Bits<V>;
    using W = lane_t<B>;
    constexpr int fraction = std::numeric_limits<T>::digits - 1, bias = std::numeric_limits<T>::max_exponent - 1;
    constexpr W fraction_bits = (W{1} << fraction) - 1, one = W{bias} << fraction;
    // A bias that is a multiple of 3.
    constexpr int added = (3 - bias % 3) % 3, third_of_bias = (bias + added) / 3;
    const B b = bits(x);
    const B lead = ((b + b) >> (fraction - 6)) + splat<B>(W{added} << 7);
    const B q = third(lead);
    const LowHalves<B> row(lead - times_rows(q));
    const auto [root, root_lo, c] = rows(x, [&](int l) { return row(l) * sizeof(CubeRootRow<T>); }).column;
    const V m = as<V>((b & splat<B>(fraction_bits)) | splat<B>(one));
    const int unscaled = bias - (R == CubeRoot::plain ? third_of_bias + down : -third_of_bias - down);
    const B exponent = R == CubeRoot::plain ? q + splat<B>(W(unscaled)) : splat<B>(W(unscaled)) - q;
    const V scale = as<V>((exponent << fraction) | sign(x));
    if constexpr (!exact) {
      const V u = m * c - T(1);
      return (root + root * cube_root_polynomial<R, V, exact>(u)) * scale;
    } else {
      // Halves of 26 and 27, or 12 and 12 bits, times 12 bits: both products, and the first less 1, are exact.
      const V head = as<V>(bits(m) & splat<B>(~W{0} << (sizeof(T) == 8 ? 27 : 12)));
      const V u = (head * c - T(1)) + (m - head) * c;
      return (root + (root_lo + root * cube_root_polynomial<R, V, exact>(u))) * scale;
    }
  }

  template <class V>
  QOR_INLINE static void fast(V x, const simd::lane_t<V>*, V* y, simd::Bits<V>& usual) {
    y[0] = core(x);
    usual = numeric::normal_magnitude(x);
  }

  // Zeros, subnormal numbers, infinities and NaNs.
  template <class T>
  static int element(T x, T* y) {
    using L = std::numeric_limits<T>;
    constexpr int up = (L::digits + 2) / 3;
    if (x == 0) {
      y[0] = R == CubeRoot::plain ? x : T(1) / x;
      return R == CubeRoot::plain ? TFN_STATUS_OK : TFN_STATUS_SING;
    }
    if (!(__builtin_fabs(x) <= L::max())) {
      y[0] = R == CubeRoot::plain ? x + x : T(1) / x;
      return TFN_STATUS_OK;
    }
    using V = simd::Vec<T>;
    T factor = 1;
    for (int i = 0; i < 3 * up; ++i) factor *= 2;
    y[0] = core(simd::splat<V>(x * factor), up)[0];
    return TFN_STATUS_OK;
  }
};

template <Accuracy A>
using Cbrt = CubeRootKernel<CubeRoot::plain, A>;
template <Accuracy A>
using InvCbrt = CubeRootKernel<CubeRoot::reciprocal, A>;

}  // namespace qor::tfn
