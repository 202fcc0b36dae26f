#include "rng/distributions/discrete.h"

#include <algorithm>
#include <limits>

#include "rng/distributions/gamma.h"
#include "rng/distributions/gaussian.h"
#include "rng/distributions/kernels.h"
#include "rng/distributions/loops.h"
#include "rng/distributions/mode_guard.h"
#include "rng/distributions/scalar.h"
#include "rng/distributions/uniform.h"
#include "rng/distributions/unimodal.h"
#include "rng/streams/status.h"

namespace qor::rng {
namespace {

using namespace simd;

constexpr int block = 1024;
constexpr double most = 2147483647;

// What every discrete generator begins with: 1 to go on, otherwise the status to leave with.
int checked(int method, int n, bool good) {
  if (n < 1) return status::ok;
  return method != 0 ? status::bad_method : good ? 1 : status::bad_argument;
}

bool is_probability(double p) { return p >= 0 && p <= 1; }

// Four doubles as words from 0 to 2^31 - 1.
QOR_INLINE VecU32 words_of(VecD low, VecD high) {
  const VecD top = splat<VecD>(most);
  return truncate(min(max(low, VecD{}), top), min(max(high, VecD{}), top));
}

// r[i] from u[i] by f(low, high), four at a time; m <= block, and u has room for three more.
template <class F>
void map_words(int m, double* u, std::int32_t* r, F f) {
  const numeric::MxcsrGuard nearest;
  std::fill_n(u + m, 3, 0.5);
  std::uint32_t* const words = reinterpret_cast<std::uint32_t*>(r);
  int i = 0;
  for (; i <= m - 4; i += 4) store(words + i, f(load<VecD>(u + i), load<VecD>(u + i + 2)));
  if (i == m) return;
  std::uint32_t rest[4];
  store(rest, f(load<VecD>(u + i), load<VecD>(u + i + 2)));
  std::copy(rest, rest + (m - i), words + i);
}

// Blocks of at most `size` numbers: draw(m, u) draws them, what(m, u, r) makes variates of them.
template <class Draw, class F>
int by_blocks(int n, std::int32_t* r, int size, Draw draw, F what) {
  alignas(16) double u[block + 4];
  int status = status::ok;
  for (int m; n > 0; n -= m, r += m) {
    m = std::min(n, size);
    status = draw(m, u);
    if (status < 0) return status;
    what(m, u, r);
  }
  return status;
}
// Of uniform numbers, two of the engine's each when `fine`.
template <class F>
int by_uniforms(Stream* stream, int n, std::int32_t* r, bool fine, F what) {
  const auto draw = [=](int m, double* u) {
    return fine ? fine_uniforms(stream, m, u) : uniform(0, stream, m, u, 0.0, 1.0);
  };
  return by_blocks(n, r, fine ? block / 2 : block, draw, what);
}

// The least word w with w unit >= p, rounded as the engine's numbers are; there is one when p isn't too near 1.
std::uint32_t least_word(double p, double unit) {
  const numeric::MxcsrGuard nearest;
  double w = floor_of(numeric::pinned(p) / unit);
  while (w * unit >= p) w -= 1;
  while (w * unit < p) w += 1;
  return static_cast<std::uint32_t>(w);
}
// 1 for the words below `end`, else 0. Long blocks, in place, leave a twister its long steps.
int by_words(Stream* stream, int n, std::int32_t* r, std::uint32_t end) {
  using Signed = Ints<VecF>;
  constexpr std::uint32_t sign = 0x80000000;
  const Signed limit = splat<Signed>(static_cast<std::int32_t>(end ^ sign));
  int status = status::ok;
  for (int m; n > 0; n -= m, r += m) {
    m = std::min(n, 8 * 624);
    std::uint32_t* const words = reinterpret_cast<std::uint32_t*>(r);
    status = uniform_bits(stream, m, words);
    if (status < 0) return status;
    each(m, words, [=](VecU32 w) { return as<VecU32>(limit > Signed(w ^ splat<VecU32>(sign))) >> 31; });
  }
  return status;
}

// Cornish and Fisher's expansion of the quantile by the normal one, g, rounded: lambda + sqrt(lambda) g + (g^2 - 1)/6.
int poisson_by_normal(Stream* stream, int n, std::int32_t* r, double lambda) {
  const numeric::MxcsrGuard nearest;
  const VecD middle = splat<VecD>(lambda + (0.5 - 1.0 / 6)), spread = sqrt(splat<VecD>(lambda));
  const auto quantile = [=](VecD g) { return middle + (spread + g * (1.0 / 6)) * g; };
  return by_blocks(
      n, r, block, [=](int m, double* g) { return gaussian(QOR_RNG_GAUSSIAN_BOXMULLER2, stream, m, g, 0.0, 1.0); },
      [=](int m, double* g, std::int32_t* out) {
        map_words(m, g, out, [=](VecD low, VecD high) { return words_of(quantile(low), quantile(high)); });
      });
}

}  // namespace

int bernoulli(int method, Stream* stream, int n, std::int32_t* r, double p) {
  const int go = checked(method, n, is_probability(p));
  if (go != 1) return go;
  if (p == 0 || p == 1) return fill(n, r, p == 1);
  const bool fine = std::min(p, 1 - p) < 0x1p-12;
  double unit = 0;
  if (!fine) unit_of(stream, unit);
  if (unit != 0) return by_words(stream, n, r, least_word(p, unit));
  return by_uniforms(stream, n, r, fine, [p](int m, double* u, std::int32_t* out) {
    map_words(m, u, out, [p = splat<VecD>(p)](VecD low, VecD high) {
      return evens(as<VecU32>(lt(low, p)), as<VecU32>(lt(high, p))) & splat<VecU32>(1);
    });
  });
}

// By a table while that is short; otherwise ln u / ln(1 - p), rounded down.
int geometric(int method, Stream* stream, int n, std::int32_t* r, double p) {
  const int go = checked(method, n, is_probability(p) && p > 0);
  if (go != 1) return go;
  if (p == 1) return fill(n, r, 0);
  const ModeGuard guard(ln_callback<double>);
  if (p >= 0x1p-5) {
    Table table;
    table.fill(0, 0, most, [q = 1 - p](double) { return Counts::Ratio{q, 1}; });
    return table.draw(stream, n, r);
  }
  double scale;
  {
    const numeric::MxcsrGuard nearest;
    scalar_ln_1p(-numeric::pinned(p), scale);
    scale = 1 / scale;
  }
  return by_uniforms(stream, n, r, p < 0x1p-10, [scale](int m, double* u, std::int32_t* out) {
    Kernels<double>::ln(m, u, u);
    map_words(m, u, out,
              [scale = splat<VecD>(scale)](VecD low, VecD high) { return words_of(low * scale, high * scale); });
  });
}

int binomial(int method, Stream* stream, int n, std::int32_t* r, int ntrial, double p) {
  const int go = checked(method, n, is_probability(p) && ntrial >= 0);
  if (go != 1) return go;
  if (p == 0 || ntrial == 0) return fill(n, r, 0);
  if (p == 1) return fill(n, r, ntrial);
  const auto counts = [trials = static_cast<double>(ntrial), p] {
    const numeric::MxcsrGuard nearest;
    const double q = 1 - numeric::pinned(p), mode = std::min(floor_of((trials + 1) * p), trials);
    return Counts{mode, 0, trials, trials * p * q, 2, {{0, 1, trials * p}, {trials, -1, trials * q}}};
  };
  return draw(stream, n, r, counts());
}

int hypergeometric(int method, Stream* stream, int n, std::int32_t* r, int l, int s, int m) {
  const int go = checked(method, n, l >= 0 && s >= 0 && s <= l && m >= 0 && m <= l);
  if (go != 1) return go;
  const double population = l, sample = s, marked = m, others = population - marked, left = population - sample;
  const double lowest = std::max(0.0, sample - others), highest = std::min(sample, marked);
  if (lowest == highest) return fill(n, r, static_cast<int>(lowest));
  const auto counts = [=] {
    const numeric::MxcsrGuard nearest;
    const double mode = floor_of((sample + 1) * ((marked + 1) / (population + 2)));
    const double both = sample / population * marked, variance = both * others / population * left / (population - 1);
    return Counts{std::clamp(mode, lowest, highest),
                  lowest,
                  highest,
                  variance,
                  4,
                  {{0, 1, both},
                   {marked, -1, left / population * marked},
                   {sample, -1, sample / population * others},
                   {others - sample, 1, left / population * others}}};
  };
  return draw(stream, n, r, counts());
}

int poisson(int method, Stream* stream, int n, std::int32_t* r, double lambda) {
  const bool by_normal = method == QOR_RNG_POISSON_NORMAL;
  const int go = checked(by_normal ? 0 : method, n, lambda >= 0 && lambda <= 0x1p30);
  if (go != 1) return go;
  if (lambda == 0) return fill(n, r, 0);
  if (by_normal && lambda >= 10) return poisson_by_normal(stream, n, r, lambda);
  return draw(stream, n, r, {static_cast<double>(static_cast<int>(lambda)), 0, most, lambda, 1, {{0, 1, lambda}}});
}

int poisson_v(int method, Stream* stream, int n, std::int32_t* r, const double* lambda) {
  bool good = true;
  for (int i = 0; i < n; ++i) good &= lambda[i] >= 0 && lambda[i] <= 0x1p30;
  const int go = checked(method, n, good);
  return go == 1 ? poisson_each(stream, n, r, lambda) : go;
}

// By a table while that is short; otherwise Poisson variates whose parameters have the Gamma distribution of shape a
// and scale (1 - p)/p.
int negbinomial(int method, Stream* stream, int n, std::int32_t* r, double a, double p) {
  const int go = checked(method, n, a > 0 && a <= std::numeric_limits<double>::max() && is_probability(p) && p > 0);
  if (go != 1) return go;
  if (p == 1) return fill(n, r, 0);
  const ModeGuard guard(ln_callback<double>);
  double scale;
  Table table;
  bool fits = false;
  {
    const numeric::MxcsrGuard nearest;
    const double q = 1 - numeric::pinned(p);
    scale = q / p;
    if (a * scale <= table_variance * p) {
      fits = table.fill(a > 1 ? floor_of((a - 1) * scale) : 0, 0, most, [a, q](double k) {
        return Counts::Ratio{(a + k) * q, k + 1};
      });
    }
  }
  if (fits) return table.draw(stream, n, r);
  alignas(16) double lambda[block];
  int status = status::ok;
  for (int m; n > 0; n -= m, r += m) {
    m = std::min(n, block);
    status = gamma(stream, m, lambda, a, 0.0, scale);
    if (status >= 0) status = poisson_each(stream, m, r, lambda);
    if (status < 0) return status;
  }
  return status;
}

}  // namespace qor::rng
