// A registered generator whose numbers are written down.
#pragma once

#include <vector>

#include "qor/rng.h"

// What the scripted generator delivers, over and over, and what it has been asked for.
inline std::vector<double> script;
inline std::size_t script_at;
inline int fails_at;  // the request that fails; -1: none
struct Request {
  int n;
  double a, b;
  bool operator==(const Request&) const = default;
};
inline std::vector<Request> requests;

template <class T>
int deliver(int n, T* r, double a, double b) {
  requests.push_back({n, a, b});
  if (int(requests.size()) == fails_at + 1) return -77;
  for (int i = 0; i < n; ++i) r[i] = T(script[script_at++ % script.size()]);
  return 0;
}
inline int script_init(int, qor_stream*, int, const unsigned*) { return 0; }
inline int script_s(qor_stream*, int n, float* r, float a, float b) { return deliver(n, r, a, b); }
inline int script_d(qor_stream*, int n, double* r, double a, double b) { return deliver(n, r, a, b); }
inline int script_i(qor_stream*, int n, unsigned*) { return 1000 + n; }

inline int scripted_generator() {
  static const BrngRecord record = {16, 1, 0, 4, 32, script_init, script_s, script_d, script_i};
  static const int registered = __wxrRegisterBrng(&record);
  return registered;
}
inline void play(std::vector<double> numbers, int failing = -1) {
  script = std::move(numbers);
  script_at = 0;
  fails_at = failing;
  requests.clear();
}
