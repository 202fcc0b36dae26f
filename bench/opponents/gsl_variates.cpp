// GSL's discrete distributions, and its Laplace and Beta ones, on its Mersenne Twister.
#include <gsl/gsl_randist.h>

#include "harness.h"
#include "opponents/variates.h"

namespace bench {
namespace {

gsl_rng* engine() {
  static gsl_rng* const g = gsl_rng_alloc(gsl_rng_mt19937);
  return g;
}
template <class T, auto f, auto... parameters>
void draw(int n, T* r) {
  gsl_rng* const g = engine();
  for (int i = 0; i < n; ++i) r[i] = f(g, parameters / thousandth...);
}
// Its geometric distribution counts trials.
template <int p>
void geometric(int n, std::uint32_t* r) {
  for (int i = 0; i < n; ++i) r[i] = gsl_ran_geometric(engine(), p / thousandth) - 1;
}
template <int p, unsigned trials>
void binomial(int n, std::uint32_t* r) {
  for (int i = 0; i < n; ++i) r[i] = gsl_ran_binomial(engine(), p / thousandth, trials);
}
template <unsigned marked, unsigned others, unsigned sample>
void hypergeometric(int n, std::uint32_t* r) {
  for (int i = 0; i < n; ++i) r[i] = gsl_ran_hypergeometric(engine(), marked, others, sample);
}
template <int scale>
void poisson_v(int n, std::uint32_t* r) {
  for (int i = 0; i < n; ++i) r[i] = gsl_ran_poisson(engine(), scale / thousandth * (1 + i % 8));
}

constexpr const char* name = "gsl";
const Add here{DrawPeer<double>{"Laplace", name, false, draw<double, gsl_ran_laplace, 1000>},
               DrawPeer<double>{"Beta(2, 3)", name, false, draw<double, gsl_ran_beta, 2000, 3000>},
               DrawPeer<double>{"Beta(0.5, 0.5)", name, false, draw<double, gsl_ran_beta, 500, 500>},
               DrawPeer<double>{"Beta(0.5, 3)", name, false, draw<double, gsl_ran_beta, 500, 3000>},
               DrawPeer<std::uint32_t>{"Bernoulli(0.3)", name, false, draw<std::uint32_t, gsl_ran_bernoulli, 300>},
               DrawPeer<std::uint32_t>{"Geometric(0.3)", name, false, geometric<300>},
               DrawPeer<std::uint32_t>{"Geometric(0.001)", name, false, geometric<1>},
               DrawPeer<std::uint32_t>{"Binomial(100, 0.3)", name, false, binomial<300, 100>},
               DrawPeer<std::uint32_t>{"Binomial(1000000, 0.4)", name, false, binomial<400, 1000000>},
               DrawPeer<std::uint32_t>{"Hypergeometric(1000, 100, 300)", name, false, hypergeometric<300, 700, 100>},
               DrawPeer<std::uint32_t>{"Poisson(10)", name, false, draw<std::uint32_t, gsl_ran_poisson, 10000>},
               DrawPeer<std::uint32_t>{"Poisson(1000)", name, false, draw<std::uint32_t, gsl_ran_poisson, 1000000>},
               DrawPeer<std::uint32_t>{"Poisson(100000)", name, false, draw<std::uint32_t, gsl_ran_poisson, 100000000>},
               DrawPeer<std::uint32_t>{"PoissonV(1 .. 8)", name, false, poisson_v<1000>},
               DrawPeer<std::uint32_t>{"PoissonV(20 .. 160)", name, false, poisson_v<20000>},
               DrawPeer<std::uint32_t>{"Negbinomial(5, 0.3)", name, false,
                                       draw<std::uint32_t, gsl_ran_negative_binomial, 300, 5000>}};

}  // namespace
}  // namespace bench
