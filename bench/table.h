// A table of text, with columns aligned or as Markdown.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace bench {

class Table {
 public:
  Table(std::vector<std::string> head, bool markdown) : rows_{std::move(head)}, markdown_(markdown) {}
  void add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }
  void print() const {
    std::vector<std::size_t> width(rows_[0].size());
    for (const auto& row : rows_) {
      for (std::size_t i = 0; i < row.size(); ++i) width[i] = row[i].size() > width[i] ? row[i].size() : width[i];
    }
    const char* const between = markdown_ ? " | " : "  ";
    for (std::size_t r = 0; r < rows_.size(); ++r) {
      std::string line = markdown_ ? "| " : "";
      for (std::size_t i = 0; i < rows_[r].size(); ++i) {
        const std::string& cell = rows_[r][i];
        line += (i != 0 ? between : "") + cell;
        if (markdown_ || i + 1 < rows_[r].size()) line.append(width[i] - cell.size(), ' ');
      }
      if (!markdown_) line.erase(line.find_last_not_of(' ') + 1);
      std::printf("%s%s\n", line.c_str(), markdown_ ? " |" : "");
      if (r == 0 && markdown_) {
        for (const std::size_t w : width) std::printf("|%s", std::string(w + 2, '-').c_str());
        std::printf("|\n");
      }
    }
    std::printf("\n");
  }

 private:
  std::vector<std::vector<std::string>> rows_;
  bool markdown_;
};

}  // namespace bench
