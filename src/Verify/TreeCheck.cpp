#include "Verify/TreeCheck.h"

#include "MediaHashList/FolderHashes.h"
#include "MediaHashList/History.h"
#include "Offload/SHA256Hasher.h"
#include "Offload/TreeWalker.h"
#include "Platform/AppInfo.h"
#include "Platform/Disks/DeviceCache.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Files/UncachedFile.h"
#include "Platform/Sha256.h"
#include "Platform/Text.h"

#include <QString>
#include <QSysInfo>

#include <algorithm>
#include <cerrno>

namespace slatewise::Verify {

namespace {

using MediaHashList::FileValue;
using MediaHashList::HashFormat;

std::string hex(const Sha256::Digest& digest) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    for (const auto byte : digest) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0x0f];
    }
    return text;
}

/// Whether a link stands anywhere on the way down, which could lead anywhere.
bool passesLink(const std::filesystem::path& root, const std::string& path) {
    auto at = root;
    for (const auto part : Text::pieces(path, '/')) {
        at /= part;
        if (std::filesystem::is_symlink(std::filesystem::symlink_status(at)))
            return true;
    }
    return false;
}

class Check {
public:
    Check(const ListedTree& tree, Keep keep, const Watch& watch, std::stop_token stop)
        : tree_(tree), root_(tree.root), keep_(keep), watch_(watch), stop_(std::move(stop)),
          buffer_(SHA256Hasher::bufferSize) {}

    Result run() {
        publish(Phase::Scanning());
        result_.mayBeFromMemory = DeviceCache::drop(tree_.root) == DeviceCache::Drop::NotPossible;
        const auto entries = takeInventory();
        for (const auto& [path, expected] : tree_.files)
            bytesTotal_ += sizes_.contains(path) ? sizes_.at(path) : 0;
        for (const auto& [path, expected] : tree_.files) {
            throwIfCancelled();
            checkFile(path, expected);
            ++filesDone_;
        }
        for (const auto& entry : entries) {
            if (entry.shouldCopy && !isLeftOut(entry.relativePath))
                tell(Difference::New, entry.relativePath);
        }
        return std::move(result_);
    }

private:
    std::vector<InventoryEntry> takeInventory() {
        auto entries = TreeWalker::walk(root_, {}, {},
                                        {.unreadable =
                                             [this](const std::string& folder, int code) {
                                                 tell(Difference::Unreadable, folder,
                                                      std::generic_category().message(code));
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
        if (tree_.files.contains(path))
            return true;
        auto names = TreeWalker::defaultSkipNames();
        names.insert(tree_.ignoredNames.begin(), tree_.ignoredNames.end());
        names.insert(std::string(MediaHashList::kHistoryFolder));
        return TreeWalker::shouldSkip(path, path.substr(path.rfind('/') + 1), names);
    }

    void checkFile(const std::string& path, const Expected& expected) {
        publishFigures(path);
        if (!sizes_.contains(path))
            return tell(Difference::Missing, path);
        try {
            if (passesLink(tree_.root, path))
                return tell(Difference::Changed, path, "a link");
            const auto equal = isEqual(path, expected);
            if (expected.isUnproved())
                tell(Difference::Unproved, path);
            else if (!equal)
                tell(Difference::Changed, path);
            else
                ++result_.filesEqual;
        } catch (const CancellationError&) {
            throw;
        } catch (const std::exception& failure) {
            tell(Difference::Unreadable, path, describe(failure));
        }
    }

    /// Reads the file once, for every kind of value that a list has of it.
    bool isEqual(const std::string& path, const Expected& expected) {
        std::vector<HashFormat> formats;
        const auto want = [&](HashFormat format) {
            if (std::find(formats.begin(), formats.end(), format) == formats.end())
                formats.push_back(format);
        };
        for (const auto& value : expected.values)
            want(value.format);
        if (keep_ == Keep::Generation)
            want(HashFormat::XXH128);
        std::map<HashFormat, MediaHashList::Hasher> hashers;
        for (const auto format : formats)
            hashers.emplace(format, format);
        Sha256 sha256;
        const auto size = read(path, [&](std::span<const std::byte> chunk) {
            if (!expected.sha256.empty())
                sha256.update(chunk);
            for (auto& [format, hasher] : hashers)
                hasher.update(chunk);
        });
        std::map<HashFormat, std::string> found;
        for (auto& [format, hasher] : hashers)
            found.emplace(format, hasher.finish());
        note(path, size, found);
        const auto digest = hex(sha256.finish());
        return std::all_of(expected.sha256.begin(), expected.sha256.end(),
                           [&](const auto& each) { return each == digest; }) &&
               std::all_of(
                   expected.values.begin(), expected.values.end(),
                   [&](const FileValue& each) { return each.value == found.at(each.format); });
    }

    template <typename Each>
    std::int64_t read(const std::string& path, Each&& each) {
        auto file = UncachedFile::openForReading({root_, path});
        std::int64_t size = 0;
        while (const auto count = file.read(buffer_.bytes())) {
            each(std::span<const std::byte>(buffer_.bytes().first(count)));
            size += static_cast<std::int64_t>(count);
            result_.bytesRead += static_cast<std::int64_t>(count);
            publishFigures(path);
            throwIfCancelled();
        }
        return size;
    }

    void note(const std::string& path, std::int64_t size,
              const std::map<HashFormat, std::string>& found) {
        if (keep_ == Keep::Nothing)
            return;
        const auto attributes = FileSystem::attributes(tree_.root / path);
        MediaHashList::HashedFile file{path, size, attributes.modified, {}};
        for (const auto& [format, value] : found)
            file.values.push_back({format, value, std::nullopt, Clock::now()});
        result_.generation.files.push_back(std::move(file));
    }

    void tell(Difference difference, const std::string& path, const std::string& reason = "") {
        ++result_.differences;
        if (watch_.difference)
            watch_.difference(difference, path, reason);
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
    const RootFolder root_;
    const Keep keep_;
    const Watch& watch_;
    const std::stop_token stop_;
    TransferBuffer buffer_;
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

std::vector<std::string> addGeneration(const ListedTree& tree, Result& result) {
    if (!tree.nestedHistories.empty()) {
        throw Error("no generation was added: " +
                    Text::displayable((tree.root / tree.nestedHistories.front()).native()) +
                    " has a history of its own");
    }
    auto& generation = result.generation;
    std::vector<std::string> leftOut;
    MediaHashList::FolderHashes hashes(HashFormat::XXH128);
    std::erase_if(generation.files, [&](const auto& file) {
        if (MediaHashList::canHold(file.path))
            return false;
        leftOut.push_back(file.path);
        return true;
    });
    for (const auto& file : generation.files) {
        for (const auto& value : file.values) {
            if (value.format == HashFormat::XXH128)
                hashes.addFile(file.path, value.value);
        }
    }
    for (auto& [path, value] : hashes.finish()) {
        if (path.empty()) {
            generation.root = {value};
            continue;
        }
        const auto attributes = FileSystem::attributesIfAny(tree.root / path);
        generation.folders.push_back(
            {path, attributes ? attributes->modified : std::nullopt, {value}});
    }
    generation.creator.createdAt = Clock::now();
    generation.creator.hostName = QSysInfo::machineHostName().toStdString();
    generation.creator.tool = AppInfo::name;
    generation.creator.toolVersion = AppInfo::version;
    generation.process = MediaHashList::Process::InPlace;
    generation.ignored = {".DS_Store", "ascmhl", "ascmhl/"};
    auto history = MediaHashList::History::load(tree.root);
    history.judge(generation);
    history.append(generation);
    return leftOut;
}

} // namespace slatewise::Verify
