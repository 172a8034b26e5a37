#include "Volumes/VolumesRoot.h"

#include "Platform/Desktop/UserFolders.h"

namespace slatewise {

std::vector<std::filesystem::path> VolumesRoot::paths() const {
    return fixed_.value_or(UserFolders::media());
}

} // namespace slatewise
