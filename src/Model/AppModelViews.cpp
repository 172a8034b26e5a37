#include "Model/AppModel.h"

#include "Model/QtText.h"
#include "Model/TemplatePreview.h"
#include "Model/VolumeTexts.h"
#include "Offload/PathSize.h"
#include "Offload/TreeWalker.h"
#include "Platform/AppInfo.h"
#include "Platform/Text.h"

// What the views are shown.

namespace slatewise {

namespace {

/// Takes the new value in; says whether it differs.
template <typename Value>
bool replace(Value& shown, Value now) {
    if (shown == now)
        return false;
    shown = std::move(now);
    return true;
}

template <typename Tokens>
QVariantList tokenList(const Tokens& tokens, AppLanguage language) {
    QVariantList list;
    for (const auto& entry : tokens) {
        list.append(
            QVariantMap{{"token", toQString(entry.token)},
                        {"label", toQString(TemplatePreview::tokenLabel(entry.token, language))}});
    }
    return list;
}

} // namespace

QVariantMap AppModel::l10nTexts() const {
    QVariantMap texts;
    l10n().forEachFixedText([&](std::string_view key, std::string_view text) {
        texts.insert(toQString(key), toQString(text));
    });
    return texts;
}

QVariantList AppModel::languages() {
    QVariantList list;
    for (const auto language : Language::allCases) {
        list.append(QVariantMap{{"value", toQString(Language::rawValue(language))},
                                {"name", toQString(Language::displayName(language))}});
    }
    return list;
}

QString AppModel::appName() {
    return toQString(AppInfo::name);
}

QString AppModel::appVersion() {
    return toQString(AppInfo::version);
}

QString AppModel::websiteLabel() {
    return toQString(AppInfo::websiteLabel);
}

QString AppModel::websiteURL() {
    return toQString(AppInfo::websiteURL);
}

QVariantList AppModel::defaultSkipNames() const {
    QVariantList list;
    for (const auto& name : TreeWalker::defaultSkipNames()) {
        list.append(
            QVariantMap{{"name", toQString(name)}, {"skipped", settings_.isDefaultSkipped(name)}});
    }
    return list;
}

QStringList AppModel::extraExcludes() const {
    QStringList list;
    for (const auto& name : settings_.extraExcludes)
        list.append(toQString(name));
    return list;
}

QVariantList AppModel::templateTokens() const {
    return tokenList(FolderTemplate::tokens, language_);
}

QVariantList AppModel::templateSeparators() const {
    return tokenList(FolderTemplate::separators, language_);
}

QVariantList AppModel::templatePresets() const {
    QVariantList list;
    for (const auto& choice : FolderTemplate::choices) {
        list.append(
            QVariantMap{{"name", toQString(TemplatePreview::choiceName(choice, language_))},
                        {"blurb", toQString(TemplatePreview::choiceBlurb(choice, language_))},
                        {"template", toQString(choice.pathTemplate)}});
    }
    return list;
}

FolderTemplate::Values AppModel::templateValues() const {
    FolderTemplate::Values values;
    const auto destinations = board_.selectedDests();
    const auto cards = board_.selectedCards();
    if (!destinations.empty())
        values.destination = destinations.front().facts.mountPoint;
    if (const auto* card = board_.selectedCard())
        values.cardName = card->name();
    values.camera = selectedCamera();
    if (!cards.empty())
        values.ekip = cardUnits_.ekipLabel(cards.front().id());
    if (values.ekip.empty())
        values.ekip = unitCatalog_.selectedSet().name;
    values.project = settings_.projectName;
    values.now = Clock::now();
    return values;
}

QVariantMap AppModel::templateExample() const {
    const auto values = templateValues();
    return {{"destination", toQString(values.destination.native())},
            {"cardName", toQString(values.cardName)},
            {"camera", toQString(values.camera)},
            {"ekip", toQString(values.ekip)},
            {"project", toQString(values.project)}};
}

QString AppModel::expandTemplate(const QString& text, const QVariantMap& example) const {
    const auto word = [&example](const char* key) {
        return example.value(key).toString().toStdString();
    };
    const FolderTemplate::Values values = {.destination = word("destination"),
                                           .cardName = word("cardName"),
                                           .camera = word("camera"),
                                           .ekip = word("ekip"),
                                           .project = word("project"),
                                           .now = Clock::now()};
    return toQString(TemplatePreview::path(text.toStdString(), values, l10n()));
}

void AppModel::publish() {
    publishVolumes();
    publishSelection();
    publishUnits();
    publishPreview();
    publishProgress();
}

void AppModel::publishVolumes() {
    const auto row = [&](const ClassifiedVolume& volume, const Selection& selection) {
        const auto id = volume.id();
        VolumeRow shown;
        shown.volumeID = toQString(id);
        shown.name = toQString(volume.name());
        shown.path = toQString(volume.facts.mountPoint.native());
        shown.selected = selection.contains(id);
        shown.focused = selection.focused == id;
        shown.picked = volume.isPickedFolder();
        return shown;
    };
    const auto subtitle = [&](const ClassifiedVolume& volume, VolumeTexts::Side side) {
        return toQString(VolumeTexts::subtitle(volume, side, contentSizes_, l10n()));
    };
    std::vector<VolumeRow> cards;
    for (const auto& card : board_.lists().cards) {
        auto& shown = cards.emplace_back(row(card, board_.cardSelection()));
        shown.subtitle = subtitle(card, VolumeTexts::Side::Card);
        shown.ekip = toQString(cardUnits_.ekipLabel(card.id()));
        shown.unit = toQString(cardUnits_.cameraLabel(card.id()));
        shown.needsUnit = cardUnits_.cardsNeedingUnit.contains(card.id());
    }
    std::vector<VolumeRow> destinations;
    for (const auto& destination : board_.lists().destinations) {
        auto& shown = destinations.emplace_back(row(destination, board_.destinationSelection()));
        shown.subtitle = subtitle(destination, VolumeTexts::Side::Destination);
    }
    cardRows_.setRows(std::move(cards));
    destinationRows_.setRows(std::move(destinations));
}

void AppModel::publishSelection() {
    const auto cards = board_.selectedCards();
    ShownSelection now;
    now.sourceTotalText =
        toQString(contentSizes_.isMeasuringAny(cards)
                      ? std::string(l10n().measuringSize())
                      : PathSize::format(contentSizes_.totalOf(cards), language_));
    if (cards.empty())
        now.unitTitle = toQString(l10n().selectCardsFirst());
    else if (cards.size() == 1)
        now.unitTitle = toQString(l10n().whichNamedCard(Text::displayable(cards.front().name())));
    else
        now.unitTitle = toQString(l10n().whichThisCard());
    now.canCopy =
        !cards.empty() && !board_.selectedDests().empty() && !ProgressTexts::isBusy(phase_);
    if (replace(shownSelection_, std::move(now)))
        Q_EMIT selectionChanged();
}

void AppModel::publishUnits() {
    ShownUnits now;
    const auto& selectedSet = unitCatalog_.selectedSet();
    for (const auto& set : unitCatalog_.sets) {
        now.sets.append(QVariantMap{{"id", toQString(set.id)},
                                    {"name", toQString(set.name)},
                                    {"selected", set.id == selectedSet.id}});
    }
    const auto active = activeUnitForEdit();
    for (const auto& unit : unitCatalog_.units)
        now.units.append(QVariantMap{{"name", toQString(unit)}, {"active", unit == active}});
    if (replace(shownUnits_, std::move(now)))
        Q_EMIT unitsChanged();
}

void AppModel::publishPreview() {
    const TemplatePreview::Selected selected = {templateValues(),
                                                static_cast<int>(board_.selectedCards().size()),
                                                static_cast<int>(board_.selectedDests().size())};
    if (replace(folderTemplatePreview_,
                toQString(TemplatePreview::line(settings_.folderTemplate, selected, l10n()))))
        Q_EMIT folderTemplatePreviewChanged();
}

void AppModel::publishProgress() {
    ShownProgress now;
    now.fraction = ProgressTexts::fraction(phase_, batchPosition_);
    now.percentText = toQString(ProgressTexts::percent(now.fraction));
    now.title = toQString(ProgressTexts::title(phase_, batchPosition_, l10n()));
    now.didSucceed = ProgressTexts::isSuccess(phase_);
    now.didFail = ProgressTexts::isFailure(phase_);
    now.isBusy = ProgressTexts::isBusy(phase_);
    if (replace(shownProgress_, std::move(now)))
        Q_EMIT progressChanged();
}

} // namespace slatewise
