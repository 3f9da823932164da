#pragma once

namespace vyren::quilbex::util {

// The memory-statistics character device.
inline constexpr char kQuilbexDevice[] = "/dev/quilbex";

}  // namespace vyren::quilbex::util
