// The lattice of relations between the leading v bits of a generator's output, over the polynomials of GF(2), by a
// reduced basis. A vector (h_0, ..., h_{v-1}) of polynomials belongs to it when sum_i h_i(shift) y_i = 0, y_i the
// sequence of output bit i. Its shortest vector's degree is the dimension of equidistribution to v bits. (R. Couture
// and P. L'Ecuyer, Math. Comp. 69, 2000; A. K. Lenstra, J. Comput. Syst. Sci. 30, 1985.)
#pragma once

#include <cstdint>
#include <vector>

namespace mt2203 {

// Word j holds the coefficients of t^j of all coordinates, bit i that of h_i. The last word is not 0.
using LatticeVector = std::vector<std::uint32_t>;

void trim(LatticeVector& w);
void add(LatticeVector& w, const LatticeVector& other);

class DualLattice {
 public:
  // One coordinate: the multiples of the characteristic polynomial.
  explicit DualLattice(LatticeVector characteristic);

  int coordinates() const { return static_cast<int>(basis_.size()); }
  int shortest() const { return static_cast<int>(basis_.front().w.size()) - 1; }

  // The sum of the squared degrees: the smaller, the more evenly the coordinates to come find the degrees spread.
  std::int64_t spread() const;

  // Brings w into the one form that all vectors of its class modulo the lattice share.
  void reduce(LatticeVector& w) const;

  // Adds a coordinate whose sequence equals that of the reduced vector w.
  void extend(LatticeVector w);

 private:
  // By degree. The pivot is one bit of the last word, which the vectors after this one don't have in theirs: so the
  // last words are linearly independent, and the basis is reduced.
  struct Element {
    LatticeVector w;
    std::uint32_t pivot;
  };
  std::vector<Element> basis_;
};

}  // namespace mt2203
