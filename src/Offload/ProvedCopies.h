#pragma once

#include "Offload/FileDates.h"
#include "Offload/OffloadProblem.h"
#include "Offload/OffloadRows.h"
#include "Platform/Disks/FileSystemType.h"
#include "Platform/Files/RootFolder.h"

#include <cstdint>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

namespace slatewise {

/// The copies of a run as they were when they were proved. A proof is one of the moment: the disk
/// stays in the hands of programs and people, and what is told of its copies is told later.
/// Everything blocks its caller; one thread at a time.
class ProvedCopies {
public:
    /// Holds the session's folder, so that another one of its name is known for what it is.
    explicit ProvedCopies(RootFolder session)
        : session_(std::move(session)),
          haveNumbers_(FileSystemType::keepsFileNumbers(session_.path())),
          areChangesKept_(FileSystemType::keepsChangeDates(session_.path())) {}

    /// The session's folder.
    const RootFolder& folder() const noexcept { return session_; }

    /// Notes what the copy was like that was read back, with the place of its row among the run's.
    void note(std::size_t row, const FileSystem::Attributes& copy);

    /// The device's cache was emptied before the copies were read, and has to be again for those
    /// that are read once more.
    void noteDeviceDropped() { isDeviceDropped_ = true; }

    /// Notes what the lists are like that were just written anew, by their paths in the session.
    /// One that cannot be seen is gone.
    void noteLists(std::span<const std::string> lists);

    /// Looks whether every copy that `rows` call verified lies where it was proved, as long as it
    /// was and with its date, and marks the rows of others as failed. `rows` have the run's order.
    /// The lists that were noted must be as they were then. Gives a problem for each copy or list
    /// that is not what it was, or one for the session's folder. Never fails: what cannot be seen
    /// is gone.
    ///
    /// Dates count by the two seconds that the coarsest file systems keep. A copy has its source's
    /// date, which lies before the run, so that whatever is written later stands out. Who writes
    /// may put that date back, but not the one of the last change: a copy that was changed in
    /// whatever way since its proof is read back once more, which proves it anew. Once `stop` is
    /// requested none is: rows of such copies become unverified, and one problem tells of it.
    std::vector<OffloadProblem> findChanges(std::span<FileCopyResult> rows,
                                            const std::stop_token& stop = {});

private:
    using Found = std::optional<OffloadProblem>;
    Found changeOf(FileCopyResult& row, FileDates& proved, const std::stop_token& stop) const;
    Found readAgain(FileCopyResult& row, FileDates& proved, const std::stop_token& stop) const;

    struct List {
        std::string path;
        std::int64_t sizeBytes = -1;
        FileDates dates{};
    };
    List look(const std::string& path) const;
    bool isAsNoted(const List& list) const;

    RootFolder session_;
    bool haveNumbers_;
    bool areChangesKept_;
    bool isDeviceDropped_ = false;
    /// By row; of no meaning where nothing was proved.
    std::vector<FileDates> dates_;
    std::vector<List> lists_;
};

} // namespace slatewise
