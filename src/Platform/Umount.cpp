#include "Platform/Umount.h"

#include <sys/mount.h>

#include <cerrno>
#include <system_error>

namespace slatewise::Umount {

std::optional<Refusal> run(const std::filesystem::path& mountPoint) {
    if (::umount2(mountPoint.c_str(), UMOUNT_NOFOLLOW) == 0)
        return std::nullopt;
    return Refusal{errno, std::generic_category().message(errno)};
}

} // namespace slatewise::Umount
