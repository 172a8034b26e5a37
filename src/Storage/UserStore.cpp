#include "Storage/UserStore.h"

#include "Platform/Error.h"
#include "Storage/AppDatabase.h"
#include "Storage/AppLog.h"
#include "Storage/SupportPaths.h"

namespace slatewise {

std::shared_ptr<AppDatabase> openUserStore() {
    try {
        return std::make_shared<AppDatabase>(SupportPaths::databaseURL());
    } catch (const std::exception& failure) {
        AppLog::append("Store not opened, kept in memory: " + describe(failure));
        return std::make_shared<AppDatabase>(AppDatabase::inMemory());
    }
}

} // namespace slatewise
