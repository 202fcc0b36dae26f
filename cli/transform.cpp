// qor fft, qor convolve.
#include <algorithm>
#include <complex>

#include "catalog.h"
#include "command.h"
#include "numbers.h"
#include "programs.h"

namespace cli {

namespace {

struct Shape {
  bool inverse = false, complex = false, odd = false, raw = false, single = false;
  qor::Scaling scaling = qor::Scaling::inverse;
};

template <class T>
void write_pairs(const std::vector<T>& values, bool raw) {
  Writer out(raw);
  for (std::size_t i = 0; i < values.size(); i += 2) out.row(std::span<const T>(values.data() + i, 2));
  out.flush();
}
template <class T>
void write_column(const std::vector<T>& values, bool raw) {
  Writer out(raw);
  for (const T& value : values) out.row(std::span<const T>(&value, 1));
  out.flush();
}

template <class T>
void transform(Reader& in, const Shape& shape) {
  std::vector<T> values = in.read_all<T>();
  if (values.empty()) throw Failure(in.name() + " has no numbers");
  const bool pairs = shape.complex || shape.inverse;
  if (pairs && values.size() % 2 != 0)
    throw Failure(in.name() + ": pairs of numbers are needed, a real and an imaginary part");
  if (shape.complex) {
    const std::size_t n = values.size() / 2;
    const qor::ComplexTransform<T> record(static_cast<int>(n), shape.scaling);
    const std::span<std::complex<T>> z(reinterpret_cast<std::complex<T>*>(values.data()), n);
    if (shape.inverse) {
      record.inverse(z, z);
    } else {
      record.forward(z, z);
    }
    write_pairs(values, shape.raw);
    return;
  }
  if (shape.inverse) {
    const int n = static_cast<int>(values.size()) - (shape.odd || values.size() == 2 ? 1 : 2);
    const qor::RealTransform<T> record(n, shape.scaling);
    std::vector<T> x(static_cast<std::size_t>(n));
    record.inverse(values, x, qor::Packing::ccs);
    write_column(x, shape.raw);
    return;
  }
  const int n = static_cast<int>(values.size());
  const qor::RealTransform<T> record(n, shape.scaling);
  std::vector<T> spectrum(static_cast<std::size_t>(qor::packed_size(qor::Packing::ccs, n)));
  record.forward(values, spectrum, qor::Packing::ccs);
  write_pairs(spectrum, shape.raw);
}

}  // namespace

int run_fft(std::span<const std::string> arguments) {
  Shape shape;
  const std::vector<std::string> rest = parse(
      "fft", arguments,
      {{"inverse", "", "from the spectrum to the numbers", [&](const std::string&) { shape.inverse = true; }},
       {"complex", "", "complex numbers, a real and an imaginary part a line",
        [&](const std::string&) { shape.complex = true; }},
       {"odd", "", "with --inverse: the numbers are odd in count", [&](const std::string&) { shape.odd = true; }},
       {"scale", "inverse|forward|both|none", "which direction is divided by the length, both by its root (inverse)",
        [&](const std::string& v) {
          using enum qor::Scaling;
          constexpr qor::Scaling scalings[] = {inverse, forward, both, none};
          shape.scaling =
              scalings[choice("--scale", v, std::vector<std::string>{"inverse", "forward", "both", "none"})];
        }},
       {"single", "", "compute in single precision", [&](const std::string&) { shape.single = true; }},
       {"raw", "", "bytes instead of text, both ways", [&](const std::string&) { shape.raw = true; }}},
      1);
  Reader in(rest.empty() ? "-" : rest[0], shape.raw);
  if (shape.single) {
    transform<float>(in, shape);
  } else {
    transform<double>(in, shape);
  }
  return 0;
}

int run_convolve(std::span<const std::string> arguments) {
  bool correlate = false, same = false;
  enum class Method { automatic, direct, fourier } method = Method::automatic;
  const std::vector<std::string> rest = parse(
      "convolve", arguments,
      {{"correlate", "", "the correlation instead, sums of x[i] y[i + k]",
        [&](const std::string&) { correlate = true; }},
       {"same", "", "the middle of the result alone, as long as A", [&](const std::string&) { same = true; }},
       {"method", "auto|direct|fourier", "sums, or transforms, which are faster when both files are long (auto)",
        [&](const std::string& v) {
          method = static_cast<Method>(choice("--method", v, std::vector<std::string>{"auto", "direct", "fourier"}));
        }}},
      2);
  if (rest.size() != 2) throw Misuse("two files are needed, A and B; one of them may be -");
  if (rest[0] == "-" && rest[1] == "-") throw Misuse("one file may be -, not both");
  const std::vector<double> x = Reader(rest[0], false).read_all<double>(),
                            y = Reader(rest[1], false).read_all<double>();
  if (x.empty() || y.empty()) throw Failure((x.empty() ? rest[0] : rest[1]) + " has no numbers");
  const int nx = static_cast<int>(x.size()), ny = static_cast<int>(y.size());
  const int count = same ? nx : nx + ny - 1;
  std::vector<double> z(static_cast<std::size_t>(count));
  const bool fourier = method == Method::fourier || (method == Method::automatic && std::min(nx, ny) > 100);
  qor::Task<double> task(correlate ? qor::Kind::correlation : qor::Kind::convolution, nx, ny,
                         fourier ? qor::Mode::fourier : qor::Mode::direct, count);
  task.set_start((correlate ? 1 - nx : 0) + (same ? (ny - 1) / 2 : 0));
  task.execute(x, y, z);
  write_column(z, false);
  return 0;
}

}  // namespace cli
