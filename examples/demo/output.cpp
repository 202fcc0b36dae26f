// Tables, and pictures by gnuplot.
#include <sys/wait.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "demo.h"

int fail(const std::string& what) {
  std::fprintf(stderr, "demo: %s\n", what.c_str());
  return 1;
}

std::string quoted(const std::string& text) {
  std::string out = "'";
  for (const char c : text) out += c == '\'' ? "''" : c == '\n' ? std::string(" ") : std::string(1, c);
  return out + "'";
}

std::string shown(const std::string& path) {
  std::error_code error;
  const std::filesystem::path near = std::filesystem::proximate(path, error);
  return error || near.string().rfind("..", 0) == 0 ? path : near.string();
}

bool draw(const Options& options, const std::string& script, const std::string& assignments) {
  std::FILE* const gnuplot = popen("command -v gnuplot >/dev/null || exit 127; exec gnuplot", "w");
  if (gnuplot == nullptr) return fail("cannot start gnuplot"), false;
  std::fprintf(gnuplot, "folder = %s\n%sload %s\n", quoted(options.output).c_str(), assignments.c_str(),
               quoted(QOR_EXAMPLES "/" + script + ".gp").c_str());
  const int status = pclose(gnuplot);
  if (WIFEXITED(status) && WEXITSTATUS(status) == 127) {
    std::printf("  no picture: gnuplot is not installed\n");
    return true;
  }
  if (status != 0) return fail("gnuplot could not draw the picture"), false;
  for (const char* kind : {".png", ".svg"}) {
    std::printf("  picture: %s\n", shown(options.output + "/" + script + kind).c_str());
  }
  return true;
}

bool write_table(const std::string& path, int rows, const std::function<void(std::FILE*, int)>& row) {
  std::FILE* const file = std::fopen(path.c_str(), "w");
  if (file == nullptr) return fail("cannot write " + path + ": " + std::strerror(errno)), false;
  for (int i = 0; i < rows; ++i) row(file, i);
  return std::fclose(file) == 0;
}
