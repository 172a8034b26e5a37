#include "Batch/PairLists.h"

#include "Language/L10n.h"
#include "Platform/Error.h"

#include <algorithm>
#include <array>
#include <vector>

namespace slatewise {

namespace {

using Kind = OffloadProblem::Kind;

} // namespace

PairLists::PairLists(const OffloadSettings& settings)
    : lists_(settings), writes_(settings.writesHashList) {}

void PairLists::follow(CopyEngine::Request& request) {
    using FormatsOf = CopyEngine::Request::FormatsOf;
    request.planFormats = [this](const RootFolder& card, std::span<const InventoryEntry> entries,
                                 const std::stop_token& stop) -> FormatsOf {
        // Most cards bring none, and cost nothing then.
        if (!writes_ && !MediaHashList::TransferLists::areAmong(entries))
            return {};
        lists_.readHistories(card, entries, stop);
        return [this](const std::string& path) {
            return lists_.formatsOf(path);
        };
    };
}

void PairLists::settle(const BatchPair& pair, OffloadOutcome& outcome,
                       const std::function<void(const OffloadProblem&)>& tell) const {
    const auto add = [&](OffloadProblem problem) {
        tell(problem);
        if (problem.severity() == OffloadProblem::Severity::Failure)
            outcome.status = OutcomeStatus::Failed;
        outcome.problems.push_back(std::move(problem));
    };
    for (auto& problem : OffloadProblem::shortened(lists_.differences(outcome)))
        add(std::move(problem));
    if (!writes_ || !pair.destinationFolder)
        return;
    // What lies beneath a disk that is gone is none of ours, and a copy without the list that was
    // wanted is told.
    if (auto missing = pair.findMissingFolder()) {
        const auto& known = outcome.problems;
        if (std::find(known.begin(), known.end(), *missing) == known.end())
            add(std::move(*missing));
        return;
    }
    try {
        const auto& disk = *pair.destinationFolder;
        auto added =
            lists_.write(disk, outcome.sessionRoot.lexically_relative(disk.path()), outcome);
        outcome.hashLists = std::move(added.lists);
        std::vector<OffloadProblem> leftOut;
        for (auto& name : added.leftOut)
            leftOut.push_back({Kind::NameNotListed, std::move(name)});
        for (auto& problem : OffloadProblem::shortened(std::move(leftOut)))
            add(std::move(problem));
        if (added.failure)
            std::rethrow_exception(added.failure);
    } catch (const std::exception& failure) {
        add(OffloadProblem::of(Kind::ListNotWritten, outcome.sessionRoot.native(), failure));
    }
}

} // namespace slatewise
