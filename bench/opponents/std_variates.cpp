// The distributions of the C++ library on its own Mersenne Twister.
#include <cmath>
#include <random>

#include "harness.h"
#include "opponents/variates.h"

namespace bench {
namespace {

using Engine = std::mt19937;
template <int p, int q>
void beta(int n, double* r) {
  static std::gamma_distribution<double> first(p / thousandth), second(q / thousandth);
  for (int i = 0; i < n; ++i) {
    const double x = first(engine<Engine>()), y = second(engine<Engine>());
    r[i] = x / (x + y);
  }
}
template <int scale>
void poisson_v(int n, std::uint32_t* r) {
  for (int i = 0; i < n; ++i) {
    std::poisson_distribution<int> distribution(scale / thousandth * (1 + i % 8));
    r[i] = static_cast<std::uint32_t>(distribution(engine<Engine>()));
  }
}

constexpr const char* name = "std";
const Add here{
    DrawPeer<double>{"Exponential", name, false, draw<Engine, std::exponential_distribution<double>, double>},
    DrawPeer<double>{"Weibull", name, false, draw<Engine, std::weibull_distribution<double>, double, 1500, 1000>},
    DrawPeer<double>{"Cauchy", name, false, draw<Engine, std::cauchy_distribution<double>, double>},
    DrawPeer<double>{"Rayleigh", name, false, draw<Engine, std::weibull_distribution<double>, double, 2000, 1000>},
    DrawPeer<double>{"Lognormal", name, false, draw<Engine, std::lognormal_distribution<double>, double>},
    DrawPeer<double>{"Gumbel", name, false, gumbel<Engine, std::extreme_value_distribution<double>>},
    DrawPeer<double>{"Gamma(2.5)", name, false, draw<Engine, std::gamma_distribution<double>, double, 2500>},
    DrawPeer<double>{"Gamma(0.4)", name, false, draw<Engine, std::gamma_distribution<double>, double, 400>},
    DrawPeer<double>{"Beta(2, 3)", "std gammas", false, beta<2000, 3000>},
    DrawPeer<double>{"Beta(0.5, 0.5)", "std gammas", false, beta<500, 500>},
    DrawPeer<double>{"Beta(0.5, 3)", "std gammas", false, beta<500, 3000>},
    DrawPeer<std::uint32_t>{"Bernoulli(0.3)", name, false,
                            draw<Engine, std::bernoulli_distribution, std::uint32_t, 300>},
    DrawPeer<std::uint32_t>{"Geometric(0.3)", name, false,
                            draw<Engine, std::geometric_distribution<int>, std::uint32_t, 300>},
    DrawPeer<std::uint32_t>{"Geometric(0.001)", name, false,
                            draw<Engine, std::geometric_distribution<int>, std::uint32_t, 1>},
    DrawPeer<std::uint32_t>{"Binomial(100, 0.3)", name, false,
                            draw_trials<Engine, std::binomial_distribution<int>, 100, 300>},
    DrawPeer<std::uint32_t>{"Binomial(1000000, 0.4)", name, false,
                            draw_trials<Engine, std::binomial_distribution<int>, 1000000, 400>},
    DrawPeer<std::uint32_t>{"Poisson(10)", name, false,
                            draw<Engine, std::poisson_distribution<int>, std::uint32_t, 10000>},
    DrawPeer<std::uint32_t>{"Poisson(1000)", name, false,
                            draw<Engine, std::poisson_distribution<int>, std::uint32_t, 1000000>},
    DrawPeer<std::uint32_t>{"Poisson(100000)", name, false,
                            draw<Engine, std::poisson_distribution<int>, std::uint32_t, 100000000>},
    DrawPeer<std::uint32_t>{"PoissonV(1 .. 8)", name, false, poisson_v<1000>},
    DrawPeer<std::uint32_t>{"PoissonV(20 .. 160)", name, false, poisson_v<20000>},
    DrawPeer<std::uint32_t>{"Negbinomial(5, 0.3)", name, false,
                            draw_trials<Engine, std::negative_binomial_distribution<int>, 5, 300>}};

}  // namespace
}  // namespace bench
