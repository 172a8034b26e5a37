#pragma once

#include "Platform/Error.h"
#include "Reports/SessionManifest.h"
#include "Verify/ListedTree.h"

#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

/// Reads lists of each kind into what is known of a tree. Everything blocks its caller.
namespace slatewise::Verify {

/// One session's reports, as far as a check has use for them.
struct ReportSet {
    std::filesystem::path folder;
    /// Absent when there is none that can be read.
    std::optional<SessionManifest> manifest{};
    /// Where its session lies below the tree's root, with a "/" at its end; empty for the root.
    std::string prefix{};
};

/// Notes a list on which the check cannot rest, once. A failure that is no `ListError` must be the
/// one that is being handled.
void tell(ListedTree& tree, const std::filesystem::path& list, const Error& failure);

/// Does what reads a list, and tells it when that cannot be done.
template <typename Read>
void readOrTell(ListedTree& tree, const std::filesystem::path& list, Read&& read) {
    try {
        read();
    } catch (const Error& failure) {
        tell(tree, list, failure);
    }
}

/// Fails with `ListError` and `PosixError`.
SessionManifest readManifest(const std::filesystem::path& list);

/// The names in those lines of a checksum list that can be read, as bytes. Fails with `PosixError`.
std::vector<std::string> namesIn(const std::filesystem::path& checksums);

/// Whether a file is wholly what our lists of checksums are, and names something. Fails with
/// `PosixError`.
bool isChecksumList(const std::filesystem::path& file);

/// Adds a set's checksums and manifest. What cannot be used is told; so is that they do not say the
/// same, since they were written together.
void addReports(const ReportSet& set, ListedTree& tree);

/// Adds the history of a folder beneath the tree's root, "" for the root itself, which is a lister
/// of this number. To come after the reports, which may say why something is not there that a list
/// of the card names. Fails with `CancellationError` when asked to stop between two lists.
void addHistory(const std::string& folder, int number, ListedTree& tree,
                const std::stop_token& stop);

/// Tells when the hash lists that a run wrote beside its copy are not there any more, or do not
/// name the files that the run proved.
void compareHashLists(const ReportSet& set, ListedTree& tree);

} // namespace slatewise::Verify
