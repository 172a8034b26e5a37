#pragma once

#include <QObject>
#include <QVariant>
#include <qqml.h>

namespace slatewise {

/// The program's own texts for a model that is only staged.
class StageTexts : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    Q_INVOKABLE static QVariantMap fixed(const QString& language);
    Q_INVOKABLE static QString verified(const QString& language, int files, const QString& size);
    Q_INVOKABLE static QString failed(const QString& language, const QString& message);
    Q_INVOKABLE static QString verifyIncomplete(const QString& language, const QString& card,
                                                const QString& destination);
    Q_INVOKABLE static QString copying(const QString& language, int done, int total,
                                       const QString& file, const QString& speed);
    Q_INVOKABLE static QString whichNamedCard(const QString& language, const QString& card);
    /// [{token, label}]
    Q_INVOKABLE static QVariantList templateTokens(const QString& language);
    Q_INVOKABLE static QVariantList templateSeparators(const QString& language);
    /// [{name, blurb, template}]
    Q_INVOKABLE static QVariantList templatePresets(const QString& language);
    Q_INVOKABLE static QString expand(const QString& text, const QVariantMap& values);
    Q_INVOKABLE static QString normalize(const QString& text);
    Q_INVOKABLE static QString defaultTemplate();
    /// [{name, skipped}], everything skipped.
    Q_INVOKABLE static QVariantList defaultSkipNames();
};

} // namespace slatewise
