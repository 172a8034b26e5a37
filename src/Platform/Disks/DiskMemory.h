#pragma once

#include "Platform/Disks/DiskFacts.h"

#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>

namespace slatewise {

class UDisksObjects;

/// What the disk service has said of each mounted device, for as long as that mount lasts. A
/// service that falls silent, goes or starts anew takes nothing back of it. Any thread.
class DiskMemory {
public:
    /// Devices under mounts, each mount under a name that no other one has.
    using Mounted = std::map<std::string, MountedDevice, std::less<>>;

    struct Known {
        std::map<std::string, DiskFacts, std::less<>> answers;
        /// Of these the service, which has been there before, may have something to say yet.
        std::set<std::string, std::less<>> awaited;
    };

    /// Takes in what the service says now, nothing when it does not answer, and gives all that is
    /// known of these mounts. Others are forgotten. What it says while it is behind events is no
    /// answer.
    Known update(const Mounted& mounted, const std::optional<UDisksObjects>& told);

    /// The mount is not waited for any more: gives what the service says of it nevertheless, which
    /// counts as its answer from now on. Nothing when it says nothing.
    std::optional<DiskFacts> giveUp(const std::string& mount);

private:
    std::mutex lock_;
    std::map<std::string, DiskFacts, std::less<>> answers_;
    /// What was said last and may not be about the mount.
    std::map<std::string, DiskFacts, std::less<>> doubtful_;
    std::set<std::string, std::less<>> givenUp_;
    bool serviceWasThere_ = false;
};

} // namespace slatewise
