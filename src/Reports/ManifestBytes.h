#pragma once

#include "Platform/Files/RootFolder.h"

#include <array>
#include <cstddef>
#include <streambuf>

namespace slatewise {

/// The bytes of a manifest on a disk, as they are read: one of a million files is longer than
/// anybody should hold. It may be a foreign disk's, made to fill the memory: what lies between two
/// line ends, and so each value, is held to a limit. Fails with `PosixError` when it is made and
/// when it is read. For one thread.
class ManifestBytes : public std::streambuf {
public:
    /// Anything but a file is a failure, EINVAL, and never waited for; so is one that is longer
    /// than any manifest, EFBIG.
    explicit ManifestBytes(const FileBeneath& file);

protected:
    int_type underflow() override;

private:
    std::filesystem::path path_;
    FileDescriptor file_;
    std::array<char, 65536> buffer_{};
    std::size_t sinceLineEnd_ = 0;
};

} // namespace slatewise
