#include "support/Offloads.h"

#include "Language/L10n.h"

namespace slatewise::test {

ClassifiedVolume volumeAt(const std::filesystem::path& folder, const std::string& name) {
    ClassifiedVolume volume;
    volume.facts.mountPoint = folder;
    volume.facts.volumeName = name;
    return volume;
}

CopyEngine::Request requestFor(const std::filesystem::path& card,
                               const std::filesystem::path& destination) {
    CopyEngine::Request request;
    request.card = volumeAt(card);
    request.destination = volumeAt(destination, "DISK");
    request.settings.folderTemplate = "session";
    request.sessionID = Uuid::random();
    request.now = Clock::now();
    return request;
}

CopyEngine::Observer RunRecord::observer(std::function<void(const OffloadPhase&)> onPhase) {
    return {.progress =
                [this, onPhase = std::move(onPhase)](const OffloadPhase& phase) {
                    phases.push_back(phase);
                    if (onPhase)
                        onPhase(phase);
                },
            .log = [this](const std::string& line) { log.push_back(line); },
            .problem =
                [this](const OffloadProblem& problem) {
                    problems.push_back(problem.text(L10n(AppLanguage::English)));
                },
            .sessionRootCreated = {}};
}

OffloadOutcome RunRecord::run(const CopyEngine::Request& request,
                              std::function<void(const OffloadPhase&)> onPhase) {
    return CopyEngine::run(request, observer(std::move(onPhase)), {});
}

std::map<std::string, std::string> verdicts(const OffloadOutcome& outcome) {
    std::map<std::string, std::string> result;
    for (const auto& row : outcome.files)
        result[row.relativePath] =
            std::string(rawValue(row.action)) + "/" + std::string(rawValue(row.verifyStatus));
    return result;
}

} // namespace slatewise::test
