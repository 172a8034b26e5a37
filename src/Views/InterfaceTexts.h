#pragma once

#include "Language/AppLanguage.h"

#include <QObject>
#include <QString>
#include <qqml.h>

namespace slatewise {

/// The fixed texts for views, in one language at a time: `L10n.copy`. One for the QML engine; the
/// window tells it the language.
class InterfaceTexts : public QObject {
    Q_OBJECT
    QML_NAMED_ELEMENT(L10n)
    QML_SINGLETON
    Q_PROPERTY(QString language READ language WRITE setLanguage NOTIFY languageChanged)
    // Before anything else includes the table: moc looks into a file once only.
#define SLATEWISE_TEXT(key, english, turkish)                                                      \
    Q_PROPERTY(QString key READ key NOTIFY languageChanged)
#include "Language/FixedTexts.inc"
#undef SLATEWISE_TEXT

public:
    /// Begins in the stored language.
    explicit InterfaceTexts(QObject* parent = nullptr);

    QString language() const;
    /// Nothing for a code that no language has.
    void setLanguage(const QString& code);

#define SLATEWISE_TEXT(key, english, turkish) QString key() const;
#include "Language/FixedTexts.inc"
#undef SLATEWISE_TEXT

Q_SIGNALS:
    void languageChanged();

private:
    AppLanguage language_;
};

} // namespace slatewise
