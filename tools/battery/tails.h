// Tails of the null distributions, as decimal logarithms: those of witnesses are far below what a double holds.
#pragma once

namespace battery {

// Two-sided: twice the smaller tail, 1 at most.
double log_poisson(double mean, long long count);
double log_chi_square(double freedom, double x);

// A random square matrix of bits of this order has such a rank or a lower one.
double log_rank(int order, int rank);
// A random sequence of n bits has such a linear complexity or a lower one; beyond n / 2: 0.
double log_complexity(int n, int complexity);

}  // namespace battery
