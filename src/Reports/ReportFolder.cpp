#include "Reports/ReportFolder.h"

#include "Offload/ReportNames.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"
#include "Reports/PassingSet.h"
#include "Reports/ReportWriter.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <vector>

namespace slatewise::ReportFolder {

namespace {

constexpr std::size_t kPersonLimit = 24;
constexpr std::size_t kCardLimit = 40;
constexpr std::size_t kSessionIDLimit = 8;

/// For a free name. A broken disk may say for ever that a name is taken.
constexpr int kMostAttempts = 1000;

/// What a file system takes as a name, less the session's id and what else may stand around it.
constexpr std::size_t kNumberRoom = 8;
constexpr std::size_t kLongestNameBytes =
    255 - 1 - kSessionIDLimit - kNumberRoom - PassingSet::kNameRoom;

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

/// Nobody takes a day over a set.
bool isOld(const RootFolder& folder, const std::string& name) {
    const auto item = folder.attributes(name);
    constexpr std::chrono::hours kLongest{24};
    return item.type == FileSystem::ItemType::Folder && item.modified &&
           *item.modified < Clock::now() - kLongest;
}

void removeUnfinished(const RootFolder& folder, const std::string& name) {
    const auto unfinished = folder.below(name);
    for (const auto& file : unfinished.names()) {
        if (file.ends_with(".tmp"))
            unfinished.removeFile(file);
    }
    remove(folder, name);
}

/// Removes the sets in the folder that a program which was killed did not come to finish, and the
/// empty folders by which it claimed names, as far as that is possible.
void removeUnfinishedIn(const RootFolder& folder) {
    for (const auto& name : folder.names()) {
        const bool isPassing = PassingSet::isNameOfOne(name);
        if (!isPassing && !isNameOfSet(name))
            continue;
        try {
            if (!isOld(folder, name))
                continue;
            // There may be thousands of whole sets, and only a claim is empty.
            if (!isPassing)
                removeIfEmpty(folder, name);
            // Whoever writes a set holds a lock on its folder, as far as their machine can.
            else if (const auto lock = folder.below(name).tryToLock())
                removeUnfinished(folder, name);
        } catch (const std::exception&) {
            // It is in nobody's way.
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
        if (attempt > kMostAttempts)
            throw PosixError("mkdir", archive.path() / candidate, EEXIST);
        if (archive.createNewFolder(candidate)) {
            if (!destination || claimOnDestination(*destination, archive, candidate))
                return candidate;
            remove(archive, candidate);
        }
        candidate = attempt == 1 ? withShortID : withShortID + "-" + std::to_string(attempt);
    }
}

void removeLeftovers(const RootFolder& archive,
                     std::span<const std::shared_ptr<const RootFolder>> destinations) noexcept {
    try {
        removeUnfinishedIn(archive);
    } catch (const std::exception&) {
        // What cannot be listed is left as it is.
    }
    for (const auto& destination : destinations) {
        try {
            removeUnfinishedIn(destination->below(ReportNames::folder));
        } catch (const std::exception&) {
            // As above, or no reports were left there yet.
        }
    }
}

void putWhole(const RootFolder& root, const std::filesystem::path& set, const Fill& fill) {
    PassingSet passing(root, set);
    fill(passing.folder());
    try {
        passing.putInPlace();
    } catch (...) {
        passing.takeBack();
        throw;
    }
}

bool clear(const RootFolder& root, const std::filesystem::path& set) noexcept {
    bool isCleared = true;
    // The manifest first: without it the rest passes for no set.
    for (const auto name : ReportWriter::fileNames) {
        try {
            root.removeFile(set / name);
        } catch (const PosixError& failure) {
            // The others may go all the same. Without its folder there is no file.
            isCleared = isCleared && failure.code() == ENOENT;
        } catch (const std::exception&) {
            isCleared = false;
        }
    }
    return isCleared;
}

void removeIfEmpty(const RootFolder& root, const std::filesystem::path& set) noexcept {
    try {
        root.removeFolder(set);
        root.below(set.parent_path()).sync();
    } catch (const std::exception&) {
        // Then something lies in it, or the disk is broken.
    }
}

void remove(const RootFolder& root, const std::filesystem::path& set) noexcept {
    clear(root, set);
    removeIfEmpty(root, set);
}

std::filesystem::path onDestination(const std::string& name) {
    return std::filesystem::path(ReportNames::folder) / name;
}

bool isNameOfSet(std::string_view name) {
    constexpr std::string_view kForm = "dddd-dd-dd-dddddd-";
    return name.size() > kForm.size() &&
           std::equal(kForm.begin(), kForm.end(), name.begin(), [](char expected, char character) {
               return expected == 'd' ? character >= '0' && character <= '9'
                                      : character == expected;
           });
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
    return mountPoint / ReportNames::folder;
}

} // namespace slatewise::ReportFolder
