// Root mean square errors of the transforms against transforms in extended precision, beside those of FFTW on the same
// data when its libraries are installed.
//
//   qor_fft_accuracy [--largest ORDER]
//
// Errors are relative to the root mean square of the result, in units of eps sqrt(log2 n).
#include <dlfcn.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "qor/fft.h"

namespace {

using Number = std::complex<long double>;
using Numbers = std::vector<Number>;

Number product(Number a, Number b) {
  return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}
Number root(std::size_t k, std::size_t n) {
  const long double x =
      6.283185307179586476925286766559005768L * static_cast<long double>(k) / static_cast<long double>(n);
  return {std::cos(x), -std::sin(x)};
}

// By recursion on the smallest prime factor, in place; `spare` is of the same length.
void transform(Number* x, std::size_t n, Number* spare) {
  if (n == 1) return;
  std::size_t p = 2;
  while (n % p != 0) ++p;
  const std::size_t m = n / p;
  for (std::size_t i = 0; i < n; ++i) spare[i % p * m + i / p] = x[i];
  for (std::size_t r = 0; r < p; ++r) transform(spare + r * m, m, x);
  std::vector<Number> turns(p);
  for (std::size_t r = 0; r < p; ++r) turns[r] = root(r, p);
  constexpr std::size_t fine_steps = 64;
  Number fine[fine_steps], coarse = 1;
  for (std::size_t i = 0; i < fine_steps; ++i) fine[i] = root(i, n);
  for (std::size_t k = 0; k < m; ++k) {
    if (k % fine_steps == 0) coarse = root(k, n);
    const Number step = product(coarse, fine[k % fine_steps]);
    Number factor = 1;
    for (std::size_t r = 1; r < p; ++r) {
      factor = r % 16 == 0 ? root(r * k % n, n) : product(factor, step);
      spare[r * m + k] = product(spare[r * m + k], factor);
    }
    for (std::size_t u = 0; u < p; ++u) {
      Number sum = spare[k];
      for (std::size_t r = 1; r < p; ++r) sum += product(spare[r * m + k], turns[r * u % p]);
      x[k + u * m] = sum;
    }
  }
}

template <class T>
struct Calls;
#define CALLS(T, real, complex, X, file)                                   \
  template <>                                                              \
  struct Calls<T> {                                                        \
    static constexpr const char *name = #T, *library = file, *prefix = #X; \
    using RealSpec = qfpsDFTSpec_R_##real;                                 \
    using ComplexSpec = qfpsDFTSpec_C_##complex;                           \
    static constexpr auto make_real = qfpsDFTInitAlloc_R_##real;           \
    static constexpr auto make_complex = qfpsDFTInitAlloc_C_##complex;     \
    static constexpr auto forward_real = qfpsDFTFwd_RToPerm_##real;        \
    static constexpr auto forward_complex = qfpsDFTFwd_CToC_##complex;     \
    static constexpr auto free_real = qfpsDFTFree_R_##real;                \
    static constexpr auto free_complex = qfpsDFTFree_C_##complex;          \
  };
CALLS(float, 32f, 32fc, fftwf, "libfftw3f.so.3")
CALLS(double, 64f, 64fc, fftw, "libfftw3.so.3")
#undef CALLS

// FFTW without its header: plans are pointers; 1 << 6 is FFTW_ESTIMATE, -1 forward.
template <class T>
struct Peer {
  void* (*complex)(int, T*, T*, int, unsigned) = nullptr;
  void* (*real)(int, T*, T*, unsigned) = nullptr;
  void (*execute)(void*) = nullptr;
  void (*destroy)(void*) = nullptr;
  Peer() {
    void* const library = dlopen(Calls<T>::library, RTLD_NOW);
    if (library == nullptr) return;
    const auto find = [&](auto& f, const char* name) {
      f = reinterpret_cast<std::remove_reference_t<decltype(f)>>(
          dlsym(library, (Calls<T>::prefix + std::string(name)).c_str()));
    };
    find(complex, "_plan_dft_1d");
    find(real, "_plan_dft_r2c_1d");
    find(execute, "_execute");
    find(destroy, "_destroy_plan");
  }
};

template <class T>
double error(const T* got, const Numbers& want, std::size_t values) {
  long double e = 0, m = 0;
  for (std::size_t k = 0; k < values; ++k) {
    e += std::norm(Number(got[2 * k], got[2 * k + 1]) - want[k]);
    m += std::norm(want[k]);
  }
  const double levels = std::max(1.0, std::log2(static_cast<double>(want.size())));
  return static_cast<double>(std::sqrt(e / m)) / static_cast<double>(std::numeric_limits<T>::epsilon()) /
         std::sqrt(levels);
}
std::string text(double x) {
  char s[32];
  std::snprintf(s, sizeof s, x < 0 ? "-" : "%.2f", x);
  return s;
}

// Ours and FFTW's, real and complex.
template <class T>
void measure(std::size_t n, double out[4]) {
  static const Peer<T> peer;
  using C = Calls<T>;
  const int length = static_cast<int>(n);
  std::vector<T> x(2 * n), y(2 * n + 2);
  std::uint32_t word = 1;
  const auto fill = [&] {
    word = 1;
    for (T& v : x) v = static_cast<T>((word = word * 69069u + 1u) >> 8) / static_cast<T>(1 << 24) - T(0.5);
  };
  Numbers want(n), spare(n);
  for (const bool real : {true, false}) {
    fill();
    for (std::size_t i = 0; i < n; ++i) want[i] = real ? Number(x[i]) : Number(x[2 * i], x[2 * i + 1]);
    transform(want.data(), n, spare.data());
    // Real spectra: frequencies 0 .. n/2, as n/2 + 1 pairs.
    const std::size_t values = real ? n / 2 + 1 : n;
    if (real) {
      typename C::RealSpec* spec = nullptr;
      C::make_real(&spec, length, QFPS_NO_SCALING, 0);
      C::forward_real(x.data(), y.data(), spec, nullptr);
      C::free_real(spec);
      if (n % 2 == 0) {
        y[n] = y[1];
        y[n + 1] = 0;
      } else {
        std::memmove(&y[2], &y[1], (n - 1) * sizeof(T));
      }
      y[1] = 0;
    } else {
      typename C::ComplexSpec* spec = nullptr;
      C::make_complex(&spec, length, QFPS_NO_SCALING, 0);
      C::forward_complex(x.data(), y.data(), spec, nullptr);
      C::free_complex(spec);
    }
    out[real ? 0 : 2] = error(y.data(), want, values);
    out[real ? 1 : 3] = -1;
    if (peer.execute == nullptr) continue;
    void* const plan =
        real ? peer.real(length, x.data(), y.data(), 1u << 6) : peer.complex(length, x.data(), y.data(), -1, 1u << 6);
    fill();
    peer.execute(plan);
    peer.destroy(plan);
    out[real ? 1 : 3] = error(y.data(), want, values);
  }
}

void row(const std::string& label, std::size_t n) {
  double d[4], s[4];
  measure<double>(n, d);
  measure<float>(n, s);
  std::printf("| %s |", label.c_str());
  for (const double* p : {d, s}) {
    for (int i = 0; i < 4; i += 2) std::printf(" %s | %s |", text(p[i]).c_str(), text(p[i + 1]).c_str());
  }
  std::printf("\n");
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  int largest = 20;
  if (argc == 3 && std::strcmp(argv[1], "--largest") == 0) {
    largest = std::atoi(argv[2]);
  } else if (argc != 1) {
    std::fprintf(stderr, "usage: qor_fft_accuracy [--largest ORDER]\n");
    return 2;
  }
  std::printf(
      "## Transforms\n\nRoot mean square errors of forward transforms of uniform noise, in units of eps sqrt(log2 n), "
      "beside "
      "FFTW's on\nthe same data; the bound is 0.6. Written by `./run accuracy fft`.\n\n"
      "| length | real double | FFTW | complex double | FFTW | real single | FFTW | complex single | FFTW |\n"
      "|---|---|---|---|---|---|---|---|---|\n");
  for (int order = 0; order <= largest; ++order) row("2^" + std::to_string(order), std::size_t{1} << order);
  for (const std::size_t n :
       {3, 5, 6, 7, 9, 12, 15, 30, 60, 97, 105, 210, 360, 1000, 1009, 1260, 2187, 3125, 5040, 10007, 44100, 100000}) {
    row(std::to_string(n), n);
  }
}
