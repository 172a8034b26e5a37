#pragma once

#include "Platform/Files/RootFolder.h"

#include <cstdint>

namespace slatewise {

/// Copies one regular file's bytes under another name, waits until they are on the disk, and
/// renames that: whoever opens `to` sees the old content or the new one, never a part. False when
/// `from` does not exist; any other obstacle is a `PosixError`, and so is anything but a file of at
/// most `largestBytes`. Never waits for a pipe or follows a link. For files of ours; footage goes
/// another way. Blocks; any thread.
bool copyRegularFile(const FileBeneath& from, const FileBeneath& to, std::int64_t largestBytes);

} // namespace slatewise
