#pragma once

#include <QCoro/QCoroTask>

#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <set>

namespace slatewise {

/// Gives report folders of older versions the names of today, away from the GUI thread. One root
/// after the other, in the order in which they were named: renaming in an archive copies to
/// destinations, where nobody else should be renaming meanwhile. GUI thread.
///
/// A disk that does not answer holds up the others for half a minute.
class ReportMigration {
public:
    void migrateArchive(std::filesystem::path archive);
    void migrateDisk(std::filesystem::path mountPoint);

    /// Nothing for a disk that was named to this function before, whatever was found there.
    void migrateDiskOnce(const std::filesystem::path& mountPoint);

private:
    using Queue = std::deque<std::function<void()>>;
    void begin(std::function<void()> migration);
    static QCoro::Task<> workOff(std::shared_ptr<Queue> queue);

    std::set<std::filesystem::path> migratedDisks_;
    /// The front is the one at work.
    std::shared_ptr<Queue> queue_ = std::make_shared<Queue>();
};

} // namespace slatewise
