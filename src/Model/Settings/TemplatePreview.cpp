#include "Model/Settings/TemplatePreview.h"

#include "Language/L10n.h"
#include "Platform/Text.h"

#include <array>

namespace slatewise::TemplatePreview {

namespace {

constexpr std::string_view kExampleDestination = "/Volumes/Backup";

struct Translation {
    std::string_view key;
    std::string_view english;
};

constexpr std::array<Translation, 12> kTokenLabels = {{
    {"{Dest}", "Destination root"},
    {"{YYYY-MM-DD}", "Date"},
    {"{Ekip}", "Ekip"},
    {"{Cam}", "Camera / unit"},
    {"{Project}", "Project name"},
    {"{CardName}", "Card name"},
    {"{HHmmss}", "Time"},
    {"{DestName}", "Destination disk name"},
    {"{YYYYMMDD}", "Compact date"},
    {"/", "Folder separator"},
    {"-", "Hyphen"},
    {"_", "Underscore"},
}};

struct ChoiceTranslation {
    std::string_view key;
    std::string_view name;
    std::string_view blurb;
};

constexpr std::array<ChoiceTranslation, 6> kChoices = {{
    {"Ekip klasörü", "Ekip folder", "Ekip1 / CamA / A001"},
    {"Düz satır", "Flat name", "Single folder name"},
    {"Saatsiz klasör", "No timestamp folder", "The same card the same day gets _2"},
    {"Saatsiz düz", "Flat, no timestamp", "One name under the date"},
    {"Kart klasörü", "Card folder", "Card name first"},
    {"Kompakt tarih", "Compact date", "20260902 inside the folder"},
}};

std::string_view turkishTokenLabel(std::string_view token) {
    for (const auto& entry : FolderTemplate::tokens) {
        if (entry.token == token)
            return entry.label;
    }
    for (const auto& entry : FolderTemplate::separators) {
        if (entry.token == token)
            return entry.label;
    }
    return token;
}

std::string_view orElse(std::string_view text, std::string_view replacement) {
    return text.empty() ? replacement : text;
}

} // namespace

FolderTemplate::Values completed(FolderTemplate::Values values, L10n l10n) {
    if (values.destination.empty())
        values.destination = kExampleDestination;
    values.cardName = orElse(values.cardName, l10n.cardNamePlaceholder());
    values.camera = orElse(values.camera, l10n.unitPlaceholder());
    return values;
}

std::string path(std::string_view pathTemplate, const FolderTemplate::Values& values, L10n l10n) {
    return Text::displayable(
        FolderTemplate::expand(pathTemplate, completed(values, l10n)).native());
}

std::string line(std::string_view pathTemplate, const Selected& selected, L10n l10n) {
    std::string notes;
    if (selected.cardCount > 1)
        notes = l10n.extraCards(selected.cardCount - 1);
    if (selected.destinationCount > 1) {
        notes += notes.empty() ? "" : ", ";
        notes += l10n.extraDestinations(selected.destinationCount - 1);
    }
    const auto example = path(pathTemplate, selected.values, l10n);
    return notes.empty() ? example : example + "  (" + notes + ")";
}

std::string_view tokenLabel(std::string_view token, AppLanguage language) {
    if (language == AppLanguage::Turkish)
        return turkishTokenLabel(token);
    for (const auto& label : kTokenLabels) {
        if (label.key == token)
            return label.english;
    }
    return token;
}

std::string_view choiceName(const FolderTemplateChoice& choice, AppLanguage language) {
    for (const auto& translation : kChoices) {
        if (language == AppLanguage::English && translation.key == choice.name)
            return translation.name;
    }
    return choice.name;
}

std::string_view choiceBlurb(const FolderTemplateChoice& choice, AppLanguage language) {
    for (const auto& translation : kChoices) {
        if (language == AppLanguage::English && translation.key == choice.name)
            return translation.blurb;
    }
    return choice.blurb;
}

} // namespace slatewise::TemplatePreview
