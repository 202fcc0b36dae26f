// Primitives that need an instruction by name, for 16-byte registers with SSE2 and SSSE3. Nothing else in the library
// mentions an intrinsic.
#pragma once

#include <emmintrin.h>
#include <tmmintrin.h>

namespace qor::simd {

// For the body of a loop that waits for another thread.
QOR_INLINE void spin_pause() { _mm_pause(); }

// The control and status register of the vector unit.
QOR_INLINE unsigned control_register() { return _mm_getcsr(); }
QOR_INLINE void set_control_register(unsigned csr) { _mm_setcsr(csr); }

// One bit a lane: the lanes whose mask is set, lane 0 lowest.
template <class V>
QOR_INLINE unsigned lanes_set(V mask) {
  if constexpr (sizeof(lane_t<V>) == 8) {
    return static_cast<unsigned>(_mm_movemask_pd(as<__m128d>(mask)));
  } else {
    return static_cast<unsigned>(_mm_movemask_ps(as<__m128>(mask)));
  }
}

template <class V>
inline constexpr unsigned all_lanes = ~(~0u << lanes<V>);

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
QOR_INLINE VecD widen_high(VecF v) { return as<VecD>(_mm_cvtps_pd(_mm_movehl_ps(as<__m128>(v), as<__m128>(v)))); }
QOR_INLINE VecF narrow(VecD low, VecD high) {
  return as<VecF>(_mm_movelh_ps(_mm_cvtpd_ps(as<__m128d>(low)), _mm_cvtpd_ps(as<__m128d>(high))));
}
// Two doubles as the two low singles; zeros above.
QOR_INLINE VecF narrow_low(VecD v) { return as<VecF>(_mm_cvtpd_ps(as<__m128d>(v))); }

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
QOR_INLINE VecU32 zip_high(VecU32 a, VecU32 b) {
  return as<VecU32>(_mm_unpackhi_epi32(as<__m128i>(a), as<__m128i>(b)));
}

// The even and the odd elements of {a, b}.
QOR_INLINE VecD evens(VecD a, VecD b) { return zip_low(a, b); }
QOR_INLINE VecD odds(VecD a, VecD b) { return zip_high(a, b); }
QOR_INLINE VecF evens(VecF a, VecF b) { return as<VecF>(_mm_shuffle_ps(as<__m128>(a), as<__m128>(b), 0x88)); }
QOR_INLINE VecF odds(VecF a, VecF b) { return as<VecF>(_mm_shuffle_ps(as<__m128>(a), as<__m128>(b), 0xDD)); }

// The high halves of the products of the 16-bit parts.
QOR_INLINE VecU32 high_products(VecU32 a, VecU32 b) {
  return as<VecU32>(_mm_mulhi_epu16(as<__m128i>(a), as<__m128i>(b)));
}

// The low 16 bits of each lane, through memory: a store and a short load are cheaper than shifting, masking,
// extracting.
template <class V>
class LowHalves {
 public:
  QOR_INLINE explicit LowHalves(V v) { store(lane_, v); }
  QOR_INLINE unsigned operator()(int lane) const {
    std::uint16_t half;
    std::memcpy(&half, lane_ + lane, sizeof half);
    return half;
  }

 private:
  alignas(sizeof(V)) lane_t<V> lane_[lanes<V>];
};

// The lanes in memory, for loads of parts of them: the compiler would take them from the register, with more
// instructions.
template <class V>
class InMemory {
 public:
  QOR_INLINE explicit InMemory(V v) {
    store(lane_, v);
    asm("" : "+m"(lane_));
  }
  QOR_INLINE const lane_t<V>* operator+(int lane) const { return lane_ + lane; }

 private:
  alignas(sizeof(V)) lane_t<V> lane_[lanes<V>];
};

// The high word of each lane, the same way.
template <class V>
class HighWords : InMemory<V> {
 public:
  using InMemory<V>::InMemory;
  QOR_INLINE std::uint32_t operator()(int lane) const {
    std::uint32_t word;
    std::memcpy(&word, reinterpret_cast<const char*>(*this + lane + 1) - 4, sizeof word);
    return word;
  }
};

// One table row a lane, transposed into columns. `offset(lane)` is the row's offset from `table` in bytes; rows are
// aligned to 16 bytes.
template <class V, int N>
struct Columns {
  V column[N];
};
template <int N, class Offset>
QOR_INLINE Columns<VecD, N> gather_rows(const double* table, Offset offset) {
  const char* const base = reinterpret_cast<const char*>(table);
  const double* const r0 = reinterpret_cast<const double*>(base + offset(0));
  const double* const r1 = reinterpret_cast<const double*>(base + offset(1));
  Columns<VecD, N> out;
  for (int c = 0; c + 1 < N; c += 2) {
    const VecD a = as<VecD>(_mm_load_pd(r0 + c)), b = as<VecD>(_mm_load_pd(r1 + c));
    out.column[c] = zip_low(a, b);
    out.column[c + 1] = zip_high(a, b);
  }
  if constexpr (N % 2 == 1) out.column[N - 1] = as<VecD>(_mm_loadh_pd(_mm_load_sd(r0 + N - 1), r1 + N - 1));
  return out;
}
// Three columns of rows of four singles.
template <class Offset>
QOR_INLINE Columns<VecF, 3> gather_rows3(const float* table, Offset offset) {
  const char* const base = reinterpret_cast<const char*>(table);
  const auto row = [&](int lane) { return reinterpret_cast<const float*>(base + offset(lane)); };
  const auto pairs = [&](int lane) {
    const __m128 low = _mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<const __m64*>(row(lane)));
    return _mm_loadh_pi(low, reinterpret_cast<const __m64*>(row(lane + 1)));
  };
  const __m128 p01 = pairs(0), p23 = pairs(2);
  const __m128 c01 = _mm_unpacklo_ps(_mm_load_ss(row(0) + 2), _mm_load_ss(row(1) + 2));
  const __m128 c23 = _mm_unpacklo_ps(_mm_load_ss(row(2) + 2), _mm_load_ss(row(3) + 2));
  return {{as<VecF>(_mm_shuffle_ps(p01, p23, 0x88)), as<VecF>(_mm_shuffle_ps(p01, p23, 0xDD)),
           as<VecF>(_mm_movelh_ps(c01, c23))}};
}

// The two columns of rows of two singles.
template <class Offset>
QOR_INLINE Columns<VecF, 2> gather_pairs(const float* table, Offset offset) {
  const char* const base = reinterpret_cast<const char*>(table);
  const auto rows = [&](int lane) {
    const __m128 low = _mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<const __m64*>(base + offset(lane)));
    return _mm_loadh_pi(low, reinterpret_cast<const __m64*>(base + offset(lane + 1)));
  };
  const VecF a = as<VecF>(rows(0)), b = as<VecF>(rows(2));
  return {{evens(a, b), odds(a, b)}};
}

// All columns of rows of four singles.
template <int N, class Offset>
QOR_INLINE Columns<VecF, N> gather_rows(const float* table, Offset offset) {
  static_assert(N == 4);
  const char* const base = reinterpret_cast<const char*>(table);
  const auto row = [&](int lane) { return as<VecF>(_mm_load_ps(reinterpret_cast<const float*>(base + offset(lane)))); };
  const VecF r0 = row(0), r1 = row(1), r2 = row(2), r3 = row(3);
  const VecF a = zip_low(r0, r1), b = zip_low(r2, r3), c = zip_high(r0, r1), d = zip_high(r2, r3);
  const auto low = [](VecF p, VecF q) { return as<VecF>(_mm_movelh_ps(as<__m128>(p), as<__m128>(q))); };
  const auto high = [](VecF p, VecF q) { return as<VecF>(_mm_movehl_ps(as<__m128>(q), as<__m128>(p))); };
  return {{low(a, b), high(a, b), low(c, d), high(c, d)}};
}

// The even and the odd words of {a, b}.
QOR_INLINE VecU32 evens(VecU32 a, VecU32 b) { return as<VecU32>(evens(as<VecF>(a), as<VecF>(b))); }
QOR_INLINE VecU32 odds(VecU32 a, VecU32 b) { return as<VecU32>(odds(as<VecF>(a), as<VecF>(b))); }
// The odd words, each in both places of its pair.
QOR_INLINE VecU32 spread_odds(VecU32 v) { return as<VecU32>(_mm_shuffle_epi32(as<__m128i>(v), 0xF5)); }
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
// Magnitudes of signed words.
QOR_INLINE VecU32 abs_words(VecU32 v) { return as<VecU32>(_mm_abs_epi32(as<__m128i>(v))); }
// b without the bits of a.
QOR_INLINE VecU32 and_not(VecU32 a, VecU32 b) { return as<VecU32>(_mm_andnot_si128(as<__m128i>(a), as<__m128i>(b))); }
// Doubles to signed words, towards zero; 0x80000000 when that doesn't fit.
QOR_INLINE VecU32 truncate(VecD low, VecD high) {
  return as<VecU32>(_mm_unpacklo_epi64(_mm_cvttpd_epi32(as<__m128d>(low)), _mm_cvttpd_epi32(as<__m128d>(high))));
}

// All four columns of rows of four singles.
template <class Offset>
QOR_INLINE Columns<VecF, 4> gather_rows4(const float* table, Offset offset) {
  const char* const base = reinterpret_cast<const char*>(table);
  const auto row = [&](int lane) {
    return as<VecU32>(_mm_load_ps(reinterpret_cast<const float*>(base + offset(lane))));
  };
  VecU32 a = row(0), b = row(1), c = row(2), d = row(3);
  transpose(a, b, c, d);
  return {{as<VecF>(a), as<VecF>(b), as<VecF>(c), as<VecF>(d)}};
}

// Every lane the element at p.
template <class V>
QOR_INLINE V broadcast(const lane_t<V>* p) {
  if constexpr (lanes<V> == 2) {
    return as<V>(_mm_loaddup_pd(reinterpret_cast<const double*>(p)));
  } else {
    return as<V>(_mm_load1_ps(reinterpret_cast<const float*>(p)));
  }
}
// Loads and stores after it stay after it: the compiler then doesn't load so early that registers run out.
QOR_INLINE void keep_order() { asm volatile("" ::: "memory"); }
// The value in a register: the compiler otherwise loads what is used twice from memory twice.
template <class V>
QOR_INLINE V held(V v) {
  asm("" : "+x"(v));
  return v;
}
// x, of which the compiler knows nothing: it neither computes multiples ahead nor keeps what x points to in registers.
template <class X>
QOR_INLINE X opaque(X x) {
  asm("" : "+r"(x));
  return x;
}
// From an address that is a multiple of 16.
template <class V>
QOR_INLINE V load_aligned(const lane_t<V>* p) {
  return *reinterpret_cast<const V*>(p);
}

// Sign bits of the even lanes (odd = 0) or of the odd ones.
template <class V>
QOR_INLINE Bits<V> alternating_signs(int odd) {
  Bits<V> s{};
  for (int i = odd; i < lanes<V>; i += 2) s[i] = sign_bit<V>;
  return s;
}
// lanes vectors as the rows of a matrix, transposed in place.
QOR_INLINE void transpose(VecD* v) {
  const VecD a = v[0], b = v[1];
  v[0] = zip_low(a, b);
  v[1] = zip_high(a, b);
}
QOR_INLINE void transpose(VecF* v) {
  const VecF ac = zip_low(v[0], v[2]), bd = zip_low(v[1], v[3]);
  const VecF ac_high = zip_high(v[0], v[2]), bd_high = zip_high(v[1], v[3]);
  v[0] = zip_low(ac, bd);
  v[1] = zip_high(ac, bd);
  v[2] = zip_low(ac_high, bd_high);
  v[3] = zip_high(ac_high, bd_high);
}

// The first two lanes alone, or two lanes each from, or to, two places.
QOR_INLINE VecD load_low(const double* p) { return load<VecD>(p); }
QOR_INLINE VecF load_low(const float* p) {
  return as<VecF>(_mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<const __m64*>(p)));
}
QOR_INLINE void store_low(double* p, VecD v) { store<VecD>(p, v); }
QOR_INLINE void store_low(float* p, VecF v) { _mm_storel_pi(reinterpret_cast<__m64*>(p), as<__m128>(v)); }
template <class V>
QOR_INLINE V load_pairs(const lane_t<V>* low, [[maybe_unused]] const lane_t<V>* high) {
  if constexpr (lanes<V> == 2) {
    return load<V>(low);
  } else {
    return as<V>(_mm_loadh_pi(as<__m128>(load_low(low)), reinterpret_cast<const __m64*>(high)));
  }
}
QOR_INLINE void store_pairs(double* low, double*, VecD v) { store<VecD>(low, v); }
QOR_INLINE void store_pairs(float* low, float* high, VecF v) {
  store_low(low, v);
  _mm_storeh_pi(reinterpret_cast<__m64*>(high), as<__m128>(v));
}
// Pairs of lanes in reverse order.
QOR_INLINE VecD reverse_pairs(VecD v) { return v; }
QOR_INLINE VecF reverse_pairs(VecF v) { return as<VecF>(_mm_shuffle_ps(as<__m128>(v), as<__m128>(v), 0x4E)); }
// Each even lane, each odd lane, in both places of its pair.
QOR_INLINE VecD both_even(VecD v) { return zip_low(v, v); }
QOR_INLINE VecD both_odd(VecD v) { return zip_high(v, v); }
QOR_INLINE VecF both_even(VecF v) { return as<VecF>(_mm_shuffle_ps(as<__m128>(v), as<__m128>(v), 0xA0)); }
QOR_INLINE VecF both_odd(VecF v) { return as<VecF>(_mm_shuffle_ps(as<__m128>(v), as<__m128>(v), 0xF5)); }

// sk += taps[C] * (vector k of data + C), k = 0 ... 5: all eight registers. Left to itself the compiler loads ahead
// and keeps sums in memory.
template <int C>
QOR_INLINE void add_six_products(VecD& s0, VecD& s1, VecD& s2, VecD& s3, VecD& s4, VecD& s5, const VecD* taps,
                                 const double* data) {
  VecD part, w;
  asm volatile(
      "movapd %c[tap](%[taps]), %[w]\n\t"
      "movupd %c[at]+0(%[data]), %[part]\n\tmulpd %[w], %[part]\n\taddpd %[part], %[s0]\n\t"
      "movupd %c[at]+16(%[data]), %[part]\n\tmulpd %[w], %[part]\n\taddpd %[part], %[s1]\n\t"
      "movupd %c[at]+32(%[data]), %[part]\n\tmulpd %[w], %[part]\n\taddpd %[part], %[s2]\n\t"
      "movupd %c[at]+48(%[data]), %[part]\n\tmulpd %[w], %[part]\n\taddpd %[part], %[s3]\n\t"
      "movupd %c[at]+64(%[data]), %[part]\n\tmulpd %[w], %[part]\n\taddpd %[part], %[s4]\n\t"
      "movupd %c[at]+80(%[data]), %[part]\n\tmulpd %[w], %[part]\n\taddpd %[part], %[s5]\n\t"
      : [s0] "+x"(s0), [s1] "+x"(s1), [s2] "+x"(s2), [s3] "+x"(s3), [s4] "+x"(s4), [s5] "+x"(s5), [part] "=&x"(part),
        [w] "=&x"(w)
      : [taps] "r"(taps), [data] "r"(data), [tap] "i"(16 * C), [at] "i"(static_cast<int>(sizeof(double)) * C),
        "m"(*reinterpret_cast<const double(*)[C + 12]>(data)), "m"(taps[C]));
}
template <int C>
QOR_INLINE void add_six_products(VecF& s0, VecF& s1, VecF& s2, VecF& s3, VecF& s4, VecF& s5, const VecF* taps,
                                 const float* data) {
  VecF part, w;
  asm volatile(
      "movaps %c[tap](%[taps]), %[w]\n\t"
      "movups %c[at]+0(%[data]), %[part]\n\tmulps %[w], %[part]\n\taddps %[part], %[s0]\n\t"
      "movups %c[at]+16(%[data]), %[part]\n\tmulps %[w], %[part]\n\taddps %[part], %[s1]\n\t"
      "movups %c[at]+32(%[data]), %[part]\n\tmulps %[w], %[part]\n\taddps %[part], %[s2]\n\t"
      "movups %c[at]+48(%[data]), %[part]\n\tmulps %[w], %[part]\n\taddps %[part], %[s3]\n\t"
      "movups %c[at]+64(%[data]), %[part]\n\tmulps %[w], %[part]\n\taddps %[part], %[s4]\n\t"
      "movups %c[at]+80(%[data]), %[part]\n\tmulps %[w], %[part]\n\taddps %[part], %[s5]\n\t"
      : [s0] "+x"(s0), [s1] "+x"(s1), [s2] "+x"(s2), [s3] "+x"(s3), [s4] "+x"(s4), [s5] "+x"(s5), [part] "=&x"(part),
        [w] "=&x"(w)
      : [taps] "r"(taps), [data] "r"(data), [tap] "i"(16 * C), [at] "i"(static_cast<int>(sizeof(float)) * C),
        "m"(*reinterpret_cast<const float(*)[C + 24]>(data)), "m"(taps[C]));
}

// sk += taps[C] * (vector k of data + C) + taps[C + lanes] * (vector k + 1 of it), k = 0, 1, 2, the two products being
// added first: six products from six loads, all eight registers.
#define QOR_ADD_PAIRED_PRODUCTS(V, T, suffix)                                                                      \
  template <int C>                                                                                                 \
  QOR_INLINE void add_paired_products(V& s0, V& s1, V& s2, const V* taps, const T* data) {                         \
    V first, second, p, q, r;                                                                                      \
    asm volatile(                                                                                                  \
        "movaps %c[tap](%[taps]), %[first]\n\tmovaps %c[tap]+16*%c[lanes](%[taps]), %[second]\n\t"                 \
        "movups %c[at]+0(%[data]), %[p]\n\tmul" suffix                                                             \
        " %[first], %[p]\n\t"                                                                                      \
        "movups %c[at]+16(%[data]), %[q]\n\tmovaps %[q], %[r]\n\tmul" suffix                                       \
        " %[second], %[q]\n\t"                                                                                     \
        "mul" suffix " %[first], %[r]\n\tadd" suffix " %[q], %[p]\n\tadd" suffix                                   \
        " %[p], %[s0]\n\t"                                                                                         \
        "movups %c[at]+32(%[data]), %[q]\n\tmovaps %[q], %[p]\n\tmul" suffix                                       \
        " %[second], %[q]\n\t"                                                                                     \
        "mul" suffix " %[first], %[p]\n\tadd" suffix " %[q], %[r]\n\tadd" suffix                                   \
        " %[r], %[s1]\n\t"                                                                                         \
        "movups %c[at]+48(%[data]), %[q]\n\tmul" suffix                                                            \
        " %[second], %[q]\n\t"                                                                                     \
        "add" suffix " %[q], %[p]\n\tadd" suffix " %[p], %[s2]\n\t"                                                \
        : [s0] "+x"(s0), [s1] "+x"(s1), [s2] "+x"(s2), [first] "=&x"(first), [second] "=&x"(second), [p] "=&x"(p), \
          [q] "=&x"(q), [r] "=&x"(r)                                                                               \
        : [taps] "r"(taps), [data] "r"(data), [tap] "i"(16 * C), [lanes] "i"(lanes<V>),                            \
          [at] "i"(static_cast<int>(sizeof(T)) * C), "m"(*reinterpret_cast<const T(*)[C + 4 * lanes<V>]>(data)),   \
          "m"(*reinterpret_cast<const V(*)[C + lanes<V> + 1]>(taps)));                                             \
  }
QOR_ADD_PAIRED_PRODUCTS(VecD, double, "pd")
QOR_ADD_PAIRED_PRODUCTS(VecF, float, "ps")
#undef QOR_ADD_PAIRED_PRODUCTS

}  // namespace qor::simd
