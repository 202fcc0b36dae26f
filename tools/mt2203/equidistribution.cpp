#include "equidistribution.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace mt2203 {
namespace {

using NTL::GF2X;

LatticeVector coefficients(const GF2X& p) {
  LatticeVector w(static_cast<std::size_t>(deg(p) + 1));
  for (std::size_t j = 0; j < w.size(); ++j) w[j] = IsOne(coeff(p, static_cast<long>(j))) ? 1 : 0;
  return w;
}

}  // namespace

// With the sequence s of one bit, sum_n s_n t^(-n-1) = numerator / characteristic.
Equidistribution::Equidistribution(std::uint32_t a, const GF2X& characteristic) : characteristic_(characteristic) {
  Generator generator(a);
  for (int k = 0; k < length; ++k) generator.next();
  for (GF2X& b : bit_) b.SetLength(degree);
  for (int n = 0; n < degree; ++n) {
    const std::uint32_t word = generator.next();
    for (int i = 0; i < 32; ++i) bit_[static_cast<std::size_t>(i)][degree - 1 - n] = word >> i & 1;
  }
  for (GF2X& b : bit_) {
    b.normalize();
    b = RightShift(b * characteristic, degree);
  }
}

GF2X Equidistribution::leading_bit(const Tempering& tempering) const {
  GF2X p;
  for (int i = 0; i < 32; ++i) {
    if (tempering.output(31) >> i & 1) p += bit_[static_cast<std::size_t>(i)];
  }
  return p;
}

std::shared_ptr<const Equidistribution::Bits> Equidistribution::bits_over(const GF2X& leading) const {
  const NTL::GF2XModulus modulus(characteristic_);
  const GF2X inverse = InvMod(leading, characteristic_);
  const auto bits = std::make_shared<Bits>();
  for (std::size_t i = 0; i < 32; ++i) (*bits)[i] = coefficients(MulMod(bit_[i], inverse, modulus));
  return bits;
}

LatticeVector Equidistribution::sum(const Bits& bits, std::uint32_t mask) {
  LatticeVector w;
  for (std::size_t i = 0; i < 32; ++i) {
    if (mask >> i & 1) add(w, bits[i]);
  }
  return w;
}

Profile Equidistribution::of(std::uint32_t b, std::uint32_t c) const {
  const Tempering tempering(b, c);
  const auto bits = bits_over(leading_bit(tempering));
  DualLattice lattice(coefficients(characteristic_));
  Profile profile;
  profile.k[1] = degree;
  for (int v = 2; v <= 32; ++v) {
    LatticeVector w = sum(*bits, tempering.output(32 - v));
    lattice.reduce(w);
    lattice.extend(std::move(w));
    profile.k[static_cast<std::size_t>(v)] = lattice.shortest();
    profile.defect += degree / v - lattice.shortest();
  }
  return profile;
}

struct Equidistribution::Node {
  // Smaller is better: a dimension lost now, or the chance of losing some later.
  std::int64_t score() const { return 6 * lattice.coordinates() * defect + lattice.spread(); }

  std::uint32_t b, c, decided;  // `decided`: the bits of b that are
  int defect;
  std::shared_ptr<const Bits> bits;
  DualLattice lattice;
};

// Output bit i meets b_i, c_i and, where c_i is 1, b_(i-15). With x_i the bits of a word after the first shift it is
//   x_i + b_i x_(i-7) + c_i (x_(i-15) + b_(i-15) x_(i-22)) + what is decided,
// so that at most four vectors need reducing for all six choices.
std::optional<Equidistribution::Masks> Equidistribution::best_masks(int beam) const {
  std::vector<Node> nodes, next;
  const LatticeVector multiples = coefficients(characteristic_);
  constexpr std::uint32_t top = 1U << 31, below = 1U << 16;
  for (const auto& [b, c] : {std::pair{0U, 0U}, {top, 0U}, {0U, top}, {top, top}, {below, top}, {top | below, top}}) {
    nodes.push_back({b, c, c != 0 ? top | below : top, 0, bits_over(leading_bit({b, c})), DualLattice(multiples)});
  }
  for (int i = 30; i >= 0; --i) {
    // The dimension to 17 and more bits is 69 to 71 whatever the masks. That costs at least this.
    const int limit = i >= 16 ? family_defect - 381 : family_defect;
    const auto width = static_cast<std::ptrdiff_t>(i >= 16 ? beam : beam / 4);
    next.clear();
    const std::uint32_t one = 1U << i;
    for (const Node& node : nodes) {
      const Tempering now(node.b, node.c);
      const auto reduced = [&](std::uint32_t mask) {
        LatticeVector w = sum(*node.bits, mask);
        node.lattice.reduce(w);
        return w;
      };
      struct Choice {
        std::uint32_t b, c, decided;
        LatticeVector w;
      };
      std::vector<Choice> choices = {{0, 0, 0, reduced(now.output(i))}};
      const auto branch = [&](std::size_t from, const Choice& with) {
        const std::size_t count = choices.size();
        for (std::size_t k = from; k < count; ++k) {
          Choice& other = choices.emplace_back(choices[k]);
          other.b |= with.b;
          other.c |= with.c;
          other.decided |= with.decided;
          add(other.w, with.w);
        }
      };
      if (i >= 7 && (node.decided & one) == 0) {
        choices[0].decided |= one;
        branch(0, {one, 0, 0, reduced(now.first(i - 7))});
      }
      if (i >= 15) {
        const std::size_t without = choices.size();
        const std::uint32_t far = i >= 22 ? one >> 15 : 0;
        const bool open = far != 0 && (node.decided & far) == 0;
        branch(0, {0, one, far, reduced(now.second(i - 15))});
        if (open) branch(without, {far, 0, 0, reduced(now.first(i - 22))});
      }
      for (Choice& choice : choices) {
        Node& grown = next.emplace_back(node);
        grown.b |= choice.b;
        grown.c |= choice.c;
        grown.decided |= choice.decided;
        grown.lattice.extend(std::move(choice.w));
        grown.defect += degree / grown.lattice.coordinates() - grown.lattice.shortest();
        if (grown.defect > limit) next.pop_back();
      }
    }
    std::stable_sort(next.begin(), next.end(), [](const Node& p, const Node& q) { return p.score() < q.score(); });
    if (std::ssize(next) > width) next.erase(next.begin() + width, next.end());
    if (next.empty()) return {};
    nodes.swap(next);
  }
  const Node& best =
      *std::min_element(nodes.begin(), nodes.end(), [](const Node& p, const Node& q) { return p.defect < q.defect; });
  return Masks{best.b, best.c, best.defect};
}

}  // namespace mt2203
