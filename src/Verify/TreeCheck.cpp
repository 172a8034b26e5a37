#include "Verify/TreeCheck.h"

#include "MediaHashList/History.h"
#include "MediaHashList/IgnorePatterns.h"
#include "Offload/Transfer.h"
#include "Offload/TreeWalker.h"
#include "Platform/Disks/DeviceCache.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Files/UncachedFile.h"

#include <algorithm>
#include <cerrno>

namespace slatewise::Verify {

namespace {

/// Enough of them for a person to see what is the matter.
constexpr int kNamedFiles = 3;

/// Patterns are of paths below the folder of their history.
bool isIgnoredBelow(const std::string& folder, std::string_view path,
                    std::span<const std::string> patterns) {
    if (folder.empty())
        return MediaHashList::isIgnored(path, patterns);
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/' &&
           MediaHashList::isIgnored(path.substr(folder.size() + 1), patterns);
}

SkipNames withHistories(SkipNames names) {
    names.emplace(MediaHashList::kHistoryFolder);
    return names;
}

class Check {
public:
    Check(const ListedTree& tree, Keep keep, const Watch& watch, std::stop_token stop)
        : tree_(tree), root_(*tree.folder), keep_(keep), watch_(watch), stop_(std::move(stop)) {}

    Result run() {
        publish(Phase::Scanning());
        result_.mayBeFromMemory = DeviceCache::drop(tree_.root) == DeviceCache::Drop::NotPossible;
        for (const auto& trouble : tree_.troubles)
            tell({trouble.kind == ListTrouble::Kind::OfFailedRun ? Difference::Failed
                                                                 : Difference::Damaged,
                  trouble.list.native(), false, trouble.reason, trouble.failure});
        const auto entries = takeInventory();
        for (const auto& [path, expected] : tree_.files)
            bytesTotal_ += sizes_.contains(path) ? sizes_.at(path) : 0;
        for (const auto& [path, expected] : tree_.files) {
            throwIfCancelled();
            checkFile(path, expected);
            ++filesDone_;
        }
        for (const auto& entry : entries) {
            if (tree_.files.contains(entry.relativePath) || isLeftOut(entry.relativePath))
                continue;
            if (entry.isDirectory)
                result_.tree.folders.push_back(entry.relativePath);
            else if (entry.shouldCopy)
                tell({Difference::New, entry.relativePath});
        }
        // What was read was the right folder's. Under its path lies another by now, or none.
        if (!root_.isStillAtItsPath())
            tell({Difference::Missing, tree_.root.native()});
        return std::move(result_);
    }

private:
    std::vector<InventoryEntry> takeInventory() {
        auto entries = TreeWalker::walk(root_, {}, {},
                                        {.unreadable =
                                             [this](const std::string& folder, int code) {
                                                 tell({Difference::Unreadable, folder, false,
                                                       std::generic_category().message(code)});
                                             },
                                         .leadsOut = {}});
        for (const auto& entry : entries) {
            if (!entry.isDirectory)
                sizes_.emplace(entry.relativePath, entry.sizeBytes);
        }
        return entries;
    }

    /// What systems leave behind on a disk, and the lists themselves, are no additions.
    bool isLeftOut(const std::string& path) const {
        return TreeWalker::shouldSkip(path, path.substr(path.rfind('/') + 1), skipNames_) ||
               std::any_of(tree_.ignored.begin(), tree_.ignored.end(), [&](const auto& each) {
                   return isIgnoredBelow(each.first, path, each.second);
               });
    }

    void checkFile(const std::string& path, const Expected& expected) {
        publishFigures(path);
        if (!sizes_.contains(path))
            return tell({Difference::Missing, path});
        try {
            const bool isEqual = isAsExpected(path, expected);
            if (expected.empty())
                tell({Difference::Unproved, path});
            else if (!isEqual)
                tell({Difference::Changed, path});
            else
                ++result_.filesEqual;
        } catch (const CancellationError&) {
            throw;
        } catch (const PosixError& failure) {
            // No link is followed, which could lead anywhere.
            if (failure.code() == ELOOP)
                tell({Difference::Changed, path, true});
            else
                tell({Difference::Unreadable, path, false, describe(failure)});
        } catch (const std::exception& failure) {
            tell({Difference::Unreadable, path, false, describe(failure)});
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
                                publishFigures(path);
                            }},
                       stop_);
        return size;
    }

    void remember(const std::string& path, std::int64_t size, const HashValues& found) {
        if (keep_ == Keep::Nothing)
            return;
        MediaHashList::HashedFile file{path, size, root_.attributes(path).modified, {}};
        for (const auto& value : found) {
            if (value.format != HashFormat::SHA256)
                file.values.push_back({value.format, value.text, std::nullopt, Clock::now()});
        }
        result_.tree.files.push_back(std::move(file));
    }

    void tell(const Finding& finding) {
        ++result_.differences;
        if (watch_.finding)
            watch_.finding(finding);
    }

    void publishFigures(const std::string& path) {
        const double fraction = bytesTotal_ < 1 ? 0.0
                                                : static_cast<double>(result_.bytesRead) /
                                                      static_cast<double>(bytesTotal_);
        publish(Phase::Verifying{path, filesDone_, static_cast<int>(tree_.files.size()),
                                 std::min(fraction, 1.0)});
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
    const Keep keep_;
    const Watch& watch_;
    const std::stop_token stop_;
    Transfer transfer_;
    SkipNames skipNames_ = withHistories(TreeWalker::defaultSkipNames());
    /// Of every file that is there.
    std::map<std::string, std::int64_t> sizes_;
    std::int64_t bytesTotal_ = 0;
    int filesDone_ = 0;
    Result result_;
};

} // namespace

Result check(const ListedTree& tree, Keep keep, const Watch& watch, std::stop_token stop) {
    return Check(tree, keep, watch, std::move(stop)).run();
}

std::string Finding::explanation(L10n l10n) const {
    if (listFailure)
        return listFailure->text(l10n);
    if (difference == Difference::Failed)
        return std::string(l10n.itsRunFailed());
    return isLink ? std::string(l10n.itIsALink()) : reason;
}

std::vector<std::string> addGenerations(const ListedTree& tree, Result& result) {
    auto& hashed = result.tree;
    hashed.creator = MediaHashList::creatorHere();
    hashed.process = MediaHashList::Process::InPlace;
    hashed.ignored = MediaHashList::ignorePatterns(TreeWalker::defaultSkipNames());
    const auto isWanted = [&](const std::string& folder, const std::string& pattern) {
        return std::any_of(hashed.files.begin(), hashed.files.end(), [&](const auto& file) {
            return !MediaHashList::isOfHistory(file.path) &&
                   isIgnoredBelow(folder, file.path, {&pattern, 1});
        });
    };
    // A name that systems leave behind may have been wanted here.
    std::erase_if(hashed.ignored, [&](const auto& pattern) { return isWanted("", pattern); });
    hashed.ignoredBelow = tree.ignored;
    for (auto& below : hashed.ignoredBelow) {
        std::erase_if(below.second, [&](const std::string& pattern) {
            return std::find(hashed.ignored.begin(), hashed.ignored.end(), pattern) !=
                       hashed.ignored.end() ||
                   isWanted(below.first, pattern);
        });
    }
    auto added = MediaHashList::addGenerations(*tree.folder, {}, hashed, tree.withHistory);
    if (added.failure)
        std::rethrow_exception(added.failure);
    return std::move(added.leftOut);
}

} // namespace slatewise::Verify
