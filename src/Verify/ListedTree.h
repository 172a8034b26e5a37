#pragma once

#include "MediaHashList/HashedTree.h"
#include "Offload/OffloadRows.h"
#include "Platform/Files/RootFolder.h"
#include "Platform/HashValue.h"

#include <exception>
#include <filesystem>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace slatewise {
class L10n;
}

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

/// What a person is to know of a tree that makes it no other than its lists say.
struct Note {
    enum class Kind {
        /// A list of the card names files that the run left out for their names.
        LeftOutByRun,
        /// Reports cannot be read, of which the tree has its own anyway.
        OtherReportsNotRead,
        /// These reports are of the copy that lies there, and others have a later date.
        LaterReportsPassedOver,
    };

    Kind kind;
    /// The first of them; bytes.
    std::vector<std::string> paths;
    int count = 1;
    /// Why, where something failed.
    std::exception_ptr failure{};

    std::string text(L10n l10n) const;
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
    std::set<std::filesystem::path> lists;
    /// Sets in folders of reports whose manifests could be read, whether they count here or not.
    std::set<std::filesystem::path> sets;
    /// By path below the root, as bytes.
    std::map<std::string, Expected> files;
    /// Who lists a file or a folder, of those whose names may be there in another Unicode form: the
    /// reports, or a history by its number, of which inner ones have lower ones. Of a folder, with
    /// a "/" at the end of its name.
    static constexpr int kReports = std::numeric_limits<int>::max();
    std::map<std::string, std::vector<int>> listers;
    /// Of files whose names the lists have in another Unicode form than the tree: that form, by the
    /// path in the tree, under which they stand in `files`. Of several, that of the nearest
    /// history.
    std::map<std::string, std::string> listedAs;
    /// Folders that only a history names, by path: the newest one's. A copy by reports has none,
    /// since empty folders are not copied.
    std::set<std::string> folders;
    /// What a run left out of the copy on purpose.
    std::set<std::string> leftOut;
    /// The hash lists that the runs wrote whose reports are there.
    std::set<std::string> listsOfRuns;
    /// Below which all that was copied is named by a run's reports: the root, "", or a folder
    /// with a "/" at its end. With the names that the run left out, where a manifest is there.
    std::map<std::string, std::optional<SkipNames>, std::greater<>> reported;
    std::vector<ListTrouble> troubles;
    /// The lists that are told to be damaged among these.
    std::set<std::filesystem::path> damaged;
    std::vector<Note> notes;
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

    /// Whether something is a list that was read, or lies beside one in its set of reports.
    bool isList(const std::string& path) const;

    /// The pattern of a system's trash at the top of the tree, be that a disk's or not, where
    /// something lies in one that no run's reports would name; else empty. Of a folder itself, with
    /// a "/" at its end.
    std::string trashPattern(std::string_view path) const;

    /// Whether the run that made a copy says that it left this out, be it for a name on its way.
    bool isLeftOutByRun(const std::string& path) const;

    /// Notes who lists a name, where that may matter.
    void noteLister(const std::string& name, int lister);

    /// Notes that a list of the card names what the run left out.
    void noteLeftOut(const std::string& path);
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
