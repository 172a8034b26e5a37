#include "Batch/CardEject.h"

#include "Language/L10n.h"
#include "Offload/OffloadError.h"
#include "Platform/Error.h"
#include "Platform/Text.h"
#include "Storage/AppLog.h"

#include <algorithm>

namespace slatewise::CardEject {

namespace {

std::string reasonOf(const DiskUtilClient::EjectError& refusal, L10n l10n) {
    using Cause = DiskUtilClient::EjectError::Cause;
    switch (refusal.cause()) {
    case Cause::Busy:
        return std::string(l10n.volumeIsBusy());
    case Cause::NotPermitted:
        return std::string(l10n.notPermitted());
    case Cause::Other:
        break;
    }
    // Its words are those of the disk service, in whatever language that speaks.
    return std::string(l10n.systemRefused());
}

} // namespace

CardEnd run(const decltype(BatchSurroundings::eject)& eject, const ClassifiedVolume& card,
            Held held, L10n l10n) {
    const auto isThere = [](const auto& folder) {
        return folder && folder->isStillAtItsPath();
    };
    // Another card may lie there by now.
    if (!isThere(held.card))
        return refuse(card, &L10n::cardNotAtItsPath, l10n);
    // A disk that had its copy an hour ago may be gone.
    if (!std::all_of(held.disks.begin(), held.disks.end(), isThere))
        return refuse(card, &L10n::diskNotAtItsPath, l10n);
    // A volume that is held open cannot be unmounted.
    held = {};
    const auto name = Text::displayable(card.name());
    try {
        const auto ejected = eject(card.facts.mountPoint);
        AppLog::append("Ejected: " + ejected.text(name, L10n(AppLanguage::English)) +
                       (ejected.remark.empty() ? "" : " (" + ejected.remark + ")"));
        return {ejected.text(name, l10n), !ejected.isDiskInUse};
    } catch (const DiskUtilClient::EjectError& refusal) {
        AppLog::append("Not ejected: " + name + ": " + refusal.reason());
        return {l10n.notEjected(name, reasonOf(refusal, l10n))};
    } catch (const std::exception& failure) {
        AppLog::append("Not ejected: " + name + ": " + describe(failure));
        return {l10n.notEjected(name, describe(failure, l10n))};
    }
}

CardEnd refuse(const ClassifiedVolume& card, std::string_view (L10n::*reason)() const, L10n l10n) {
    const auto name = Text::displayable(card.name());
    const L10n english(AppLanguage::English);
    AppLog::append(english.notEjected(name, (english.*reason)()));
    return {l10n.notEjected(name, (l10n.*reason)())};
}

CardEnd leaveInDoubt(const ClassifiedVolume& card, L10n l10n) {
    const auto name = Text::displayable(card.name());
    AppLog::append(L10n(AppLanguage::English).ejectInDoubt(name));
    return {l10n.ejectInDoubt(name)};
}

} // namespace slatewise::CardEject
