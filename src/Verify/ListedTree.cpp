#include "Verify/ListedTree.h"

#include "MediaHashList/History.h"
#include "MediaHashList/ListError.h"
#include "Offload/ReportNames.h"
#include "Offload/TreeWalker.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Files/RootFolder.h"
#include "Platform/NameForms.h"
#include "Reports/ReportWriter.h"
#include "Verify/FoundReports.h"
#include "Verify/ListReading.h"
#include "Verify/OtherForms.h"
#include "Verify/SessionFolder.h"

#include <algorithm>
#include <iterator>
#include <utility>

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

/// Histories of the tree and of folders in it.
void addHistories(ListedTree& tree, const std::stop_token& stop) {
    const auto note = [&](const std::string& path, int code) {
        tree.unread.push_back({path, code});
    };
    tree.entries = TreeWalker::walk(*tree.folder, {}, {}, {.unreadable = note, .stop = stop});
    tree.withHistory = MediaHashList::foldersWithHistory(tree.entries);
    // What lies in a system's trash is nobody's, and so is a history there.
    std::erase_if(tree.withHistory, [&](const std::string& folder) {
        const bool isSkipped = TreeWalker::shouldSkip(folder, folder.substr(folder.rfind('/') + 1),
                                                      TreeWalker::defaultSkipNames());
        return (isSkipped && !tree.isReported(folder)) || !tree.trashPattern(folder + "/").empty();
    });
    int number = 0;
    for (const auto& folder : tree.withHistory) {
        addHistory(folder, ++number, tree, stop);
    }
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

/// Adds the sets of other sessions, whose copies lie below the one that is known: the first set's.
void addFurther(FoundReports found, std::vector<ReportSet>& sets, ListedTree& tree) {
    found.newest.erase("");
    // The set that is known is whole, and says what theirs may say of another day.
    tellUnread(found.damaged, &sets.front(), tree);
    found.damaged.clear();
    auto further = addFound(std::move(found), tree);
    std::move(further.begin(), further.end(), std::back_inserter(sets));
}

/// Adds a set that was named, finds the tree that it is of, and adds those of other sessions whose
/// copies lie below it. Only the manifest knows where the tree is; checksums alone are of the
/// folder in which they lie.
std::vector<ReportSet> addNamedReports(ReportSet set, ListedTree& tree) {
    if (set.manifest) {
        refuseHashesOnly(set);
        auto place = folderOf(*set.manifest, set.folder);
        takeHold(tree, std::move(place.folder));
        tree.isOnOtherDisk = !place.isWhereMade && isOnItsDisk(*set.manifest, tree.root) == false;
    } else {
        tree.root = set.folder;
    }
    addReports(set, tree);
    std::vector<ReportSet> sets;
    sets.push_back(std::move(set));
    if (sets.front().manifest) {
        auto found = reportsAbove(tree, &*sets.front().manifest);
        noteUnread(std::exchange(found.damaged, {}), tree);
        addFurther(std::move(found), sets, tree);
    }
    return sets;
}

/// Whether a folder is a set of reports to look at: among other sets, or with nothing in it but
/// what a set has and systems leave beside that. A manifest that lies beside footage speaks of a
/// copy somewhere else, where nobody has asked for a look, let alone for a new list.
bool looksLikeSet(const std::filesystem::path& folder) {
    const RootFolder held(folder);
    if (MediaHashList::hasLists(held, {}))
        return false;
    if (folder.parent_path().filename() == ReportNames::folder)
        return true;
    const auto& ours = ReportWriter::fileNames;
    const auto names = held.names();
    return std::all_of(names.begin(), names.end(), [&](const std::string& name) {
        const bool isExpected = std::find(ours.begin(), ours.end(), name) != ours.end() ||
                                TreeWalker::shouldSkip(name, name, TreeWalker::defaultSkipNames());
        return isExpected && held.attributes(name).type == FileSystem::ItemType::RegularFile;
    });
}

/// The set that a folder itself is, which no other list is of.
std::optional<ReportSet> setThatIs(const std::filesystem::path& folder) {
    const auto checksums = folder / ReportNames::checksums;
    const bool hasChecksums = FileSystem::exists(checksums);
    if (!hasChecksums && !FileSystem::exists(folder / ReportNames::manifest))
        return std::nullopt;
    if (looksLikeSet(folder))
        return setIn(folder);
    // A card may bring files that are only named as ours are.
    const bool isOfFolder = hasChecksums && (!MediaHashList::hasLists(RootFolder(folder), {}) ||
                                             isChecksumList(checksums));
    return isOfFolder ? std::optional(ReportSet{folder}) : std::nullopt;
}

/// The set that a list belongs to. Checksums beside footage are of that, whatever else lies there.
ReportSet setWith(const std::filesystem::path& list) {
    const auto folder = list.parent_path();
    if (list.filename() != ReportNames::manifest && list.filename() != ReportNames::checksums)
        throw ListError(Reason::UnknownFile, {}, list);
    const bool isSet = list.filename() == ReportNames::manifest || looksLikeSet(folder);
    return isSet ? setIn(folder) : ReportSet{folder};
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
    const bool isOfOthers =
        !found.newest.empty() || std::any_of(found.damaged.begin(), found.damaged.end(),
                                             [](const auto& each) { return each.isOfSet(); });
    if (auto set = isOfOthers ? std::nullopt : setThatIs(folder)) {
        noteUnread(found.damaged, tree);
        return addNamedReports(std::move(*set), tree);
    }
    tellUnread(found.damaged, found.first(), tree);
    // Any of these may be of a session that lies below.
    const bool isSession = found.newest.contains("");
    const auto unknown = std::move(found.unknown);
    auto sets = addFound(std::move(found), tree);
    tree.isOnOtherDisk = isAnyOfOtherDisk(sets, folder);
    if (!isSession)
        tellUnread(unknown, sets.empty() ? nullptr : &sets.front(), tree);
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
    for (const auto& [path, expected] : tree.files)
        tree.noteLister(path, ListedTree::kReports);
    addHistories(tree, stop);
    for (const auto& set : sets) {
        if (set.manifest)
            compareHashLists(set, tree);
    }
    meetOtherForms(tree);
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
    auto found = reportsAbove(tree, &*sets.front().manifest);
    if (auto own = found.newest.extract("")) {
        auto& set = own.mapped();
        if (isTruer(*set.manifest, *sets.front().manifest, tree.root))
            requireSession(set, session);
        if (set.manifest->sessionID == session.id && set.folder != sets.front().folder) {
            addReports(set, tree);
            sets.push_back(std::move(set));
        }
    }
    addFurther(std::move(found), sets, tree);
}

} // namespace

bool ListedTree::isReported(std::string_view path) const {
    return std::any_of(reported.begin(), reported.end(),
                       [&](const auto& each) { return path.starts_with(each.first); });
}

bool ListedTree::isList(const std::string& path) const {
    const auto whole = root / path;
    const auto& names = ReportWriter::fileNames;
    // What a run left as footage its reports name.
    return lists.contains(whole) ||
           (sets.contains(whole.parent_path()) && !isReported(path) &&
            std::find(names.begin(), names.end(), whole.filename().native()) != names.end());
}

std::string ListedTree::trashPattern(std::string_view path) const {
    const auto end = path.find('/');
    if (end == std::string_view::npos || isReported(path))
        return {};
    constexpr std::string_view kOfUser = ".Trash-";
    const auto top = path.substr(0, end);
    // A user's number follows. Whatever else is named so is somebody's, and no pattern is of digits
    // alone: so it is the very folder's.
    const bool isOfUser =
        top.starts_with(kOfUser) && top.size() > kOfUser.size() &&
        top.find_first_not_of("0123456789", kOfUser.size()) == std::string_view::npos;
    const bool isTrash = isOfUser || top == ".Trash" || top == "$RECYCLE.BIN";
    return isTrash ? "/" + std::string(top) + "/" : std::string();
}

bool ListedTree::isLeftOutByRun(const std::string& path) const {
    if (leftOut.contains(path))
        return true;
    // The innermost comes first.
    const auto session = std::find_if(reported.begin(), reported.end(), [&](const auto& each) {
        return path.starts_with(each.first);
    });
    const auto name = std::string_view(path).substr(path.rfind('/') + 1);
    return session != reported.end() && session->second &&
           TreeWalker::shouldSkip(std::string_view(path).substr(session->first.size()), name,
                                  *session->second);
}

void ListedTree::noteLister(const std::string& name, int lister) {
    if (!NameForms::mayHaveForms(name))
        return;
    auto& all = listers[name];
    if (all.empty() || all.back() != lister)
        all.push_back(lister);
}

void ListedTree::noteLeftOut(const std::string& path) {
    constexpr std::size_t kNamed = 3;
    const auto isIt = [](const Note& note) {
        return note.kind == Note::Kind::LeftOutByRun;
    };
    const auto found = std::find_if(notes.begin(), notes.end(), isIt);
    if (found == notes.end())
        return notes.push_back({Note::Kind::LeftOutByRun, {path}});
    ++found->count;
    if (found->paths.size() < kNamed)
        found->paths.push_back(path);
}

ListedTree findLists(const std::filesystem::path& given, const std::stop_token& stop) {
    const auto path = withoutLinks(given);
    ListedTree tree;
    std::vector<ReportSet> sets;
    if (isFolder(path))
        sets = addListsOfFolder(path, tree);
    else
        sets = addNamedReports(setWith(path), tree);
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
        sets = addListsOfFolder(withoutLinks(asItLies(session.root)), tree);
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
