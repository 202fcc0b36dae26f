// The memory cache: aligned to nothing in particular beyond what the hooks give, a block stays with the thread that
// first had it and is handed out to it again.
#pragma once

namespace qor::service {

void* allocate(int size);
void deallocate(void* block);
void free_buffers();

// With the allocator's lock held.
void free_extra();
void shrink_slots();

// A cached block that is released by itself.
class Scratch {
 public:
  explicit Scratch(int bytes) : block_(allocate(bytes)) {}
  ~Scratch() {
    if (block_ != nullptr) deallocate(block_);
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  void* get() const { return block_; }
  explicit operator bool() const { return block_ != nullptr; }

 private:
  void* block_;
};

}  // namespace qor::service
