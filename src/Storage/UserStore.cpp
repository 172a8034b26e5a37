#include "Storage/UserStore.h"

#include "Storage/AppDatabase.h"
#include "Storage/SupportPaths.h"

namespace slatewise {

std::shared_ptr<AppDatabase> openUserStore() {
    return std::make_shared<AppDatabase>(AppDatabase::openOrWait(SupportPaths::databaseURL(), {}));
}

} // namespace slatewise
