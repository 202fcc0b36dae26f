// qor math: a function of every number.
#include <algorithm>
#include <array>
#include <cstdio>

#include "catalog.h"
#include "command.h"
#include "numbers.h"
#include "programs.h"

namespace cli {

namespace {

std::array<unsigned long long, 5> reported;  // by status
int count_report(TfnErrorContext* context) {
  if (context->code > 0 && context->code < 5) ++reported[static_cast<std::size_t>(context->code)];
  return 1;
}

// width: numbers of an element, 2 of a complex one.
template <class T>
void apply(const Function& function, int accuracy, std::size_t width, Reader& in, bool raw) {
  Writer out(raw);
  Progress progress("numbers", 0);
  const std::size_t given = width * static_cast<std::size_t>(function.arguments());
  const std::size_t results = width * static_cast<std::size_t>(function.results());
  constexpr std::size_t block = 4096;
  double done = 0;
  for (;;) {
    const std::vector<T> numbers = in.read<T>(block * given);
    if (numbers.empty()) break;
    if (numbers.size() % given != 0) {
      throw Failure(in.name() + ": " + function.name + " needs " + std::to_string(given) + " numbers each time");
    }
    const std::size_t n = numbers.size() / given;
    std::vector<T> x(width * n), y(width * n), r(width * n), r2(width * n), row(results);
    for (std::size_t i = 0; i < n; ++i) {
      std::copy_n(&numbers[i * given], width, &x[i * width]);
      std::copy_n(&numbers[(i + 1) * given - width], width, &y[i * width]);
    }
    function.call<T>(accuracy, static_cast<int>(n), x.data(), y.data(), r.data(), r2.data());
    for (std::size_t i = 0; i < n; ++i) {
      std::copy_n(&r[i * width], width, row.begin());
      if (results > width) row[1] = r2[i];
      out.row(std::span<const T>(row));
    }
    done += static_cast<double>(n);
    progress.at(done);
  }
  out.flush();
}

}  // namespace

std::string list_of_functions() {
  std::string text = "\n";
  for (const auto* known : {&functions, &complex_functions}) {
    text += known == &functions ? "Functions:" : "With --complex:";
    for (const std::string& name : names_of(*known)) text.append(" ").append(name);
    text += ".\nOf two arguments:";
    for (const Function& f : *known) {
      if (f.arguments() == 2) text.append(" ").append(f.name);
    }
    text += ".\n";
  }
  return text;
}

int run_math(std::span<const std::string> arguments) {
  bool raw = false, single = false, list = false;
  std::size_t width = 1;
  int accuracy = 0;
  const std::vector<std::string> rest = parse(
      "math", arguments,
      {{"accuracy", "high|low", "errors of at most 0.55 units in the last place, or about 2 (high)",
        [&](const std::string& v) {
          accuracy = static_cast<int>(choice("--accuracy", v, std::vector<std::string>{"high", "low"}));
        }},
       {"complex", "", "of complex numbers, a real and an imaginary part each", [&](const std::string&) { width = 2; }},
       {"single", "", "compute in single precision", [&](const std::string&) { single = true; }},
       {"raw", "", "bytes instead of text, both ways", [&](const std::string&) { raw = true; }},
       {"list", "", "the functions' names", [&](const std::string&) { list = true; }}},
      2);
  const bool complex = width == 2;
  const std::string how = complex ? " ('qor math --complex --list' lists them)" : " ('qor math --list' lists them)";
  if (list) {
    for (const Function& f : complex ? complex_functions : functions) std::printf("%s\n", f.name.c_str());
    return 0;
  }
  if (rest.empty()) throw Misuse("a function is needed" + how);
  const std::vector<Function>& known = complex ? complex_functions : functions;
  const auto function = std::ranges::find(known, lower(rest[0]), &Function::name);
  if (function == known.end()) {
    throw Misuse(unknown(complex ? "complex function" : "function", rest[0], names_of(known)) + how);
  }
  Reader in(rest.size() > 1 ? rest[1] : "-", raw);
  const qor::ErrorMode mode(TFN_ERR_CALLBACK, count_report);
  if (single) {
    apply<float>(*function, accuracy, width, in, raw);
  } else {
    apply<double>(*function, accuracy, width, in, raw);
  }
  static constexpr const char* texts[] = {"", "out of domain", "at a pole", "overflow", "underflow"};
  for (std::size_t i = 1; i < reported.size(); ++i) {
    if (reported[i] > 0) std::fprintf(stderr, "qor math: %llu %s\n", reported[i], texts[i]);
  }
  return 0;
}

}  // namespace cli
