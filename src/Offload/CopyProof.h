#pragma once

#include "Offload/CopyProgress.h"
#include "Offload/OffloadRows.h"
#include "Offload/ProvedCopies.h"
#include "Offload/ReadBackAhead.h"
#include "Offload/RunReporter.h"
#include "Offload/RunTransfer.h"
#include "Platform/Disks/FileSystemErrors.h"
#include "Platform/Files/VolumeWatch.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace slatewise {

/// The second half of a copy run: everything is made durable, then each copy is read back from the
/// disk. On the run's thread.
class CopyProof {
public:
    /// `session` lies beneath `disk`, and nothing has been written there. Disk, reporter and
    /// transfer must outlive it. Fails with `PosixError` when the session cannot be opened.
    CopyProof(const RootFolder& disk, std::filesystem::path session, RunReporter& reporter,
              RunTransfer& transfer)
        : disk_(disk), session_(std::move(session)), reporter_(reporter), transfer_(transfer),
          copies_(std::make_shared<ProvedCopies>(disk.below(session_))), volume_(copies_->folder()),
          errors_(disk.path()) {}

    /// What is proved must also outlive a power cut, folder entries and dates included. False, and
    /// reported, when the disk could not keep what it was given.
    bool settle();

    /// Sees to it that the proof comes from the device, and reports where that may not be.
    void dropDeviceCache();

    /// Reads back every copy among the rows, which are marked by it; what fails is reported. Gives
    /// whether all were proved. Fails with `CancellationError` when asked to stop between files.
    bool prove(std::span<FileCopyResult> rows);

    /// Whether every copy lies where it was proved, and as it was; else marks and reports. `rows`
    /// begin with those that were proved.
    bool findsCopiesInPlace(std::span<FileCopyResult> rows);

    /// Whether the disk lists every copy under its own name; else marks and reports.
    bool findsNamesKept(std::span<FileCopyResult> rows);

    /// Whether the disk met no damage since the run began to write; else reports.
    bool findsDiskUndamaged();

    const std::shared_ptr<ProvedCopies>& copies() const { return copies_; }

private:
    /// Gives what the file was like that was read.
    FileSystem::Attributes readBack(FileCopyResult& row, std::size_t position,
                                    CopyProgress& progress, ReadBackAhead& copies);
    void noteWhatMemoryKept();
    /// Gives whether there is nothing to report.
    bool reportAll(const std::vector<OffloadProblem>& problems);

    const RootFolder& disk_;
    const std::filesystem::path session_;
    RunReporter& reporter_;
    RunTransfer& transfer_;
    const std::shared_ptr<ProvedCopies> copies_;
    const VolumeWatch volume_;
    const FileSystemErrors errors_;
    bool isDeviceDropped_ = true;
    /// Copies whose proof may not come from the disk.
    std::vector<std::string> keptInMemory_;
};

} // namespace slatewise
