#pragma once

#include "Offload/CopyRequest.h"
#include "Offload/RunReporter.h"
#include "Offload/SHA256Hasher.h"
#include "Offload/Transfer.h"

#include <cstddef>
#include <functional>
#include <set>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

namespace slatewise {

/// What the passes of one run over files have in common. On the run's thread.
class RunTransfer {
public:
    /// The reporter must outlive it.
    RunTransfer(const RunReporter& reporter, std::stop_token stop)
        : reporter_(reporter), stop_(std::move(stop)) {}

    /// Formats to be computed of each file from now on; see `CopyEngine::Request`.
    void computeFurther(CopyEngine::Request::FormatsOf formatsOf) {
        formatsOf_ = std::move(formatsOf);
    }

    Transfer& transfer() { return transfer_; }

    /// Those of the file that has this path on the card.
    std::vector<HashFormat> furtherFormats(const std::string& relative) const {
        return formatsOf_ ? formatsOf_(relative) : std::vector<HashFormat>();
    }

    /// For one pass over the file that has this path on the card. The watch refers to this object.
    TransferWatch watch(const std::string& relative, std::function<void(std::size_t)> onBytes);

    const std::stop_token& stop() const { return stop_; }
    void throwIfCancelled() const;

private:
    void noteAccess(const FileBeneath& file, FileAccess access);

    const RunReporter& reporter_;
    const std::stop_token stop_;
    CopyEngine::Request::FormatsOf formatsOf_;
    Transfer transfer_;
    std::set<std::pair<const RootFolder*, FileAccess>> accessesSeen_;
};

} // namespace slatewise
