// Descriptors with any settings at all, sensible and mad. What commits is computed on arrays that hold just the elements
// that its strides name, so that the sanitizer sees every other access; forward and backward with a scale of one over
// the number of points must bring the signal back.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "fuzz/reader.h"
#include "qor/dft.h"

namespace {

using qor::test::Reader;
using qor::test::require;

constexpr long long largest_array = 1 << 16;  // elements

int get(const qor_dft_descriptor* d, int parameter) {
  int value = 0;
  qor_dft_zx9_get_value_external(d, parameter, &value);
  return value;
}

// One array of a descriptor: how far its elements reach, and where they are.
struct Array {
  std::vector<int> counts, strides;  // by dimension, the transforms last
  long long first = 0, last = 0;
  std::size_t element;

  Array(const qor_dft_descriptor* d, bool spectrum, const int* lengths, int rank) : counts(lengths, lengths + rank) {
    const bool real = get(d, QOR_DFT_DOMAIN) == QOR_DFT_REAL, single = get(d, QOR_DFT_PRECISION) == QOR_DFT_SINGLE;
    const int format = get(d, QOR_DFT_PACKED_FORMAT);
    const bool reals = real && (!spectrum || format != QOR_DFT_HALF_SPECTRUM);
    element = (single ? sizeof(float) : sizeof(double)) * (reals ? 1 : 2);
    if (spectrum && real && format == QOR_DFT_HALF_SPECTRUM) counts.back() = counts.back() / 2 + 1;
    if (spectrum && real && format == QOR_DFT_CCS) {
      for (int& n : counts) n += 2 - n % 2;
    }
    strides.resize(static_cast<std::size_t>(rank) + 1);
    qor_dft_zx9_get_value_external(d, spectrum ? QOR_DFT_SPECTRUM_STRIDES : QOR_DFT_SIGNAL_STRIDES, strides.data());
    first = last = strides[0];
    strides.erase(strides.begin());
    strides.push_back(get(d, spectrum ? QOR_DFT_SPECTRUM_DISTANCE : QOR_DFT_SIGNAL_DISTANCE));
    counts.push_back(get(d, QOR_DFT_TRANSFORMS));
    for (std::size_t i = 0; i < counts.size(); ++i) {
      const long long reach = static_cast<long long>(counts[i] - 1) * strides[i];
      (reach < 0 ? first : last) += reach;
    }
  }
  // In bytes.
  long long begin() const { return first * static_cast<long long>(element); }
  long long end() const { return (last + 1) * static_cast<long long>(element); }
  // Calls f with the byte offset of every element.
  template <class F>
  void each(long long origin, F f) const {
    std::vector<int> at(counts.size());
    for (;;) {
      long long offset = origin;
      for (std::size_t i = 0; i < at.size(); ++i) offset += static_cast<long long>(at[i]) * strides[i];
      f(offset * static_cast<long long>(element));
      std::size_t i = 0;
      for (; i < at.size() && ++at[i] == counts[i]; ++i) at[i] = 0;
      if (i == at.size()) return;
    }
  }
};

// The bytes from begin to end of an array whose element 0 is at `origin`.
struct Memory {
  explicit Memory(long long begin, long long end)
      : bytes(static_cast<char*>(std::malloc(static_cast<std::size_t>(end - begin)))), origin(bytes - begin) {}
  ~Memory() { std::free(bytes); }
  Memory(const Memory&) = delete;
  Memory& operator=(const Memory&) = delete;
  char *bytes, *origin;
};

template <class T>
void round_trip(const qor_dft_descriptor* d, const Array& signal, const Array& spectrum, int offset) {
  const bool apart = get(d, QOR_DFT_PLACEMENT) == QOR_DFT_OUT_OF_PLACE;
  const long long begin = apart ? signal.begin() : std::min(signal.begin(), spectrum.begin());
  const long long end = apart ? signal.end() : std::max(signal.end(), spectrum.end());
  Memory x(begin, end), y(spectrum.begin(), spectrum.end());
  const int values = static_cast<int>(signal.element / sizeof(T));
  std::vector<T> wanted;
  const auto put = [&](long long at) {
    for (int i = 0; i < values; ++i) {
      const T v = T(static_cast<int>(wanted.size() * 7919 % 257) - 128);
      std::memcpy(x.origin + at + i * static_cast<int>(sizeof v), &v, sizeof v);
      wanted.push_back(v);
    }
  };
  std::fill(x.bytes, x.bytes + (end - begin), char(0x55));
  signal.each(offset, put);
  void* const out = apart ? y.origin : nullptr;
  require(qor_dft_zx9_compute_forward_external(d, x.origin, out) == 0, "what is committed computes");
  require(qor_dft_zx9_compute_backward_external(d, apart ? out : x.origin, apart ? x.origin : nullptr) == 0,
          "what is committed computes backward");
  std::size_t at = 0;
  const double allowed = sizeof(T) == 4 ? 0.01 : 1e-10;
  signal.each(offset, [&](long long where) {
    for (int i = 0; i < values; ++i, ++at) {
      T v;
      std::memcpy(&v, x.origin + where + i * static_cast<int>(sizeof v), sizeof v);
      require(std::fabs(v - wanted[at]) < allowed, "the signal comes back");
    }
  });
}

void compute(const qor_dft_descriptor* d, const int* lengths, int rank) {
  const Array signal(d, false, lengths, rank), spectrum(d, true, lengths, rank);
  const long long reach = std::max(signal.last, spectrum.last) - std::min(signal.first, spectrum.first);
  if (reach > largest_array) return;
  std::vector<int> strides(static_cast<std::size_t>(rank) + 1);
  qor_dft_zx9_get_value_external(d, QOR_DFT_SIGNAL_STRIDES, strides.data());
  if (get(d, QOR_DFT_PRECISION) == QOR_DFT_SINGLE) {
    round_trip<float>(d, signal, spectrum, strides[0]);
  } else {
    round_trip<double>(d, signal, spectrum, strides[0]);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
  Reader reader(bytes, length);
  const int rank = reader.below(12) == 0 ? reader.within(20) : 1 + reader.below(3) + reader.below(2) * reader.below(5);
  int lengths[32] = {};
  long long points = 1;
  for (int i = 0; i < std::clamp(rank, 0, 32); ++i) {
    lengths[i] = reader.below(30) == 0 ? reader.take<int>() : 1 + reader.below(rank > 2 ? 7 : 70);
    points *= std::clamp(lengths[i], 1, 1 << 20);
    if (points > largest_array) return 0;  // the tables of long transforms are other tests' business
  }
  qor_dft_descriptor* d = nullptr;
  const int precision = 36 + reader.below(2), domain = 32 + reader.below(2);
  const int status = qor_dft_zx9_create_descriptor_external(&d, precision, domain, rank, lengths);
  require((status == 0) == (d != nullptr), "a descriptor comes with status 0");
  if (status != 0) return 0;
  const double scale = 1.0 / static_cast<double>(points);
  qor_dft_zx9_set_value_external(d, QOR_DFT_BACKWARD_SCALE, &scale);
  for (int settings = reader.below(8); settings > 0; --settings) {
    union {
      int values[32];
      double number;
    } value{};
    int parameter = reader.below(26);
    switch (parameter) {
      case QOR_DFT_BACKWARD_SCALE:
      case QOR_DFT_FORWARD_SCALE:
        parameter = QOR_DFT_PLACEMENT;
        [[fallthrough]];
      case QOR_DFT_PLACEMENT:
        value.values[0] = QOR_DFT_OUT_OF_PLACE + reader.below(2);
        break;
      case QOR_DFT_SIGNAL_STRIDES:
      case QOR_DFT_SPECTRUM_STRIDES: {
        // Dense in an order of its own, spread a little, some backwards; now and then just anything.
        const bool any = reader.below(8) == 0, upwards = reader.below(2) == 0;
        int stride = 1 + reader.below(3);
        value.values[0] = reader.within(100);
        for (int i = 0; i < rank; ++i) {
          const int dimension = upwards ? i : rank - 1 - i;
          value.values[1 + dimension] = any ? reader.within(300) : reader.below(3) == 0 ? -stride : stride;
          stride = std::min(stride * (lengths[dimension] + 2), 1 << 20) + reader.below(3);
        }
        break;
      }
      case QOR_DFT_CE_STORAGE:
        value.values[0] = QOR_DFT_CE_COMPLEX + reader.below(2);
        break;
      case QOR_DFT_PACKED_FORMAT:
        value.values[0] = QOR_DFT_HALF_SPECTRUM + reader.below(4);
        break;
      case QOR_DFT_TRANSFORMS:
        value.values[0] = 1 + reader.below(6);
        break;
      default:
        value.values[0] = reader.below(3) == 0 ? reader.take<int>() : reader.within(10000);
    }
    qor_dft_zx9_set_value_external(d, parameter, &value);
  }
  const int committed = qor_dft_zx9_commit_descriptor_external(d);
  require(qor_dft_zx9_error_message_external(committed) != nullptr, "every status has a message");
  require((get(d, QOR_DFT_COMMIT_STATUS) == QOR_DFT_COMMITTED) == (committed == 0), "the commit status is true");
  if (committed == 0) {
    compute(d, lengths, rank);
    qor_dft_descriptor* copy = nullptr;
    require(qor_dft_zx9_copy_descriptor_external(d, &copy) == 0, "a committed descriptor can be copied");
    compute(copy, lengths, rank);
    qor_dft_zx9_free_descriptor_external(&copy);
  } else {
    double nothing[4] = {};
    require(qor_dft_zx9_compute_forward_external(d, nothing, nothing + 2) == QOR_DFT_NOT_COMMITTED,
            "an uncommitted descriptor doesn't compute");
  }
  qor_dft_zx9_free_descriptor_external(&d);
  require(d == nullptr, "a freed handle is null");
  return 0;
}
