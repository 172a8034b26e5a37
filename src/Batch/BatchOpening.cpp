#include "Batch/BatchOpening.h"

#include "Batch/BatchPlan.h"
#include "Language/L10n.h"
#include "Offload/OffloadError.h"
#include "Storage/AppLog.h"

namespace slatewise {

namespace {

BatchOpening open(const BatchPlan& plan, const ReportArchive::Disks& disks,
                  const decltype(BatchSurroundings::findObstacle)& find) {
    try {
        if (auto obstacle = find(plan))
            return {std::move(obstacle), nullptr};
        return {std::nullopt, ReportArchive::open(plan, disks)};
    } catch (const std::exception& failure) {
        return {describe(failure, plan.l10n()), nullptr};
    }
}

} // namespace

BatchOpening BatchOpening::of(const BatchPlan& plan, const ReportArchive::Disks& disks,
                              const decltype(BatchSurroundings::findObstacle)& find) {
    auto opening = open(plan, disks, find);
    if (!opening.obstacle)
        return opening;
    auto logged = opening.obstacle;
    if (plan.language != AppLanguage::English) {
        // Obstacles come as sentences, and the log has its own language.
        auto inEnglish = plan;
        inEnglish.language = AppLanguage::English;
        logged = open(inEnglish, disks, find).obstacle;
    }
    AppLog::append("Offload not begun: " + logged.value_or(*opening.obstacle));
    return opening;
}

} // namespace slatewise
