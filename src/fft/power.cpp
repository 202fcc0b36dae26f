#include "fft/power.h"

namespace qor::fft {
namespace {

// Orders of the radices of the passes, by precision; found by measuring. The rows of a large transform lie on the same
// few lines of the caches, so it begins and ends with radix 8.
template <class T>
constexpr const char* passes[] = {"34", "35", "54", "55", "344", "3333", "3343", "3353"};
template <>
constexpr const char* passes<float>[] = {"34", "35", "45", "55", "344", "354", "3343", "3443"};
constexpr int least_order = 7;

}  // namespace

template <class T>
const typename Power<T>::Kernels& Power<T>::kernels(int radix_order) {
#define QOR_FFT_KERNELS(A, B)                                                               \
  {                                                                                         \
    {{first_of_two_steps<A, B, V, false, false>, first_of_two_steps<A, B, V, false, true>}, \
     {first_of_two_steps<A, B, V, true, false>, first_of_two_steps<A, B, V, true, true>}},  \
        {later_pass<A, B, V, false>, later_pass<A, B, V, true>},                            \
  }
  static constexpr Kernels all[] = {QOR_FFT_KERNELS(2, 4), QOR_FFT_KERNELS(4, 4), QOR_FFT_KERNELS(4, 8)};
#undef QOR_FFT_KERNELS
  return all[radix_order - 3];
}

template <class T>
const typename Power<T>::Wholes* Power<T>::whole(int order) {
#define QOR_FFT_WHOLE(A, B)                                                            \
  {                                                                                    \
    {whole_transform<A, B, V, false, false>, whole_transform<A, B, V, false, true>},   \
        {whole_transform<A, B, V, true, false>, whole_transform<A, B, V, true, true>}, \
  }
  static constexpr Wholes all[] = {QOR_FFT_WHOLE(4, 2), QOR_FFT_WHOLE(4, 4), QOR_FFT_WHOLE(8, 4), QOR_FFT_WHOLE(8, 8)};
#undef QOR_FFT_WHOLE
  return order >= 3 && order <= 6 ? &all[order - 3] : nullptr;
}

template <class T>
int Power<T>::make(int order) {
  order_ = order;
  const char* const digits = passes<T>[order - least_order];
  int m = 1;
  const int n = 1 << order;
  gap_ = static_cast<std::size_t>(n) * sizeof(T) >= 16384 ? 8 : 0;
  int radix[most_passes];
  for (count_ = 0; digits[count_] != 0; ++count_) radix[count_] = digits[count_] - '0';
  std::size_t total = 0, at[most_passes] = {};
  for (int i = 0; i < count_; ++i) {
    const int r = 1 << radix[i], rows = n / (m * r);
    kernel_[i] = &kernels(radix[i]);
    Step<T>& p = step_[i];
    p.m = m;
    p.in_gap = i > 0 ? gap_ : 0;
    p.rows = {rows, rows, 0};
    if (gap_ != 0 && i + 1 < count_) p.rows = {rows, rows >> radix[i + 1], gap_};
    at[i] = total;
    if (i > 0) total += 4 * static_cast<std::size_t>(m) * static_cast<std::size_t>(r - 1);
    m *= r;
  }
  twiddles_ = Array<T>(total);
  if (!twiddles_) return no_memory;
  for (int i = 1; i < count_; ++i) {
    const int columns = radix[i] == 5 ? 8 : 4;  // of the first step
    if (!fill_twiddles<Packed<V>>(twiddles_.get() + at[i], 1 << radix[i], step_[i].m, columns)) return no_memory;
    step_[i].twiddles = twiddles_.get() + at[i];
  }
  work_ = static_cast<std::size_t>(count_ > 2 ? 2 : 1) * array_size();
  return 0;
}

template <class T>
template <bool Inverse>
void Power<T>::run(const T* src, T* dst, const T& scale, T* work) const {
  T *x = work, *y = work + array_size();
  kernel_[0]->first[Inverse][scale != 1](src, x, scale, step_[0]);
  int i = 1;
  for (; i + 1 < count_; ++i) {
    kernel_[i]->later[Inverse](x, y, step_[i]);
    std::swap(x, y);
  }
  kernel_[i]->later[Inverse](x, dst, step_[i]);
}

template class Power<float>;
template class Power<double>;
template void Power<float>::run<false>(const float*, float*, const float&, float*) const;
template void Power<float>::run<true>(const float*, float*, const float&, float*) const;
template void Power<double>::run<false>(const double*, double*, const double&, double*) const;
template void Power<double>::run<true>(const double*, double*, const double&, double*) const;

}  // namespace qor::fft
