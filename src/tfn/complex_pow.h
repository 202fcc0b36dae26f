// Powers of complex numbers, z^w = e^(w ln z), ln z = l + i a:
//   z^w = e^(Re w l - Im w a) (cos + i sin)(Re w a + Im w l).
// The errors of l and a come multiplied by |w ln z|, so both are made in two parts, their errors 2^-66 of |ln z|; the
// product and the arguments of the exponential, sine and cosine are carried in two parts too.
// - double _HA: with |w ln z| up to 2^10, 0.9 ulp of the result's size; from there the error grows in proportion.
// - double _50: exponential, sine and cosine rounded.
// - singles: all in double precision, one part.
// l next to |z| = 1 is that of 1 + t, t = x^2 + y^2 - 1 without error.
#pragma once

#include "tfn/complex_exp.h"
#include "tfn/complex_log.h"
#include "tfn/complex_map.h"
#include "tfn/complex_scaled.h"
#include "tfn/complex_trig.h"
#include "tfn/pow.h"

namespace qor::tfn::complex {

// ln |x + iy| from its square s, the head of 26 bits; 2^added was taken out of x and y before.
QOR_INLINE Split log_of_size(SquareOfSize<VecD> s, VecD x, VecD y, double added) {
  using namespace simd;
  auto [k, u, hi, lo, c] = log_reduce(s.hi, LowHalves<VecU64>(bits(s.hi) >> 36), &ln_exact_table[0].hi,
                                      splat<VecD>(0x1p52 + 1023 - 2 * added));
  VecD v = s.lo * tfn::Ln<Accuracy::high>::inverse_power(s.hi) * c;
  const VecU64 close = lt(abs(s.hi - 1.0), splat<VecD>(0x1p-9));
  if (added == 0 && lanes_set(close) != 0) [[unlikely]] {
    const SquareOfSize<VecD> t = square_less_1(x, y);
    const auto far = [&](VecD w) { return as<VecD>(bits(w) & ~close); };
    k = far(k);
    hi = far(hi);
    lo = far(lo);
    u = select(close, t.hi, u);
    v = select(close, t.lo, v);
  }
  const LnParts parts = ln_parts(k, u, hi, lo, v);
  return {parts.hi * 0.5, parts.lo * 0.5};
}

template <class T, Accuracy A>
struct Pow {
  using Number = double;
  static constexpr int inputs = 2;
  static constexpr double filler = 1.5;
  static constexpr Grade G = grade<T, A>;
  // 1.13 found for doubles where |b ln a| nears 2^10.
  static constexpr double size_bound = G == Grade::high ? 1.2 : Bounds<T, A>::size_bound, part_bound = endless;

  static void run(const Numbers<double>& z, const Numbers<double>& w, Numbers<double>& r, Usual<double>& usual, int n) {
    if constexpr (G == Grade::single) {
      Numbers<double> log;
      Usual<double> log_usual;
      Ln<T, Accuracy::high>::run(z, log, log_usual, n);
      multiply(w, log, n);
      Exp<T, A>::run(log, r, usual, n);
      usual.keep_all(log_usual, n);
    } else {
      Logarithms log;
      Products p;
      logarithms(z, log, usual, n);
      products(w, log, p, usual, n);
      powers(p, r, n);
    }
  }

  static int element(double x, double y, double wx, double wy, double* r) {
    if (wx == 0 && wy == 0) return special(1, 0, r);
    if (std::isnan(x) || std::isnan(y) || std::isnan(wx) || std::isnan(wy)) {
      const double nan = (x + y) + (wx + wy);
      return special(std::isnan(nan) ? nan : no_number, std::isnan(nan) ? nan : no_number, r);
    }
    if ((x == 0 && y == 0) || std::isinf(x) || std::isinf(y) || std::isinf(wx) || std::isinf(wy)) {
      return limit(x, y, wx, wy, r);
    }
    Scaled log, arc;
    scaled_log(x, y, log, arc);
    const Scaled a = normalised(wx), b = normalised(wy);
    const Scaled p = sum(a * log, -(b * arc)), q = sum(a * arc, b * log);
    return raise(p, q, r);
  }

 private:
  [[gnu::noinline]] static void multiply(const Numbers<double>& w, Numbers<double>& z, int n) {
    for (int i = 0; i < n; i += simd::lanes<VecD>) {
      const VecD re = z.re(i), im = z.im(i);
      z.re.set(i, w.re(i) * re - w.im(i) * im);
      z.im.set(i, w.re(i) * im + w.im(i) * re);
    }
  }
  struct Logarithms {
    Parts<Grade::high> size, angle;
  };
  struct Products {
    Numbers<double> value, rest;
  };
  [[gnu::noinline]] static void logarithms(const Numbers<double>& z, Logarithms& log, Usual<double>& usual, int n) {
    using namespace simd;
    for (int i = 0; i < n; i += lanes<VecD>) {
      const VecD x = z.re(i), y = z.im(i);
      const Split size = log_of_size(square_of_size<Grade::high>(x, y), x, y, 0);
      log.size.head.set(i, size.head);
      log.size.tail.set(i, size.tail);
    }
    for (int i = 0; i < n; i += lanes<VecD>) {
      VecU64 good;
      const Split arc = complex::angle(z.im(i), z.re(i), good);
      log.angle.head.set(i, arc.head);
      log.angle.tail.set(i, arc.tail);
      usual.set(i, good);
    }
  }
  // The heads' products are exact. Usual: what the exponential and the reduction of angles take. (Numbers without
  // squares are no usual ones for the angle.)
  [[gnu::noinline]] static void products(const Numbers<double>& w, const Logarithms& log, Products& p,
                                         Usual<double>& usual, int n) {
    using namespace simd;
    for (int i = 0; i < n; i += lanes<VecD>) {
      const VecD wx = w.re(i), wy = w.im(i), wx_head = numeric::upper_half(wx), wy_head = numeric::upper_half(wy);
      const VecD wx_tail = wx - wx_head, wy_tail = wy - wy_head;
      const Split size = load(log.size, i), arc = load(log.angle, i);
      const auto value = [](VecD first, VecD second, VecD rest) {
        const auto both = numeric::two_sum(first, second);
        if constexpr (G == Grade::low) {
          return Pair<VecD>{both.hi, both.lo + rest};
        } else {
          return numeric::quick_two_sum(both.hi, both.lo + rest);
        }
      };
      const auto re = value(wx_head * size.head, -(wy_head * arc.head),
                            (wx_tail * size.head + wx * size.tail) - (wy_tail * arc.head + wy * arc.tail));
      const auto im = value(wx_head * arc.head, wy_head * size.head,
                            (wx_tail * arc.head + wx * arc.tail) + (wy_tail * size.head + wy * size.tail));
      p.value.re.set(i, re.hi);
      p.rest.re.set(i, re.lo);
      p.value.im.set(i, im.hi);
      p.rest.im.set(i, im.lo);
      usual.keep(i, lt(abs(re.hi), splat<VecD>(680)) & lt(abs(im.hi), splat<VecD>(0x1p19)));
    }
  }
  [[gnu::noinline]] static void powers(const Products& p, Numbers<double>& r, int n) {
    using namespace simd;
    constexpr Accuracy level = G == Grade::high ? Accuracy::high : Accuracy::low;
    for (int i = 0; i < n; i += lanes<VecD>) {
      const auto [value, rest] = exp_parts<level>(exp_reduce(p.value.re(i), p.rest.re(i)));
      const VecD q = p.value.im(i);
      auto reduced = detail::Both::reduce<level>(q);
      const VecU64 turned = level == Accuracy::low ? sign(q) : VecU64{};
      reduced.tail -= flip_sign(p.rest.im(i), turned);
      if constexpr (G == Grade::high) {
        detail::Both::Unrounded v[2];
        detail::Both::combine_unrounded(bits(reduced.shifted), reduced.whole, reduced.tail, v);
        const Split e = split(value, value * rest);
        r.re.set(i, product(e, split(v[1].hi, -v[1].minus_lo)));
        r.im.set(i, with_sign(product(e, split(v[0].hi, -v[0].minus_lo)), sign(v[0].hi - v[0].minus_lo)));
      } else {
        VecD v[2];
        detail::Both::combine<level>(bits(reduced.shifted), reduced.whole, reduced.tail, turned, v);
        const VecD e = value + value * rest;
        r.re.set(i, e * v[1]);
        r.im.set(i, e * v[0]);
      }
    }
  }

  // v with hi about 1.
  static Scaled normalised(double v) {
    if (v == 0) return {v, 0, 0};
    const bool small = std::fabs(v) < 0x1p-900;
    const double up = small ? v * 0x1p200 : v;
    const int power = static_cast<int>(std::bit_cast<std::uint64_t>(up) >> 52 & 0x7FF) - 1023;
    return {times_power(up, -power), 0, small ? power - 200 : power};
  }
  static Scaled sum(Scaled a, Scaled b) {
    if (a.hi == 0) return b.hi == 0 ? Scaled{a.hi + b.hi, 0, 0} : b;
    if (b.hi == 0) return a;
    if (a.power < b.power) return sum(b, a);
    const int apart = a.power - b.power;
    if (apart > 900) return a;
    const double down = numeric::power_of_two(-apart);
    const Pair<double> s = Pair<double>{a.hi, a.lo} + Pair<double>{b.hi * down, b.lo * down};
    return {s.hi, s.lo, a.power};
  }
  // ln |x + iy| and the angle, of finite numbers other than 0.
  static void scaled_log(double x, double y, Scaled& log, Scaled& arc) {
    using simd::splat;
    const double larger = std::fabs(x) > std::fabs(y) ? std::fabs(x) : std::fabs(y);
    const Scaled big = normalised(larger);
    // Not scaled next to 1, where the distance from 1 counts.
    const int power = big.power > 1 || big.power < -2 ? big.power : 0;
    const double a = times_power(x, -power), b = times_power(y, -power);
    const double size = std::fabs(a) > std::fabs(b) ? std::fabs(a) : std::fabs(b),
                 other = std::fabs(a) > std::fabs(b) ? std::fabs(y) : std::fabs(x);
    const Scaled nx = normalised(x), ny = normalised(y);
    VecU64 good;
    const Split parts = complex::angle(splat<VecD>(b), splat<VecD>(a), good);
    if (x > 0 && y != 0 && ny.power < nx.power - 200) {
      arc = ny / nx;
    } else if (simd::lanes_set(good) != 0) {
      arc = {parts.head[0], parts.tail[0], 0};
    } else {  // next to another axis
      const double side = std::copysign(std::fabs(b) < std::fabs(a) ? 1.0 : 0.5, y);
      arc = {pi.hi * side, pi.lo * side, 0};
    }
    if (size == 1 && power == 0 && other < 0x1p-100) {  // y^2/2 beside 1
      const Scaled o = normalised(other);
      log = o * o;
      log.power -= 1;
      return;
    }
    const Split s =
        log_of_size(square_of_size<Grade::high>(splat<VecD>(a), splat<VecD>(b)), splat<VecD>(a), splat<VecD>(b), power);
    log = {s.head[0], s.tail[0], 0};
  }
  // e^(p + iq).
  static int raise(Scaled p, Scaled q, double* r) {
    const double re = value(p);
    ScaledWave whole, rest;
    double q_hi = value(q);
    if (!std::isfinite(q_hi)) q_hi = std::copysign(std::numeric_limits<double>::max(), q_hi);
    scaled_sincos(q_hi, whole);
    const double q_rest =
        std::fabs(q_hi) > 0x1p-900 ? value({q.lo + (q.hi - times_power(q_hi, -q.power)), 0, q.power}) : 0;
    Scaled s = whole.sine, c = whole.cosine;
    if (q_rest != 0 && std::fabs(q_rest) < 0x1p900) {
      scaled_sincos(q_rest, rest);
      s = sum(whole.sine * rest.cosine, whole.cosine * rest.sine);
      c = sum(whole.cosine * rest.cosine, -(whole.sine * rest.sine));
    }
    const double limited = re > 1490 ? 1490 : re < -1490 ? -1490 : re;
    Scaled e = scaled_exp(limited);
    if (limited == re && std::fabs(re) > 0x1p-60) {  // e^rest
      const double p_rest = value({p.lo + (p.hi - times_power(re, -p.power)), 0, p.power});
      const Pair<double> more = Pair<double>{e.hi, e.lo} * Pair<double>{1, p_rest};
      e = {more.hi, more.lo, e.power};
    }
    return store_result(value(e * c), value(e * s), r);
  }
  // 0 to a power, and numbers or powers that are infinite.
  static int limit(double x, double y, double wx, double wy, double* r) {
    double size = 0;  // above 0: the result grows without end
    bool turns = wy != 0;
    if (std::isinf(wx) || std::isinf(wy)) {
      const double square = std::fabs(x) < 2 && std::fabs(y) < 2 ? (x - 1) * (x + 1) + y * y : 1;
      size = std::isinf(wy) || std::isinf(x) || std::isinf(y) ? 0 : wx > 0 ? square : -square;
      turns = turns || y != 0 || !(x > 0);
    } else {
      size = x == 0 && y == 0 ? -wx : wx;
    }
    if (!(size < 0) && !(size > 0)) return no_result(no_number, no_number, r);
    if (size < 0) return special(0, 0, r);
    if (x == 0 && y == 0) {
      special(endless, turns ? no_number : 0, r);
      return TFN_STATUS_SING;
    }
    if (turns) return special(endless, no_number, r);
    if (std::isinf(wx)) return special(endless, 0, r);
    double angle;
    tfn::Atan2<Accuracy::high>::element(y, x, &angle);
    if (angle == 0) return special(endless, std::copysign(0.0, wx > 0 ? angle : -angle), r);
    ScaledWave wave;
    scaled_sincos(wx * angle, wave);
    return special(std::copysign(endless, wave.cosine.hi), std::copysign(endless, wave.sine.hi), r);
  }
};
// The second argument a scalar.
template <class T, Accuracy A>
struct Powx : Pow<T, A> {};

}  // namespace qor::tfn::complex
