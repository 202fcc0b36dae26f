// Problems of convolution and correlation drawn at random, their operands in every kind of layout between pages that
// can't be touched, and the sums that define the results.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "conv/layout.h"
#include "support/guarded.h"

namespace qor::test {

using Wide = long double;

inline int size_of(const Ints& shape) {
  int n = 1;
  for (const int s : shape) n *= s;
  return n;
}
inline Ints dense(const Ints& shape) {
  Ints stride;
  int n = 1;
  for (const int s : shape) stride.push_back(n), n *= s;
  return stride;
}
// The elements from the lowest to the highest.
inline int extent(const Ints& shape, const Ints& stride) {
  int n = 1;
  for (std::size_t k = 0; k < shape.size(); ++k) n += (shape[k] - 1) * std::abs(stride[k]);
  return n;
}

// An array in its layout, up against the page that can't be touched behind it, or before it.
template <class D>
class Placed {
 public:
  Placed(const std::vector<D>& values, const Ints& shape, const Ints& stride, bool at_head)
      : shape_(shape),
        stride_(stride),
        n_(extent(shape, stride)),
        block_(n_),
        data_(at_head ? block_.head() : block_.data()) {
    for (int i = 0; i < n_; ++i) data_[i] = untouched;
    if (values.empty()) return;
    Ints index(shape.size());
    std::size_t i = 0;
    do data_[place(index, shape, stride)] = values[i++];
    while (next(index, shape));
  }
  D* data() { return data_; }
  // The values in order; gaps must be as they were.
  std::vector<D> values() {
    std::vector<D> v;
    std::vector<bool> named(static_cast<std::size_t>(n_));
    Ints index(shape_.size());
    do {
      const std::size_t at = place(index, shape_, stride_);
      v.push_back(data_[at]);
      named[static_cast<std::size_t>(at)] = true;
    } while (next(index, shape_));
    for (int i = 0; i < n_; ++i) {
      if (!named[static_cast<std::size_t>(i)]) {
        EXPECT_EQ(data_[i], untouched) << "written between elements at " << i;
      }
    }
    return v;
  }
  static constexpr D untouched = D(1e30);

 private:
  Ints shape_, stride_;
  int n_;
  Guarded<D> block_;
  D* data_;
};

struct Case {
  bool correlates;
  Ints nx, ny, nz, start, step, sx, sy, sz;
};
inline std::string text(const Case& c) {
  std::string s = c.correlates ? "correlation " : "convolution ";
  for (const Ints* v : {&c.nx, &c.ny, &c.nz, &c.start, &c.step, &c.sx, &c.sy, &c.sz}) {
    for (const int i : *v) s += std::to_string(i) + " ";
    s += "| ";
  }
  return s;
}

// An output by definition, the sum of its products' absolute values, and their number.
struct Sum {
  Wide value = 0, size = 0;
  int products = 0;
};
template <class D>
std::vector<Sum> plain_sums(const Case& c, const std::vector<D>& x, const std::vector<D>& y) {
  const std::size_t rank = c.nx.size();
  std::vector<Sum> sums;
  Ints j(rank);
  do {
    Sum& s = sums.emplace_back();
    Ints i(rank), first(rank), count(rank), partner(rank), step(rank);
    bool some = true;
    for (std::size_t k = 0; k < rank; ++k) {
      const int m = c.start[k] + j[k] * c.step[k];
      // The i with x[i] and its partner, m - i or m + i, inside.
      first[k] = c.correlates ? std::max(0, -m) : std::max(0, m - c.ny[k] + 1);
      count[k] = (c.correlates ? std::min(c.nx[k], c.ny[k] - m) : std::min(c.nx[k], m + 1)) - first[k];
      some = some && count[k] > 0;
    }
    if (!some) continue;
    do {
      for (std::size_t k = 0; k < rank; ++k) {
        const int m = c.start[k] + j[k] * c.step[k];
        i[k] = first[k] + step[k];
        partner[k] = c.correlates ? m + i[k] : m - i[k];
      }
      const Wide p = Wide(x[place(i, c.nx, dense(c.nx))]) * y[place(partner, c.ny, dense(c.ny))];
      s.value += p;
      s.size += std::fabs(p);
      ++s.products;
    } while (next(step, count));
  } while (next(j, c.nz));
  return sums;
}

class Draw {
 public:
  explicit Draw(unsigned seed) : engine_(seed) {}
  int operator()(int low, int high) { return std::uniform_int_distribution<int>(low, high)(engine_); }
  template <class D>
  std::vector<D> values(const Ints& shape, const Ints& stride) {
    std::vector<D> v(std::size_t(size_of(shape)));
    for (D& x : v) x = D(std::uniform_real_distribution<double>(-1, 1)(engine_));
    // Elements in the same place are equal.
    Ints index(shape.size());
    std::size_t i = 0;
    do {
      Ints same = index;
      for (std::size_t k = 0; k < shape.size(); ++k) same[k] = stride[k] == 0 ? 0 : index[k];
      v[i++] = v[place(same, shape, dense(shape))];
    } while (next(index, shape));
    return v;
  }
  // Dense; dense but in dimension 0; with gaps; each of them in some dimensions backwards, and still if allowed.
  Ints stride(const Ints& shape, bool may_be_zero) {
    const int way = (*this)(0, 3);
    Ints s = dense(shape);
    if (way == 1 && shape[0] == 1) s[0] = 3;
    if (way >= 2) {
      int n = (*this)(1, 3);
      for (std::size_t k = 0; k < shape.size(); ++k) s[k] = n, n = n * shape[k] + (*this)(0, 2);
    }
    if (way == 3) {
      for (int& each : s) {
        const int sign = (*this)(0, may_be_zero ? 3 : 2);
        each = sign == 0 ? -each : sign == 3 ? 0 : each;
      }
    }
    return s;
  }
  Case problem(bool correlates, int rank, int longest) {
    Case c;
    c.correlates = correlates;
    for (int k = 0; k < rank; ++k) {
      c.nx.push_back((*this)(1, longest));
      c.ny.push_back((*this)(1, longest));
      const int low = correlates ? 1 - c.nx.back() : 0, count = c.nx.back() + c.ny.back() - 1;
      c.start.push_back((*this)(0, 2) == 0 ? low : low + (*this)(0, count - 1));
      c.step.push_back((*this)(0, 2) != 0 ? 1 : (*this)(1, 5));
      const int most = (count - 1 - (c.start.back() - low)) / c.step.back() + 1;
      c.nz.push_back((*this)(0, 1) == 0 ? most : (*this)(1, most));
    }
    if ((*this)(0, 2) == 0 && c.ny[0] >= c.nx[0]) {  // the outputs that x lies within y for, up to the last
      c.start[0] = correlates ? 0 : c.nx[0] - 1;
      c.step[0] = 1;
      c.nz[0] = c.ny[0] - c.nx[0] + 1;
    }
    c.sx = stride(c.nx, true);
    c.sy = stride(c.ny, true);
    c.sz = stride(c.nz, false);
    return c;
  }

 private:
  std::mt19937 engine_;
};

}  // namespace qor::test
