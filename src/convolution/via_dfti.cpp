#include "convolution/via_dfti.h"

#include <algorithm>
#include <limits>

#include "convolution/plane.h"
#include "convolution/status.h"
#include "dft/descriptor.h"
#include "fft/convolution.h"
#include "fft/pairs.h"
#include "numeric/mxcsr.h"

namespace qor::convolution {
namespace {

// The engine's names for what is set.
constexpr int double_precision = 36, real_domain = 33, complex_domain = 32, backward_scale = 5;
constexpr struct {
  int parameter, value;
} real_settings[] = {{11, 44}, {21, 57}, {10, 39}};  // out of place, half spectrum, of complex elements

constexpr std::int64_t least_pow2(std::int64_t n) {
  std::int64_t p = 1;
  while (p < n) p *= 2;
  return p;
}

// One length for each dimension, and the index of each.
struct Lengths {
  int rank, n[max_rank];
  std::int64_t points() const { return datasize(n, rank); }
};
// Calls f with the indices of all rows, which lie along dimension 0.
template <class F>
void each_row(const Lengths& shape, F f) {
  int i[max_rank] = {};
  for (;;) {
    f(i);
    int k = 1;
    for (; k < shape.rank && ++i[k] == shape.n[k]; ++k) i[k] = 0;
    if (k >= shape.rank) return;
  }
}

// f(j, j stride) for all j < n, in a loop of its own for elements side by side.
template <class F>
QOR_INLINE void each_of_row(int n, std::ptrdiff_t stride, F f) {
  if (stride == 1) {
    for (int j = 0; j < n; ++j) f(j, j);
  } else {
    for (int j = 0; j < n; ++j) f(j, j * stride);
  }
}

// ---- between the caller's arrays and the engine's; Parts is 2 where the engine's elements are complex ---------------

// A block of an array, zeros after it.
template <int Parts, class D>
void pack_block(const Array<const D>& from, const int* start, const Lengths& block, const Lengths& transform,
                double* to) {
  each_row(transform, [&](const int* i) {
    const D* row = from.origin + start[0] * from.stride[0];
    bool inside = true;
    for (int k = 1; k < block.rank; ++k) {
      inside = inside && i[k] < block.n[k];
      row += (start[k] + i[k]) * from.stride[k];
    }
    const int n = inside ? block.n[0] : 0;
    each_of_row(n, from.stride[0], [&](int j, std::ptrdiff_t at) {
      to[Parts * j] = row[at];
      if (Parts == 2) to[Parts * j + 1] = 0;
    });
    std::fill(to + Parts * n, to + Parts * transform.n[0], 0.0);
    to += Parts * transform.n[0];
  });
}
template <class D>
void rpack(const Array<const D>& from, const int* start, const Lengths& block, const Lengths& transform, double* to) {
  pack_block<1>(from, start, block, transform, to);
}
template <class D>
void cpack(const Array<const D>& from, const int* start, const Lengths& block, const Lengths& transform, double* to) {
  pack_block<2>(from, start, block, transform, to);
}

// The outputs that a block's result reaches: `shape` of them from index `start`, the first at `from` in the result.
struct Reach {
  Lengths shape;
  int start[max_rank], step[max_rank];
  std::int64_t from[max_rank];
};
// Calls f with each row of them: how many, the first one in the array z, the first one in the result.
template <int Parts, class D, class F>
void each_output_row(const Reach& r, const Lengths& transform, const double* result, const Array<D>& z, F f) {
  each_row(r.shape, [&](const int* i) {
    D* to = z.origin + r.start[0] * z.stride[0];
    std::ptrdiff_t at = static_cast<std::ptrdiff_t>(r.from[0]), pitch = transform.n[0];
    for (int k = 1; k < transform.rank; ++k) {
      to += (r.start[k] + i[k]) * z.stride[k];
      at += static_cast<std::ptrdiff_t>(r.from[k] + std::int64_t{i[k]} * r.step[k]) * pitch;
      pitch *= transform.n[k];
    }
    f(r.shape.n[0], to, result + Parts * at);
  });
}
template <int Parts>
void add_result(const Reach& r, const Lengths& transform, const double* result, const Array<double>& sums) {
  each_output_row<Parts>(r, transform, result, sums, [&](int n, double* to, const double* from) {
    each_of_row(n, std::ptrdiff_t{Parts} * r.step[0], [&](int j, std::ptrdiff_t at) { to[j] += from[at]; });
  });
}
void rsumm(const Reach& r, const Lengths& transform, const double* result, const Array<double>& sums) {
  add_result<1>(r, transform, result, sums);
}
void csumm(const Reach& r, const Lengths& transform, const double* result, const Array<double>& sums) {
  add_result<2>(r, transform, result, sums);
}
template <int Parts, class D>
void copy_result(const Reach& r, const Lengths& transform, const double* result, const Array<D>& z) {
  each_output_row<Parts>(r, transform, result, z, [&](int n, D* to, const double* from) {
    if (z.stride[0] == 1) {
      each_of_row(n, std::ptrdiff_t{Parts} * r.step[0],
                  [&](int j, std::ptrdiff_t at) { to[j] = static_cast<D>(from[at]); });
    } else {
      for (int j = 0; j < n; ++j) to[j * z.stride[0]] = static_cast<D>(from[std::ptrdiff_t{Parts} * j * r.step[0]]);
    }
  });
}
template <class D>
void rcopyback(const Reach& r, const Lengths& transform, const double* result, const Array<D>& z) {
  copy_result<1>(r, transform, result, z);
}
template <class D>
void ccopyback(const Reach& r, const Lengths& transform, const double* result, const Array<D>& z) {
  copy_result<2>(r, transform, result, z);
}
// The sums of all blocks, in dense order.
template <class D>
void runpack(const Lengths& shape, const double* sums, const Array<D>& z) {
  Reach all{shape, {}, {}, {}};
  std::fill(all.step, all.step + max_rank, 1);
  rcopyback(all, shape, sums, z);
}

// ---- how the operands are cut ---------------------------------------------------------------------------------------

// Transform lengths of the engine, and what they leave for a block of either operand.
struct Cutting {
  Lengths transform, a, b;
  double work;  // in nanoseconds, as an estimate
};

// A length that transforms well and is not below n, which in the real domain is a power of two.
std::int64_t good_length(int rank, std::int64_t n) {
  if (rank <= 2) return least_pow2(n);
  if (n > std::numeric_limits<int>::max() / 2) return n;
  if (rank == 4) n += n % 2;
  while (fft::rough_part(static_cast<int>(n), 7) != 1) n += rank == 4 ? 2 : 1;
  return n;
}

// The choice of least work, dimension by dimension: transforms of the whole result's length, or of a power of two from
// twice the shorter operand's on (four times, if room for blocks of two only were left) with the longer one in blocks. A
// dimension whose shorter operand has less than 3 elements isn't cut.
Cutting cut(const Lengths& a, const Lengths& b) {
  const int rank = a.rank;
  Cutting c{a, a, b, 0};
  std::int64_t length[max_rank];
  const auto set = [&](int k) {
    c.transform.n[k] = static_cast<int>(std::min<std::int64_t>(length[k], std::numeric_limits<int>::max()));
    const bool a_longer = a.n[k] > b.n[k];
    const std::int64_t room = length[k] - (a_longer ? b : a).n[k] + 1;
    c.a.n[k] = a_longer ? static_cast<int>(std::min<std::int64_t>(a.n[k], room)) : a.n[k];
    c.b.n[k] = a_longer ? b.n[k] : static_cast<int>(std::min<std::int64_t>(b.n[k], room));
  };
  // Transforms of a, and of the pairs of blocks; what a row costs besides.
  const auto work = [&](double* result) {
    double points = 1, a_blocks = 1, b_blocks = 1;
    int order = 0;
    for (int k = 0; k < rank; ++k) {
      points *= c.transform.n[k];
      const int a_cuts = (a.n[k] - 1) / c.a.n[k] + 1, b_cuts = (b.n[k] - 1) / c.b.n[k] + 1;
      a_blocks *= a_cuts;
      b_blocks *= b_cuts;
      for (int n = c.transform.n[k]; n > 1; n /= 2) ++order;
    }
    const double large = points > 65536 ? 1.5 : 1;  // the second-level cache holds no more
    const double steps = points * large * (order + 3 + b_blocks * (2 * order + 8));
    *result = a_blocks * (0.105 * steps + 40 * b_blocks * (points / c.transform.n[0]));
  };
  for (int k = 0; k < rank; ++k) {
    length[k] = good_length(rank, std::int64_t{a.n[k]} + b.n[k] - 1);
    set(k);
  }
  for (int round = 0; round < 2; ++round) {
    for (int k = 0; k < rank; ++k) {
      const std::int64_t shorter = std::min(a.n[k], b.n[k]),
                         whole = good_length(rank, std::int64_t{a.n[k]} + b.n[k] - 1);
      if (shorter < 3) continue;
      std::int64_t best = length[k] = whole;
      double least, other;
      set(k);
      work(&least);
      std::int64_t power = 2 * least_pow2(shorter);
      if (power - shorter + 1 < 3) power *= 2;
      for (; power < whole; power *= 2) {
        length[k] = power;
        set(k);
        work(&other);
        if (other < least) best = power, least = other;
      }
      length[k] = best;
      set(k);
    }
  }
  work(&c.work);
  return c;
}

// Calls f with the start and the lengths of every block.
template <class F>
int each_block(const Lengths& shape, const Lengths& block, F f) {
  int start[max_rank] = {};
  for (;;) {
    Lengths here{shape.rank, {}};
    for (int k = 0; k < shape.rank; ++k) here.n[k] = std::min(block.n[k], shape.n[k] - start[k]);
    if (const int s = f(start, here); s != status::ok) return s;
    int k = 0;
    for (; k < shape.rank; ++k) {
      if (here.n[k] < shape.n[k] - start[k]) {
        start[k] += here.n[k];
        break;
      }
      start[k] = 0;
    }
    if (k == shape.rank) return status::ok;
  }
}

// The outputs that a result of these lengths at this place reaches; false if none.
bool find_reach(const Lengths& z, const int* first, const int* step, const int* a_start, const int* b_start,
                const Lengths& a, const Lengths& b, Reach* r) {
  r->shape.rank = z.rank;
  for (int k = 0; k < z.rank; ++k) {
    const std::int64_t begin = std::int64_t{a_start[k]} + b_start[k], end = begin + a.n[k] + b.n[k] - 1;
    const auto outputs_before = [&](std::int64_t place) {
      return std::clamp<std::int64_t>((place - first[k] + step[k] - 1) / step[k], 0, z.n[k]);
    };
    const std::int64_t low = begin <= first[k] ? 0 : outputs_before(begin);
    const std::int64_t high = end <= first[k] ? 0 : outputs_before(end);
    if (low >= high) return false;
    r->start[k] = static_cast<int>(low);
    r->shape.n[k] = static_cast<int>(high - low);
    r->step[k] = high - low > 1 ? step[k] : 1;
    r->from[k] = first[k] + low * step[k] - begin;
  }
  return true;
}

dft::Descriptor* make_descriptor(const Lengths& transform) {
  const bool real = transform.rank <= 2;
  int reversed[max_rank];  // the engine's last dimension is the contiguous one
  std::reverse_copy(transform.n, transform.n + transform.rank, reversed);
  dft::Descriptor* d = nullptr;
  int s = dft::create(&d, double_precision, real ? real_domain : complex_domain, transform.rank, reversed);
  if (s != 0) return nullptr;
  if (real) {
    for (const auto& setting : real_settings) s = s != 0 ? s : d->set(setting.parameter, &setting.value);
  }
  double scale = 1;
  for (int k = 0; k < transform.rank; ++k) scale /= transform.n[k];
  if (s == 0) s = d->set(backward_scale, &scale);
  if (s == 0) s = d->commit();
  if (s == 0) return d;
  dft::destroy(d);
  return nullptr;
}

}  // namespace

template <class D>
int basic_cc_via_dfti(int rank, const Array<const D>& a, const Array<const D>& b, const Array<D>& z, const int* first,
                      const int* step, Kept& kept) {
  const auto shape_of = [rank](const auto& array) {
    Lengths l{rank, {}};
    std::copy(array.shape, array.shape + rank, l.n);
    return l;
  };
  const Lengths na = shape_of(a), nb = shape_of(b), nz = shape_of(z);
  const Cutting c = cut(na, nb);
  if (rank == 2) {
    const bool a_smaller = na.points() < nb.points();
    const Array<const D>&kernel = a_smaller ? a : b, &data = a_smaller ? b : a;
    const Tiling tiling = find_tiling(kernel.shape, z.shape, step);
    if (tiling.work < c.work) return convolve_tiles(tiling, kernel, data, z, first, step, kept);
  }
  const bool real = rank <= 2;
  const std::int64_t points = c.transform.points();
  const std::int64_t pairs = real ? points / c.transform.n[0] * (c.transform.n[0] / 2 + 1) : points;
  bool blocks = false;
  for (int k = 0; k < rank; ++k) blocks = blocks || c.a.n[k] < na.n[k] || c.b.n[k] < nb.n[k];
  // Two spectra, the real array, the sums; each part aligned to a line of the cache.
  const auto part = [](std::int64_t elements) { return (elements + 7) / 8 * 8; };
  const bool in_place = std::is_same_v<D, double> && z.stride[0] == 1;  // the sums are formed in z
  const std::int64_t sums_size = blocks && !in_place ? nz.points() : 0;
  const std::int64_t elements = 2 * part(2 * pairs) + (real ? part(points) : 0) + part(sums_size);
  if (points > std::numeric_limits<int>::max() ||
      elements > PTRDIFF_MAX / static_cast<std::ptrdiff_t>(sizeof(double))) {
    return status::no_memory;
  }
  double* const work = reinterpret_cast<double*>(kept.work(static_cast<std::size_t>(elements) * sizeof(double)));
  if (work == nullptr) return status::no_memory;
  double *const spectrum_a = work, *const spectrum_b = spectrum_a + part(2 * pairs);
  double *const signal = spectrum_b + part(2 * pairs), *const result = real ? signal : spectrum_b;
  double* const sums = signal + (real ? part(points) : 0);
  const dft::Descriptor* const d =
      kept.setup<dft::Descriptor>(c.transform.n, rank, [&] { return make_descriptor(c.transform); });
  if (d == nullptr) return status::transform_failed;

  const numeric::ArithmeticGuard guard;
  const auto forward = [&](const Array<const D>& array, const int* start, const Lengths& block, double* spectrum) {
    if (!real) {
      cpack(array, start, block, c.transform, spectrum);
      return d->compute<false>(spectrum, nullptr) == 0;
    }
    rpack(array, start, block, c.transform, signal);
    return d->compute<false>(signal, spectrum) == 0;
  };
  Array<double> dense{sums, {}, {}};
  std::ptrdiff_t stride = 1;
  for (int k = 0; k < rank; ++k) {
    dense.stride[k] = stride;
    stride *= sums_size != 0 ? nz.n[k] : 0;
  }
  if constexpr (std::is_same_v<D, double>) {
    if (in_place) dense = z;
  }
  if (blocks) {
    each_row(nz, [&](const int* i) {
      double* row = dense.origin;
      for (int k = 1; k < rank; ++k) row += i[k] * dense.stride[k];
      std::fill(row, row + nz.n[0], 0.0);
    });
  }
  const int s = each_block(na, c.a, [&](const int* a_start, const Lengths& a_block) -> int {
    if (!forward(a, a_start, a_block, spectrum_a)) return status::transform_failed;
    return each_block(nb, c.b, [&](const int* b_start, const Lengths& b_block) -> int {
      Reach r;
      if (!find_reach(nz, first, step, a_start, b_start, a_block, b_block, &r)) return status::ok;
      if (!forward(b, b_start, b_block, spectrum_b)) return status::transform_failed;
      fft::multiply_pairs(spectrum_a, spectrum_b, static_cast<int>(pairs));
      if (d->compute<true>(spectrum_b, real ? result : nullptr) != 0) return status::transform_failed;
      if (blocks) {
        (real ? rsumm : csumm)(r, c.transform, result, dense);
      } else {
        (real ? rcopyback<D> : ccopyback<D>)(r, c.transform, result, z);
      }
      return status::ok;
    });
  });
  if (s == status::ok && blocks && !in_place) runpack(nz, sums, z);
  return s;
}

template int basic_cc_via_dfti(int, const Array<const float>&, const Array<const float>&, const Array<float>&,
                               const int*, const int*, Kept&);
template int basic_cc_via_dfti(int, const Array<const double>&, const Array<const double>&, const Array<double>&,
                               const int*, const int*, Kept&);

}  // namespace qor::convolution
