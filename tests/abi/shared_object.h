// What the binary tools say about the built shared object.
#pragma once

#include <array>
#include <cstdio>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace binary {

// The lines a command prints; none when it fails.
inline std::vector<std::string> lines_of(const std::string& command) {
  std::vector<std::string> lines;
  std::FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return lines;
  std::string line;
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
    if (c == '\n') {
      lines.push_back(line);
      line.clear();
    } else {
      line += static_cast<char>(c);
    }
  }
  if (pclose(pipe) != 0) lines.clear();
  return lines;
}

inline std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

// The first group of every match in the lines.
inline std::vector<std::string> all_matches(const std::vector<std::string>& lines, const std::string& pattern) {
  const std::regex expression(pattern);
  std::vector<std::string> found;
  for (const std::string& line : lines) {
    std::smatch match;
    if (std::regex_search(line, match, expression)) found.push_back(match[match.size() > 1 ? 1 : 0]);
  }
  return found;
}

struct Exports {
  std::set<std::string> functions, data;
};
inline Exports exports_of(const std::string& library) {
  Exports exports;
  for (const std::string& line : lines_of("nm -D --defined-only " + library)) {
    std::istringstream words(line);
    std::string address, kind, name;
    words >> address >> kind >> name;
    name = name.substr(0, name.find('@'));
    if (kind == "A") continue;  // the version's own name
    (kind == "T" || kind == "i" || kind == "W" ? exports.functions : exports.data).insert(name);
  }
  return exports;
}

// The names between "global:" and "local:" of a version script.
inline std::set<std::string> names_in_map(const std::string& path) {
  std::ifstream file(path);
  std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  text = std::regex_replace(text, std::regex("/\\*[^*]*\\*/"), " ");
  const std::size_t begin = text.find("global:") + 7, end = text.find("local:");
  std::set<std::string> names;
  std::istringstream words(text.substr(begin, end - begin));
  for (std::string name; std::getline(words >> std::ws, name, ';');) names.insert(name);
  names.erase("");
  return names;
}

}  // namespace binary
