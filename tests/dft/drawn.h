// Transforms of any kind, drawn by a seed: a descriptor, its two arrays with strides of their own, and what belongs in
// them, from sums in extended precision along one dimension after the other.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <numeric>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "qor/dft.h"

namespace drawn {

using Wide = std::complex<long double>;
using Draw = std::mt19937;
inline int below(Draw& draw, int n) { return static_cast<int>(draw() % static_cast<unsigned>(n)); }
inline bool coin(Draw& draw) { return draw() % 2 == 0; }

// The transform of a dense array, by the definition, one dimension after the other.
inline std::vector<Wide> transform(std::vector<Wide> x, const std::vector<int>& n, int sign) {
  std::size_t inner = x.size(), size = x.size();
  for (const int length : n) {
    const std::size_t m = static_cast<std::size_t>(length), block = inner;
    inner /= m;
    std::vector<Wide> root(m), line(m);
    for (std::size_t k = 0; k < m; ++k) {
      const long double angle = 2 * M_PIl * static_cast<long double>(k) / static_cast<long double>(m);
      root[k] = {std::cos(angle), sign * std::sin(angle)};
    }
    for (std::size_t start = 0; start < size; start += block) {
      for (std::size_t i = start; i < start + inner; ++i) {
        for (std::size_t j = 0; j < m; ++j) line[j] = x[i + j * inner];
        for (std::size_t k = 0; k < m; ++k) {
          Wide sum = 0;
          for (std::size_t j = 0, at = 0; j < m; ++j, at = (at + k) % m) sum += line[j] * root[at];
          x[i + k * inner] = sum;
        }
      }
    }
  }
  return x;
}

// Where an array has its elements.
struct Layout {
  std::vector<int> stride;  // the offset first
  int distance = 0;
  int start = 0, size = 0;  // elements before the pointer that is passed, and in all
};
// Nesting strides for the counts, the last one being that of transforms, some of them negative.
inline Layout draw_layout(Draw& draw, const std::vector<int>& count, bool dense) {
  std::vector<std::size_t> order(count.size());
  std::iota(order.begin(), order.end(), 0);
  std::reverse(order.begin(), order.end() - 0);
  Layout l;
  std::vector<int> stride(count.size());
  if (!dense) std::shuffle(order.begin(), order.end(), draw);
  if (dense) {  // transforms the slowest, then the dimensions in order
    order.erase(order.begin());
    order.push_back(count.size() - 1);
  }
  int next = 1 + (dense ? 0 : below(draw, 2)), lowest = 0, reach = 0;
  for (const std::size_t d : order) {
    stride[d] = next;
    reach += next * (count[d] - 1);
    next = reach + 1 + (dense ? 0 : below(draw, 3));
    if (!dense && below(draw, 4) == 0) {
      stride[d] = -stride[d];
      lowest += stride[d] * (count[d] - 1);
    }
  }
  const int offset = dense ? 0 : below(draw, 5);
  l.stride.assign(1, offset);
  l.stride.insert(l.stride.end(), stride.begin(), stride.end() - 1);
  l.distance = stride.back();
  l.start = -lowest;
  l.size = reach + offset + 1;
  return l;
}

// Where in a packed row of length n the part of frequency k is.
inline int packed_at(int format, int n, int k, bool imaginary) {
  const bool even = n % 2 == 0;
  if (k == 0) return 0;
  if (2 * k == n) return format == QOR_DFT_PERM ? 1 : format == QOR_DFT_PACK ? n - 1 : n;
  const int first = format == QOR_DFT_CCS || (format == QOR_DFT_PERM && even) ? 2 : 1;
  return first + 2 * (k - 1) + imaginary;
}

class Descriptor {
 public:
  Descriptor(int precision, int domain, const std::vector<int>& n) {
    EXPECT_EQ(qor_dft_zx9_create_descriptor_external(&d_, precision, domain, static_cast<int>(n.size()), n.data()), 0);
  }
  explicit Descriptor(qor_dft_descriptor* d) : d_(d) {}
  Descriptor(Descriptor&& o) noexcept : d_(std::exchange(o.d_, nullptr)) {}
  Descriptor& operator=(Descriptor&&) = delete;
  ~Descriptor() { EXPECT_EQ(qor_dft_zx9_free_descriptor_external(&d_), 0); }
  template <class X>
  int set(int parameter, X value) {
    return qor_dft_zx9_set_value_external(d_, parameter, &value);
  }
  int set(int parameter, const std::vector<int>& value) {
    return qor_dft_zx9_set_value_external(d_, parameter, value.data());
  }
  template <class X = int>
  X get(int parameter) const {
    X value{};
    EXPECT_EQ(qor_dft_zx9_get_value_external(d_, parameter, &value), 0);
    return value;
  }
  int commit() { return qor_dft_zx9_commit_descriptor_external(d_); }
  int forward(void* in, void* out) const { return qor_dft_zx9_compute_forward_external(d_, in, out); }
  int backward(void* in, void* out) const { return qor_dft_zx9_compute_backward_external(d_, in, out); }
  qor_dft_descriptor* get() const { return d_; }

 private:
  qor_dft_descriptor* d_ = nullptr;
};

template <class T>
class Transform {
 public:
  explicit Transform(unsigned seed) : draw_(seed) {
    draw_shape();
    draw_layouts();
    for (int m = 0; m < transforms_; ++m) {
      std::vector<Wide> x(points_);
      for (Wide& v : x) v = {number(), real_ ? 0 : number()};
      signal_.push_back(x);
      spectrum_.push_back(transform(x, n_, -1));
    }
  }

  std::string text() const {
    std::ostringstream s;
    s << (sizeof(T) == 8 ? "double " : "single ") << (real_ ? "real" : "complex");
    for (const int n : n_) s << " " << n;
    s << (in_place_ ? " in place" : " apart") << " format " << format_ << " transforms " << transforms_;
    for (const Layout* l : {&x_, &y_}) {
      s << " |";
      for (const int v : l->stride) s << " " << v;
      s << " distance " << l->distance;
    }
    return s.str();
  }

  Descriptor descriptor() const {
    Descriptor d(sizeof(T) == 8 ? QOR_DFT_DOUBLE : QOR_DFT_SINGLE, real_ ? QOR_DFT_REAL : QOR_DFT_COMPLEX, n_);
    EXPECT_EQ(d.set(QOR_DFT_PLACEMENT, in_place_ ? QOR_DFT_IN_PLACE : QOR_DFT_OUT_OF_PLACE), 0);
    EXPECT_EQ(d.set(QOR_DFT_FORWARD_SCALE, forward_scale_), 0);
    EXPECT_EQ(d.set(QOR_DFT_BACKWARD_SCALE, backward_scale_), 0);
    EXPECT_EQ(d.set(QOR_DFT_CE_STORAGE, format_ == QOR_DFT_HALF_SPECTRUM ? QOR_DFT_CE_COMPLEX : QOR_DFT_CE_REAL), 0);
    EXPECT_EQ(d.set(QOR_DFT_PACKED_FORMAT, format_), 0);
    if (transforms_ > 1) {
      EXPECT_EQ(d.set(QOR_DFT_TRANSFORMS, transforms_), 0);
      EXPECT_EQ(d.set(QOR_DFT_SIGNAL_DISTANCE, x_.distance), 0);
      EXPECT_EQ(d.set(QOR_DFT_SPECTRUM_DISTANCE, y_.distance), 0);
    }
    if (!dense_) {
      EXPECT_EQ(d.set(QOR_DFT_SIGNAL_STRIDES, x_.stride), 0);
      EXPECT_EQ(d.set(QOR_DFT_SPECTRUM_STRIDES, y_.stride), 0);
    }
    EXPECT_EQ(d.commit(), 0) << text();
    return d;
  }

  // Both directions with the descriptor; returns the bytes that came out.
  std::vector<T> check(const Descriptor& d) const {
    std::vector<T> bits = check_direction(d, true), back = check_direction(d, false);
    bits.insert(bits.end(), back.begin(), back.end());
    return bits;
  }

 private:
  static constexpr T untouched = T(4711.25);

  long double number() { return static_cast<T>(draw_() / 4294967296.0 - 0.5); }
  int packed_length(int n) const { return format_ == QOR_DFT_CCS ? n + 2 - n % 2 : n; }

  void draw_shape() {
    real_ = coin(draw_);
    in_place_ = coin(draw_);
    dense_ = below(draw_, 3) == 0;
    int rank = 1 + below(draw_, 7);
    format_ = QOR_DFT_HALF_SPECTRUM;
    if (real_ && below(draw_, 3) == 0) {
      rank = 1 + below(draw_, 2);
      format_ = QOR_DFT_PERM + below(draw_, 3);
    }
    static constexpr int lengths[] = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16,  17,
                                      18, 19, 20, 23, 24, 25, 27, 30, 32, 35, 40, 48, 60, 64, 97, 128, 180};
    points_ = 1;
    for (int d = 0; d < rank; ++d) {
      const int share = static_cast<int>(std::pow(3000.0 / static_cast<double>(points_), 1.6 / (rank - d)));
      int n = 1;
      do n = lengths[below(draw_, std::size(lengths))];
      while (n > std::max(share, 2));
      n_.push_back(n);
      points_ *= static_cast<std::size_t>(n);
    }
    std::shuffle(n_.begin(), n_.end(), draw_);
    transforms_ = coin(draw_) ? 1 : 1 + below(draw_, 9);
    forward_scale_ = coin(draw_) ? 1 : 0.625;
    backward_scale_ = coin(draw_) ? 1.0 / static_cast<double>(points_) : 1;
  }

  void draw_layouts() {
    std::vector<int> x = n_, y = n_;
    const bool half = real_ && format_ == QOR_DFT_HALF_SPECTRUM;
    if (half) y.back() = y.back() / 2 + 1;
    if (real_ && !half) {
      for (int& n : y) n = packed_length(n);
    }
    x.push_back(transforms_);
    y.push_back(transforms_);
    if (!in_place_) {
      x_ = draw_layout(draw_, x, dense_);
      y_ = draw_layout(draw_, y, dense_);
    } else if (half) {
      std::vector<int> outer = y;  // rows that lie dense
      const int row = outer[outer.size() - 2];
      outer.erase(outer.end() - 2);
      Layout l = draw_layout(draw_, outer, dense_);
      l.stride.push_back(1);
      for (std::size_t i = 1; i + 1 < l.stride.size(); ++i) l.stride[i] *= row;
      l.distance *= row;
      l.start *= row;
      l.size = l.size * row + l.stride[0];
      y_ = x_ = l;
      for (int& s : x_.stride) s *= 2;
      x_.stride.back() = 1;
      x_.distance *= 2;
      x_.start *= 2;
      x_.size *= 2;
    } else {
      x_ = y_ = draw_layout(draw_, y, dense_);
    }
  }

  // Calls f with each element of one transform: its number in the dense array and its place.
  template <class F>
  void over(const Layout& l, std::vector<int> count, F f) const {
    std::size_t elements = 1;
    for (const int n : count) elements *= static_cast<std::size_t>(n);
    for (std::size_t i = 0; i < elements; ++i) {
      int at = l.start + l.stride[0];
      std::size_t rest = i;
      for (std::size_t d = count.size(); d-- > 0;) {
        at += static_cast<int>(rest % static_cast<std::size_t>(count[d])) * l.stride[d + 1];
        rest /= static_cast<std::size_t>(count[d]);
      }
      f(i, at);
    }
  }
  // Calls f(place in reals, value) for all reals of transform m in the signal, or the spectrum.
  template <class F>
  void values(bool of_spectrum, int m, F f) const {
    const std::vector<Wide>& v = (of_spectrum ? spectrum_ : signal_)[static_cast<std::size_t>(m)];
    const int shift = m * (of_spectrum ? y_ : x_).distance;
    if (!of_spectrum || !real_ || format_ == QOR_DFT_HALF_SPECTRUM) {
      const int parts = real_ && !of_spectrum ? 1 : 2;
      std::vector<int> count = n_;
      if (real_ && of_spectrum) count.back() = count.back() / 2 + 1;
      over(of_spectrum ? y_ : x_, count, [&](std::size_t i, int at) {
        const std::size_t row = static_cast<std::size_t>(count.back()), full = static_cast<std::size_t>(n_.back());
        const Wide z = v[i / row * full + i % row];
        f(parts * (at + shift), z.real());
        if (parts == 2) f(parts * (at + shift) + 1, z.imag());
      });
      return;
    }
    // Packed: each place of the form at most once, zero where no frequency has it.
    const int m_rows = n_.size() == 2 ? n_[0] : 1, n = n_.back();
    std::vector<int> count = {n_.size() == 2 ? packed_length(m_rows) : 1, packed_length(n)};
    std::vector<long double> packed(static_cast<std::size_t>(count[0] * count[1]), 0);
    for (int k = 0; k <= n / 2; ++k) {
      const bool pair = k != 0 && 2 * k != n;
      for (int u = 0; u < m_rows; ++u) {
        const Wide z = v[static_cast<std::size_t>(u * n + k)];
        const auto put = [&](int row, bool imaginary, long double value) {
          packed[static_cast<std::size_t>(row * count[1] + packed_at(format_, n, k, imaginary))] = value;
        };
        if (pair) {
          put(u, false, z.real());
          put(u, true, z.imag());
        } else if (2 * u <= m_rows) {
          put(packed_at(format_, m_rows, u, false), false, z.real());
          if (u != 0 && 2 * u != m_rows) put(packed_at(format_, m_rows, u, true), false, z.imag());
        }
      }
    }
    if (n_.size() == 1) count.erase(count.begin());
    over(y_, count, [&](std::size_t i, int at) { f(at + shift, packed[i]); });
  }

  std::vector<T> check_direction(const Descriptor& d, bool forward) const {
    const int x_parts = real_ ? 1 : 2, y_parts = real_ && format_ != QOR_DFT_HALF_SPECTRUM ? 1 : 2;
    const auto size_of = [&](const Layout& l, int parts) {
      return static_cast<std::size_t>(parts * (l.size + std::abs(l.distance) * (dense_ ? transforms_ : 1)));
    };
    const Layout &source = forward ? x_ : y_, &target = forward ? y_ : x_;
    const int source_parts = forward ? x_parts : y_parts, target_parts = forward ? y_parts : x_parts;
    std::vector<T> a(size_of(source, source_parts), untouched), b(size_of(target, target_parts), untouched);
    if (in_place_) a.resize(std::max(a.size(), b.size()), untouched);
    const T zero_of_inputs = forward ? T(0) : T(-3);  // zeros of packed forms aren't read
    for (int m = 0; m < transforms_; ++m) {
      values(!forward, m, [&](int at, long double v) {
        a.at(static_cast<std::size_t>(at)) = v == 0 && !forward && y_parts == 1 ? zero_of_inputs : static_cast<T>(v);
      });
    }
    const std::vector<T> before = a;
    T* const in = a.data() + source.start * source_parts;
    T* const out = in_place_ ? nullptr : b.data() + target.start * target_parts;
    EXPECT_EQ(forward ? d.forward(in, out) : d.backward(in, out), 0);
    if (!in_place_) {
      EXPECT_EQ(std::memcmp(a.data(), before.data(), a.size() * sizeof(T)), 0) << "input changed: " << text();
    }

    const std::vector<T>& result = in_place_ ? a : b;
    std::vector<char> seen(result.size(), 0);
    const long double scale = forward ? forward_scale_ : backward_scale_ * static_cast<double>(points_);
    long double error = 0, norm = 0;
    for (int m = 0; m < transforms_; ++m) {
      values(forward, m, [&](int at, long double v) {
        const std::size_t i = static_cast<std::size_t>(at);
        error += (result.at(i) - scale * v) * (result.at(i) - scale * v);
        norm += scale * scale * v * v;
        seen[i] = 1;
      });
    }
    const long double eps = std::numeric_limits<T>::epsilon(),
                      levels = std::max(1.0, std::log2(static_cast<double>(points_)));
    EXPECT_LE(std::sqrt(error), 1.2L * eps * std::sqrt(levels) * std::sqrt(norm))
        << (forward ? "forward " : "backward ") << text();
    for (std::size_t i = 0; i < result.size(); ++i) {
      const bool was_input = in_place_ && before[i] != untouched;
      if (seen[i] || was_input) continue;
      EXPECT_EQ(result[i], untouched) << i << (forward ? " forward " : " backward ") << text();
    }
    return result;
  }

  Draw draw_;
  bool real_, in_place_, dense_;
  int format_, transforms_;
  double forward_scale_, backward_scale_;
  std::size_t points_;
  std::vector<int> n_;
  Layout x_, y_;
  std::vector<std::vector<Wide>> signal_, spectrum_;
};

}  // namespace drawn
