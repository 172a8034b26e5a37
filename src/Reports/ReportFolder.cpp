#include "Reports/ReportFolder.h"

#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"
#include "Reports/ReportWriter.h"

#include <algorithm>
#include <vector>

namespace slatewise::ReportFolder {

namespace {

constexpr auto* kReports = "reports";

/// What the manifest of some 40,000 files comes to. It may be a foreign disk's, made to fill the
/// memory; all of it is held there, and more of what it says.
constexpr std::int64_t kLargestManifestBytes = std::int64_t{32} << 20;

constexpr std::size_t kPersonLimit = 24;
constexpr std::size_t kCardLimit = 40;
constexpr std::size_t kSessionIDLimit = 8;

/// What a file system takes as a name, less what `uniqueName` may put behind it.
constexpr std::size_t kLongestNameBytes = 255 - 1 - kSessionIDLimit;

/// One part of a name: at most `limit` characters, none that any file system objects to.
std::string sanitize(std::string_view raw, std::size_t limit) {
    constexpr std::string_view kForbidden = "/:\\*?\"<>|\n\r";
    std::string text = Text::trimmed(raw);
    for (char& character : text) {
        if (kForbidden.find(character) != std::string_view::npos)
            character = '-';
        else if (character == ' ')
            character = '_';
    }
    while (text.find("__") != std::string::npos)
        text = Text::replaced(text, "__", "_");
    text.erase(text.find_last_not_of("._-") + 1);
    text.erase(0, text.find_first_not_of("._-"));
    return text.empty() ? "unknown" : Text::prefix(text, limit);
}

/// Names in scripts with several bytes a letter can be within all limits and still too long.
std::string fitForADisk(std::string name) {
    if (name.size() <= kLongestNameBytes)
        return name;
    auto end = kLongestNameBytes;
    const auto isInsideLetter = [&] {
        return (name[end] & '\xc0') == '\x80';
    };
    while (end > 0 && isInsideLetter())
        --end;
    return name.substr(0, end);
}

std::string shortID(const std::string& sessionID) {
    return Text::replaced(sessionID, "-", "").substr(0, kSessionIDLimit);
}

/// False when the name is taken there by another set than the archive's, which may lie there.
bool claimOnDestination(const RootFolder& destination, const RootFolder& archive,
                        const std::string& name) {
    try {
        const auto set = onDestination(name);
        destination.createFolders(set.parent_path());
        if (destination.createNewFolder(set))
            return true;
        const auto item = destination.attributes(set);
        return item.type == FileSystem::ItemType::Folder &&
               destination.below(set).isSame(archive.below(name));
    } catch (const PosixError&) {
        return true;
    }
}

void removeIfEmpty(const RootFolder& root, const std::filesystem::path& folder) noexcept {
    try {
        root.removeFolder(folder);
        root.below(folder.parent_path()).sync();
    } catch (const std::exception&) {
        // Then something lies in it, or the disk is broken.
    }
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

void migrateFolder(const RootFolder& root, const std::string& folder) {
    const auto manifest = ReportWriter::isoDecodeHead(
        root.read(std::filesystem::path(folder) / "manifest.json", kLargestManifestBytes));
    const auto name = uniqueName(displayName(manifest.startedAt, manifest.card.ekip,
                                             manifest.card.camera, manifest.card.name),
                                 manifest.sessionID, root, folder);
    if (name != folder) {
        if (root.exists(name))
            throw Error("the name is another session's");
        root.rename(folder, name);
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

std::string displayName(Instant startedAt, std::string_view ekip, std::string_view camera,
                        std::string_view cardName) {
    return fitForADisk(Clock::localText(startedAt, "yyyy-MM-dd-HHmmss") + "-" +
                       sanitize(ekip, kPersonLimit) + "-" +
                       sanitize(Text::trimmed(Text::pathSafeLabel(camera)), kPersonLimit) + "-" +
                       sanitize(cardName, kCardLimit));
}

std::string uniqueName(const std::string& name, const std::string& sessionID,
                       const RootFolder& root, std::string_view besides) {
    if (name == besides || !root.exists(name))
        return name;
    auto withShortID = name + "_" + shortID(sessionID);
    if (!root.exists(withShortID))
        return withShortID;
    return name + "_" + sanitize(sessionID, kSessionIDLimit);
}

std::string claim(const std::string& name, const std::string& sessionID, const RootFolder& archive,
                  const RootFolder* destination) {
    const auto withShortID = name + "_" + shortID(sessionID);
    auto candidate = name;
    for (int attempt = 1;; ++attempt) {
        if (archive.createNewFolder(candidate)) {
            if (!destination || claimOnDestination(*destination, archive, candidate))
                return candidate;
            remove(archive, candidate);
        }
        candidate = attempt == 1 ? withShortID : withShortID + "-" + std::to_string(attempt);
    }
}

void putWhole(const RootFolder& root, const std::filesystem::path& set, const Fill& fill) {
    // The name is claimed, and so is this one.
    const auto passing = set.parent_path() / ("." + set.filename().native() + ".part");
    bool isInPlace = false;
    try {
        root.createFolders(passing);
        fill(passing);
        root.rename(passing, set);
        isInPlace = true;
        root.below(set.parent_path()).sync();
    } catch (...) {
        remove(root, passing);
        if (isInPlace)
            remove(root, set);
        else
            removeIfEmpty(root, set);
        throw;
    }
}

void remove(const RootFolder& root, const std::filesystem::path& set) noexcept {
    // The manifest first: without it the rest passes for no set.
    for (const auto name : ReportWriter::fileNames) {
        try {
            root.removeFile(set / name);
        } catch (const std::exception&) {
            // The others may go all the same.
        }
    }
    removeIfEmpty(root, set);
}

std::filesystem::path onDestination(const std::string& name) {
    return std::filesystem::path(kReports) / name;
}

bool isOpaqueSessionID(std::string_view name) {
    constexpr std::string_view kForm = "hhhhhhhh-hhhh-hhhh-hhhh-hhhhhhhhhhhh";
    constexpr std::string_view kDigits = "0123456789abcdefABCDEF";
    return std::equal(
        name.begin(), name.end(), kForm.begin(), kForm.end(), [&](char character, char expected) {
            return expected == '-' ? character == '-' : kDigits.find(character) != kDigits.npos;
        });
}

std::filesystem::path destinationReportsRoot(const std::filesystem::path& mountPoint) {
    return mountPoint / kReports;
}

void copyToMountedDestination(const RootFolder& from, const SessionManifest& manifest,
                              const std::string& folderName) noexcept {
    try {
        const std::filesystem::path mountPoint = manifest.destination.mountPoint;
        if (!mountPoint.is_absolute())
            return;
        const RootFolder destination(mountPoint);
        // The manifest may come from anywhere; what it names must be the disk that it lies on.
        if (destination.isOnSameVolume(from))
            ReportWriter::copySidecars(from, destination, onDestination(folderName));
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
        migrateAll(RootFolder(mountPoint).below(kReports));
    } catch (const std::exception&) {
        // As above; or the folder is a link, which may lead to anywhere.
    }
}

} // namespace slatewise::ReportFolder
