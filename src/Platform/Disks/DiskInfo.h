#pragma once

#include "Platform/Disks/DiskFacts.h"
#include "Platform/Disks/DiskSources.h"
#include "Platform/Disks/MountTable.h"
#include "Platform/Disks/PropertyList.h"
#include "Platform/Disks/UDisksObjects.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace slatewise {

/// One look at what is mounted and at the disks below: what UDisks2 says, and of what it does not
/// know, or when it is not there, what the kernel and the disk itself say. At rest from then on:
/// any thread may ask it.
class DiskInfo {
public:
    /// Blocks until UDisks2 has answered, at most 2 seconds.
    explicit DiskInfo(DiskSources sources = {});

    /// Null when nothing is mounted at that very path.
    const Mount* mountAt(const std::filesystem::path& path) const;

    /// What is known of the volume that holds the path, which must be absolute and lead through no
    /// links. Nothing when the path lies in no mount. May read from the disk and block as it does.
    std::optional<PropertyList> properties(const std::filesystem::path& path) const;

private:
    std::optional<DiskFacts> factsAbout(const Mount& mount) const;

    DiskSources sources_;
    std::vector<Mount> mounts_;
    /// Empty when the service is not there.
    UDisksObjects service_;
};

/// The dictionary about a volume from what is known of its mount and its disk. Keys and words are
/// those of the desktop on which our verdicts were first made. A kind of file system that has no
/// word there is left out: it says nothing for or against a volume. Nothing is said of the disk
/// under a mount that has none.
PropertyList propertyList(const Mount& mount, const std::optional<DiskFacts>& disk);

} // namespace slatewise
