// Vector mathematics, 1000 elements in the first-level cache. _HA is measured against peers of at most 1.05 ulp, _50
// and _21 against peers of at most 4 ulp.
#include <cmath>
#include <cstring>
#include <random>
#include <string>

#include "harness.h"
#include "qor/tfn.h"

namespace bench {

const std::vector<Range> math_ranges = {
    {"Ln", 1e-4, 1e4, Range::logarithmic}, {"Sqrt", 1e-3, 1e3, Range::logarithmic},
    {"Sin", -30, 30, Range::even},         {"Cos", -30, 30, Range::even},
    {"SinCos", -30, 30, Range::even},      {"Sin large", 1e5, 1e10, Range::both_signs},
};

template <class T>
T sample(const Range& range, double u) {
  double x = 0;
  switch (range.spacing) {
    case Range::even:
      x = range.from + (range.to - range.from) * u;
      break;
    case Range::logarithmic:
      x = range.from * std::exp(std::log(range.to / range.from) * u);
      break;
    case Range::both_signs:
      x = u < 0.5 ? -range.from * std::exp(std::log(range.to / range.from) * (2 * u))
                  : range.from * std::exp(std::log(range.to / range.from) * (2 * u - 1));
      break;
  }
  return static_cast<T>(x);
}
template double sample<double>(const Range&, double);
template float sample<float>(const Range&, double);

namespace {

constexpr double high_ulp = 1.05, low_ulp = 4;

template <class T>
using Map1 = void (*)(int, const T*, T*);
template <class T>
using Map2 = void (*)(int, const T*, T*, T*);

template <class T>
struct Ours {
  const char* function;
  double high_target, low_target;
  Map1<T> high, low;
  Map2<T> high2 = nullptr, low2 = nullptr;
};

// A tie is the goal for Sqrt, which the processor's divider bounds; _tfndSqrt_50 has its arithmetic prescribed.
constexpr double tie = 0.95;
const Ours<double> double_functions[] = {
    {"Ln", 1, 1, _tfndLn_HA, _tfndLn_50},
    {"Sqrt", tie, 0, _tfndSqrt_HA, _tfndSqrt_50},
    {"Sin", 1.5, 1, _tfndSin_HA, _tfndSin_50},
    {"Cos", 1.5, 1, _tfndCos_HA, _tfndCos_50},
    {"SinCos", 1.5, 1, nullptr, nullptr, _tfndSinCos_HA, _tfndSinCos_50},
    {"Sin large", 0, 0, _tfndSin_HA, _tfndSin_50},
};
const Ours<float> single_functions[] = {
    {"Ln", 1, 1, _tfnsLn_HA, _tfnsLn_21},
    {"Sqrt", tie, tie, _tfnsSqrt_HA, _tfnsSqrt_21},
    {"Sin", 1.5, 1, _tfnsSin_HA, _tfnsSin_21},
    {"Cos", 1.5, 1, _tfnsCos_HA, _tfnsCos_21},
    {"SinCos", 1.5, 1, nullptr, nullptr, _tfnsSinCos_HA, _tfnsSinCos_21},
    {"Sin large", 0, 0, _tfnsSin_HA, _tfnsSin_21},
};

template <class T>
const T* arguments(const Range& range) {
  std::mt19937 random(1);
  auto* buffer = new Buffer<T, at_inputs>;  // lives as long as the program
  for (T& x : buffer->data) x = sample<T>(range, random() * 0x1p-32);
  return buffer->data;
}

template <class T>
std::function<void(int)> call(Map1<T> f, Map2<T> f2, const T* a) {
  if (f2 != nullptr) return [f2, a](int n) { f2(n, a, output<T>(), second_output<T>()); };
  return [f, a](int n) { f(n, a, output<T>()); };
}

template <class T>
void add(std::vector<Work>& works, const Ours<T>& f, const char* precision, const char* low_name) {
  const Range* range = nullptr;
  for (const Range& r : math_ranges) {
    if (std::strcmp(r.function, f.function) == 0) range = &r;
  }
  const T* const a = arguments<T>(*range);

  Work work{"math", std::string(f.function) + " " + precision, 1000, {}, {}};
  work.contenders.push_back({"qor HA", 0, true, call<T>(f.high, f.high2, a)});
  work.contenders.push_back({std::string("qor ") + low_name, 0, true, call<T>(f.low, f.low2, a)});
  for (const MathPeer<T>& peer : math_peers<T>()) {
    if (std::strcmp(peer.function, f.function) != 0) continue;
    work.contenders.push_back(
        {peer.name, peer.ulp, false, [peer, a](int n) { peer.run(n, a, output<T>(), second_output<T>()); }});
  }
  work.claims.push_back({work.name + " HA", "qor HA", {}, high_ulp, f.high_target, ""});
  work.claims.push_back({work.name + " " + low_name, std::string("qor ") + low_name, {}, low_ulp, f.low_target, ""});
  works.push_back(work);
}

}  // namespace

void add_math_rows(std::vector<Work>& works) {
  for (const auto& f : double_functions) add<double>(works, f, "double", "50");
  for (const auto& f : single_functions) add<float>(works, f, "single", "21");
}

}  // namespace bench
