// What the library has, by name.
#pragma once

#include <qor/qor.hpp>
#include <span>
#include <string>
#include <vector>

namespace cli {

struct Engine {
  std::string name;
  int brng, members;
  const char *period, *about;
  bool leapfrogs, skips;
  unsigned dimensions = 0;  // at most, of a quasi-random engine, whose seed is the dimension
};
extern const std::vector<Engine> engines;
// "mt2203:17": the engine, and its identifier, member included.
const Engine& engine_of(const std::string& text);
int brng_of(const std::string& text);

// "gaussian:0,1". Parameters that aren't given have their defaults, those without a default are needed.
struct Parameter {
  const char* name;
  double usual;
  struct Range {
    const char* text;  // "sigma must be ..."
    bool (*holds)(double value, double first);
  };
  const Range* range;
};
struct Distribution {
  std::string name, about;
  std::vector<Parameter> parameters;
  void (*doubles)(qor::Stream&, std::span<double>, const double* p);
  void (*singles)(qor::Stream&, std::span<float>, const double* p);
  void (*integers)(qor::Stream&, std::span<int>, const double* p);
};
extern const std::vector<Distribution> distributions;
struct Chosen {
  const Distribution* distribution;
  std::vector<double> parameters;
};
Chosen distribution_of(const std::string& text);

// The functions of arrays, in both precisions and accuracies.
template <class T>
struct Members {
  void (*one[2])(int, const T*, T*);
  void (*two_results[2])(int, const T*, T*, T*);
  void (*two_arguments[2])(int, const T*, const T*, T*);
};
struct Function {
  std::string name;
  Members<double> doubles;
  Members<float> singles;
  int arguments() const { return doubles.two_arguments[0] != nullptr ? 2 : 1; }
  int results() const { return doubles.two_results[0] != nullptr ? 2 : 1; }
  // The member of a precision, by accuracy: 0 high, 1 low. y is the second argument or the second result.
  template <class T>
  void call(int accuracy, int n, const T* x, const T* y, T* r, T* r2) const {
    const Members<T>& m = qor::detail::pick<T>(&doubles, &singles)[0];
    if (m.one[accuracy] != nullptr) m.one[accuracy](n, x, r);
    if (m.two_results[accuracy] != nullptr) m.two_results[accuracy](n, x, r, r2);
    if (m.two_arguments[accuracy] != nullptr) m.two_arguments[accuracy](n, x, y, r);
  }
};
extern const std::vector<Function> functions, complex_functions;  // a complex number is two elements of an array

template <class Row>
std::vector<std::string> names_of(const std::vector<Row>& rows) {
  std::vector<std::string> names;
  for (const Row& row : rows) names.push_back(row.name);
  return names;
}

}  // namespace cli
