// Functions of complex numbers, 1000 of them in the first-level cache: against the C library, 10 times its speed in the
// geometric mean, and against the textbook formula over this library's real functions of the same accuracy, half its
// speed.
#include <cstring>
#include <random>
#include <string>

#include "complex.h"
#include "harness.h"
#include "qor/tfn.h"
#include "tfn/functions.def"

namespace bench {
namespace {

struct ComplexItem {
  const char* function;
  Range re, im, b;
};
const ComplexItem items[] = {
    {"Exp", {-10, 10}, {-30, 30}, {}},
    {"Ln", {1e-3, 1e3, Range::both_signs}, {1e-3, 1e3, Range::both_signs}, {}},
    {"Log10", {1e-3, 1e3, Range::both_signs}, {1e-3, 1e3, Range::both_signs}, {}},
    {"Sqrt", {1e-3, 1e3, Range::both_signs}, {1e-3, 1e3, Range::both_signs}, {}},
    {"Sin", {-30, 30}, {-5, 5}, {}},
    {"Cos", {-30, 30}, {-5, 5}, {}},
    {"Tan", {-30, 30}, {-3, 3}, {}},
    {"Sinh", {-5, 5}, {-30, 30}, {}},
    {"Cosh", {-5, 5}, {-30, 30}, {}},
    {"Tanh", {-3, 3}, {-30, 30}, {}},
    {"Asin", {-5, 5}, {-5, 5}, {}},
    {"Acos", {-5, 5}, {-5, 5}, {}},
    {"Atan", {-5, 5}, {-5, 5}, {}},
    {"Asinh", {-5, 5}, {-5, 5}, {}},
    {"Acosh", {-5, 5}, {-5, 5}, {}},
    {"Atanh", {-5, 5}, {-5, 5}, {}},
    {"Pow", {-5, 5}, {-5, 5}, {-5, 5}},
    {"Powx", {-5, 5}, {-5, 5}, {1.3, 1.3}},
};

#define QOR_OURS(Name, suffix, ...) \
  list.push_back({#Name, #suffix, [](int n, const T* a, const T* b, T* r) { (void)b, __VA_ARGS__; }});
#define QOR_ONE(Name, letter, suffix) QOR_OURS(Name, suffix, _tfn##letter##Name##_##suffix(n, a, r))
#define QOR_TWO(Name, letter, suffix) QOR_OURS(Name, suffix, _tfn##letter##Name##_##suffix(n, a, b, r))
#define QOR_SCALAR(Name, letter, suffix) QOR_OURS(Name, suffix, _tfn##letter##Name##_##suffix(n, a, {b[0], b[1]}, r))
#define QOR_MEMBERS(KIND, Name)         \
  if constexpr (sizeof(T) == 8) {       \
    KIND(Name, z, HA) KIND(Name, z, 50) \
  } else {                              \
    KIND(Name, c, HA) KIND(Name, c, 21) \
  }
#define QOR_ONES(Name) QOR_MEMBERS(QOR_ONE, Name)
#define QOR_TWOS(Name) QOR_MEMBERS(QOR_TWO, Name)
#define QOR_SCALARS(Name) QOR_MEMBERS(QOR_SCALAR, Name)
// Named by their accuracy.
template <class T>
std::vector<ComplexPeer<T>> our_functions() {
  std::vector<ComplexPeer<T>> list;
  TFN_COMPLEX_ONE_ARGUMENT(QOR_ONES)
  TFN_COMPLEX_TWO_ARGUMENTS(QOR_TWOS) TFN_COMPLEX_SCALAR_ARGUMENT(QOR_SCALARS) return list;
}

template <class T>
const T* numbers(const Range& re, const Range& im, unsigned seed) {
  std::mt19937 random(seed);
  auto* buffer = new Buffer<T, at_inputs>;  // lives as long as the program
  for (int i = 0; i < large_size; ++i) {
    buffer->data[i] = static_cast<T>(sample(i % 2 == 0 ? re : im, random() * 0x1p-32));
  }
  return buffer->data;
}

template <class T>
void add(std::vector<Work>& works, const ComplexItem& item, const std::string& precision) {
  Work work{"complex", std::string(item.function) + " complex " + precision, 1000, {}, {}};
  const T *const a = numbers<T>(item.re, item.im, 1), *const b = numbers<T>(item.b, item.b, 2);
  const auto contend = [&](const std::vector<ComplexPeer<T>>& list, const std::string& name, bool ours) {
    for (const ComplexPeer<T>& f : list) {
      if (std::strcmp(f.function, item.function) != 0) continue;
      const std::string full = name + (ours ? f.name : "");
      // The buffers hold half of large_size complex numbers.
      work.contenders.push_back({full, 0, ours, [run = f.run, a, b](int n) {
                                   constexpr int most = large_size / 2;
                                   for (; n > most; n -= most) run(most, a, b, output<T>());
                                   run(n, a, b, output<T>());
                                 }});
      if (!ours) continue;
      const std::string accuracy = std::strcmp(f.name, "HA") == 0 ? " HA" : " LA", plain = "plain" + accuracy;
      work.claims.push_back(
          {work.name + accuracy, full, {"C loop"}, no_limit, 10, "", "complex " + precision + accuracy + " against C"});
      work.claims.push_back({work.name + accuracy,
                             full,
                             {plain},
                             no_limit,
                             0.5,
                             "",
                             "complex " + precision + accuracy + " against plain"});
    }
  };
  contend(our_functions<T>(), "qor ", true);
  if (work.claims.empty()) return;
  contend(c_library_complex<T>(), "C loop", false);
  contend(plain_complex<T>(true), "plain HA", false);
  contend(plain_complex<T>(false), "plain LA", false);
  works.push_back(work);
}

}  // namespace

void add_complex_rows(std::vector<Work>& works) {
  for (const ComplexItem& item : items) add<double>(works, item, "double");
  for (const ComplexItem& item : items) add<float>(works, item, "single");
}

}  // namespace bench
