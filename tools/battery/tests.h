// Classical tests with known null distributions, of numbers given as their first 32 bits.
#pragma once

#include "words.h"

namespace battery {

struct Outcome {
  double log_p;        // decimal logarithm of the p-value
  std::string figure;  // what was found
};

// The linear complexity of n bits, a bit of each word: bit 31 is the numbers' first. By NTL's minimal polynomial of the
// sequence, which tells complexities up to n / 2. One-sided: low ones are judged.
Outcome linear_complexity(Words& words, int n, int bit = 31);

// The rank over two elements of matrices whose rows are successive first bits. One matrix: one-sided, its rank. More:
// how many have full rank, one less, and less than that, by chi-square.
Outcome matrix_rank(Words& words, int order, int matrices);

// Birthday spacings (G. Marsaglia, 1985; P. L'Ecuyer and R. Simard, Math. Comput. Simul. 55, 2001): n points in
// 2^(dimension * bits) cells, by the first bits of their coordinates. Spacings of the sorted points that occur again
// are Poisson of mean n^3 / (4 cells). The counts of `repetitions` are added up.
Outcome birthday_spacings(Words& words, int n, int dimension, int bits, int repetitions);

// Collisions of n points in 2^(dimension * bits) cells: Poisson for n much less than that (D. E. Knuth, 3.3.2).
Outcome collisions(Words& words, int n, int dimension, int bits);

// Lengths of the gaps between numbers below 2^-level (D. E. Knuth, 3.3.2): chi-square over each length that is expected
// ten times or more, and the rest.
Outcome gaps(Words& words, int n, int level);

}  // namespace battery
