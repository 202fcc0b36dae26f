// Streams in files: little-endian and without padding a header of 16 bytes, the engine's state as it stands behind the
// stream's header, and the chunks, each as key, size and data.
#pragma once

#include "rng/streams/stream.h"

namespace qor::rng {

// length: of the name, negative when it is terminated.
int save(const Stream* stream, const char* name, int length);
int load(Stream** slot, const char* name);

}  // namespace qor::rng
