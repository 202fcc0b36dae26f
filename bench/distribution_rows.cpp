// Variates from MT19937, 10000 a call: Gaussian ones of mean 0 and deviation 1, then all other distributions.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "harness.h"
#include "opponents/triangle.h"
#include "qor/rng.h"

namespace bench {
namespace {

void draw(qor_stream* s, int method, int n, double* r) { _wxrdRngGaussian(method, s, n, r, 0, 1); }
void draw(qor_stream* s, int method, int n, float* r) { _wxrsRngGaussian(method, s, n, r, 0, 1); }

// A contender whose numbers aren't standard normal would be none: mean, deviation and fourth moment of a million. The
// output starts as zeros, so that one that writes nothing is noticed too.
template <class T>
std::string check(const std::vector<Contender>& contenders) {
  for (const Contender& contender : contenders) {
    double first = 0, second = 0, fourth = 0;
    constexpr int n = 10000, calls = 100;
    std::fill_n(output<T>(), n, T(0));
    for (int k = 0; k < calls; ++k) {
      contender.call(n);
      for (int i = 0; i < n; ++i) {
        const double x = output<T>()[i];
        first += x, second += x * x, fourth += x * x * x * x;
      }
    }
    constexpr double count = 1.0 * n * calls;  // tolerances: six deviations
    if (!(std::abs(first / count) < 0.006 && std::abs(second / count - 1) < 0.0085 &&
          std::abs(fourth / count - 3) < 0.06)) {
      return contender.name + " makes no standard normal numbers";
    }
  }
  return {};
}

struct Target {
  const char* opponent;
  double ratio;
};

template <class T>
void add(std::vector<Work>& works, int method, const char* precision, const std::vector<Target>& targets) {
  const std::string name = method == 0 ? "Gaussian 0" : "Gaussian 1";
  Work work{"distributions", name + " " + precision, 10000, {}, {}};
  const auto ours = [method, stream = static_cast<qor_stream*>(nullptr)](int n) mutable {
    if (stream == nullptr) __wxrNewStreamEx(&stream, QOR_BRNG_MT19937, 0, nullptr);
    draw(stream, method, n, output<T>());
  };
  work.contenders.push_back({"qor", 0, true, ours});
  for (const DrawPeer<T>& peer : draw_peers<T>()) {
    if (peer.work != name && std::strcmp(peer.work, "Gaussian") != 0) continue;
    work.contenders.push_back({peer.name, 0, false, [peer](int n) { peer.run(n, output<T>()); }});
  }
  for (const Target& t : targets) work.claims.push_back({work.name, "qor", {t.opponent}, no_limit, t.ratio, ""});
  if (method == 0) {
    work.claims.push_back({work.name, "qor", {"dSFMT + sleef u35, sines only"}, no_limit, 0, "the same method"});
  }
  work.claims.push_back({work.name, "qor", {}, no_limit, 0, "all"});
  work.check = [all = work.contenders] { return check<T>(all); };
  works.push_back(work);
}

// ---- the other distributions
// -----------------------------------------------------------------------------------------

using Draw = std::function<void(qor_stream*, int)>;
std::function<void(int)> from_mt19937(const Draw& draw) {
  return [draw, stream = static_cast<qor_stream*>(nullptr)](int n) mutable {
    if (stream == nullptr) __wxrNewStreamEx(&stream, QOR_BRNG_MT19937, 0, nullptr);
    draw(stream, n);
  };
}

// What is known of a row's numbers, or of a function of them: all contenders must make the same distribution.
struct Moments {
  double mean, variance;
  double (*of)(double) = [](double x) { return x; };
};
template <class T>
std::string check_moments(const std::vector<Contender>& contenders, int n, const Moments& known) {
  for (const Contender& contender : contenders) {
    constexpr int calls = 100;
    double first = 0, second = 0;
    std::fill_n(output<T>(), n, T(77));
    for (int k = 0; k < calls; ++k) {
      contender.call(n);
      for (int i = 0; i < n; ++i) {
        const double x = known.of(static_cast<double>(output<T>()[i])) - known.mean;
        first += x, second += x * x;
      }
    }
    const double count = 1.0 * n * calls;  // tolerances: six deviations of the mean, and plenty of the variance
    if (!(std::abs(first / count) < 6 * std::sqrt(known.variance / count) &&
          std::abs(second / count / known.variance - 1) < 0.05)) {
      return contender.name + " makes another distribution: mean " + std::to_string(first / count + known.mean) +
             ", variance " + std::to_string(second / count);
    }
  }
  return {};
}

// Without a name the opponent is the best of those named in `field`.
template <class T>
void add(std::vector<Work>& works, const char* name, const Draw& draw, const Moments& known,
         const std::vector<Target>& targets, const std::vector<std::string>& field = {}, double field_ratio = 0) {
  Work work{"distributions", name, 10000, {{"qor", 0, true, from_mt19937(draw)}}, {}};
  for (const DrawPeer<T>& peer : draw_peers<T>()) {
    if (std::strcmp(peer.work, name) != 0) continue;
    work.contenders.push_back({peer.name, 0, false, [peer](int n) { peer.run(n, output<T>()); }});
  }
  for (const Target& t : targets) work.claims.push_back({name, "qor", {t.opponent}, no_limit, t.ratio, ""});
  if (!field.empty()) work.claims.push_back({name, "qor", field, no_limit, field_ratio, "best of its field"});
  if (targets.size() + !field.empty() == 0 || targets.size() == 1) {
    work.claims.push_back({name, "qor", {}, no_limit, 0, "all"});
  }
  work.check = [all = work.contenders, known] { return check_moments<T>(all, 10000, known); };
  works.push_back(work);
}

void add_continuous(std::vector<Work>& works) {
  const auto r = output<double>();
  const auto log = [](double x) { return std::log(x); };
  const char *const sleef = "dSFMT + sleef u35", *const loop = "ziggurat + Marsaglia-Tsang";
  const std::vector<std::string> field = {"std", "boost"};
  constexpr double euler = 0.5772156649015329, pi2 = M_PI * M_PI;
  using S = qor_stream*;
  add<double>(works, "Exponential", [r](S s, int n) { _wxrdRngExponential(0, s, n, r, 0, 1); }, {1, 1},
              {{sleef, 1.3}, {"boost", 2.5}});
  add<double>(works, "Lognormal", [r](S s, int n) { _wxrdRngLognormal(0, s, n, r, 0, 1, 0, 1); }, {0, 1, log},
              {{sleef, 1.2}});
  add<double>(works, "Cauchy", [r](S s, int n) { _wxrdRngCauchy(0, s, n, r, 0, 1); },
              {0, pi2 / 12, [](double x) { return std::atan(x); }}, {{sleef, 1.2}});
  add<double>(works, "Gamma(2.5)", [r](S s, int n) { _wxrdRngGamma(0, s, n, r, 2.5, 0, 1); }, {2.5, 2.5},
              {{loop, 1.4}});
  add<double>(works, "Gamma(0.4)", [r](S s, int n) { _wxrdRngGamma(0, s, n, r, 0.4, 0, 1); }, {0.4, 0.4},
              {{loop, 1.6}});
  add<double>(
      works, "Rayleigh", [r](S s, int n) { _wxrdRngRayleigh(0, s, n, r, 0, 1); }, {std::sqrt(M_PI) / 2, 1 - M_PI / 4},
      {}, field, 3);
  add<double>(
      works, "Weibull", [r](S s, int n) { _wxrdRngWeibull(0, s, n, r, 1.5, 0, 1); },
      {-euler / 1.5, pi2 / 6 / 2.25, log}, {}, field, 3);
  add<double>(
      works, "Gumbel", [r](S s, int n) { _wxrdRngGumbel(0, s, n, r, 0, 1); }, {-euler, pi2 / 6}, {}, field, 3);
  add<double>(
      works, "Laplace", [r](S s, int n) { _wxrdRngLaplace(0, s, n, r, 0, 1); }, {0, 2}, {}, field, 3);
  const std::vector<std::string> betas = {"std gammas", "boost"};
  add<double>(
      works, "Beta(2, 3)", [r](S s, int n) { _wxrdRngBeta(0, s, n, r, 2, 3, 0, 1); }, {0.4, 0.04}, {}, betas, 3);
  add<double>(
      works, "Beta(0.5, 0.5)", [r](S s, int n) { _wxrdRngBeta(0, s, n, r, 0.5, 0.5, 0, 1); }, {0.5, 0.125}, {}, betas,
      3);
  add<double>(
      works, "Beta(0.5, 3)", [r](S s, int n) { _wxrdRngBeta(0, s, n, r, 0.5, 3, 0, 1); },
      {0.5 / 3.5, 1.5 / 12.25 / 4.5}, {}, betas, 3);
}

void add_discrete(std::vector<Work>& works) {
  int* const r = reinterpret_cast<int*>(output<std::uint32_t>());
  const std::vector<std::string> field = {"std", "boost", "gsl"};
  const auto add_row = [&](const char* name, const Moments& known, double target, const Draw& draw) {
    add<std::uint32_t>(works, name, draw, known, {}, field, target);
  };
  using S = qor_stream*;
  add_row("Bernoulli(0.3)", {0.3, 0.21}, 5, [r](S s, int n) { _wxriRngBernoulli(0, s, n, r, 0.3); });
  add_row("Geometric(0.3)", {7 / 3.0, 0.7 / 0.09}, 5, [r](S s, int n) { _wxriRngGeometric(0, s, n, r, 0.3); });
  add_row("Geometric(0.001)", {999, 999000}, 5, [r](S s, int n) { _wxriRngGeometric(0, s, n, r, 0.001); });
  add_row("Binomial(100, 0.3)", {30, 21}, 5, [r](S s, int n) { _wxriRngBinomial(0, s, n, r, 100, 0.3); });
  add_row("Binomial(1000000, 0.4)", {400000, 240000}, 5,
          [r](S s, int n) { _wxriRngBinomial(0, s, n, r, 1000000, 0.4); });
  add_row("Hypergeometric(1000, 100, 300)", {30, 21.0 * 900 / 999}, 5,
          [r](S s, int n) { _wxriRngHypergeometric(0, s, n, r, 1000, 100, 300); });
  add_row("Hypergeometric(1000000, 100000, 300000)", {30000, 18900}, 5,
          [r](S s, int n) { _wxriRngHypergeometric(0, s, n, r, 1000000, 100000, 300000); });
  add_row("Poisson(10)", {10, 10}, 5, [r](S s, int n) { _wxriRngPoisson(0, s, n, r, 10); });
  add_row("Poisson(1000)", {1000, 1000}, 5, [r](S s, int n) { _wxriRngPoisson(0, s, n, r, 1000); });
  add_row("Poisson(100000)", {100000, 100000}, 5, [r](S s, int n) { _wxriRngPoisson(0, s, n, r, 100000); });
  const auto poisson_v = [r](S s, int n, double scale) {
    double* const lambda = second_output<double>();
    for (int i = 0; i < n; ++i) lambda[i] = scale * (1 + i % 8);
    _wxriRngPoissonV(0, s, n, r, lambda);
  };
  // Within a call, the mean of 1 .. 8 is 4.5 and their variance 5.25.
  add_row("PoissonV(1 .. 8)", {4.5, 4.5 + 5.25}, 0, [poisson_v](S s, int n) { poisson_v(s, n, 1); });
  add_row("PoissonV(20 .. 160)", {90, 90 + 2100}, 0, [poisson_v](S s, int n) { poisson_v(s, n, 20); });
  add_row("Negbinomial(5, 0.3)", {35 / 3.0, 35 / 0.9}, 0, [r](S s, int n) { _wxriRngNegbinomial(0, s, n, r, 5, 0.3); });
}

// Sums of elements 2 and 3 of the vectors are compared, as every contender must have them.
void add_vectors(std::vector<Work>& works) {
  for (const int d : {10, 100, 1000}) {
    const std::string name = "GaussianMV " + std::to_string(d);
    Work work{"distributions", name, d == 1000 ? 100000 : 10000, {}, {}};
    for (const int storage : {QOR_RNG_STORAGE_FULL, QOR_RNG_STORAGE_PACKED}) {
      const std::string ours = storage == QOR_RNG_STORAGE_FULL ? "qor full" : "qor packed";
      const auto draw = [d, storage](qor_stream* s, int n) {
        const Triangle& t = triangle(d);
        const auto& factor = storage == QOR_RNG_STORAGE_FULL ? t.full : t.packed;
        _wxrdRngGaussianMV(1, s, n / d, output<double>(), d, storage, t.mean.data(), factor.data());
      };
      work.contenders.push_back({ours, 0, true, from_mt19937(draw)});
      work.claims.push_back(
          {name + (storage == QOR_RNG_STORAGE_FULL ? " full" : " packed"), ours, {}, no_limit, 1.5, ""});
    }
    for (const DrawPeer<double>& peer : draw_peers<double>()) {
      if (name == peer.work) {
        work.contenders.push_back({peer.name, 0, false, [peer](int n) { peer.run(n, output<double>()); }});
      }
    }
    // All begin with the same normal numbers.
    work.check = [all = work.contenders, n = work.elements]() -> std::string {
      std::vector<double> first;
      for (const Contender& contender : all) {
        contender.call(n);
        const std::vector<double> now(output<double>(), output<double>() + n);
        if (first.empty()) first = now;
        for (int i = 0; i < n; ++i) {
          const auto at = static_cast<std::size_t>(i);
          if (!(std::abs(now[at] - first[at]) < 1e-9)) return contender.name + " makes other numbers";
        }
      }
      return {};
    };
    works.push_back(work);
  }
}

}  // namespace

void add_distribution_rows(std::vector<Work>& works) {
  add<double>(works, 0, "double", {{"boost ziggurat", 0.7}, {"std", 4}});
  add<double>(works, 1, "double", {{"boost ziggurat", 1.1}, {"std", 4}});
  for (const int method : {0, 1}) add<float>(works, method, "single", {{"dSFMT + sleef u35", 1.2}});
  add_continuous(works);
  add_discrete(works);
  add_vectors(works);
}

}  // namespace bench
