#pragma once

#include <filesystem>
#include <optional>
#include <vector>

namespace slatewise {

/// The folders under which volumes appear. They need not exist yet.
class VolumesRoot {
public:
    /// That folder and no other.
    VolumesRoot(std::filesystem::path folder) : fixed_({std::move(folder)}) {}

    /// Those folders, all of them alike.
    VolumesRoot(std::vector<std::filesystem::path> folders) : fixed_(std::move(folders)) {}

    /// Where this desktop mounts media for the user: in `/run/media/<user>` and `/media/<user>`.
    static VolumesRoot ofThisDesktop() { return {}; }

    /// One of them may lead to another one by a link.
    std::vector<std::filesystem::path> paths() const;

private:
    VolumesRoot() = default;

    std::optional<std::vector<std::filesystem::path>> fixed_;
};

} // namespace slatewise
