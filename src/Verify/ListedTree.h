#pragma once

#include "MediaHashList/HashedTree.h"
#include "Offload/OffloadRows.h"
#include "Platform/Files/RootFolder.h"
#include "Platform/HashValue.h"

#include <exception>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

/// Whether a tree is still what its lists say.
namespace slatewise::Verify {

/// What all lists together say of one file. Values of one format that differ between lists all
/// stand here, and no file can be equal to them. None: a list names the file and nobody ever proved
/// it.
using Expected = HashValues;

/// A list on which the check cannot rest.
struct ListTrouble {
    enum class Kind {
        /// It cannot be read, or is not what it should be; what else there is was used.
        Damaged,
        /// It was used, and says itself that the run that wrote it failed.
        OfFailedRun,
        /// It was used, and no chain names it yet: `addGenerations` sees to that.
        Unfinished,
    };

    Kind kind = Kind::Damaged;
    std::filesystem::path list;
    /// Why; empty when the kind says all.
    std::exception_ptr failure{};
};

/// A history whose newest list no chain names yet.
struct UnfinishedHistory {
    /// Its folder below the tree's root.
    std::string folder;
    /// Of the list's bytes.
    std::string c4;
};

/// What a walk could not list, below the tree's root, and the errno value of why.
struct UnreadItem {
    std::string path;
    int code = 0;
};

/// A tree with every list of it that could be found.
struct ListedTree {
    std::filesystem::path root;
    /// The root, held open from the lists to the last file, whatever comes to lie under its path.
    std::shared_ptr<const RootFolder> folder;
    /// The lists, in the order in which they were found.
    std::vector<std::filesystem::path> lists;
    /// Manifests in folders of reports that could be read, whether they count here or not.
    std::set<std::filesystem::path> manifestsRead;
    /// By path below the root, as bytes.
    std::map<std::string, Expected> files;
    /// Folders that only a history names, by path: the newest one's. A copy by reports has none,
    /// since empty folders are not copied.
    std::set<std::string> folders;
    /// What a run left out of the copy on purpose.
    std::set<std::string> leftOut;
    /// Below which all that was copied is named by a run's reports: the root, "", or a folder
    /// with a "/" at its end.
    std::set<std::string> reported;
    std::vector<ListTrouble> troubles;
    /// Patterns of what no list was to hold, by the folder below which they count.
    MediaHashList::IgnoredBelow ignored;
    /// Folders that have a history, "" for the root; inner ones first.
    std::vector<std::string> withHistory;
    std::vector<UnfinishedHistory> unfinished;
    /// All that lay in the tree when its histories were sought, sorted, and what was not listed.
    std::vector<InventoryEntry> entries;
    std::vector<UnreadItem> unread;
    /// The lists were written for another disk than the one that holds the tree.
    bool isOnOtherDisk = false;

    /// Whether a run's reports would name something if that run had left it there.
    bool isReported(std::string_view path) const;
};

/// Finds the tree and its lists. `path` is a session's folder or one above several, a folder of
/// reports, a "manifest.json", a "checksums.sha256", or a folder with a history. A list that is
/// damaged or names a path that leads out is told among the troubles. Fails with `ListError` when
/// there is no list, when there is nothing in any, or the tree is not there, with `PosixError`, and
/// with `CancellationError` when asked to stop. Blocks.
ListedTree findLists(const std::filesystem::path& path, const std::stop_token& stop = {});

/// By which a store knows a session.
struct StoredSession {
    std::string id;
    /// Its reports in the archive; empty when nobody noted where they are.
    std::filesystem::path reports;
    /// Where its copy was made.
    std::filesystem::path root;
};

/// The same of one session, whose copy must lie where it was made and, as far as can be told, on
/// the disk that it was made on. The reports on the disk count beside those of the archive.
ListedTree findListsOf(const StoredSession& session, const std::stop_token& stop = {});

} // namespace slatewise::Verify
