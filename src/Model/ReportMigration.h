#pragma once

#include <QCoro/QCoroTask>

#include <deque>
#include <filesystem>
#include <memory>
#include <set>

namespace slatewise {

/// Gives report folders of older versions the names of today, away from the GUI thread. One root
/// after the other, in the order in which they were named: renaming in an archive copies to
/// destinations, where nobody else should be renaming meanwhile. GUI thread.
///
/// A disk that does not answer holds up the roots behind it; they are met again at the next start.
class ReportMigration {
public:
    void migrate(std::filesystem::path root);

    /// Nothing for a root that was named to this function before, whatever was found there.
    void migrateOnce(const std::filesystem::path& root);

private:
    using Queue = std::deque<std::filesystem::path>;
    static QCoro::Task<> workOff(std::shared_ptr<Queue> queue);

    std::set<std::filesystem::path> migratedReportRoots_;
    /// The front is the one at work.
    std::shared_ptr<Queue> queue_ = std::make_shared<Queue>();
};

} // namespace slatewise
