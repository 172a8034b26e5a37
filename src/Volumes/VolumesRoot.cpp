#include "Volumes/VolumesRoot.h"

#include "Platform/Desktop/UserFolders.h"

namespace slatewise {

std::filesystem::path VolumesRoot::path() const {
    return fixed_.empty() ? UserFolders::media() : fixed_;
}

} // namespace slatewise
