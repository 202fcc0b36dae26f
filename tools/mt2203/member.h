// The family's recurrence, its members' three parameters, and which words are tried for matA.
#pragma once

#include <array>
#include <cstdint>

namespace mt2203 {

constexpr int length = 69, middle = 34, low_bits = 5;  // x[k+69] = x[k+34] xor (upper x[k] | lower x[k+1]) A
constexpr int degree = 32 * length - low_bits;         // 2203; 2^2203 - 1 is prime
constexpr int members = 1024;
constexpr int family_defect = 706;  // the largest total defect among the four rows below: no member has more

struct Row {
  int member;
  std::uint32_t a, b, c;  // matA, maskB, maskC
};

// Members whose parameters are fixed for good.
constexpr std::array<Row, 4> given = {{{0, 0xAF81055F, 0xDD7EEF80, 0xEFD78000},
                                       {1, 0x832604E1, 0x66AD7F80, 0xEBD58000},
                                       {2, 0x92F70739, 0x656D7780, 0xEFC50000},
                                       {1023, 0xE1B6093F, 0x9D326E80, 0xEFD58000}}};

// Candidate number `attempt` of a member: odd, top bit set, bits 12 to 15 clear. The 26 free bits are a permutation of
// (attempt, member), so that no two members ever try the same word, and each has 2^16 to try, some 160 of them
// irreducible. Distinct words have distinct characteristic polynomials.
constexpr int attempts = 1 << 16;
constexpr std::uint32_t candidate(int member, int attempt) {
  constexpr std::uint32_t mask = (1U << 26) - 1;
  std::uint32_t x = static_cast<std::uint32_t>(attempt) << 10 | static_cast<std::uint32_t>(member);
  for (const std::uint32_t odd : {0x2545F49U, 0x1D8E4E3U, 0x3B9AC9FU}) {  // each step is invertible modulo 2^26
    x = (x * odd + 0x1234567U) & mask;
    x ^= x >> 13;
  }
  return 0x80000001U | (x & 0x7FF) << 1 | (x >> 11) << 16;
}

// A state that runs: the words follow each other whatever they start from.
class Generator {
 public:
  explicit Generator(std::uint32_t a) : a_(a) {
    for (std::uint32_t i = 1; i < length; ++i) x_[i] = 1812433253U * (x_[i - 1] ^ (x_[i - 1] >> 30)) + i;
  }
  std::uint32_t next() {
    constexpr std::uint32_t lower = (1U << low_bits) - 1;
    const int k = at_;
    const std::uint32_t y = (x_[k] & ~lower) | (x_[(k + 1) % length] & lower);
    at_ = (k + 1) % length;
    return x_[k] = x_[(k + middle) % length] ^ (y >> 1) ^ (y % 2 != 0 ? a_ : 0);
  }

 private:
  std::uint32_t a_, x_[length] = {19650218};
  int at_ = 0;
};

// Tempering as masks over an untempered word's bits: output bit i is the parity of the word and a mask. A bit of maskB
// below 7 and of maskC below 15 is 0.
class Tempering {
 public:
  constexpr Tempering(std::uint32_t b, std::uint32_t c) : b_(b), c_(c) {}
  constexpr std::uint32_t first(int i) const { return bit(i) | bit(i + 12); }
  constexpr std::uint32_t second(int i) const { return first(i) ^ (b_ >> i & 1 ? first(i - 7) : 0); }
  constexpr std::uint32_t third(int i) const { return second(i) ^ (c_ >> i & 1 ? second(i - 15) : 0); }
  constexpr std::uint32_t output(int i) const { return third(i) ^ (i + 18 < 32 ? third(i + 18) : 0); }

 private:
  static constexpr std::uint32_t bit(int i) { return i < 32 ? 1U << i : 0; }
  std::uint32_t b_, c_;
};

}  // namespace mt2203
