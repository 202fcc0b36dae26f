// Gaussian variates of mean 0 and deviation 1 from MT19937, 10000 a call.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "harness.h"
#include "qor/rng.h"

namespace bench {
namespace {

void draw(qor_stream* s, int method, int n, double* r) { _wxrdRngGaussian(method, s, n, r, 0, 1); }
void draw(qor_stream* s, int method, int n, float* r) { _wxrsRngGaussian(method, s, n, r, 0, 1); }

// A contender whose numbers aren't standard normal would be none: mean, deviation and fourth moment of a million. The
// output starts as zeros, so that one that writes nothing is noticed too.
template <class T>
std::string check(const std::vector<Contender>& contenders) {
  for (const Contender& contender : contenders) {
    double first = 0, second = 0, fourth = 0;
    constexpr int n = 10000, calls = 100;
    std::fill_n(output<T>(), n, T(0));
    for (int k = 0; k < calls; ++k) {
      contender.call(n);
      for (int i = 0; i < n; ++i) {
        const double x = output<T>()[i];
        first += x, second += x * x, fourth += x * x * x * x;
      }
    }
    constexpr double count = 1.0 * n * calls;  // tolerances: six deviations
    if (!(std::abs(first / count) < 0.006 && std::abs(second / count - 1) < 0.0085 &&
          std::abs(fourth / count - 3) < 0.06)) {
      return contender.name + " makes no standard normal numbers";
    }
  }
  return {};
}

struct Target {
  const char* opponent;
  double ratio;
};

template <class T>
void add(std::vector<Work>& works, int method, const char* precision, const std::vector<Target>& targets) {
  const std::string name = method == 0 ? "Gaussian 0" : "Gaussian 1";
  Work work{"distributions", name + " " + precision, 10000, {}, {}};
  const auto ours = [method, stream = static_cast<qor_stream*>(nullptr)](int n) mutable {
    if (stream == nullptr) __wxrNewStreamEx(&stream, QOR_BRNG_MT19937, 0, nullptr);
    draw(stream, method, n, output<T>());
  };
  work.contenders.push_back({"qor", 0, true, ours});
  for (const DrawPeer<T>& peer : draw_peers<T>()) {
    if (peer.work != name && std::strcmp(peer.work, "Gaussian") != 0) continue;
    work.contenders.push_back({peer.name, 0, false, [peer](int n) { peer.run(n, output<T>()); }});
  }
  for (const Target& t : targets) work.claims.push_back({work.name, "qor", {t.opponent}, no_limit, t.ratio, ""});
  if (method == 0) {
    work.claims.push_back({work.name, "qor", {"dSFMT + sleef u35, sines only"}, no_limit, 0, "the same method"});
  }
  work.claims.push_back({work.name, "qor", {}, no_limit, 0, "all"});
  work.check = [all = work.contenders] { return check<T>(all); };
  works.push_back(work);
}

}  // namespace

void add_distribution_rows(std::vector<Work>& works) {
  add<double>(works, 0, "double", {{"boost ziggurat", 0.7}, {"std", 4}});
  add<double>(works, 1, "double", {{"boost ziggurat", 1.1}, {"std", 4}});
  for (const int method : {0, 1}) add<float>(works, method, "single", {{"dSFMT + sleef u35", 1.2}});
}

}  // namespace bench
