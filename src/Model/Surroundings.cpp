#include "Model/Surroundings.h"

#include "Volumes/DiskUtilClient.h"

namespace slatewise {

VolumeFacts Surroundings::factsOfThisMachine(const std::filesystem::path& folder) {
    return DiskUtilClient::facts(folder);
}

} // namespace slatewise
