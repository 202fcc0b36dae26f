// Any bits as arguments of the vector functions, of real and of complex numbers: every result is within the member's bound
// of what another implementation computes in higher precision, is the same alone as among neighbours, and nothing else
// is written.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "fuzz/reader.h"
#include "tfn/complex_sweep.h"

namespace {

using namespace qor::test;

constexpr int most = 40;

// Which of two NaNs an operation hands on is the compiler's choice.
template <class T>
bool same_bits(T a, T b) {
  return std::memcmp(&a, &b, sizeof(T)) == 0 || (std::isnan(a) && std::isnan(b));
}

int ignore(TfnErrorContext*) { return 1; }

// Is the result as the member promises? The oracle makes NaNs where the kernels follow C, and it has flaws of its own
// where nothing is left of the result.
template <class T>
bool right(const Member<T>& m, const T* x, const T* y, const T* got) {
  if (std::isnan(*x) || (m.inputs == 2 && std::isnan(*y))) return true;
  return ulps(*got, m.exact(*x, m.inputs == 2 ? *y : *x)) <= m.bound + 0.001;
}
// The oracle's power is the exponential of a product, which has lost as many bits as the product has before its point.
template <class T>
bool right(const ComplexMember<T>& m, const T* x, const T* y, const T* got) {
  const QuadComplex z = quad(x[0], x[1]), w = m.inputs == 2 ? quad(y[0], y[1]) : z;
  for (const Quad part : {__real__ z, __imag__ z, __real__ w, __imag__ w}) {
    if (!std::isfinite(part)) return true;
  }
  const QuadComplex exact = m.exact(z, w);
  if (isnanq(__real__ exact) || isnanq(__imag__ exact)) return true;
  double slack = 0.02;
  if (m.inputs == 2) {
    const QuadComplex ln = clogq(z);
    slack += 0x1p-8 * static_cast<double>(hypotq(__real__ w, __imag__ w) * hypotq(__real__ ln, __imag__ ln));
    if (slack > 1) return true;
  }
  const ComplexError e = complex_error(got, exact);
  return e.size <= m.size_bound + slack && e.part <= m.part_bound + slack;
}

// Elements are `parts` numbers each.
template <class T, int parts, class M>
void run(Reader& bytes, const std::vector<M>& all) {
  const M& m = all[static_cast<std::size_t>(bytes.below(static_cast<int>(all.size())))];
  const int shift = bytes.below(4), n = 1 + bytes.below(most);
  T a[parts * most + 4], b[parts * most + 4], r[parts * most + 6];
  for (int i = 0; i < parts * n; ++i) {
    a[shift + i] = bytes.take<T>();
    b[shift + i] = m.scalar && i % (8 * parts) >= parts ? b[shift + i - parts] : bytes.take<T>();
  }
  constexpr T untouched = T(-77.25);
  std::fill(std::begin(r), std::end(r), untouched);
  m.run(n, a + shift, b + shift, r + shift + 1);
  for (int i = 0; i < parts * most + 6; ++i) {
    if (i < shift + 1 || i > shift + parts * n)
      require(r[i] == untouched, "nothing beside the results is written", m.name.c_str());
  }
  for (int i = 0; i < n; ++i) {
    const T *const x = a + shift + parts * i, *const y = b + shift + parts * i, *const got = r + shift + 1 + parts * i;
    T alone[parts];
    m.run(1, x, y, alone);
    bool same = true;
    for (int k = 0; k < parts; ++k) same &= same_bits(alone[k], got[k]);
    if (same && right(m, x, y, got)) continue;
    std::fprintf(stderr, "%s: arguments, result, the result alone:", m.name.c_str());
    for (const T* const p : {x, y, got, static_cast<const T*>(alone)}) {
      for (int k = 0; k < parts; ++k) std::fprintf(stderr, " %a", static_cast<double>(p[k]));
    }
    std::fprintf(stderr, "\n");
    require(false, same ? "the error is within the bound" : "an element alone has the same bits", m.name.c_str());
  }
}
template <class T>
void run_any(Reader& bytes, bool is_complex) {
  static const std::vector<Member<T>> real = members<T>();
  static const std::vector<ComplexMember<T>> complex = complex_members<T>();
  if (is_complex) {
    run<T, 2>(bytes, complex);
  } else {
    run<T, 1>(bytes, real);
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
  const unsigned kind = reader.take<std::uint8_t>();
  if (kind % 2 == 0) {
    run_any<double>(reader, kind % 4 >= 2);
  } else {
    run_any<float>(reader, kind % 4 >= 2);
  }
  return 0;
}
