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

bool isInFstab(const std::filesystem::path& folder) {
    const std::unique_ptr<std::FILE, CloseTable> table(::setmntent("/etc/fstab", "r"));
    std::array<char, 4096> room{};
    mntent entry{};
    while (table && ::getmntent_r(table.get(), &entry, room.data(), room.size())) {
        if (folder == entry.mnt_dir)
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

bool isBare(const std::filesystem::path& folder) noexcept {
    try {
        const auto mounts = MountTable::read();
        const auto* mount = MountTable::holding(mounts, folder);
        const bool isOfSystem = mount && (mount->mountPoint == "/" || mount->mountPoint == "/run");
        return isOfSystem && (liesWhereMediaAreMounted(folder) || isInFstab(folder));
    } catch (const std::exception&) {
        return false;
    }
}

} // namespace slatewise::MountPoints
