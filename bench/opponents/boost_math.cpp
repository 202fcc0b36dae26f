// Boost.Math's inverse error function, element by element: with its promotion to a wider type, and without.
#include <boost/math/special_functions/erf.hpp>

#include "harness.h"

namespace bench {
namespace {

using Plain = boost::math::policies::policy<boost::math::policies::promote_float<false>,
                                            boost::math::policies::promote_double<false>>;
template <class T, class Policy>
void run(int n, const T* a, const T*, T* r, T*) {
  for (int i = 0; i < n; ++i) r[i] = boost::math::erf_inv(a[i], Policy());
}
const Add here(MathPeer<double>{"ErfInv", "boost promoted", run<double, boost::math::policies::policy<>>},
               MathPeer<float>{"ErfInv", "boost promoted", run<float, boost::math::policies::policy<>>},
               MathPeer<double>{"ErfInv", "boost", run<double, Plain>},
               MathPeer<float>{"ErfInv", "boost", run<float, Plain>});

}  // namespace
}  // namespace bench
