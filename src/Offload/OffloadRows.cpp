#include "Offload/OffloadRows.h"

namespace slatewise {

FileCopyResult makeRow(const InventoryEntry& entry, RowAction action, VerifyStatus verifyStatus) {
    FileCopyResult row;
    row.relativePath = entry.relativePath;
    row.sizeBytes = entry.sizeBytes;
    row.mtime = entry.mtime;
    row.created = entry.created;
    row.action = action;
    row.verifyStatus = verifyStatus;
    return row;
}

void markFailed(FileCopyResult& row, VerifyStatus verifyStatus) {
    row.action = RowAction::Fail;
    row.verifyStatus = verifyStatus;
}

} // namespace slatewise
