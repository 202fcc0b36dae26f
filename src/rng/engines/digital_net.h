// The common part of the quasi-random engines: vectors of a digital sequence in base 2, one after another, each word a
// coordinate. Vector i is the sum modulo 2 of the direction numbers (rows) at the set bits of i's Gray code, so that
// the next vector differs by one row. (I. A. Antonov and V. M. Saleev, USSR Comput. Math. Math. Phys. 19, 1979.)
#pragma once

#include <bit>

#include "rng/engines/sinks.h"
#include "rng/streams/status.h"
#include "rng/streams/stream.h"

namespace qor::rng {

template <int Dimensions>
struct DigitalNet {
  using Word = std::uint32_t;
  static constexpr double unit = 0x1p-32;
  static constexpr int least = 0;
  static constexpr int most = Dimensions, digits = 32;

  std::uint32_t index;     // of the current vector; after 2^32 vectors all begins again
  std::int32_t dimension;  // of the vectors, 1 .. most
  std::int32_t position;   // the coordinate to be delivered next, 0 .. dimension - 1
  std::int32_t first;      // the coordinate, of all that the sequence has, that comes first in the vectors
  // 32 rows of direction numbers, the current vector, and as much room again, for whole registers beyond its end.
  // Places beyond the dimension hold zeros between calls.
  std::uint32_t words[(digits + 2) * most];

  std::uint32_t* row(int digit) { return words + digit * most; }
  const std::uint32_t* row(int digit) const { return words + digit * most; }
  std::uint32_t* vector() { return row(digits); }
  const std::uint32_t* vector() const { return row(digits); }

  // At the origin, direction numbers all zero.
  void clear(int n) {
    std::memset(static_cast<void*>(this), 0, sizeof *this);
    dimension = n;
  }
  void set_column(int coordinate, const std::uint32_t* direction_numbers) {
    for (int digit = 0; digit < digits; ++digit) row(digit)[coordinate] = direction_numbers[digit];
  }
  // What one word of parameters, or none, asks for.
  static int dimension_of(int n, const std::uint32_t* params) {
    return n == 1 && params[0] >= 1 && params[0] <= most ? static_cast<int>(params[0]) : 1;
  }

  // Stream k of as many as there are coordinates delivers coordinate k: what is left is a sequence of dimension 1.
  int leapfrog(std::int32_t k, int nstreams) {
    if (!settled() || nstreams != dimension || k < 0 || k >= dimension) return status::no_leapfrog;
    if (k < position) step();
    for (int digit = 0; digit <= digits; ++digit) {
      std::uint32_t* const r = row(digit);
      r[0] = r[k];
      std::memset(r + 1, 0, (most - 1) * sizeof *r);
    }
    first += k;
    dimension = 1;
    position = 0;
    return status::ok;
  }
  int skip_ahead(int n) {
    if (n < 1 || !settled()) return status::ok;
    const unsigned from = static_cast<unsigned>(position) + static_cast<unsigned>(n),
                   d = static_cast<unsigned>(dimension);
    move_to(index + from / d);
    position = static_cast<std::int32_t>(from % d);
    return status::ok;
  }

  // Whatever the rows are, drawing then stays within the state.
  bool settled() const {
    return dimension >= 1 && dimension <= most && position >= 0 && position < dimension && first >= 0 &&
           first <= most - dimension;
  }
  // The vector belongs to its index, and nothing lies beyond the dimension.
  bool valid() const {
    if (!settled()) return false;
    for (int digit = 0; digit <= digits + 1; ++digit) {
      for (int j = digit <= digits ? dimension : 0; j < most; ++j) {
        if (row(digit)[j] != 0) return false;
      }
    }
    for (int j = 0; j < dimension; ++j) {
      std::uint32_t sum = 0;
      for (std::uint32_t gray = gray_code(index); gray != 0; gray &= gray - 1) sum ^= row(lowest_set(gray))[j];
      if (vector()[j] != sum) return false;
    }
    return true;
  }

  template <class Sink>
  void draw(int n, Sink sink) {
    if (n < 1) return;
    if (!settled()) clear(1);  // copied from another generator's state it may be anything
    int i = 0;
    if (position > 0) i = deliver(0, n, sink);
    if (dimension == 1) i = draw_narrow<1>(i, n, sink);
    if (dimension == 2) i = draw_narrow<2>(i, n, sink);
    if (dimension == 3) i = draw_narrow<3>(i, n, sink);
    if (dimension > 3) i = draw_wide(i, n, sink);
    while (i < n) i = deliver(i, n, sink);
  }

 private:
  static constexpr int lanes = simd::lanes<VecU32>;
  static_assert(most >= lanes && sizeof words / sizeof *words >= static_cast<std::size_t>((digits + 1) * most + lanes));

  static std::uint32_t gray_code(std::uint32_t i) { return i ^ (i >> 1); }
  // The row that leads from vector i - 1 to vector i; from the last vector to the first it is the last row.
  static int row_to(std::uint32_t i) { return lowest_set(i | 0x80000000); }
  // Of a word that isn't zero. The highest bit of what is left is asked for, since GCC writes counts of trailing zeros
  // as an instruction that only newer processors know by that name.
  static int lowest_set(std::uint32_t w) { return 31 - __builtin_clz(w & (0 - w)); }

  void step() {
    const std::uint32_t* const r = row(row_to(++index));
    std::uint32_t* const x = vector();
    for (int j = 0; j < dimension; ++j) x[j] ^= r[j];
  }
  void move_to(std::uint32_t i) {
    index = i;
    std::uint32_t* const x = vector();
    std::memset(x, 0, most * sizeof *x);
    for (std::uint32_t gray = gray_code(i); gray != 0; gray &= gray - 1) {
      const std::uint32_t* const r = row(lowest_set(gray));
      for (int j = 0; j < dimension; ++j) x[j] ^= r[j];
    }
  }

  // What the current vector has left, n - i elements at most; returns the next element's place.
  template <class Sink>
  int deliver(int i, int n, Sink sink) {
    const int count = dimension - position < n - i ? dimension - position : n - i;
    const std::uint32_t* const x = vector() + position;
    int j = 0;
    for (; j <= count - lanes; j += lanes) sink.put(i + j, simd::load<VecU32>(x + j));
    if (j < count) sink.put(i + j, simd::load<VecU32>(x + j), count - j);
    position += count;
    if (position == dimension) {
      position = 0;
      step();
    }
    return i + count;
  }

  // Whole vectors, a register's width of coordinates after another. The register at the end of a vector runs into the
  // following vector, whose own words are written later; so there must be room for it.
  template <class Sink>
  [[gnu::noinline]] int draw_each(int i, int n, int vectors, Sink sink) {
    const int d = dimension, needed = (d - 1) / lanes * lanes + lanes;
    for (; vectors > 0 && n - i >= needed; --vectors, i += d) {
      const std::uint32_t* const next = row(row_to(++index));
      for (int j = 0; j < d; j += lanes) {
        const VecU32 x = simd::load<VecU32>(vector() + j);
        sink.put(i + j, x);
        simd::store(vector() + j, x ^ simd::load<VecU32>(next + j));
      }
    }
    return i;
  }

  // Eight vectors at a time from an index on that eight divides: three rows stay in registers, the fourth is that of
  // the step to the next eight. Columns go from the last to the first, for what runs over the end of the vectors.
  template <class Sink>
  QOR_INLINE int draw_wide(int i, int n, Sink sink) {
    const int d = dimension, last = (d - 1) / lanes * lanes, needed = 7 * d + last + lanes;
    i = draw_each(i, n, static_cast<int>((0 - index) % 8), sink);
    for (; n - i >= needed; i += 8 * d) {
      index += 8;
      for (int j = last; j >= 0; j -= lanes) {
        VecU32 x = simd::load<VecU32>(vector() + j);
        const VecU32 r0 = simd::load<VecU32>(row(0) + j), r1 = simd::load<VecU32>(row(1) + j);
        const VecU32 r2 = simd::load<VecU32>(row(2) + j), r = simd::load<VecU32>(row(row_to(index)) + j);
        int k = i + j;
        const auto put_and_add = [&](VecU32 next) {
          sink.put(k, x);
          x ^= next;
          k += d;
        };
        put_and_add(r0);
        put_and_add(r1);
        put_and_add(r0);
        put_and_add(r2);
        put_and_add(r0);
        put_and_add(r1);
        put_and_add(r0);
        put_and_add(r);
        simd::store(vector() + j, x);
      }
    }
    i = draw_each(i, n, 8, sink);
    std::memset(vector() + d, 0, (lanes - 1) * sizeof(Word));
    return i;
  }

  // As many vectors as a register has lanes fill a register for each coordinate. Vector q of such a group is the first
  // one with the rows of q's Gray code added, the last therefore the first with row `top`; one more row leads from
  // there to the next group.
  template <int d, class Sink>
  QOR_INLINE int draw_narrow(int i, int n, Sink sink) {
    constexpr int group = lanes * d, top = std::countr_zero(unsigned{lanes}) - 1;
    while (index % lanes != 0 && n - i >= d) i = deliver(i, n, sink);
    if (n - i < 8 * group) return i;  // less than the preparation is worth
    std::uint32_t flat[group];
    const auto in_registers = [&flat](VecU32(&to)[d]) {
      for (int v = 0; v < d; ++v) to[v] = simd::load<VecU32>(flat + v * lanes);
    };
    VecU32 x[d], to_next[digits][d];
    for (int w = 0; w < group; ++w) {
      flat[w] = vector()[w % d];
      for (int digit = 0; digit <= top; ++digit) {
        if ((gray_code(static_cast<std::uint32_t>(w / d)) >> digit) & 1) flat[w] ^= row(digit)[w % d];
      }
    }
    in_registers(x);
    for (int digit = top + 1; digit < digits; ++digit) {
      for (int w = 0; w < group; ++w) flat[w] = row(top)[w % d] ^ row(digit)[w % d];
      in_registers(to_next[digit]);
    }
    for (; n - i >= group; i += group) {
      index += lanes;
      const VecU32* const next = to_next[row_to(index)];
      for (int v = 0; v < d; ++v) {
        sink.put(i + v * lanes, x[v]);
        x[v] ^= next[v];
      }
    }
    for (int j = 0; j < d; ++j) vector()[j] = x[0][j];
    return i;
  }
};

}  // namespace qor::rng
