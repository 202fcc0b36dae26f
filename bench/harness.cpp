#include "harness.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>

namespace bench {
namespace {

constexpr double slot_seconds = 0.3e-3;

// Takes the times of the runs in place of a report.
class Collector : public benchmark::BenchmarkReporter {
 public:
  Collector(Times& times, int elements) : times_(times), elements_(elements) {}
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      const std::size_t who = std::strtoul(run.run_name.function_name.c_str(), nullptr, 10);
      times_[who].push_back(1e9 * run.real_accumulated_time / static_cast<double>(run.iterations) / elements_);
    }
  }

 private:
  Times& times_;
  int elements_;
};

double seconds_of(const Contender& contender, int elements, std::int64_t calls) {
  using Clock = std::chrono::steady_clock;
  const auto start = Clock::now();
  for (std::int64_t i = 0; i < calls; ++i) contender.call(elements);
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// Calls that fill a slot. The best of five tries counts: an interruption would otherwise pass for a long call, and
// slots of a few calls would measure the clock.
std::int64_t calls_per_slot(const Contender& contender, int elements) {
  contender.call(elements);
  for (std::int64_t calls = 1;; calls *= 2) {
    double seconds = seconds_of(contender, elements, calls);
    for (int i = 1; i < 5; ++i) seconds = std::min(seconds, seconds_of(contender, elements, calls));
    if (seconds > slot_seconds / 4) {
      return std::max<std::int64_t>(1, static_cast<std::int64_t>(static_cast<double>(calls) * slot_seconds / seconds));
    }
  }
}

}  // namespace

// Each pass over the registered benchmarks runs each of them once, in order: a round.
Times measure(const std::vector<Contender>& contenders, int elements, int rounds) {
  Times times(contenders.size());
  Collector collector(times, elements);
  for (const bool apart : {false, true}) {
    benchmark::ClearRegisteredBenchmarks();
    int registered = 0;
    for (std::size_t i = 0; i < contenders.size(); ++i) {
      const Contender& contender = contenders[i];
      if (contender.apart != apart) continue;
      const auto loop = [&contender, elements](benchmark::State& state) {
        contender.call(elements);  // brings code and data back into the caches
        for (auto _ : state) {
          contender.call(elements);
          benchmark::ClobberMemory();
        }
      };
      benchmark::RegisterBenchmark(std::to_string(i).c_str(), loop)->Iterations(calls_per_slot(contender, elements));
      ++registered;
    }
    for (int round = 0; round < rounds && registered != 0; ++round) {
      benchmark::RunSpecifiedBenchmarks(&collector, "all");
    }
  }
  benchmark::ClearRegisteredBenchmarks();
  return times;
}

double minimum(const std::vector<double>& v) { return *std::min_element(v.begin(), v.end()); }
double median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  const std::size_t half = v.size() / 2;
  return v.size() % 2 != 0 ? v[half] : (v[half - 1] + v[half]) / 2;
}
std::vector<double> ratios(const std::vector<double>& a, const std::vector<double>& b) {
  std::vector<double> r(a.size());
  for (std::size_t i = 0; i < a.size(); ++i) r[i] = a[i] / b[i];
  return r;
}

template <class T>
T* output() {
  static Buffer<T, at_outputs> buffer;
  return buffer.data;
}
template <class T>
T* second_output() {
  static Buffer<T, at_second_outputs> buffer;
  return buffer.data;
}
template double* output<double>();
template float* output<float>();
template std::uint32_t* output<std::uint32_t>();
template std::uint64_t* output<std::uint64_t>();
template WideWord* output<WideWord>();
template double* second_output<double>();
template float* second_output<float>();

}  // namespace bench
