// The processes of a job: those of MPI where it is compiled in (QOR_MPI), otherwise processes of this machine, --ranks N
// of them, that send what they have through pipes. The program is the same.
#pragma once

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#ifdef QOR_MPI
#include <mpi.h>

class Ranks {
 public:
  Ranks(int& argc, char**& argv) {
    MPI_Init(&argc, &argv);
    MPI_Comm_rank(MPI_COMM_WORLD, &rank_);
    MPI_Comm_size(MPI_COMM_WORLD, &count_);
  }
  ~Ranks() { MPI_Finalize(); }
  Ranks(const Ranks&) = delete;
  Ranks& operator=(const Ranks&) = delete;
  int rank() const { return rank_; }
  int count() const { return count_; }
  // What every rank has, at rank 0, in the order of the ranks; nothing elsewhere.
  std::vector<std::vector<double>> gather(const std::vector<double>& mine) const {
    const int n = static_cast<int>(mine.size());
    std::vector<int> sizes(rank_ == 0 ? static_cast<std::size_t>(count_) : 0), places(sizes.size());
    MPI_Gather(&n, 1, MPI_INT, sizes.data(), 1, MPI_INT, 0, MPI_COMM_WORLD);
    int total = 0;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
      places[i] = total;
      total += sizes[i];
    }
    std::vector<double> all(static_cast<std::size_t>(total));
    MPI_Gatherv(mine.data(), n, MPI_DOUBLE, all.data(), sizes.data(), places.data(), MPI_DOUBLE, 0, MPI_COMM_WORLD);
    std::vector<std::vector<double>> parts;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
      parts.emplace_back(all.begin() + places[i], all.begin() + places[i] + sizes[i]);
    }
    return parts;
  }

 private:
  int rank_ = 0, count_ = 1;
};

#else
#include <sys/wait.h>
#include <unistd.h>

class Ranks {
 public:
  Ranks(int& argc, char**& argv) {
    if (argc > 2 && std::string(argv[1]) == "--ranks") {
      count_ = std::atoi(argv[2]);
      argc -= 2;
      argv += 2;
    }
    if (count_ < 1 || count_ > 256) {
      std::fprintf(stderr, "--ranks needs a number from 1 to 256\n");
      std::exit(2);
    }
    for (int i = 1; i < count_ && rank_ == 0; ++i) {
      int ends[2];
      if (pipe(ends) != 0) stop("pipe");
      const pid_t child = fork();
      if (child < 0) stop("fork");
      if (child == 0) {
        rank_ = i;
        for (const int inherited : pipes_) close(inherited);
        pipes_.assign(1, ends[1]);
      } else {
        pipes_.push_back(ends[0]);
      }
      close(child == 0 ? ends[0] : ends[1]);
    }
  }
  ~Ranks() {
    for (const int end : pipes_) close(end);
    if (rank_ != 0) return;
    for (int status; wait(&status) > 0;) {
    }
  }
  Ranks(const Ranks&) = delete;
  Ranks& operator=(const Ranks&) = delete;
  int rank() const { return rank_; }
  int count() const { return count_; }
  std::vector<std::vector<double>> gather(const std::vector<double>& mine) const {
    if (rank_ != 0) {
      const std::size_t n = mine.size();
      transfer(write, &n, sizeof n, 0);
      transfer(write, mine.data(), n * sizeof(double), 0);
      return {};
    }
    std::vector<std::vector<double>> parts = {mine};
    for (std::size_t i = 0; i < pipes_.size(); ++i) {
      std::size_t n = 0;
      transfer(read, &n, sizeof n, i);
      std::vector<double> part(n);
      transfer(read, part.data(), n * sizeof(double), i);
      parts.push_back(part);
    }
    return parts;
  }

 private:
  [[noreturn]] static void stop(const char* what) {
    std::perror(what);
    std::exit(1);
  }
  // All of n bytes by read or write.
  template <class F, class T>
  void transfer(F f, T* data, std::size_t n, std::size_t which) const {
    auto* at = reinterpret_cast<std::conditional_t<std::is_const_v<T>, const char*, char*>>(data);
    while (n > 0) {
      const ssize_t done = f(pipes_[which], const_cast<char*>(at), n);
      if (done <= 0) stop("a rank is gone");
      at += done;
      n -= static_cast<std::size_t>(done);
    }
  }
  int rank_ = 0, count_ = 1;
  std::vector<int> pipes_;  // of rank 0 an end for each other one, of those their own
};
#endif
