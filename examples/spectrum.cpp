// The three packings of a real spectrum, by a worked example, and the view that makes them alike.
//   g++ -m32 -std=c++20 spectrum.cpp $(pkg-config --cflags --libs qor) -o spectrum
#include <cmath>
#include <cstdio>
#include <qor/qor.hpp>
#include <vector>

namespace {

void show(const char* name, const std::vector<double>& packed) {
  std::printf("%-5s", name);
  for (const double value : packed) std::printf(" %5.1f", std::abs(value) < 1e-12 ? 0.0 : value);
  std::printf("\n");
}

}  // namespace

int main() {
  if (!qor_cpu_supported()) return std::fputs("this processor lacks SSE2 or SSSE3\n", stderr), 2;
  // [packings]
  const std::vector<double> x = {1, 2, 0, -1, 3, 0};  // n = 6
  const qor::RealTransform<double> transform(6);      // the inverse divides by n
  std::vector<double> perm(6), pack(6), ccs(8), back(6);
  transform.forward(x, perm, qor::Packing::perm);
  transform.forward(x, pack, qor::Packing::pack);
  transform.forward(x, ccs, qor::Packing::ccs);
  show("perm", perm);
  show("pack", pack);
  show("ccs", ccs);
  // [packings]

  // [view]
  const qor::Spectrum<double> spectrum(perm, qor::Packing::perm, 6);
  for (int k = 0; k < spectrum.size(); ++k) {
    std::printf("X[%d] = %4.1f %+5.2f i\n", k, spectrum[k].real(), spectrum[k].imag());
  }
  // [view]

  // [convert]
  qfpsPermToCCS_64f(perm.data(), ccs.data(), 6);
  transform.inverse(ccs, back, qor::Packing::ccs);
  // [convert]
  show("back", back);
}
