#include "Model/Settings/ReportMigration.h"

#include "Batch/Waiting.h"
#include "Platform/Worker.h"
#include "Reports/ReportFolder.h"

#include <utility>

namespace slatewise {

void ReportMigration::migrateArchive(std::filesystem::path archive) {
    begin([archive = std::move(archive)] { ReportFolder::migrateReadableNames(archive); });
}

void ReportMigration::migrateDisk(std::filesystem::path mountPoint) {
    begin([mountPoint = std::move(mountPoint)] { ReportFolder::migrateDisk(mountPoint); });
}

void ReportMigration::migrateDiskOnce(const std::filesystem::path& mountPoint) {
    if (migratedDisks_.insert(mountPoint).second)
        migrateDisk(mountPoint);
}

void ReportMigration::begin(std::function<void()> migration) {
    queue_->push_back(std::move(migration));
    if (queue_->size() == 1)
        workOff(queue_);
}

QCoro::Task<> ReportMigration::workOff(std::shared_ptr<Queue> queue) {
    constexpr std::chrono::seconds kPatience{30};
    while (!queue->empty()) {
        const auto migrating =
            waitForEnd(onWorker(queue->front()), std::stop_token(), {.patience = kPatience});
        co_await migrating;
        queue->pop_front();
    }
}

} // namespace slatewise
