// Parameters of distributions as template arguments: in thousandths.
#pragma once

namespace bench {

inline constexpr double thousandth = 1000;

}  // namespace bench
