// Recordings from WAV files: PCM of 8 to 32 bits or 32-bit floats, any number of channels, which are averaged.
#pragma once

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

struct Recording {
  std::string name;
  int rate = 0;                 // samples per second
  std::vector<double> samples;  // between -1 and 1
};

inline bool is_wav(const std::string& path) {
  char head[12] = {};
  std::ifstream(path, std::ios::binary).read(head, sizeof head);
  return std::memcmp(head, "RIFF", 4) == 0 && std::memcmp(head + 8, "WAVE", 4) == 0;
}

// Reads `path` into `recording`; the result is empty, or says what is wrong.
inline std::string read_wav(const std::string& path, Recording& recording) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return "cannot open " + path + ": " + std::strerror(errno);
  const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (!is_wav(path)) return path + " is no WAV file";
  // Little-endian numbers of up to four bytes at a place that is there.
  const auto number = [&bytes](std::size_t at, int count) {
    std::uint32_t value = 0;
    for (int i = 0; i < count; ++i) {
      value |= std::uint32_t{static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(i)])} << 8 * i;
    }
    return value;
  };
  unsigned format = 0, channels = 0, bits = 0;
  std::size_t data = 0, length = 0;
  for (std::size_t at = 12; data == 0 && bytes.size() - at >= 8;) {
    const char* const name = bytes.data() + at;
    const std::size_t room = bytes.size() - at - 8, size = number(at + 4, 4);
    if (std::memcmp(name, "fmt ", 4) == 0 && size >= 16 && room >= 16) {
      format = number(at + 8, 2), channels = number(at + 10, 2), bits = number(at + 22, 2);
      recording.rate = static_cast<int>(number(at + 12, 4));
      if (format == 0xFFFE && size >= 40 && room >= 40) format = number(at + 32, 2);  // said further on
    } else if (std::memcmp(name, "data", 4) == 0) {
      data = at + 8, length = size < room ? size : room;
    }
    if (size >= room) break;
    at += 8 + size + size % 2;
    if (at > bytes.size()) break;
  }
  const bool pcm = format == 1 && (bits == 8 || bits == 16 || bits == 24 || bits == 32);
  if (!pcm && !(format == 3 && bits == 32)) {
    return path + ": only PCM of 8 to 32 bits and 32-bit floats are read";
  }
  if (channels == 0 || recording.rate < 1000 || recording.rate > 1'000'000) return path + " is damaged";
  const std::size_t width = bits / 8, frames = length / (width * channels);
  if (data == 0 || frames == 0) return path + " has no samples";
  const auto sample = [&](std::size_t at) -> double {
    const std::uint32_t word = number(at, static_cast<int>(width));
    if (format == 3) {
      float value;
      std::memcpy(&value, &word, sizeof value);
      return std::isfinite(value) ? value : 0.0;
    }
    if (bits == 8) return (static_cast<int>(word) - 128) / 128.0;
    return static_cast<double>(static_cast<std::int32_t>(word << (32 - bits))) / 2147483648.0;
  };
  recording.name = path;
  recording.samples.assign(frames, 0);
  for (std::size_t i = 0; i < frames; ++i) {
    for (unsigned c = 0; c < channels; ++c)
      recording.samples[i] += sample(data + (i * channels + c) * width) / channels;
  }
  return {};
}
