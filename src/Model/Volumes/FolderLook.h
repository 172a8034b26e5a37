#pragma once

#include "Model/Surroundings.h"
#include "Model/Volumes/VolumeBoard.h"

#include <filesystem>
#include <optional>

namespace slatewise {

/// How picked folders are looked at. A value that a worker takes along; its operations block as
/// long as the disk does.
class FolderLook {
public:
    explicit FolderLook(const Surroundings& surroundings)
        : facts_(surroundings.volumeFacts), isBare_(surroundings.isBare) {}

    ClassifiedVolume at(const std::filesystem::path& folder, VolumeSide side) const;

    /// What the folder is now, where that is something else than what is known of it: a disk was
    /// mounted on it, or taken away.
    std::optional<ClassifiedVolume> change(const ClassifiedVolume& known, VolumeSide side) const;

private:
    bool isBare(const std::filesystem::path& folder, VolumeSide side) const;

    decltype(Surroundings::volumeFacts) facts_;
    decltype(Surroundings::isBare) isBare_;
};

} // namespace slatewise
