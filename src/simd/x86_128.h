// Primitives that need an instruction by name, for 16-byte registers with SSE2 and SSSE3. Nothing else in the library
// mentions an intrinsic.
#pragma once

#include <emmintrin.h>
#include <tmmintrin.h>

namespace qor::simd {

// One bit a lane: the lanes whose mask is set, lane 0 lowest.
template <class V>
QOR_INLINE unsigned lanes_set(V mask) {
  if constexpr (sizeof(lane_t<V>) == 8) {
    return static_cast<unsigned>(_mm_movemask_pd(as<__m128d>(mask)));
  } else {
    return static_cast<unsigned>(_mm_movemask_ps(as<__m128>(mask)));
  }
}

QOR_INLINE VecD sqrt(VecD v) { return as<VecD>(_mm_sqrt_pd(as<__m128d>(v))); }
QOR_INLINE VecF sqrt(VecF v) { return as<VecF>(_mm_sqrt_ps(as<__m128>(v))); }
// The processor's estimate of 1/sqrt, some 12 bits.
QOR_INLINE VecF rsqrt_estimate(VecF v) { return as<VecF>(_mm_rsqrt_ps(as<__m128>(v))); }

// The second operand wins when either is a NaN: min(max(v, a), b) of a NaN v is therefore b's side of the clamp.
QOR_INLINE VecD max(VecD a, VecD b) { return as<VecD>(_mm_max_pd(as<__m128d>(a), as<__m128d>(b))); }
QOR_INLINE VecF max(VecF a, VecF b) { return as<VecF>(_mm_max_ps(as<__m128>(a), as<__m128>(b))); }
QOR_INLINE VecD min(VecD a, VecD b) { return as<VecD>(_mm_min_pd(as<__m128d>(a), as<__m128d>(b))); }
QOR_INLINE VecF min(VecF a, VecF b) { return as<VecF>(_mm_min_ps(as<__m128>(a), as<__m128>(b))); }

// Low and high half of four singles as doubles, and back with rounding.
QOR_INLINE VecD widen_low(VecF v) { return as<VecD>(_mm_cvtps_pd(as<__m128>(v))); }
QOR_INLINE VecD widen_high(VecF v) {
  return as<VecD>(_mm_cvtps_pd(_mm_movehl_ps(as<__m128>(v), as<__m128>(v))));
}
QOR_INLINE VecF narrow(VecD low, VecD high) {
  return as<VecF>(_mm_movelh_ps(_mm_cvtpd_ps(as<__m128d>(low)), _mm_cvtpd_ps(as<__m128d>(high))));
}

// Signed 32-bit lanes to floating point.
QOR_INLINE VecF to_float(VecU32 v) { return as<VecF>(_mm_cvtepi32_ps(as<__m128i>(v))); }
QOR_INLINE VecD to_double_low(VecU32 v) { return as<VecD>(_mm_cvtepi32_pd(as<__m128i>(v))); }
QOR_INLINE VecD to_double_high(VecU32 v) {
  return as<VecD>(_mm_cvtepi32_pd(_mm_unpackhi_epi64(as<__m128i>(v), as<__m128i>(v))));
}

// Full products of the even 32-bit lanes.
QOR_INLINE VecU64 mul_even(VecU32 a, VecU32 b) { return as<VecU64>(_mm_mul_epu32(as<__m128i>(a), as<__m128i>(b))); }

// {a0, b0} and {a1, b1}; for singles and words {a0, b0, a1, b1} and {a2, b2, a3, b3}.
QOR_INLINE VecD zip_low(VecD a, VecD b) { return as<VecD>(_mm_unpacklo_pd(as<__m128d>(a), as<__m128d>(b))); }
QOR_INLINE VecD zip_high(VecD a, VecD b) { return as<VecD>(_mm_unpackhi_pd(as<__m128d>(a), as<__m128d>(b))); }
QOR_INLINE VecF zip_low(VecF a, VecF b) { return as<VecF>(_mm_unpacklo_ps(as<__m128>(a), as<__m128>(b))); }
QOR_INLINE VecF zip_high(VecF a, VecF b) { return as<VecF>(_mm_unpackhi_ps(as<__m128>(a), as<__m128>(b))); }
QOR_INLINE VecU32 zip_low(VecU32 a, VecU32 b) { return as<VecU32>(_mm_unpacklo_epi32(as<__m128i>(a), as<__m128i>(b))); }
QOR_INLINE VecU32 zip_high(VecU32 a, VecU32 b) { return as<VecU32>(_mm_unpackhi_epi32(as<__m128i>(a), as<__m128i>(b))); }

// The even and the odd elements of {a, b}.
QOR_INLINE VecD evens(VecD a, VecD b) { return zip_low(a, b); }
QOR_INLINE VecD odds(VecD a, VecD b) { return zip_high(a, b); }
QOR_INLINE VecF evens(VecF a, VecF b) { return as<VecF>(_mm_shuffle_ps(as<__m128>(a), as<__m128>(b), 0x88)); }
QOR_INLINE VecF odds(VecF a, VecF b) { return as<VecF>(_mm_shuffle_ps(as<__m128>(a), as<__m128>(b), 0xDD)); }

// The low 16 bits of 32-bit lane `Lane`, as an index.
template <int Lane>
QOR_INLINE unsigned low_half(VecU32 v) {
  return static_cast<unsigned>(_mm_extract_epi16(as<__m128i>(v), 2 * Lane));
}

// Table rows of doubles, one a lane, transposed into columns. Offsets are in bytes from `table` and below 2^16; rows are
// 16-byte aligned.
template <int Columns>
struct DoubleColumns {
  VecD column[Columns];
};
template <int Columns>
QOR_INLINE DoubleColumns<Columns> transpose_rows(const double* table, unsigned offset0, unsigned offset1) {
  const auto pair = [&](unsigned offset, int c) {
    return as<VecD>(_mm_load_pd(reinterpret_cast<const double*>(reinterpret_cast<const char*>(table) + offset) + c));
  };
  DoubleColumns<Columns> out;
  for (int c = 0; c < Columns; c += 2) {
    const VecD a = pair(offset0, c), b = pair(offset1, c);
    out.column[c] = zip_low(a, b);
    if (c + 1 < Columns) out.column[c + 1] = zip_high(a, b);
  }
  return out;
}
// Offsets in the low half of each 64-bit lane; or, for singles, of the two low or the two high 32-bit lanes.
template <int Columns>
QOR_INLINE DoubleColumns<Columns> gather_rows(const double* table, VecU64 offset) {
  return transpose_rows<Columns>(table, low_half<0>(as<VecU32>(offset)), low_half<2>(as<VecU32>(offset)));
}
template <int Columns>
QOR_INLINE DoubleColumns<Columns> gather_rows_low(const double* table, VecU32 offset) {
  return transpose_rows<Columns>(table, low_half<0>(offset), low_half<1>(offset));
}
template <int Columns>
QOR_INLINE DoubleColumns<Columns> gather_rows_high(const double* table, VecU32 offset) {
  return transpose_rows<Columns>(table, low_half<2>(offset), low_half<3>(offset));
}

// The even and the odd words of {a, b}.
QOR_INLINE VecU32 evens(VecU32 a, VecU32 b) { return as<VecU32>(evens(as<VecF>(a), as<VecF>(b))); }
QOR_INLINE VecU32 odds(VecU32 a, VecU32 b) { return as<VecU32>(odds(as<VecF>(a), as<VecF>(b))); }
// Four vectors of four words as the rows of a matrix, transposed.
QOR_INLINE void transpose(VecU32& a, VecU32& b, VecU32& c, VecU32& d) {
  const VecU32 ac = zip_low(a, c), bd = zip_low(b, d), ac_high = zip_high(a, c), bd_high = zip_high(b, d);
  a = zip_low(ac, bd);
  b = zip_high(ac, bd);
  c = zip_low(ac_high, bd_high);
  d = zip_high(ac_high, bd_high);
}
// Each lane all ones when negative as a signed word.
QOR_INLINE VecU32 sign_mask(VecU32 v) { return as<VecU32>(_mm_srai_epi32(as<__m128i>(v), 31)); }
// b without the bits of a.
QOR_INLINE VecU32 and_not(VecU32 a, VecU32 b) { return as<VecU32>(_mm_andnot_si128(as<__m128i>(a), as<__m128i>(b))); }
// Doubles to signed words, towards zero; 0x80000000 when that doesn't fit.
QOR_INLINE VecU32 truncate(VecD low, VecD high) {
  return as<VecU32>(_mm_unpacklo_epi64(_mm_cvttpd_epi32(as<__m128d>(low)), _mm_cvttpd_epi32(as<__m128d>(high))));
}

}  // namespace qor::simd
