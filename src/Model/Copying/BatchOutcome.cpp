#include "Model/Copying/BatchOutcome.h"

#include "Language/L10n.h"
#include "Model/QtText.h"

#include <algorithm>
#include <array>
#include <cerrno>

namespace slatewise {

void OutcomeListModel::setRows(std::vector<OutcomeLine> rows) {
    const auto before = rows_.size();
    RowChanges::bring(*this, rows_, std::move(rows));
    if (rows_.size() != before)
        Q_EMIT countChanged();
}

namespace BatchOutcome {

namespace {

using Kind = OffloadProblem::Kind;

bool wasBegun(const PairResult& pair) {
    return pair.failure != PairFailure::None || endedWell(pair.status);
}

/// Whether it was stopped while its reports were written.
bool isAwaitingReports(const PairResult& pair) {
    return std::any_of(pair.problems.begin(), pair.problems.end(),
                       [](const auto& problem) { return problem.kind == Kind::ReportsNotAwaited; });
}

/// What a pair failed by, in the language of now as far as more than words is known of it.
std::string reasonOf(const BatchPair& planned, const PairResult& pair,
                     const OffloadProblem* failure, L10n l10n) {
    if (pair.failure == PairFailure::Stopped) {
        const bool isCopyComplete = failure && failure->isOfReports() && isAwaitingReports(pair);
        return std::string(isCopyComplete ? l10n.reportsNotAwaited() : l10n.cancelled());
    }
    if (failure)
        return failure->text(l10n);
    if (pair.error)
        return pair.error->text(l10n);
    return pair.runStatus ? l10n.verifyIncomplete(planned.name) : pair.message;
}

OutcomeLine lineOf(const BatchPair& planned, const PairResult& pair, L10n l10n) {
    if (!wasBegun(pair))
        return {toQString(l10n.pairNotBegun(planned.name)), OutcomeLine::Kind::Plain};
    switch (pair.status) {
    case OutcomeStatus::Verified:
        return {toQString(l10n.pairVerified(planned.name, pair.filesDone)),
                OutcomeLine::Kind::Good};
    case OutcomeStatus::Hashed:
        return {toQString(l10n.pairHashed(planned.name, pair.filesDone)), OutcomeLine::Kind::Plain};
    case OutcomeStatus::Failed:
        break;
    }
    const auto why = reasonOf(planned, pair, OffloadProblem::decisive(pair.problems), l10n);
    return {toQString(l10n.pairFailed(planned.name, why)), OutcomeLine::Kind::Bad};
}

/// Another try would end there again: a file that is too large for the disk, a name that it does
/// not have, two names that are one to it, or a disk that takes nothing.
bool isBeyondDisk(int code) {
    constexpr std::array codes = {EFBIG, EROFS, ENAMETOOLONG, EINVAL, EILSEQ, EEXIST};
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

std::string adviceFor(const OffloadProblem& problem, std::string_view button, L10n l10n) {
    if (problem.code == ENOSPC || problem.code == EDQUOT)
        return l10n.adviceNoSpace(button);
    if (problem.kind == Kind::CopyStopped && isBeyondDisk(problem.code))
        return l10n.adviceOtherDisk(button);
    switch (problem.kind) {
    case Kind::FoldersFellTogether:
    case Kind::NameNotKept:
        return l10n.adviceOtherDisk(button);
    case Kind::CardDiffersFromList:
    case Kind::ListedFileMissing:
    case Kind::ListedFileUnproved:
        return std::string(l10n.adviceListDiffers());
    case Kind::CardGone:
    case Kind::CardSilent:
        return l10n.adviceCardGone(button);
    case Kind::DiskReplaced:
    case Kind::DiskSilent:
        return l10n.adviceDiskGone(button);
    case Kind::CopyDiffers:
    case Kind::NotReadBack:
    case Kind::NothingReadBack:
        return std::string(l10n.adviceCopyDiffers());
    case Kind::CopyStopped:
    case Kind::HashingStopped:
    case Kind::FolderNotRead:
        return l10n.adviceNotRead(button);
    default:
        return l10n.adviceRetry(button);
    }
}

/// That of the card or the disk itself counts more than what it did to a file.
const OffloadProblem* decisiveFailure(const PairResult& pair) {
    const auto found =
        std::find_if(pair.problems.begin(), pair.problems.end(), [](const auto& problem) {
            return problem.kind == Kind::CardGone || problem.kind == Kind::DiskReplaced;
        });
    return found == pair.problems.end() ? OffloadProblem::decisive(pair.problems) : &*found;
}

} // namespace

std::vector<OutcomeLine> pairs(const BatchPlan& plan, const BatchResult& result, L10n l10n) {
    std::vector<OutcomeLine> lines;
    const auto planned = plan.pairs();
    for (std::size_t pair = 0; pair < std::min(planned.size(), result.pairs.size()); ++pair) {
        auto line = lineOf(planned[pair], result.pairs[pair], l10n);
        // A card that was only hashed is told of once: no disk has anything of it.
        const bool isSameCard = pair > 0 && planned[pair].card.id() == planned[pair - 1].card.id();
        if (result.wasHashing && isSameCard && lines.back() == line)
            continue;
        lines.push_back(std::move(line));
    }
    std::stable_partition(lines.begin(), lines.end(),
                          [](const auto& line) { return line.kind == OutcomeLine::Kind::Bad; });
    return lines;
}

std::vector<OutcomeLine> problems(const BatchResult& result, L10n l10n) {
    std::vector<OutcomeLine> lines;
    for (const auto& pair : result.pairs) {
        // The line of the pair says this one already.
        const bool isTold =
            wasBegun(pair) && !endedWell(pair.status) && pair.failure != PairFailure::Stopped;
        const auto* told = isTold ? OffloadProblem::decisive(pair.problems) : nullptr;
        for (const auto& problem : pair.problems) {
            if (&problem == told ||
                (problem.kind == Kind::ReportsNotAwaited && pair.failure == PairFailure::Stopped))
                continue;
            const bool isNote = problem.severity() == OffloadProblem::Severity::Note;
            const OutcomeLine line{toQString(problem.text(l10n)),
                                   isNote ? OutcomeLine::Kind::Note : OutcomeLine::Kind::Bad};
            if (std::find(lines.begin(), lines.end(), line) == lines.end())
                lines.push_back(line);
        }
    }
    std::stable_partition(lines.begin(), lines.end(),
                          [](const auto& line) { return line.kind == OutcomeLine::Kind::Bad; });
    return lines;
}

std::optional<FailedPair> failedPair(const BatchPlan& plan, const BatchResult& result) {
    const auto planned = plan.pairs();
    for (std::size_t pair = 0; pair < std::min(planned.size(), result.pairs.size()); ++pair) {
        if (wasBegun(result.pairs[pair]) && !endedWell(result.pairs[pair].status))
            return FailedPair{planned[pair], result.pairs[pair]};
    }
    return std::nullopt;
}

std::string headline(const FailedPair& failed, bool isCardThere, L10n l10n) {
    const auto* cause = decisiveFailure(failed.result);
    auto sentence = reasonOf(failed.planned, failed.result, cause, l10n);
    const bool wasStopped = failed.result.failure == PairFailure::Stopped;
    const bool wasCardGone = cause && cause->kind == Kind::CardGone;
    if (!isCardThere || wasCardGone || wasStopped)
        return sentence;
    return sentence + (sentence.ends_with('.') ? " " : ". ") + std::string(l10n.cardLeftMounted());
}

std::string advice(const FailedPair& failed, bool wasHashing, L10n l10n) {
    const auto button = wasHashing ? l10n.hashOnly() : l10n.copy();
    if (failed.result.failure == PairFailure::Stopped)
        return l10n.adviceStopped(button);
    if (const auto* failure = decisiveFailure(failed.result)) {
        const auto& run = failed.result.runStatus;
        return failure->isOfReports() && run && endedWell(*run)
                   ? l10n.adviceReports(button, wasHashing)
                   : adviceFor(*failure, button, l10n);
    }
    const auto& error = failed.result.error;
    const bool lacksSpace =
        error && std::holds_alternative<OffloadError::InsufficientSpace>(error->reason());
    return lacksSpace ? l10n.adviceNoSpace(button) : l10n.adviceRetry(button);
}

} // namespace BatchOutcome

} // namespace slatewise
