#include "Model/ReportMigration.h"

#include "Platform/Worker.h"
#include "Reports/ReportFolder.h"

namespace slatewise {

void ReportMigration::migrate(std::filesystem::path root) {
    queue_->push_back(std::move(root));
    if (queue_->size() == 1)
        workOff(queue_);
}

void ReportMigration::migrateOnce(const std::filesystem::path& root) {
    if (migratedReportRoots_.insert(root).second)
        migrate(root);
}

QCoro::Task<> ReportMigration::workOff(std::shared_ptr<Queue> queue) {
    while (!queue->empty()) {
        const auto migrating =
            onWorker([root = queue->front()] { ReportFolder::migrateReadableNames(root); });
        co_await migrating;
        queue->pop_front();
    }
}

} // namespace slatewise
