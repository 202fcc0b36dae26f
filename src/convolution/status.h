// Codes of convolution and correlation: the public ones by short names.
#pragma once

#include "qor/conv.h"

namespace qor::convolution::status {

inline constexpr int ok = QOR_CONV_OK;
inline constexpr int no_task_memory = QOR_CONV_NO_TASK_MEMORY, null_task = QOR_CONV_NULL_POINTER;
inline constexpr int not_here = QOR_CONV_NOT_IMPLEMENTED;
inline constexpr int no_memory = QOR_CONV_NO_MEMORY;
inline constexpr int no_parameter = QOR_CONV_UNKNOWN_PARAMETER, fixed_parameter = QOR_CONV_FIXED_PARAMETER;
inline constexpr int no_release = QOR_CONV_NO_RELEASE, not_copied = QOR_CONV_COPY_FAILED,
                     not_released = QOR_CONV_RELEASE_FAILED;
inline constexpr int bad_rank = QOR_CONV_BAD_RANK, bad_start = QOR_CONV_BAD_START,
                     bad_decimation = QOR_CONV_BAD_DECIMATION;
inline constexpr int bad_xshape = QOR_CONV_BAD_X_SHAPE, bad_yshape = QOR_CONV_BAD_Y_SHAPE,
                     bad_zshape = QOR_CONV_BAD_Z_SHAPE, bad_zstride = QOR_CONV_ZERO_Z_STRIDE;
inline constexpr int null_x = QOR_CONV_NULL_X, null_y = QOR_CONV_NULL_Y, null_z = QOR_CONV_NULL_Z;
inline constexpr int transform_failed = QOR_CONV_TRANSFORM_FAILED;

}  // namespace qor::convolution::status
