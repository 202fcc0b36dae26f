// The commands' programs, a file each or two.
#pragma once

#include <span>
#include <string>

namespace cli {

int run_random(std::span<const std::string> arguments);
std::string list_of_distributions();
int run_engines(std::span<const std::string> arguments);
std::string list_of_functions();
int run_math(std::span<const std::string> arguments);
int run_fft(std::span<const std::string> arguments);
int run_convolve(std::span<const std::string> arguments);
int run_bench(std::span<const std::string> arguments);
int run_selftest(std::span<const std::string> arguments);

}  // namespace cli
