// qor selftest: does this library, on this processor, give what it promises?
#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <cstring>
#include <numbers>
#include <sstream>

#include "catalog.h"
#include "command.h"
#include "known_answers.h"
#include "numbers.h"
#include "programs.h"

namespace cli {

namespace {

struct Tally {
  const char* subject;
  int checks = 0, failures = 0;
  void check(bool good, const std::string& what) {
    ++checks;
    if (good) return;
    if (++failures <= 5) std::printf("  FAILED: %s\n", what.c_str());
  }
  void print() const {
    std::printf("%-42s %4d checks  %s\n", subject, checks,
                failures == 0 ? "ok" : ("FAILED " + std::to_string(failures)).c_str());
  }
};

const Engine& engine_named(const std::string& name) { return *std::ranges::find(engines, lower(name), &Engine::name); }

// Words of `bytes` bytes, the low eight of each.
std::vector<std::uint64_t> words_of(qor::Stream& stream, std::size_t count) {
  BrngRecord record;
  __wxrGetBrngProperties(stream.brng(), &record);
  const std::size_t width = static_cast<std::size_t>(record.wordBytes);
  std::vector<std::uint32_t> raw(count * width / 4);
  stream.words(raw);
  std::vector<std::uint64_t> words(count);
  for (std::size_t i = 0; i < count; ++i) std::memcpy(&words[i], &raw[i * width / 4], std::min<std::size_t>(width, 8));
  return words;
}

Tally test_known_answers() {
  Tally tally{"engines: known answers"};
  std::istringstream lines(known_answers);
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream fields(line);
    std::string name, seed_field, seed;
    std::size_t first = 0;
    fields >> name >> seed_field >> first;
    std::vector<unsigned> seeds;
    std::istringstream seed_list(seed_field == "-" ? "" : seed_field);
    while (std::getline(seed_list, seed, ',')) seeds.push_back(static_cast<unsigned>(std::stoul(seed, nullptr, 16)));
    qor::Stream stream(engine_named(name).brng, seeds);
    const std::vector<std::uint64_t> words = words_of(stream, first + 4);
    std::uint64_t expected = 0;
    for (std::size_t i = first; fields >> expected; ++i) tally.check(words.at(i) == expected, line);
  }
  return tally;
}

Tally test_streams() {
  Tally tally{"streams: copies, jumps, splits"};
  for (const Engine& e : engines) {
    const bool quasi = e.brng == QOR_BRNG_SOBOL || e.brng == QOR_BRNG_NIEDERR;
    const unsigned seed = quasi ? 7 : 20;
    qor::Stream whole(e.brng, seed), parts(e.brng, seed);
    const auto expected = words_of(whole, 1000);
    auto got = words_of(parts, 301);
    qor::Stream copy = parts.copy();
    for (const std::uint64_t word : words_of(copy, 699)) got.push_back(word);
    tally.check(got == expected, e.name + ": a split request with a copy in between");
    if (e.skips) {
      qor::Stream ahead(e.brng, seed);
      ahead.skip_ahead(990);
      tally.check(words_of(ahead, 10) == std::vector(expected.end() - 10, expected.end()), e.name + ": skip-ahead");
    }
    if (e.leapfrogs) {
      qor::Stream leaping(e.brng, seed);
      leaping.leapfrog(3, 7);
      const auto every = words_of(leaping, 100);
      for (std::size_t i = 0; i < 100; ++i) tally.check(every[i] == expected[3 + 7 * i], e.name + ": leapfrog");
    }
  }
  return tally;
}

// References of the functions, in the extended precision of the C library, and arguments from low to high.
struct Reference {
  const char* name;
  long double (*f)(long double, long double);
  double low, high;
};
long double inverse_erf(long double a, long double near) {
  for (int i = 0; i < 3; ++i) {
    const long double wrong =
        near > 1 || near < -1 ? (near > 0 ? 1 - a - erfcl(near) : erfcl(-near) - (1 + a)) : erfl(near) - a;
    near -= wrong * expl(near * near) * sqrtl(std::numbers::pi_v<long double>) / 2;
  }
  return near;
}
#define QOR_REFERENCE(expression) \
  [](long double x, [[maybe_unused]] long double y) -> long double { return expression; }
const Reference references[] = {
    {"inv", QOR_REFERENCE(1 / x), -100, 100},
    {"sqrt", QOR_REFERENCE(sqrtl(x)), 0, 1e6},
    {"invsqrt", QOR_REFERENCE(1 / sqrtl(x)), 1e-3, 1e3},
    {"cbrt", QOR_REFERENCE(cbrtl(x)), -1e6, 1e6},
    {"invcbrt", QOR_REFERENCE(1 / cbrtl(x)), -1e6, 1e6},
    {"exp", QOR_REFERENCE(expl(x)), -80, 80},
    {"ln", QOR_REFERENCE(logl(x)), 1e-3, 50},
    {"log10", QOR_REFERENCE(log10l(x)), 1e-3, 50},
    {"sin", QOR_REFERENCE(sinl(x)), -100, 100},
    {"cos", QOR_REFERENCE(cosl(x)), -100, 100},
    {"tan", QOR_REFERENCE(tanl(x)), -100, 100},
    {"asin", QOR_REFERENCE(asinl(x)), -1, 1},
    {"acos", QOR_REFERENCE(acosl(x)), -1, 1},
    {"atan", QOR_REFERENCE(atanl(x)), -20, 20},
    {"sinh", QOR_REFERENCE(sinhl(x)), -20, 20},
    {"cosh", QOR_REFERENCE(coshl(x)), -20, 20},
    {"tanh", QOR_REFERENCE(tanhl(x)), -5, 5},
    {"asinh", QOR_REFERENCE(asinhl(x)), -100, 100},
    {"acosh", QOR_REFERENCE(acoshl(x)), 1, 100},
    {"atanh", QOR_REFERENCE(atanhl(x)), -0.999, 0.999},
    {"erf", QOR_REFERENCE(erfl(x)), -4, 4},
    {"erfc", QOR_REFERENCE(erfcl(x)), -4, 8},
    {"erfinv", nullptr, -0.999, 0.999},
    {"sincos", QOR_REFERENCE(sinl(x)), -100, 100},
    {"pow", QOR_REFERENCE(powl(x, y)), 0.1, 8},
    {"div", QOR_REFERENCE(x / y), 0.1, 8},
    {"atan2", QOR_REFERENCE(atan2l(x, y)), 0.1, 8},
    {"hypot", QOR_REFERENCE(hypotl(x, y)), 0.1, 8},
};
#undef QOR_REFERENCE

template <class T>
double stated_bound(const std::string& name, int accuracy) {
  constexpr bool single = sizeof(T) == 4;
  if (accuracy == 0) return single ? 0.51 : 0.55;
  if (!single) return name == "ln" ? 3.5 : name == "tanh" ? 2.5 : 2.0;
  if (name == "invsqrt") return 3.0;
  constexpr const char* slightly_more[] = {"cos", "tan", "asin", "acosh", "atanh"};
  return std::ranges::find(slightly_more, name) == std::end(slightly_more) ? 2.0 : 2.1;
}

template <class T>
void test_functions(Tally& tally) {
  constexpr int count = 2000;
  constexpr long double slack = 0.005L;  // the reference's own error
  qor::Stream stream(QOR_BRNG_MT19937, 7);
  std::vector<double> u(count), v(count);
  std::vector<T> x(count), y(count), r(count), r2(count);
  for (const Function& f : functions) {
    const auto reference = std::ranges::find(references, f.name, &Reference::name);
    tally.check(reference != std::end(references), f.name + " has no reference");
    if (reference == std::end(references)) continue;
    stream.uniform(u, reference->low, reference->high);
    stream.uniform(v, 0.1, 8.0);
    std::ranges::transform(u, x.begin(), [](double value) { return static_cast<T>(value); });
    std::ranges::transform(v, y.begin(), [](double value) { return static_cast<T>(value); });
    for (const int accuracy : {0, 1}) {
      f.call<T>(accuracy, count, x.data(), y.data(), r.data(), r2.data());
      long double worst = 0;
      for (std::size_t i = 0; i < count; ++i) {
        const long double exact = reference->f == nullptr ? inverse_erf(x[i], r[i]) : reference->f(x[i], y[i]);
        int exponent = 0;
        (void)frexpl(exact, &exponent);
        worst = std::max(worst, fabsl(r[i] - exact) / ldexpl(1, exponent - std::numeric_limits<T>::digits));
      }
      const double bound = stated_bound<T>(f.name, accuracy);
      char text[120];
      std::snprintf(text, sizeof text, "%s %s %s: %.3Lf ulp, at most %.2f are stated", f.name.c_str(),
                    sizeof(T) == 8 ? "double" : "single", accuracy == 0 ? "high" : "low", worst, bound);
      tally.check(worst <= bound + slack, text);
    }
  }
}

// Distances from the exact results, in units in the last place of their size: at most 1 or 4.
struct ComplexReference {
  const char* name;
  std::complex<long double> (*f)(std::complex<long double>);
};
#define QOR_REFERENCE(name)                                          \
  {                                                                  \
#name, [](std::complex <long double> z) { return std::name(z); } \
  }
const ComplexReference complex_references[] = {
    QOR_REFERENCE(exp),   QOR_REFERENCE(sin),
    QOR_REFERENCE(cos),   QOR_REFERENCE(tan),
    QOR_REFERENCE(sinh),  QOR_REFERENCE(cosh),
    QOR_REFERENCE(tanh),  QOR_REFERENCE(asin),
    QOR_REFERENCE(acos),  QOR_REFERENCE(atan),
    QOR_REFERENCE(asinh), QOR_REFERENCE(acosh),
    QOR_REFERENCE(atanh), QOR_REFERENCE(log10),
    QOR_REFERENCE(sqrt),  {"ln", [](std::complex<long double> z) { return std::log(z); }},
};
#undef QOR_REFERENCE

template <class T>
void test_complex_functions(Tally& tally) {
  constexpr int count = 1000;
  qor::Stream stream(QOR_BRNG_MT19937, 11);
  std::vector<T> x(2 * count), r(2 * count);
  stream.uniform(x, -3, 3);
  for (const Function& f : complex_functions) {
    if (f.arguments() == 2) continue;
    const auto reference = std::ranges::find(complex_references, f.name, &ComplexReference::name);
    tally.check(reference != std::end(complex_references), f.name + " has no reference");
    if (reference == std::end(complex_references)) continue;
    for (const int accuracy : {0, 1}) {
      f.call<T>(accuracy, count, x.data(), nullptr, r.data(), nullptr);
      long double worst = 0;
      for (std::size_t i = 0; i < x.size(); i += 2) {
        const std::complex<long double> exact = reference->f({x[i], x[i + 1]});
        int exponent = 0;
        (void)frexpl(std::abs(exact), &exponent);
        const std::complex<long double> wrong(r[i] - exact.real(), r[i + 1] - exact.imag());
        worst = std::max(worst, std::abs(wrong) / ldexpl(1, exponent - std::numeric_limits<T>::digits));
      }
      char text[120];
      std::snprintf(text, sizeof text, "complex %s %s %s: %.3Lf ulp", f.name.c_str(),
                    sizeof(T) == 8 ? "double" : "single", accuracy == 0 ? "high" : "low", worst);
      tally.check(worst <= (accuracy == 0 ? 1.01L : 4.01L), text);
    }
  }
}

template <class T>
void test_transforms(Tally& tally) {
  qor::Stream stream(QOR_BRNG_MT19937, 8);
  std::vector<int> lengths = {97, 240, 1000, 1021, 4096};
  for (int n = 1; n <= 40; ++n) lengths.push_back(n);
  for (const int n : lengths) {
    const auto size = static_cast<std::size_t>(n);
    std::vector<T> x(size), back(size), spectrum(static_cast<std::size_t>(qor::packed_size(qor::Packing::ccs, n)));
    stream.gaussian(x);
    const qor::RealTransform<T> transform(n);
    transform.forward(x, spectrum, qor::Packing::ccs);
    transform.inverse(spectrum, back, qor::Packing::ccs);
    long double wrong = 0, whole = 0;
    for (std::size_t i = 0; i < size; ++i) {
      wrong += (back[i] - x[i]) * (back[i] - x[i]);
      whole += x[i] * x[i];
    }
    const long double bound = 2.4L * std::numeric_limits<T>::epsilon() * sqrtl(1 + log2l(n));
    tally.check(sqrtl(wrong) <= bound * sqrtl(whole), "there and back, length " + std::to_string(n));
    if (n > 40) continue;
    const qor::Spectrum<T> view(spectrum, qor::Packing::ccs, n);
    wrong = 0;
    for (int k = 0; k < n; ++k) {
      std::complex<long double> sum = 0;
      for (int i = 0; i < n; ++i) {
        sum += std::polar<long double>(1, -2 * std::numbers::pi_v<long double> * ((i * k) % n) / n) *
               static_cast<long double>(x[static_cast<std::size_t>(i)]);
      }
      wrong += std::norm(std::complex<long double>(view[k]) - sum);
    }
    tally.check(sqrtl(wrong) <= bound * sqrtl(whole * n), "by the definition, length " + std::to_string(n));
  }
}

// Pictures by the definition, through descriptors.
template <class T>
void test_descriptors(Tally& tally) {
  qor::Stream stream(QOR_BRNG_MT19937, 10);
  for (const auto& [rows, columns] : {std::pair(3, 4), std::pair(5, 7), std::pair(8, 12)}) {
    std::vector<T> reals(static_cast<std::size_t>(2 * rows * columns));
    stream.gaussian(reals);
    std::vector<std::complex<T>> z(reals.size() / 2);
    for (std::size_t i = 0; i < z.size(); ++i) z[i] = {reals[2 * i], reals[2 * i + 1]};
    const std::vector<std::complex<T>> x = z;
    qor::Descriptor<T> descriptor(qor::Domain::complex, {rows, columns});
    descriptor.set_backward_scale(1.0 / (rows * columns));
    descriptor.commit();
    descriptor.forward(z);
    long double wrong = 0, whole = 0;
    for (int k = 0; k < rows * columns; ++k) {
      std::complex<long double> sum = 0;
      for (int i = 0; i < rows * columns; ++i) {
        const long double turns = static_cast<long double>(k / columns * (i / columns)) / rows +
                                  static_cast<long double>(k % columns * (i % columns)) / columns;
        sum += std::polar<long double>(1, -2 * std::numbers::pi_v<long double> * turns) *
               std::complex<long double>(x[static_cast<std::size_t>(i)]);
      }
      wrong += std::norm(std::complex<long double>(z[static_cast<std::size_t>(k)]) - sum);
      whole += std::norm(sum);
    }
    const std::string shape = std::to_string(rows) + " by " + std::to_string(columns);
    const long double bound = 3 * std::numeric_limits<T>::epsilon();
    tally.check(sqrtl(wrong) <= bound * sqrtl(whole), "by the definition, " + shape);
    descriptor.backward(z);
    for (std::size_t i = 0; i < z.size(); ++i) {
      tally.check(std::abs(z[i] - x[i]) <= 20 * std::numeric_limits<T>::epsilon(), "there and back, " + shape);
    }
  }
}

Tally test_convolution() {
  Tally tally{"convolution, correlation: plain sums"};
  qor::Stream stream(QOR_BRNG_MT19937, 9);
  for (int nx = 1; nx < 60; nx += 7) {
    for (int ny = 1; ny < 40; ny += 6) {
      std::vector<int> a(static_cast<std::size_t>(nx)), b(static_cast<std::size_t>(ny));
      stream.uniform(a, -100, 100);
      stream.uniform(b, -100, 100);
      const std::vector<double> x(a.begin(), a.end()), y(b.begin(), b.end());
      std::vector<double> z(x.size() + y.size() - 1), plain(z.size()), w(z.size()), turned(z.size());
      for (std::size_t i = 0; i < x.size(); ++i) {
        for (std::size_t k = 0; k < y.size(); ++k) {
          plain[i + k] += x[i] * y[k];
          turned[x.size() - 1 + k - i] += x[i] * y[k];
        }
      }
      qor::Task<double> convolution(qor::Kind::convolution, nx, ny), correlation(qor::Kind::correlation, nx, ny);
      convolution.execute(x, y, z);
      correlation.execute(x, y, w);
      const std::string shape = std::to_string(nx) + " by " + std::to_string(ny);
      tally.check(z == plain, "convolution " + shape);
      tally.check(w == turned, "correlation " + shape);
      convolution.set_mode(qor::Mode::fourier);
      convolution.execute(x, y, z);
      double wrong = 0;
      for (std::size_t i = 0; i < z.size(); ++i) wrong = std::max(wrong, std::fabs(z[i] - plain[i]));
      tally.check(wrong < 1e-9, "convolution through transforms " + shape);
    }
  }
  return tally;
}

}  // namespace

int run_selftest(std::span<const std::string> arguments) {
  parse("selftest", arguments, {}, 0);
  int failures = 0;
  const auto show = [&failures](const Tally& tally) {
    tally.print();
    failures += tally.failures;
  };
  Tally version{"version " QOR_VERSION " of program and library"};
  version.check(std::string(qor_version()) == QOR_VERSION, std::string("the library is ") + qor_version());
  show(version);
  show(test_known_answers());
  show(test_streams());
  Tally kernels{"functions: stated bounds of error"};
  test_functions<double>(kernels);
  test_functions<float>(kernels);
  test_complex_functions<double>(kernels);
  test_complex_functions<float>(kernels);
  show(kernels);
  Tally transforms{"transforms: definition, there and back"};
  test_transforms<double>(transforms);
  test_transforms<float>(transforms);
  show(transforms);
  Tally descriptors{"transforms of pictures"};
  test_descriptors<double>(descriptors);
  test_descriptors<float>(descriptors);
  show(descriptors);
  show(test_convolution());
  std::printf(failures == 0 ? "all is well\n" : "%d failures\n", failures);
  return failures == 0 ? 0 : 1;
}

}  // namespace cli
