// Convolution tasks executed again, against one that is made, executed for the first time and deleted.
#include <cmath>
#include <cstring>
#include <memory>
#include <random>

#include "harness.h"
#include "qor/conv.h"

namespace bench {
namespace {

// The full result of operands n^rank and m^rank.
template <class T>
struct Job {
  int rank, nx[3], ny[3], nz[3], mode;
  std::vector<T> x, y, z;
  qor_conv_task* kept = nullptr;

  Job(int r, int n, int m, int mode_) : rank(r), mode(mode_) {
    std::size_t sizes[3] = {1, 1, 1};
    for (int k = 0; k < rank; ++k) {
      nx[k] = m, ny[k] = n, nz[k] = n + m - 1;
      const int* const all[] = {nx, ny, nz};
      for (int i = 0; i < 3; ++i) sizes[i] *= static_cast<std::size_t>(all[i][k]);
    }
    std::mt19937 engine(1);
    std::uniform_real_distribution<double> values(-1, 1);
    x.resize(sizes[0]), y.resize(sizes[1]), z.resize(sizes[2]);
    for (T& v : x) v = static_cast<T>(values(engine));
    for (T& v : y) v = static_cast<T>(values(engine));
  }
  ~Job() { __wxrDeleteTask(&kept); }
  void execute(qor_conv_task*& task) {
    if (task == nullptr) {
      __wxrNewTask(&task, QOR_CONV_KIND_CONVOLUTION, 0, mode, 0,
                   sizeof(T) == 4 ? QOR_CONV_PRECISION_SINGLE : QOR_CONV_PRECISION_DOUBLE, rank, nx, ny, nz);
    }
    __wxrExec(task, x.data(), nullptr, y.data(), nullptr, z.data(), nullptr);
  }
};

template <class T>
void add(std::vector<Work>& works, int rank, int n, int m, int mode) {
  const auto job = std::make_shared<Job<T>>(rank, n, m, mode);
  const std::string power = rank == 1 ? "" : std::string("^") + std::to_string(rank);
  const std::string name = std::string("task ") + std::to_string(n) + power + " * " + std::to_string(m) + power +
                           (mode == QOR_CONV_MODE_DIRECT ? ", direct" : "") +
                           (sizeof(T) == 8 ? ", double" : ", single");
  Work work{"tasks", name, static_cast<int>(job->z.size()), {}, {}};
  work.contenders.push_back({"again", 0, true, [job](int) { job->execute(job->kept); }});
  work.contenders.push_back({"first", 0, true, [job](int) {
                               qor_conv_task* fresh = nullptr;
                               job->execute(fresh);
                               __wxrDeleteTask(&fresh);
                             }});
  work.claims.push_back(
      {name, "again", {"first"}, no_limit, mode == QOR_CONV_MODE_DIRECT ? 0 : 1.1, "its first execution"});
  work.check = [job]() -> std::string {
    job->execute(job->kept);
    const std::vector<T> z = job->z;
    job->execute(job->kept);
    return std::memcmp(z.data(), job->z.data(), z.size() * sizeof(T)) == 0 ? "" : "a repetition differs";
  };
  works.push_back(work);
}

}  // namespace

void add_task_rows(std::vector<Work>& works) {
  for (const auto& [n, m] : {std::pair{1000, 1000}, {4096, 512}, {65536, 512}, {65536, 65536}}) {
    add<double>(works, 1, n, m, QOR_CONV_MODE_FFT);
    add<float>(works, 1, n, m, QOR_CONV_MODE_FFT);
  }
  for (const auto& [n, m] : {std::pair{64, 64}, {256, 256}, {512, 31}, {512, 512}, {1024, 1024}}) {
    add<double>(works, 2, n, m, QOR_CONV_MODE_FFT);
    add<float>(works, 2, n, m, QOR_CONV_MODE_FFT);
  }
  add<double>(works, 3, 16, 16, QOR_CONV_MODE_FFT);
  add<double>(works, 3, 48, 48, QOR_CONV_MODE_FFT);
  add<double>(works, 1, 4096, 512, QOR_CONV_MODE_DIRECT);
  add<double>(works, 2, 64, 7, QOR_CONV_MODE_DIRECT);
}

}  // namespace bench
