#pragma once

#include <cstdint>
#include <filesystem>

namespace slatewise {

/// The errors that a file system has met so far, by its driver's own count. What lists a damaged
/// folder or reads a damaged record is not always told of it. Counted by ext2, ext3 and ext4; of
/// others nothing is known.
class FileSystemErrors {
public:
    /// Of the volume that holds `path`, as they are now. Never fails.
    explicit FileSystemErrors(const std::filesystem::path& path);

    /// Whether there are more of them than there were.
    bool haveGrown() const;

private:
    /// Empty where nothing counts.
    std::filesystem::path counter_;
    std::int64_t before_;
};

} // namespace slatewise
