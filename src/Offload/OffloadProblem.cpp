#include "Offload/OffloadProblem.h"

#include "Offload/OffloadError.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <system_error>

namespace slatewise {

namespace {

int codeOf(const std::exception& failure) {
    if (const auto* ofSystem = dynamic_cast<const PosixError*>(&failure))
        return ofSystem->code();
    if (const auto* ofLibrary = dynamic_cast<const std::filesystem::filesystem_error*>(&failure))
        return ofLibrary->code().value();
    return 0;
}

/// In characters. A path may have thousands.
constexpr std::size_t kLongestSubject = 240;

} // namespace

OffloadProblem OffloadProblem::of(Kind kind, std::string subject, const std::exception& failure,
                                  const std::filesystem::path& file) {
    const auto reasonIn = [&](L10n l10n) {
        auto words = describe(failure, l10n);
        for (const auto& named : {file.native(), subject}) {
            const auto beginning = Text::legible(named) + ": ";
            if (!named.empty() && words.starts_with(beginning))
                words.erase(0, beginning.size());
        }
        return words;
    };
    auto why = BothLanguages::of(reasonIn);
    return {kind, std::move(subject), std::move(why), codeOf(failure)};
}

OffloadProblem::Severity OffloadProblem::severity() const {
    switch (kind) {
    case Kind::DamageUntold:
    case Kind::DeviceErrors:
    case Kind::NotMounted:
    case Kind::ReadFromMemory:
    case Kind::LinkLeadsOut:
    case Kind::LinkLeadsNowhere:
    case Kind::LinkLeadsToNoFile:
    case Kind::LostAndFoundNotRead:
    case Kind::SessionNotStored:
    case Kind::SessionNotQueued:
    case Kind::HistorySetAside:
    case Kind::CardListNotChecked:
    case Kind::CardFileNotListed:
    case Kind::NameNotListed:
        return Severity::Note;
    default:
        return Severity::Failure;
    }
}

bool OffloadProblem::isOfReports() const {
    switch (kind) {
    case Kind::ReportsNotArchived:
    case Kind::ReportsNotCopied:
    case Kind::PagesNotWritten:
    case Kind::ReportsOutdated:
    case Kind::ReportsNotAwaited:
        return true;
    default:
        return false;
    }
}

const OffloadProblem* OffloadProblem::decisive(std::span<const OffloadProblem> problems) {
    const OffloadProblem* found = nullptr;
    for (const auto& problem : problems) {
        if (problem.severity() != Severity::Failure)
            continue;
        if (!problem.isOfReports())
            return &problem;
        if (!found)
            found = &problem;
    }
    return found;
}

std::vector<OffloadProblem> OffloadProblem::shortened(std::vector<OffloadProblem> problems) {
    constexpr int kMostAlike = 20;
    // Nobody reads a hundred thousand sentences. Of other kinds each has a reason of its own.
    constexpr std::array kCounted = {Kind::CardDiffersFromList, Kind::ListedFileMissing,
                                     Kind::ListedFileUnproved,  Kind::CardFileNotListed,
                                     Kind::NameNotListed,       Kind::NameNotKept};
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

// NOLINTNEXTLINE(readability-function-size): one case for each kind, and nothing else.
std::string OffloadProblem::text(L10n l10n) const {
    const auto about = Text::shortened(Text::visible(subject), kLongestSubject);
    const auto& why = reason.in(l10n);
    switch (kind) {
    case Kind::CopyStopped:
        return l10n.copyStopped(about, why);
    case Kind::HashingStopped:
        return l10n.hashingStopped(about, why);
    case Kind::NotReadBack:
        return l10n.notReadBack(about, why);
    case Kind::CopyDiffers:
        return l10n.copyDiffers(about);
    case Kind::FoldersFellTogether:
        return l10n.foldersFellTogether(about);
    case Kind::CopyGone:
        return l10n.copyGone(about);
    case Kind::NameNotKept:
        return more > 0 ? l10n.moreNamesNotKept(more) : l10n.nameNotKept(about);
    case Kind::CardChanged:
        return l10n.cardChanged(about);
    case Kind::CameMeanwhile:
        return l10n.cameMeanwhile(about);
    case Kind::FolderNotRead:
        return l10n.folderNotRead(about, why);
    case Kind::FileSystemErrors:
        return l10n.fileSystemErrors(about);
    case Kind::DamageUntold:
        return l10n.damageUntold(about);
    case Kind::DeviceErrors:
        return l10n.deviceErrors(about);
    case Kind::NotMounted:
        return l10n.notMounted(about);
    case Kind::NothingReadBack:
        return l10n.nothingReadBack(about, why);
    case Kind::ReadFromMemory:
        return l10n.readBackFromMemory(about);
    case Kind::NotOpened:
        return l10n.notOpened(about, why);
    case Kind::CardGone:
        return l10n.cardGone(about);
    case Kind::DiskReplaced:
        return l10n.diskReplaced(about);
    case Kind::CardSilent:
        return l10n.cardSilent(about);
    case Kind::DiskSilent:
        return l10n.diskSilent(about);
    case Kind::NoAnswer:
        return l10n.noAnswer(about);
    case Kind::LinkLeadsOut:
        return l10n.linkLeadsOut(about);
    case Kind::LinkLeadsNowhere:
        return l10n.linkLeadsNowhere(about);
    case Kind::LinkLeadsToNoFile:
        return l10n.linkLeadsToNoFile(about);
    case Kind::LostAndFoundNotRead:
        return l10n.folderNotRead(about, why);
    case Kind::ReportsNotArchived:
    case Kind::ReportsNotCopied:
        return l10n.reportsNotWritten(about, why);
    case Kind::PagesNotWritten:
        return l10n.pagesNotWritten(about, why);
    case Kind::ReportsOutdated:
        return l10n.reportsOutdated(about);
    case Kind::ReportsNotAwaited:
        return std::string(l10n.reportsNotAwaited());
    case Kind::SessionNotStored:
        return l10n.sessionNotStored(about, why);
    case Kind::SessionNotQueued:
        return l10n.sessionNotQueued(about, why);
    case Kind::HistorySetAside:
        return l10n.historySetAside(about);
    case Kind::CardListNotChecked:
        return l10n.cardListNotChecked(about, why);
    case Kind::CardListNotRead:
        return l10n.cardListNotRead(about, why);
    case Kind::CardDiffersFromList:
        return more > 0 ? l10n.moreDifferFromList(more) : l10n.cardDiffersFromList(about);
    case Kind::ListedFileMissing:
        return more > 0 ? l10n.moreListedFilesMissing(more) : l10n.listedFileMissing(about);
    case Kind::ListedFileUnproved:
        return more > 0 ? l10n.moreListedFilesUnproved(more) : l10n.listedFileUnproved(about);
    case Kind::CardFileNotListed:
        return more > 0 ? l10n.moreCardFilesNotListed(more) : l10n.cardFileNotListed(about);
    case Kind::ListNotWritten:
        return l10n.listNotWritten(about, why);
    case Kind::NameNotListed:
        return more > 0 ? l10n.moreNamesNotListed(more) : l10n.nameNotListed(about);
    }
    return why;
}

std::string OffloadProblem::logLine() const {
    const auto line = text(L10n(AppLanguage::English));
    const bool hasMore = kind == Kind::CopyDiffers && !reason.english.empty();
    return hasMore ? line + " " + reason.english : line;
}

} // namespace slatewise
