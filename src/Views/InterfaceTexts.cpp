#include "Views/InterfaceTexts.h"

#include "Language/L10n.h"
#include "Model/QtText.h"

namespace slatewise {

InterfaceTexts::InterfaceTexts(QObject* parent)
    : QObject(parent), language_(L10n::current().language()) {}

QString InterfaceTexts::language() const {
    return toQString(Language::rawValue(language_));
}

void InterfaceTexts::setLanguage(const QString& code) {
    for (const auto language : Language::allCases) {
        if (code != toQString(Language::rawValue(language)) || language == language_)
            continue;
        language_ = language;
        Q_EMIT languageChanged();
    }
}

#define SLATEWISE_TEXT(key, english, turkish)                                                      \
    QString InterfaceTexts::key() const {                                                          \
        return toQString(L10n(language_).key());                                                   \
    }
#include "Language/FixedTexts.inc"
#undef SLATEWISE_TEXT

} // namespace slatewise
