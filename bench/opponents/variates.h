// Distributions of other libraries: their parameters as template arguments, in thousandths, on an engine of their own.
#pragma once

#include <cstdint>

namespace bench {

inline constexpr double thousandth = 1000;

template <class Engine>
Engine& engine() {
  static Engine e(1);
  return e;
}
template <class Engine, class D, class T, auto... parameters>
void draw(int n, T* r) {
  static D distribution(static_cast<double>(parameters) / thousandth...);
  for (int i = 0; i < n; ++i) r[i] = static_cast<T>(distribution(engine<Engine>()));
}
template <class Engine, class D, int trials, int p>
void draw_trials(int n, std::uint32_t* r) {
  static D distribution(trials, p / thousandth);
  for (int i = 0; i < n; ++i) r[i] = static_cast<std::uint32_t>(distribution(engine<Engine>()));
}
// The least extreme value, from D's greatest.
template <class Engine, class D>
void gumbel(int n, double* r) {
  static D distribution(0, 1);
  for (int i = 0; i < n; ++i) r[i] = -distribution(engine<Engine>());
}

}  // namespace bench
