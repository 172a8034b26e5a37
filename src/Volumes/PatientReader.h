#pragma once

#include "Volumes/VolumeRecords.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace slatewise {

/// Reads the facts of many volumes at a time without being held up by one that does not answer,
/// such as a share whose server is gone or a disk that is dying under its file system. Nothing can
/// stop a thread that such a file system holds, so each read has a thread of its own, and one that
/// is late is left to itself. Until it comes back no further one is sent after it: a dead volume
/// costs one waiting time and one sleeping thread, however often it is asked for.
///
/// Any thread may read, several at the same time. Reads that are late may outlive the reader.
class PatientReader {
public:
    struct Subject {
        /// As long as it is the same, what was last read holds for a volume that is silent now.
        std::string identity;
        std::filesystem::path mountPoint;
    };
    /// Runs on a thread of ours and must not throw.
    using Read = std::function<VolumeFacts(const std::filesystem::path& mountPoint)>;

    explicit PatientReader(std::chrono::milliseconds patience);

    /// Facts in the order of the subjects: what was read now; for a volume that is silent what was
    /// last read of it; nothing when it has never answered. Takes no longer than our patience.
    std::vector<std::optional<VolumeFacts>> read(const std::vector<Subject>& subjects,
                                                 const Read& read);

private:
    struct Ledger;

    std::chrono::milliseconds patience_;
    std::shared_ptr<Ledger> ledger_;
};

} // namespace slatewise
