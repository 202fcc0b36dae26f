#include "rng/streams/file.h"

#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <limits>

#include "base/owned.h"
#include "rng/streams/status.h"

namespace qor::rng {
namespace {

static_assert(sizeof(off_t) == 8);

constexpr std::uint8_t magic[3] = {0x52, 0x4E, 0x47};
constexpr std::uint8_t current_version = 0;

struct FileHeader {
  std::uint8_t magic[3];
  std::uint8_t version;
  std::uint16_t headerSize;
  std::uint16_t stateSize;
  std::uint16_t chunkCount;
  std::uint16_t reserved;  // 0; not looked at
  std::int32_t brng;
};
static_assert(sizeof(FileHeader) == 16);

struct ChunkHeader {
  std::uint32_t key;
  std::uint32_t size;  // of the data that follow
};

// An open file that closes itself; it isn't inherited by programs that the process starts.
class File {
 public:
  File(const char* name, const char* mode) : file_(std::fopen(name, mode)) {}
  ~File() { close(status::ok); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  explicit operator bool() const { return file_ != nullptr; }
  bool write(const void* data, std::size_t bytes) { return bytes == 0 || std::fwrite(data, 1, bytes, file_) == bytes; }
  bool read(void* data, std::size_t bytes) { return std::fread(data, 1, bytes, file_) == bytes; }
  // The status of the work done, unless closing fails.
  int close(int status) {
    std::FILE* const file = std::exchange(file_, nullptr);
    return file != nullptr && std::fclose(file) != 0 ? status::cannot_close : status;
  }
  // Bytes that can still be read, as far as the file system knows: no limit for pipes and devices.
  std::int64_t left() const {
    struct stat s;
    if (fstat(fileno(file_), &s) != 0 || !S_ISREG(s.st_mode)) return std::numeric_limits<std::int64_t>::max();
    return s.st_size - ftello(file_);
  }

 private:
  std::FILE* file_;
};

int write_stream(File& file, const FileHeader& header, const Stream* stream) {
  if (!file.write(&header, sizeof header)) return status::cannot_write;
  if (!file.write(stream + 1, header.stateSize)) return status::cannot_write;
  const Chunk* c = stream->chunks;
  for (int i = 0; i < header.chunkCount; ++i, c = c->next) {
    const ChunkHeader chunk = {c->key, c->data == nullptr ? 0 : c->size};
    if (!file.write(&chunk, sizeof chunk) || !file.write(c->data, chunk.size)) return status::cannot_write;
  }
  return status::ok;
}

int read_header(File& file, FileHeader& header) {
  if (!file.read(&header, sizeof header)) return status::cannot_read;
  if (std::memcmp(header.magic, magic, sizeof magic) != 0) return status::bad_file;
  if (header.version != current_version) return status::bad_version;
  BrngRecord record;
  if (properties(header.brng, &record) != status::ok) return status::bad_file;
  if (header.stateSize != state_bytes(record)) return status::bad_file;
  // On purpose a longer header is taken, and the state read from where it always is.
  return header.headerSize < sizeof header ? status::bad_file : status::ok;
}

// The next `size` bytes in a block of their own. No file makes the library allocate much more than it holds: a file of
// unknown length is read in steps, each as long as all before it.
int read_block(File& file, std::uint32_t size, Owned<void>& block) {
  constexpr std::uint32_t first_step = 1 << 16;
  const std::int64_t left = file.left();
  if (left < size) return status::cannot_read;
  const bool known = left < std::numeric_limits<std::int64_t>::max();
  std::uint32_t have = 0, room = known ? size : std::min(size, first_step);
  block = Owned<void>::allocate(std::max(room, 1U));
  while (block) {
    if (!file.read(static_cast<char*>(block.get()) + have, room - have)) return status::cannot_read;
    if (room == size) return status::ok;
    have = room;
    room += std::min(have, size - have);
    Owned<void> wider = Owned<void>::allocate(room);
    if (wider) std::memcpy(wider.get(), block.get(), have);
    block = std::move(wider);
  }
  return status::no_memory;
}

int read_chunk(File& file, Stream* stream) {
  ChunkHeader chunk;
  if (!file.read(&chunk, sizeof chunk)) return status::cannot_read;
  Owned<void> data;
  if (const int s = read_block(file, chunk.size, data); s != status::ok) return s;
  const int s = add_chunk(stream, chunk.key, data.get(), chunk.size);
  if (s == status::ok) data.release();
  return s;
}

int read_stream(File& file, const FileHeader& header, Stream* stream) {
  if (!file.read(stream + 1, header.stateSize)) return status::cannot_read;
  // Each chunk goes to the list's head: the order is turned round, which finding by key doesn't notice.
  for (int i = 0; i < header.chunkCount; ++i) {
    if (const int s = read_chunk(file, stream); s != status::ok) return s;
  }
  return has_valid_state(stream) ? status::ok : status::bad_file;
}

Owned<char> terminated(const char* name, int length) {
  const std::size_t bytes = static_cast<std::size_t>(length);
  Owned<char> copy = Owned<char>::allocate(bytes + 1);
  if (copy) {
    std::memcpy(copy.get(), name, bytes);
    copy.get()[bytes] = '\0';
  }
  return copy;
}

}  // namespace

int save(const Stream* stream, const char* name, int length) {
  const ErrnoGuard keep;
  Owned<char> copy;
  if (length >= 0) {
    copy = terminated(name, length);
    if (!copy) return status::no_memory;
    name = copy.get();
  }
  const std::size_t size = state_bytes(record_of(stream));
  if (size > std::numeric_limits<std::uint16_t>::max() || !can_be_stored(stream)) return status::bad_file;
  const FileHeader header = {{magic[0], magic[1], magic[2]},
                             current_version,
                             sizeof(FileHeader),
                             static_cast<std::uint16_t>(size),
                             static_cast<std::uint16_t>(count_chunks(stream)),
                             0,
                             stream->brng};
  File file(name, "wbe");
  if (!file) return status::cannot_open;
  return file.close(write_stream(file, header, stream));
}

int load(Stream** slot, const char* name) {
  const ErrnoGuard keep;
  File file(name, "rbe");
  if (!file) return status::cannot_open;
  FileHeader header;
  if (const int s = read_header(file, header); s != status::ok) return file.close(s);
  const Generator g = resolve(header.brng);
  if (const int s = allocate(slot, g.table, header.brng, g.entry, g.member); s != status::ok) return file.close(s);
  const int s = file.close(read_stream(file, header, *slot));
  if (s != status::ok) destroy(slot);
  return s;
}

}  // namespace qor::rng
