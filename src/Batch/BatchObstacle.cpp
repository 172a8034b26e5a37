#include "Batch/BatchObstacle.h"

#include "Batch/BatchPlan.h"
#include "Batch/FolderOverlap.h"
#include "Batch/SpaceCheck.h"
#include "Language/L10n.h"
#include "Offload/PathSize.h"

namespace slatewise::BatchObstacle {

std::optional<std::string> find(const BatchPlan& plan) {
    if (auto overlap = FolderOverlap::find(plan, Clock::now()))
        return overlap;
    const auto freeBytes = [](const auto& folder) -> std::optional<std::int64_t> {
        const auto capacity = PathSize::volumeBytes(folder);
        return capacity.total > 0 ? std::optional(capacity.free) : std::nullopt;
    };
    const auto lack = SpaceCheck::findLackOfRoom(plan.totalBytes, plan.destinations, freeBytes);
    if (!lack)
        return std::nullopt;
    return lack->text(plan.l10n()) + " " + std::string(plan.l10n().adviceMakeRoom());
}

} // namespace slatewise::BatchObstacle
