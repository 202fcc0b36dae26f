// The two accuracies of a kernel and the error bounds that go with them.
#pragma once

namespace qor::tfn {

enum class Accuracy { high, low };

// Largest error in units in the last place of the exact result, over the whole domain; the sweeps enforce these
// figures.
template <class T>
constexpr double max_ulp(Accuracy a) {
  if (a == Accuracy::low) return 2.0;
  return sizeof(T) == sizeof(double) ? 0.55 : 0.51;
}

}  // namespace qor::tfn
