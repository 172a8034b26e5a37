#include "OffloadBatch.h"

#include "Offload/PathSize.h"
#include "Platform/Error.h"
#include "Platform/Text.h"
#include "Reports/ReportFolder.h"
#include "Reports/ReportWriter.h"
#include "Storage/AppLog.h"
#include "Storage/SupportPaths.h"

#include <algorithm>

namespace slatewise::tool {

namespace {

/// A folder given by its path, in the form in which volumes travel.
ClassifiedVolume pickedFolder(const std::filesystem::path& folder) {
    const auto capacity = PathSize::volumeBytes(folder);
    ClassifiedVolume volume;
    volume.facts.mountPoint = folder;
    volume.facts.volumeName = folder.has_filename() ? folder.filename().native() : folder.native();
    volume.facts.totalBytes = capacity.total;
    volume.facts.freeBytes = capacity.free;
    volume.facts.isWritable = true;
    volume.reasons = {"folder_picked"};
    return volume;
}

std::vector<ClassifiedVolume> pickedFolders(const std::vector<std::filesystem::path>& folders) {
    std::vector<ClassifiedVolume> volumes;
    std::transform(folders.begin(), folders.end(), std::back_inserter(volumes), pickedFolder);
    return volumes;
}

/// A store that cannot be opened must not keep anyone from copying a card.
AppDatabase openStore() {
    try {
        return AppDatabase(SupportPaths::databaseURL());
    } catch (const std::exception& failure) {
        AppLog::append("Store not opened, kept in memory: " + describe(failure));
        return AppDatabase::inMemory();
    }
}

bool endedWell(const std::string& status) {
    return status == OutcomeStatus::verified || status == OutcomeStatus::hashed;
}

int countRows(const OffloadOutcome& outcome, std::string_view verifyStatus) {
    return static_cast<int>(
        std::count_if(outcome.files.begin(), outcome.files.end(),
                      [&](const auto& row) { return row.verifyStatus == verifyStatus; }));
}

std::string joinedNames(const std::vector<ClassifiedVolume>& volumes) {
    std::string names;
    for (const auto& volume : volumes)
        names += (names.empty() ? "" : ",") + volume.name();
    return names;
}

} // namespace

OffloadBatch::OffloadBatch(const Arguments& arguments, OffloadSettings settings, const Texts& texts,
                           ProgressDisplay& display, std::stop_token stop)
    : arguments_(arguments), settings_(std::move(settings)), texts_(texts), display_(display),
      stop_(std::move(stop)), cards_(pickedFolders(arguments.cards)),
      destinations_(pickedFolders(arguments.destinations)), database_(openStore()) {}

std::vector<PairResult> OffloadBatch::run() {
    AppLog::append("Offload start dests=" + joinedNames(destinations_) +
                   " cards=" + joinedNames(cards_));
    std::vector<PairResult> results;
    bool goOn = true;
    for (std::size_t card = 0; card < cards_.size(); ++card) {
        for (std::size_t destination = 0; destination < destinations_.size(); ++destination) {
            if (!goOn) {
                results.push_back({std::string(OutcomeStatus::failed), {}, {}});
                continue;
            }
            display_.setLabel(label(card, destination));
            results.push_back(runPair(cards_[card], destinations_[destination]));
            goOn = endedWell(results.back().status);
        }
    }
    return results;
}

PairResult OffloadBatch::runPair(const ClassifiedVolume& card,
                                 const ClassifiedVolume& destination) {
    const CopyEngine::Request request = {.card = card,
                                         .destination = destination,
                                         .settings = settings_,
                                         .camera = arguments_.camera,
                                         .ekip = arguments_.crew,
                                         .sessionID = Uuid::random(),
                                         .now = Clock::now()};
    PairResult result = {std::string(OutcomeStatus::failed), {}, {}};
    const CopyEngine::Observer observer = {
        .progress = [this](const OffloadPhase& phase) { display_.show(phase); },
        .log = [](const std::string& line) { AppLog::append(line); },
        .problem =
            [this](const std::string& line) {
                AppLog::append(line);
                display_.note(line);
            },
        .sessionRootCreated = [&](const std::filesystem::path& root) { result.sessionRoot = root; },
    };
    try {
        const auto outcome = CopyEngine::run(request, observer, stop_);
        result.sessionRoot = outcome.sessionRoot;
        leaveTraces(request, outcome, result);
        store(request, outcome);
        tellOutcome(request, outcome);
        result.status = outcome.status;
    } catch (const CancellationError&) {
        display_.note(texts_.shared.cancelled());
        if (!result.sessionRoot.empty())
            display_.note(texts_.leftOnDestination(Text::displayable(result.sessionRoot.native())));
    } catch (const std::exception& failure) {
        display_.note(texts_.shared.failed(describe(failure)));
        AppLog::append("Offload failed card=" + card.name() + " dest=" + destination.name() + ": " +
                       describe(failure));
    }
    return result;
}

void OffloadBatch::leaveTraces(const CopyEngine::Request& request, const OffloadOutcome& outcome,
                               PairResult& result) {
    const auto& card = request.card.facts;
    const auto& destination = request.destination.facts;
    try {
        const auto manifest =
            ReportWriter::buildManifest(outcome, card, destination, request.camera, request.ekip);
        const auto archive = SupportPaths::reportsArchive(settings_);
        const auto name =
            ReportFolder::uniqueName(ReportFolder::displayName(outcome.startedAt, request.ekip,
                                                               request.camera, card.volumeName),
                                     manifest.sessionID, archive);
        ReportWriter::write(manifest, archive / name, texts_.shared.language());
        result.reportFolder = archive / name;
        const auto onDestination =
            ReportFolder::destinationReportsRoot(destination.mountPoint) / name;
        ReportWriter::copySidecars(archive / name, onDestination);
        result.reportFolder = onDestination;
    } catch (const std::exception& failure) {
        throw Error(endedWell(outcome.status) ? texts_.reportsNotWritten(describe(failure))
                                              : describe(failure));
    }
}

/// The offload is complete without the store: a failure is worth a sentence, not the card.
void OffloadBatch::store(const CopyEngine::Request& request, const OffloadOutcome& outcome) {
    try {
        database_.save(outcome, request.card.name(), request.destination.name(), request.camera);
    } catch (const std::exception& failure) {
        AppLog::append("Session not stored: " + describe(failure));
        display_.note(texts_.storeNotUsed(describe(failure)));
    }
    AppLog::append("Offload " + outcome.status + " card=" + request.card.name() + " dest=" +
                   request.destination.name() + " files=" + std::to_string(outcome.files.size()) +
                   " bytes=" + std::to_string(outcome.bytesCopied));
}

void OffloadBatch::tellOutcome(const CopyEngine::Request& request, const OffloadOutcome& outcome) {
    const auto& shared = texts_.shared;
    if (outcome.status == OutcomeStatus::verified) {
        display_.finish(shared.verified(countRows(outcome, VerifyStatus::verified),
                                        PathSize::format(outcome.bytesCopied, shared.language())));
    } else if (outcome.status == OutcomeStatus::hashed) {
        display_.finish(shared.hashed(countRows(outcome, VerifyStatus::hashed)));
    } else {
        display_.note(stop_.stop_requested() ? std::string(shared.cancelled())
                                             : shared.failed(shared.verifyIncomplete(
                                                   Text::displayable(request.card.name()),
                                                   Text::displayable(request.destination.name()))));
        display_.note(texts_.leftOnDestination(Text::displayable(outcome.sessionRoot.native())));
    }
}

std::string OffloadBatch::label(std::size_t card, std::size_t destination) const {
    const auto pairs = cards_.size() * destinations_.size();
    if (pairs == 1)
        return "";
    const auto pair = card * destinations_.size() + destination + 1;
    return std::to_string(pair) + "/" + std::to_string(pairs) + "  " +
           Text::displayable(cards_[card].name()) + " → " +
           Text::displayable(destinations_[destination].name());
}

} // namespace slatewise::tool
