#include "Platform/Disks/MountPoints.h"

#include "Platform/Disks/MountTable.h"

#include <mntent.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <initializer_list>
#include <memory>
#include <string_view>

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

/// Whether the folder lies where a volume is meant to be that is not there: what holds the folder
/// is mounted above that place. The system's own folder is in the table, too, and always mounted
/// on.
bool isMeantForVolume(const std::filesystem::path& folder, const std::filesystem::path& holder,
                      const std::filesystem::path& fileSystems) {
    const std::unique_ptr<std::FILE, CloseTable> table(::setmntent(fileSystems.c_str(), "r"));
    std::array<char, 4096> room{};
    mntent entry{};
    while (table && ::getmntent_r(table.get(), &entry, room.data(), room.size())) {
        std::filesystem::path mountPoint = entry.mnt_dir;
        if (!mountPoint.has_filename())
            mountPoint = mountPoint.parent_path();
        if (mountPoint.has_relative_path() && liesIn(folder, mountPoint) &&
            !liesIn(holder, mountPoint))
            return true;
    }
    return false;
}

bool liesBelowAny(std::initializer_list<std::string_view> places,
                  const std::filesystem::path& folder) {
    const auto name = folder.native() + "/";
    return std::any_of(places.begin(), places.end(),
                       [&](std::string_view place) { return name.starts_with(place); });
}

} // namespace

bool isBare(const std::filesystem::path& folder, const std::filesystem::path& fileSystems,
            const std::filesystem::path& mounts) noexcept {
    try {
        const auto place = std::filesystem::canonical(folder);
        const auto known = MountTable::read(mounts);
        const auto* mount = MountTable::holding(known, place);
        if (!mount)
            return false;
        const bool isOfSystem = mount->mountPoint == "/" || mount->mountPoint == "/run";
        return isMeantForVolume(place, mount->mountPoint, fileSystems) ||
               (isOfSystem &&
                (liesBelowAny({"/media/", "/run/media/"}, place) ||
                 (liesBelowAny({"/mnt/"}, place) && std::filesystem::is_empty(place))));
    } catch (const std::exception&) {
        return false;
    }
}

} // namespace slatewise::MountPoints
