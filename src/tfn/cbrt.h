// Cube root and its reciprocal. |x| = 2^(3 q) 2^j m, m in [1, 2), j = 0, 1, 2; m0 is the middle of m's interval of
// width 1/128, c = 1/m0, and u = (m - m0) c, |u| below 2^-8:
//   cbrt x = 2^q T (1 + u)^(1/3),  1/cbrt x = 2^-q T' (1 + u)^(-1/3)
// with T = cbrt(2^j m0), T' = 1/T from a table of 384 rows. No division, no iteration.
// - _HA, and all members of the cube root: T has two parts: T + (T_lo + T p(u)), p below 2^-9, is off by 0.5 and some
//   thousandths of an ulp. So cube roots of cubes are exact.
// - _50 and _21 of the reciprocal: T has one part: 1.6 ulp. (The cube root itself is a quarter faster
//   this way; but 3 should be the root of 27.)
#pragma once

#include <array>
#include <bit>
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

// The exponent field counts from -bias: it is 3 q + j, and the table's factors of 2 undo the bias.
template <class T>
inline constexpr int cube_root_bias = std::numeric_limits<T>::max_exponent - 1;
constexpr double power_of_two(int e) { return std::bit_cast<double>(static_cast<std::uint64_t>(1023 + e) << 52); }

// Row 128 j + i: T or T' times the cube root of 2^-bias, or its reciprocal, in two parts of type T, and c, for m in 1 +
// [i, i + 1]/128.
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
      const P middle{(257 + 2 * i) / 256.0, 0};
      const P root = cube_root(P{power_of_two(j - cube_root_bias<T> % 3), 0} * middle);
      const P value = R == CubeRoot::plain ? root : P{1, 0} / root;
      const double scale = power_of_two(cube_root_bias<T> / 3 * (R == CubeRoot::plain ? -1 : 1));
      const double c = 1 / middle.hi;
      const T hi = static_cast<T>(value.hi);
      rows[static_cast<std::size_t>(128 * j + i)] = {
          static_cast<T>(hi * scale), static_cast<T>(((value.hi - hi) + value.lo) * scale), static_cast<T>(c), 0};
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
inline constexpr double cube_root_reach = 0x1p-8;

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

  // q of the exponent and the leading seven fraction bits, 128 (3 q + j) + i, and 384 q.
  QOR_INLINE static simd::VecU64 third(simd::VecU64 lead) {
    using namespace simd;
    return mul_even(as<VecU32>(lead >> 7), as<VecU32>(splat<VecU64>(683))) >> 11;  // up to 2046/3
  }
  QOR_INLINE static simd::VecU32 third(simd::VecU32 lead) {
    return simd::high_products(lead, simd::splat<simd::VecU32>(43691)) >> 8;  // 2/3 2^16; up to 2^15
  }
  QOR_INLINE static simd::VecU64 times_rows(simd::VecU64 q) {
    return simd::mul_even(simd::as<simd::VecU32>(q), simd::as<simd::VecU32>(simd::splat<simd::VecU64>(cube_root_rows)));
  }
  QOR_INLINE static simd::VecU32 times_rows(simd::VecU32 q) {
    using namespace simd;
    using Shorts = vector_of<std::uint16_t, sizeof(VecU32)>::type;
    return as<VecU32>(as<Shorts>(q) * as<Shorts>(splat<VecU32>(cube_root_rows)));  // in 16 bits
  }

  template <class Offset>
  QOR_INLINE static simd::Columns<simd::VecD, 3> rows(simd::VecD, Offset offset) {
    return simd::gather_rows<3>(&cube_root_table<double, R>[0].root, offset);
  }
  template <class Offset>
  QOR_INLINE static simd::Columns<simd::VecF, 3> rows(simd::VecF, Offset offset) {
    return simd::gather_rows3(&cube_root_table<float, R>[0].root, offset);
  }

  // For |x| normal.
  template <class V>
  QOR_INLINE static V core(V x) {
    using namespace simd;
    using T = lane_t<V>;
    using B = Bits<V>;
    using W = lane_t<B>;
    constexpr int fraction = std::numeric_limits<T>::digits - 1, log2_row = sizeof(T) == 8 ? 5 : 4;
    static_assert(sizeof(CubeRootRow<T>) == 1 << log2_row);
    constexpr W fraction_bits = (W{1} << fraction) - 1, half_row = W{1} << (fraction - 8);
    constexpr W one = W{cube_root_bias<T>} << fraction, leading = fraction_bits & ~(2 * half_row - 1);
    const B b = bits(x), lead = (b + b) >> (fraction - 6), q = third(lead);
    const LowHalves<B> row((lead - times_rows(q)) << log2_row);
    const auto [root, root_lo, c] = rows(x, row).column;
    const V m = as<V>((b & splat<B>(fraction_bits)) | splat<B>(one));
    const V middle = as<V>((b & splat<B>(leading)) | splat<B>(one + half_row));
    const V u = (m - middle) * c;
    V rest = root * cube_root_polynomial<R, V, exact>(u);
    if constexpr (exact) rest += root_lo;
    // 2^q, or 2^-q, and the sign.
    const B size = bits(root + rest), scale = (q << fraction) | sign(x);
    return as<V>(R == CubeRoot::plain ? size + scale : size - scale);
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
    constexpr T factor = power_of_two(up), cube = factor * factor * factor;
    const T root = core(simd::splat<V>(x * cube))[0];
    y[0] = R == CubeRoot::plain ? root / factor : root * factor;
    return TFN_STATUS_OK;
  }
};

template <Accuracy A>
using Cbrt = CubeRootKernel<CubeRoot::plain, A>;
template <Accuracy A>
using InvCbrt = CubeRootKernel<CubeRoot::reciprocal, A>;

}  // namespace qor::tfn
