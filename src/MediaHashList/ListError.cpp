#include "MediaHashList/ListError.h"

#include "Language/L10n.h"
#include "Platform/Text.h"

namespace slatewise::MediaHashList {

namespace {

std::string_view sentence(ListError::Reason reason, L10n l10n) {
    using Reason = ListError::Reason;
    switch (reason) {
    case Reason::NotAList:
        return l10n.notAHashList();
    case Reason::TooLarge:
        return l10n.listTooLarge();
    case Reason::DeclaresDocumentType:
        return l10n.listDeclaresDocumentType();
    case Reason::LeadsOut:
        return l10n.listLeadsOut();
    case Reason::NotAValue:
        return l10n.notAChecksum();
    case Reason::NotTheChains:
        return l10n.notTheListOfTheChain();
    case Reason::NotInChainYet:
        return l10n.listNotInChainYet();
    case Reason::OfUnfinishedOffload:
        return l10n.listOfUnfinishedOffload();
    case Reason::NotAsReferred:
        return l10n.notTheListReferredTo();
    case Reason::ListsDisagree:
        return l10n.listsDisagree();
    case Reason::OnlyHashes:
        return l10n.listOfHashesOnly();
    case Reason::NothingToCompare:
        return l10n.nothingToCompare();
    case Reason::UnknownFile:
        return l10n.unknownList();
    case Reason::NoList:
        return l10n.noListForFolder();
    case Reason::NoFolder:
        return l10n.noFolderForList();
    case Reason::BehindLink:
        return l10n.folderBehindLink();
    case Reason::OtherDisk:
        return l10n.otherDiskThere();
    case Reason::OtherSession:
        return l10n.listOfOtherSession();
    case Reason::NoReports:
        return l10n.noReportsOfSession();
    }
    return {};
}

} // namespace

std::string ListError::text(L10n l10n) const {
    constexpr std::size_t kEnoughToFindIt = 120;
    std::string text(sentence(reason_, l10n));
    if (!subject_.empty())
        text += ": " + Text::prefix(Text::visible(subject_), kEnoughToFindIt);
    return list_.empty() ? text : Text::visible(list_.native()) + ": " + text;
}

} // namespace slatewise::MediaHashList
