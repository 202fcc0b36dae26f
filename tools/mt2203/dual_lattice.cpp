#include "dual_lattice.h"

#include <bit>
#include <utility>

namespace mt2203 {
namespace {

// w += t^shift b
void add_shifted(std::uint32_t* w, const LatticeVector& b, std::size_t shift) {
  const std::uint32_t* const from = b.data();
  std::uint32_t* const to = w + shift;
  const std::size_t n = b.size();
  for (std::size_t i = 0; i < n; ++i) to[i] ^= from[i];
}

}  // namespace

void trim(LatticeVector& w) {
  while (!w.empty() && w.back() == 0) w.pop_back();
}

void add(LatticeVector& w, const LatticeVector& other) {
  if (w.size() < other.size()) w.resize(other.size());
  for (std::size_t i = 0; i < other.size(); ++i) w[i] ^= other[i];
  trim(w);
}

DualLattice::DualLattice(LatticeVector characteristic) : basis_{{std::move(characteristic), 1}} {}

std::int64_t DualLattice::spread() const {
  std::int64_t sum = 0;
  for (const Element& b : basis_) {
    const auto d = static_cast<std::int64_t>(b.w.size()) - 1;
    sum += d * d;
  }
  return sum;
}

void DualLattice::reduce(LatticeVector& w) const {
  for (std::size_t size = w.size(); size >= basis_.front().w.size(); --size) {
    for (const Element& b : basis_) {
      if (b.w.size() > size) break;
      if (w[size - 1] & b.pivot) add_shifted(w.data(), b.w, size - b.w.size());
    }
  }
  trim(w);
}

// The vector without a place goes down as far as the shorter ones take it. When its last word then has the pivot of a
// longer one, it takes that one's place, which goes on in its stead: the degrees fall until only the new coordinate is
// left in the last word. The first such pivot keeps the order of the pivots as it is.
void DualLattice::extend(LatticeVector w) {
  const std::uint32_t fresh = 1U << coordinates();
  if (w.empty()) w.push_back(0);
  w[0] |= fresh;
  for (;;) {
    std::size_t place = 0;  // behind all that are no longer
    for (;;) {
      for (place = 0; place < basis_.size() && basis_[place].w.size() <= w.size(); ++place) {
        const Element& b = basis_[place];
        if (w.back() & b.pivot) add_shifted(w.data(), b.w, w.size() - b.w.size());
      }
      if (w.back() != 0) break;
      trim(w);
    }
    std::size_t replaced = place;
    while (replaced < basis_.size() && (w.back() & basis_[replaced].pivot) == 0) ++replaced;
    const std::uint32_t pivot = replaced < basis_.size() ? basis_[replaced].pivot : fresh;
    for (std::size_t k = place; k < replaced; ++k) {
      LatticeVector& longer = basis_[k].w;
      if (longer.back() & pivot) add_shifted(longer.data(), w, longer.size() - w.size());
    }
    Element element{std::move(w), pivot};
    if (replaced == basis_.size()) {
      basis_.insert(basis_.begin() + static_cast<std::ptrdiff_t>(place), std::move(element));
      return;
    }
    w = std::move(basis_[replaced].w);
    basis_.erase(basis_.begin() + static_cast<std::ptrdiff_t>(replaced));
    basis_.insert(basis_.begin() + static_cast<std::ptrdiff_t>(place), std::move(element));
  }
}

}  // namespace mt2203
