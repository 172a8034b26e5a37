#pragma once

#include "Language/AppLanguage.h"
#include "Offload/MediaInfoCLI/MediaInfoCLI.h"
#include "Offload/OffloadPhase.h"
#include "Offload/OffloadRows.h"
#include "Offload/OffloadSettings.h"
#include "Offload/ProvedCopies.h"
#include "Platform/Clock.h"
#include "Platform/Files/RootFolder.h"
#include "Platform/Uuid.h"
#include "Volumes/VolumeRecords.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <stop_token>
#include <string>

/// One offload of one card to one destination, from the first look at the card to the last proved
/// byte. Without state; knows nothing of reports, of the database or of other destinations.
namespace slatewise::CopyEngine {

/// What a run is to do. Only mount point and name of the two volumes are looked at.
struct Request {
    ClassifiedVolume card;
    ClassifiedVolume destination;
    /// The two as they were when they were chosen; a run opens for itself what is not given.
    std::shared_ptr<const RootFolder> cardFolder{};
    std::shared_ptr<const RootFolder> destinationFolder{};
    OffloadSettings settings;
    std::string camera;
    std::string ekip;
    Uuid sessionID;
    /// Fills the date and time in the session's path, and becomes `startedAt`.
    Instant now{};
    /// Gives the formats that are to be computed of a file beyond its SHA-256, in the same passes.
    using FormatsOf = std::function<std::vector<HashFormat>(const std::string& relativePath)>;
    /// Asked once, on the run's thread, when the card's inventory is known. Empty: none.
    std::function<FormatsOf(const RootFolder& card, std::span<const InventoryEntry> entries)>
        planFormats{};
    /// What clips are looked into with.
    MediaInfoCLI::Tool mediaInfo = MediaInfoCLI::Tool::usual();
};

/// Who watches a run. Callbacks are called on the run's thread, must not block, and may be empty.
struct Observer {
    /// Up to once per chunk of 1 MiB.
    std::function<void(const OffloadPhase&)> progress;
    /// One line for the log.
    std::function<void(const std::string&)> log;
    /// As it comes up; the outcome has it too. Whoever watches sees to its line for the log.
    std::function<void(const OffloadProblem&)> problem;
    /// Once, before the first file: where the run leaves everything, whatever becomes of it.
    std::function<void(const std::filesystem::path&)> sessionRootCreated;
    /// Once, when every copy was read back: to look at them again as long as something is still to
    /// be told of them. Holds the session's folder, and so the disk.
    std::function<void(std::shared_ptr<ProvedCopies>)> proved{};
};

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
