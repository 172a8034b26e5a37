#pragma once

#include "MediaHashList/Generation.h"
#include "MediaHashList/IgnorePatterns.h"
#include "Offload/OffloadRows.h"
#include "Offload/OffloadSettings.h"
#include "Platform/Files/RootFolder.h"

#include <exception>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace slatewise::MediaHashList {

/// A tree as it was found at one time: what becomes the next generation of its history, and of
/// every history that lies further down in it. Paths are below its root.
struct HashedTree {
    Creator creator;
    Process process = Process::InPlace;
    /// Of every history, and of some.
    std::vector<std::string> ignored;
    IgnoredBelow ignoredBelow{};
    /// Those whose xxh128 is known. One that is said to have failed is listed where a history knows
    /// it.
    std::vector<HashedFile> files;
    std::vector<std::string> folders;
    /// Files that are there and of which nothing is known.
    std::vector<std::string> unknownFiles;
};

/// What `addGenerations` did.
struct AddedGenerations {
    /// Every file that was written, below the root: each generation with its chain, inner ones
    /// first.
    std::vector<std::string> lists;
    /// What the lists cannot hold for its name.
    std::vector<std::string> leftOut;
    /// Why no further list was written; empty when all were. A `PosixError` or `ListError`.
    std::exception_ptr failure{};
};

/// The folders of a tree, "" for its root, that hold a history or what remains of one; inner ones
/// first.
std::vector<std::string> foldersWithHistory(std::span<const InventoryEntry> entries);

/// The innermost of these folders in which something lies; "" when it is none of them.
std::string folderOf(std::string_view path, std::span<const std::string> foldersWithHistory);

/// Whether a folder is one of lists, or lies in one.
bool isOfHistory(std::string_view folder);

/// Whether something lies in a folder of lists. A file may bear the name of such a folder, and is
/// one like any other.
bool liesInHistory(std::string_view path);

/// Who makes lists with this program on this machine, now: whoever the settings name.
Creator creatorHere(const OffloadSettings& settings = {});

/// Adds a generation to every history of the tree in the folder `below` beneath `root`, and to the
/// tree itself, which may have had none. A history further down comes first, and is named by the
/// one above it instead of its files. A folder gets values when all that lies in it is listed. What
/// lies in the folders of histories is no part of any. A failure is part of what it gives, since
/// lists that were written before it stay.
AddedGenerations addGenerations(const RootFolder& root, const std::filesystem::path& below,
                                const HashedTree& tree,
                                std::span<const std::string> foldersWithHistory);

} // namespace slatewise::MediaHashList
