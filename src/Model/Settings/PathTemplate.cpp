#include "Model/Settings/PathTemplate.h"

#include "Language/L10n.h"
#include "Model/QtText.h"
#include "Model/Settings/TemplatePreview.h"

namespace slatewise {

PathTemplate::PathTemplate(ModelState& state) : state_(state) {
    connect(&state, &ModelState::changed, this, &PathTemplate::show);
}

QString PathTemplate::standardText() {
    return toQString(FolderTemplate::defaultTemplate);
}

void PathTemplate::show() {
    showChoices();
    const TemplatePreview::Selected selected = {
        state_.templateValues(), static_cast<int>(state_.board.selected(VolumeSide::Card).size()),
        static_cast<int>(state_.board.selected(VolumeSide::Destination).size())};
    auto text = toQString(state_.settings.folderTemplate);
    auto preview = objection(text);
    isUsable_ = preview.isEmpty();
    if (isUsable_)
        preview = toQString(
            TemplatePreview::line(state_.settings.folderTemplate, selected, state_.l10n()));
    if (text == text_ && preview == preview_)
        return;
    text_ = std::move(text);
    preview_ = std::move(preview);
    Q_EMIT changed();
}

void PathTemplate::showChoices() {
    std::vector<Choice> tokens;
    const auto add = [&](std::string_view token) {
        tokens.push_back({toQString(token),
                          toQString(TemplatePreview::tokenLabel(token, state_.language)),
                          {},
                          false});
    };
    for (const auto& entry : FolderTemplate::tokens)
        add(entry.token);
    for (const auto& entry : FolderTemplate::separators)
        add(entry.token);
    tokens_.setRows(std::move(tokens));
    std::vector<Choice> presets;
    presets.reserve(std::size(FolderTemplate::choices));
    for (const auto& choice : FolderTemplate::choices) {
        presets.push_back({toQString(choice.pathTemplate),
                           toQString(TemplatePreview::choiceName(choice, state_.language)),
                           toQString(TemplatePreview::choiceBlurb(choice, state_.language)),
                           choice.pathTemplate == state_.settings.folderTemplate});
    }
    presets_.setRows(std::move(presets));
}

void PathTemplate::holdExample() {
    example_ = state_.templateValues();
}

QString PathTemplate::expand(const QString& pathTemplate) const {
    return toQString(TemplatePreview::path(pathTemplate.toStdString(), example_, state_.l10n()));
}

QString PathTemplate::objection(const QString& pathTemplate) const {
    const auto text = FolderTemplate::normalize(pathTemplate.toStdString());
    if (!FolderTemplate::leadsOut(text))
        return {};
    return toQString(Notice{Notice::Kind::TemplateLeadsOut, text}.text(state_.l10n()));
}

QString PathTemplate::normalized(const QString& pathTemplate) const {
    return toQString(FolderTemplate::normalize(pathTemplate.toStdString()));
}

void PathTemplate::save(const QString& pathTemplate) {
    if (!objection(pathTemplate).isEmpty())
        return;
    state_.dropRefusal();
    state_.settings.folderTemplate = FolderTemplate::normalize(pathTemplate.toStdString());
    state_.settings.save(state_.defaults);
    state_.publish();
}

} // namespace slatewise
