// What the processor allows: the divider, a copy in the first-level cache, a call that does nothing.
#include <cmath>
#include <cstring>

#include "harness.h"

namespace bench {
namespace {

constexpr int elements = 1000;

template <class T>
const T* ones() {
  static Buffer<T, at_inputs> buffer;
  for (T& x : buffer.data) x = T(1.5);
  return buffer.data;
}
template <class T>
void square_roots(int n, const T* a, T* r) {
  for (int i = 0; i < n; ++i) r[i] = std::sqrt(a[i]);
}
template <class T>
void quotients(int n, const T* a, T* r) {
  for (int i = 0; i < n; ++i) r[i] = T(3) / a[i];
}
template <class T>
void copies(int n, const T* a, T* r) {
  std::memcpy(r, a, static_cast<std::size_t>(n) * sizeof(T));
}
[[gnu::noinline]] void nothing(int n, const double* a, double* r) { asm volatile("" : : "r"(n), "r"(a), "r"(r)); }

template <class T>
void add(std::vector<Work>& works, const char* name, void (*f)(int, const T*, T*), int n) {
  const T* const a = ones<T>();
  Work work{"limits", name, n, {}, {}};
  work.contenders.push_back({"limit", 0, false, [f, a](int count) { f(count, a, output<T>()); }});
  work.claims.push_back({name, "", {}, no_limit, 0, ""});
  works.push_back(work);
}

}  // namespace

void add_limit_rows(std::vector<Work>& works) {
  add<double>(works, "limit: square root, double", square_roots<double>, elements);
  add<float>(works, "limit: square root, single", square_roots<float>, elements);
  add<double>(works, "limit: division, double", quotients<double>, elements);
  add<float>(works, "limit: division, single", quotients<float>, elements);
  add<double>(works, "limit: copy in cache, double", copies<double>, elements);
  add<float>(works, "limit: copy in cache, single", copies<float>, elements);
  add<double>(works, "limit: one empty call", nothing, 1);
}

}  // namespace bench
