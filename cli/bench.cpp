// qor bench: how fast the library is on this processor.
#include <algorithm>
#include <complex>
#include <cstdio>
#include <functional>
#include <memory>

#include "catalog.h"
#include "command.h"
#include "numbers.h"
#include "programs.h"

namespace cli {

namespace {

struct Row {
  std::string name;
  double elements;  // a call
  std::function<void()> call;
};

// The fastest of several rounds of a few milliseconds, in nanoseconds an element.
double fastest(const Row& row) {
  row.call();
  double begin = seconds();
  row.call();
  const double once = std::max(seconds() - begin, 1e-7);
  const int calls = std::max(1, static_cast<int>(0.002 / once));
  double best = 1e9;
  for (int round = 0; round < 7; ++round) {
    begin = seconds();
    for (int i = 0; i < calls; ++i) row.call();
    best = std::min(best, (seconds() - begin) / calls);
  }
  return best / row.elements * 1e9;
}

constexpr int length = 1000;

template <class T>
void add_functions(std::vector<Row>& rows, const char* precision) {
  static std::vector<T> x(length), y(length), r(length), r2(length);
  for (int i = 0; i < length; ++i) {
    const auto at = static_cast<std::size_t>(i);
    x[at] = T(i + 1) / T(length + 1);
    y[at] = T(1.5);
  }
  for (const Function& f : functions) {
    for (const int accuracy : {0, 1}) {
      const auto work = [&f, accuracy] {
        // The one function whose arguments begin at 1.
        const std::vector<T>& from = f.name == "acosh" ? y : x;
        f.call<T>(accuracy, length, from.data(), y.data(), r.data(), r2.data());
      };
      rows.push_back({f.name + " " + precision + (accuracy == 0 ? " high" : " low"), length, work});
    }
  }
}

template <class T>
void add_transforms(std::vector<Row>& rows, const char* precision) {
  for (const int n : {256, 1000, 1024, 4096, 65536}) {
    const auto real = std::make_shared<qor::RealTransform<T>>(n);
    const auto complex = std::make_shared<qor::ComplexTransform<T>>(n);
    const auto data = std::make_shared<std::vector<std::complex<T>>>(static_cast<std::size_t>(n));
    const auto buffer =
        std::make_shared<std::vector<unsigned char>>(std::max(real->buffer_size(), complex->buffer_size()));
    const std::string name = std::to_string(n) + " " + precision;
    rows.push_back({"fft real " + name, double(n), [=] {
                      const std::span<T> x(reinterpret_cast<T*>(data->data()), static_cast<std::size_t>(n));
                      real->forward(x, x, qor::Packing::perm, *buffer);
                    }});
    rows.push_back({"fft complex " + name, double(n), [=] { complex->forward(*data, *data, *buffer); }});
  }
}

std::vector<Row> all_rows() {
  std::vector<Row> rows;
  static std::vector<double> d(10000);
  static std::vector<float> s(10000);
  static std::vector<std::uint32_t> w(40000);
  static std::vector<int> k(10000);
  for (const Engine& e : engines) {
    const auto stream =
        std::make_shared<qor::Stream>(e.brng, e.brng >= QOR_BRNG_SOBOL && e.brng <= QOR_BRNG_NIEDERR ? 10 : 1);
    rows.push_back({e.name + " words", double(d.size()),
                    [stream] { _wxriRngUniformBits(0, stream->get(), static_cast<int>(d.size()), w.data()); }});
    rows.push_back({e.name + " double", double(d.size()), [stream] { stream->uniform(d); }});
    rows.push_back({e.name + " single", double(s.size()), [stream] { stream->uniform(s); }});
  }
  const auto stream = std::make_shared<qor::Stream>(QOR_BRNG_MT19937, 1);
  for (const Distribution& distribution : distributions) {
    static constexpr double p[] = {2.5, 1.5, 0.5, 1}, whole[] = {0, 1000}, binomial[] = {100, 0.3},
                            urn[] = {1000, 100, 300}, chance[] = {0.3}, mean[] = {10}, failures[] = {5, 0.3};
    const double* const q = distribution.name == "integers"         ? whole
                            : distribution.name == "binomial"       ? binomial
                            : distribution.name == "hypergeometric" ? urn
                            : distribution.name == "poisson"        ? mean
                            : distribution.name == "negbinomial"    ? failures
                            : distribution.integers != nullptr      ? chance
                                                                    : p;
    const auto name = "mt19937 " + distribution.name;
    if (distribution.doubles != nullptr && distribution.name != "uniform") {
      rows.push_back({name + " double", double(d.size()), [=, &distribution] { distribution.doubles(*stream, d, q); }});
      rows.push_back({name + " single", double(s.size()), [=, &distribution] { distribution.singles(*stream, s, q); }});
    }
    if (distribution.integers != nullptr) {
      rows.push_back({name, double(k.size()), [=, &distribution] { distribution.integers(*stream, k, q); }});
    }
  }
  add_functions<double>(rows, "double");
  add_functions<float>(rows, "single");
  for (const auto mode : {qor::Mode::direct, qor::Mode::fourier}) {
    const auto task = std::make_shared<qor::Task<double>>(qor::Kind::convolution, 10000, 1000, mode);
    const auto z = std::make_shared<std::vector<double>>(10999);
    rows.push_back({std::string("convolve 10000 by 1000 ") + (mode == qor::Mode::direct ? "direct" : "fourier"), 10999,
                    [=] { task->execute(d, std::span(d).first(1000), *z); }});
  }
  add_transforms<double>(rows, "double");
  add_transforms<float>(rows, "single");
  return rows;
}

}  // namespace

int run_bench(std::span<const std::string> arguments) {
  const std::vector<std::string> words = parse("bench", arguments, {}, 64);
  std::vector<Row> rows = all_rows();
  std::erase_if(rows, [&](const Row& row) {
    return std::ranges::any_of(
        words, [&](const std::string& word) { return row.name.find(lower(word)) == std::string::npos; });
  });
  if (rows.empty()) throw Misuse("nothing has all of these words in its name");
  std::printf("%-34s %12s %16s\n", "", "ns/element", "million/second");
  double done = 0;
  Progress progress("bench", static_cast<double>(rows.size()));
  for (const Row& row : rows) {
    const double ns = fastest(row);
    std::printf("%-34s %12.3f %16.1f\n", row.name.c_str(), ns, 1000 / ns);
    if (!flush_output()) break;
    progress.at(++done);
  }
  return 0;
}

}  // namespace cli
