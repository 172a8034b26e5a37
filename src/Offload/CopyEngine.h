#pragma once

#include "Offload/CopyRequest.h"
#include "Offload/OffloadRows.h"

#include <cstdint>
#include <stop_token>

/// One offload of one card to one destination, from the first look at the card to the last proved
/// byte. Without state; knows nothing of reports, of the database or of other destinations.
namespace slatewise::CopyEngine {

/// Does the whole run and blocks until it is done.
///
/// Copies every file in the inventory's order, makes the volume durable, then reads every copy back
/// from the disk, and at last looks into the clips for the reports' sake. When asked to stop while
/// it looks, it gives what it has proved, with facts about fewer clips. A file that fails to copy,
/// or a disk that cannot keep what it was given, ends the run with an outcome "failed"; a copy that
/// proves wrong is a row of such an outcome, and the other files are still proved. Nothing that was
/// written is ever removed.
///
/// Works beneath the two folders it was given, wherever their paths lead meanwhile; a path that no
/// longer leads there fails the run. So does a folder of the card that cannot be read, once all
/// else is copied and proved.
///
/// Fails with `CancellationError` when asked to stop between files, with `OffloadError` when there
/// is too little space, when card or destination are gone before anything is written or when the
/// template leads out of the destination, and with `PosixError` when the card cannot be opened or
/// the session's folder cannot be made or opened.
OffloadOutcome run(const Request& request, const Observer& observer, std::stop_token stop);

/// What must be free beyond the bytes to copy: 1%, at least 8 MiB.
std::int64_t spaceMargin(std::int64_t totalBytes);

} // namespace slatewise::CopyEngine
