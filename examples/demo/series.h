// A series of numbers from a text file: numbers apart by blanks, commas, semicolons or line ends; # starts a comment.
// Comment lines of the form "# key: value" with the keys name, unit, position, start and split describe the series.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

struct Series {
  std::string name, unit = "value", position = "number";  // what is counted, and by what
  std::vector<double> values;
  long start = 1;  // what the first value is counted as: a year, or 1
  long split = 0;  // values before the change; 0: not said
};

// Reads `path` into `series`; the result is empty, or says what is wrong.
inline std::string read_series(const std::string& path, Series& series) {
  std::ifstream file(path);
  if (!file) return "cannot open " + path + ": " + std::strerror(errno);
  series.name = path;
  std::string line;
  for (long number = 1; std::getline(file, line); ++number) {
    const std::size_t comment = line.find('#');
    if (comment != std::string::npos) {
      std::istringstream words(line.substr(comment + 1));
      std::string key, value;
      words >> key;
      std::getline(words >> std::ws, value);
      if (!value.empty() && value.back() == '\r') value.pop_back();
      if (key == "name:") series.name = value;
      if (key == "unit:") series.unit = value;
      if (key == "position:") series.position = value;
      if (key == "start:") series.start = std::strtol(value.c_str(), nullptr, 10);
      if (key == "split:") series.split = std::strtol(value.c_str(), nullptr, 10);
      line.resize(comment);
    }
    for (char& c : line) {
      if (c == ',' || c == ';') c = ' ';
    }
    std::istringstream words(line);
    for (std::string word; words >> word;) {
      char* end = nullptr;
      const double value = std::strtod(word.c_str(), &end);
      if (*end != 0 || !std::isfinite(value)) {
        word.resize(std::min<std::size_t>(word.size(), 40));
        for (char& c : word) {
          if (c < ' ' || c > '~') c = '?';
        }
        return path + ", line " + std::to_string(number) + ": '" + word + "' is not a number";
      }
      series.values.push_back(value);
    }
  }
  if (file.bad()) return "cannot read " + path + ": " + std::strerror(errno);
  if (series.values.empty()) return path + " has no numbers";
  return {};
}
