// The two accuracies of a kernel and the error bounds that go with them.
#pragma once

namespace qor::tfn {

enum class Accuracy { high, low };

// Largest error in units in the last place of the exact result, over the whole domain, unless the kernel says otherwise
// beside its formula. Kernel::bound<T> is the figure that the sweeps enforce.
template <class T>
constexpr double default_bound(Accuracy a) {
  if (a == Accuracy::low) return 2.0;
  return sizeof(T) == sizeof(double) ? 0.55 : 0.51;
}

}  // namespace qor::tfn
