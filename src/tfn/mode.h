// The calling thread's four slots (mode word, status word, error callback, input-vector base pointer) and the
// operations on them. A slot's cell is created on first use; without memory for it, reads give the initial value and
// writes are lost.
#pragma once

#include <cstdint>

#include "qor/tfn.h"

namespace qor::tfn {

// Addresses of the cells, null without memory.
std::uint32_t* mode_cell();
std::int32_t* status_cell();
TfnErrorCallBack* callback_cell();
const void** base_pointer_cell();

// The cell's value or, without a cell, the slot's initial one.
std::uint32_t mode();
std::int32_t status();
TfnErrorCallBack callback();
const void* base_pointer();

// Each returns what was there before.
std::uint32_t set_mode(std::uint32_t mode);
std::int32_t set_status(std::int32_t status);
TfnErrorCallBack set_callback(TfnErrorCallBack callback);
void set_base_pointer(const void* base);

}  // namespace qor::tfn
