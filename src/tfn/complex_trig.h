// Passes over a block: sine and cosine, the exponential, and products of their unrounded results.
#pragma once

#include "numeric/float_parts.h"
#include "numeric/pair.h"
#include "tfn/complex_map.h"
#include "tfn/exp.h"
#include "tfn/trig.h"

namespace qor::tfn::complex {

using simd::VecD;
using simd::VecU64;

// An array of unrounded numbers: head, of 26 bits, and tail; or rounded ones.
template <Grade G>
struct Parts {
  Array<double> head;
};
template <>
struct Parts<Grade::high> {
  Array<double> head, tail;
};
// One of them in registers. A zero has its sign in the head alone.
struct Split {
  VecD head, tail;
};
// hi + lo with a small second part.
QOR_INLINE Split split(VecD hi, VecD lo) {
  const VecD head = numeric::upper_half(hi + lo);
  return {head, (hi - head) + lo};
}
template <Grade G>
QOR_INLINE auto load(const Parts<G>& p, int i) {
  if constexpr (G == Grade::high) {
    return Split{p.head(i), p.tail(i)};
  } else {
    return p.head(i);
  }
}
// The product of the heads is exact. The sign of a zero is not that of the product.
QOR_INLINE VecD product(Split a, Split b) { return a.head * b.head + (a.head * b.tail + a.tail * (b.head + b.tail)); }
QOR_INLINE VecD product(VecD a, VecD b) { return a * b; }
QOR_INLINE VecD head(Split a) { return a.head; }
QOR_INLINE VecD head(VecD a) { return a; }
// v with the sign bits s instead of its own.
template <class V>
QOR_INLINE V with_sign(V v, simd::Bits<V> s) {
  return simd::as<V>(simd::bits(simd::abs(v)) | s);
}

template <Grade G>
struct Waves {
  Parts<G> sine, cosine;
};

namespace detail {

using Both = Trig<Wanted::both>;

QOR_INLINE void put(const Both::Unrounded& from, Parts<Grade::high>& to, int i) {
  const Split s = split(from.hi, -from.minus_lo);
  const VecD whole = from.hi - from.minus_lo;
  to.head.set(i, with_sign(s.head, simd::sign(whole)));
  to.tail.set(i, s.tail);
}
// What the kernel for singles reduces with enough bits.
QOR_INLINE VecU64 single_takes(VecD x) { return simd::lt(simd::abs(x), simd::splat<VecD>(0x1p20)); }
// A vector with lanes that are not usual, once more with a reduction for large arguments.
template <Grade G>
QOR_COLD void waves_again(VecD x, Waves<G>& y, Usual<double>& usual, int i) {
  using namespace simd;
  VecU64 good;
  VecD rounded[2];
  if constexpr (G == Grade::high) {
    const VecD ax = abs(x);
    const auto reduced = reduce_large<trig_exact_rows>(x);
    Both::Unrounded large[2];
    Both::combine_unrounded(reduced.k, reduced.whole, reduced.tail, large);
    rounded[0] = y.sine.head(i) + y.sine.tail(i);
    rounded[1] = y.cosine.head(i) + y.cosine.tail(i);
    const VecU64 had = Both::large_enough(ax * 0x1p-20, rounded);
    for (int k = 0; k < 2; ++k) rounded[k] = large[k].hi - large[k].minus_lo;
    good = had | (Both::large_enough(splat<VecD>(0x1p-35), rounded) & le(splat<VecD>(1), ax) &
                  le(ax, splat<VecD>(std::numeric_limits<double>::max())));
    const auto choose = [&](Parts<G>& p, const Both::Unrounded& v) {
      Parts<G> other;
      put(v, other, 0);
      p.head.set(i, select(had, p.head(i), other.head(0)));
      p.tail.set(i, select(had, p.tail(i), other.tail(0)));
    };
    choose(y.sine, large[0]);
    choose(y.cosine, large[1]);
  } else {
    const VecU64 had = G == Grade::single ? single_takes(x) : VecU64{};
    rounded[0] = y.sine.head(i);
    rounded[1] = y.cosine.head(i);
    Both::retry<Accuracy::low>(x, rounded, good);
    good |= had;
    y.sine.head.set(i, select(had, y.sine.head(i), rounded[0]));
    y.cosine.head.set(i, select(had, y.cosine.head(i), rounded[1]));
  }
  usual.set(i, good);
}

}  // namespace detail

// Sine and cosine of x; sets `usual`. What isn't usual then: infinities, NaNs, and results next to a zero elsewhere than
// at 0.
template <Grade G>
[[gnu::noinline]] void sincos(const Array<double>& x, Waves<G>& y, Usual<double>& usual, int n) {
  using namespace simd;
  using detail::Both;
  for (int i = 0; i < n; i += lanes<VecD>) {
    VecU64 good;
    if constexpr (G == Grade::high) {
      const auto reduced = Both::reduce<Accuracy::high>(x(i));
      Both::Unrounded v[2];
      Both::combine_unrounded(bits(reduced.shifted), reduced.whole, reduced.tail, v);
      const VecD rounded[2] = {v[0].hi - v[0].minus_lo, v[1].hi - v[1].minus_lo};
      detail::put(v[0], y.sine, i);
      detail::put(v[1], y.cosine, i);
      good = Both::large_enough(abs(x(i)) * 0x1p-20, rounded);
    } else {
      VecD v[2];
      if constexpr (G == Grade::low) {
        Both::finish<Accuracy::low>(Both::reduce<Accuracy::low>(x(i)), v, good);
      } else {
        Both::single_half(x(i), v);
        good = detail::single_takes(x(i));
      }
      y.sine.head.set(i, v[0]);
      y.cosine.head.set(i, v[1]);
    }
    usual.set(i, good);
    if (!usual.all(i)) [[unlikely]]
      detail::waves_again<G>(x(i), y, usual, i);
  }
}

// e^x, |x| < 703.
template <Grade G>
QOR_INLINE auto exponential(VecD x) {
  const auto [value, rest] = exp_parts < G == Grade::high ? Accuracy::high : Accuracy::low > (exp_reduce(x));
  if constexpr (G == Grade::high) {
    return split(value, value * rest);
  } else {
    return value + value * rest;
  }
}

}  // namespace qor::tfn::complex
