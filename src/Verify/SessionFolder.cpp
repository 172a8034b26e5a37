#include "Verify/SessionFolder.h"

#include "MediaHashList/Generation.h"
#include "MediaHashList/ListError.h"
#include "Offload/ReportNames.h"
#include "Offload/TreeWalker.h"
#include "Platform/Disks/BlockDevices.h"
#include "Platform/Disks/DiskInfo.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/NameForms.h"
#include "Platform/Text.h"
#include "Verify/ListReading.h"

#include <cerrno>
#include <set>
#include <vector>

namespace slatewise::Verify {

namespace {

using MediaHashList::ListError;
using Reason = MediaHashList::ListError::Reason;

/// Null when there is no such folder.
HeldFolder folderBelow(const std::filesystem::path& disk, const std::filesystem::path& shown) {
    if (!MediaHashList::leadsDown(shown.native()))
        return nullptr;
    const auto relative = asItLies(disk, shown);
    try {
        return std::make_shared<const RootFolder>(RootFolder(disk).below(relative));
    } catch (const PosixError& failure) {
        if (failure.code() == ENOENT || failure.code() == ENOTDIR)
            return nullptr;
        if (failure.code() == ELOOP)
            throw ListError(Reason::BehindLink, {}, disk / relative);
        throw;
    }
}

/// Of the volume that holds it, in the words that a manifest has it in; empty when unknown.
std::string volumeUUID(const std::filesystem::path& path) {
    std::error_code failure;
    const auto place = std::filesystem::canonical(path, failure);
    if (failure)
        return {};
    const DiskInfo disks;
    const auto* const mount = disks.mountHolding(place);
    const auto disk = mount ? disks.facts(*mount) : std::nullopt;
    return disk ? Text::asciiLowercased(disk->uuid) : std::string();
}

/// In the words of `volumeUUID`; empty when the manifest has none.
std::string wantedUUID(const SessionManifest& manifest) {
    return Text::asciiLowercased(manifest.destination.volumeUUID.value_or(""));
}

/// Where the mounted file systems with this UUID can be seen whole, each once.
std::vector<std::filesystem::path> mountPointsOf(const std::string& uuid) {
    std::vector<std::filesystem::path> places;
    std::set<dev_t> seen;
    const DiskInfo disks;
    for (const auto& each : MountTable::read()) {
        const auto* const mount = disks.mountAt(each.mountPoint);
        if (!mount || mount->root != "/" || seen.contains(mount->device))
            continue;
        const auto disk = disks.facts(*mount);
        // What was mounted over a folder above it hides it.
        if (disk && Text::asciiLowercased(disk->uuid) == uuid &&
            BlockDevices::numbersUnder(mount->mountPoint) == BlockDevices::numbersOf(*mount)) {
            seen.insert(mount->device);
            places.push_back(mount->mountPoint);
        }
    }
    return places;
}

/// Null also where a link or a right that is missing stands in the way of what is no more than a
/// guess: another may be right.
HeldFolder guessedBelow(const std::filesystem::path& disk, const std::filesystem::path& shown) {
    try {
        return folderBelow(disk, shown);
    } catch (const PosixError&) {
        return nullptr;
    } catch (const ListError&) {
        return nullptr;
    }
}

/// Whether the copy there may be the session's, and not another one that lies under the same path:
/// the reports beside it, where there are any, know it.
bool mayBeOf(const SessionManifest& manifest, const RootFolder& folder,
             const std::filesystem::path& below) {
    auto destination = folder.path();
    for (auto parts = std::distance(below.begin(), below.end()); parts > 0; --parts)
        destination = destination.parent_path();
    bool areNone = true;
    for (const auto& set : FileSystem::entriesIfAny(destination / ReportNames::folder)) {
        try {
            if (readManifest(set / ReportNames::manifest).sessionID == manifest.sessionID)
                return true;
            areNone = false;
        } catch (const Error&) {
            // It speaks for no session.
        }
    }
    return areNone;
}

/// The session's folder on its disk, wherever that is mounted today. The copy may have gone to a
/// folder of the disk, and nobody noted where that disk was mounted: any of the last parts of the
/// path may be that folder's. Null when it is nowhere, or at several places, of which nobody knows
/// which is meant.
HeldFolder folderElsewhere(const SessionManifest& manifest) {
    const auto wanted = wantedUUID(manifest);
    const auto below = belowDisk(manifest);
    if (wanted.empty() || below.empty())
        return nullptr;
    HeldFolder found;
    for (const auto& disk : mountPointsOf(wanted)) {
        auto parts = Text::pieces(manifest.destination.mountPoint, '/');
        for (auto shown = below;; parts.pop_back()) {
            auto folder = shown == below ? folderBelow(disk, shown) : guessedBelow(disk, shown);
            const bool isIt = folder && mayBeOf(manifest, *folder, below);
            if (isIt && found)
                return nullptr;
            if (isIt)
                found = std::move(folder);
            if (parts.empty())
                break;
            shown = std::filesystem::path(parts.back()) / shown;
        }
    }
    return found;
}

/// The folder itself, else the nearest above it.
std::filesystem::path nearestThere(std::filesystem::path folder) {
    while (folder.has_relative_path() && !FileSystem::exists(folder))
        folder = folder.parent_path();
    return folder;
}

/// Whether a disk is mounted there, and not a folder of one.
bool isRootOfDisk(const std::filesystem::path& folder) {
    std::error_code failure;
    const auto place = std::filesystem::canonical(folder, failure);
    return !failure && DiskInfo().mountAt(place) != nullptr;
}

} // namespace

std::filesystem::path asItLies(const std::filesystem::path& folder,
                               const std::filesystem::path& shown) {
    const auto namesIn = [&](const std::filesystem::path& below) {
        std::vector<std::string> names;
        for (const auto& item : FileSystem::entriesIfAny(folder / below))
            names.push_back(item.filename().native());
        return names;
    };
    return NameForms::asItLies(
        shown, {[&](const auto& item) { return FileSystem::exists(folder / item); }, namesIn});
}

std::filesystem::path asItLies(const std::filesystem::path& shown) {
    return shown.is_absolute() ? "/" / asItLies("/", shown.relative_path()) : shown;
}

SessionPlace folderOf(const SessionManifest& manifest, const std::filesystem::path& reportFolder) {
    const auto parent = reportFolder.parent_path();
    if (parent.filename() != ReportNames::folder)
        return {folderWhereMade(manifest), true};
    if (auto folder = folderBelow(parent.parent_path(), belowDisk(manifest)))
        return {std::move(folder), false};
    // Where the copy was made, another disk's may lie by now, or that of another copy. What a disk
    // has at its top speaks of that disk, also on one that was made a twin of another.
    if (isOnItsDisk(manifest, reportFolder).value_or(true) || isRootOfDisk(parent.parent_path()))
        throw ListError(Reason::NoFolder, {}, parent.parent_path() / belowDisk(manifest));
    return {folderWhereMade(manifest), true};
}

HeldFolder folderWhereMade(const SessionManifest& manifest) {
    const std::filesystem::path made = manifest.destination.sessionRoot;
    if (!made.is_absolute())
        throw ListError(Reason::NoFolder, {}, made);
    const auto destination = asItLies(manifest.destination.mountPoint);
    std::error_code failure;
    const auto disk = std::filesystem::canonical(destination, failure);
    const auto isItsDisk = isOnItsDisk(manifest, failure ? nearestThere(destination) : disk);
    const bool isAnothers = !failure && !isItsDisk.value_or(true);
    HeldFolder folder;
    // A disk that is known to be the right one counts more than one that nobody knows; what the
    // right one has lost is not to be sought in another folder there.
    if (!isItsDisk.value_or(false))
        folder = folderElsewhere(manifest);
    if (!folder && !failure && !isAnothers)
        folder = folderBelow(disk, belowDisk(manifest));
    if (!folder)
        throw ListError(isAnothers ? Reason::OtherDisk : Reason::NoFolder, {}, made);
    return folder;
}

std::optional<bool> isOnItsDisk(const SessionManifest& manifest,
                                const std::filesystem::path& path) {
    const auto wanted = wantedUUID(manifest);
    const auto found = wanted.empty() ? std::string() : volumeUUID(path);
    return found.empty() ? std::nullopt : std::optional(found == wanted);
}

std::filesystem::path belowDisk(const SessionManifest& manifest) {
    const auto& [name, uuid, mountPoint, sessionRoot] = manifest.destination;
    const std::filesystem::path relative = TreeWalker::relativePath(sessionRoot, mountPoint);
    const auto whole = (std::filesystem::path(mountPoint) / relative).lexically_normal();
    return whole == std::filesystem::path(sessionRoot).lexically_normal() ? relative
                                                                          : std::filesystem::path();
}

} // namespace slatewise::Verify
