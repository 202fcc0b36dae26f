// Logarithms of complex numbers, ln |z| + i arg z, with ln |z| = ln(x^2 + y^2)/2.
// x^2 + y^2 is taken in two parts. Next to |z| = 1 the logarithm is that of 1 + t, t = x^2 + y^2 - 1 from a sum of exact
// products (on this cancellation W. Kahan, Branch cuts for complex elementary functions, 1987; T. E. Hull, T. F. Fairgrieve,
// P. T. P. Tang, ACM TOMS 20, 1994). Where squares would overflow or vanish element() works with scaled parts.
// - double _HA: 0.55 ulp in both parts.
// - double _50: the square in one part; next to |z| = 1 as (x - 1)(x + 1) + y^2.
// - single _HA: in double precision, where squares are exact, with short polynomials.
// - single _21: as double _50, in single precision.
// Decimal logarithms have tables of their own, and the angle in two parts times log10 e.
#pragma once

#include "tfn/complex_map.h"
#include "tfn/complex_scaled.h"
#include "tfn/complex_trig.h"
#include "tfn/inverse_trig.h"
#include "tfn/ln.h"
#include "tfn/log10.h"

namespace qor::tfn::complex {

// v rounded to 26 bits; what is left has 26 too.
QOR_INLINE VecD rounded_half(VecD v) {
  using namespace simd;
  return as<VecD>((bits(v) + splat<VecU64>(0x4000000)) & splat<VecU64>(0xFFFFFFFFF8000000));
}

// x^2 + y^2 = hi + lo; in high accuracy 2^-78 of it.
template <class V>
struct SquareOfSize {
  V hi, lo;
};
template <Grade G, class V>
QOR_INLINE SquareOfSize<V> square_of_size(V x, V y) {
  using namespace simd;
  using numeric::quick_two_sum;
  using T = lane_t<V>;
  const V larger = max(abs(x), abs(y)), smaller = min(abs(x), abs(y));
  if constexpr (G == Grade::high) {
    const V a = numeric::upper_half(larger), b = numeric::upper_half(smaller);
    const auto squares = quick_two_sum(a * a, b * b);
    const V rest = (a + larger) * (larger - a) + (b + smaller) * (smaller - b);
    const auto sum = quick_two_sum(squares.hi, squares.lo + rest);
    return {sum.hi, sum.lo};
  } else if constexpr (G == Grade::low) {
    const V square = smaller * smaller, s = larger * larger + square;
    const V over = (larger - T(1)) * (larger + T(1)) + square, near = over + T(1);
    const Bits<V> close = lt(abs(over), splat<V>(T(0.5)));
    return {select(close, near, s), as<V>(bits(over - (near - T(1))) & close)};
  } else {
    const auto s = quick_two_sum(larger * larger, smaller * smaller);
    return {s.hi, s.lo};
  }
}

// x^2 + y^2 - 1 = hi + lo for numbers next to the unit circle, without error but for that of lo: three exact products of
// each part, in steps of about 2^-26.
[[gnu::noinline]] inline SquareOfSize<VecD> square_less_1(VecD x, VecD y) {
  using namespace simd;
  using numeric::two_sum;
  const VecD larger = max(abs(x), abs(y)), smaller = min(abs(x), abs(y));
  const VecD a = rounded_half(larger), b = rounded_half(smaller), a_rest = larger - a, b_rest = smaller - b;
  const auto less = two_sum(a * a, splat<VecD>(-1)), first = two_sum(less.hi, b * b);
  const auto second = two_sum((a + a) * a_rest, (b + b) * b_rest), third = two_sum(a_rest * a_rest, b_rest * b_rest);
  const auto sum = two_sum(first.hi, second.hi), all = two_sum(sum.hi, third.hi);
  const VecD lows = ((less.lo + first.lo) + (second.lo + third.lo)) + (sum.lo + all.lo);
  const auto result = two_sum(all.hi, lows);
  return {result.hi, result.lo};
}

// (atan r)/r - 1, r^2 = t <= 2^-12: the series; the first term left out is 2^-75.
QOR_INLINE VecD longer_small_atan(VecD t) {
  return t * simd::horner(t, -1.0 / 11, 1.0 / 9, -1.0 / 7, 1.0 / 5, -1.0 / 3);
}
// The angle of the point (x, y), head and tail: as Atan2, with the quotient r in two parts everywhere.
QOR_INLINE Split angle(VecD y, VecD x, VecU64& usual) {
  using namespace simd;
  using Core = tfn::Atan2<Accuracy::high>;
  const VecD ax = abs(x), ay = abs(y);
  const VecU64 negative = lt(x, VecD{}), turn = negative & sign_bit<VecD>;
  const VecD if_flat = as<VecD>(bits(ax) & eq(ay, VecD{}));
  usual =
      le(splat<VecD>(Core::least<double>), max(ay, if_flat)) & le(max(ax, ay), splat<VecD>(1 / Core::least<double>));
  const auto begun = Core::begin(y, x);
  const auto [hi, lo, u, v] = arc_rows(atan_table<double>, begun.z).column;
  // r = (y u - x v)/(x u + y v); u and v have 8 bits, u is 0 or 1.
  const VecD x_head = numeric::upper_half(ax), x_tail = ax - x_head;
  const VecD y_head = numeric::upper_half(ay), y_tail = ay - y_head;
  // Exact: multiples of 2^-59 of y below 2^-7 of it.
  const VecD n = (ay * u - x_head * v) - x_tail * v;
  const auto sum = numeric::two_sum(ax * u, y_head * v);
  const Split d = split(sum.hi, sum.lo + y_tail * v);
  const VecD inverse = 1.0 / (d.head + d.tail);
  const VecD r = numeric::upper_half(n * inverse);
  const VecD r_more = ((n - r * d.head) - r * d.tail) * inverse;
  const VecD whole_r = r + r_more;
  const VecD small = r_more + whole_r * longer_small_atan(whole_r * whole_r);
  const VecD whole = where<VecD>(negative, pi_row<double>.hi) + flip_sign(hi, turn);
  const auto leading = numeric::quick_two_sum(whole, flip_sign(r, turn));
  const VecD rest = where<VecD>(negative, pi_row<double>.lo) + flip_sign(lo + small, turn);
  const Split all = split(leading.hi, leading.lo + rest);
  return {flip_sign(all.head, sign(y)), flip_sign(all.tail, sign(y))};
}

// For results that become singles. ln(hi + lo), as Ln with a shorter polynomial: 2^-38 of itself.
QOR_INLINE VecD single_logarithm(VecD hi, const double* at, VecD lo) {
  using namespace simd;
  const VecU64 b = bits(hi);
  const auto row = [at](int l) { return (((numeric::high_word(at + l) >> 7) & 0x1FF0) + 16) & 0x3FE0; };
  const auto [log, log_lo, c] = gather_rows<3>(&ln_table[0].hi, row).column;
  const VecD k = as<VecD>((b >> 52) | splat<VecU64>(0x4330000000000000)) - (0x1p52 + 1023);
  const VecD m = as<VecD>((b & splat<VecU64>(0x000FFFFFFFFFFFFF)) | splat<VecU64>(0x3FF0000000000000));
  const VecD power = tfn::Ln<Accuracy::low>::inverse_power(hi);
  const VecD u = ((m - tfn::Ln<Accuracy::low>::to_row(m)) + lo * power) * c;
  return (k * ln2_hi + log) + (u + (u * u * horner(u, -1.0 / 4, 1.0 / 3, -1.0 / 2) + (k * ln2_lo + log_lo)));
}
// The angle of the point (x, y), four of them: as Atan2, with rows by a quotient of singles. 2^-38.
struct FourAngles {
  VecD low, high;
};
QOR_INLINE FourAngles single_angles(VecD y_low, VecD y_high, VecD x_low, VecD x_high) {
  using namespace simd;
  const VecF quotient = abs(narrow(y_low, y_high)) / abs(narrow(x_low, x_high));
  const VecF z = min(max(quotient, splat<VecF>(float(arc_lowest<double>))), splat<VecF>(64));
  const InMemory<VecF> copy(z);
  constexpr int log2_row = 5, shift = 23 - ArcTraits<double>::log2_parts - log2_row;
  constexpr std::uint32_t row_bytes = 1 << log2_row;
  constexpr std::uint32_t row_0 = ((127 + arc_first_octave) << ArcTraits<double>::log2_parts) - 1;
  const auto half = [&](VecD y, VecD x, int first) {
    const auto [hi, lo, u, v] =
        gather_rows<4>(&atan_table<double>[0].hi, [&](int lane) {
          return (numeric::high_word(copy + (first + lane)) >> shift & ~(row_bytes - 1)) - row_0 * row_bytes;
        }).column;
    const VecD ax = abs(x), ay = abs(y);
    const VecU64 negative = lt(x, VecD{}), turn = negative & sign_bit<VecD>;
    const VecD r = (ay * u - ax * v) / (ax * u + ay * v), r2 = r * r;
    const VecD arc = hi + (r + r * r2 * horner(r2, 1.0 / 5, -1.0 / 3));
    return flip_sign(where<VecD>(negative, pi.hi) + flip_sign(arc, turn), sign(y));
  };
  return {half(y_low, x_low, 0), half(y_high, x_high, 2)};
}

template <class T, Accuracy A, bool Decimal>
struct Logarithm : Bounds<T, A> {
  static constexpr bool native = sizeof(T) == 4 && A == Accuracy::low;  // in single precision
  using Number = std::conditional_t<native, float, double>;
  static constexpr int inputs = 1;
  static constexpr double filler = 1.5;
  static constexpr Grade G = grade<T, A>;
  static constexpr Accuracy level = G == Grade::high ? Accuracy::high : Accuracy::low;
  static constexpr double bias = 0x1p52 + 1023;

  static void run(const Numbers<Number>& z, Numbers<Number>& r, Usual<Number>& usual, int n) {
    if constexpr (native) {
      in_singles(z, r, usual, n);
      rest_in_doubles<Logarithm<T, Accuracy::high, Decimal>>(z, r, usual, n);
    } else {
      squares(z, r, usual, n);
      logarithms(r, n);
      angles(z, r, usual, n);
    }
  }

  static int element(double x, double y, double* r) {
    if (std::isnan(x) || std::isnan(y)) {
      const double nan = x + y;
      return special(std::isinf(x) || std::isinf(y) ? endless : nan, nan, r);
    }
    const Scaled angle = scaled_angle(y, x);
    r[1] = value(Decimal ? angle * Scaled{log10_e.hi, log10_e.lo, 0} : angle);
    if (x == 0 && y == 0) {
      r[0] = -endless;
      return TFN_STATUS_SING;
    }
    r[0] = std::isinf(x) || std::isinf(y) ? endless : size(x, y);
    return TFN_STATUS_OK;
  }

 private:
  [[gnu::noinline]] static void in_singles(const Numbers<float>& z, Numbers<float>& r, Usual<float>& usual, int n) {
    using namespace simd;
    constexpr float factor = Decimal ? float(log10_e.hi) : 1.0f;
    for (int i = 0; i < n; i += lanes<VecF>) {
      const VecF x = z.re(i), y = z.im(i);
      const SquareOfSize<VecF> s = square_of_size<Grade::low>(x, y);
      VecF angle;
      VecU32 good;
      tfn::Atan2<Accuracy::low>::fast(y, x, nullptr, &angle, good);
      r.re.set(i, tfn::Ln<Accuracy::low>::low_single(s.hi, s.lo) * (factor / 2));
      r.im.set(i, Decimal ? angle * factor : angle);
      usual.set(i, good & le(splat<VecF>(0x1p-90f), s.hi) & le(s.hi, splat<VecF>(0x1p120f)));
    }
  }
  // In r: hi and lo of the square. Usual: it has all its bits.
  [[gnu::noinline]] static void squares(const Numbers<double>& z, Numbers<double>& r, Usual<double>& usual, int n) {
    using namespace simd;
    for (int i = 0; i < n; i += lanes<VecD>) {
      SquareOfSize<VecD> s = square_of_size<G>(z.re(i), z.im(i));
      if constexpr (G == Grade::high) {
        const VecU64 close = lt(abs(s.hi - 1.0), splat<VecD>(0x1p-20));
        if (lanes_set(close) != 0) [[unlikely]] {
          const SquareOfSize<VecD> t = square_less_1(z.re(i), z.im(i));
          const VecD hi = t.hi + 1.0;
          s = {select(close, hi, s.hi), select(close, (t.hi - (hi - 1.0)) + t.lo, s.lo)};
        }
      }
      r.re.set(i, s.hi);
      r.im.set(i, s.lo);
      usual.set(i, le(splat<VecD>(0x1p-900), s.hi) & le(s.hi, splat<VecD>(0x1p1000)));
    }
  }
  QOR_INLINE static VecD logarithm(VecD hi, const double* at, VecD less, VecD lo) {
    if constexpr (Decimal) {
      return tfn::Log10<level>::core(hi, at, less, lo);
    } else {
      return tfn::Ln<level>::core(hi, at, less, lo);
    }
  }
  // log10 of hi + lo next to 1: with t = hi + lo - 1 in two parts, their sum being smaller than either at times,
  // t - t^2/2 + t^3/3 times log10 e. The next term is 2^-62.
  [[gnu::noinline]] static VecD decimal_next_to_1(VecD hi, VecD lo) {
    const auto t = numeric::quick_two_sum(hi - 1.0, lo);
    const VecD square = t.hi * t.hi;
    const Split log = split(t.hi, t.lo + (square * t.hi * (1.0 / 3) - square * 0.5));
    return product(log, Split{simd::splat<VecD>(log10_e_hi), simd::splat<VecD>(log10_e_lo)});
  }
  [[gnu::noinline]] static void logarithms(Numbers<double>& r, int n) {
    for (int i = 0; i < n; i += simd::lanes<VecD>) {
      if constexpr (G == Grade::single) {
        r.re.set(i, single_logarithm(r.re(i), r.re.at + i, r.im(i)) * (Decimal ? log10_e.hi / 2 : 0.5));
      } else {
        const VecD hi = r.re(i), lo = r.im(i);
        VecD log = logarithm(hi, r.re.at + i, simd::splat<VecD>(bias), lo);
        if constexpr (Decimal && G == Grade::high) {
          const VecU64 close = simd::lt(simd::abs(hi - 1.0), simd::splat<VecD>(0x1p-20));
          if (simd::lanes_set(close) != 0) [[unlikely]]
            log = simd::select(close, decimal_next_to_1(hi, lo), log);
        }
        r.re.set(i, log * 0.5);
      }
    }
  }
  [[gnu::noinline]] static void angles(const Numbers<double>& z, Numbers<double>& r, Usual<double>& usual, int n) {
    using namespace simd;
    if constexpr (G == Grade::single) {
      for (int i = 0; i < n; i += 4) {
        const auto [low, high] = single_angles(z.im(i), z.im(i + 2), z.re(i), z.re(i + 2));
        r.im.set(i, Decimal ? low * log10_e.hi : low);
        r.im.set(i + 2, Decimal ? high * log10_e.hi : high);
      }
    } else {
      using Core = tfn::Atan2<level>;
      for (int i = 0; i < n; i += lanes<VecD>) {
        VecU64 good;
        VecD angle;
        if constexpr (Decimal && G == Grade::high) {
          const Split parts = complex::angle(z.im(i), z.re(i), good);
          angle = with_sign(product(parts, Split{splat<VecD>(log10_e_hi), splat<VecD>(log10_e_lo)}), sign(z.im(i)));
        } else {
          Core::finish(Core::begin(z.im(i), z.re(i)), &angle, good);
          if constexpr (Decimal) angle = angle * log10_e.hi;
        }
        r.im.set(i, angle);
        usual.keep(i, good);
      }
    }
  }

  // arg(x + iy) of numbers.
  static Scaled scaled_angle(double y, double x) {
    using namespace simd;
    VecU64 good;
    const Split parts = complex::angle(splat<VecD>(y), splat<VecD>(x), good);
    if (lanes_set(good) != 0) return {parts.head[0], parts.tail[0], 0};
    double rounded;
    tfn::Atan2<Accuracy::high>::element(y, x, &rounded);
    // Angles next to the smallest numbers are quotients, taken where they have all their digits.
    if (std::fabs(rounded) < 0x1p-900 && y != 0) return {y * 0x1p200 / x, 0, -200};
    return {rounded, 0, 0};
  }
  // The logarithm of |x + iy|, finite and not 0.
  QOR_INLINE static double size(double x, double y) {
    using numeric::two_product;
    using numeric::two_sum;
    x = std::fabs(x);
    y = std::fabs(y);
    double larger = x > y ? x : y, smaller = x > y ? y : x;
    Pair<double> s;
    int power = 0;
    if (larger > 0.5 && larger < 1.5) {
      // x^2 + y^2 - 1 without error until the last sums.
      const Pair<double> a = two_product(larger, larger), b = two_product(smaller, smaller);
      const Pair<double> less = two_sum(a.hi, -1.0), one = two_sum(less.hi, b.hi), two = two_sum(one.hi, a.lo),
                         three = two_sum(two.hi, b.lo);
      const double rest = ((less.lo + one.lo) + two.lo) + three.lo, over = three.hi + rest;
      if (std::fabs(over) < 0x1p-60) return Decimal ? over * (log10_e.hi / 2) : over / 2;
      s = two_sum(1.0, three.hi);
      s.lo += rest;
    } else {
      power = static_cast<int>(std::bit_cast<std::uint64_t>(larger) >> 52) - 1023;  // -1023 of subnormals
      larger = times_power(larger, -power);
      smaller = times_power(smaller, -power);
      if (larger < 1) {
        larger *= 0x1p54;
        smaller *= 0x1p54;
        power -= 54;
      }
      s = two_product(larger, larger) + two_product(smaller, smaller);
    }
    const VecD hi = simd::splat<VecD>(s.hi);
    double copy[simd::lanes<VecD>];
    simd::store(copy, hi);
    return 0.5 * logarithm(hi, copy, simd::splat<VecD>(bias - 2 * power), simd::splat<VecD>(s.lo))[0];
  }
};
template <class T, Accuracy A>
struct Ln : Logarithm<T, A, false> {};
template <class T, Accuracy A>
struct Log10 : Logarithm<T, A, true> {};

}  // namespace qor::tfn::complex
