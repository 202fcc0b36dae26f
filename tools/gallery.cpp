// Draws every distribution at several parameters for docs/gallery/: histograms beside what theory expects of each bin.
//   gallery FOLDER     writes a table and a picture for each family (gnuplot), and README.md
//   gallery --fit      prints the table of goodness of fit
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "support/distributions.h"

namespace {

constexpr int variates = 1000000;
constexpr unsigned seed = 1871;

// `row` tells the rows of a table apart, whose p-values are then independent.
qor_stream* new_stream(unsigned row = 0) {
  qor_stream* stream = nullptr;
  const unsigned seeds[] = {seed, row};
  __wxrNewStreamEx(&stream, QOR_BRNG_MT19937, 2, seeds);
  return stream;
}

// The x with cdf(x) = p, to the width of a bin.
double quantile(const std::function<double(double)>& cdf, double p) {
  double low = -4e9, high = 4e9;
  for (int i = 0; i < 90; ++i) {
    const double middle = (low + high) / 2;
    (cdf(middle) < p ? low : high) = middle;
  }
  return high;
}

// One curve of a picture: bins from `low`, `width` wide.
struct Curve {
  std::string parameters;
  double low, width;
  std::vector<double> drawn, expected;  // density, or probability of an outcome
};

// Probability below x of variates: those of discrete ones are whole, bins then lie around whole numbers.
template <class T>
Curve curve(const std::string& parameters, const std::vector<T>& x, const std::function<double(double)>& cdf,
            double low, double width, int bins, bool whole) {
  Curve c{parameters, low, width, std::vector<double>(bins), std::vector<double>(bins)};
  for (const T v : x) {
    const double bin = std::floor((static_cast<double>(v) - low) / width);
    if (bin >= 0 && bin < bins) c.drawn[static_cast<std::size_t>(bin)] += 1 / (static_cast<double>(x.size()) * width);
  }
  for (int i = 0; i < bins; ++i) {
    const double left = low + i * width, right = left + width;
    c.expected[static_cast<std::size_t>(i)] =
        ((whole ? cdf(std::floor(right)) : cdf(right)) - (whole ? cdf(std::floor(left)) : cdf(left))) / width;
  }
  return c;
}

Curve continuous_curve(const known::Continuous& of) {
  std::vector<double> x(variates);
  qor_stream* stream = new_stream();
  of.draw(stream, variates, x.data());
  __wxrDeleteStream(&stream);
  const double low = quantile(of.cdf, 0.002), high = quantile(of.cdf, 0.98);
  constexpr int bins = 60;
  return curve(of.parameters, x, of.cdf, low, (high - low) / bins, bins, false);
}
Curve discrete_curve(const known::Discrete& of) {
  std::vector<int> k(variates);
  qor_stream* stream = new_stream();
  of.draw(stream, variates, k.data());
  __wxrDeleteStream(&stream);
  const double low = std::floor(quantile(of.cdf, 0.0005)), high = std::ceil(quantile(of.cdf, 0.999));
  const double width = std::max(1.0, std::ceil((high - low + 1) / 60));
  const int bins = static_cast<int>((high - low + 1) / width) + 1;
  return curve(of.parameters, k, of.cdf, low - 0.5, width, bins, true);
}

// ---- the page
// --------------------------------------------------------------------------------------------------------

std::string file_of(const std::string& family) {
  std::string name;
  for (const char c : family) {
    if (std::isalnum(static_cast<unsigned char>(c)) != 0) name += static_cast<char>(std::tolower(c));
  }
  return name;
}

// Up to six curves, side by side.
bool draw(const std::string& folder, const std::string& family, const std::vector<Curve>& curves) {
  std::FILE* const gnuplot = popen("gnuplot", "w");
  if (gnuplot == nullptr) return false;
  const int count = static_cast<int>(curves.size()), columns = std::min(count, 3), rows = (count + 2) / 3;
  std::fprintf(
      gnuplot,
      "set terminal pngcairo noenhanced size %d,%d font 'DejaVu Sans,9' background rgb 'white'\n"
      "set output '%s/%s.png'\nset multiplot layout %d,%d\n"
      "set border 3 linecolor rgb '#444444'\nset tics nomirror\nset grid ytics linecolor rgb '#dddddd' linetype 1\n"
      "set style fill solid 1.0 noborder\nset yrange [0:*]\nunset key\nset xtics autofreq rotate by 0\n"
      "set format x '%%.7g'\nset xtics font ',8'\nset ytics font ',8'\n",
      320 * columns, 210 * rows, folder.c_str(), file_of(family).c_str(), rows, columns);
  for (const Curve& c : curves) {
    const double end = c.low + c.width * static_cast<double>(c.drawn.size());
    // Three or four tics.
    double step = std::pow(10, std::floor(std::log10((end - c.low) / 3)));
    while ((end - c.low) / step > 4) step *= 2;
    std::fprintf(gnuplot,
                 "set title '%s(%s)'\nset xrange [%.17g:%.17g]\nset xtics %.17g, %.17g\n"
                 "plot '-' using 1:2 with boxes linecolor rgb '#8db9dc', '-' using 1:2 with histeps linewidth 1.5 "
                 "linecolor rgb '#b5471b'\n",
                 family.substr(0, family.find(',')).c_str(), c.parameters.c_str(), c.low, end,
                 step * std::ceil(c.low / step), step);
    for (const auto* values : {&c.drawn, &c.expected}) {
      for (std::size_t i = 0; i < values->size(); ++i) {
        std::fprintf(gnuplot, "%.10g %.6g\n", c.low + (static_cast<double>(i) + 0.5) * c.width, (*values)[i]);
      }
      std::fprintf(gnuplot, "e\n");
    }
  }
  std::fprintf(gnuplot, "unset multiplot\n");
  return pclose(gnuplot) == 0;
}

int make_page(const std::string& folder) {
  std::vector<std::pair<std::string, std::vector<std::function<Curve()>>>> families;
  const auto add = [&families](const std::string& family, const std::function<Curve()>& make) {
    auto at = std::ranges::find_if(families, [&](const auto& known) { return known.first == family; });
    if (at == families.end()) at = families.insert(at, {family, {}});
    at->second.push_back(make);
  };
  for (const known::Continuous& of : known::continuous()) add(of.family, [of] { return continuous_curve(of); });
  for (const known::Discrete& of : known::discrete()) add(of.family, [of] { return discrete_curve(of); });

  std::FILE* const page = std::fopen((folder + "/README.md").c_str(), "w");
  if (page == nullptr) return std::perror(folder.c_str()), 1;
  std::fprintf(
      page,
      "# Gallery\n\nA million variates of each distribution but the uniform ones, MT19937 with seed %u, double "
      "precision "
      "where there is a\nchoice: boxes are what was drawn, lines what theory expects of the same bins. `./run gallery` "
      "makes this page;\ninclude/qor/rng.h tells the parameters, tests/rng/fit_test.cpp asks whether the boxes are "
      "right.\n",
      seed);
  int status = 0;
  for (const auto& [family, all] : families) {
    std::vector<Curve> curves;  // six at most, evenly chosen
    const std::size_t shown = std::min<std::size_t>(all.size(), 6);
    for (std::size_t i = 0; i < shown; ++i)
      curves.push_back(all[i * (all.size() - 1) / std::max<std::size_t>(shown - 1, 1)]());
    std::fprintf(page, "\n## %s\n\n![%s](%s.png)\n", family.c_str(), family.c_str(), file_of(family).c_str());
    if (!draw(folder, family, curves)) status = 1;
  }
  std::fclose(page);
  if (status != 0) std::fprintf(stderr, "gallery: gnuplot failed\n");
  return status;
}

// ---- goodness of fit
// ---------------------------------------------------------------------------------------------------

int print_fit() {
  std::printf(
      "## Distributions\n\n"
      "A million variates each, MT19937 with seeds %u and the row: `./run gallery` writes this "
      "section.\n"
      "Kolmogorov-Smirnov against the distribution function for continuous variates, chi-square over classes of\n"
      "about equal probability for discrete ones. p-values of right variates are uniform on [0, 1].\n\n"
      "| distribution | parameters | statistic | p, double | p, single |\n|---|---|---|---|---|\n",
      seed);
  std::vector<double> p;
  unsigned row = 0;
  for (const known::Continuous& of : known::continuous()) {
    std::vector<double> x(variates);
    std::vector<float> y(variates);
    qor_stream *stream = new_stream(row++), *other = new_stream(row++);
    of.draw(stream, variates, x.data());
    of.draw_single(other, variates, y.data());
    __wxrDeleteStream(&stream), __wxrDeleteStream(&other);
    const known::Fit wide = known::kolmogorov_smirnov(x, of.cdf), narrow = known::kolmogorov_smirnov(y, of.cdf);
    std::printf("| %s | %s | D = %.2e | %.3f | %.3f |\n", of.family.c_str(), of.parameters.c_str(), wide.statistic,
                wide.p, narrow.p);
    p.push_back(wide.p), p.push_back(narrow.p);
  }
  for (const known::Discrete& of : known::discrete()) {
    std::vector<int> k(variates);
    qor_stream* stream = new_stream(row++);
    of.draw(stream, variates, k.data());
    __wxrDeleteStream(&stream);
    const known::Fit fit = known::chi_square(k, of.cdf);
    std::printf("| %s | %s | chi-square = %.1f of %d | %.3f | |\n", of.family.c_str(), of.parameters.c_str(),
                fit.statistic, fit.freedom, fit.p);
    p.push_back(fit.p);
  }
  std::printf(
      "\nThe least of these %zu p-values is %.4f; one of %.4f or less is expected in every tenth such "
      "table.\n",
      p.size(), *std::min_element(p.begin(), p.end()), 0.1 / static_cast<double>(p.size()));
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--fit") == 0) return print_fit();
  if (argc == 2) return make_page(argv[1]);
  std::fprintf(stderr, "usage: gallery FOLDER | --fit\n");
  return 2;
}
