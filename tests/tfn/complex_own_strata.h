// Arguments that a complex function needs beside the strata that all share. Included by complex_sweep.h.
#pragma once

namespace qor::test {

// Next to +-1 at all distances and on the axes through them, on both sides of the unit circle and of the ellipse and
// the hyperbolas where textbook formulas change over, and about the sizes where this library's do; for functions whose
// branch points are +-i with parts exchanged.
template <class T>
void inverse_strata(Draw<T>& draw, int per_stratum, bool exchanged, ComplexInputs<T>& in) {
  using L = std::numeric_limits<T>;
  constexpr int lowest = L::min_exponent - L::digits, far = sizeof(T) == 8 ? 250 : 30;
  for (int i = 0; i < per_stratum; ++i) {
    const auto add = [&](T x, T y) {
      const T u = any_sign(draw, x), v = any_sign(draw, y);
      exchanged ? in.add(v, u) : in.add(u, v);
    };
    const auto close = [&] { return 1 + double(draw.scaled(1 - L::digits, -1)); };
    const T beside = T(1 + draw.scaled(-L::digits - 1, -1));
    add(beside, draw.scaled(-2 * L::digits, 0));
    add(beside, draw.scaled(lowest, -1));
    add(beside, T(0));
    add(T(1), draw.scaled(lowest, 2));
    const double t = draw.between(0, M_PI_2), v = draw.between(0, 12), b = 0.6417;
    add(T(10 * std::cos(t) * close()), T(std::sqrt(99) * std::sin(t) * close()));
    add(T(b * std::cosh(v) * close()), T(std::sqrt(1 - b * b) * std::sinh(v) * close()));
    add(T(std::cosh(v) * close()), draw.scaled(lowest, 0));
    add(draw.scaled(far - 4, far + 6), draw.scaled(far - 4, far + 6));
    add(draw.scaled(-far - 4, far + 6), draw.scaled(far - 4, far + 6));
    add(T(1), std::ldexp(T(1 + draw.unit()), -static_cast<int>(draw.word() % 450)));
    add(draw.scaled(-8, 8), std::ldexp(T(1 + draw.unit()), -890 - static_cast<int>(draw.word() % 20)));
  }
}

// Powers z^w with |w ln z| up to where results overflow or vanish: of z anywhere, of wholes, of real z or w, and of z next
// to 1.
template <class T>
void power_strata(Draw<T>& draw, int per_stratum, ComplexInputs<T>& in) {
  using L = std::numeric_limits<T>;
  constexpr double overflow = L::max_exponent * M_LN2, least = (L::min_exponent - L::digits) * M_LN2;
  ComplexInputs<T> z;
  complex_strata(draw, per_stratum, z);
  for (int i = 0; i < per_stratum; ++i) z.add(T(1 + draw.scaled(1 - L::digits, -2)), draw.scaled(-2 * L::digits, -2));
  for (int i = 0; i < z.size(); ++i) {
    const T x = z.a[static_cast<std::size_t>(2 * i)], y = z.a[static_cast<std::size_t>(2 * i + 1)];
    if (x == 0 && y == 0) continue;
    const QuadComplex log = clogq(quad(x, y));
    const double kind = draw.unit(), im = draw.between(-700, 700);
    const double re = kind < 0.2   ? draw.between(overflow - 2, overflow + 1)
                      : kind < 0.4 ? draw.between(least - 2, least + 40)
                      : kind < 0.6 ? draw.between(-5, 5)
                                   : draw.between(least, overflow);
    const QuadComplex w = quad(re, im) / log;
    const Quad w_x = crealq(w), w_y = cimagq(w);
    if (fabsq(w_x) > L::max() || fabsq(w_y) > L::max()) continue;
    if (kind < 0.9) {
      in.add(x, y, T(w_x), T(w_y));
    } else if (fabsq(w_x * cimagq(log)) < 700) {
      in.add(x, y, kind < 0.95 ? T(w_x) : std::nearbyint(T(w_x)), T(0));
    }
  }
}

template <class T>
ComplexInputs<T> complex_inputs(const std::string& function, int count, int per_stratum, std::uint64_t seed) {
  using L = std::numeric_limits<T>;
  ComplexInputs<T> in;
  Draw<T> draw(seed);
  if (count == 2) {
    power_strata(draw, per_stratum, in);
    return in;
  }
  complex_strata(draw, per_stratum, in);
  const auto is = [&](auto... names) { return ((function == names) || ...); };
  if (is("Asin", "Acos", "Acosh", "Atanh")) inverse_strata(draw, per_stratum, false, in);
  if (is("Asinh", "Atan")) inverse_strata(draw, per_stratum, true, in);
  for (int i = 0; i < per_stratum; ++i) {
    if (function == "Ln" || function == "Log10") {
      // As close to |z| = 1 as numbers come, and Pythagorean triples.
      const double angle = draw.between(-4, 4);
      const T x = T(std::cos(angle));
      in.add(x, any_sign(draw, T(sqrtq((1 - static_cast<Quad>(x)) * (1 + static_cast<Quad>(x))))));
      const T m = T(draw.word() % 30 + 1), k = T(draw.word() % 30), scale = std::ldexp(T(1), int(draw.word() % 13) - 9);
      in.add((m * m - k * k) * scale, 2 * m * k * scale);
      in.add(T(1), draw.scaled(-L::digits, -1));
    }
  }
  return in;
}

}  // namespace qor::test
