#include "catalog.h"

#include <algorithm>
#include <cmath>

#include "command.h"
#include "tfn/functions.def"

namespace cli {

// ---- engines --------------------------------------------------------------------------------------------------------

const std::vector<Engine> engines = {
    {"mcg31m1", QOR_BRNG_MCG31M1, 1, "2^31 - 2", "multiplicative congruential", true, true},
    {"r250", QOR_BRNG_R250, 1, "2^250 - 1", "shift register", false, false},
    {"mrg32k3a", QOR_BRNG_MRG32K3A, 1, "2^191", "combined multiple recursive", false, true},
    {"mcg59", QOR_BRNG_MCG59, 1, "2^57", "multiplicative congruential", true, true},
    {"wh", QOR_BRNG_WH, 273, "above 2^92", "Wichmann-Hill", true, true},
    {"mt19937", QOR_BRNG_MT19937, 1, "2^19937 - 1", "Mersenne Twister", false, false},
    {"mt2203", QOR_BRNG_MT2203, 1024, "2^2203 - 1", "Mersenne Twisters, independent members", false, false},
    {"sobol", QOR_BRNG_SOBOL, 1, "2^32 vectors", "quasi-random; the seed is the dimension, 1 to 40", true, false, 40},
    {"niederr", QOR_BRNG_NIEDERR, 1, "2^32 vectors", "quasi-random; the seed is the dimension, 1 to 318", true, false,
     318},
};

const Engine& engine_of(const std::string& text) {
  const std::string name = lower(text.substr(0, text.find(':')));
  const auto engine = std::ranges::find(engines, name, &Engine::name);
  if (engine == engines.end()) {
    throw Misuse(unknown("engine", name, names_of(engines)) + " ('qor engines' lists them)");
  }
  return *engine;
}

int brng_of(const std::string& text) {
  const Engine& engine = engine_of(text);
  if (engine.name.size() == text.size()) return engine.brng;
  const std::string member = text.substr(engine.name.size() + 1);
  return engine.brng + static_cast<int>(whole_number(member, "member of " + engine.name, 0,
                                                     static_cast<unsigned>(engine.members - 1)));
}

// ---- distributions --------------------------------------------------------------------------------------------------

namespace {

constexpr double needed = NAN;
constexpr double most = 2147483647;
bool is_whole(double v) { return v == std::floor(v) && std::fabs(v) <= most; }

// Values are finite, whatever else they must be; `first` is the distribution's first parameter.
using Range = Parameter::Range;
constexpr Range any = {"finite", [](double, double) { return true; }};
constexpr Range positive = {"positive", [](double v, double) { return v > 0; }};
constexpr Range above = {"above a", [](double v, double first) { return v > first; }};
constexpr Range probability = {"from 0 to 1", [](double v, double) { return v >= 0 && v <= 1; }};
constexpr Range chance = {"above 0 and at most 1", [](double v, double) { return v > 0 && v <= 1; }};
constexpr Range mean_count = {"from 0 to 2^30", [](double v, double) { return v >= 0 && v <= 0x1p30; }};
constexpr Range whole = {"a whole number of 32 bits", [](double v, double) { return is_whole(v); }};
constexpr Range whole_above = {"a whole number of 32 bits, above a",
                               [](double v, double first) { return is_whole(v) && v > first; }};
constexpr Range count = {"a whole number from 0 to 2^31 - 1", [](double v, double) { return is_whole(v) && v >= 0; }};
constexpr Range part = {"a whole number from 0 to l",
                        [](double v, double first) { return is_whole(v) && v >= 0 && v <= first; }};
const auto P = [](const double* p, int i) { return p[i]; };

}  // namespace

// A distribution of real numbers: its call with the parameters p(0), p(1) ... in the precision of r.
#define QOR_CLI_REAL(name, about, parameters, ...)                                            \
  {                                                                                           \
    name, about, parameters,                                                                  \
        [](qor::Stream& s, std::span<double> r, [[maybe_unused]] const double* q) {           \
          [[maybe_unused]] const auto p = [q](int i) { return P(q, i); };                     \
          s.__VA_ARGS__;                                                                      \
        },                                                                                    \
        [](qor::Stream& s, std::span<float> r, [[maybe_unused]] const double* q) {            \
          [[maybe_unused]] const auto p = [q](int i) { return static_cast<float>(P(q, i)); }; \
          s.__VA_ARGS__;                                                                      \
        },                                                                                    \
        nullptr                                                                               \
  }
#define QOR_CLI_WHOLE(name, about, parameters, ...)                                                    \
  {                                                                                                    \
    name, about, parameters, nullptr, nullptr, [](qor::Stream& s, std::span<int> r, const double* q) { \
      [[maybe_unused]] const auto p = [q](int i) { return P(q, i); };                                  \
      [[maybe_unused]] const auto k = [q](int i) { return static_cast<int>(P(q, i)); };                \
      s.__VA_ARGS__;                                                                                   \
    }                                                                                                  \
  }
#define QOR_CLI_LIST(...) \
  { __VA_ARGS__ }

const std::vector<Distribution> distributions = {
    {"bits", "32-bit words: the engine's own, or the first 32 bits of its numbers", {}, nullptr, nullptr, nullptr},
    QOR_CLI_REAL("uniform", "a <= x < b", QOR_CLI_LIST({"a", 0, &any}, {"b", 1, &above}), uniform(r, p(0), p(1))),
    QOR_CLI_REAL("gaussian", "mean and standard deviation", QOR_CLI_LIST({"mean", 0, &any}, {"sigma", 1, &positive}),
                 gaussian(r, p(0), p(1))),
    QOR_CLI_REAL("exponential", "from a on, scale beta", QOR_CLI_LIST({"a", 0, &any}, {"beta", 1, &positive}),
                 exponential(r, p(0), p(1))),
    QOR_CLI_REAL("laplace", "around a, scale beta", QOR_CLI_LIST({"a", 0, &any}, {"beta", 1, &positive}),
                 laplace(r, p(0), p(1))),
    QOR_CLI_REAL("weibull", "shape alpha, from a on, scale beta",
                 QOR_CLI_LIST({"alpha", needed, &positive}, {"a", 0, &any}, {"beta", 1, &positive}),
                 weibull(r, p(0), p(1), p(2))),
    QOR_CLI_REAL("cauchy", "around a, scale beta", QOR_CLI_LIST({"a", 0, &any}, {"beta", 1, &positive}),
                 cauchy(r, p(0), p(1))),
    QOR_CLI_REAL("rayleigh", "from a on, scale beta", QOR_CLI_LIST({"a", 0, &any}, {"beta", 1, &positive}),
                 rayleigh(r, p(0), p(1))),
    QOR_CLI_REAL("lognormal", "b + beta exp(g), g Gaussian of mean a and deviation sigma",
                 QOR_CLI_LIST({"a", 0, &any}, {"sigma", 1, &positive}, {"b", 0, &any}, {"beta", 1, &positive}),
                 lognormal(r, p(0), p(1), p(2), p(3))),
    QOR_CLI_REAL("gumbel", "location a, scale beta", QOR_CLI_LIST({"a", 0, &any}, {"beta", 1, &positive}),
                 gumbel(r, p(0), p(1))),
    QOR_CLI_REAL("gamma", "shape alpha, from a on, scale beta",
                 QOR_CLI_LIST({"alpha", needed, &positive}, {"a", 0, &any}, {"beta", 1, &positive}),
                 gamma(r, p(0), p(1), p(2))),
    QOR_CLI_REAL(
        "beta", "shapes p and q, on [a, a + beta]",
        QOR_CLI_LIST({"p", needed, &positive}, {"q", needed, &positive}, {"a", 0, &any}, {"beta", 1, &positive}),
        beta(r, p(0), p(1), p(2), p(3))),
    QOR_CLI_WHOLE("integers", "a <= k < b, all alike", QOR_CLI_LIST({"a", needed, &whole}, {"b", needed, &whole_above}),
                  uniform(r, k(0), k(1))),
    QOR_CLI_WHOLE("bernoulli", "1 with probability p", QOR_CLI_LIST({"p", needed, &probability}), bernoulli(r, p(0))),
    QOR_CLI_WHOLE("geometric", "failures before the first success", QOR_CLI_LIST({"p", needed, &chance}),
                  geometric(r, p(0))),
    QOR_CLI_WHOLE("binomial", "successes among n trials",
                  QOR_CLI_LIST({"n", needed, &count}, {"p", needed, &probability}), binomial(r, k(0), p(1))),
    QOR_CLI_WHOLE("hypergeometric", "marked ones among s drawn from l, m of them marked",
                  QOR_CLI_LIST({"l", needed, &count}, {"s", needed, &part}, {"m", needed, &part}),
                  hypergeometric(r, k(0), k(1), k(2))),
    QOR_CLI_WHOLE("poisson", "mean lambda", QOR_CLI_LIST({"lambda", needed, &mean_count}), poisson(r, p(0))),
    QOR_CLI_WHOLE("negbinomial", "failures before success number a",
                  QOR_CLI_LIST({"a", needed, &positive}, {"p", needed, &chance}), negbinomial(r, p(0), p(1))),
};

Chosen distribution_of(const std::string& text) {
  const std::string name = lower(text.substr(0, text.find(':')));
  const auto found = std::ranges::find(distributions, name, &Distribution::name);
  if (found == distributions.end()) {
    throw Misuse(unknown("distribution", name, names_of(distributions)) + " ('qor random --help' lists them)");
  }
  Chosen chosen{&*found, {}};
  if (name.size() < text.size()) chosen.parameters = number_list(text.substr(name.size() + 1), name);
  const std::vector<Parameter>& wanted = found->parameters;
  if (chosen.parameters.size() > wanted.size()) {
    throw Misuse(name + " takes " + std::to_string(wanted.size()) + " parameters at most");
  }
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    if (i == chosen.parameters.size()) {
      if (std::isnan(wanted[i].usual)) throw Misuse(name + " needs the parameter " + wanted[i].name);
      chosen.parameters.push_back(wanted[i].usual);
    }
    const double value = chosen.parameters[i];
    const std::string which = name + ": " + wanted[i].name;
    if (!std::isfinite(value)) throw Misuse(which + " must be finite");
    if (!wanted[i].range->holds(value, chosen.parameters[0])) throw Misuse(which + " must be " + wanted[i].range->text);
  }
  return chosen;
}

// ---- functions ------------------------------------------------------------------------------------------------------

#define QOR_CLI_ONE(Name) \
  {lower(#Name), {{_tfnd##Name##_HA, _tfnd##Name##_50}, {}, {}}, {{_tfns##Name##_HA, _tfns##Name##_21}, {}, {}}},
#define QOR_CLI_TWO(Name) \
  {lower(#Name), {{}, {_tfnd##Name##_HA, _tfnd##Name##_50}, {}}, {{}, {_tfns##Name##_HA, _tfns##Name##_21}, {}}},
#define QOR_CLI_BINARY(Name) \
  {lower(#Name), {{}, {}, {_tfnd##Name##_HA, _tfnd##Name##_50}}, {{}, {}, {_tfns##Name##_HA, _tfns##Name##_21}}},

const std::vector<Function> functions = {TFN_ONE_RESULT(QOR_CLI_ONE) TFN_TWO_RESULTS(QOR_CLI_TWO)
                                             TFN_TWO_ARGUMENTS(QOR_CLI_BINARY)};

#define QOR_CLI_COMPLEX(Name) \
  {lower(#Name), {{_tfnz##Name##_HA, _tfnz##Name##_50}, {}, {}}, {{_tfnc##Name##_HA, _tfnc##Name##_21}, {}, {}}},
#define QOR_CLI_COMPLEX_BINARY(Name) \
  {lower(#Name), {{}, {}, {_tfnz##Name##_HA, _tfnz##Name##_50}}, {{}, {}, {_tfnc##Name##_HA, _tfnc##Name##_21}}},

const std::vector<Function> complex_functions = {TFN_COMPLEX_ONE_ARGUMENT(QOR_CLI_COMPLEX)
                                                     TFN_COMPLEX_TWO_ARGUMENTS(QOR_CLI_COMPLEX_BINARY)};

}  // namespace cli
