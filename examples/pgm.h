// Grey pictures in netpbm's format PGM, for the examples.
#pragma once

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace pgm {

[[noreturn]] inline void fail(const std::string& what) {
  std::fprintf(stderr, "%s\n", what.c_str());
  std::exit(1);
}

// Values by rows; a row is dimension 0.
struct Picture {
  int width = 0, height = 0;
  std::vector<float> values;
  Picture() = default;
  Picture(int w, int h) : width(w), height(h), values(static_cast<std::size_t>(w) * static_cast<std::size_t>(h)) {}
  float& at(int x, int y) {
    return values[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
  }
  float at(int x, int y) const { return const_cast<Picture*>(this)->at(x, y); }
};

// Values from 0 to 255.
inline Picture read_pgm(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) fail("cannot open " + path + ": " + std::strerror(errno));
  const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (bytes.rfind("P5", 0) != 0) fail(path + " is no binary PGM file");
  std::size_t at = 2;
  int size[3];
  for (int& n : size) {  // width, height, the value of white; comments may stand between them
    while (at < bytes.size() && (std::isspace(static_cast<unsigned char>(bytes[at])) || bytes[at] == '#')) {
      if (bytes[at] == '#') at = std::min(bytes.find('\n', at), bytes.size() - 1);
      ++at;
    }
    n = 0;
    for (; at < bytes.size() && bytes[at] >= '0' && bytes[at] <= '9' && n < 1'000'000; ++at)
      n = 10 * n + bytes[at] - '0';
  }
  ++at;
  const auto [width, height, white] = size;
  const std::size_t each = white > 255 ? 2 : 1;
  const double values = static_cast<double>(width) * height;
  if (width < 1 || height < 1 || white < 1 || white > 65535 || values > 5e7) fail(path + " is damaged, or too large");
  if (static_cast<double>(bytes.size()) < static_cast<double>(at) + values * static_cast<double>(each)) {
    fail(path + " ends too early");
  }
  Picture picture(width, height);
  for (float& v : picture.values) {
    unsigned value = 0;
    for (std::size_t i = 0; i < each; ++i) value = value << 8 | static_cast<unsigned char>(bytes[at++]);
    v = static_cast<float>(value) * 255 / static_cast<float>(white);
  }
  return picture;
}

inline void write_pgm(const std::string& path, const Picture& picture) {
  std::string bytes = "P5\n" + std::to_string(picture.width) + " " + std::to_string(picture.height) + "\n255\n";
  for (const float v : picture.values) bytes += static_cast<char>(std::lround(std::clamp(v, 0.0f, 255.0f)));
  std::ofstream file(path, std::ios::binary);
  if (!file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush()) fail("cannot write " + path);
}

}  // namespace pgm
