#pragma once

#include "MediaHashList/HashedTree.h"
#include "Platform/HashValue.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

/// Whether a tree is still what its lists say.
namespace slatewise::Verify {

/// What all lists together say of one file. Values of one format that differ between lists all
/// stand here, and no file can be equal to them. None: a list names the file and nobody ever proved
/// it.
using Expected = HashValues;

/// A tree with every list of it that could be found.
struct ListedTree {
    std::filesystem::path root;
    /// The lists, in the order in which they were found.
    std::vector<std::filesystem::path> lists;
    /// By path below the root, as bytes.
    std::map<std::string, Expected> files;
    /// Patterns of what no list was to hold, by the folder below which they count.
    MediaHashList::IgnoredBelow ignored;
    /// Folders that have a history, "" for the root; inner ones first.
    std::vector<std::string> withHistory;
};

/// Finds the tree and its lists. `path` is a session's folder, a folder of reports, a
/// "manifest.json", a "checksums.sha256", or a folder with a history. Fails with `ListError` when
/// there is no list, a list is damaged or names a path that leads out, or the tree is not there,
/// and with `PosixError`. Blocks.
ListedTree findLists(const std::filesystem::path& path);

} // namespace slatewise::Verify
