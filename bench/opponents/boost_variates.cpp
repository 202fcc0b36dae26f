// Boost.Random's distributions on its own Mersenne Twister.
#include <boost/random/bernoulli_distribution.hpp>
#include <boost/random/beta_distribution.hpp>
#include <boost/random/binomial_distribution.hpp>
#include <boost/random/cauchy_distribution.hpp>
#include <boost/random/exponential_distribution.hpp>
#include <boost/random/extreme_value_distribution.hpp>
#include <boost/random/gamma_distribution.hpp>
#include <boost/random/geometric_distribution.hpp>
#include <boost/random/laplace_distribution.hpp>
#include <boost/random/lognormal_distribution.hpp>
#include <boost/random/mersenne_twister.hpp>
#include <boost/random/negative_binomial_distribution.hpp>
#include <boost/random/poisson_distribution.hpp>
#include <boost/random/weibull_distribution.hpp>
#include <cmath>

#include "harness.h"
#include "opponents/variates.h"

namespace bench {
namespace {

using Engine = boost::random::mt19937;

// From its exponential numbers, which are quicker than the power that its Weibull distribution takes.
void rayleigh(int n, double* r) {
  static boost::random::exponential_distribution<double> distribution;
  for (int i = 0; i < n; ++i) r[i] = std::sqrt(distribution(engine<Engine>()));
}

using namespace boost::random;
constexpr const char* name = "boost";
const Add here{
    DrawPeer<double>{"Exponential", name, false, draw<Engine, exponential_distribution<double>, double>},
    DrawPeer<double>{"Laplace", name, false, draw<Engine, laplace_distribution<double>, double>},
    DrawPeer<double>{"Weibull", name, false, draw<Engine, weibull_distribution<double>, double, 1500, 1000>},
    DrawPeer<double>{"Cauchy", name, false, draw<Engine, cauchy_distribution<double>, double>},
    DrawPeer<double>{"Rayleigh", name, false, rayleigh},
    DrawPeer<double>{"Lognormal", name, false, draw<Engine, lognormal_distribution<double>, double>},
    DrawPeer<double>{"Gumbel", name, false, gumbel<Engine, extreme_value_distribution<double>>},
    DrawPeer<double>{"Gamma(2.5)", name, false, draw<Engine, gamma_distribution<double>, double, 2500>},
    DrawPeer<double>{"Gamma(0.4)", name, false, draw<Engine, gamma_distribution<double>, double, 400>},
    DrawPeer<double>{"Beta(2, 3)", name, false, draw<Engine, beta_distribution<double>, double, 2000, 3000>},
    DrawPeer<double>{"Beta(0.5, 0.5)", name, false, draw<Engine, beta_distribution<double>, double, 500, 500>},
    DrawPeer<double>{"Beta(0.5, 3)", name, false, draw<Engine, beta_distribution<double>, double, 500, 3000>},
    DrawPeer<std::uint32_t>{"Bernoulli(0.3)", name, false,
                            draw<Engine, bernoulli_distribution<double>, std::uint32_t, 300>},
    DrawPeer<std::uint32_t>{"Geometric(0.3)", name, false,
                            draw<Engine, geometric_distribution<int>, std::uint32_t, 300>},
    DrawPeer<std::uint32_t>{"Geometric(0.001)", name, false,
                            draw<Engine, geometric_distribution<int>, std::uint32_t, 1>},
    DrawPeer<std::uint32_t>{"Binomial(100, 0.3)", name, false,
                            draw_trials<Engine, binomial_distribution<int>, 100, 300>},
    DrawPeer<std::uint32_t>{"Binomial(1000000, 0.4)", name, false,
                            draw_trials<Engine, binomial_distribution<int>, 1000000, 400>},
    DrawPeer<std::uint32_t>{"Poisson(10)", name, false, draw<Engine, poisson_distribution<int>, std::uint32_t, 10000>},
    DrawPeer<std::uint32_t>{"Poisson(1000)", name, false,
                            draw<Engine, poisson_distribution<int>, std::uint32_t, 1000000>},
    DrawPeer<std::uint32_t>{"Poisson(100000)", name, false,
                            draw<Engine, poisson_distribution<int>, std::uint32_t, 100000000>},
    DrawPeer<std::uint32_t>{"Negbinomial(5, 0.3)", name, false,
                            draw_trials<Engine, negative_binomial_distribution<int>, 5, 300>}};

}  // namespace
}  // namespace bench
