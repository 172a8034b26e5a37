#include "Offload/RunReporter.h"

#include "Platform/Error.h"
#include "Platform/Text.h"

namespace slatewise {

void RunReporter::publish(const OffloadPhase& phase) const {
    if (observer_.progress)
        observer_.progress(phase);
}

void RunReporter::log(const std::string& line) const {
    if (observer_.log)
        observer_.log(line);
}

void RunReporter::report(OffloadProblem problem) {
    if (observer_.problem)
        observer_.problem(problem);
    problems_.push_back(std::move(problem));
}

void RunReporter::reportFailure(OffloadProblem::Kind kind, const std::string& subject,
                                const std::exception& failure, const std::filesystem::path& file) {
    if (dynamic_cast<const CancellationError*>(&failure))
        return log("Stopped at " + Text::displayable(subject));
    report(OffloadProblem::of(kind, subject, failure, file));
}

} // namespace slatewise
