// The distributions of the C++ library on its own Mersenne Twister.
#include <cmath>
#include <random>

#include "harness.h"
#include "opponents/variates.h"

namespace bench {
namespace {

std::mt19937& engine() {
  static std::mt19937 e(1);
  return e;
}
template <class D, class T, auto... parameters>
void draw(int n, T* r) {
  static D distribution(static_cast<double>(parameters) / thousandth...);
  for (int i = 0; i < n; ++i) r[i] = static_cast<T>(distribution(engine()));
}
template <class D, int trials, int p>
void draw_trials(int n, std::uint32_t* r) {
  static D distribution(trials, p / thousandth);
  for (int i = 0; i < n; ++i) r[i] = static_cast<std::uint32_t>(distribution(engine()));
}
// The least extreme value.
void gumbel(int n, double* r) {
  static std::extreme_value_distribution<double> distribution;
  for (int i = 0; i < n; ++i) r[i] = -distribution(engine());
}
template <int p, int q>
void beta(int n, double* r) {
  static std::gamma_distribution<double> first(p / thousandth), second(q / thousandth);
  for (int i = 0; i < n; ++i) {
    const double x = first(engine()), y = second(engine());
    r[i] = x / (x + y);
  }
}
template <int scale>
void poisson_v(int n, std::uint32_t* r) {
  for (int i = 0; i < n; ++i) {
    std::poisson_distribution<int> distribution(scale / thousandth * (1 + i % 8));
    r[i] = static_cast<std::uint32_t>(distribution(engine()));
  }
}

constexpr const char* name = "std";
const Add here{
    DrawPeer<double>{"Exponential", name, false, draw<std::exponential_distribution<double>, double>},
    DrawPeer<double>{"Weibull", name, false, draw<std::weibull_distribution<double>, double, 1500, 1000>},
    DrawPeer<double>{"Cauchy", name, false, draw<std::cauchy_distribution<double>, double>},
    DrawPeer<double>{"Rayleigh", name, false, draw<std::weibull_distribution<double>, double, 2000, 1000>},
    DrawPeer<double>{"Lognormal", name, false, draw<std::lognormal_distribution<double>, double>},
    DrawPeer<double>{"Gumbel", name, false, gumbel},
    DrawPeer<double>{"Gamma(2.5)", name, false, draw<std::gamma_distribution<double>, double, 2500>},
    DrawPeer<double>{"Gamma(0.4)", name, false, draw<std::gamma_distribution<double>, double, 400>},
    DrawPeer<double>{"Beta(2, 3)", "std gammas", false, beta<2000, 3000>},
    DrawPeer<double>{"Beta(0.5, 0.5)", "std gammas", false, beta<500, 500>},
    DrawPeer<double>{"Beta(0.5, 3)", "std gammas", false, beta<500, 3000>},
    DrawPeer<std::uint32_t>{"Bernoulli(0.3)", name, false, draw<std::bernoulli_distribution, std::uint32_t, 300>},
    DrawPeer<std::uint32_t>{"Geometric(0.3)", name, false, draw<std::geometric_distribution<int>, std::uint32_t, 300>},
    DrawPeer<std::uint32_t>{"Geometric(0.001)", name, false, draw<std::geometric_distribution<int>, std::uint32_t, 1>},
    DrawPeer<std::uint32_t>{"Binomial(100, 0.3)", name, false, draw_trials<std::binomial_distribution<int>, 100, 300>},
    DrawPeer<std::uint32_t>{"Binomial(1000000, 0.4)", name, false,
                            draw_trials<std::binomial_distribution<int>, 1000000, 400>},
    DrawPeer<std::uint32_t>{"Poisson(10)", name, false, draw<std::poisson_distribution<int>, std::uint32_t, 10000>},
    DrawPeer<std::uint32_t>{"Poisson(1000)", name, false, draw<std::poisson_distribution<int>, std::uint32_t, 1000000>},
    DrawPeer<std::uint32_t>{"Poisson(100000)", name, false,
                            draw<std::poisson_distribution<int>, std::uint32_t, 100000000>},
    DrawPeer<std::uint32_t>{"PoissonV(1 .. 8)", name, false, poisson_v<1000>},
    DrawPeer<std::uint32_t>{"PoissonV(20 .. 160)", name, false, poisson_v<20000>},
    DrawPeer<std::uint32_t>{"Negbinomial(5, 0.3)", name, false,
                            draw_trials<std::negative_binomial_distribution<int>, 5, 300>}};

}  // namespace
}  // namespace bench
