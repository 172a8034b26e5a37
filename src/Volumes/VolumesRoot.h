#pragma once

#include <filesystem>

namespace slatewise {

/// The folder under which volumes appear. It need not exist yet.
class VolumesRoot {
public:
    /// That folder and no other.
    VolumesRoot(std::filesystem::path folder) : fixed_(std::move(folder)) {}

    /// Where this desktop mounts media for the user: `/run/media/<user>` on a system that has
    /// `/run/media`, else `/media/<user>`.
    static VolumesRoot ofThisDesktop() { return VolumesRoot(std::filesystem::path()); }

    /// Looked up each time: `/run/media` can come into being with the first card.
    std::filesystem::path path() const;

private:
    std::filesystem::path fixed_;
};

} // namespace slatewise
