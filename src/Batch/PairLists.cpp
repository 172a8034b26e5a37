#include "Batch/PairLists.h"

#include "Language/L10n.h"
#include "Platform/Error.h"

#include <algorithm>
#include <array>
#include <vector>

namespace slatewise {

namespace {

using Kind = OffloadProblem::Kind;

/// Nobody reads a hundred thousand sentences of one kind; the first few show what is the matter.
std::vector<OffloadProblem> shortened(std::vector<OffloadProblem> problems) {
    constexpr int kMostAlike = 20;
    // Of others each has a reason of its own.
    constexpr std::array kCounted = {Kind::CardDiffersFromList, Kind::ListedFileMissing,
                                     Kind::ListedFileUnproved, Kind::CardFileNotListed,
                                     Kind::NameNotListed};
    for (const auto kind : kCounted) {
        const auto isAlike = [kind](const OffloadProblem& problem) {
            return problem.kind == kind;
        };
        const auto count = std::count_if(problems.begin(), problems.end(), isAlike);
        // One more takes no more room than its count.
        if (count <= kMostAlike + 1)
            continue;
        int told = 0;
        std::erase_if(problems, [&](const OffloadProblem& problem) {
            return isAlike(problem) && ++told > kMostAlike;
        });
        problems.push_back(
            {.kind = kind, .subject = {}, .more = static_cast<int>(count) - kMostAlike});
    }
    return problems;
}

} // namespace

PairLists::PairLists(const OffloadSettings& settings)
    : lists_(settings), writes_(settings.writesHashList) {}

void PairLists::follow(CopyEngine::Request& request) {
    using FormatsOf = CopyEngine::Request::FormatsOf;
    request.planFormats = [this](const RootFolder& card,
                                 std::span<const InventoryEntry> entries) -> FormatsOf {
        // Most cards bring none, and cost nothing then.
        if (!writes_ && !MediaHashList::TransferLists::areAmong(entries))
            return {};
        lists_.readHistories(card, entries);
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
    for (auto& problem : shortened(lists_.differences(outcome)))
        add(std::move(problem));
    // What lies beneath a disk that is gone is none of ours.
    if (!writes_ || !pair.destinationFolder || pair.findMissingFolder())
        return;
    try {
        const auto& disk = *pair.destinationFolder;
        auto added =
            lists_.write(disk, outcome.sessionRoot.lexically_relative(disk.path()), outcome);
        outcome.hashLists = std::move(added.lists);
        std::vector<OffloadProblem> leftOut;
        for (auto& name : added.leftOut)
            leftOut.push_back({Kind::NameNotListed, std::move(name)});
        for (auto& problem : shortened(std::move(leftOut)))
            add(std::move(problem));
        if (added.failure)
            std::rethrow_exception(added.failure);
    } catch (const std::exception& failure) {
        add(OffloadProblem::of(Kind::ListNotWritten, outcome.sessionRoot.native(), failure));
    }
}

} // namespace slatewise
