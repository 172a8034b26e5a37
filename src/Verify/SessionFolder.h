#pragma once

#include "Platform/Files/RootFolder.h"
#include "Reports/SessionManifest.h"

#include <filesystem>
#include <memory>
#include <optional>

/// Where the copy of a session lies, and on which disk. No link below the disk is followed and no
/// other volume entered: what these lead to is not on the disk. Everything blocks its caller and
/// fails with `ListError` and `PosixError`.
namespace slatewise::Verify {

/// Held open from there on.
using HeldFolder = std::shared_ptr<const RootFolder>;

struct SessionPlace {
    HeldFolder folder;
    /// It was found where the copy was made, or where its disk is mounted today, and the disk there
    /// is not known to be another.
    bool isWhereMade = false;
};

/// A path below a folder as it lies there, of one that stands in a list of ours. Never fails.
std::filesystem::path asItLies(const std::filesystem::path& folder,
                               const std::filesystem::path& shown);

/// The same of a whole path.
std::filesystem::path asItLies(const std::filesystem::path& shown);

/// The folder that a set of reports is of. A set that lies on its disk speaks of that disk alone,
/// wherever it is mounted today; any other, of the copy where it was made.
SessionPlace folderOf(const SessionManifest& manifest, const std::filesystem::path& reportFolder);

/// The session's folder where it was made, or, where its disk is not there, on that disk wherever
/// it is mounted today. Fails when that is nowhere, or the disk there is known to be another.
HeldFolder folderWhereMade(const SessionManifest& manifest);

/// Whether this lies on the disk that the session went to; empty when nobody can tell.
std::optional<bool> isOnItsDisk(const SessionManifest& manifest, const std::filesystem::path& path);

/// Where a session lies below its disk, as the manifest shows it; empty for one that does not.
std::filesystem::path belowDisk(const SessionManifest& manifest);

} // namespace slatewise::Verify
