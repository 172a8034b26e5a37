#pragma once

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

/// What an offload is given, and who watches it.
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
    /// Asked once, on the run's thread, when the card's inventory is known. May take its time, and
    /// fails with `CancellationError` once `stop` is requested. Empty: none.
    std::function<FormatsOf(const RootFolder& card, std::span<const InventoryEntry> entries,
                            const std::stop_token& stop)>
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

} // namespace slatewise::CopyEngine
