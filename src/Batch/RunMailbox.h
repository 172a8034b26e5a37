#pragma once

#include "Offload/CopyRequest.h"

#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace slatewise {

/// What a run tells while it works, kept until the GUI thread comes to look. A run tells up to
/// 2,000 things a second; of the phases only the latest is of any interest, and looking a few times
/// a second costs the GUI thread nothing. Any thread.
class RunMailbox {
public:
    /// What has come in since the last look.
    struct Mail {
        std::optional<OffloadPhase> phase;
        std::vector<OffloadProblem> problems;
        /// Empty unless it was made since.
        std::filesystem::path sessionRoot;
    };

    /// For a run and for whoever else finds problems of its pair; must not outlive this object.
    /// Lines for the log go there at once, and so does each problem.
    CopyEngine::Observer observer();

    Mail take();

    /// All problems of the run so far.
    std::vector<OffloadProblem> problems() const;

    /// Where the run leaves everything; empty while it has made no folder.
    std::filesystem::path sessionRoot() const;

private:
    mutable std::mutex lock_;
    Mail mail_;
    std::vector<OffloadProblem> problems_;
    std::filesystem::path sessionRoot_;
};

} // namespace slatewise
