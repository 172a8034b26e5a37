#include "Verify/ListedTree.h"

#include "MediaHashList/History.h"
#include "MediaHashList/ListError.h"
#include "Offload/TreeWalker.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Files/RootFolder.h"
#include "Platform/Text.h"
#include "Verify/ListReading.h"

#include <algorithm>

namespace slatewise::Verify {

namespace {

using MediaHashList::ListError;
using Reason = MediaHashList::ListError::Reason;

constexpr std::string_view kReports = "reports";

void throwIfAsked(const std::stop_token& stop) {
    if (stop.stop_requested())
        throw CancellationError();
}

bool isFolder(const std::filesystem::path& path) {
    const auto attributes = FileSystem::attributesIfAny(path);
    return attributes && attributes->type == FileSystem::ItemType::Folder;
}

/// Hashes of a card, of which there is no copy.
bool isOfHashesOnly(const SessionManifest& manifest) {
    return manifest.status == OutcomeStatus::Hashed ||
           std::any_of(manifest.files.begin(), manifest.files.end(),
                       [](const auto& file) { return file.action == RowAction::Hash; });
}

/// Where a session lies below its disk, wherever that is mounted today.
std::filesystem::path belowDisk(const SessionManifest& manifest) {
    return TreeWalker::relativePath(manifest.destination.sessionRoot,
                                    manifest.destination.mountPoint);
}

std::filesystem::path treeOf(const SessionManifest& manifest,
                             const std::filesystem::path& reportFolder) {
    const auto parent = reportFolder.parent_path();
    if (parent.filename() == kReports) {
        const auto relative = belowDisk(manifest).native();
        const auto beside = parent.parent_path() / relative;
        if (MediaHashList::leadsDown(relative) && isFolder(beside))
            return std::filesystem::canonical(beside);
    }
    const std::filesystem::path recorded = manifest.destination.sessionRoot;
    if (recorded.is_absolute() && isFolder(recorded))
        return std::filesystem::canonical(recorded);
    throw ListError(Reason::NoFolder, {}, recorded);
}

/// Histories of the tree and of folders in it.
void addHistories(ListedTree& tree, const std::stop_token& stop) {
    tree.folder = std::make_shared<const RootFolder>(tree.root);
    tree.withHistory = MediaHashList::foldersWithHistory(TreeWalker::walk(*tree.folder, {}));
    for (const auto& folder : tree.withHistory) {
        throwIfAsked(stop);
        addHistory(folder, tree);
    }
}

/// Whether a set without a readable manifest may be the session's: most are named after the card,
/// and their checksums are of files that are there.
bool mayBeOf(const std::filesystem::path& session, const std::filesystem::path& set) {
    const auto card = Text::replaced(session.filename().native(), " ", "_");
    if (set.filename().native().find(card) != std::string::npos)
        return true;
    try {
        const auto names = namesIn(set / kChecksums);
        return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
            return MediaHashList::leadsDown(name) && FileSystem::exists(session / name);
        });
    } catch (const Error&) {
        return false;
    }
}

/// The sets of a session in one folder of reports.
struct SessionReports {
    /// A folder that was deleted and written again has several, of which only the newest is true.
    ReportSet newest;
    std::vector<std::filesystem::path> damaged;
};

void seekReports(const std::filesystem::path& disk, ListedTree& tree, SessionReports& found) {
    if (!isFolder(disk / kReports))
        return;
    for (const auto& name : RootFolder(disk / kReports).names()) {
        const auto set = disk / kReports / name;
        const auto list = set / kManifest;
        if (set == tree.root || !isFolder(set) || !FileSystem::exists(list))
            continue;
        try {
            auto manifest = readManifest(list);
            const bool isOfTree = manifest.destination.sessionRoot == tree.root ||
                                  disk / belowDisk(manifest) == tree.root;
            const auto& newest = found.newest.manifest;
            if (isOfTree && !isOfHashesOnly(manifest) &&
                (!newest || manifest.startedAt >= newest->startedAt))
                found.newest = {set, std::move(manifest)};
        } catch (const Error& failure) {
            if (!mayBeOf(tree.root, set))
                continue;
            tell(tree, list, failure);
            found.damaged.push_back(set);
        }
    }
}

/// Looks for the session's reports at the root of the disk, which any folder above may be. Gives
/// the set that counts; its folder is empty when there is none.
ReportSet addReportsOfSession(ListedTree& tree) {
    SessionReports found;
    for (auto disk = tree.root; disk != disk.parent_path();) {
        disk = disk.parent_path();
        readOrTell(tree, disk / kReports, [&] { seekReports(disk, tree, found); });
    }
    if (found.newest.manifest) {
        addReports(found.newest, tree);
    } else {
        for (const auto& set : found.damaged)
            addReports({set, {}}, tree);
    }
    return std::move(found.newest);
}

/// The set in a folder. Fails when its manifest cannot be read.
ReportSet setIn(const std::filesystem::path& folder) {
    ReportSet set{folder, {}};
    if (FileSystem::exists(folder / kManifest))
        set.manifest = readManifest(folder / kManifest);
    return set;
}

/// Adds a set that was named, and finds the tree that it is of. Only the manifest knows where that
/// is; checksums alone are of the folder in which they lie.
ReportSet addNamedReports(ReportSet set, ListedTree& tree) {
    if (set.manifest && isOfHashesOnly(*set.manifest))
        throw ListError(Reason::OnlyHashes, {}, set.folder / kManifest);
    tree.root = set.manifest ? treeOf(*set.manifest, set.folder) : set.folder;
    addReports(set, tree);
    return set;
}

ReportSet addListsOfFolder(const std::filesystem::path& folder, ListedTree& tree) {
    tree.root = folder;
    auto ofSession = addReportsOfSession(tree);
    const bool isNamedAsReports =
        FileSystem::exists(folder / kManifest) || FileSystem::exists(folder / kChecksums);
    if (!isNamedAsReports || !tree.lists.empty() || !tree.troubles.empty())
        return ofSession;
    // A card may bring files that are only named as ours are.
    const bool hasHistory = isFolder(folder / MediaHashList::kHistoryFolder);
    ReportSet named{folder, {}};
    try {
        named = setIn(folder);
    } catch (const Error&) {
        if (hasHistory)
            return ofSession;
        throw;
    }
    return hasHistory && !named.manifest ? ofSession : addNamedReports(std::move(named), tree);
}

} // namespace

ListedTree findLists(const std::filesystem::path& given, const std::stop_token& stop) {
    std::error_code failure;
    const auto path = std::filesystem::canonical(given, failure);
    if (failure)
        throw PosixError("open", given, failure.value());
    ListedTree tree;
    ReportSet set;
    if (!isFolder(path)) {
        if (path.filename() != kManifest && path.filename() != kChecksums)
            throw ListError(Reason::UnknownFile, {}, path);
        set = addNamedReports(setIn(path.parent_path()), tree);
    } else {
        set = addListsOfFolder(path, tree);
    }
    throwIfAsked(stop);
    addHistories(tree, stop);
    if (set.manifest)
        compareHashLists(*set.manifest, tree);
    throwIfAsked(stop);
    if (tree.lists.empty() && tree.troubles.empty())
        throw ListError(Reason::NoList, {}, path);
    if (tree.files.empty() && tree.troubles.empty())
        throw ListError(Reason::NothingToCompare, {}, path);
    return tree;
}

} // namespace slatewise::Verify
