#pragma once

#include "Platform/Desktop/ColorScheme.h"

#include <QObject>
#include <QString>
#include <qqml.h>

namespace slatewise {

/// What views take over from the desktop: light or dark, the font for paths, the pace of clicks.
/// One for the QML engine, on the GUI thread.
class Appearance : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool dark READ isDark NOTIFY darkChanged)
    Q_PROPERTY(QString fixedFontFamily READ fixedFontFamily CONSTANT)
    Q_PROPERTY(int doubleClickInterval READ doubleClickInterval CONSTANT)

public:
    explicit Appearance(QObject* parent = nullptr);

    bool isDark() const { return scheme_.isDark(); }
    QString fixedFontFamily() const;
    /// Milliseconds between two clicks that are one.
    int doubleClickInterval() const;

Q_SIGNALS:
    void darkChanged();

private:
    ColorScheme scheme_;
};

} // namespace slatewise
