#pragma once

#include "Verify/ListReading.h"
#include "Verify/ListedTree.h"

#include <exception>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

/// The reports of a tree that lie on its disk. Everything blocks its caller.
namespace slatewise::Verify {

/// A manifest, or a folder of reports, that cannot be read.
struct UnreadReports {
    std::filesystem::path path;
    /// Of a set: the folder of reports in which it lies.
    std::filesystem::path holder;
    std::exception_ptr failure;

    bool isOfSet() const { return path != holder; }
};

/// The sets of a tree in the folders of reports above it.
struct FoundReports {
    /// By where their session lies below the tree's root, with a "/" at its end; "" for the root.
    /// A folder that was deleted and written again has several, of which only the newest is true.
    std::map<std::string, ReportSet> newest;
    /// Places of which another set has a later date than the newest one.
    std::set<std::string> withLaterDates;
    /// Sets that may be the root's, and folders of reports that cannot be listed.
    std::vector<UnreadReports> damaged;
    /// Sets of which nobody knows whose they are.
    std::vector<UnreadReports> unknown;

    /// The root's own where there is one, else any; null when there is none.
    const ReportSet* first() const { return newest.empty() ? nullptr : &newest.begin()->second; }
};

/// Hashes of a card, of which there is no copy.
bool isOfHashesOnly(const SessionManifest& manifest);

/// Whether the copy that lies in a folder is the left set's rather than the right one's: a run
/// makes its folder itself, so one that came into being while only one of both ran is of that run;
/// else the later counts.
bool isTruer(const SessionManifest& left, const SessionManifest& right,
             const std::filesystem::path& session);

/// Looks for the reports of the root's session, and of sessions below it, at the root of the disk,
/// which the root itself or any folder above may be. `own` is of the root's session where that is
/// known already; sets that are its footage, or that of the session found, are not taken.
FoundReports reportsAbove(ListedTree& tree, const SessionManifest* own = nullptr);

/// Notes reports that cannot be read and are none of the tree's own, once.
void noteUnread(const std::vector<UnreadReports>& unread, ListedTree& tree);

/// Tells of reports that cannot be read. `known` is a set of the tree, where there is one: what
/// does not lie among the reports of its disk is only noted.
void tellUnread(const std::vector<UnreadReports>& unread, const ReportSet* known, ListedTree& tree);

/// Adds the sets that count, and gives them: the root's own is the first.
std::vector<ReportSet> addFound(FoundReports&& found, ListedTree& tree);

} // namespace slatewise::Verify
