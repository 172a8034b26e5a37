#include "Batch/RunMailbox.h"

#include "Storage/AppLog.h"

#include <utility>

namespace slatewise {

CopyEngine::Observer RunMailbox::observer() {
    CopyEngine::Observer observer;
    observer.progress = [this](const OffloadPhase& phase) {
        const std::lock_guard guard(lock_);
        mail_.phase = phase;
    };
    observer.log = [](const std::string& line) {
        AppLog::append(line);
    };
    observer.problem = [this](const OffloadProblem& problem) {
        AppLog::append(problem.logLine());
        const std::lock_guard guard(lock_);
        mail_.problems.push_back(problem);
        problems_.push_back(problem);
    };
    observer.sessionRootCreated = [this](const std::filesystem::path& root) {
        const std::lock_guard guard(lock_);
        sessionRoot_ = mail_.sessionRoot = root;
    };
    return observer;
}

RunMailbox::Mail RunMailbox::take() {
    const std::lock_guard guard(lock_);
    return std::exchange(mail_, {});
}

std::vector<OffloadProblem> RunMailbox::problems() const {
    const std::lock_guard guard(lock_);
    return problems_;
}

std::filesystem::path RunMailbox::sessionRoot() const {
    const std::lock_guard guard(lock_);
    return sessionRoot_;
}

} // namespace slatewise
