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

boost::random::mt19937& engine() {
  static boost::random::mt19937 e(1);
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
  static boost::random::extreme_value_distribution<double> distribution(0, 1);
  for (int i = 0; i < n; ++i) r[i] = -distribution(engine());
}

// From its exponential numbers, which are quicker than the power that its Weibull distribution takes.
void rayleigh(int n, double* r) {
  static boost::random::exponential_distribution<double> distribution;
  for (int i = 0; i < n; ++i) r[i] = std::sqrt(distribution(engine()));
}

using namespace boost::random;
constexpr const char* name = "boost";
const Add here{
    DrawPeer<double>{"Exponential", name, false, draw<exponential_distribution<double>, double>},
    DrawPeer<double>{"Laplace", name, false, draw<laplace_distribution<double>, double>},
    DrawPeer<double>{"Weibull", name, false, draw<weibull_distribution<double>, double, 1500, 1000>},
    DrawPeer<double>{"Cauchy", name, false, draw<cauchy_distribution<double>, double>},
    DrawPeer<double>{"Rayleigh", name, false, rayleigh},
    DrawPeer<double>{"Lognormal", name, false, draw<lognormal_distribution<double>, double>},
    DrawPeer<double>{"Gumbel", name, false, gumbel},
    DrawPeer<double>{"Gamma(2.5)", name, false, draw<gamma_distribution<double>, double, 2500>},
    DrawPeer<double>{"Gamma(0.4)", name, false, draw<gamma_distribution<double>, double, 400>},
    DrawPeer<double>{"Beta(2, 3)", name, false, draw<beta_distribution<double>, double, 2000, 3000>},
    DrawPeer<double>{"Beta(0.5, 0.5)", name, false, draw<beta_distribution<double>, double, 500, 500>},
    DrawPeer<double>{"Beta(0.5, 3)", name, false, draw<beta_distribution<double>, double, 500, 3000>},
    DrawPeer<std::uint32_t>{"Bernoulli(0.3)", name, false, draw<bernoulli_distribution<double>, std::uint32_t, 300>},
    DrawPeer<std::uint32_t>{"Geometric(0.3)", name, false, draw<geometric_distribution<int>, std::uint32_t, 300>},
    DrawPeer<std::uint32_t>{"Geometric(0.001)", name, false, draw<geometric_distribution<int>, std::uint32_t, 1>},
    DrawPeer<std::uint32_t>{"Binomial(100, 0.3)", name, false, draw_trials<binomial_distribution<int>, 100, 300>},
    DrawPeer<std::uint32_t>{"Binomial(1000000, 0.4)", name, false,
                            draw_trials<binomial_distribution<int>, 1000000, 400>},
    DrawPeer<std::uint32_t>{"Poisson(10)", name, false, draw<poisson_distribution<int>, std::uint32_t, 10000>},
    DrawPeer<std::uint32_t>{"Poisson(1000)", name, false, draw<poisson_distribution<int>, std::uint32_t, 1000000>},
    DrawPeer<std::uint32_t>{"Poisson(100000)", name, false, draw<poisson_distribution<int>, std::uint32_t, 100000000>},
    DrawPeer<std::uint32_t>{"Negbinomial(5, 0.3)", name, false,
                            draw_trials<negative_binomial_distribution<int>, 5, 300>}};

}  // namespace
}  // namespace bench
