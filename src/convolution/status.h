// Codes of convolution and correlation.
#pragma once

namespace qor::convolution::status {

inline constexpr int ok = 0;
inline constexpr int no_task_memory = -4, null_task = -5;
inline constexpr int not_here = -2000;  // a driver that exists for its name only, or a pair of precisions that has none
inline constexpr int no_memory = -2001;  // or a size beyond all memory
inline constexpr int no_parameter = -2211, fixed_parameter = -2212;
inline constexpr int no_release = -2220, not_copied = -2230, not_released = -2240;  // private data
inline constexpr int bad_rank = -2301, bad_start = -2302, bad_decimation = -2303;
inline constexpr int bad_xshape = -2311, bad_yshape = -2312, bad_zshape = -2313, bad_zstride = -2323;
inline constexpr int null_x = -2331, null_y = -2332, null_z = -2333;
inline constexpr int transform_failed = -2800;

}  // namespace qor::convolution::status
