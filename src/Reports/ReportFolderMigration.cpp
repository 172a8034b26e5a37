#include "Offload/ReportNames.h"
#include "Platform/Disks/MountTable.h"
#include "Platform/Error.h"
#include "Reports/ManifestBytes.h"
#include "Reports/ReportFolder.h"
#include "Reports/ReportWriter.h"
#include "Storage/AppLog.h"

#include <optional>

namespace slatewise::ReportFolder {

namespace {

/// Nobody asked for the copy, and a stranger may have laid out a set to fill the disk with.
constexpr std::int64_t kLargestFileBytes = std::int64_t(256) * 1024 * 1024;

/// A manifest may come from anywhere, and nobody looks at what it names unless that lies on the
/// disk that holds the set: a share whose server is gone, or one that is mounted when somebody
/// looks at it, would hold up whoever does.
std::optional<RootFolder> openOnDiskOf(const RootFolder& set,
                                       const std::filesystem::path& mountPoint) {
    const auto mounts = MountTable::read();
    const auto wanted = mountPoint.lexically_normal();
    const auto* ofWanted = MountTable::holding(mounts, wanted);
    const auto* ofSet = MountTable::holding(mounts, std::filesystem::canonical(set.path()));
    if (!ofWanted || !ofSet || ofWanted->device != ofSet->device)
        return std::nullopt;
    // No link leads from there to another one.
    return RootFolder(ofWanted->mountPoint).below(wanted.lexically_relative(ofWanted->mountPoint));
}

bool isFolder(const RootFolder& root, const std::string& name) {
    try {
        return root.attributes(name).type == FileSystem::ItemType::Folder;
    } catch (const PosixError&) {
        return false;
    }
}

/// The folders in `root` that bear a session's id, in the order of their names.
std::vector<std::string> opaqueFolders(const RootFolder& root) {
    auto names = root.names();
    std::erase_if(names, [&](const std::string& name) {
        return !isOpaqueSessionID(name) || !isFolder(root, name);
    });
    return names;
}

void putClaimed(const RootFolder& from, const RootFolder& destination,
                const std::filesystem::path& set) {
    try {
        putWhole(destination, set, [&](const RootFolder& passing) {
            ReportWriter::copySidecars(from, passing, kLargestFileBytes);
        });
    } catch (...) {
        removeIfEmpty(destination, set);
        throw;
    }
}

/// Two sessions may bear one name: two machines that write to one disk know nothing of each other.
/// A set is begun with its manifest, so that nobody knows whose is what lies there without one.
/// Fails when that cannot be told.
bool mayHoldAnother(const RootFolder& set, const SessionManifest& manifest) {
    if (!set.exists(ReportNames::manifest))
        return true;
    ManifestBytes bytes({set, ReportNames::manifest});
    return ReportWriter::isoDecodeHead(bytes).sessionID != manifest.sessionID;
}

void migrateFolder(const RootFolder& root, const std::string& folder) {
    ManifestBytes bytes({root, std::filesystem::path(folder) / ReportNames::manifest});
    const auto manifest = ReportWriter::isoDecodeHead(bytes);
    const auto name = uniqueName(displayName(manifest.startedAt, manifest.card.ekip,
                                             manifest.card.camera, manifest.card.name),
                                 manifest.sessionID, root, folder);
    if (name != folder) {
        root.renameToFree(folder, name);
        root.sync();
    }
    copyToMountedDestination(root.below(name), manifest, name);
}

void migrateAll(const RootFolder& folders) {
    for (const auto& folder : opaqueFolders(folders)) {
        try {
            migrateFolder(folders, folder);
        } catch (const std::exception&) {
            // It keeps its name, by which it is found again the next time.
        }
    }
}

} // namespace

void copyToMountedDestination(const RootFolder& from, const SessionManifest& manifest,
                              const std::string& folderName) noexcept {
    try {
        const std::filesystem::path mountPoint = manifest.destination.mountPoint;
        const auto destination =
            mountPoint.is_absolute() ? openOnDiskOf(from, mountPoint) : std::nullopt;
        if (!destination)
            return;
        const auto set = onDestination(folderName);
        destination->createFolders(set.parent_path());
        if (destination->createNewFolder(set)) {
            putClaimed(from, *destination, set);
            return;
        }
        const auto there = destination->below(set);
        if (mayHoldAnother(there, manifest))
            AppLog::append("Not copied over other reports: " + there.path().native());
        else
            ReportWriter::copySidecars(from, there, kLargestFileBytes);
    } catch (const std::exception&) {
        // The set lies where it was; a copy that is missing is no reason to trouble anyone.
    }
}

void migrateReadableNames(const std::filesystem::path& archive) noexcept {
    try {
        migrateAll(RootFolder(archive));
    } catch (const std::exception&) {
        // Not even listed: then there is nothing to rename.
    }
}

void migrateDisk(const std::filesystem::path& mountPoint) noexcept {
    try {
        migrateAll(RootFolder(mountPoint).below(destinationReportsRoot({})));
    } catch (const std::exception&) {
        // As above; or the folder is a link, which may lead to anywhere.
    }
}

} // namespace slatewise::ReportFolder
