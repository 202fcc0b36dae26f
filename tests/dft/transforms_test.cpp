// Transforms of any rank, shape and layout against sums by the definition.
#include "dft/drawn.h"

namespace {

template <class T>
void check_many(unsigned seed, int count) {
  for (unsigned i = 0; i < static_cast<unsigned>(count) && !testing::Test::HasFailure(); ++i) {
    const drawn::Transform<T> t(seed + i);
    const drawn::Descriptor d = t.descriptor();
    t.check(d);
  }
}

TEST(DftTransforms, OfAnyKindInDoubleAreRight) { check_many<double>(1000, 1500); }
TEST(DftTransforms, OfAnyKindInSingleAreRight) { check_many<float>(5000, 1500); }

}  // namespace
