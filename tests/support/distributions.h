// Every distribution of the library at a grid of parameters, each with its cumulative distribution function computed in
// another way: closed forms, incomplete Gamma and Beta functions, sums of probabilities from factorials. Serves the
// tests, the table of docs/statistics.md and the gallery.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "qor/rng.h"

namespace known {

// ---- functions -----------------------------------------------------------------------------------------------------

// The continued fraction b0 + a1/(b1 + a2/(b2 + ...)) by Lentz's algorithm; step(i, a, b) tells the i-th terms.
template <class F>
double continued_fraction(double b0, F step) {
  constexpr double tiny = 1e-300;
  double f = b0 == 0 ? tiny : b0, c = f, d = 0;
  for (int i = 1; i < 1000000; ++i) {
    double a, b;
    step(i, a, b);
    d = b + a * d;
    c = b + a / c;
    if (d == 0) d = tiny;
    if (c == 0) c = tiny;
    d = 1 / d;
    f *= c * d;
    if (std::fabs(c * d - 1) < 1e-15) break;
  }
  return f;
}

// P(a, x), the regularized lower incomplete Gamma function.
inline double gamma_p(double a, double x) {
  if (!(x > 0)) return 0;
  const double front = std::exp(a * std::log(x) - x - std::lgamma(a));
  if (x < a + 1) {
    double term = 1 / a, sum = term;
    for (double k = a + 1; term > 1e-17 * sum; ++k) sum += term *= x / k;
    return front * sum;
  }
  return 1 - front / continued_fraction(x + 1 - a, [a, x](int i, double& num, double& den) {
               num = -i * (i - a);
               den = x + 1 - a + 2.0 * i;
             });
}

// I_x(a, b), the regularized incomplete Beta function; y = 1 - x.
inline double beta_i(double a, double b, double x, double y) {
  if (!(x > 0)) return 0;
  if (!(y > 0)) return 1;
  if (x > (a + 1) / (a + b + 2)) return 1 - beta_i(b, a, y, x);
  const double ln_front = a * std::log(x) + b * std::log(y) + std::lgamma(a + b) - std::lgamma(a) - std::lgamma(b);
  return std::exp(ln_front) / a / continued_fraction(1, [a, b, x](int i, double& num, double& den) {
           const int m = i / 2;
           num = i % 2 == 0 ? m * (b - m) * x / ((a + 2 * m - 1) * (a + 2 * m))
                            : -(a + m) * (a + b + m) * x / ((a + 2 * m) * (a + 2 * m + 1));
           den = 1;
         });
}

inline double normal(double z) { return 0.5 * std::erfc(-z / std::sqrt(2.0)); }

// P(X <= k) summed from p, exp(ln_p(k)) being the probabilities; [low, high] holds all but a negligible part.
inline std::function<double(double)> summed(double low, double high, const std::function<long double(double)>& ln_p) {
  const auto sums = std::make_shared<std::vector<double>>();
  long double sum = 0;
  for (double k = low; k <= high; ++k) sums->push_back(static_cast<double>(sum += std::exp(ln_p(k))));
  return [sums, low](double k) {
    if (k < low) return 0.0;
    return (*sums)[std::min(static_cast<std::size_t>(k - low), sums->size() - 1)];
  };
}
inline long double ln_choose(long double n, long double k) {
  return std::lgamma(n + 1) - std::lgamma(k + 1) - std::lgamma(n - k + 1);
}

// ---- tests of fit --------------------------------------------------------------------------------------------------

struct Fit {
  double statistic, p;
  int freedom;  // of chi-square; 0: Kolmogorov-Smirnov
};

// The p-value of sqrt(n) D by its limit, with the correction for finite n of M. A. Stephens (1970).
template <class T>
Fit kolmogorov_smirnov(std::vector<T> x, const std::function<double(double)>& cdf) {
  std::sort(x.begin(), x.end());
  const double n = static_cast<double>(x.size());
  double d = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double f = cdf(static_cast<double>(x[i])), at = static_cast<double>(i);
    if (!(f >= 0)) return {1, 0, 0};
    d = std::max({d, (at + 1) / n - f, f - at / n});
  }
  const double l = (std::sqrt(n) + 0.12 + 0.11 / std::sqrt(n)) * d;
  double p = 0;
  for (int k = 1; k < 100; ++k) p += (k % 2 == 1 ? 2 : -2) * std::exp(-2.0 * k * k * l * l);
  return {d, l < 0.2 ? 1 : p, 0};
}

// Chi-square over up to 60 classes of about equal probability, each expected five times at least.
inline Fit chi_square(std::vector<int> k, const std::function<double(double)>& cdf) {
  std::sort(k.begin(), k.end());
  const double n = static_cast<double>(k.size());
  double statistic = 0, below = 0, pending = 0;
  std::size_t at = 0, pending_count = 0;
  int classes = 0;
  for (int c = 1; c <= 60; ++c) {
    // The least outcome with so much probability up to it.
    std::int64_t low = -1, high = 2147483647;
    while (high - low > 1) {
      const std::int64_t middle = (low + high) / 2;
      (cdf(static_cast<double>(middle)) >= c / 60.0 ? high : low) = middle;
    }
    if (c == 60) high = 2147483647;
    const double upto = c == 60 ? 1 : cdf(static_cast<double>(high));
    const auto next = static_cast<std::size_t>(std::upper_bound(k.begin(), k.end(), high) - k.begin());
    pending += n * (upto - below);
    pending_count += next - at;
    below = upto, at = next;
    if (pending >= 5 && (n * (1 - upto) >= 5 || c == 60)) {
      const double off = static_cast<double>(pending_count) - pending;
      statistic += off * off / pending;
      ++classes;
      pending = 0, pending_count = 0;
    }
  }
  if (classes < 2) return {statistic, pending_count == 0 ? 1.0 : 0.0, 0};
  return {statistic, 1 - gamma_p((classes - 1) / 2.0, statistic / 2), classes - 1};
}

// ---- the grid ------------------------------------------------------------------------------------------------------

struct Continuous {
  std::string family, parameters;
  std::function<int(qor_stream*, int, double*)> draw;
  std::function<int(qor_stream*, int, float*)> draw_single;
  std::function<double(double)> cdf;
};
struct Discrete {
  std::string family, parameters;
  std::function<int(qor_stream*, int, int*)> draw;
  std::function<double(double)> cdf;
};

inline std::string text(double v) {
  char s[40];
  std::snprintf(s, sizeof s, "%.10g", v);
  return s;
}
template <class... P>
std::string texts(P... p) {
  std::string s;
  (s.append(s.empty() ? "" : ", ").append(text(p)), ...);
  return s;
}

inline std::vector<Continuous> continuous() {
  std::vector<Continuous> all;
  const auto add = [&all](const char* family, std::string parameters, auto draw, auto draw_single, auto cdf) {
    all.push_back({family, std::move(parameters), draw, draw_single, cdf});
  };
  using D = double;
  using F = float;
  // The call of either precision from one list of parameters.
  const auto both = [&add](const char* family, std::string parameters, auto call, auto cdf) {
    add(
        family, std::move(parameters), [call](qor_stream* s, int n, D* r) { return call(s, n, r); },
        [call](qor_stream* s, int n, F* r) { return call(s, n, r); }, cdf);
  };
  for (const int method : {0, 1}) {
    const auto draw = [method](qor_stream* s, int n, auto* r) {
      if constexpr (sizeof *r == 8)
        return _wxrdRngGaussian(method, s, n, r, -2, 0.5);
      else
        return _wxrsRngGaussian(method, s, n, r, -2, 0.5f);
    };
    both(method == 0 ? "Gaussian, method 0" : "Gaussian, method 1", texts(-2, 0.5), draw,
         [](double x) { return normal((x + 2) / 0.5); });
  }
#define KNOWN_PAIR(Name)                                                          \
  const auto draw = [a, beta](qor_stream* s, int n, auto* r) {                    \
    if constexpr (sizeof *r == 8)                                                 \
      return _wxrdRng##Name(0, s, n, r, a, beta);                                 \
    else                                                                          \
      return _wxrsRng##Name(0, s, n, r, static_cast<F>(a), static_cast<F>(beta)); \
  }
  struct Pair {
    double a, beta;
  };
  for (const auto& [a, beta] : {Pair{0, 1}, Pair{3, 0.25}}) {
    {
      KNOWN_PAIR(Exponential);
      both("Exponential", texts(a, beta), draw, [=](double x) { return -std::expm1(-std::max(0.0, x - a) / beta); });
    }
    {
      KNOWN_PAIR(Laplace);
      both("Laplace", texts(a, beta), draw, [=](double x) {
        const double y = (x - a) / beta;
        return y < 0 ? 0.5 * std::exp(y) : 1 - 0.5 * std::exp(-y);
      });
    }
    {
      KNOWN_PAIR(Cauchy);
      both("Cauchy", texts(a, beta), draw, [=](double x) { return 0.5 + std::atan((x - a) / beta) / M_PI; });
    }
    {
      KNOWN_PAIR(Rayleigh);
      both("Rayleigh", texts(a, beta), draw, [=](double x) {
        const double y = std::max(0.0, x - a) / beta;
        return -std::expm1(-y * y);
      });
    }
    {
      KNOWN_PAIR(Gumbel);
      both("Gumbel", texts(a, beta), draw, [=](double x) { return -std::expm1(-std::exp((x - a) / beta)); });
    }
  }
#undef KNOWN_PAIR
  for (const double alpha : {0.5, 1.0, 3.0}) {
    const auto draw = [alpha](qor_stream* s, int n, auto* r) {
      if constexpr (sizeof *r == 8)
        return _wxrdRngWeibull(0, s, n, r, alpha, 1, 2);
      else
        return _wxrsRngWeibull(0, s, n, r, static_cast<F>(alpha), 1, 2);
    };
    both("Weibull", texts(alpha, 1, 2), draw,
         [=](double x) { return -std::expm1(-std::pow(std::max(0.0, (x - 1) / 2), alpha)); });
  }
  for (const auto& [a, sigma] : {Pair{0, 1}, Pair{0.5, 0.25}}) {
    const auto draw = [a, sigma](qor_stream* s, int n, auto* r) {
      if constexpr (sizeof *r == 8)
        return _wxrdRngLognormal(0, s, n, r, a, sigma, -1, 2);
      else
        return _wxrsRngLognormal(0, s, n, r, static_cast<F>(a), static_cast<F>(sigma), -1, 2);
    };
    both("Lognormal", texts(a, sigma, -1, 2), draw,
         [=](double x) { return x > -1 ? normal((std::log((x + 1) / 2) - a) / sigma) : 0; });
  }
  for (const double alpha : {0.1, 0.4, 0.5999, 0.6, 0.85, 1.0, 1.0001, 1.5, 2.5, 30.0, 1e4}) {
    const auto draw = [alpha](qor_stream* s, int n, auto* r) {
      if constexpr (sizeof *r == 8)
        return _wxrdRngGamma(0, s, n, r, alpha, 0, 2);
      else
        return _wxrsRngGamma(0, s, n, r, static_cast<F>(alpha), 0, 2);
    };
    both("Gamma", texts(alpha, 0, 2), draw, [=](double x) { return gamma_p(alpha, x / 2); });
  }
  struct Shapes {
    double p, q;
  };
  for (const auto& [p, q] : {Shapes{0.5, 0.5},
                             {0.2, 0.7},
                             {0.95, 0.9},
                             {1, 1},
                             {0.3, 4},
                             {2, 0.8},
                             {0.1, 5},
                             {1, 3},
                             {2, 3},
                             {1.5, 1.1},
                             {30, 50},
                             {1000, 2}}) {
    const auto draw = [p = p, q = q](qor_stream* s, int n, auto* r) {
      if constexpr (sizeof *r == 8)
        return _wxrdRngBeta(0, s, n, r, p, q, 0, 1);
      else
        return _wxrsRngBeta(0, s, n, r, static_cast<F>(p), static_cast<F>(q), 0, 1);
    };
    both("Beta", texts(p, q, 0, 1), draw, [p = p, q = q](double x) { return beta_i(p, q, x, 1 - x); });
  }
  // A projection of vectors of variance 1.
  for (const int storage : {QOR_RNG_STORAGE_FULL, QOR_RNG_STORAGE_PACKED}) {
    const auto draw = [storage](qor_stream* s, int n, auto* r) {
      using T = std::remove_reference_t<decltype(*r)>;
      constexpr int d = 3;
      // Rows of the factor (2), (-1 1), (0.5 1 2); the projection on (1, 1, 1).
      const T a[d] = {1, 2, 3}, full[] = {2, 0, 0, -1, 1, 0, 0.5, 1, 2}, packed[] = {2, -1, 0.5, 1, 1, 2};
      const T* const t = storage == QOR_RNG_STORAGE_FULL ? full : packed;
      std::vector<T> x(static_cast<std::size_t>(n * d));
      int status;
      if constexpr (sizeof(T) == 8)
        status = _wxrdRngGaussianMV(1, s, n, x.data(), d, storage, a, t);
      else
        status = _wxrsRngGaussianMV(1, s, n, x.data(), d, storage, a, t);
      for (int i = 0; i < n; ++i)
        r[i] = (x[3 * i] + x[3 * i + 1] + x[3 * i + 2] - 6) / static_cast<T>(std::sqrt(10.25));
      return status;
    };
    both(storage == QOR_RNG_STORAGE_FULL ? "GaussianMV, full" : "GaussianMV, packed", "d = 3", draw, normal);
  }
  return all;
}

inline std::function<double(double)> poisson_cdf(double lambda) {
  const double reach = 10 * std::sqrt(lambda) + 40;
  return summed(std::max(0.0, std::floor(lambda - reach)), std::floor(lambda + reach), [lambda](double k) {
    const long double l = lambda, x = k;
    return x * std::log(l) - l - std::lgamma(x + 1);
  });
}

inline std::vector<Discrete> discrete() {
  std::vector<Discrete> all;
  for (const double p : {0.3, 0.5, 0.001, 0.9999}) {
    all.push_back({"Bernoulli", texts(p),
                   [p](qor_stream* s, int n, int* r) { return _wxriRngBernoulli(0, s, n, r, p); },
                   [p](double k) { return k < 0   ? 0
                                          : k < 1 ? 1 - p
                                                  : 1; }});
  }
  for (const double p : {0.9, 0.3, 0.03125, 0.03, 1e-3, 1e-5, 1e-9}) {
    all.push_back({"Geometric", texts(p),
                   [p](qor_stream* s, int n, int* r) { return _wxriRngGeometric(0, s, n, r, p); },
                   [p](double k) { return k < 0             ? 0
                                          : k >= 2147483647 ? 1
                                                            : -std::expm1((k + 1) * std::log1p(-p)); }});
  }
  struct Trials {
    int n;
    double p;
  };
  for (const auto& [trials, p] : {Trials{5, 0.95},
                                  {10, 0.5},
                                  {100, 0.3},
                                  {1000, 0.001},
                                  {20000, 0.7},
                                  {1000000, 0.4},
                                  {2147483647, 1e-9},
                                  {2147483647, 0.5}}) {
    const double mean = trials * p, reach = 10 * std::sqrt(mean * (1 - p)) + 40;
    all.push_back(
        {"Binomial", texts(trials, p),
         [trials = trials, p = p](qor_stream* s, int n, int* r) { return _wxriRngBinomial(0, s, n, r, trials, p); },
         summed(std::max(0.0, std::floor(mean - reach)), std::min<double>(trials, std::floor(mean + reach)),
                [trials = trials, p = p](double k) {
                  const long double x = k, q = p;
                  return ln_choose(trials, x) + x * std::log(q) + (trials - x) * std::log1p(-q);
                })});
  }
  struct Urn {
    int l, s, m;
  };
  for (const auto& [l, s, m] : {Urn{10, 5, 5},
                                {50, 40, 45},
                                {100, 20, 30},
                                {1000, 500, 300},
                                {1000000, 100000, 300000},
                                {2147483647, 100, 2147483000},
                                {2147483647, 1073741824, 1073741000},
                                {2147483647, 50000, 1000000000}}) {
    const double mean = 1.0 * s * m / l, deviation = std::sqrt(mean * (l - m) / l * (l - s) / l),
                 reach = 10 * deviation + 40;
    all.push_back({"Hypergeometric", texts(l, s, m),
                   [l = l, s = s, m = m](qor_stream* stream, int n, int* r) {
                     return _wxriRngHypergeometric(0, stream, n, r, l, s, m);
                   },
                   summed(std::max({0.0, std::floor(mean - reach), 1.0 * s + m - l}),
                          std::min({1.0 * s, 1.0 * m, std::floor(mean + reach)}), [l = l, s = s, m = m](double k) {
                            const long double x = k;
                            return ln_choose(m, x) + ln_choose(1.0L * l - m, s - x) - ln_choose(l, s);
                          })});
  }
  for (const double lambda : {0.01, 0.5, 3.0, 10.0, 100.0, 1000.0, 2999.0, 3001.0, 1e5, 0x1p30}) {
    all.push_back({"Poisson", texts(lambda),
                   [lambda](qor_stream* s, int n, int* r) { return _wxriRngPoisson(0, s, n, r, lambda); },
                   poisson_cdf(lambda)});
  }
  for (const double lambda : {5.0, 1000.0, 1e6}) {
    all.push_back(
        {"PoissonNormal", texts(lambda),
         [lambda](qor_stream* s, int n, int* r) { return _wxriRngPoisson(QOR_RNG_POISSON_NORMAL, s, n, r, lambda); },
         poisson_cdf(lambda)});
  }
  for (const double lambda : {0.01, 5.0, 9.99, 10.0, 25.0, 1000.0, 1e6}) {
    all.push_back({"PoissonV", texts(lambda),
                   [lambda](qor_stream* s, int n, int* r) {
                     const std::vector<double> lambdas(static_cast<std::size_t>(n), lambda);
                     return _wxriRngPoissonV(0, s, n, r, lambdas.data());
                   },
                   poisson_cdf(lambda)});
  }
  struct Trials2 {
    double a, p;
  };
  for (const auto& [a, p] :
       {Trials2{1, 0.3}, {2.5, 0.5}, {3, 0.9}, {0.5, 0.03}, {0.3, 1e-6}, {10, 0.001}, {1000, 0.2}, {1e5, 0.5}}) {
    all.push_back({"Negbinomial", texts(a, p),
                   [a = a, p = p](qor_stream* s, int n, int* r) { return _wxriRngNegbinomial(0, s, n, r, a, p); },
                   [a = a, p = p](double k) { return k < 0 ? 0 : beta_i(a, k + 1, p, 1 - p); }});
  }
  return all;
}

}  // namespace known
