// The drivers against the sums that define them, with every kind of layout, and their codes.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "conv/problems.h"
#include "qor/conv.h"
#include "support/allocations.h"

namespace {

using namespace qor::test;

template <class D>
using Scalar = int (*)(const D*, int, const D*, int, D*, int, int, int, int, int, int);
template <class D>
using Arrays = int (*)(int, const D*, const int*, const int*, const D*, const int*, const int*, D*, const int*,
                       const int*, const int*, const int*);

enum Way { direct, fourier };
template <Way W, class Data, bool Correlates, bool Single, Scalar<Data> One, Arrays<Data> All>
struct Member {
  using D = Data;
  static constexpr Way way = W;
  static constexpr bool correlates = Correlates;
  static constexpr double unit = Single ? 0x1p-24 : 0x1p-53, final_unit = sizeof(D) == 4 ? 0x1p-24 : 0x1p-53;
  static constexpr Scalar<D> one = One;
  static constexpr Arrays<D> all = All;
};
template <class... M>
using List = ::testing::Types<M...>;
using DirectMembers = List<Member<direct, double, false, false, _wxrConvDDDirect1D_dec, _wxrConvDDDirectAll_dec>,
                           Member<direct, float, false, false, _wxrConvSDDirect1D_dec, _wxrConvSDDirectAll_dec>,
                           Member<direct, float, false, true, _wxrConvSSDirect1D_dec, _wxrConvSSDirectAll_dec>,
                           Member<direct, double, true, false, _wxrCorrDDDirect1D_dec, _wxrCorrDDDirectAll_dec>,
                           Member<direct, float, true, false, _wxrCorrSDDirect1D_dec, _wxrCorrSDDirectAll_dec>,
                           Member<direct, float, true, true, _wxrCorrSSDirect1D_dec, _wxrCorrSSDirectAll_dec>>;
using Members = List<Member<direct, double, false, false, _wxrConvDDDirect1D_dec, _wxrConvDDDirectAll_dec>,
                     Member<direct, float, false, false, _wxrConvSDDirect1D_dec, _wxrConvSDDirectAll_dec>,
                     Member<direct, float, false, true, _wxrConvSSDirect1D_dec, _wxrConvSSDirectAll_dec>,
                     Member<direct, double, true, false, _wxrCorrDDDirect1D_dec, _wxrCorrDDDirectAll_dec>,
                     Member<direct, float, true, false, _wxrCorrSDDirect1D_dec, _wxrCorrSDDirectAll_dec>,
                     Member<direct, float, true, true, _wxrCorrSSDirect1D_dec, _wxrCorrSSDirectAll_dec>,
                     Member<fourier, double, false, false, _wxrConvDDFft1D_dec, _wxrConvDDFftAll_dec>,
                     Member<fourier, float, false, false, _wxrConvSDFft1D_dec, _wxrConvSDFftAll_dec>,
                     Member<fourier, float, false, true, _wxrConvSSFft1D_dec, _wxrConvSSFftAll_dec>,
                     Member<fourier, double, true, false, _wxrCorrDDFft1D_dec, _wxrCorrDDFftAll_dec>,
                     Member<fourier, float, true, false, _wxrCorrSDFft1D_dec, _wxrCorrSDFftAll_dec>,
                     Member<fourier, float, true, true, _wxrCorrSSFft1D_dec, _wxrCorrSSFftAll_dec>>;

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

template <class M, class D = typename M::D>
void expect_sums(const Case& c, const std::vector<D>& x, const std::vector<D>& y, const std::vector<D>& z,
                 bool array_driver) {
  const std::vector<Sum> sums = plain_sums(c, x, y);
  Wide xx = 0, yy = 0;
  for (const D v : x) xx += Wide(v) * v;
  for (const D v : y) yy += Wide(v) * v;
  // Of transforms; the points are at most 8 times the result's.
  const Wide unit = array_driver ? 0x1p-53 : M::unit, points = 8 * Wide(x.size()) * Wide(y.size());
  const Wide transform_bound = 3 * unit * std::log2(points) * std::sqrt(xx * yy);
  ASSERT_EQ(sums.size(), z.size());
  for (std::size_t at = 0; at < z.size(); ++at) {
    const Sum& s = sums[at];
    Wide bound = (std::min(s.products, 512 + s.products / 16) + 1) * Wide(M::unit) * s.size;
    if (M::way == fourier) bound = array_driver ? transform_bound : std::max(bound, transform_bound);
    bound += M::final_unit * std::fabs(s.value);
    ASSERT_LE(std::fabs(z[at] - s.value), bound) << "output " << at << " of " << text(c);
  }
}

template <class M>
void expect_agreement(Draw& draw, const Case& c, int round) {
  using D = typename M::D;
  const std::vector<D> x = draw.values<D>(c.nx, c.sx), y = draw.values<D>(c.ny, c.sy);
  const bool array_driver = c.nx.size() > 1 || round % 4 < 2;
  const std::vector<D> z = compute<M>(c, x, y, round % 2 == 0, array_driver);
  expect_sums<M>(c, x, y, z, array_driver);
  Case plain = c;
  plain.sx = dense(c.nx), plain.sy = dense(c.ny), plain.sz = dense(c.nz);
  EXPECT_EQ(compute<M>(plain, x, y, round % 2 != 0, array_driver || M::way == direct), z)
      << "layout changes bits: " << text(c);
}

template <class M>
class Drivers : public ::testing::Test {};
TYPED_TEST_SUITE(Drivers, Members, );
template <class M>
class DirectDrivers : public ::testing::Test {};
TYPED_TEST_SUITE(DirectDrivers, DirectMembers, );

TYPED_TEST(Drivers, AgreeWithTheirDefinitionInEveryLayout) {
  Draw draw(12);
  const int longest[] = {0, 70, 14, 7, 4, 3, 3, 2};
  for (int round = 0; round < 60 && !this->HasFatalFailure(); ++round) {
    for (int rank = 1; rank <= 7; ++rank)
      expect_agreement<TypeParam>(draw, draw.problem(TypeParam::correlates, rank, longest[rank]), round);
  }
}

TYPED_TEST(Drivers, AgreeWithTheirDefinitionBeyondOneTile) {
  struct Size {
    Ints nx, ny, step;
  };
  const Size sizes[] = {{{700}, {2600}, {1}},
                        {{3000}, {30}, {1}},
                        {{1300}, {1200}, {2}},
                        {{40}, {3000}, {50}},
                        {{1600}, {1600}, {300}},
                        {{150}, {70}, {1}},
                        {{511}, {64}, {1}},
                        {{64}, {4200}, {3}},
                        {{9000}, {63}, {7}},
                        {{70, 2}, {5, 90}, {1, 1}},
                        {{130, 4}, {7, 70}, {2, 3}},
                        {{80, 3, 4}, {3, 50, 4}, {1, 1, 1}},
                        {{3, 3, 3, 90}, {3, 4, 2, 3}, {1, 1, 1, 1}},
                        {{40, 30}, {60, 50}, {1, 1}},
                        {{600, 2}, {40, 9}, {1, 2}},
                        {{7, 9}, {150, 140}, {1, 1}},
                        {{90, 130}, {3, 5}, {3, 2}},
                        {{20, 2}, {300, 40}, {41, 1}},
                        {{100, 4}, {200, 90}, {1, 30}},
                        {{5, 60}, {3, 2500}, {1, 1}},
                        {{9, 9, 9}, {20, 11, 10}, {1, 3, 2}},
                        {{3, 2, 3, 2}, {4, 5, 60, 3}, {2, 1, 1, 1}}};
  Draw draw(7);
  int round = 0;
  for (const Size& size : sizes) {
    Case c{TypeParam::correlates, size.nx, size.ny, {}, {}, size.step, {}, {}, {}};
    for (std::size_t k = 0; k < c.nx.size(); ++k) {
      const int count = c.nx[k] + c.ny[k] - 1;
      c.start.push_back(TypeParam::correlates ? 1 - c.nx[k] : 0);
      c.nz.push_back((count - 1) / c.step[k] + 1);
    }
    c.sx = dense(c.nx), c.sy = draw.stride(c.ny, false), c.sz = draw.stride(c.nz, false);
    expect_agreement<TypeParam>(draw, c, round++);
  }
}

// From one output to more than are summed one by one, in the middle of the full result and at either end.
TYPED_TEST(Drivers, AgreeWithTheirDefinitionWhereOutputsAreFew) {
  Draw draw(19);
  for (int round = 0; round < 60 && !this->HasFatalFailure(); ++round) {
    const int rank = 1 + round % 2;
    Case c{TypeParam::correlates, {}, {}, {}, {}, {}, {}, {}, {}};
    for (int k = 0; k < rank; ++k) {
      c.nx.push_back(draw(30, rank == 1 ? 1500 : 50));
      c.ny.push_back(draw(30, rank == 1 ? 1500 : 50));
      c.nz.push_back(draw(1, 20));
      c.step.push_back(draw(1, 3) == 1 ? draw(1, 4) : 1);
      const int low = c.correlates ? 1 - c.nx.back() : 0, last = c.nx.back() + c.ny.back() - 2;
      const int latest = std::max(0, last - (c.nz.back() - 1) * c.step.back());
      if (latest == 0) c.nz.back() = 1;
      c.start.push_back(low + (draw(0, 2) == 0 ? latest : draw(0, latest)));
    }
    c.sx = draw.stride(c.nx, true), c.sy = draw.stride(c.ny, true), c.sz = draw.stride(c.nz, false);
    expect_agreement<TypeParam>(draw, c, round);
  }
}

TYPED_TEST(DirectDrivers, SpreadInfinitiesToTheirOwnSumsOnly) {
  using D = typename TypeParam::D;
  Draw draw(5);
  for (int round = 0; round < 40; ++round) {
    Case c = draw.problem(TypeParam::correlates, 1 + round % 3, round % 3 == 0 ? 90 : 9);
    if (round % 6 == 0) c.nz[0] = std::min(c.nz[0], 5);  // sums of few outputs
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

// Infinities and zeros that meet each other: the sum is the NaN or the infinity that it is in any order.
TYPED_TEST(DirectDrivers, MultiplyInfinitiesLikePlainSums) {
  using D = typename TypeParam::D;
  constexpr D infinity = std::numeric_limits<D>::infinity();
  Draw draw(7);
  for (int round = 0; round < 60; ++round) {
    Case c = draw.problem(TypeParam::correlates, 1 + round % 2, round % 2 == 0 ? 90 : 9);
    if (round % 6 == 0) c.nz[0] = std::min(c.nz[0], 5);
    c.sx = dense(c.nx), c.sy = dense(c.ny), c.sz = dense(c.nz);
    std::vector<D> x = draw.values<D>(c.nx, c.sx), y = draw.values<D>(c.ny, c.sy);
    for (std::vector<D>* v : {&x, &y}) {
      for (const D value : {infinity, -infinity, D(0)}) (*v)[std::size_t(draw(0, int(v->size()) - 1))] = value;
    }
    const auto sums = plain_sums(c, x, y);
    const std::vector<D> z = compute<TypeParam>(c, x, y, true, true);
    for (std::size_t i = 0; i < z.size(); ++i) {
      EXPECT_EQ(std::isnan(z[i]), std::isnan(sums[i].value)) << i << " of " << text(c);
      if (!std::isinf(sums[i].value)) continue;
      EXPECT_EQ(z[i], D(sums[i].value)) << i << " of " << text(c);
    }
  }
}

// ---- codes ----------------------------------------------------------------------------------------------------------

TYPED_TEST(Drivers, ReturnTheFirstCodeThatApplies) {
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

TYPED_TEST(Drivers, RefuseSizesBeyondMemory) {
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
TYPED_TEST(Drivers, ReturnTheirCodeWithoutMemoryAndKeepNothing) {
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

TEST(FourierDriversWithoutDecimation, ExistForTheirNames) {
  const float x[] = {1, 2};
  float z[2] = {7, 7};
  EXPECT_EQ(_wxrConvSSFft1D_nodec(x, 1, x, 1, z, 1, 2, 1, 0, 2), -2000);
  EXPECT_EQ(_wxrCorrDDFft1D_nodec(nullptr, 1, nullptr, 1, nullptr, 1, 2, 3, 0, 4), -2000);
  EXPECT_EQ(_wxrCorrSDFftAll_nodec(1, x, nullptr, nullptr, x, nullptr, nullptr, z, nullptr, nullptr, nullptr), -2000);
  EXPECT_EQ(z[0], 7);
}
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
