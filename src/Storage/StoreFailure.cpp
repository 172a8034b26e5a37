#include "Storage/StoreFailure.h"

#include "Offload/OffloadError.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <sqlite3.h>

#include <cerrno>

namespace slatewise::StoreFailure {

std::string reasonOf(const std::exception& failure, L10n l10n) {
    const auto* const ofStore = dynamic_cast<const SQLite::Exception*>(&failure);
    if (!ofStore)
        return describe(failure, l10n);
    switch (ofStore->getErrorCode()) {
    case SQLITE_FULL:
        return slatewise::reasonOf(ENOSPC, l10n);
    case SQLITE_READONLY:
        return slatewise::reasonOf(EROFS, l10n);
    case SQLITE_IOERR:
        return slatewise::reasonOf(EIO, l10n);
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return slatewise::reasonOf(EBUSY, l10n);
    case SQLITE_PERM:
        return slatewise::reasonOf(EACCES, l10n);
    case SQLITE_NOMEM:
        return slatewise::reasonOf(ENOMEM, l10n);
    case SQLITE_CANTOPEN:
        return std::string(l10n.storeNotOpened());
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return std::string(l10n.storeDamaged());
    default:
        return std::string(l10n.storeRefuses());
    }
}

} // namespace slatewise::StoreFailure
