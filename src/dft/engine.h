// What a committed descriptor computes with: plans of all axes, and the program of each direction.
//
// The spectrum of a real array with an even last length n is made, and taken apart again, with the real values at the
// last frequencies 0 and n/2 as one complex column Z = X(0) + i X(n/2): rows are n/2 complex numbers then, the columns
// go through their transforms together, and X(0)[k] = (Z[k] + conj Z[-k])/2, X(n/2)[k] = (Z[k] - conj Z[-k])/2i.
#pragma once

#include "dft/columns.h"
#include "dft/parallel.h"
#include "dft/program.h"
#include "fft/real.h"

namespace qor::dft {

template <class T>
class Engine {
 public:
  // The status of a commit.
  int make(const Settings& settings);
  template <bool Inverse>
  int compute(const T* in, T* out) const;

 private:
  // What the two directions differ in.
  struct Direction {
    Loop axis[most_dimensions];  // counts are those of complex values, or of columns, but for rows of reals
    Loop batch;
    std::ptrdiff_t offset[2];  // of the arrays that are read and written
    bool temporary = false;    // the work array is one of our own, for a transform at a time
    Program program;
    Nest edge;  // what surrounds the last axis
  };

  int columns_along_last() const { return set_.real() ? folded_ ? last_ / 2 : last_ / 2 + 1 : last_; }
  void find_strides(Direction& d, bool inverse) const;
  int make_plans();
  void make_program(Direction& d, bool inverse);
  Step make_step(const Direction& d, int axis, const int* others, int count, bool batch, bool first,
                 bool inverse) const;
  const fft::Plan<T>& line_of(const Step& s) const { return line_[line_[0].length() != s.along.count]; }
  std::size_t work_of(const Step& step) const;
  int threads() const;

  template <bool Inverse>
  void run(Place<T> start, T scale, Team team, T* work) const;
  template <bool Inverse>
  void run_step(const Step& step, Place<T> start, T scale, int first, int last, T* work) const;
  template <bool Inverse>
  void row(const Step& step, Place<T> at, T scale, T* work) const;
  template <bool Inverse>
  void columns(const Step& step, Place<T> at, int count, bool patched, T scale, T* work) const;
  void fold(Place<T> start, Team team) const;
  void unfold(Place<T> start, Team team) const;

  Settings set_;
  int last_ = 0;        // length of the last axis
  bool plain_ = false;  // no columns: one axis only
  bool folded_ = false;
  int worth_ = 1;  // threads that the size is worth
  Direction direction_[2];
  std::size_t thread_work_ = 0, temporary_ = 0;  // reals
  fft::Plan<T> line_[2];                         // the second one if the directions have rows of different lengths
  fft::RealPlan<T> real_line_;
  Columns<T> columns_[most_dimensions];
  const Columns<T>* columns_of_[most_dimensions] = {};
};

}  // namespace qor::dft
