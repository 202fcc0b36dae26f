// Any bits as arguments of the vector functions: every result is within the member's bound of what another
// implementation computes in higher precision, is the same alone as among neighbours, and nothing else is written.
#include <bit>
#include <cmath>
#include <cstring>
#include <vector>

#include "fuzz/reader.h"
#include "tfn/sweep.h"

namespace {

using namespace qor::test;

constexpr int most = 40;

// Which of two NaNs an operation hands on is the compiler's choice.
template <class T>
bool same_bits(T a, T b) {
  return std::memcmp(&a, &b, sizeof(T)) == 0 || (std::isnan(a) && std::isnan(b));
}

int ignore(TfnErrorContext*) { return 1; }

template <class T>
void run(Reader& bytes) {
  static const std::vector<Member<T>> all = members<T>();
  const Member<T>& m = all[static_cast<std::size_t>(bytes.below(static_cast<int>(all.size())))];
  const int shift = bytes.below(4), n = 1 + bytes.below(most);
  T a[most + 4], b[most + 4], r[most + 6];
  for (int i = 0; i < n; ++i) {
    a[shift + i] = bytes.take<T>();
    b[shift + i] = m.scalar && i % 8 != 0 ? b[shift + i - 1] : bytes.take<T>();
  }
  constexpr T untouched = T(-77.25);
  std::fill(std::begin(r), std::end(r), untouched);
  m.run(n, a + shift, b + shift, r + shift + 1);
  for (int i = 0; i < most + 6; ++i) {
    if (i < shift + 1 || i > shift + n)
      require(r[i] == untouched, "nothing beside the results is written", m.name.c_str());
  }
  for (int i = 0; i < n; ++i) {
    const T x = a[shift + i], y = b[shift + i], got = r[shift + 1 + i];
    T alone;
    m.run(1, &x, &y, &alone);
    require(same_bits(alone, got), "an element alone has the same bits", m.name.c_str());
    const double error = ulps(got, m.exact(x, m.inputs == 2 ? y : x));
    if (error <= m.bound + 0.001) continue;
    // The oracle makes NaNs where the kernels follow C, and it has flaws of its own where nothing is left of the result.
    if (std::isnan(x) || (m.inputs == 2 && std::isnan(y))) continue;
    std::fprintf(stderr, "%s %s: %a %a gives %a, %g ulp\n", m.name.c_str(), m.output.c_str(), static_cast<double>(x),
                 static_cast<double>(y), static_cast<double>(got), error);
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  _tfnSetMode(TFN_ERR_CALLBACK);
  _tfnSetErrorCallBack(ignore);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t n) {
  Reader reader(bytes, n);
  if (reader.take<std::uint8_t>() % 2 == 0) {
    run<double>(reader);
  } else {
    run<float>(reader);
  }
  return 0;
}
