// The direct drivers against the sums that define them, with every kind of layout, and their codes.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "qor/conv.h"
#include "support/allocations.h"
#include "support/guarded.h"

namespace {

using Ints = std::vector<int>;
using Wide = long double;

template <class D>
using Scalar = int (*)(const D*, int, const D*, int, D*, int, int, int, int, int, int);
template <class D>
using Arrays = int (*)(int, const D*, const int*, const int*, const D*, const int*, const int*, D*, const int*,
                       const int*, const int*, const int*);

template <class Data, bool Correlates, bool Single, Scalar<Data> One, Arrays<Data> All>
struct Member {
  using D = Data;
  static constexpr bool correlates = Correlates;
  static constexpr double unit = Single ? 0x1p-24 : 0x1p-53, final_unit = sizeof(D) == 4 ? 0x1p-24 : 0x1p-53;
  static constexpr Scalar<D> one = One;
  static constexpr Arrays<D> all = All;
};
using Members = ::testing::Types<Member<double, false, false, _wxrConvDDDirect1D_dec, _wxrConvDDDirectAll_dec>,
                                 Member<float, false, false, _wxrConvSDDirect1D_dec, _wxrConvSDDirectAll_dec>,
                                 Member<float, false, true, _wxrConvSSDirect1D_dec, _wxrConvSSDirectAll_dec>,
                                 Member<double, true, false, _wxrCorrDDDirect1D_dec, _wxrCorrDDDirectAll_dec>,
                                 Member<float, true, false, _wxrCorrSDDirect1D_dec, _wxrCorrSDDirectAll_dec>,
                                 Member<float, true, true, _wxrCorrSSDirect1D_dec, _wxrCorrSSDirectAll_dec>>;

int size_of(const Ints& shape) {
  int n = 1;
  for (const int s : shape) n *= s;
  return n;
}
Ints dense(const Ints& shape) {
  Ints stride;
  int n = 1;
  for (const int s : shape) stride.push_back(n), n *= s;
  return stride;
}
// Steps through all indices, dimension 0 first; false after the last.
bool next(Ints& index, const Ints& shape) {
  for (std::size_t k = 0; k < shape.size(); ++k) {
    if (++index[k] < shape[k]) return true;
    index[k] = 0;
  }
  return false;
}
int place(const Ints& index, const Ints& shape, const Ints& stride) {
  int at = 0;
  for (std::size_t k = 0; k < shape.size(); ++k) {
    at += stride[k] >= 0 ? index[k] * stride[k] : (shape[k] - 1 - index[k]) * -stride[k];
  }
  return at;
}
// The elements from the lowest to the highest.
int extent(const Ints& shape, const Ints& stride) {
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
      const int at = place(index, shape_, stride_);
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
  qor::test::Guarded<D> block_;
  D* data_;
};

struct Case {
  Ints nx, ny, nz, start, step, sx, sy, sz;
};
std::string text(const Case& c) {
  std::string s;
  for (const Ints* v : {&c.nx, &c.ny, &c.nz, &c.start, &c.step, &c.sx, &c.sy, &c.sz}) {
    for (const int i : *v) s += std::to_string(i) + " ";
    s += "| ";
  }
  return s;
}

// Rank 1 goes through both drivers in turn.
template <class M, class D = typename M::D>
std::vector<D> compute(const Case& c, const std::vector<D>& x, const std::vector<D>& y, bool at_head,
                       bool array_driver) {
  Placed<D> px(x, c.nx, c.sx, at_head), py(y, c.ny, c.sy, at_head), pz({}, c.nz, c.sz, at_head);
  const int s = array_driver ? M::all(int(c.nx.size()), px.data(), c.nx.data(), c.sx.data(), py.data(), c.ny.data(),
                                      c.sy.data(), pz.data(), c.nz.data(), c.sz.data(), c.start.data(), c.step.data())
                             : M::one(px.data(), c.sx[0], py.data(), c.sy[0], pz.data(), c.sz[0], c.nx[0], c.ny[0],
                                      c.start[0], c.nz[0], c.step[0]);
  EXPECT_EQ(s, 0) << text(c);
  return pz.values();
}

// The sums by definition, and the errors they may have.
template <class M, class D = typename M::D>
void expect_sums(const Case& c, const std::vector<D>& x, const std::vector<D>& y, const std::vector<D>& z) {
  const std::size_t rank = c.nx.size();
  Ints j(rank);
  std::size_t at = 0;
  do {
    Wide sum = 0, size = 0;
    int products = 0;
    Ints i(rank), first(rank), last(rank), other(rank);
    bool some = true;
    for (std::size_t k = 0; k < rank; ++k) {
      const int m = c.start[k] + j[k] * c.step[k];
      // The i with x[i] and its partner, m - i or m + i, inside.
      first[k] = M::correlates ? std::max(0, -m) : std::max(0, m - c.ny[k] + 1);
      last[k] = M::correlates ? std::min(c.nx[k], c.ny[k] - m) : std::min(c.nx[k], m + 1);
      some = some && first[k] < last[k];
      other[k] = m;
    }
    if (some) {
      Ints count(rank), partner(rank);
      for (std::size_t k = 0; k < rank; ++k) count[k] = last[k] - first[k];
      Ints step(rank);
      do {
        for (std::size_t k = 0; k < rank; ++k) {
          i[k] = first[k] + step[k];
          partner[k] = M::correlates ? other[k] + i[k] : other[k] - i[k];
        }
        const Wide p =
            Wide(x[std::size_t(place(i, c.nx, dense(c.nx)))]) * y[std::size_t(place(partner, c.ny, dense(c.ny)))];
        sum += p;
        size += std::fabs(p);
        ++products;
      } while (next(step, count));
    }
    const Wide bound =
        (std::min(products, 512 + products / 16) + 1) * Wide(M::unit) * size + M::final_unit * std::fabs(sum);
    ASSERT_LE(std::fabs(z[at] - sum), bound) << "output " << at << " of " << text(c);
    ++at;
  } while (next(j, c.nz));
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
      v[i++] = v[std::size_t(place(same, shape, dense(shape)))];
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
  template <class M>
  Case problem(int rank, int longest) {
    Case c;
    for (int k = 0; k < rank; ++k) {
      c.nx.push_back((*this)(1, longest));
      c.ny.push_back((*this)(1, longest));
      const int low = M::correlates ? 1 - c.nx.back() : 0, count = c.nx.back() + c.ny.back() - 1;
      c.start.push_back((*this)(0, 2) == 0 ? low : low + (*this)(0, count - 1));
      c.step.push_back((*this)(0, 2) != 0 ? 1 : (*this)(1, 5));
      const int most = (count - 1 - (c.start.back() - low)) / c.step.back() + 1;
      c.nz.push_back((*this)(0, 1) == 0 ? most : (*this)(1, most));
    }
    if ((*this)(0, 2) == 0 && c.ny[0] >= c.nx[0]) {  // the outputs that x lies within y for, up to the last
      c.start[0] = M::correlates ? 0 : c.nx[0] - 1;
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

template <class M>
void expect_agreement(Draw& draw, const Case& c, int round) {
  using D = typename M::D;
  const std::vector<D> x = draw.values<D>(c.nx, c.sx), y = draw.values<D>(c.ny, c.sy);
  const std::vector<D> z = compute<M>(c, x, y, round % 2 == 0, c.nx.size() > 1 || round % 4 < 2);
  expect_sums<M>(c, x, y, z);
  Case plain = c;
  plain.sx = dense(c.nx), plain.sy = dense(c.ny), plain.sz = dense(c.nz);
  EXPECT_EQ(compute<M>(plain, x, y, round % 2 != 0, true), z) << "layout changes bits: " << text(c);
}

template <class M>
class DirectDrivers : public ::testing::Test {};
TYPED_TEST_SUITE(DirectDrivers, Members, );

TYPED_TEST(DirectDrivers, AgreeWithTheirDefinitionInEveryLayout) {
  Draw draw(12);
  const int longest[] = {0, 70, 14, 7, 4, 3, 3, 2};
  for (int round = 0; round < 60 && !this->HasFatalFailure(); ++round) {
    for (int rank = 1; rank <= 7; ++rank)
      expect_agreement<TypeParam>(draw, draw.problem<TypeParam>(rank, longest[rank]), round);
  }
}

TYPED_TEST(DirectDrivers, AgreeWithTheirDefinitionBeyondOneTile) {
  struct Size {
    Ints nx, ny, step;
  };
  const Size sizes[] = {{{700}, {2600}, {1}},
                        {{3000}, {30}, {1}},
                        {{1300}, {1200}, {2}},
                        {{40}, {3000}, {50}},
                        {{1600}, {1600}, {300}},
                        {{40, 30}, {60, 50}, {1, 1}},
                        {{600, 2}, {40, 9}, {1, 2}},
                        {{5, 60}, {3, 2500}, {1, 1}},
                        {{9, 9, 9}, {20, 11, 10}, {1, 3, 2}},
                        {{3, 2, 3, 2}, {4, 5, 60, 3}, {2, 1, 1, 1}}};
  Draw draw(7);
  int round = 0;
  for (const Size& size : sizes) {
    Case c{size.nx, size.ny, {}, {}, size.step, {}, {}, {}};
    for (std::size_t k = 0; k < c.nx.size(); ++k) {
      const int count = c.nx[k] + c.ny[k] - 1;
      c.start.push_back(TypeParam::correlates ? 1 - c.nx[k] : 0);
      c.nz.push_back((count - 1) / c.step[k] + 1);
    }
    c.sx = dense(c.nx), c.sy = draw.stride(c.ny, false), c.sz = draw.stride(c.nz, false);
    expect_agreement<TypeParam>(draw, c, round++);
  }
}

TYPED_TEST(DirectDrivers, SpreadInfinitiesToTheirOwnSumsOnly) {
  using D = typename TypeParam::D;
  Draw draw(5);
  for (int round = 0; round < 40; ++round) {
    Case c = draw.problem<TypeParam>(1 + round % 3, round % 3 == 0 ? 90 : 9);
    c.sx = dense(c.nx), c.sy = dense(c.ny), c.sz = dense(c.nz);
    std::vector<D> x = draw.values<D>(c.nx, c.sx), y = draw.values<D>(c.ny, c.sy);
    const std::vector<D> usual = compute<TypeParam>(c, x, y, true, true);
    std::vector<D>& bad = round % 2 == 0 ? x : y;
    const std::size_t at = std::size_t(draw(0, int(bad.size()) - 1));
    std::vector<D> mark_x(x.size()), mark_y(y.size(), D(1));
    if (round % 2 != 0) mark_x.swap(mark_y), mark_x.assign(x.size(), D(1)), mark_y.assign(y.size(), D(0));
    (round % 2 == 0 ? mark_x : mark_y)[at] = 1;
    const std::vector<D> touched = compute<TypeParam>(c, mark_x, mark_y, true, true);
    bad[at] = round % 4 < 2 ? std::numeric_limits<D>::infinity() : std::numeric_limits<D>::quiet_NaN();
    const std::vector<D> z = compute<TypeParam>(c, x, y, true, true);
    for (std::size_t i = 0; i < z.size(); ++i) {
      if (touched[i] == 0) {
        EXPECT_EQ(z[i], usual[i]) << i << " of " << text(c);
      } else {
        EXPECT_FALSE(std::isfinite(z[i])) << i << " of " << text(c);
      }
    }
  }
}

// ---- codes ----------------------------------------------------------------------------------------------------------

TYPED_TEST(DirectDrivers, ReturnTheFirstCodeThatApplies) {
  using D = typename TypeParam::D;
  D data[64] = {};
  struct {
    int code_one, code_all;
    bool x, y, z;
    int nx, ny, nz, sz, start, step;
  } const rows[] = {
      {0, 0, true, true, true, 3, 4, 4, 1, 0, 1},
      {-2331, -2331, false, false, false, 0, 0, 0, 0, 99, 0},
      {-2311, -2332, true, false, false, 0, 0, 0, 0, 99, 0},
      {-2332, -2332, true, false, false, 3, 0, 0, 0, 99, 0},
      {-2312, -2333, true, true, false, 3, 0, 0, 0, 99, 0},
      {-2333, -2333, true, true, false, 3, 4, 0, 0, 99, 0},
      {-2311, -2311, true, true, true, 0, 0, 0, 0, 99, 0},
      {-2312, -2312, true, true, true, 3, -1, 0, 0, 99, 0},
      {-2313, -2313, true, true, true, 3, 4, 0, 0, 99, 0},
      {-2323, -2323, true, true, true, 3, 4, 1, 0, 99, 0},
      {-2302, -2302, true, true, true, 3, 4, 1, 1, 6, 0},
      {-2302, -2302, true, true, true, 3, 4, 1, 1, -3, 0},
      {-2303, -2303, true, true, true, 3, 4, 1, 1, 0, 0},
      {-2303, -2303, true, true, true, 3, 4, 7, 1, 0, 1},
      {-2303, -2303, true, true, true, 3, 4, 3, 1, 0, std::numeric_limits<int>::max()},
  };
  for (const auto& r : rows) {
    const D *const x = r.x ? data : nullptr, *const y = r.y ? data + 10 : nullptr;
    D* const z = r.z ? data + 20 : nullptr;
    const int one[] = {1, 1}, start[] = {0, r.start};
    EXPECT_EQ(TypeParam::one(x, 1, y, 1, z, r.sz, r.nx, r.ny, r.start, r.nz, r.step), r.code_one);
    // What is wrong is wrong in dimension 1, behind a sound dimension 0.
    const int nx[] = {1, r.nx}, ny[] = {1, r.ny}, nz[] = {1, r.nz}, sz[] = {1, r.sz}, step[] = {1, r.step};
    EXPECT_EQ(TypeParam::all(2, x, nx, one, y, ny, one, z, nz, sz, start, step), r.code_all);
    // An earlier dimension's last check comes before a later one's first.
    const int bad_first[] = {0, 1};
    if (r.x && r.y && r.z) {
      EXPECT_EQ(TypeParam::all(2, x, nx, one, y, ny, one, z, nz, sz, start, bad_first), -2303);
    }
    for (const int rank : {-1, 0, 8})
      EXPECT_EQ(TypeParam::all(rank, x, nx, one, y, ny, one, z, nz, sz, start, step), -2301);
  }
}

TYPED_TEST(DirectDrivers, RefuseSizesBeyondMemory) {
  using D = typename TypeParam::D;
  D data[4] = {1, 1, 1, 1};
  const int none[] = {0, 0, 0}, one[] = {1, 1, 1}, start[] = {0, 0, 0};
  for (const Ints& many : {Ints{65536, 65536, 1}, Ints{1 << 20, 1 << 20, 1 << 20}, Ints{46341, 46341, 1}}) {
    EXPECT_EQ(TypeParam::all(3, data, many.data(), none, data, one, one, data, one, one, start, one), -2001);
    EXPECT_EQ(TypeParam::all(3, data, one, one, data, many.data(), none, data, one, one, start, one), -2001);
  }
  EXPECT_EQ(TypeParam::one(data, 0, data, 1, data, 1, 1 << 30, 1, 0, 1, 1), -2001);
}

#if defined(COUNTS_ALLOCATIONS)
TYPED_TEST(DirectDrivers, ReturnTheirCodeWithoutMemoryAndKeepNothing) {
  using D = typename TypeParam::D;
  const std::vector<D> x(40, D(1)), y(50, D(1));
  std::vector<D> z(100, D(7));
  for (const int stride : {1, -1}) {
    const int blocks = live_blocks;
    until_failure = 1;
    errno = 4711;
    EXPECT_EQ(TypeParam::one(x.data(), -1, y.data(), -1, z.data(), stride, 40, 50, 0, 20, 1), 0)
        << "one block is enough";
    EXPECT_EQ(live_blocks, blocks);
    z.assign(100, D(7));
    until_failure = 0;
    const int s = TypeParam::one(x.data(), -1, y.data(), -1, z.data(), stride, 40, 50, 0, 20, 1);
    until_failure = -1;
    EXPECT_EQ(s, -2001);
    EXPECT_EQ(errno, 4711);
    EXPECT_EQ(live_blocks, blocks);
    EXPECT_EQ(z, std::vector<D>(100, D(7)));
  }
}
#endif

TEST(DirectDriversWithoutDecimation, AreAsWithOneOrRefuse) {
  const float x[] = {1, 2}, y[] = {1, 1, 1};
  float z[4];
  EXPECT_EQ(_wxrConvSSDirect1D_nodec(x, 1, y, 1, z, 1, 2, 3, 0, 4), 0);
  EXPECT_EQ(std::vector<float>(z, z + 4), (std::vector<float>{1, 3, 3, 2}));
  EXPECT_EQ(_wxrCorrSSDirect1D_nodec(x, 1, y, 1, z, -1, 2, 3, -1, 4), 0);
  EXPECT_EQ(std::vector<float>(z, z + 4), (std::vector<float>{1, 3, 3, 2}));
  EXPECT_EQ(_wxrCorrSSDirect1D_nodec(x, 1, y, 1, z, 1, 2, 3, -1, 5), -2303);
  EXPECT_EQ(_wxrConvDDDirect1D_nodec(nullptr, 1, nullptr, 1, nullptr, 1, 2, 3, 0, 4), -2000);
  EXPECT_EQ(_wxrCorrSDDirect1D_nodec(x, 1, y, 1, z, 1, 2, 3, 0, 4), -2000);
  EXPECT_EQ(_wxrConvSSDirectAll_nodec(1, x, nullptr, nullptr, y, nullptr, nullptr, z, nullptr, nullptr, nullptr),
            -2000);
}

}  // namespace
