// The price of an option on a basket of ten correlated assets.
#include <algorithm>
#include <cmath>

#include "demo.h"

namespace {

// Ten assets of 100 each follow geometric Brownian motions for a year; a call at 100 on their mean.
constexpr int assets = 10;
constexpr double spot = 100, strike = 100, rate = 0.03;

// The logarithms of what the assets grow by: their means, and the factor of their variance, packed by columns.
struct Basket {
  double mean[assets], factor[assets * (assets + 1) / 2];
  double mean_of_all = 0, variance_of_all = 0;  // of the mean of the logarithms
};

Basket make_basket() {
  Basket b;
  double variance[assets][assets], lower[assets][assets] = {};
  const auto volatility = [](int i) { return 0.15 + 0.02 * i; };
  for (int i = 0; i < assets; ++i) {
    b.mean[i] = rate - volatility(i) * volatility(i) / 2;
    b.mean_of_all += b.mean[i] / assets;
    for (int k = 0; k < assets; ++k) {
      variance[i][k] = volatility(i) * volatility(k) * (0.3 + 0.7 * std::pow(0.8, std::abs(i - k)));
      b.variance_of_all += variance[i][k] / (assets * assets);
    }
  }
  double* packed = b.factor;
  for (int k = 0; k < assets; ++k) {
    for (int i = k; i < assets; ++i) {
      double sum = variance[i][k];
      for (int j = 0; j < k; ++j) sum -= lower[i][j] * lower[k][j];
      *packed++ = lower[i][k] = i == k ? std::sqrt(sum) : sum / lower[k][k];
    }
  }
  return b;
}

// The call on the geometric mean, whose logarithm is normal.
double geometric_price(const Basket& b) {
  const auto normal = [](double z) { return 0.5 * std::erfc(-z / std::sqrt(2.0)); };
  const double deviation = std::sqrt(b.variance_of_all);
  const double d2 = (std::log(spot / strike) + b.mean_of_all) / deviation, d1 = d2 + deviation;
  return std::exp(-rate) * (spot * std::exp(b.mean_of_all + b.variance_of_all / 2) * normal(d1) - strike * normal(d2));
}

struct Average {
  double n = 0, sum = 0, squares = 0;
  void add(double x) { n += 1, sum += x, squares += x * x; }
  double mean() const { return sum / n; }
  double error() const { return std::sqrt(std::max(0.0, squares / n - mean() * mean()) / n); }
};

}  // namespace

int show_basket(const Options& options) {
  const Basket basket = make_basket();
  const double exact = geometric_price(basket);
  struct Estimate {
    double paths, price, error;
  };
  std::vector<Estimate> convergence;
  // The call on the arithmetic mean has no closed form; its difference from the geometric one varies much less.
  Average geometric, arithmetic, difference;
  double seconds = 0;
  {
    qor::Stream stream(QOR_BRNG_MT19937, seed);
    Progress progress("basket");
    constexpr int block = 1000;
    std::vector<double> growth(static_cast<std::size_t>(block) * assets);
    double next = 100;
    for (long done = 0; done < options.paths;) {
      const int n =
          static_cast<int>(std::min<long>(std::min<long>(block, static_cast<long>(next) - done), options.paths - done));
      const Stopwatch watch;
      const std::span now(growth.data(), static_cast<std::size_t>(n * assets));
      stream.gaussian_mv(now, qor::Storage::packed, basket.mean, basket.factor);
      qor::math::exp(now);
      seconds += watch.seconds();
      for (int j = 0; j < n; ++j) {
        double sum = 0, product = 1;
        for (int i = 0; i < assets; ++i) {
          const double value = growth[static_cast<std::size_t>(j * assets + i)];
          sum += value, product *= value;
        }
        const double discount = std::exp(-rate), above = std::pow(product, 1.0 / assets) * spot - strike;
        const double g = discount * std::max(0.0, above), a = discount * std::max(0.0, sum / assets * spot - strike);
        geometric.add(g), arithmetic.add(a), difference.add(a - g);
      }
      done += n;
      if (done >= static_cast<long>(next) || done == options.paths) {
        convergence.push_back({static_cast<double>(done), geometric.mean(), geometric.error()});
        next *= 1.5;
      }
      progress.at(static_cast<double>(done) / static_cast<double>(options.paths));
    }
  }
  std::printf("\nOption on a basket of %d correlated assets: %ld paths, %.3g vectors per second\n", assets,
              options.paths, static_cast<double>(options.paths) / seconds);
  std::printf("  %-44s %9.4f\n", "geometric mean, closed form", exact);
  std::printf("  %-44s %9.4f   standard error %.4f, off by %+.2f of it\n", "geometric mean, simulated",
              geometric.mean(), geometric.error(), (geometric.mean() - exact) / geometric.error());
  std::printf("  %-44s %9.4f   standard error %.4f\n", "arithmetic mean, simulated", arithmetic.mean(),
              arithmetic.error());
  std::printf("  %-44s %9.4f   standard error %.4f\n", "arithmetic mean, by way of the geometric one",
              exact + difference.mean(), difference.error());
  const bool written = write_table(options.output + "/basket.dat", static_cast<int>(convergence.size()),
                                   [&convergence](std::FILE* file, int i) {
                                     const Estimate& e = convergence[static_cast<std::size_t>(i)];
                                     std::fprintf(file, "%.0f %.10g %.10g\n", e.paths, e.price, 1.96 * e.error);
                                   });
  if (!written) return 1;
  char numbers[64];
  std::snprintf(numbers, sizeof numbers, "exact = %.10g\n", exact);
  return draw(options, "basket", numbers) ? 0 : 1;
}
