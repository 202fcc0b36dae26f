// Runs dieharder (R. G. Brown) on an engine's words.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "results.h"

namespace battery {

// Its sound tests, one after another, each on words of its own; `all`: everything it has, on one stream. A line of its
// table is a result. It prints eight decimals, so a p-value of 0 or 1 there means no more than 5e-9: such a test is run
// again on other words, and fails when that gives the same.
std::vector<Result> dieharder(const std::string& subject, bool all,
                              const std::function<void(const std::string&)>& progress);

}  // namespace battery
