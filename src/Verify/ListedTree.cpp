#include "Verify/ListedTree.h"

#include "MediaHashList/History.h"
#include "MediaHashList/ListError.h"
#include "Offload/TreeWalker.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Files/RootFolder.h"
#include "Platform/Text.h"
#include "Verify/ListReading.h"
#include "Verify/SessionFolder.h"

#include <algorithm>

namespace slatewise::Verify {

namespace {

using MediaHashList::ListError;
using Reason = MediaHashList::ListError::Reason;

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

/// Histories of the tree and of folders in it.
void addHistories(ListedTree& tree, const std::stop_token& stop) {
    tree.withHistory = MediaHashList::foldersWithHistory(
        TreeWalker::walk(*tree.folder, {}, {}, {.unreadable = {}, .stop = stop}));
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
            const auto below = belowDisk(manifest);
            const bool isOfTree = manifest.destination.sessionRoot == tree.root ||
                                  (!below.empty() && disk / below == tree.root);
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

void takeHold(ListedTree& tree, HeldFolder folder) {
    tree.root = folder->path();
    tree.folder = std::move(folder);
}

void refuseHashesOnly(const ReportSet& set) {
    if (isOfHashesOnly(*set.manifest))
        throw ListError(Reason::OnlyHashes, {}, set.folder / kManifest);
}

/// Adds a set that was named, and finds the tree that it is of. Only the manifest knows where that
/// is; checksums alone are of the folder in which they lie.
ReportSet addNamedReports(ReportSet set, ListedTree& tree) {
    if (set.manifest) {
        refuseHashesOnly(set);
        takeHold(tree, folderOf(*set.manifest, set.folder));
    } else {
        tree.root = set.folder;
    }
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

std::filesystem::path withoutLinks(const std::filesystem::path& path) {
    std::error_code failure;
    auto found = std::filesystem::canonical(path, failure);
    if (failure)
        throw PosixError("open", path, failure.value());
    return found;
}

/// Adds what lies in the tree itself.
void complete(ListedTree& tree, const ReportSet& set, const std::stop_token& stop) {
    throwIfAsked(stop);
    if (!tree.folder)
        tree.folder = std::make_shared<const RootFolder>(tree.root);
    addHistories(tree, stop);
    if (set.manifest)
        compareHashLists(*set.manifest, tree);
    throwIfAsked(stop);
    if (tree.files.empty() && tree.troubles.empty())
        throw ListError(tree.lists.empty() ? Reason::NoList : Reason::NothingToCompare, {},
                        tree.root);
}

} // namespace

ListedTree findLists(const std::filesystem::path& given, const std::stop_token& stop) {
    const auto path = withoutLinks(given);
    ListedTree tree;
    ReportSet set;
    if (!isFolder(path)) {
        if (path.filename() != kManifest && path.filename() != kChecksums)
            throw ListError(Reason::UnknownFile, {}, path);
        set = addNamedReports(setIn(path.parent_path()), tree);
    } else {
        set = addListsOfFolder(path, tree);
    }
    tree.isOnOtherDisk = set.manifest && isOnItsDisk(*set.manifest, tree.root) == false;
    complete(tree, set, stop);
    return tree;
}

ListedTree findListsOf(const StoredSession& session, const std::stop_token& stop) {
    ListedTree tree;
    ReportSet set;
    if (!session.reports.empty() && FileSystem::exists(session.reports / kManifest)) {
        set = setIn(session.reports);
        refuseHashesOnly(set);
        addReports(set, tree);
    } else {
        set = addListsOfFolder(withoutLinks(session.root), tree);
    }
    // A disk of the same name may be mounted there, with a copy of the same card.
    if (!set.manifest)
        throw ListError(Reason::NoReports, {}, session.root);
    if (set.manifest->sessionID != session.id)
        throw ListError(Reason::OtherSession, {}, set.folder / kManifest);
    takeHold(tree, folderWhereMade(*set.manifest));
    complete(tree, set, stop);
    return tree;
}

} // namespace slatewise::Verify
