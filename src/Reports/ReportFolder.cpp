#include "Reports/ReportFolder.h"

#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"
#include "Reports/ReportWriter.h"

#include <algorithm>
#include <vector>

namespace slatewise::ReportFolder {

namespace {

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
bool claimOnDestination(const std::filesystem::path& reportsRoot,
                        const std::filesystem::path& archive, const std::string& name) {
    try {
        FileSystem::createFolders(reportsRoot);
        return FileSystem::createNewFolder(reportsRoot / name) ||
               FileSystem::isSame(reportsRoot / name, archive / name);
    } catch (const PosixError&) {
        return true;
    }
}

/// So that two spellings of one path are equal.
std::filesystem::path standardised(const std::filesystem::path& path) {
    auto normal = path.lexically_normal();
    return normal.has_filename() ? normal : normal.parent_path();
}

/// The folders in `root` that bear a session's id, in the order of their names.
std::vector<std::filesystem::path> opaqueFolders(const std::filesystem::path& root) {
    std::vector<std::filesystem::path> folders;
    std::error_code failure;
    for (auto entry = std::filesystem::directory_iterator(root, failure);
         !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
        std::error_code ignored;
        const bool isFolder = std::filesystem::is_directory(entry->symlink_status(ignored));
        if (isFolder && isOpaqueSessionID(entry->path().filename().native()))
            folders.push_back(entry->path());
    }
    if (failure)
        return {};
    std::sort(folders.begin(), folders.end());
    return folders;
}

SessionManifest readManifest(const std::filesystem::path& file) {
    // A pipe of that name would hold up whoever opens it.
    if (FileSystem::attributes(file).type != FileSystem::ItemType::RegularFile)
        throw Error("no manifest");
    return ReportWriter::isoDecode(FileSystem::read(file));
}

void migrateFolder(const std::filesystem::path& folder) {
    const auto manifest = readManifest(folder / "manifest.json");
    const auto root = folder.parent_path();
    const auto name = uniqueName(displayName(manifest.startedAt, manifest.card.ekip,
                                             manifest.card.camera, manifest.card.name),
                                 manifest.sessionID, root, folder);
    const auto target = root / name;
    if (target != folder) {
        if (FileSystem::exists(target))
            throw Error("the name is another session's");
        std::filesystem::rename(folder, target);
    }
    copyToMountedDestination(target, manifest, name);
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
                       const std::filesystem::path& root,
                       const std::optional<std::filesystem::path>& besides) {
    const auto candidate = root / name;
    if (!FileSystem::exists(candidate))
        return name;
    if (besides && standardised(*besides) == standardised(candidate))
        return name;
    auto withShortID = name + "_" + shortID(sessionID);
    if (!FileSystem::exists(root / withShortID))
        return withShortID;
    return name + "_" + sanitize(sessionID, kSessionIDLimit);
}

std::string claim(const std::string& name, const std::string& sessionID,
                  const std::filesystem::path& archive, const std::filesystem::path& reportsRoot) {
    const auto withShortID = name + "_" + shortID(sessionID);
    auto candidate = name;
    for (int attempt = 1;; ++attempt) {
        if (FileSystem::createNewFolder(archive / candidate)) {
            if (claimOnDestination(reportsRoot, archive, candidate))
                return candidate;
            std::error_code ignored;
            std::filesystem::remove(archive / candidate, ignored);
        }
        candidate = attempt == 1 ? withShortID : withShortID + "-" + std::to_string(attempt);
    }
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
    return mountPoint / "reports";
}

void copyToMountedDestination(const std::filesystem::path& from, const SessionManifest& manifest,
                              const std::string& folderName) noexcept {
    try {
        const std::filesystem::path mountPoint = manifest.destination.mountPoint;
        // The manifest may come from anywhere; what it names must be the disk that it lies on.
        if (FileSystem::isOnSameVolume(from, mountPoint))
            ReportWriter::copySidecars(from, destinationReportsRoot(mountPoint) / folderName);
    } catch (const std::exception&) {
        // The set lies where it was; a copy that is missing is no reason to trouble anyone.
    }
}

void migrateReadableNames(const std::filesystem::path& root) noexcept {
    try {
        for (const auto& folder : opaqueFolders(root)) {
            try {
                migrateFolder(folder);
            } catch (const std::exception&) {
                // It keeps its name, by which it is found again the next time.
            }
        }
    } catch (const std::exception&) {
        // Not even listed: then there is nothing to rename.
    }
}

} // namespace slatewise::ReportFolder
