#include "convolution/tiles.h"

#include <algorithm>

#include "base/target.h"

namespace qor::convolution {
namespace {

using V = simd::VecD;
using Point = fft::Complex<V>;

// The factors exp(-2 pi i u j / n), u = 1, 2, 3, j < n / 4, of all levels n from 16 on, in all lanes.
struct Turns {
  alignas(64) double w[2 * longest_tile][2 * simd::lanes<V>];
};
constexpr int turns_of(int n) { return 3 * (n / 4 - 4); }
constexpr Turns make_turns() {
  Turns t{};
  for (int n = 16; n <= longest_tile; n *= 2) {
    for (int j = 0; j < n / 4; ++j) {
      for (int u = 1; u < 4; ++u) {
        const fft::Angle a = fft::angle(u * j, n);
        for (int lane = 0; lane < simd::lanes<V>; ++lane) {
          double* const w = t.w[turns_of(n) + 3 * j + u - 1] + lane;
          w[0] = static_cast<double>(a.cos);
          w[simd::lanes<V>] = static_cast<double>(-a.sin);
        }
      }
    }
  }
  return t;
}
constexpr Turns turns = make_turns();

// Points of a transform at a distance. The inverse is the forward transform of points whose parts are exchanged.
struct Line {
  V* at;
  std::ptrdiff_t step;
  Line operator+(std::ptrdiff_t i) const { return {at + i * step, step}; }
};
template <bool Inverse>
QOR_INLINE Point load(const V* p) {
  return {simd::held(p[Inverse]), simd::held(p[!Inverse])};
}
template <bool Inverse>
QOR_INLINE void store(V* p, Point x) {
  p[Inverse] = x.re;
  p[!Inverse] = x.im;
}

// The butterfly of one level, forward before its factors, inverse after them.
template <bool Inverse, bool Factors>
QOR_INLINE void turn(const V* s, std::ptrdiff_t in, V* d, std::ptrdiff_t out, [[maybe_unused]] const V* w) {
  const auto turned = [&](int u, Point x) { return u == 0 || !Factors ? x : x * Point{w[2 * u - 2], w[2 * u - 1]}; };
  fft::transform<Point, 4>(
      [&](int q) {
        const Point x = load<Inverse>(s + q * in);
        return Inverse ? turned(q, x) : x;
      },
      [&](int u, Point x) { store<Inverse>(d + u * out, Inverse ? x : turned(u, x)); });
}
// Level n of transforms of `points` points, side by side. Forward, the level comes before all smaller ones, inverse
// after them.
template <int Sides, bool Inverse>
[[gnu::noinline]] void turn_level(int points, int n, Line from, Line to) {
  const std::ptrdiff_t in = n / 4 * from.step, out = n / 4 * to.step;
  for (int first = 0; first < points; first += n) {
    const V* w = reinterpret_cast<const V*>(turns.w[turns_of(n)]);
    const V* s = (from + first).at;
    V* d = (to + first).at;
    for (int side = 0; side < 2 * Sides; side += 2) turn<Inverse, false>(s + side, in, d + side, out, w);
    for (int j = n / 4 - 1; j > 0; --j) {
      w += 6, s += from.step, d += to.step;
#pragma GCC unroll 1
      for (int side = 0; side < 2 * Sides; side += 2) turn<Inverse, true>(s + side, in, d + side, out, w);
    }
  }
}
// The last level, or the inverse's first: R points without factors.
template <int Sides, bool Inverse, int R>
[[gnu::noinline]] void plain_level(int points, Line from, Line to) {
  for (int first = 0; first < points; first += R) {
    const V* s = (from + first).at;
    V* d = (to + first).at;
#pragma GCC unroll 1
    for (int side = 0; side < 2 * Sides; side += 2) {
      fft::transform<Point, R>([&](int q) { return load<Inverse>(s + side + q * from.step); },
                               [&](int u, Point x) { store<Inverse>(d + side + u * to.step, x); });
    }
  }
}
// Both of them, in place, with the product between: two columns, and as many of the kernel.
template <int R>
[[gnu::noinline]] void multiply_level(int points, V* at, const double* kernel) {
  for (int first = 0; first < points; first += R, at += 4 * R, kernel += 4 * R) {
#pragma GCC unroll 1
    for (int side = 0; side < 2; ++side) {
      V* const p = at + 2 * side;
      const double* const k = kernel + 2 * side;
      Point t[R];
      fft::transform<Point, R>([&](int q) { return load<false>(p + 4 * q); }, [&](int u, Point x) { t[u] = x; });
      fft::transform<Point, R>(
          [&](int u) {
            const Point x = t[u] * Point{simd::broadcast<V>(k + 4 * u), simd::broadcast<V>(k + 4 * u + 1)};
            return Point{x.im, x.re};
          },
          [&](int q, Point x) { store<true>(p + 4 * q, x); });
    }
  }
}

// The last level's points: 4 or 8, for its powers of two are even or odd.
constexpr int last_level(int points) { return (points & 0xAAAAAAAA) != 0 ? 8 : 4; }
// All levels but the last, from one line to the other; returns where the points are.
template <int Sides>
Line forward_levels(int points, Line from, Line to) {
  for (int n = points; n > last_level(points); n /= 4) {
    turn_level<Sides, false>(points, n, from, to);
    from = to;
  }
  return from;
}
template <int Sides>
void forward(int points, Line from, Line between, Line to) {
  const Line last = forward_levels<Sides>(points, from, between);
  (last_level(points) == 8 ? plain_level<Sides, false, 8> : plain_level<Sides, false, 4>)(points, last, to);
}
// All levels of the inverse but its first.
template <int Sides>
void inverse_levels(int points, Line from, Line to) {
  for (int n = 4 * last_level(points); n <= points; n *= 4) {
    turn_level<Sides, true>(points, n, from, n == points ? to : from);
  }
}

// Two elements as doubles, and back.
QOR_INLINE V load_two(const double* p) { return simd::load<V>(p); }
QOR_INLINE V load_two(const float* p) { return simd::widen_low(simd::load_low(p)); }
QOR_INLINE void store_two(double* p, V v) { simd::store<V>(p, v); }
QOR_INLINE void store_two(float* p, V v) { simd::store_low(p, simd::narrow_low(v)); }

}  // namespace

void Tiles::clear_row(int r) {
  V* const row = plane_ + static_cast<std::ptrdiff_t>(r) * pitch();
  for (int i = 0; i < 2 * width_; ++i) row[i] = V{};
}

template <class D>
void Tiles::put_row(int r, const D* const* rows) {
  V* to = scratch_;
  for (int i = 0; i < width_; i += simd::lanes<V>, to += 4) {
    const V a = load_two(rows[0] + i), b = load_two(rows[1] + i);
    const V c = load_two(rows[2] + i), d = load_two(rows[3] + i);
    to[0] = simd::zip_low(a, b);
    to[1] = simd::zip_low(c, d);
    to[2] = simd::zip_high(a, b);
    to[3] = simd::zip_high(c, d);
  }
  const Line line{scratch_, 2};
  forward<1>(width_, line, line, {plane_ + static_cast<std::ptrdiff_t>(r) * pitch(), 2});
}

template <class D>
void Tiles::get_row(int r, D* const* rows) {
  const Line line{scratch_, 2};
  (last_level(width_) == 8
       ? plain_level<1, true, 8>
       : plain_level<1, true, 4>)(width_, {plane_ + static_cast<std::ptrdiff_t>(r) * pitch(), 2}, line);
  inverse_levels<1>(width_, line, line);
  const V* from = scratch_;
  for (int i = 0; i < width_; i += simd::lanes<V>, from += 4) {
    store_two(rows[0] + i, simd::zip_low(from[0], from[2]));
    store_two(rows[1] + i, simd::zip_high(from[0], from[2]));
    store_two(rows[2] + i, simd::zip_low(from[1], from[3]));
    store_two(rows[3] + i, simd::zip_high(from[1], from[3]));
  }
}

template void Tiles::put_row(int, const float* const*);
template void Tiles::put_row(int, const double* const*);
template void Tiles::get_row(int, float* const*);
template void Tiles::get_row(int, double* const*);

// Columns go by twos, which fill lines of the cache.
void Tiles::keep_kernel() {
  const double scale = 1.0 / (width_ * height_);
  double* to = reinterpret_cast<double*>(spectrum_);
  for (int c = 0; c < 2 * width_; c += 4) {
    const Line line{scratch_, 4};
    forward<2>(height_, {plane_ + c, pitch()}, line, line);
    for (int i = 0; i < 4 * height_; ++i) *to++ = scratch_[i][0] * scale;
  }
}

void Tiles::multiply() {
  const double* kernel = reinterpret_cast<const double*>(spectrum_);
  for (int c = 0; c < 2 * width_; c += 4, kernel += 4 * height_) {
    const Line column{plane_ + c, pitch()}, line{scratch_, 4};
    if (forward_levels<2>(height_, column, line).at != scratch_) {  // the only level
      for (int i = 0; i < height_; ++i)
        std::copy(column.at + i * pitch(), column.at + i * pitch() + 4, scratch_ + 4 * i);
    }
    (last_level(height_) == 8 ? multiply_level<8> : multiply_level<4>)(height_, scratch_, kernel);
    if (height_ == last_level(height_)) {
      for (int i = 0; i < height_; ++i) std::copy(scratch_ + 4 * i, scratch_ + 4 * i + 4, column.at + i * pitch());
    }
    inverse_levels<2>(height_, line, column);
  }
}

}  // namespace qor::convolution
