#include "Service/ProfileRefusal.h"

#include "Offload/OffloadError.h"
#include "Platform/Text.h"
#include "Service/ServiceProfileFile.h"

namespace slatewise {

namespace {

std::string reasonOf(const ProfileRefusal& refusal, L10n l10n) {
    using Kind = ProfileRefusal::Kind;
    switch (refusal.kind) {
    case Kind::NotRead:
        return reasonOf(refusal.code, l10n);
    case Kind::IsNoFile:
        return std::string(l10n.profileIsNoFile());
    case Kind::OpenToOthers:
        return l10n.profileOpenToOthers(Text::displayable(refusal.subject));
    case Kind::TooLarge:
        return std::string(l10n.profileTooLarge());
    case Kind::IsNoObject:
        return std::string(l10n.profileIsNoObject());
    case Kind::LacksText:
        return l10n.profileLacksText(refusal.subject);
    case Kind::OpenAddress:
        return std::string(l10n.profileAddressIsOpen());
    }
    return {};
}

} // namespace

std::string ProfileRefusal::text(L10n l10n) const {
    return l10n.profileIgnored(ServiceProfileFile::fileName, reasonOf(*this, l10n));
}

} // namespace slatewise
