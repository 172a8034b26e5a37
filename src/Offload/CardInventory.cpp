#include "Offload/CardInventory.h"

#include "Offload/FinalLook.h"
#include "Offload/OffloadError.h"
#include "Offload/TreeWalker.h"
#include "Platform/Error.h"

#include <algorithm>
#include <cerrno>
#include <chrono>

namespace slatewise {

namespace {

using Kind = OffloadProblem::Kind;

} // namespace

CardInventory::CardInventory(const RootFolder& card, SkipNames skipNames, RunReporter& reporter,
                             const std::stop_token& stop)
    : card_(card), skipNames_(std::move(skipNames)), reporter_(reporter), errors_(card.path()) {
    std::vector<OffloadProblem> links;
    const auto noteLink = [&links](Kind kind) {
        return [&links, kind](const std::string& link) {
            links.push_back({kind, link});
        };
    };
    entries_ = TreeWalker::walk(
        card_, skipNames_, {},
        {.unreadable = [this](const auto& folder, int code) { noteUnreadable(folder, code); },
         .leadsOut = noteLink(Kind::LinkLeadsOut),
         .leadsNowhere = noteLink(Kind::LinkLeadsNowhere),
         .leadsToNoFile = noteLink(Kind::LinkLeadsToNoFile),
         .stop = stop});
    hasDeviceMetErrors_ = errors_.hasDeviceMetErrors();
    // People look for them by name; a folder is listed in whatever order its disk has.
    std::ranges::sort(links, {}, &OffloadProblem::subject);
    for (auto& link : links)
        reporter_.report(std::move(link));
    if (errors_.areNotCounted())
        reporter_.report({Kind::DamageUntold, card_.path().native()});
    for (const auto& entry : entries_) {
        if (!entry.shouldCopy)
            continue;
        copyList_.push_back(&entry);
        totalBytes_ += entry.sizeBytes;
    }
}

void CardInventory::noteOpened(const InventoryEntry& entry, const FileSystem::Attributes& file) {
    if (file.sizeBytes != entry.sizeBytes || TreeWalker::changesOf(file) != entry.changes)
        exchanged_.insert(entry.relativePath);
}

bool CardInventory::findsCardUnchanged(std::vector<FileCopyResult>& rows) {
    FinalLook::CardChanges changes;
    const FileSystemErrors again(card_.path());
    try {
        changes = FinalLook::findChanges(card_, entries_, skipNames_,
                                         [this](const std::string& folder, int code) {
                                             if (!notRead_.contains(folder))
                                                 noteUnreadable(folder, code);
                                         });
    } catch (const PosixError& failure) {
        reporter_.reportFailure(Kind::FolderNotRead, card_.path(), failure);
        return false;
    }
    noteErrors(again);
    // Of what lies there nobody knows whether it changed; the folder itself is told.
    std::erase_if(changes.files, [this](const auto& file) { return liesInFolderNotRead(file); });
    changes.files.insert(exchanged_.begin(), exchanged_.end());
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

/// Drivers pass over damage in a folder without a word to whoever lists it. `again` was taken
/// before the last look.
void CardInventory::noteErrors(const FileSystemErrors& again) {
    // The last folder was listed only just now.
    constexpr std::chrono::milliseconds kPatience{100};
    if (!isWhole_)
        return;
    // A refusal comes once; what cannot be read fails each time that it is read.
    const bool isDamaged = hasDeviceMetErrors_ && again.hasDeviceMetErrors();
    if (!isDamaged && errors_.hasDeviceMetErrors())
        reporter_.report({Kind::DeviceErrors, card_.path().native()});
    if (!isDamaged && !errors_.haveGrown(kPatience))
        return;
    isWhole_ = false;
    reporter_.report({Kind::FileSystemErrors, card_.path().native()});
}

bool CardInventory::liesInFolderNotRead(const std::string& path) const {
    for (auto end = path.find('/'); end != std::string::npos; end = path.find('/', end + 1)) {
        if (notRead_.contains(path.substr(0, end)))
            return true;
    }
    return notRead_.contains("") || notRead_.contains(path);
}

/// Everything else is still copied and proved; only the word for all of it is lost.
void CardInventory::noteUnreadable(const std::string& path, int code) {
    notRead_.insert(path);
    const auto reason = BothLanguages::of([code](L10n l10n) { return reasonOf(code, l10n); });
    if (code == EACCES && TreeWalker::isRepairFolder(card_, path)) {
        reporter_.report({Kind::LostAndFoundNotRead, path, reason, code});
        return;
    }
    isWhole_ = false;
    reporter_.report(
        {Kind::FolderNotRead, path.empty() ? card_.path().native() : path, reason, code});
}

} // namespace slatewise
