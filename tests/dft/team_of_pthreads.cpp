// The run-time functions behind the library's parallel regions, on POSIX threads and barriers, which helgrind and DRD
// understand; those of GNU's library wait on words of their own, and every access behind them looks like a race.
#include <pthread.h>

#include <vector>

namespace {

struct Team {
  void (*work)(void*);
  void* data;
  int size;
  pthread_barrier_t barrier;
};
struct Member {
  Team* team;
  int rank;
};
thread_local Member self{nullptr, 0};

void* run(void* p) {
  self = *static_cast<Member*>(p);
  self.team->work(self.team->data);
  return nullptr;
}

}  // namespace

extern "C" {
int omp_get_thread_num() { return self.rank; }
int omp_get_num_threads() { return self.team == nullptr ? 1 : self.team->size; }
int omp_get_max_threads() { return 3; }
void GOMP_barrier() { pthread_barrier_wait(&self.team->barrier); }
void GOMP_parallel(void (*work)(void*), void* data, unsigned size, unsigned) {
  Team team{work, data, static_cast<int>(size), {}};
  pthread_barrier_init(&team.barrier, nullptr, size);
  std::vector<Member> members;
  for (int i = 0; i < team.size; ++i) members.push_back({&team, i});
  std::vector<pthread_t> threads(size - 1);
  for (unsigned i = 1; i < size; ++i) pthread_create(&threads[i - 1], nullptr, run, &members[i]);
  run(&members[0]);
  for (const pthread_t t : threads) pthread_join(t, nullptr);
  self = {nullptr, 0};
  pthread_barrier_destroy(&team.barrier);
}
}
