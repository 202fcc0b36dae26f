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

template <class T>
ComplexInputs<T> complex_inputs(const std::string& function, int, int per_stratum, std::uint64_t seed) {
  ComplexInputs<T> in;
  Draw<T> draw(seed);
  complex_strata(draw, per_stratum, in);
  const auto is = [&](auto... names) { return ((function == names) || ...); };
  if (is("Asin", "Acos", "Acosh", "Atanh")) inverse_strata(draw, per_stratum, false, in);
  if (is("Asinh", "Atan")) inverse_strata(draw, per_stratum, true, in);
  return in;
}

}  // namespace qor::test
