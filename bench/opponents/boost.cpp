// Boost.Random: the ziggurat normal distribution on its own Mersenne Twister.
#include <boost/random/mersenne_twister.hpp>
#include <boost/random/normal_distribution.hpp>

#include "harness.h"

namespace bench {
namespace {

template <class T>
void normals(int n, T* r) {
  static boost::random::mt19937 engine(1);
  boost::random::normal_distribution<T> normal;
  for (int i = 0; i < n; ++i) r[i] = normal(engine);
}

const Add here{DrawPeer<double>{"Gaussian", "boost ziggurat", false, normals<double>},
               DrawPeer<float>{"Gaussian", "boost ziggurat", false, normals<float>}};

}  // namespace
}  // namespace bench
