#pragma once

namespace slatewise::tool {

inline constexpr int kExitSuccess = 0;
inline constexpr int kExitOffloadFailed = 1;
inline constexpr int kExitWrongUsage = 2;
inline constexpr int kExitInterrupted = 130;

} // namespace slatewise::tool
