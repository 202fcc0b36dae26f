// What a descriptor is set to, the defaults that follow from it, and whether it makes sense.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "fft/packing.h"
#include "qor/dft.h"

namespace qor::dft {

inline constexpr int most_dimensions = 7;

// A few things, sorted where they are.
template <class X, class Less>
void sort_few(X* x, int count, Less less) {
  for (int i = 1; i < count; ++i) {
    for (int j = i; j > 0 && less(x[j], x[j - 1]); --j) std::swap(x[j], x[j - 1]);
  }
}

// Strides and distance of one of the two arrays, in its elements.
struct Layout {
  bool given = false;                    // the strides
  int stride[most_dimensions + 1] = {};  // the offset first
  int distance = 0;                      // 0: not given
};

struct Settings {
  int precision = 0, domain = 0, rank = 0;
  int length[most_dimensions] = {};
  double forward_scale = 1, backward_scale = 1;
  int placement = QOR_DFT_IN_PLACE, storage = QOR_DFT_CE_COMPLEX, format = QOR_DFT_HALF_SPECTRUM;
  int transforms = 1, thread_limit = 0;
  Layout signal, spectrum;

  bool real() const { return domain == QOR_DFT_REAL; }
  bool in_place() const { return placement == QOR_DFT_IN_PLACE; }
  bool packed() const { return real() && storage == QOR_DFT_CE_REAL; }
  fft::Packing packing() const {
    return format == QOR_DFT_PERM   ? fft::Packing::perm
           : format == QOR_DFT_PACK ? fft::Packing::pack
                                    : fft::Packing::ccs;
  }
  int element_bytes() const { return precision == QOR_DFT_DOUBLE ? 8 : 4; }

  // Elements of the spectrum along a dimension.
  std::int64_t spectrum_length(int dimension) const {
    const std::int64_t n = length[dimension];
    if (!real()) return n;
    if (!packed()) return dimension == rank - 1 ? n / 2 + 1 : n;
    return packing() == fft::Packing::ccs ? n + 2 - n % 2 : n;
  }
  Layout signal_layout() const { return layout(signal, false); }
  Layout spectrum_layout() const { return layout(spectrum, true); }
  int check() const;

 private:
  // Larger numbers, which check() refuses, stop here.
  static constexpr std::int64_t far = std::int64_t{1} << 31;
  static int cut(std::int64_t x) { return static_cast<int>(std::min<std::int64_t>(x, INT32_MAX)); }

  Layout layout(const Layout& set, bool of_spectrum) const {
    Layout result = set;
    if (!set.given) {
      std::int64_t stride = 1;
      for (int d = rank - 1; d >= 0; --d) {
        result.stride[d + 1] = cut(stride);
        std::int64_t n = of_spectrum ? spectrum_length(d) : length[d];
        if (!of_spectrum && real() && in_place() && d == rank - 1) {
          n = packed() ? spectrum_length(d) : 2 * spectrum_length(d);
        }
        stride = std::min(stride * n, far);
      }
    }
    return result;
  }
  // Do the elements have places of their own within the address space?
  int check_layout(const Layout& layout, bool of_spectrum, int bad_layout) const;
};

inline int Settings::check_layout(const Layout& layout, bool of_spectrum, int bad_layout) const {
  struct Reach {
    std::int64_t stride, count;
  } reach[most_dimensions + 1];
  int loops = 0;
  const auto add = [&](int stride, std::int64_t count) {
    if (count > 1) reach[loops++] = {std::abs(std::int64_t{stride}), count};
  };
  for (int d = 0; d < rank; ++d) add(layout.stride[d + 1], of_spectrum ? spectrum_length(d) : length[d]);
  add(layout.distance, transforms);
  sort_few(reach, loops, [](Reach a, Reach b) { return a.stride < b.stride; });
  std::int64_t end = 0;  // of what the smaller strides reach
  for (int i = 0; i < loops; ++i) {
    if (reach[i].stride <= end) return bad_layout;
    end = std::min(end + reach[i].stride * (reach[i].count - 1), far << 10);
  }
  const int parts = real() && !(of_spectrum && !packed()) ? 1 : 2;
  const std::int64_t bytes = (end + 1 + std::abs(std::int64_t{layout.stride[0]})) * parts * element_bytes();
  return bytes < INT32_MAX ? QOR_DFT_OK : QOR_DFT_TOO_LARGE;
}

inline int Settings::check() const {
  if (real() && packed() != (format != QOR_DFT_HALF_SPECTRUM)) return QOR_DFT_FORMAT_MISMATCH;
  if (packed() && rank > 2) return QOR_DFT_FORMAT_RANK;
  std::int64_t points = transforms;
  for (int d = 0; d < rank && points < far; ++d) points *= length[d];
  if (points >= far) return QOR_DFT_TOO_LARGE;
  const Layout x = signal_layout(), y = spectrum_layout();
  if (transforms > 1 && (x.distance == 0 || y.distance == 0) && !(in_place() && !real() && x.distance != 0)) {
    return QOR_DFT_NO_DISTANCE;
  }
  if (const int status = check_layout(x, false, QOR_DFT_SIGNAL_LAYOUT); status != QOR_DFT_OK) return status;
  if (in_place() && !real()) {  // the signal's layout serves both, unless another was given
    const bool same = std::equal(x.stride, x.stride + rank + 1, y.stride) || !spectrum.given;
    return same && (transforms == 1 || y.distance == x.distance || y.distance == 0) ? QOR_DFT_OK
                                                                                    : QOR_DFT_IN_PLACE_LAYOUT;
  }
  if (const int status = check_layout(y, true, QOR_DFT_SPECTRUM_LAYOUT); status != QOR_DFT_OK) return status;
  if (!in_place()) return QOR_DFT_OK;
  const int parts = packed() ? 1 : 2;
  const auto matches = [&](int a, int b) { return a == std::int64_t{parts} * b; };
  bool same = matches(x.stride[0], y.stride[0]) && (transforms == 1 || matches(x.distance, y.distance));
  for (int d = 1; d < rank; ++d) same &= matches(x.stride[d], y.stride[d]) || length[d - 1] == 1;
  same &= packed() ? x.stride[rank] == y.stride[rank] : x.stride[rank] == 1 && y.stride[rank] == 1;
  return same ? QOR_DFT_OK : QOR_DFT_IN_PLACE_REAL_LAYOUT;
}

}  // namespace qor::dft
