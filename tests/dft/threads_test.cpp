// Threads: how many there are, that results don't depend on them, and that descriptors are shared.
#include <pthread.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "dft/drawn.h"
#include "qor/service.h"

namespace {

constexpr int team = 3;

// OpenMP's library and ours read the environment before main: the program starts again with what the tests need.
[[gnu::constructor]] void start_again(int, char** argv, char**) {
  if (getenv("OMP_NUM_THREADS") != nullptr) return;
  setenv("OMP_NUM_THREADS", std::to_string(team).c_str(), 1);
  execv("/proc/self/exe", argv);
}

int threads_now() {
  int count = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) ++count;
  return count;
}

template <class T>
std::vector<T> numbers(std::size_t count) {
  std::vector<T> x(count);
  unsigned word = 1;
  for (T& v : x) v = static_cast<T>((word = word * 69069u + 1u) >> 8) / static_cast<T>(1 << 24) - T(0.5);
  return x;
}

// A descriptor out of place, and the spectrum or signal that it makes of the same numbers each time.
template <class T>
struct Job {
  Job(int domain, const std::vector<int>& n, int limit, int transforms = 1)
      : d(sizeof(T) == 8 ? QOR_DFT_DOUBLE : QOR_DFT_SINGLE, domain, n), size(2 * static_cast<std::size_t>(transforms)) {
    for (const int length : n) size *= static_cast<std::size_t>(length + 2);
    EXPECT_EQ(d.set(QOR_DFT_PLACEMENT, QOR_DFT_OUT_OF_PLACE), 0);
    EXPECT_EQ(d.set(QOR_DFT_THREAD_LIMIT, limit), 0);
    EXPECT_EQ(d.set(QOR_DFT_TRANSFORMS, transforms), 0);
    const int distance = static_cast<int>(size) / 2 / transforms;
    EXPECT_EQ(d.set(QOR_DFT_SIGNAL_DISTANCE, distance), 0);
    EXPECT_EQ(d.set(QOR_DFT_SPECTRUM_DISTANCE, distance), 0);
    EXPECT_EQ(d.commit(), 0);
  }
  std::vector<T> run(bool forward) const {
    std::vector<T> in = numbers<T>(size), out(size, 0);
    EXPECT_EQ(forward ? d.forward(in.data(), out.data()) : d.backward(in.data(), out.data()), 0);
    return out;
  }
  drawn::Descriptor d;
  std::size_t size;
};

// First, since threads stay.
TEST(DftThreads, AreStartedByLargeTransformsAlone) {
  EXPECT_EQ(threads_now(), 1);
  Job<double>(QOR_DFT_COMPLEX, {32, 32}, 0).run(true);
  Job<double>(QOR_DFT_COMPLEX, {256, 256}, 1).run(true);
  EXPECT_EQ(threads_now(), 1);
  Job<double>(QOR_DFT_COMPLEX, {256, 256}, 2).run(true);
  EXPECT_LE(threads_now(), 2);
  Job<double>(QOR_DFT_COMPLEX, {256, 256}, 0).run(true);
  EXPECT_LE(threads_now(), team);
#ifndef THREADS_END_WITH_THEIR_WORK
  EXPECT_EQ(threads_now(), team);
#endif
}

template <class T>
void compare(int domain, const std::vector<int>& n, int transforms) {
  const Job<T> one(domain, n, 1, transforms), many(domain, n, 0, transforms);
  for (const bool forward : {true, false}) {
    EXPECT_EQ(one.run(forward), many.run(forward)) << n[0] << " domain " << domain << (forward ? "" : " backward");
  }
}

TEST(DftThreads, GiveTheSameBitsAsOne) {
  for (const int domain : {QOR_DFT_COMPLEX, QOR_DFT_REAL}) {
    compare<double>(domain, {100, 90, 7}, 3);
    compare<double>(domain, {17, 1000}, 9);
    compare<float>(domain, {513, 250}, 1);
    compare<float>(domain, {97, 41, 31}, 1);
    compare<float>(domain, {16, 30, 8, 33}, 2);
  }
}

TEST(DftThreads, MayShareADescriptor) {
  const Job<double> job(QOR_DFT_REAL, {60, 32, 50}, 0);
  const std::vector<double> forward = job.run(true), backward = job.run(false);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] {
      for (int j = 0; j < 3; ++j) {
        EXPECT_EQ(job.run(i % 2 == 0), i % 2 == 0 ? forward : backward);
      }
    });
  }
  for (std::thread& t : threads) t.join();
}

}  // namespace
