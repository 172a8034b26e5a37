#pragma once

#include "MediaHashList/Generation.h"

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// Whether a tree is still what its lists say.
namespace slatewise::Verify {

/// What all lists together say of one file. Values of one kind that differ between lists all stand
/// here, and no file can be equal to them.
struct Expected {
    std::set<std::string> sha256;
    std::vector<MediaHashList::FileValue> values;

    /// A list names the file and nobody ever proved it.
    bool isUnproved() const { return sha256.empty() && values.empty(); }
};

/// A tree with every list of it that could be found.
struct ListedTree {
    std::filesystem::path root;
    /// The lists, in the order in which they were found.
    std::vector<std::filesystem::path> lists;
    /// By path below the root, as bytes.
    std::map<std::string, Expected> files;
    /// Names that no list was to hold.
    std::set<std::string, std::less<>> ignoredNames;
    /// Folders below the root that have a history of their own.
    std::vector<std::string> nestedHistories;
};

/// Finds the tree and its lists. `path` is a session's folder, a folder of reports, a
/// "manifest.json", a "checksums.sha256", or a folder with a history. Fails with `Error` when there
/// is no list, a list cannot be read or names a path that leads out, or the tree is not there.
/// Blocks.
ListedTree findLists(const std::filesystem::path& path);

} // namespace slatewise::Verify
