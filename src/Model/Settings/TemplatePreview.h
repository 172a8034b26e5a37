#pragma once

#include "Language/AppLanguage.h"
#include "Offload/FolderTemplate.h"

#include <string>
#include <string_view>

namespace slatewise {
class L10n;
}

namespace slatewise::TemplatePreview {

/// What an example path is made of. Whatever is not chosen yet stays empty, the destination too.
struct Selected {
    FolderTemplate::Values values;
    int cardCount = 0;
    int destinationCount = 0;
};

/// The values with a plausible word where nothing is chosen.
FolderTemplate::Values completed(FolderTemplate::Values values, L10n l10n);

/// The path that a template leads to now.
std::string path(std::string_view pathTemplate, const FolderTemplate::Values& values, L10n l10n);

/// The same, with how many more cards and destinations there are: "<path>  (+2 cards)".
std::string line(std::string_view pathTemplate, const Selected& selected, L10n l10n);

/// The label of a token or a separator.
std::string_view tokenLabel(std::string_view token, AppLanguage language);

std::string_view choiceName(const FolderTemplateChoice& choice, AppLanguage language);
std::string_view choiceBlurb(const FolderTemplateChoice& choice, AppLanguage language);

} // namespace slatewise::TemplatePreview
