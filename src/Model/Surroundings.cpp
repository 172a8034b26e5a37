#include "Model/Surroundings.h"

#include "Platform/Error.h"
#include "Storage/AppDatabase.h"
#include "Storage/AppLog.h"
#include "Storage/SupportPaths.h"
#include "Volumes/DiskUtilClient.h"

namespace slatewise {

VolumeFacts Surroundings::factsOfThisMachine(const std::filesystem::path& folder) {
    return DiskUtilClient::facts(folder);
}

std::shared_ptr<AppDatabase> Surroundings::userStore() {
    try {
        return std::make_shared<AppDatabase>(SupportPaths::databaseURL());
    } catch (const std::exception& failure) {
        AppLog::append("Store not opened, kept in memory: " + describe(failure));
        return std::make_shared<AppDatabase>(AppDatabase::inMemory());
    }
}

} // namespace slatewise
