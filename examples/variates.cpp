// Variates of several distributions from one stream, and their means beside the theory.
//   g++ -m32 -std=c++20 variates.cpp $(pkg-config --cflags --libs qor) -o variates
#include <cstdio>
#include <numeric>
#include <qor/qor.hpp>
#include <vector>

int main() {
  if (!qor_cpu_supported()) return std::fputs("this processor lacks SSE2 or SSSE3\n", stderr), 2;
  qor::Stream stream(QOR_BRNG_MT19937, 1871);
  std::vector<double> r(100000);
  const auto show = [&r](const char* name, double mean) {
    const double sum = std::accumulate(r.begin(), r.end(), 0.0);
    std::printf("%-12s mean %8.4f  theory %8.4f\n", name, sum / static_cast<double>(r.size()), mean);
  };
  stream.gaussian(r, 100.0, 15.0);
  show("gaussian", 100);
  stream.exponential(r, 0.0, 2.0);
  show("exponential", 2);
  stream.gamma(r, 2.5);
  show("gamma", 2.5);
}
