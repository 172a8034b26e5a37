#pragma once

#include "Reports/SessionManifest.h"

#include <filesystem>
#include <string>
#include <unordered_set>

namespace slatewise::Verify {

/// Which of the files below a root are the footage of its own session: a card may bring sets of
/// reports, which speak of what lay elsewhere. One thread at a time; asks no disk.
class Footage {
public:
    /// `own` may be null, when nothing is; it must outlive this.
    Footage(const SessionManifest* own, std::filesystem::path root);

    bool has(const std::filesystem::path& file);

private:
    const SessionManifest* own_;
    std::filesystem::path root_;
    /// Composed, from the first question on.
    std::unordered_set<std::string> names_;
};

} // namespace slatewise::Verify
