// Inverse hyperbolic functions, as logarithms of a number in two parts: ln(h + l), h rounded, l small, by the tables of
// the logarithm (ln.h). All have results of full relative accuracy next to zeros: h is 1 and more there, and l carries
// what is lost.
//   asinh x = ln(|x| + sqrt(x^2 + 1)) with the sign of x
//   acosh x = ln(x + sqrt(x^2 - 1))
//   atanh x = 1/2 ln((1 + |x|)/(1 - |x|)) with the sign of x
// - double _HA: squares exact, roots and quotients with their remainders: 0.503 ulp.
// - double _50: h + l = 1 + y, y = x + x^2/(1 + sqrt(x^2 + 1)), or w + sqrt(w^2 + 2 w) with w = x - 1, or 2 x/(1 - x),
//   from plain arithmetic: 1.9 ulp.
// - single _HA: the same in double precision with a shorter logarithm: 0.502 ulp.
// - single _21: the same in single precision, and the logarithm without a table: 2.08 ulp.
#pragma once

#include <limits>

#include "numeric/float_parts.h"
#include "numeric/pair.h"
#include "qor/tfn.h"
#include "simd/vec.h"
#include "tfn/accuracy.h"
#include "tfn/ln.h"

namespace qor::tfn {

// hi + lo = a^2 exactly.
template <class V>
QOR_INLINE numeric::Pair<V> square(V a) {
  const V upper = numeric::upper_half(a), lower = a - upper, p = a * a;
  return {p, ((upper * upper - p) + (upper + upper) * lower) + lower * lower};
}
// hi + lo = sqrt(q.hi + q.lo), |q.lo| below a few ulp of q.hi; the root of 0 is 0.
template <class V>
QOR_INLINE numeric::Pair<V> root_pair(numeric::Pair<V> q) {
  const V r = simd::sqrt(q.hi), upper = numeric::upper_half(r), lower = r - upper;
  const V rest = (((q.hi - upper * upper) - (upper + upper) * lower) - lower * lower) + q.lo;
  return {r, rest / simd::max(r + r, simd::splat<V>(0x1p-500))};
}
// 1 + y as a pair, y >= 0.
template <class V>
QOR_INLINE numeric::Pair<V> one_plus(V y) {
  return numeric::two_sum(y, simd::splat<V>(1));
}

// What the three functions differ in: the pair of a positive argument; `half` the logarithm; the arguments covered.
struct AsinhForm {
  static constexpr bool odd = true, half = false;
  static constexpr double low_single_bound = 2.0;
  QOR_INLINE static numeric::Pair<simd::VecD> exact(simd::VecD x) {
    const auto p = square(x);
    const auto q = one_plus(p.hi);
    const auto root = root_pair<simd::VecD>({q.hi, q.lo + p.lo});
    const auto h = numeric::quick_two_sum(root.hi, x);
    return {h.hi, h.lo + root.lo};
  }
  template <class V>
  QOR_INLINE static numeric::Pair<V> plain(V x) {
    using T = simd::lane_t<V>;
    const V p = x * x;
    return plain(x, p, simd::sqrt(p + T(1)));
  }
  // p = x^2, root = sqrt(p + 1).
  template <class V>
  QOR_INLINE static numeric::Pair<V> plain(V x, V p, V root) {
    using T = simd::lane_t<V>;
    const V more = p / (T(1) + root), y = x + more;
    auto h = one_plus(y);
    if constexpr (sizeof(T) == 4) h.lo += more - (y - x);
    return h;
  }
  template <class V>
  QOR_INLINE static simd::Bits<V> within(V x, V most) {
    return simd::lt(x, most);
  }
  template <class T>
  static int outside(T x, T* y) {  // infinities and NaNs
    y[0] = x + x;
    return TFN_STATUS_OK;
  }
};
struct AcoshForm {
  static constexpr bool odd = false, half = false;
  static constexpr double low_single_bound = 2.1;  // 2.02 found around 1.03
  QOR_INLINE static numeric::Pair<simd::VecD> exact(simd::VecD x) {
    const auto p = square(x);
    const auto q = numeric::quick_two_sum(p.hi, simd::splat<simd::VecD>(-1));
    const auto root = root_pair(numeric::quick_two_sum(q.hi, q.lo + p.lo));
    const auto h = numeric::quick_two_sum(x, root.hi);
    return {h.hi, h.lo + root.lo};
  }
  template <class V>
  QOR_INLINE static numeric::Pair<V> plain(V x) {
    using T = simd::lane_t<V>;
    const V w = x - T(1);
    return numeric::quick_two_sum(x, simd::sqrt(w * w + (w + w)));
  }
  template <class V>
  QOR_INLINE static simd::Bits<V> within(V x, V most) {
    return simd::le(simd::splat<V>(1), x) & simd::lt(x, most);
  }
  template <class T>
  static int outside(T x, T* y) {
    y[0] = x < 1 ? std::numeric_limits<T>::quiet_NaN() : x + x;
    return x < 1 ? TFN_STATUS_ERRDOM : TFN_STATUS_OK;
  }
};
struct AtanhForm {
  static constexpr bool odd = true, half = true;
  static constexpr double low_single_bound = 2.1;  // 2.08 found around 0.11
  QOR_INLINE static numeric::Pair<simd::VecD> exact(simd::VecD x) {
    using simd::VecD;
    const VecD one = simd::splat<VecD>(1);
    const auto n = numeric::quick_two_sum(one, x), d = numeric::quick_two_sum(one, -x);
    const VecD q = n.hi / d.hi, q_upper = numeric::upper_half(q), q_lower = q - q_upper;
    const VecD d_upper = numeric::upper_half(d.hi), d_lower = d.hi - d_upper;
    const VecD rest = (((n.hi - q_upper * d_upper) - q_upper * d_lower) - q_lower * d_upper) - q_lower * d_lower;
    return {q, (rest + (n.lo - q * d.lo)) / d.hi};
  }
  template <class V>
  QOR_INLINE static numeric::Pair<V> plain(V x) {
    using T = simd::lane_t<V>;
    const V below = T(1) - x, y = (x + x) / below;
    auto h = one_plus(y);
    // In singles with most of what 1 - x was rounded by, if it was.
    if constexpr (sizeof(T) == 4) h.lo -= y * ((T(1) - below) - x);
    return h;
  }
  template <class V>
  QOR_INLINE static simd::Bits<V> within(V x, V) {
    return simd::lt(x, simd::splat<V>(1));
  }
  template <class T>
  static int outside(T x, T* y) {
    const T size = x < 0 ? -x : x;
    y[0] = x != x ? x + x : size == 1 ? x * std::numeric_limits<T>::infinity() : std::numeric_limits<T>::quiet_NaN();
    return x != x ? TFN_STATUS_OK : size == 1 ? TFN_STATUS_SING : TFN_STATUS_ERRDOM;
  }
};

template <class Form, Accuracy A>
struct InverseHyperbolic {
  static constexpr int results = 1;
  static constexpr double filler = Form::half ? 0.5 : 1.5;
  template <class T>
  static constexpr double bound = Form::half&& A == Accuracy::low && sizeof(T) == 4 ? Form::low_single_bound
                                                                                    : default_bound<T>(A);

  template <class V>
  QOR_INLINE static V positive(V x) {
    if constexpr (Form::odd) {
      return simd::abs(x);
    } else {
      return x;
    }
  }
  template <class V>
  QOR_INLINE static V with_sign(V y, V x) {
    if constexpr (Form::odd) y = simd::flip_sign(y, simd::sign(x));
    return y;
  }

  // The first stage is the pair, of a single for _HA two pairs of doubles.
  template <class V>
  struct Begun {
    V x;
    numeric::Pair<V> p;
  };
  struct BegunWide {
    simd::VecF x;
    numeric::Pair<simd::VecD> low, high;
  };
  template <class V>
  QOR_INLINE static auto begin(V x) {
    if constexpr (sizeof(simd::lane_t<V>) == 4 && A == Accuracy::high) {
      return BegunWide{x, Form::plain(positive(simd::widen_low(x))), Form::plain(positive(simd::widen_high(x)))};
    } else if constexpr (A == Accuracy::high) {
      return Begun<V>{x, Form::exact(positive(x))};
    } else {
      return Begun<V>{x, Form::plain(positive(x))};
    }
  }
  // Up to 2^500, and 2^60 in singles, squares don't overflow.
  QOR_INLINE static void finish(const Begun<simd::VecD>& begun, simd::VecD* y, simd::VecU64& usual) {
    using namespace simd;
    const VecD ax = positive(begun.x);
    usual = Form::within(ax, splat<VecD>(0x1p500));
    VecD log = Ln<Accuracy::high>::of_pair(begun.p);
    if constexpr (Form::half) log = log * 0.5;
    // Odd functions are x + O(x^3), and 1 + x has too few bits.
    if constexpr (Form::odd && A == Accuracy::high) log = select(lt(ax, splat<VecD>(0x1p-28)), ax, log);
    y[0] = with_sign(log, begun.x);
  }
  QOR_INLINE static void finish(const Begun<simd::VecF>& begun, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    usual = Form::within(positive(begun.x), splat<VecF>(0x1p60f));
    VecF log = Ln<Accuracy::low>::of_pair(begun.p);
    if constexpr (Form::half) log = log * 0.5f;
    y[0] = with_sign(log, begun.x);
  }
  QOR_INLINE static void finish(const BegunWide& begun, simd::VecF* y, simd::VecU32& usual) {
    using namespace simd;
    usual = Form::within(positive(begun.x), splat<VecF>(std::numeric_limits<float>::infinity()));
    using Short = Ln<Accuracy::low>;
    VecF log = narrow(Short::of_pair_for_single(begun.low), Short::of_pair_for_single(begun.high));
    if constexpr (Form::half) log = log * 0.5f;
    y[0] = with_sign(log, begun.x);
  }
  template <class V>
  QOR_INLINE static void fast(V x, const simd::lane_t<V>*, V* y, simd::Bits<V>& usual) {
    finish(begin(x), y, usual);
  }
  // ln(2 x) beyond.
  QOR_COLD static void retry(const simd::VecD& x, simd::VecD* y, simd::VecU64& usual) requires(!Form::half) {
    using namespace simd;
    const VecD ax = positive(x);
    const VecU64 large = le(splat<VecD>(0x1p500), ax) & le(ax, splat<VecD>(std::numeric_limits<double>::max()));
    double copy[lanes<VecD>];
    store(copy, ax);
    const VecD log = Ln<Accuracy::high>::core(ax, copy, splat<VecD>(0x1p52 + 1022));
    y[0] = select(large, with_sign(log, x), y[0]);
    usual |= large;
  }

  QOR_COLD static void retry(const simd::VecF& x, simd::VecF* y,
                             simd::VecU32& usual) requires(!Form::half && A == Accuracy::low) {
    simd::VecF better;
    simd::VecU32 better_usual;
    InverseHyperbolic<Form, Accuracy::high>::fast(x, nullptr, &better, better_usual);
    y[0] = simd::select(usual, y[0], better);
    usual |= better_usual;
  }
  template <class T>
  static int element(T x, T* y) {
    return Form::outside(x, y);
  }
};

template <Accuracy A>
using Asinh = InverseHyperbolic<AsinhForm, A>;
template <Accuracy A>
using Acosh = InverseHyperbolic<AcoshForm, A>;
template <Accuracy A>
using Atanh = InverseHyperbolic<AtanhForm, A>;

}  // namespace qor::tfn
