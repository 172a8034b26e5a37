#include "MediaHashList/HashedTree.h"

#include "MediaHashList/FolderHashes.h"
#include "MediaHashList/History.h"
#include "Offload/TreeWalker.h"
#include "Platform/AppInfo.h"
#include "Platform/Error.h"
#include "Platform/Text.h"

#include <QString>
#include <QSysInfo>

#include <algorithm>
#include <map>
#include <optional>
#include <set>

namespace slatewise::MediaHashList {

namespace {

std::string_view parentPath(std::string_view path) {
    const auto slash = path.rfind('/');
    return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
}

std::string joined(const std::string& folder, const std::string& path) {
    return folder.empty() ? path : folder + "/" + path;
}

std::string below(const std::string& folder, std::string_view path) {
    return std::string(folder.empty() ? path : path.substr(folder.size() + 1));
}

/// What one history is to hold. Paths are below its own folder.
struct Share {
    std::vector<HashedFile> files;
    std::vector<std::string> folders;
    std::vector<std::string> unknownFiles;
};

/// What the history above is to say of one.
struct Nested {
    std::string path;
    Reference list;
    std::optional<FolderValue> value;
};

class Adding {
public:
    Adding(const RootFolder& root, const std::filesystem::path& place, const HashedTree& tree,
           std::span<const std::string> withHistory)
        : root_(root), place_(place), tree_(tree),
          existing_(withHistory.begin(), withHistory.end()),
          folders_(withHistory.begin(), withHistory.end()) {
        if (!existing_.contains(""))
            folders_.emplace_back();
    }

    AddedGenerations run() {
        shareOut();
        try {
            for (const auto& folder : folders_)
                add(folder);
        } catch (const Error&) {
            added_.failure = std::current_exception();
        }
        return std::move(added_);
    }

private:
    void shareOut() {
        for (const auto& file : tree_.files) {
            const auto folder = folderOf(file.path, folders_);
            auto copy = file;
            copy.path = below(folder, file.path);
            // Only the history that has it under that name is to know of it.
            copy.previousPath = file.previousPath.starts_with(joined(folder, ""))
                                    ? below(folder, file.previousPath)
                                    : "";
            if (!liesInHistory(file.path))
                shares_[folder].files.push_back(std::move(copy));
        }
        for (const auto& path : tree_.folders) {
            const auto folder = folderOf(path, folders_);
            if (!isOfHistory(path) && !existing_.contains(path))
                shares_[folder].folders.push_back(below(folder, path));
        }
        for (const auto& path : tree_.unknownFiles) {
            const auto folder = folderOf(path, folders_);
            if (!liesInHistory(path))
                shares_[folder].unknownFiles.push_back(below(folder, path));
        }
    }

    void add(const std::string& folder) {
        auto& share = shares_[folder];
        Generation next;
        next.creator = tree_.creator;
        next.process = tree_.process;
        next.ignored = tree_.ignored;
        if (const auto own = tree_.ignoredBelow.find(folder); own != tree_.ignoredBelow.end())
            next.ignored.insert(next.ignored.end(), own->second.begin(), own->second.end());
        FolderHashes hashes(HashFormat::XXH128);
        takeFiles(folder, share, next, hashes);
        takeNested(folder, next, hashes);
        const auto root = takeFolders(folder, hashes, next);
        const auto place = folder.empty() ? place_ : place_ / folder;
        // Another program may have made it since the tree was looked through.
        auto history = History::toGoOn(root_, place);
        history.judge(next);
        auto list = history.append(std::move(next));
        list.path = joined(folder, list.path);
        added_.lists.push_back(list.path);
        added_.lists.push_back(
            joined(folder, std::string(kHistoryFolder) + "/" + std::string(kChainName)));
        if (!folder.empty())
            nested_[folderOf(folder, folders_)].push_back({folder, std::move(list), root});
    }

    void takeFiles(const std::string& folder, Share& share, Generation& next,
                   FolderHashes& hashes) {
        for (auto& file : share.files) {
            const auto hash = std::find_if(file.values.begin(), file.values.end(), [](auto& value) {
                return value.format == HashFormat::XXH128 && value.action != HashAction::Failed;
            });
            if (!canHold(file.path))
                leaveOut(folder, file.path, hashes);
            else if (hash == file.values.end())
                hashes.addUnknown(file.path);
            else
                hashes.addFile(file.path, hash->value);
            if (canHold(file.path))
                next.files.push_back(std::move(file));
        }
        for (const auto& path : share.unknownFiles)
            hashes.addUnknown(path);
        for (const auto& path : share.folders) {
            if (canHold(path))
                hashes.addFolder(path);
            else
                leaveOut(folder, path, hashes);
        }
    }

    void leaveOut(const std::string& folder, const std::string& path, FolderHashes& hashes) {
        added_.leftOut.push_back(joined(folder, path));
        hashes.addUnknown(path);
    }

    void takeNested(const std::string& folder, Generation& next, FolderHashes& hashes) {
        for (const auto& nested : nested_[folder]) {
            const auto path = below(folder, nested.path);
            if (!canHold(path)) {
                leaveOut(folder, path, hashes);
                continue;
            }
            next.references.push_back({below(folder, nested.list.path), nested.list.c4});
            if (!nested.value) {
                hashes.addUnknown(path);
                continue;
            }
            hashes.addFolder(path, *nested.value);
            next.folders.push_back({path, modifiedAt(nested.path), {*nested.value}});
        }
    }

    /// Gives the value of the history's own folder.
    std::optional<FolderValue> takeFolders(const std::string& folder, FolderHashes& hashes,
                                           Generation& next) {
        std::optional<FolderValue> root;
        for (const auto& [path, value] : hashes.finish()) {
            if (path.empty())
                root = value;
            else if (canHold(path))
                next.folders.push_back({path, modifiedAt(joined(folder, path)), {value}});
        }
        if (root)
            next.root = {*root};
        return root;
    }

    /// A date is a fact, nothing depends on it.
    std::optional<Instant> modifiedAt(const std::string& path) const {
        try {
            return root_.attributes(place_ / path).modified;
        } catch (const PosixError&) {
            return std::nullopt;
        }
    }

    const RootFolder& root_;
    const std::filesystem::path& place_;
    const HashedTree& tree_;
    const std::set<std::string, std::less<>> existing_;
    /// Inner ones first; the root is always among them.
    std::vector<std::string> folders_;
    std::map<std::string, Share> shares_;
    /// By the folder of the history above.
    std::map<std::string, std::vector<Nested>> nested_;
    AddedGenerations added_;
};

} // namespace

std::vector<std::string> foldersWithHistory(std::span<const InventoryEntry> entries) {
    std::set<std::string, std::greater<>> folders;
    for (const auto& entry : entries) {
        const auto holder = parentPath(entry.relativePath);
        const auto parts = Text::pieces(holder, '/');
        const auto name =
            std::string_view(entry.relativePath).substr(entry.relativePath.rfind('/') + 1);
        const bool isList = (name.ends_with(".mhl") || name == kChainName) &&
                            !TreeWalker::shouldSkip(name, name, {});
        if (!entry.isDirectory && isList && !parts.empty() && parts.back() == kHistoryFolder &&
            !isOfHistory(parentPath(holder)))
            folders.emplace(parentPath(holder));
    }
    return {folders.begin(), folders.end()};
}

bool isOfHistory(std::string_view folder) {
    const auto parts = Text::pieces(folder, '/');
    return std::find(parts.begin(), parts.end(), kHistoryFolder) != parts.end();
}

bool liesInHistory(std::string_view path) {
    return isOfHistory(parentPath(path));
}

std::string folderOf(std::string_view path, std::span<const std::string> foldersWithHistory) {
    while (!path.empty()) {
        path = parentPath(path);
        if (std::find(foldersWithHistory.begin(), foldersWithHistory.end(), path) !=
            foldersWithHistory.end())
            break;
    }
    return std::string(path);
}

Creator creatorHere(const OffloadSettings& settings) {
    Creator creator;
    creator.createdAt = Clock::now();
    creator.hostName = QSysInfo::machineHostName().toStdString();
    creator.tool = AppInfo::name;
    creator.toolVersion = AppInfo::version;
    if (!settings.listAuthor.empty() || !settings.listRole.empty())
        creator.authors = {{settings.listAuthor, settings.listRole}};
    creator.location = settings.listLocation;
    return creator;
}

AddedGenerations addGenerations(const RootFolder& root, const std::filesystem::path& below,
                                const HashedTree& tree,
                                std::span<const std::string> foldersWithHistory) {
    return Adding(root, below, tree, foldersWithHistory).run();
}

} // namespace slatewise::MediaHashList
