#include "Verify/TreeCheck.h"

#include "MediaHashList/History.h"
#include "MediaHashList/IgnorePatterns.h"
#include "Offload/CopyProgress.h"
#include "Offload/FileDates.h"
#include "Offload/OffloadError.h"
#include "Offload/Transfer.h"
#include "Offload/TreeWalker.h"
#include "Platform/Disks/DeviceCache.h"
#include "Platform/Disks/FileSystemType.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Files/UncachedFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <set>

namespace slatewise::Verify {

namespace {

/// Enough of them for a person to see what is the matter.
constexpr int kNamedFiles = 3;

/// What has that name in a walk's list, which is sorted; null when nothing does.
const InventoryEntry* entryIn(std::span<const InventoryEntry> entries, std::string_view path) {
    const auto found = std::lower_bound(entries.begin(), entries.end(), path,
                                        [](const InventoryEntry& entry, std::string_view name) {
                                            return entry.relativePath < name;
                                        });
    return found != entries.end() && found->relativePath == path ? &*found : nullptr;
}

const InventoryEntry* fileIn(std::span<const InventoryEntry> entries, std::string_view path) {
    const auto* const found = entryIn(entries, path);
    return found && !found->isDirectory ? found : nullptr;
}

class Check {
public:
    Check(const ListedTree& tree, Keep keep, const Watch& watch, std::stop_token stop)
        : tree_(tree), root_(*tree.folder), entries_(tree.entries), keep_(keep), watch_(watch),
          stop_(std::move(stop)), ignored_(tree.ignored),
          areDatesExact_(FileSystemType::keepsFileNumbers(tree.root)) {}

    Result run() {
        publish(Phase::Scanning());
        result_.mayBeFromMemory = !emptyMemory();
        for (const auto& trouble : tree_.troubles) {
            if (keep_ == Keep::Nothing || trouble.kind != ListTrouble::Kind::Unfinished)
                tell(trouble);
        }
        for (const auto& [path, code] : tree_.unread)
            tellUnreadable(path, code);
        for (const auto& [path, expected] : tree_.files) {
            if (const auto* file = fileIn(entries_, path))
                bytesTotal_ += file->sizeBytes;
        }
        for (const auto& [path, expected] : tree_.files) {
            throwIfCancelled();
            checkFile(path, expected);
            ++filesDone_;
        }
        checkFolders();
        for (const auto& entry : entries_) {
            throwIfCancelled();
            rememberList(entry);
            if (isNew(entry))
                tell({Difference::New, entry.relativePath});
            else if (entry.isDirectory && !isIgnoredFolder(entry.relativePath))
                folders(entry.relativePath).push_back(entry.relativePath);
        }
        throwIfCancelled();
        lookAgain();
        // What was read was the right folder's. Under its path lies another by now, or none.
        if (!root_.isStillAtItsPath())
            tell({Difference::Missing, tree_.root.native()});
        if (keep_ == Keep::Tree && !result_.isAllEqual())
            tellUnfinished();
        return std::move(result_);
    }

private:
    /// What was written a moment ago is only in memory, and can be dropped from there once it is on
    /// the disk. False when that cannot be had. A disk that lost what it was given is no good.
    bool emptyMemory() {
        constexpr std::array kLost = {EIO, ENOSPC, EDQUOT};
        try {
            root_.syncVolume();
        } catch (const PosixError& failure) {
            if (std::find(kLost.begin(), kLost.end(), failure.code()) != kLost.end())
                tell({Difference::Unreadable, tree_.root.native(), Circumstance::None,
                      std::current_exception()});
            return false;
        }
        return DeviceCache::drop(tree_.root) != DeviceCache::Drop::NotPossible;
    }

    std::vector<InventoryEntry> takeInventory() {
        const auto note = [this](const std::string& path, int code) {
            tellUnreadable(path, code);
        };
        return TreeWalker::walk(root_, {}, {}, {.unreadable = note, .stop = stop_});
    }

    /// Where a folder belongs: nobody looked into all of them.
    std::vector<std::string>& folders(const std::string& path) {
        const bool isUnread =
            std::any_of(tree_.unread.begin(), tree_.unread.end(),
                        [&](const UnreadItem& each) { return each.path == path; });
        return isUnread ? result_.tree.unknownFiles : result_.tree.folders;
    }

    /// What of the lists lies in such a folder is missed by its name.
    void tellUnreadable(const std::string& folder, int code) {
        if (isFolderLeftBySystem(folder) ||
            (code == EACCES && TreeWalker::isRepairFolder(root_, folder)))
            return;
        const auto name = folder.empty() ? tree_.root.native() : folder;
        if (!told_.contains(name))
            tell({Difference::Unreadable, name, Circumstance::None,
                  std::make_exception_ptr(PosixError("open", folder, code))});
    }

    /// A run's reports name all that it left there; else a list may have left out what it named
    /// nowhere.
    bool isNew(const InventoryEntry& entry) {
        const auto& path = entry.relativePath;
        if (entry.isDirectory || tree_.files.contains(path) || tree_.isList(path) ||
            isLeftBySystem(path) || isPartOfHistory(entry))
            return false;
        return tree_.isReported(path) || MediaHashList::liesInHistory(path) ||
               !ignored_.ignores(path);
    }

    /// A history's chain and its lists, of which any that no chain names is told anyway, and what
    /// is left of one that was being written.
    bool isPartOfHistory(const InventoryEntry& entry) const {
        const std::filesystem::path path = entry.relativePath;
        const auto holder = path.parent_path();
        const auto name = path.filename().native();
        const auto& folders = tree_.withHistory;
        return holder.filename() == MediaHashList::kHistoryFolder &&
               std::find(folders.begin(), folders.end(), holder.parent_path()) != folders.end() &&
               (name == MediaHashList::kChainName || name.ends_with(".mhl") ||
                (entry.shouldCopy && MediaHashList::isPassingName(name)));
    }

    /// A folder with files in it is missed with them.
    void checkFolders() {
        for (const auto& path : tree_.folders) {
            const auto within = tree_.files.lower_bound(path + "/");
            if (within != tree_.files.end() && within->first.starts_with(path + "/"))
                continue;
            const auto* const found = entryIn(entries_, path);
            if (!(found && found->isDirectory) && !isIgnoredFolder(path))
                tell({Difference::Missing, path});
        }
    }

    void tellUnfinished() {
        for (const auto& trouble : tree_.troubles) {
            if (trouble.kind == ListTrouble::Kind::Unfinished)
                tell(trouble);
        }
    }

    /// The disk stays in the hands of people and programs while it is read, and what was the same
    /// an hour ago need not be so in the end.
    void lookAgain() {
        std::vector<InventoryEntry> entries;
        try {
            entries = takeInventory();
        } catch (const PosixError&) {
            return tell({Difference::Unreadable, tree_.root.native(), Circumstance::CameMeanwhile,
                         std::current_exception()});
        }
        for (const auto& [path, expected] : tree_.files) {
            const auto* before = fileIn(entries_, path);
            const auto* now = fileIn(entries, path);
            if (told_.contains(path) || (now && isSame(*now, *before)))
                continue;
            --result_.filesEqual;
            tell({now ? Difference::Changed : Difference::Missing, path,
                  Circumstance::CameMeanwhile});
        }
        for (const auto& entry : entries) {
            if (isNew(entry) && !told_.contains(entry.relativePath))
                tell({Difference::New, entry.relativePath, Circumstance::CameMeanwhile});
        }
    }

    /// Inodes are not compared: some file systems number a file anew each time.
    bool isSame(const InventoryEntry& now, const InventoryEntry& before) const {
        if (areDatesExact_)
            return now.sizeBytes == before.sizeBytes && now.changes == before.changes;
        const auto dates = FileDates::of(now);
        const auto earlier = FileDates::of(before);
        return now.sizeBytes == before.sizeBytes && !dates.isOfOtherContent(earlier) &&
               !dates.isTouchedSince(earlier, false);
    }

    bool isLeftBySystem(const std::string& path) const {
        return TreeWalker::shouldSkip(path, path.substr(path.rfind('/') + 1),
                                      TreeWalker::defaultSkipNames()) ||
               !tree_.trashPattern(path).empty();
    }

    bool isFolderLeftBySystem(const std::string& path) const {
        return isLeftBySystem(path) || !tree_.trashPattern(path + "/").empty();
    }

    /// Such a folder is no part of what is hashed, and nobody misses it.
    bool isIgnoredFolder(const std::string& path) {
        return isFolderLeftBySystem(path) || MediaHashList::isOfHistory(path) ||
               ignored_.ignores(path, true);
    }

    /// Once there is a history, a list that lies among the files is one of them. What is read of it
    /// is no footage.
    void rememberList(const InventoryEntry& entry) {
        const auto& path = entry.relativePath;
        if (keep_ != Keep::Tree || !entry.shouldCopy || entry.isDirectory || !tree_.isList(path) ||
            MediaHashList::liesInHistory(path) || isLeftBySystem(path) || ignored_.ignores(path) ||
            tree_.files.contains(path))
            return;
        const auto bytesRead = result_.bytesRead;
        readOrTell(path, [&] { (void)isAsExpected(path, {}); });
        result_.bytesRead = bytesRead;
    }

    void checkFile(const std::string& path, const Expected& expected) {
        publishFigures(path);
        if (!fileIn(entries_, path))
            return tell({Difference::Missing, path});
        readOrTell(path, [&] {
            const bool isEqual = isAsExpected(path, expected);
            if (expected.empty())
                tell({Difference::Unproved, path});
            else if (!isEqual)
                tell({Difference::Changed, path});
            else
                ++result_.filesEqual;
        });
    }

    template <typename Read>
    void readOrTell(const std::string& path, Read&& read) {
        try {
            read();
        } catch (const CancellationError&) {
            throw;
        } catch (const PosixError& failure) {
            // No link is followed, which could lead anywhere.
            if (failure.code() == ELOOP)
                tell({Difference::Changed, path, Circumstance::IsLink});
            else
                tell({Difference::Unreadable, path, Circumstance::None, std::current_exception()});
        } catch (const std::exception&) {
            tell({Difference::Unreadable, path, Circumstance::None, std::current_exception()});
        }
    }

    /// Reads the file once, for every format that a list has of it.
    bool isAsExpected(const std::string& path, const Expected& expected) {
        std::vector<HashFormat> formats;
        const auto want = [&](HashFormat format) {
            if (std::find(formats.begin(), formats.end(), format) == formats.end())
                formats.push_back(format);
        };
        for (const auto& value : expected)
            want(value.format);
        if (keep_ == Keep::Tree)
            want(HashFormat::XXH128);
        PassHasher hasher(formats);
        const auto size = read(path, hasher);
        const auto found = hasher.finish();
        remember(path, size, found);
        return std::all_of(expected.begin(), expected.end(), [&](const HashValue& each) {
            return each.text == valueOf(found, each.format);
        });
    }

    /// Gives how long the file is.
    std::int64_t read(const std::string& path, PassHasher& hasher) {
        std::int64_t size = 0;
        auto file = std::make_shared<UncachedFile>(UncachedFile::openForReading({root_, path}));
        if (file->isKeptInMemory() && ++result_.filesKeptInMemory <= kNamedFiles)
            result_.keptInMemory.push_back(path);
        transfer_.read(std::move(file),
                       {.hash = [&](std::span<const std::byte> chunk) { hasher.update(chunk); },
                        .tell =
                            [&](std::size_t count) {
                                size += static_cast<std::int64_t>(count);
                                result_.bytesRead += static_cast<std::int64_t>(count);
                                speed_.add(static_cast<std::int64_t>(count),
                                           SpeedMeter::Time::clock::now());
                                publishFigures(path);
                            }},
                       stop_);
        return size;
    }

    void remember(const std::string& path, std::int64_t size, const HashValues& found) {
        if (keep_ == Keep::Nothing)
            return;
        MediaHashList::HashedFile file{path, size, root_.attributes(path).modified, {}};
        if (const auto other = tree_.listedAs.find(path); other != tree_.listedAs.end())
            file.previousPath = other->second;
        for (const auto& value : found) {
            if (value.format != HashFormat::SHA256)
                file.values.push_back({value.format, value.text, std::nullopt, Clock::now()});
        }
        result_.tree.files.push_back(std::move(file));
    }

    void tell(const ListTrouble& trouble) {
        tell({trouble.kind == ListTrouble::Kind::OfFailedRun ? Difference::Failed
                                                             : Difference::Damaged,
              trouble.list.native(), Circumstance::None, trouble.failure});
    }

    void tell(const Finding& finding) {
        ++result_.differences;
        told_.insert(finding.path);
        if (watch_.finding)
            watch_.finding(finding);
    }

    void publishFigures(const std::string& path) {
        const double fraction = bytesTotal_ < 1 ? 0.0
                                                : static_cast<double>(result_.bytesRead) /
                                                      static_cast<double>(bytesTotal_);
        publish(Phase::Verifying{
            path, filesDone_, static_cast<int>(tree_.files.size()), std::min(fraction, 1.0),
            speed_.bytesPerSecond(SpeedMeter::Time::clock::now()), result_.bytesRead, bytesTotal_});
    }

    void publish(const OffloadPhase& phase) const {
        if (watch_.progress)
            watch_.progress(phase);
    }

    void throwIfCancelled() const {
        if (stop_.stop_requested())
            throw CancellationError();
    }

    const ListedTree& tree_;
    const RootFolder& root_;
    /// All that was there at first.
    const std::vector<InventoryEntry>& entries_;
    const Keep keep_;
    const Watch& watch_;
    const std::stop_token stop_;
    MediaHashList::IgnoreLists ignored_;
    /// Every change of a file shows in its dates, to the nanosecond.
    const bool areDatesExact_;
    Transfer transfer_;
    std::int64_t bytesTotal_ = 0;
    SpeedMeter speed_;
    int filesDone_ = 0;
    std::set<std::string> told_;
    Result result_;
};

} // namespace

Result check(const ListedTree& tree, Keep keep, const Watch& watch, std::stop_token stop) {
    return Check(tree, keep, watch, std::move(stop)).run();
}

} // namespace slatewise::Verify
