#pragma once

#include "MediaHashList/HashedTree.h"
#include "Offload/OffloadPhase.h"
#include "Offload/OffloadSettings.h"
#include "Platform/RawWords.h"
#include "Verify/ListedTree.h"

#include <array>
#include <cstdint>
#include <exception>
#include <functional>
#include <stop_token>

namespace slatewise {
class L10n;
}

namespace slatewise::Verify {

/// How a file is not what its lists say.
enum class Difference {
    Missing,
    Changed,
    /// There, but its bytes could not be had.
    Unreadable,
    /// In no list.
    New,
    /// A list names it, and the run that wrote the list never proved it.
    Unproved,
    /// A list cannot be read or is not what it should be; the path is the list's own.
    Damaged,
    /// The run that wrote a list failed; the path is the list's own.
    Failed,
};

constexpr std::array<std::string_view, 7> rawWords(Difference) {
    return {"missing", "changed", "unreadable", "new", "unproved", "damaged", "failed"};
}

/// What is to be known of a difference beyond its name.
enum class Circumstance {
    None,
    /// A link stands in the file's place or on the way to it.
    IsLink,
    /// It came up while the rest was read.
    CameMeanwhile,
};

/// One file or list that is not what its lists say.
struct Finding {
    Difference difference;
    std::string path;
    Circumstance circumstance = Circumstance::None;
    /// Why, where something failed.
    std::exception_ptr failure{};

    /// What there is to say beyond the word; empty when that says all.
    std::string explanation(L10n l10n) const;
};

/// Who watches a check. Called on the check's thread; may be empty.
struct Watch {
    std::function<void(const OffloadPhase&)> progress;
    std::function<void(const Finding&)> finding;
};

struct Result {
    int filesEqual = 0;
    std::int64_t bytesRead = 0;
    int differences = 0;
    /// What was read may have come from memory and not from the disk: all of it, or these files,
    /// of which only the first few are named.
    bool mayBeFromMemory = false;
    int filesKeptInMemory = 0;
    std::vector<std::string> keptInMemory;
    /// What was read, ready to be added to the history; only when it was asked for.
    MediaHashList::HashedTree tree;

    bool isAllEqual() const { return differences == 0; }
};

/// Whether what is read is to be remembered for `addGenerations`.
enum class Keep { Nothing, Tree };

/// Reads every listed file from the disk, past the system's cache, and compares it with all that
/// the lists say of it, and looks again in the end for what was changed, removed or added since it
/// began. Links are not followed. Fails with `CancellationError` when asked to stop,
/// and with `Error` when the tree cannot be walked. Blocks.
Result check(const ListedTree& tree, Keep keep, const Watch& watch, std::stop_token stop);

/// Adds what was read to the tree's histories as generations of files hashed where they lie, behind
/// a list that no chain names yet: it was held against the same files. Only where all was equal.
/// The settings say by whom and where. Gives the names that such a list cannot hold. Fails with
/// `PosixError` and `ListError`.
std::vector<std::string> addGenerations(const ListedTree& tree, Result& result,
                                        const OffloadSettings& settings);

} // namespace slatewise::Verify
