#include "Model/Copying/BatchOutcome.h"

#include "Language/L10n.h"
#include "Model/QtText.h"
#include "Platform/Text.h"

#include <algorithm>
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

const OffloadProblem* firstFailure(const PairResult& pair) {
    const auto found =
        std::find_if(pair.problems.begin(), pair.problems.end(), [](const auto& problem) {
            return problem.severity() == OffloadProblem::Severity::Failure;
        });
    return found == pair.problems.end() ? nullptr : &*found;
}

bool wasBegun(const PairResult& pair) {
    return pair.failure != PairFailure::None || endedWell(pair.status);
}

std::string why(const PairResult& pair, L10n l10n) {
    if (pair.failure == PairFailure::Stopped)
        return std::string(l10n.cancelled());
    const auto* failure = firstFailure(pair);
    return failure ? failure->text(l10n) : pair.message;
}

OutcomeLine lineOf(const BatchPair& planned, const PairResult& pair, L10n l10n) {
    const auto card = Text::displayable(planned.card.name());
    const auto disk = Text::displayable(planned.destination.name());
    if (!wasBegun(pair))
        return {toQString(l10n.pairNotBegun(card, disk)), OutcomeLine::Kind::Note};
    switch (pair.status) {
    case OutcomeStatus::Verified:
        return {toQString(l10n.pairVerified(card, disk, pair.filesDone)), OutcomeLine::Kind::Good};
    case OutcomeStatus::Hashed:
        return {toQString(l10n.pairHashed(card, pair.filesDone)), OutcomeLine::Kind::Note};
    case OutcomeStatus::Failed:
        break;
    }
    return {toQString(l10n.pairFailed(card, disk, why(pair, l10n))), OutcomeLine::Kind::Bad};
}

std::string_view adviceFor(const OffloadProblem& problem, L10n l10n) {
    if (problem.code == ENOSPC || problem.code == EDQUOT)
        return l10n.adviceNoSpace();
    switch (problem.kind) {
    case Kind::CardGone:
        return l10n.adviceCardGone();
    case Kind::DiskReplaced:
        return l10n.adviceDiskGone();
    case Kind::CopyDiffers:
    case Kind::NotReadBack:
    case Kind::NothingReadBack:
        return l10n.adviceCopyDiffers();
    case Kind::CopyStopped:
    case Kind::FolderNotRead:
        return l10n.adviceNotRead();
    default:
        return l10n.adviceRetry();
    }
}

/// That of the card or the disk itself counts more than what it did to a file.
const OffloadProblem* decisiveFailure(const PairResult& pair) {
    const auto found =
        std::find_if(pair.problems.begin(), pair.problems.end(), [](const auto& problem) {
            return problem.kind == Kind::CardGone || problem.kind == Kind::DiskReplaced;
        });
    return found == pair.problems.end() ? firstFailure(pair) : &*found;
}

} // namespace

std::vector<OutcomeLine> pairs(const BatchPlan& plan, const BatchResult& result, L10n l10n) {
    std::vector<OutcomeLine> lines;
    const auto planned = plan.pairs();
    for (std::size_t pair = 0; pair < std::min(planned.size(), result.pairs.size()); ++pair) {
        auto line = lineOf(planned[pair], result.pairs[pair], l10n);
        // A card that was only hashed is told of once: no disk has anything of it.
        if (lines.empty() || lines.back() != line)
            lines.push_back(std::move(line));
    }
    std::stable_partition(lines.begin(), lines.end(),
                          [](const auto& line) { return line.kind == OutcomeLine::Kind::Bad; });
    for (const auto& eject : result.ejects)
        lines.push_back({toQString(eject), OutcomeLine::Kind::Note});
    return lines;
}

std::vector<OutcomeLine> problems(const BatchResult& result, L10n l10n) {
    std::vector<OutcomeLine> lines;
    for (const auto& pair : result.pairs) {
        // The line of the pair says this one already.
        const bool isTold =
            wasBegun(pair) && !endedWell(pair.status) && pair.failure != PairFailure::Stopped;
        const auto* told = isTold ? firstFailure(pair) : nullptr;
        for (const auto& problem : pair.problems) {
            if (&problem == told)
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

std::string headline(const BatchResult& result, L10n l10n) {
    const auto failed =
        std::find_if(result.pairs.begin(), result.pairs.end(),
                     [](const auto& pair) { return wasBegun(pair) && !endedWell(pair.status); });
    const auto* cause = failed == result.pairs.end() || failed->failure == PairFailure::Stopped
                            ? nullptr
                            : decisiveFailure(*failed);
    if (!cause)
        return result.message.value_or("");
    auto sentence = cause->text(l10n);
    if (cause->kind == Kind::CardGone)
        return sentence;
    return sentence + (sentence.ends_with('.') ? " " : ". ") + std::string(l10n.cardLeftMounted());
}

std::string advice(const BatchResult& result, L10n l10n) {
    for (const auto& pair : result.pairs) {
        if (endedWell(pair.status) || !wasBegun(pair))
            continue;
        if (pair.failure == PairFailure::Stopped)
            return std::string(l10n.adviceStopped());
        if (const auto* failure = decisiveFailure(pair))
            return std::string(adviceFor(*failure, l10n));
        return std::string(pair.failure == PairFailure::NoSpace ? l10n.adviceNoSpace()
                                                                : l10n.adviceRetry());
    }
    return {};
}

} // namespace BatchOutcome

} // namespace slatewise
