#include "StageTexts.h"

#include "Language/L10n.h"
#include "Model/QtText.h"
#include "Model/TemplatePreview.h"
#include "Offload/FolderTemplate.h"
#include "Offload/TreeWalker.h"

namespace slatewise {

namespace {

L10n textsIn(const QString& language) {
    return L10n(language == QLatin1String("tr") ? AppLanguage::Turkish : AppLanguage::English);
}

template <typename Tokens>
QVariantList labelled(const Tokens& tokens, AppLanguage language) {
    QVariantList list;
    for (const auto& [token, label] : tokens) {
        list << QVariantMap{{"token", toQString(token)},
                            {"label", toQString(TemplatePreview::tokenLabel(token, language))}};
    }
    return list;
}

} // namespace

QVariantMap StageTexts::fixed(const QString& language) {
    QVariantMap texts;
    textsIn(language).forEachFixedText(
        [&texts](auto key, auto text) { texts.insert(toQString(key), toQString(text)); });
    return texts;
}

QString StageTexts::verified(const QString& language, int files, const QString& size) {
    return toQString(textsIn(language).verified(files, size.toStdString()));
}

QString StageTexts::failed(const QString& language, const QString& message) {
    return toQString(textsIn(language).failed(message.toStdString()));
}

QString StageTexts::verifyIncomplete(const QString& language, const QString& card,
                                     const QString& destination) {
    return toQString(
        textsIn(language).verifyIncomplete(card.toStdString(), destination.toStdString()));
}

QString StageTexts::copying(const QString& language, int done, int total, const QString& file,
                            const QString& speed) {
    return toQString(
        textsIn(language).copying(done, total, file.toStdString(), speed.toStdString() + "/s"));
}

QString StageTexts::whichNamedCard(const QString& language, const QString& card) {
    return toQString(textsIn(language).whichNamedCard(card.toStdString()));
}

QVariantList StageTexts::templateTokens(const QString& language) {
    return labelled(FolderTemplate::tokens, textsIn(language).language());
}

QVariantList StageTexts::templateSeparators(const QString& language) {
    return labelled(FolderTemplate::separators, textsIn(language).language());
}

QVariantList StageTexts::templatePresets(const QString& language) {
    const auto shown = textsIn(language).language();
    QVariantList list;
    for (const auto& choice : FolderTemplate::choices) {
        list << QVariantMap{{"name", toQString(TemplatePreview::choiceName(choice, shown))},
                            {"blurb", toQString(TemplatePreview::choiceBlurb(choice, shown))},
                            {"template", toQString(choice.pathTemplate)}};
    }
    return list;
}

QString StageTexts::expand(const QString& text, const QVariantMap& values) {
    const auto word = [&values](const char* key) {
        return values.value(key).toString().toStdString();
    };
    return toQString(FolderTemplate::expand(text.toStdString(), {.destination = word("destination"),
                                                                 .cardName = word("cardName"),
                                                                 .camera = word("camera"),
                                                                 .ekip = word("ekip"),
                                                                 .project = word("project"),
                                                                 .now = Clock::now()})
                         .native());
}

QString StageTexts::normalize(const QString& text) {
    return toQString(FolderTemplate::normalize(text.toStdString()));
}

QString StageTexts::defaultTemplate() {
    return toQString(FolderTemplate::defaultTemplate);
}

QVariantList StageTexts::defaultSkipNames() {
    QVariantList list;
    for (const auto& name : TreeWalker::defaultSkipNames())
        list << QVariantMap{{"name", toQString(name)}, {"skipped", true}};
    return list;
}

} // namespace slatewise
