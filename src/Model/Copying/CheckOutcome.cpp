#include "Model/Copying/CheckOutcome.h"

#include "Language/L10n.h"
#include "Offload/OffloadError.h"
#include "Platform/Error.h"
#include "Platform/Text.h"

#include <cerrno>
#include <string_view>

namespace slatewise {

namespace {

/// A text of more lines is no pleasure to scroll.
constexpr std::size_t kMostFindings = 500;

std::string_view word(Verify::Difference difference, L10n l10n) {
    using Verify::Difference;
    switch (difference) {
    case Difference::Missing:
        return l10n.fileMissing();
    case Difference::Changed:
        return l10n.fileChanged();
    case Difference::Unreadable:
        return l10n.fileUnreadable();
    case Difference::New:
        return l10n.fileNew();
    case Difference::Unproved:
        return l10n.fileUnproved();
    case Difference::Damaged:
        return l10n.listDamaged();
    case Difference::Failed:
        return l10n.listOfFailedRun();
    }
    return {};
}

std::string lineOf(const Verify::Finding& finding, L10n l10n) {
    auto line = Text::visible(finding.path) + ": " + std::string(word(finding.difference, l10n));
    const auto explanation = finding.explanation(l10n);
    return explanation.empty() ? line : line + " (" + Text::visible(explanation) + ")";
}

std::string more(int count, L10n l10n) {
    return Text::replaced(l10n.andMore(), "%1", std::to_string(count));
}

/// "a.mov, b.mov, c.mov, and 7 more".
std::string filesInMemory(const Verify::Result& result, L10n l10n) {
    std::string names;
    for (const auto& path : result.keptInMemory)
        names += (names.empty() ? "" : ", ") + Text::visible(path);
    const int unnamed = result.filesKeptInMemory - static_cast<int>(result.keptInMemory.size());
    return unnamed > 0 ? names + ", " + more(unnamed, l10n) : names;
}

} // namespace

void CheckOutcome::add(const Verify::Finding& finding) {
    if (findings.size() < kMostFindings)
        findings.push_back(finding);
}

std::string CheckOutcome::verdict(AppLanguage language) const {
    const L10n l10n(language);
    if (!record)
        return std::string(l10n.cancelled());
    auto told = *record;
    if (failure)
        told.failure = reasonOfNothing(failure, l10n);
    return verdictOf(told, language);
}

std::string CheckOutcome::lines(L10n l10n) const {
    std::string text;
    const auto add = [&](const std::string& line) {
        text += (text.empty() ? "" : "\n") + line;
    };
    if (isLeftBehind)
        add(l10n.diskSilent(Text::visible(disk)));
    if (notStored)
        add(l10n.checkNotStored(describe(notStored, l10n)));
    if (result.mayBeFromMemory)
        add(l10n.readFromMemory(Text::visible(disk)));
    else if (result.filesKeptInMemory > 0)
        add(l10n.readFromMemory(filesInMemory(result, l10n)));
    for (const auto& note : notes)
        add(note.text(l10n));
    for (const auto& finding : findings)
        add(lineOf(finding, l10n));
    const int untold = (record ? record->differences : 0) - static_cast<int>(findings.size());
    if (untold > 0)
        add(more(untold, l10n));
    return text;
}

std::string reasonOfNothing(const std::exception_ptr& failure, L10n l10n) {
    try {
        std::rethrow_exception(failure);
    } catch (const PosixError& error) {
        if (error.code() == ENOENT)
            return std::string(l10n.sessionFolderGone());
    } catch (const std::exception&) {
        // Its own words will do.
    }
    return describe(failure, l10n);
}

std::string verdictOf(const CheckRecord& check, AppLanguage language) {
    const L10n l10n(language);
    const auto date = Clock::mediumDateTime(check.checkedAt, Language::locale(language));
    if (!check.failure.empty())
        return l10n.checkFailed(date, check.failure);
    const auto found = check.differences > 0 ? l10n.checkFoundDifferences(date, check.differences)
                                             : l10n.checkFoundAllEqual(date, check.filesEqual);
    return check.mayBeFromMemory ? found + "; " + std::string(l10n.mayBeFromMemory()) : found;
}

} // namespace slatewise
