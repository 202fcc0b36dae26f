// Teams of threads by OpenMP. Compiled without it, everything runs on the calling thread.
#pragma once

#include "base/target.h"

#ifdef _OPENMP
extern "C" {
int omp_get_thread_num(void);
int omp_get_num_threads(void);
int omp_get_max_threads(void);
}
#endif

namespace qor::dft {

struct Team {
  int rank, size;
  // This thread's share of `count` things: [first(count), last(count)).
  int first(int count) const { return static_cast<int>(static_cast<long long>(count) * rank / size); }
  int last(int count) const { return static_cast<int>(static_cast<long long>(count) * (rank + 1) / size); }
  // Waits for all; what they wrote is seen by all.
  void wait() const {
#ifdef _OPENMP
    if (size > 1) {
#pragma omp barrier
    }
#endif
  }
};

#ifdef _OPENMP
inline int most_threads() { return omp_get_max_threads(); }
#else
inline int most_threads() { return 1; }
#endif

// f(team) on up to `threads` threads at once.
template <class F>
void in_parallel([[maybe_unused]] int threads, const F& f) {
#ifdef _OPENMP
  if (threads > 1) {
#pragma omp parallel num_threads(threads)
    f(Team{omp_get_thread_num(), omp_get_num_threads()});
    return;
  }
#endif
  f(Team{0, 1});
}

}  // namespace qor::dft
