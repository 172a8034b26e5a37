#include "Offload/CardInventory.h"

#include "Offload/FinalLook.h"
#include "Offload/OffloadError.h"
#include "Offload/TreeWalker.h"

#include <cerrno>

namespace slatewise {

namespace {

using Kind = OffloadProblem::Kind;

} // namespace

CardInventory::CardInventory(const RootFolder& card, SkipNames skipNames, RunReporter& reporter)
    : card_(card), skipNames_(std::move(skipNames)), reporter_(reporter) {
    const auto reportLink = [this](Kind kind) {
        return [this, kind](const std::string& link) {
            reporter_.report({kind, link});
        };
    };
    entries_ = TreeWalker::walk(
        card_, skipNames_, {},
        {.unreadable = [this](const auto& folder, int code) { noteUnreadable(folder, code); },
         .leadsOut = reportLink(Kind::LinkLeadsOut),
         .leadsNowhere = reportLink(Kind::LinkLeadsNowhere)});
    for (const auto& entry : entries_) {
        if (!entry.shouldCopy)
            continue;
        copyList_.push_back(&entry);
        totalBytes_ += entry.sizeBytes;
    }
}

bool CardInventory::findsCardUnchanged(std::vector<FileCopyResult>& rows) {
    FinalLook::CardChanges changes;
    try {
        changes = FinalLook::findChanges(card_, entries_, skipNames_,
                                         [this](const std::string& folder, int code) {
                                             if (!foldersNotRead_.contains(folder))
                                                 noteUnreadable(folder, code);
                                         });
    } catch (const PosixError& failure) {
        reporter_.reportFailure(Kind::FolderNotRead, card_.path(), failure);
        return false;
    }
    for (auto& row : rows) {
        if (changes.files.contains(row.relativePath))
            markFailed(row, VerifyStatus::Failed);
    }
    for (const auto& file : changes.files)
        reporter_.report({Kind::CardChanged, file});
    for (const auto& entry : changes.newcomers) {
        reporter_.report({Kind::CameMeanwhile, entry.relativePath});
        rows.push_back(makeRow(entry, RowAction::Fail, VerifyStatus::Failed));
    }
    return changes.isEmpty();
}

/// Everything else is still copied and proved; only the word for all of it is lost.
void CardInventory::noteUnreadable(const std::string& folder, int code) {
    foldersNotRead_.insert(folder);
    const auto reason = reasonOf(code, reporter_.words());
    if (code == EACCES && TreeWalker::isRepairFolder(card_, folder)) {
        reporter_.report({Kind::LostAndFoundNotRead, folder, reason, code});
        return;
    }
    isWhole_ = false;
    reporter_.report({Kind::FolderNotRead, folder, reason, code});
}

} // namespace slatewise
