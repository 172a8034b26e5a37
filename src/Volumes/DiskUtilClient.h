#pragma once

#include "Platform/Disks/DiskFacts.h"
#include "Platform/Disks/DiskSources.h"
#include "Platform/Disks/MountTable.h"
#include "Platform/Error.h"
#include "Volumes/VolumeRecords.h"
#include "Volumes/VolumesRoot.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace slatewise {
class L10n;
}

/// From a mount point to the facts about its volume, and the way to eject it. Without state: each
/// call asks the machine afresh. Any thread may call; every call blocks for as long as the file
/// system in question does, and waits for the disk service at most a few seconds (an eject:
/// minutes, since what is not yet written must get to the disk). So nothing here is for a GUI
/// thread.
namespace slatewise::DiskUtilClient {

/// The folders in the volumes roots, in the order of the file systems: no hidden ones, no links,
/// and those of a root that leads to another one only once. Does not touch what is mounted on them.
/// A root that cannot be listed has none.
std::vector<std::filesystem::path> listMounts(const VolumesRoot& volumesRoot);

/// What is known of the volume at a mount point without looking into it: its mount, null where
/// nothing is mounted, and the disk below it, nothing where there is none. A blank name is that of
/// the folder. Does not block.
VolumeFacts factsFrom(const std::filesystem::path& mountPoint, const Mount* mount,
                      const std::optional<DiskFacts>& disk);

/// Adds what only the file system at the mount point can tell: camera folders, sizes that are not
/// known yet, and whether this user may write there.
void lookInto(VolumeFacts& facts);

/// All of this about the volume that holds the path, under the path's own name when it has no
/// other. What cannot be learnt is empty, 0 or false.
VolumeFacts facts(const std::filesystem::path& path, const DiskSources& sources = {});

/// An eject that was refused: the volume is mounted as before. The description is in the language
/// stored when it was thrown.
class EjectError : public Error {
public:
    enum class Cause { Busy, NotPermitted, Other };

    EjectError(const std::filesystem::path& mountPoint, int code, std::string reason,
               Cause cause = Cause::Other);

    /// Exit status of the tool, 1 for the disk service.
    int code() const noexcept { return code_; }

    /// In the words of whoever refused, for the log.
    const std::string& reason() const noexcept { return reason_; }

    Cause cause() const noexcept { return cause_; }

private:
    int code_;
    std::string reason_;
    Cause cause_;
};

/// What became of an eject that was not refused. The volume is unmounted, and all of it is on the
/// disk.
struct Ejected {
    /// Another volume of the same disk is mounted: not to be pulled yet.
    bool isDiskInUse = false;
    /// A step after the unmounting that failed, in the words of the disk service, for the log.
    std::string remark;

    /// One sentence about the volume of that name: whether it may be pulled.
    std::string text(std::string_view name, L10n l10n) const;
};

/// Unmounts the volume, locks it when it was encrypted, and then ejects the medium or powers off
/// the drive, whichever the hardware can, unless other volumes on it are still in use. Fails with
/// `EjectError`, also when the disk is busy, or with the failure to start a tool.
Ejected eject(const std::filesystem::path& mountPoint, const DiskSources& sources = {});

} // namespace slatewise::DiskUtilClient
