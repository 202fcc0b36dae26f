// Vector mathematics, 1000 elements in the first-level cache. _HA is measured against peers of at most 1.05 ulp (1.55
// where none is better), _50 and _21 against peers of at most 4 ulp.
#include <cmath>
#include <cstring>
#include <random>
#include <set>
#include <string>

#include "harness.h"
#include "qor/tfn.h"
#include "tfn/functions.def"

namespace bench {

// In each item's argument names a function of functions.def, or a rounding.
const std::vector<MathItem> math_items = {
    {"Exp", "Exp", {-10, 10}},
    {"Ln", "Ln", {1e-4, 1e4, Range::logarithmic}},
    {"Log10", "Log10", {1e-4, 1e4, Range::logarithmic}},
    {"Sqrt", "Sqrt", {1e-3, 1e3, Range::logarithmic}},
    {"InvSqrt", "InvSqrt", {1e-3, 1e3, Range::logarithmic}},
    {"Inv", "Inv", {1e-3, 1e3, Range::both_signs}},
    {"Div", "Div", {1e-3, 1e3, Range::both_signs}, {1e-3, 1e3, Range::both_signs}},
    {"Cbrt", "Cbrt", {1e-3, 1e3, Range::both_signs}},
    {"InvCbrt", "InvCbrt", {1e-3, 1e3, Range::both_signs}},
    {"Sin", "Sin", {-30, 30}},
    {"Cos", "Cos", {-30, 30}},
    {"SinCos", "SinCos", {-30, 30}},
    {"Tan", "Tan", {-30, 30}},
    {"Sin large", "Sin", {1e5, 1e10, Range::both_signs}},
    {"Asin", "Asin", {-0.99, 0.99}},
    {"Acos", "Acos", {-0.99, 0.99}},
    {"Atan", "Atan", {-10, 10}},
    {"Atan2", "Atan2", {-10, 10}, {-10, 10}},
    {"Sinh", "Sinh", {-5, 5}},
    {"Cosh", "Cosh", {-5, 5}},
    {"Tanh", "Tanh", {-3, 3}},
    {"Asinh", "Asinh", {-50, 50}},
    {"Acosh", "Acosh", {1.01, 100}},
    {"Atanh", "Atanh", {-0.99, 0.99}},
    {"Pow", "Pow", {0.1, 10, Range::logarithmic}, {-8, 8}},
    {"Powx", "Powx", {0.1, 10, Range::logarithmic}, {2.7, 2.7}},
    {"Hypot", "Hypot", {-100, 100}, {-100, 100}},
    {"Erf", "Erf", {-3, 3}},
    {"Erfc", "Erfc", {-2, 4}},
    {"ErfInv", "ErfInv", {-0.99, 0.99}},
    {"Floor", "Floor", {-1000, 1000}},
    {"Ceil", "Ceil", {-1000, 1000}},
    {"Trunc", "Trunc", {-1000, 1000}},
    {"Round", "Round", {-1000, 1000}},
    {"Rint", "Rint", {-1000, 1000}},
};

double sample(const Range& range, double u) {
  const auto spread = [&](double v) { return range.from * std::exp(std::log(range.to / range.from) * v); };
  switch (range.spacing) {
    case Range::logarithmic:
      return spread(u);
    case Range::both_signs:
      return u < 0.5 ? -spread(2 * u) : spread(2 * u - 1);
    default:
      return range.from + (range.to - range.from) * u;
  }
}

namespace {

template <class T>
using Run = void (*)(int n, const T* a, const T* b, T* r, T* r2);
template <class T>
struct Ours {
  const char *function, *accuracy;  // "HA", "50", "21", or "" for one that has none
  Run<T> run;
};

#define QOR_OURS(Name, letter, T, suffix, ...) \
  list.push_back({#Name, #suffix, [](int n, const T* a, const T* b, T* r, T* r2) { (void)b, (void)r2, __VA_ARGS__; }});
#define QOR_ONE(Name, letter, T, suffix) QOR_OURS(Name, letter, T, suffix, _tfn##letter##Name##_##suffix(n, a, r))
#define QOR_PAIR(Name, letter, T, suffix) QOR_OURS(Name, letter, T, suffix, _tfn##letter##Name##_##suffix(n, a, r, r2))
#define QOR_TWO(Name, letter, T, suffix) QOR_OURS(Name, letter, T, suffix, _tfn##letter##Name##_##suffix(n, a, b, r))
#define QOR_SCALAR(Name, letter, T, suffix) \
  QOR_OURS(Name, letter, T, suffix, _tfn##letter##Name##_##suffix(n, a, b[0], r))
#define QOR_MEMBERS(KIND, Name)               \
  if constexpr (sizeof(T) == 8) {             \
    KIND(Name, d, T, HA) KIND(Name, d, T, 50) \
  } else {                                    \
    KIND(Name, s, T, HA) KIND(Name, s, T, 21) \
  }
#define QOR_ONES(Name) QOR_MEMBERS(QOR_ONE, Name)
#define QOR_PAIRS(Name) QOR_MEMBERS(QOR_PAIR, Name)
#define QOR_TWOS(Name) QOR_MEMBERS(QOR_TWO, Name)
#define QOR_SCALARS(Name) QOR_MEMBERS(QOR_SCALAR, Name)
template <class T>
std::vector<Ours<T>> our_functions() {
  std::vector<Ours<T>> list;
  TFN_ONE_RESULT(QOR_ONES)
  TFN_TWO_RESULTS(QOR_PAIRS) TFN_TWO_ARGUMENTS(QOR_TWOS) TFN_SCALAR_ARGUMENT(QOR_SCALARS) return list;
}

// A tie is the goal where the processor's divider is the bound. _tfndSqrt_50 has its arithmetic prescribed.
double target(const std::string& item, const std::string& accuracy) {
  if (item == "Sin large" || (item == "Sqrt" && accuracy == "50")) return 0;
  if (item == "Sqrt" || item == "Div" || item == "Inv") return 0.95;
  const std::set<std::string> soft = {"Cbrt", "Sinh", "Cosh", "Tanh", "Asinh",  "Acosh", "Atanh",
                                      "Pow",  "Powx", "Erf",  "Erfc", "ErfInv", "Hypot"};
  return accuracy == "HA" && soft.contains(item) ? 2.5 : 1;
}
// The class of the high accuracy; no peer of some functions is better than this.
double high_ulp(const std::string& function) {
  if (function == "InvSqrt" || function == "InvCbrt") return 1.55;
  return function == "Erfc" ? 1.1 : 1.05;
}

template <class T>
const T* arguments(const Range& range, unsigned seed) {
  std::mt19937 random(seed);
  auto* buffer = new Buffer<T, at_inputs>;  // lives as long as the program
  for (T& x : buffer->data) x = static_cast<T>(sample(range, random() * 0x1p-32));
  return buffer->data;
}

template <class T>
void add(std::vector<Work>& works, const MathItem& item, const std::string& precision) {
  Work work{"math", std::string(item.name) + " " + precision, 1000, {}, {}};
  const T *const a = arguments<T>(item.a, 1), *const b = arguments<T>(item.b, 2);
  const auto call = [a, b](Run<T> run) {
    return [run, a, b](int n) { run(n, a, b, output<T>(), second_output<T>()); };
  };
  for (const Ours<T>& f : our_functions<T>()) {
    if (std::strcmp(f.function, item.function) != 0) continue;
    const std::string accuracy = f.accuracy, ours = "qor " + accuracy;
    work.contenders.push_back({ours, 0, true, call(f.run)});
    work.claims.push_back({work.name + " " + accuracy,
                           ours,
                           {},
                           accuracy == "HA" ? high_ulp(item.function) : 4,
                           target(item.name, accuracy),
                           "",
                           "math " + precision + (accuracy == "HA" ? " HA" : " LA")});
  }
  if (work.claims.empty()) return;
  for (const MathPeer<T>& peer : peers_of<T>(item)) {
    work.contenders.push_back({peer.name, peer_error(item.name, precision, peer.name), false, call(peer.run)});
  }
  works.push_back(work);
}

}  // namespace

void add_math_rows(std::vector<Work>& works) {
  for (const MathItem& item : math_items) add<double>(works, item, "double");
  for (const MathItem& item : math_items) add<float>(works, item, "single");
}

}  // namespace bench
