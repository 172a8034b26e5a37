#include "Batch/PairLists.h"

#include "Language/L10n.h"
#include "Platform/Error.h"

namespace slatewise {

namespace {

using Kind = OffloadProblem::Kind;

} // namespace

PairLists::PairLists(const OffloadSettings& settings) {
    if (settings.writesHashList)
        lists_.emplace(settings);
}

void PairLists::follow(CopyEngine::Request& request) {
    if (!lists_)
        return;
    request.planFormats = [this](const RootFolder& card, std::span<const InventoryEntry> entries) {
        lists_->readHistories(card, entries);
        return [this](const std::string& path) {
            return lists_->formatsOf(path);
        };
    };
}

void PairLists::settle(const BatchPair& pair, OffloadOutcome& outcome, L10n l10n,
                       const std::function<void(const OffloadProblem&)>& tell) const {
    if (!lists_)
        return;
    const auto add = [&](OffloadProblem problem) {
        tell(problem);
        if (problem.severity() == OffloadProblem::Severity::Failure)
            outcome.status = OutcomeStatus::Failed;
        outcome.problems.push_back(std::move(problem));
    };
    for (auto& problem : lists_->differences(outcome, l10n))
        add(std::move(problem));
    // What lies beneath a disk that is gone is none of ours.
    if (!pair.destinationFolder || pair.findMissingFolder())
        return;
    try {
        const auto& disk = *pair.destinationFolder;
        auto added =
            lists_->write(disk, outcome.sessionRoot.lexically_relative(disk.path()), outcome);
        outcome.hashLists = std::move(added.lists);
        for (auto& name : added.leftOut)
            add({Kind::NameNotListed, std::move(name)});
        if (added.failure)
            std::rethrow_exception(added.failure);
    } catch (const std::exception& failure) {
        add(OffloadProblem::of(Kind::ListNotWritten, outcome.sessionRoot.native(), failure, l10n));
    }
}

} // namespace slatewise
