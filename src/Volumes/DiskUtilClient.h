#pragma once

#include "Platform/Disks/DiskSources.h"
#include "Platform/Disks/PropertyList.h"
#include "Platform/Error.h"
#include "Volumes/VolumeRecords.h"

#include <filesystem>
#include <optional>
#include <vector>

/// From a mount point to the facts about its volume, and the way to eject it. Without state: each
/// call asks the machine afresh. Any thread may call; every call blocks for as long as the file
/// system in question does, and waits for the disk service at most a few seconds (an eject:
/// minutes, since what is not yet written must get to the disk). So nothing here is for a GUI
/// thread.
namespace slatewise::DiskUtilClient {

/// The folders in the volumes root, in the order of the file system: no hidden ones, no links. Does
/// not touch what is mounted on them. Empty when the root cannot be listed.
std::vector<std::filesystem::path> listMounts(const std::filesystem::path& volumesRoot);

/// What the machine says about the volume that holds the path; nothing when it has nothing to say.
std::optional<PropertyList> infoPlist(const std::filesystem::path& path,
                                      const DiskSources& sources = {});

/// Facts from such a list, an empty one when nothing is known, and from what the file system at the
/// mount point tells itself.
VolumeFacts factsFromPlist(const PropertyList& plist, const std::filesystem::path& mountPoint);

/// What can be told without asking even the file system: the name. Does not block.
VolumeFacts plainFacts(const std::filesystem::path& mountPoint);

/// Facts about the volume that holds the path, under the path's own name when it has no other. What
/// cannot be learnt is empty, 0 or false; a volume of which nothing is known counts as writable.
VolumeFacts facts(const std::filesystem::path& path, const DiskSources& sources = {});

/// An eject that was refused. The description is in the language stored when it was thrown.
class EjectError : public Error {
public:
    EjectError(const std::filesystem::path& mountPoint, int code, std::string reason);

    /// Exit status of the tool, 1 for the disk service.
    int code() const noexcept { return code_; }

    /// In the words of whoever refused, for the log.
    const std::string& reason() const noexcept { return reason_; }

private:
    int code_;
    std::string reason_;
};

/// Unmounts the volume, and then ejects the medium or powers off the drive, unless other volumes on
/// it are still in use. Fails with `EjectError`, also when the disk is busy, or with the failure to
/// start a tool.
void eject(const std::filesystem::path& mountPoint, const DiskSources& sources = {});

} // namespace slatewise::DiskUtilClient
