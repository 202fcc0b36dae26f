// A file without a place: it lives in memory and has a name as long as the object lives.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <string>

namespace qor::test {

class ScratchFile {
 public:
  explicit ScratchFile(const std::string& bytes = {}) : fd_(memfd_create("scratch", 0)) { set(bytes); }
  ~ScratchFile() { ::close(fd_); }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  std::string name() const { return "/proc/self/fd/" + std::to_string(fd_); }
  void set(const void* bytes, std::size_t n) {
    clear();
    if (pwrite(fd_, bytes, n, 0) != static_cast<ssize_t>(n)) _exit(3);
  }
  void set(const std::string& bytes) { set(bytes.data(), bytes.size()); }
  void clear() const {
    if (ftruncate(fd_, 0) != 0) _exit(3);
  }
  // Zeros up to this length, which take no room.
  void extend(long long bytes) {
    if (ftruncate64(fd_, bytes) != 0) _exit(3);
  }
  std::string bytes() const {
    std::string all;
    char part[4096];
    for (ssize_t n; (n = pread(fd_, part, sizeof part, static_cast<off_t>(all.size()))) > 0;) {
      all.append(part, static_cast<std::size_t>(n));
    }
    return all;
  }

 private:
  int fd_;
};

}  // namespace qor::test
