#pragma once

#include "Batch/BatchObstacle.h"
#include "Offload/CopyEngine.h"
#include "Volumes/DiskUtilClient.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>

namespace slatewise {

/// What a batch needs of the world around it. Tests put their own in place. Every function blocks
/// and may be called on any thread.
struct BatchSurroundings {
    /// What stands against a batch.
    std::function<std::optional<std::string>(const BatchPlan&)> findObstacle = BatchObstacle::find;

    /// One run of one card to one destination.
    std::function<OffloadOutcome(const CopyEngine::Request&, const CopyEngine::Observer&,
                                 std::stop_token)>
        runEngine = CopyEngine::run;

    /// How long a card or a disk may take to answer before the batch begins without it. The look
    /// for obstacles may take six times as long, or nothing is begun.
    std::chrono::milliseconds patience = std::chrono::seconds(10);

    /// Throws when the volume stays. Empty: nothing is ejected.
    std::function<DiskUtilClient::Ejected(const std::filesystem::path& mountPoint)> eject;
};

} // namespace slatewise
