// Everything that may be done from several threads at once, done from eight: each thread does all of it in an order of
// its own and must get the bits that one thread alone gets. `./run threads` runs it under a detector of races, where
// the results are of no interest but every access counts.
#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "qor/qor.h"
#include "rng/engines/engines.def"
#include "support/scratch_file.h"
#include "tfn/functions.def"

namespace {

constexpr int threads = 8, elements = 203;

template <class T>
std::string bytes(const std::vector<T>& v) {
  return {reinterpret_cast<const char*>(v.data()), v.size() * sizeof(T)};
}

template <class T>
const std::vector<T> arguments = [] {
  std::vector<T> v;
  for (int i = 0; i < elements; ++i) v.push_back(static_cast<T>((i - 40) * (i % 7 == 0 ? 1e4 : 0.013)));
  return v;
}();

struct Work {
  std::string name;
  std::function<std::string()> run;  // what it delivers
};

// The callback counts for its own thread alone.
thread_local int reports;
int count_report(TfnErrorContext* context) {
  ++reports;
  context->res1 = context->index;
  return 1;
}

// Half of the arguments are outside most domains.
template <class T, class F>
Work kernel(const char* name, F call, int parts = 1) {
  return {name, [call, parts] {
            std::vector<T> r(elements);
            _tfnSetMode(TFN_ERR_CALLBACK);
            _tfnSetErrorCallBack(count_report);
            _tfnSetErrStatus(0);
            reports = 0;
            call(elements / parts, arguments<T>.data(), r.data());
            const std::vector<int> seen = {reports, _tfnGetErrStatus()};
            _tfnClearErrorCallBack();
            _tfnSetMode(TFN_MODE_DEFAULT);
            return bytes(r) + bytes(seen);
          }};
}

void add_kernels(std::vector<Work>& all) {
#define QOR_KERNEL(Name)                                                \
  all.push_back(kernel<double>("_tfnd" #Name "_HA", _tfnd##Name##_HA)); \
  all.push_back(kernel<float>("_tfns" #Name "_21", _tfns##Name##_21));
#define QOR_KERNEL2(Name) \
  all.push_back(          \
      kernel<double>("_tfnd" #Name "_50", [](int n, const double* a, double* r) { _tfnd##Name##_50(n, a, a, r); }));
#define QOR_COMPLEX(Name)                                            \
  all.push_back(kernel<double>("_tfnz" #Name, _tfnz##Name##_50, 2)); \
  all.push_back(kernel<float>("_tfnc" #Name, _tfnc##Name##_HA, 2));
  TFN_ONE_RESULT(QOR_KERNEL)
  TFN_COMPLEX_ONE_ARGUMENT(QOR_COMPLEX)
  TFN_TWO_ARGUMENTS(QOR_KERNEL2)
}

// A stream of its own: made, drawn from, copied, saved, loaded, deleted.
void add_streams(std::vector<Work>& all) {
#define QOR_ENGINE_BRNG(tag, ...) QOR_BRNG_##tag,
  for (const int brng : {QOR_ENGINES(QOR_ENGINE_BRNG) QOR_BRNG_MT2203 + 77}) {
    if (brng >= QOR_BRNG_IABSTRACT && brng <= QOR_BRNG_SABSTRACT) continue;
    all.push_back({"engine " + std::to_string(brng), [brng] {
                     const bool net = brng == QOR_BRNG_SOBOL || brng == QOR_BRNG_NIEDERR;
                     const unsigned seeds[] = {12, 34};
                     qor_stream *s = nullptr, *copy = nullptr, *loaded = nullptr;
                     std::vector<int> status = {__wxrNewStreamEx(&s, brng, net ? 1 : 2, seeds)};
                     std::vector<double> d(elements);
                     std::vector<int> i(elements);
                     const auto draw = [&](qor_stream* from) {
                       status.push_back(_wxrdRngGaussian(1, from, elements, d.data(), 0, 1));
                       std::string drawn = bytes(d);
                       status.push_back(_wxrdRngGamma(0, from, elements, d.data(), 0.7, 0, 1));
                       status.push_back(_wxriRngPoisson(0, from, elements, i.data(), 3));
                       return drawn + bytes(d) + bytes(i);
                     };
                     std::string drawn = draw(s);
                     const qor::test::ScratchFile file;
                     status.push_back(__wxrCopyStream(&copy, s));
                     status.push_back(__wxrSaveStreamF(s, file.name().c_str(), -1));
                     status.push_back(__wxrLoadStreamF(&loaded, file.name().c_str()));
                     for (qor_stream* each : {s, copy, loaded}) {
                       drawn += draw(each);
                       status.push_back(__wxrDeleteStream(&each));
                     }
                     return drawn + bytes(status);
                   }});
  }
}

// Records are shared: one for all threads.
template <class T>
T sample(int i) {
  const int residue = i % 37;
  return T(residue * residue % 37 - 18);
}
void add_transforms(std::vector<Work>& all) {
  for (const int order : {3, 10, 16}) {
    static qfpsFFTSpec_R_64f* records[17];
    EXPECT_EQ(qfpsFFTInitAlloc_R_64f(&records[order], order, 2, 0), 0);
    all.push_back({"real order " + std::to_string(order), [order] {
                     std::vector<double> x(1u << order);
                     for (int i = 0; i < 1 << order; ++i) x[static_cast<std::size_t>(i)] = sample<double>(i);
                     EXPECT_EQ(qfpsFFTFwd_RToPerm_64f(x.data(), x.data(), records[order], nullptr), 0);
                     return bytes(x);
                   }});
  }
  for (const int length : {60, 1009, 4095}) {
    static qfpsDFTSpec_C_32fc* records[4096];
    EXPECT_EQ(qfpsDFTInitAlloc_C_32fc(&records[length], length, 2, 0), 0);
    all.push_back({"complex length " + std::to_string(length), [length] {
                     std::vector<float> x(2 * static_cast<std::size_t>(length));
                     for (int i = 0; i < 2 * length; ++i) x[static_cast<std::size_t>(i)] = sample<float>(i);
                     EXPECT_EQ(qfpsDFTFwd_CToC_32fc(x.data(), x.data(), records[length], nullptr), 0);
                     return bytes(x);
                   }});
  }
}

// Descriptors too; one is large enough for threads of its own.
void add_descriptors(std::vector<Work>& all) {
  static const std::vector<int> shapes[] = {{12, 10}, {256, 240}, {6, 7, 8}};
  for (const auto& shape : shapes) {
    for (const int domain : {QOR_DFT_COMPLEX, QOR_DFT_REAL}) {
      qor_dft_descriptor* d = nullptr;
      EXPECT_EQ(qor_dft_zx9_create_descriptor_external(&d, QOR_DFT_SINGLE, domain, static_cast<int>(shape.size()),
                                                       shape.data()),
                0);
      EXPECT_EQ(qor_dft_zx9_commit_descriptor_external(d), 0);
      const std::shared_ptr<qor_dft_descriptor> shared(
          d, [](qor_dft_descriptor* last) { EXPECT_EQ(qor_dft_zx9_free_descriptor_external(&last), 0); });
      all.push_back({"descriptor " + std::to_string(domain) + ", " + std::to_string(shape[0]), [shared, &shape] {
                       std::size_t reals = 2;
                       for (const int n : shape) reals *= static_cast<std::size_t>(n + 2);
                       std::vector<float> x(reals);
                       for (std::size_t i = 0; i < reals; ++i) x[i] = sample<float>(static_cast<int>(i % 1000));
                       EXPECT_EQ(qor_dft_zx9_compute_forward_external(shared.get(), x.data(), nullptr), 0);
                       return bytes(x);
                     }});
    }
  }
}

void add_tasks(std::vector<Work>& all) {
  for (const int mode : {1, 2}) {
    all.push_back({"task, mode " + std::to_string(mode), [mode] {
                     const int x_shape[] = {9, 10}, y_shape[] = {8, 20}, z_shape[] = {16, 29};
                     qor_conv_task* task = nullptr;
                     std::vector<float> x(90, 1.5f), y(160, 0.25f), z(16 * 29);
                     EXPECT_EQ(__wxrNewTask(&task, 1, 0, mode, 0, 1, 2, x_shape, y_shape, z_shape), 0);
                     for (int i = 0; i < 2; ++i) {
                       EXPECT_EQ(__wxrExec(task, x.data(), nullptr, y.data(), nullptr, z.data(), nullptr), 0);
                     }
                     EXPECT_EQ(__wxrDeleteTask(&task), 0);
                     return bytes(z);
                   }});
  }
}

void add_others(std::vector<Work>& all) {
  all.push_back({"convolution", [] {
                   std::vector<float> z(300);
                   const float* const x = arguments<float>.data();
                   EXPECT_EQ(_wxrConvSDDirect1D_dec(x, 1, x, -1, z.data(), 1, 101, 200, 0, 300, 1), 0);
                   return bytes(z);
                 }});
  all.push_back({"memory", [] {
                   std::vector<char*> blocks;
                   for (int i = 1; i < 40; ++i) {
                     blocks.push_back(static_cast<char*>(qor_serv_allocate(i * 97)));
                     for (int k = 0; k < i * 97; ++k) blocks.back()[k] = static_cast<char>(i);
                   }
                   bool kept = true;
                   for (int i = 1; i < 40; ++i) {
                     char* const block = blocks[static_cast<std::size_t>(i - 1)];
                     for (int k = 0; k < i * 97; ++k) kept = kept && block[k] == static_cast<char>(i);
                     qor_serv_deallocate(block);
                   }
                   return std::string(kept ? "kept" : "overwritten");
                 }});
}

TEST(Threads, GetWhatOneThreadAloneGets) {
  std::vector<Work> all;
  add_kernels(all);
  add_streams(all);
  add_transforms(all);
  add_descriptors(all);
  add_tasks(all);
  add_others(all);
  // Together first: what is made once is made then.
  std::vector<std::vector<std::string>> results(threads, std::vector<std::string>(all.size()));
  pthread_barrier_t start;
  pthread_barrier_init(&start, nullptr, threads);
  std::vector<std::thread> running;
  for (std::size_t t = 0; t < threads; ++t) {
    running.emplace_back([&, t] {
      pthread_barrier_wait(&start);
      for (std::size_t i = 0; i < all.size(); ++i) {
        const std::size_t at = (i + t * all.size() / threads) % all.size();
        results[t][at] = all[at].run();
      }
    });
  }
  for (std::thread& thread : running) thread.join();
  pthread_barrier_destroy(&start);
  for (std::size_t i = 0; i < all.size(); ++i) {
    const std::string alone = all[i].run();
    for (const auto& result : results) EXPECT_TRUE(result[i] == alone) << all[i].name;
  }
}

}  // namespace
