#pragma once

#include "Batch/BatchSurroundings.h"
#include "Batch/ReportArchive.h"

#include <memory>
#include <optional>
#include <string>

namespace slatewise {

/// What a batch learns before its first pair, once its cards and disks are held.
struct BatchOpening {
    /// Why nothing of the plan can be begun, in the plan's language; empty when nothing is in the
    /// way.
    std::optional<std::string> obstacle;
    /// Of all pairs' reports; null where there is an obstacle.
    std::shared_ptr<const RootFolder> archive;

    /// Asks `find` and opens the archive. The log is told of an obstacle. Never fails: a failure is
    /// an obstacle. Blocks as the disks do; any thread.
    static BatchOpening of(const BatchPlan& plan, const ReportArchive::Disks& disks,
                           const decltype(BatchSurroundings::findObstacle)& find);
};

} // namespace slatewise
