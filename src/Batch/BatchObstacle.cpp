#include "Batch/BatchObstacle.h"

#include "Batch/BatchPlan.h"
#include "Batch/FolderOverlap.h"
#include "Batch/SpaceCheck.h"
#include "Offload/PathSize.h"

namespace slatewise::BatchObstacle {

std::optional<std::string> find(const BatchPlan& plan) {
    if (const auto overlap = FolderOverlap::find(plan, Clock::now()))
        return overlap;
    const auto lack =
        SpaceCheck::findLackOfRoom(plan.totalBytes, plan.destinations, [](const auto& folder) {
            return PathSize::volumeBytes(folder).free;
        });
    return lack ? std::optional(lack->text(plan.l10n())) : std::nullopt;
}

} // namespace slatewise::BatchObstacle
