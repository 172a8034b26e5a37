#include "Platform/Files/VolumeWatch.h"

#include "Platform/Error.h"
#include "Platform/Files/RootFolder.h"

#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>

namespace slatewise {

VolumeWatch::VolumeWatch(const RootFolder& folder)
    : path_(folder.path()), folder_(folder.open("", O_RDONLY | O_DIRECTORY)) {}

void VolumeWatch::sync() const {
    struct statvfs facts {};
    if (::syncfs(folder_.get()) != 0 || ::fstatvfs(folder_.get(), &facts) != 0)
        throw PosixError("syncfs", path_, errno);
    if ((facts.f_flag & ST_RDONLY) != 0)
        throw PosixError("syncfs", path_, EROFS);
}

} // namespace slatewise
