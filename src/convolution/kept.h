// What the transforms of one computation leave for the next one like it: their set-up and their work space. A task keeps
// one of these from execution to execution; a call without a task starts with an empty one of its own.
#pragma once

#include <algorithm>

#include "base/align.h"
#include "base/owned.h"
#include "convolution/layout.h"

namespace qor::convolution {

template <class S>
inline char setup_type;  // its address tells the types of set-ups apart

class Kept {
 public:
  Kept() = default;
  ~Kept() { drop(); }
  Kept(const Kept&) = delete;
  Kept& operator=(const Kept&) = delete;

  // The set-up of these lengths (at most max_rank): the kept one if it is that, otherwise the one that make() returns,
  // which is kept from now on in place of any other. Null, and nothing is kept, when make() returns null. destroy(S*)
  // is found in the namespace of S.
  template <class S, class Make>
  S* setup(const int* lengths, int count, Make make) {
    if (type_ == &setup_type<S> && count == count_ && std::equal(lengths, lengths + count, lengths_)) {
      return static_cast<S*>(setup_);
    }
    drop();
    S* const made = make();
    if (made == nullptr) return nullptr;
    setup_ = made;
    type_ = &setup_type<S>;
    destroy_ = [](void* s) { destroy(static_cast<S*>(s)); };
    count_ = count;
    std::copy(lengths, lengths + count, lengths_);
    return made;
  }

  // At least so many bytes, aligned to 64, of any contents, until the next call. Null without memory.
  char* work(std::size_t bytes) {
    constexpr std::size_t alignment = 64;
    if (bytes > PTRDIFF_MAX - alignment) return nullptr;
    if (!work_ || bytes > room_) {
      work_.reset();
      work_ = Owned<char>::allocate(bytes + alignment);
      room_ = bytes;
    }
    if (!work_) return nullptr;
    return align_up<char>(work_.get(), alignment);
  }

 private:
  void drop() {
    if (type_ != nullptr) destroy_(setup_);
    type_ = nullptr;
  }

  const void* type_ = nullptr;
  void* setup_;
  void (*destroy_)(void*);
  int count_, lengths_[max_rank];
  Owned<char> work_;
  std::size_t room_ = 0;
};

}  // namespace qor::convolution
