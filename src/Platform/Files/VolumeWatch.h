#pragma once

#include "Platform/FileDescriptor.h"

#include <filesystem>

namespace slatewise {

class RootFolder;

/// A volume that is written to. The system tells of a write that failed later on only those who had
/// the volume open by then, so it is held from before the first one. Blocks its caller; fails with
/// `PosixError`.
class VolumeWatch {
public:
    /// Of the volume that the folder lies on.
    explicit VolumeWatch(const RootFolder& folder);

    /// Waits until everything written to the volume would survive a power cut. Fails with `EROFS`
    /// where it takes no writes any more: what was still on its way then is lost, and a sync has
    /// nothing to say of it.
    void sync() const;

private:
    std::filesystem::path path_;
    FileDescriptor folder_;
};

} // namespace slatewise
