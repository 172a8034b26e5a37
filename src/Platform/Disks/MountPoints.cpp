#include "Platform/Disks/MountPoints.h"

#include "Platform/Disks/MountTable.h"

#include <mntent.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>

namespace slatewise::MountPoints {

namespace {

struct CloseTable {
    void operator()(std::FILE* table) const { ::endmntent(table); }
};

bool liesIn(const std::filesystem::path& folder, const std::filesystem::path& mountPoint) {
    const auto [rest, ignored] =
        std::mismatch(mountPoint.begin(), mountPoint.end(), folder.begin(), folder.end());
    return rest == mountPoint.end();
}

/// The system's own folder is in the table, too, and always mounted on.
bool isMeantForVolume(const std::filesystem::path& folder,
                      const std::filesystem::path& fileSystems) {
    const std::unique_ptr<std::FILE, CloseTable> table(::setmntent(fileSystems.c_str(), "r"));
    std::array<char, 4096> room{};
    mntent entry{};
    while (table && ::getmntent_r(table.get(), &entry, room.data(), room.size())) {
        const std::filesystem::path mountPoint = entry.mnt_dir;
        if (mountPoint.has_relative_path() && liesIn(folder, mountPoint))
            return true;
    }
    return false;
}

bool liesWhereMediaAreMounted(const std::filesystem::path& folder) {
    constexpr std::array kPlaces = {"/media/", "/run/media/", "/mnt/"};
    const auto name = folder.native() + "/";
    return std::any_of(kPlaces.begin(), kPlaces.end(),
                       [&](const char* place) { return name.starts_with(place); });
}

} // namespace

bool isBare(const std::filesystem::path& folder, const std::filesystem::path& fileSystems,
            const std::filesystem::path& mounts) noexcept {
    try {
        const auto known = MountTable::read(mounts);
        const auto* mount = MountTable::holding(known, folder);
        const bool isOfSystem = mount && (mount->mountPoint == "/" || mount->mountPoint == "/run");
        return isOfSystem &&
               (isMeantForVolume(folder, fileSystems) ||
                (liesWhereMediaAreMounted(folder) && std::filesystem::is_empty(folder)));
    } catch (const std::exception&) {
        return false;
    }
}

} // namespace slatewise::MountPoints
