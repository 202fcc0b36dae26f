// The statuses of streams and distributions. They stay plain int, since codes of registered generators pass through.
#pragma once

#include "qor/rng.h"

namespace qor::rng::status {

inline constexpr int ok = QOR_RNG_OK;
inline constexpr int bad_method = QOR_RNG_BAD_METHOD;
inline constexpr int bad_argument = QOR_RNG_BAD_ARGUMENT;
inline constexpr int no_memory = QOR_RNG_NO_MEMORY;
inline constexpr int null_slot = QOR_RNG_NULL_SLOT;
inline constexpr int bad_brng = QOR_RNG_BAD_BRNG;
inline constexpr int no_leapfrog = QOR_RNG_NO_LEAPFROG;
inline constexpr int no_skip_ahead = QOR_RNG_NO_SKIP_AHEAD;
inline constexpr int incompatible = QOR_RNG_INCOMPATIBLE;
inline constexpr int bad_state_bytes = QOR_RNG_BAD_STATE_BYTES;
inline constexpr int bad_word_bytes = QOR_RNG_BAD_WORD_BYTES;
inline constexpr int bad_seed_words = QOR_RNG_BAD_SEED_WORDS;
inline constexpr int bad_bits = QOR_RNG_BAD_BITS;
inline constexpr int registry_full = QOR_RNG_REGISTRY_FULL;
inline constexpr int bad_update = QOR_RNG_BAD_UPDATE;
inline constexpr int cannot_close = QOR_RNG_CANNOT_CLOSE;
inline constexpr int cannot_open = QOR_RNG_CANNOT_OPEN;
inline constexpr int cannot_write = QOR_RNG_CANNOT_WRITE;
inline constexpr int cannot_read = QOR_RNG_CANNOT_READ;
inline constexpr int bad_file = QOR_RNG_BAD_FILE;
inline constexpr int bad_version = QOR_RNG_BAD_VERSION;

}  // namespace qor::rng::status
