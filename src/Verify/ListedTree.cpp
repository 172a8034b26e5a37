#include "Verify/ListedTree.h"

#include "MediaHashList/History.h"
#include "MediaHashList/ListError.h"
#include "Offload/ReportNames.h"
#include "Offload/TreeWalker.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Files/RootFolder.h"
#include "Platform/Text.h"
#include "Verify/ListReading.h"
#include "Verify/SessionFolder.h"

#include <algorithm>
#include <iterator>
#include <map>

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
    return manifest.wasHashing() || manifest.status == OutcomeStatus::Hashed ||
           std::any_of(manifest.files.begin(), manifest.files.end(),
                       [](const auto& file) { return file.action == RowAction::Hash; });
}

/// Histories of the tree and of folders in it.
void addHistories(ListedTree& tree, const std::stop_token& stop) {
    const auto note = [&](const std::string& path, int code) {
        tree.unread.push_back({path, code});
    };
    tree.entries = TreeWalker::walk(*tree.folder, {}, {}, {.unreadable = note, .stop = stop});
    tree.withHistory = MediaHashList::foldersWithHistory(tree.entries);
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
        const auto names = namesIn(set / ReportNames::checksums);
        return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
            return MediaHashList::leadsDown(name) && FileSystem::exists(session / name);
        });
    } catch (const Error&) {
        return false;
    }
}

/// The sets of a tree in the folders of reports above it.
struct FoundReports {
    /// By where their session lies below the tree's root, with a "/" at its end; "" for the root.
    /// A folder that was deleted and written again has several, of which only the newest is true.
    std::map<std::string, ReportSet> newest;
    /// Those that may be the root's.
    std::vector<std::filesystem::path> damaged;
    /// Those of which nobody knows whose they are.
    std::vector<std::filesystem::path> unknown;
};

/// Where in the tree the copy of a session lies that has its reports on this disk; nothing when it
/// lies elsewhere.
std::optional<std::string> placeOf(const SessionManifest& manifest,
                                   const std::filesystem::path& disk,
                                   const std::filesystem::path& root) {
    const std::filesystem::path made = manifest.destination.sessionRoot;
    const auto below = belowDisk(manifest);
    const auto session = below.empty() ? made : disk / below;
    if (made == root || session == root)
        return "";
    const auto inside = session.lexically_relative(root).native();
    if (!MediaHashList::leadsDown(inside))
        return std::nullopt;
    // A copy that failed and was deleted is none that anybody could miss.
    if (manifest.status == OutcomeStatus::Failed && !FileSystem::exists(session))
        return std::nullopt;
    return inside + "/";
}

/// One that is in work lies under a name with a dot, and is none yet.
bool hasList(const std::filesystem::path& set) {
    return !set.filename().native().starts_with('.') &&
           (FileSystem::exists(set / ReportNames::manifest) ||
            FileSystem::exists(set / ReportNames::checksums));
}

void seekReports(const std::filesystem::path& disk, ListedTree& tree, FoundReports& found) {
    if (!isFolder(disk / ReportNames::folder))
        return;
    for (const auto& name : RootFolder(disk / ReportNames::folder).names()) {
        const auto set = disk / ReportNames::folder / name;
        const auto list = set / ReportNames::manifest;
        if (set == tree.root || !isFolder(set) || !hasList(set))
            continue;
        try {
            auto manifest = readManifest(list);
            tree.manifestsRead.insert(list);
            const auto place = placeOf(manifest, disk, tree.root);
            if (!place || isOfHashesOnly(manifest))
                continue;
            auto& newest = found.newest[*place];
            if (!newest.manifest || manifest.startedAt >= newest.manifest->startedAt)
                newest = {set, std::move(manifest), *place};
        } catch (const Error& failure) {
            if (!mayBeOf(tree.root, set)) {
                found.unknown.push_back(list);
                continue;
            }
            tell(tree, list, failure);
            found.damaged.push_back(set);
        }
    }
}

/// Looks for the reports of the root's session, and of sessions below it, at the root of the disk,
/// which the root itself or any folder above may be.
FoundReports reportsAbove(ListedTree& tree) {
    FoundReports found;
    std::filesystem::path below;
    for (auto disk = tree.root; disk != below; disk = disk.parent_path()) {
        below = disk;
        readOrTell(tree, disk / ReportNames::folder, [&] { seekReports(disk, tree, found); });
    }
    return found;
}

/// Adds the sets that count, and gives them: the root's own is the first.
std::vector<ReportSet> addFound(FoundReports found, ListedTree& tree) {
    if (!found.newest.contains("")) {
        for (const auto& set : found.damaged)
            addReports({set}, tree);
    }
    std::vector<ReportSet> sets;
    for (auto& [place, set] : found.newest) {
        addReports(set, tree);
        sets.push_back(std::move(set));
    }
    return sets;
}

const ReportSet* ofRoot(const std::vector<ReportSet>& sets) {
    const bool isThere = !sets.empty() && sets.front().manifest && sets.front().prefix.empty();
    return isThere ? &sets.front() : nullptr;
}

/// The set in a folder. Fails when its manifest cannot be read.
ReportSet setIn(const std::filesystem::path& folder) {
    ReportSet set{folder, {}};
    if (FileSystem::exists(folder / ReportNames::manifest))
        set.manifest = readManifest(folder / ReportNames::manifest);
    return set;
}

void takeHold(ListedTree& tree, HeldFolder folder) {
    tree.root = folder->path();
    tree.folder = std::move(folder);
}

void refuseHashesOnly(const ReportSet& set) {
    if (isOfHashesOnly(*set.manifest))
        throw ListError(Reason::OnlyHashes, {}, set.folder / ReportNames::manifest);
}

/// Adds a set that was named, and finds the tree that it is of. Only the manifest knows where that
/// is; checksums alone are of the folder in which they lie.
ReportSet addNamedReports(ReportSet set, ListedTree& tree) {
    if (set.manifest) {
        refuseHashesOnly(set);
        auto place = folderOf(*set.manifest, set.folder);
        takeHold(tree, std::move(place.folder));
        tree.isOnOtherDisk = !place.isWhereMade && isOnItsDisk(*set.manifest, tree.root) == false;
    } else {
        tree.root = set.folder;
    }
    addReports(set, tree);
    return set;
}

/// The set that a folder itself is, where no other list is of it.
std::optional<ReportSet> setThatIs(const std::filesystem::path& folder, const ListedTree& tree) {
    const auto checksums = folder / ReportNames::checksums;
    const bool hasChecksums = FileSystem::exists(checksums);
    const bool isNamedAsReports =
        FileSystem::exists(folder / ReportNames::manifest) || hasChecksums;
    if (!isNamedAsReports || !tree.lists.empty() || !tree.troubles.empty())
        return std::nullopt;
    // A card may bring files that are only named as ours are.
    const bool hasHistory = MediaHashList::hasLists(RootFolder(folder), {});
    ReportSet set{folder};
    try {
        set = setIn(folder);
    } catch (const Error&) {
        if (!hasHistory)
            throw;
    }
    const bool isOurs = set.manifest || !hasHistory || (hasChecksums && isChecksumList(checksums));
    return isOurs ? std::optional(std::move(set)) : std::nullopt;
}

/// The disk is asked once for what all sets on it want to know.
bool isAnyOfOtherDisk(const std::vector<ReportSet>& sets, const std::filesystem::path& root) {
    std::set<std::string> asked;
    return std::any_of(sets.begin(), sets.end(), [&](const ReportSet& set) {
        return asked.insert(set.manifest->destination.volumeUUID.value_or("")).second &&
               isOnItsDisk(*set.manifest, root) == false;
    });
}

/// The lists of a folder that is named; the set of its own session comes first.
std::vector<ReportSet> addListsOfFolder(const std::filesystem::path& folder, ListedTree& tree) {
    tree.root = folder;
    auto found = reportsAbove(tree);
    const bool isSession = found.newest.contains("");
    const auto unknown = std::move(found.unknown);
    auto sets = addFound(std::move(found), tree);
    tree.isOnOtherDisk = isAnyOfOtherDisk(sets, folder);
    if (auto set = setThatIs(folder, tree)) {
        sets.push_back(addNamedReports(std::move(*set), tree));
    } else if (!isSession) {
        // Any of them may be of a session that lies below.
        for (const auto& list : unknown)
            readOrTell(tree, list, [&] { (void)readManifest(list); });
    }
    return sets;
}

std::filesystem::path withoutLinks(const std::filesystem::path& path) {
    std::error_code failure;
    auto found = std::filesystem::canonical(path, failure);
    if (failure)
        throw PosixError("open", path, failure.value());
    return found;
}

/// Adds what lies in the tree itself.
void complete(ListedTree& tree, const std::vector<ReportSet>& sets, const std::stop_token& stop) {
    throwIfAsked(stop);
    if (!tree.folder)
        tree.folder = std::make_shared<const RootFolder>(tree.root);
    addHistories(tree, stop);
    for (const auto& set : sets) {
        if (set.manifest)
            compareHashLists(set, tree);
    }
    throwIfAsked(stop);
    if (tree.files.empty() && tree.troubles.empty())
        throw ListError(tree.lists.empty() ? Reason::NoList : Reason::NothingToCompare, {},
                        tree.root);
}

void requireSession(const ReportSet& set, const StoredSession& session) {
    if (set.manifest->sessionID != session.id)
        throw ListError(Reason::OtherSession, {}, set.folder / ReportNames::manifest);
}

/// The reports on the disk, beside a set of the archive. Whoever wrote there later put another copy
/// in the place of the one that is asked for.
void addReportsOnDisk(const StoredSession& session, std::vector<ReportSet>& sets,
                      ListedTree& tree) {
    auto found = reportsAbove(tree);
    if (const auto own = found.newest.find(""); own != found.newest.end()) {
        const auto& [place, set] = *own;
        if (set.manifest->startedAt >= sets.front().manifest->startedAt)
            requireSession(set, session);
        if (set.manifest->sessionID != session.id || set.folder == sets.front().folder)
            found.newest.erase(own);
    }
    // The archive's set is whole, and says what theirs may say of another day.
    found.damaged.clear();
    auto further = addFound(std::move(found), tree);
    std::move(further.begin(), further.end(), std::back_inserter(sets));
}

} // namespace

bool ListedTree::isReported(std::string_view path) const {
    return std::any_of(reported.begin(), reported.end(),
                       [&](const std::string& place) { return path.starts_with(place); });
}

ListedTree findLists(const std::filesystem::path& given, const std::stop_token& stop) {
    const auto path = withoutLinks(given);
    ListedTree tree;
    std::vector<ReportSet> sets;
    if (isFolder(path)) {
        sets = addListsOfFolder(path, tree);
    } else {
        if (path.filename() != ReportNames::manifest && path.filename() != ReportNames::checksums)
            throw ListError(Reason::UnknownFile, {}, path);
        sets.push_back(addNamedReports(setIn(path.parent_path()), tree));
    }
    complete(tree, sets, stop);
    return tree;
}

ListedTree findListsOf(const StoredSession& session, const std::stop_token& stop) {
    ListedTree tree;
    std::vector<ReportSet> sets;
    const bool isArchived =
        !session.reports.empty() && FileSystem::exists(session.reports / ReportNames::manifest);
    if (isArchived) {
        sets.push_back(setIn(session.reports));
        refuseHashesOnly(sets.front());
        addReports(sets.front(), tree);
    } else {
        sets = addListsOfFolder(withoutLinks(session.root), tree);
    }
    // A disk of the same name may be mounted there, with a copy of the same card.
    const auto* const own = ofRoot(sets);
    if (!own)
        throw ListError(Reason::NoReports, {}, session.root);
    requireSession(*own, session);
    takeHold(tree, folderWhereMade(*own->manifest));
    if (isArchived)
        addReportsOnDisk(session, sets, tree);
    complete(tree, sets, stop);
    return tree;
}

} // namespace slatewise::Verify
