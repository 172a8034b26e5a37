#include "StageTexts.h"

#include "Language/L10n.h"
#include "Offload/FolderTemplate.h"
#include "Offload/TreeWalker.h"

namespace slatewise {

namespace {

QString shown(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

L10n textsIn(const QString& language) {
    return L10n(language == QLatin1String("tr") ? AppLanguage::Turkish : AppLanguage::English);
}

template <typename Tokens>
QVariantList labelled(const Tokens& tokens) {
    QVariantList list;
    for (const auto& [token, label] : tokens)
        list << QVariantMap{{"token", shown(token)}, {"label", shown(label)}};
    return list;
}

} // namespace

QVariantMap StageTexts::fixed(const QString& language) {
    QVariantMap texts;
    textsIn(language).forEachFixedText(
        [&texts](auto key, auto text) { texts.insert(shown(key), shown(text)); });
    return texts;
}

QString StageTexts::verified(const QString& language, int files, const QString& size) {
    return shown(textsIn(language).verified(files, size.toStdString()));
}

QString StageTexts::failed(const QString& language, const QString& message) {
    return shown(textsIn(language).failed(message.toStdString()));
}

QString StageTexts::verifyIncomplete(const QString& language, const QString& card,
                                     const QString& destination) {
    return shown(textsIn(language).verifyIncomplete(card.toStdString(), destination.toStdString()));
}

QString StageTexts::copying(const QString& language, int done, int total, const QString& file,
                            const QString& speed) {
    return shown(
        textsIn(language).copying(done, total, file.toStdString(), speed.toStdString() + "/s"));
}

QString StageTexts::whichNamedCard(const QString& language, const QString& card) {
    return shown(textsIn(language).whichNamedCard(card.toStdString()));
}

QVariantList StageTexts::templateTokens() {
    return labelled(FolderTemplate::tokens);
}

QVariantList StageTexts::templateSeparators() {
    return labelled(FolderTemplate::separators);
}

QVariantList StageTexts::templatePresets() {
    QVariantList list;
    for (const auto& choice : FolderTemplate::choices) {
        list << QVariantMap{{"name", shown(choice.name)},
                            {"blurb", shown(choice.blurb)},
                            {"template", shown(choice.pathTemplate)}};
    }
    return list;
}

QString StageTexts::expand(const QString& text, const QVariantMap& values) {
    const auto word = [&values](const char* key) {
        return values.value(key).toString().toStdString();
    };
    return shown(FolderTemplate::expand(text.toStdString(), {.destination = word("destination"),
                                                             .cardName = word("cardName"),
                                                             .camera = word("camera"),
                                                             .ekip = word("ekip"),
                                                             .project = word("project"),
                                                             .now = Clock::now()})
                     .native());
}

QString StageTexts::normalize(const QString& text) {
    return shown(FolderTemplate::normalize(text.toStdString()));
}

QString StageTexts::defaultTemplate() {
    return shown(FolderTemplate::defaultTemplate);
}

QVariantList StageTexts::defaultSkipNames() {
    QVariantList list;
    for (const auto& name : TreeWalker::defaultSkipNames())
        list << QVariantMap{{"name", shown(name)}, {"skipped", true}};
    return list;
}

} // namespace slatewise
