// The service layer decides once in a process, so every case runs in a child of its own that nothing has touched yet.
#include "qor/service.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <set>
#include <thread>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
#endif

namespace {

using Environment = std::vector<std::pair<const char*, const char*>>;

// f's result, or -1 when the child comes to grief.
template <class F>
int in_fresh_process(const Environment& environment, F f) {
  const pid_t child = fork();
  if (child == 0) {
    for (const char* name : {"QOR_DISABLE_FAST_MM", "QOR_MM_DISABLE", "QOR_MM_NUMA_MODE", "QOR_MM_MAX_THREADS",
                             "OMP_NUM_THREADS", "omp_num_threads", "QOR_SERIAL"}) {
      unsetenv(name);
    }
    for (const auto& [name, value] : environment) setenv(name, value, 1);
    _exit(f());
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
// For cases that are lists of conditions: 0, or the number of the first that fails.
#define REQUIRE(number, condition) \
  if (!(condition)) return number

// Hooks that keep a record.
std::vector<std::size_t> asked;
std::vector<void*> freed;
bool out_of_memory = false;
void* recording_malloc(std::size_t bytes) {
  asked.push_back(bytes);
  return out_of_memory ? nullptr : std::malloc(bytes);
}
void recording_free(void* block) {
  freed.push_back(block);
  std::free(block);
}
void record() {
  i_malloc = recording_malloc;
  i_free = recording_free;
}

TEST(Memory, KeepsABlockForTheThreadThatHadIt) {
  EXPECT_EQ(0, in_fresh_process({}, [] {
              record();
              void* const a = qor_serv_allocate(1000);
              REQUIRE(1, a != nullptr && asked == std::vector<std::size_t>{1200});
              void* const b = qor_serv_allocate(1000);
              REQUIRE(2, b != a && asked.size() == 2);
              qor_serv_deallocate(a);
              qor_serv_deallocate(b);
              REQUIRE(3, freed.empty());
              // The first that is large enough; but one of just the size asked for before all.
              REQUIRE(4, qor_serv_allocate(700) == a);
              qor_serv_deallocate(a);
              void* const c = qor_serv_allocate(1201);
              REQUIRE(5, asked.back() == 1441);
              qor_serv_deallocate(c);
              REQUIRE(6, qor_serv_allocate(1441) == c);
              qor_serv_deallocate(c);
              REQUIRE(7, qor_serv_allocate(1200) == a);
              // Another thread doesn't get it, but may release it.
              void* other = nullptr;
              std::thread([&] {
                other = qor_serv_allocate(1000);
                qor_serv_deallocate(a);
              }).join();
              REQUIRE(8, other != a && other != b && other != c);
              REQUIRE(9, qor_serv_allocate(1000) == a);
              qor_serv_freebuffers();
              REQUIRE(10, std::set<void*>(freed.begin(), freed.end()) == (std::set<void*>{a, b, c, other}));
              return 0;
            }));
}

TEST(Memory, IsPassedThroughWhenSwitchedOffOrOutOfRange) {
  const auto cached = [](int size) {
    return [size] {
      record();
      void* const a = qor_serv_allocate(size);
      const bool as_asked = asked == std::vector<std::size_t>{static_cast<std::size_t>(size)};
      qor_serv_deallocate(a);
      REQUIRE(2, as_asked == (freed == std::vector<void*>{a}));
      return static_cast<int>(freed.empty());
    };
  };
  struct Case {
    Environment environment;
    int size, cached;
  };
  const Case cases[] = {
      {{}, 1000, 1},
      {{{"QOR_DISABLE_FAST_MM", "1"}}, 1000, 0},
      {{{"QOR_DISABLE_FAST_MM", ""}}, 1000, 1},
      {{{"QOR_DISABLE_FAST_MM", ""}, {"QOR_MM_DISABLE", "no"}}, 1000, 0},
      {{{"QOR_MM_DISABLE", ""}}, 1000, 1},
      {{{"QOR_MM_NUMA_MODE", ""}}, 1000, 1},
      {{}, 41943040, 1},
      {{}, 41943041, 0},
      {{}, -1, 0},
  };
  for (const Case& c : cases) EXPECT_EQ(c.cached, in_fresh_process(c.environment, cached(c.size))) << c.size;
}

// Blocks of 12 MiB; 39007027 bytes may stay unused.
TEST(Memory, TrimsFromTheTopUntilLittleEnoughIsUnused) {
  EXPECT_EQ(0, in_fresh_process({{"QOR_MM_MAX_THREADS", "1"}}, [] {
              record();
              std::array<void*, 5> block;
              for (void*& b : block) b = qor_serv_allocate(10 << 20);
              qor_serv_deallocate(block[1]);
              qor_serv_deallocate(block[2]);
              qor_serv_deallocate(block[3]);
              REQUIRE(1, qor_serv_allocate(10 << 20) == block[1] && freed.empty());
              qor_serv_deallocate(block[0]);
              qor_serv_deallocate(block[1]);
              REQUIRE(2, QOR_read_env() == 0);
              void* const next = qor_serv_allocate(13 << 20);  // four are unused, and none large enough
              REQUIRE(3, freed == std::vector<void*>{block[3]});
              // The table was compacted: the last block moved into the gap, and all that is left is found.
              std::set<void*> served;
              for (int i = 0; i < 3; ++i) served.insert(qor_serv_allocate(10 << 20));
              REQUIRE(4, served == (std::set<void*>{block[0], block[1], block[2]}));
              qor_serv_deallocate(block[4]);
              qor_serv_deallocate(next);
              REQUIRE(5, qor_serv_allocate(10 << 20) == block[4] && freed.size() == 1);
              return 0;
            }));
  // As many as the built-in limit allows, 156028108 bytes: twelve of 12 MiB are, thirteen aren't.
  EXPECT_EQ(1, in_fresh_process({{"QOR_MM_MAX_THREADS", "-3"}}, [] {
              record();
              std::array<void*, 13> block;
              for (void*& b : block) b = qor_serv_allocate(10 << 20);
              for (void* b : block) qor_serv_deallocate(b);
              qor_serv_allocate(10 << 20);
              return static_cast<int>(freed.size());
            }));
}

TEST(Memory, HoldsFiveHundredAndTwelveBlocks) {
  EXPECT_EQ(0, in_fresh_process({}, [] {
              record();
              std::array<void*, 512> block;
              for (void*& b : block) b = qor_serv_allocate(100);
              void* const beyond = qor_serv_allocate(100);
              REQUIRE(1, asked.size() == 513 && asked.back() == 120);
              qor_serv_deallocate(beyond);
              REQUIRE(2, freed == std::vector<void*>{beyond});
              qor_serv_deallocate(block[7]);
              qor_serv_deallocate(block[9]);
              void* const a =
                  qor_serv_allocate(100);  // the full table frees an unused block of its top, and has another
              REQUIRE(3, freed.size() == 2 && freed[1] == block[9] && a == block[7]);
              qor_serv_freebuffers();
              REQUIRE(4, freed.size() == 2 + 511);
              return 0;
            }));
}

TEST(Memory, SurvivesAFailingHookAndStrangePointers) {
  EXPECT_EQ(0, in_fresh_process({}, [] {
              record();
              void* const a = qor_serv_allocate(1000);
              out_of_memory = true;
              REQUIRE(1, qor_serv_allocate(2000) == nullptr && qor_serv_allocate(-5) == nullptr);
              qor_serv_deallocate(a);
              REQUIRE(2, qor_serv_allocate(1000) == a);
              out_of_memory = false;
              void* const stranger = std::malloc(10);
              qor_serv_deallocate(stranger);
              qor_serv_deallocate(nullptr);
              REQUIRE(3, freed == (std::vector<void*>{stranger, nullptr}));
              REQUIRE(4, qor_serv_allocate(0) != nullptr);
              return 0;
            }));
}

TEST(Memory, IsSharedByThreads) {
  EXPECT_EQ(0, in_fresh_process({}, [] {
              std::atomic<int> wrong{0};
              std::vector<std::thread> threads;
              for (int t = 0; t < 4; ++t) {
                threads.emplace_back([t, &wrong] {
                  for (int round = 0; round < 3000; ++round) {
                    std::array<unsigned char*, 3> block;
                    for (int k = 0; k < 3; ++k) {
                      const int size = 1 + (round * 37 + k * 1009) % 5000;
                      block[static_cast<std::size_t>(k)] = static_cast<unsigned char*>(qor_serv_allocate(size));
                      std::memset(block[static_cast<std::size_t>(k)], 16 * t + k, static_cast<std::size_t>(size));
                    }
                    for (int k = 0; k < 3; ++k) {
                      wrong += block[static_cast<std::size_t>(k)][0] != 16 * t + k;
                      qor_serv_deallocate(block[static_cast<std::size_t>(k)]);
                    }
                  }
                });
              }
              for (std::thread& t : threads) t.join();
              qor_serv_freebuffers();
              return wrong == 0 ? 0 : 1;
            }));
}

TEST(Serial, IsDecidedByTheEnvironment) {
  struct Case {
    Environment environment;
    int serial;
  };
  const Case cases[] = {
      {{}, 1},
      {{{"QOR_SERIAL", ""}}, 1},
      {{{"QOR_SERIAL", "YES"}}, 1},
      {{{"QOR_SERIAL", "yes"}}, 1},
      {{{"QOR_SERIAL", "Yes"}}, 0},
      {{{"OMP_NUM_THREADS", "2"}}, 0},
      {{{"OMP_NUM_THREADS", ""}}, 1},
      {{{"OMP_NUM_THREADS", ""}, {"omp_num_threads", "2"}}, 1},
      {{{"omp_num_threads", "2"}}, 0},
      {{{"OMP_NUM_THREADS", "2"}, {"QOR_SERIAL", "yes"}}, 1},
      {{{"OMP_NUM_THREADS", "2"}, {"QOR_SERIAL", "YES"}}, 1},
      {{{"OMP_NUM_THREADS", "2"}, {"QOR_SERIAL", "no"}}, 0},
  };
  for (const Case& c : cases) {
    std::string text;
    for (const auto& [name, value] : c.environment) text += std::string(name) + "=" + value + " ";
    EXPECT_EQ(c.serial, in_fresh_process(c.environment, [] { return qor_serv_in_serial(); })) << text;
  }
}

TEST(Serial, IsDecidedOnce) {
  EXPECT_EQ(0, in_fresh_process({}, [] {
              REQUIRE(1, qor_serv_set_parallel() == 0 && std::strcmp(std::getenv("QOR_SERIAL"), "NO") == 0);
              REQUIRE(2, qor_serv_in_serial() == 0);
              REQUIRE(3, qor_serv_set_serial() == 0 && std::strcmp(std::getenv("QOR_SERIAL"), "YES") == 0);
              REQUIRE(4, qor_serv_in_serial() == 0);
              return 0;
            }));
}

// Each lock excludes other threads from a counter that is not atomic.
TEST(Locks, Exclude) {
  using Act = void (*)();
  for (const auto& [lock, unlock] : {std::pair<Act, Act>{qor_serv_lock, qor_serv_unlock},
                                     std::pair<Act, Act>{qor_serv_dft_lock, qor_serv_dft_unlock}}) {
    volatile int count = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
      threads.emplace_back([&] {
        for (int i = 0; i < 20000; ++i) {
          lock();
          count = count + 1;
          unlock();
        }
      });
    }
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(count, 60000);
  }
  qor_serv_lock();
  qor_serv_dft_lock();  // they are two
  qor_serv_dft_unlock();
  qor_serv_unlock();
}

TEST(Service, SaysWhoAndWhat) {
  EXPECT_EQ(QOR_ThreadID(), pthread_self());
  EXPECT_EQ(dll_cpu_version(), 4);
}

}  // namespace
