#pragma once

#include "Platform/Disks/DiskFacts.h"
#include "Platform/Disks/DiskMemory.h"
#include "Platform/Disks/DiskSources.h"
#include "Platform/Disks/MountTable.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace slatewise {

/// One look at what is mounted and at the disks below: what UDisks2 says, and of what it does not
/// know, or when it is not there, what the kernel, the device manager and the disk itself say. At
/// rest from then on: any thread may ask it.
class DiskInfo {
public:
    /// Blocks until UDisks2 has answered, at most 2 seconds.
    explicit DiskInfo(DiskSources sources = {});

    /// One look of several, which share what the service says.
    DiskInfo(DiskSources sources, DiskMemory& memory);

    /// Null when nothing is mounted at that very path.
    const Mount* mountAt(const std::filesystem::path& path) const;

    /// The mount that the path, which must be absolute and lead through no links, lies in. Null
    /// when it lies in none.
    const Mount* mountHolding(const std::filesystem::path& path) const;

    /// As long as it stays the same, this is the same mount of the same medium.
    std::string identity(const Mount& mount) const;

    /// What is known of the device under a mount; nothing of a mount that has none. May read from
    /// the disk, and blocks as it does.
    std::optional<DiskFacts> facts(const Mount& mount) const;

    /// The same without what only the disk itself could tell. Does not block.
    std::optional<DiskFacts> factsWithoutReading(const Mount& mount) const;

    /// Whether the service has been there before and may have something to say of it yet.
    bool isAwaited(const Mount& mount) const;

    /// Of one that is awaited: makes do with what can be known now. To be called before others ask.
    void giveUp(const Mount& mount, DiskMemory& memory);

private:
    DiskSources sources_;
    std::vector<Mount> mounts_;
    DiskMemory::Known service_;
};

} // namespace slatewise
