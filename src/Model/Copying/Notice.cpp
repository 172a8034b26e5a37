#include "Model/Copying/Notice.h"

#include "Language/L10n.h"
#include "Platform/Text.h"

namespace slatewise {

std::string Notice::text(L10n l10n) const {
    auto about = Text::displayable(subject);
    switch (kind) {
    case Kind::CardWithoutUnit:
        return l10n.cardHasNoUnit(about);
    case Kind::CardAsDestination:
        return l10n.cardIsNoDestination(about);
    case Kind::TemplateLeadsOut:
        return l10n.templateLeadsOut(about);
    }
    return about;
}

} // namespace slatewise
