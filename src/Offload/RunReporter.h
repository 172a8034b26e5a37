#pragma once

#include "Offload/CopyRequest.h"

#include <exception>
#include <string>
#include <vector>

namespace slatewise {

/// What one run says while it goes on, and keeps of it for its outcome. On the run's thread.
class RunReporter {
public:
    /// The observer must outlive it.
    explicit RunReporter(const CopyEngine::Observer& observer) : observer_(observer) {}

    void publish(const OffloadPhase& phase) const;
    void log(const std::string& line) const;
    void report(OffloadProblem problem);

    /// Whoever asked a run to stop need not be told that it did. `file` is what the sentence means
    /// by its subject.
    void reportFailure(OffloadProblem::Kind kind, const std::string& subject,
                       const std::exception& failure, const std::filesystem::path& file = {});

    /// All that was reported, to be taken once.
    std::vector<OffloadProblem> takeProblems() { return std::move(problems_); }

private:
    const CopyEngine::Observer& observer_;
    std::vector<OffloadProblem> problems_;
};

} // namespace slatewise
